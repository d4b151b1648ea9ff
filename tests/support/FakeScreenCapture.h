#pragma once

#include <functional>
#include <utility>

#include <QStringList>

#include "controls/ScreenCapture.h"

namespace vandrel::test {

/// A capture control that captures nothing: it records what it is told, in order ("Delay = 2.5", "Capture = True").
class FakeScreenCapture final : public ScreenCapture
{
    Q_OBJECT

public:
    void setPreview(bool show) override { record(QStringLiteral("Preview"), truth(show)); }
    void setCapture(bool start) override { record(QStringLiteral("Capture"), truth(start)); }
    void setDelay(double seconds) override { record(QStringLiteral("Delay"), QString::number(seconds)); }
    void setFile(const QString &dosPath) override { record(QStringLiteral("File"), dosPath); }

    /// What was told since the last time this was asked.
    QStringList takeCalls() { return std::exchange(m_calls, {}); }

private:
    static QString truth(bool value) { return value ? QStringLiteral("True") : QStringLiteral("False"); }
    void record(const QString &member, const QString &value)
    {
        m_calls.append(member + QStringLiteral(" = ") + value);
    }

    QStringList m_calls;
};

} // namespace vandrel::test
