#pragma once

#include <QStringList>

#include "controls/WebBrowser.h"

namespace vandrel::test {

/// A web browser that fetches nothing: it records what it is told, in order ("GoBack", "Navigate = a.example", "Offline
/// = True"), and its answers are what a test has put there.
class FakeWebBrowser final : public WebBrowser
{
    Q_OBJECT

public:
    void GoBack() override { record(QStringLiteral("GoBack")); }
    void GoForward() override { record(QStringLiteral("GoForward")); }
    void Stop() override { record(QStringLiteral("Stop")); }
    void GoHome() override { record(QStringLiteral("GoHome")); }
    void GoSearch() override { record(QStringLiteral("GoSearch")); }
    void Refresh() override { record(QStringLiteral("Refresh")); }
    void Navigate(const QString &typed) override { record(QStringLiteral("Navigate = ") + typed); }
    void setOffline(bool offline) override
    {
        record(offline ? QStringLiteral("Offline = True") : QStringLiteral("Offline = False"));
    }
    QString LocationURL() const override { return url; }
    QString LocationName() const override { return name; }

    /// What was told since the last time this was asked.
    QStringList takeCalls() { return std::exchange(m_calls, {}); }

    QString url = QStringLiteral("http:///");
    QString name;
    /// The error that every command raises, after it has been recorded; 0 for none.
    int failure = 0;

private:
    void record(const QString &call);

    QStringList m_calls;
};

} // namespace vandrel::test
