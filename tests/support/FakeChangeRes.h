#pragma once

#include <functional>
#include <utility>

#include <QStringList>

#include "controls/ChangeRes.h"

namespace vandrel::test {

/// A display that changes nothing: it records what it is told and asked, in order ("Width = 640", "Apply = True",
/// "Failed").
class FakeChangeRes final : public ChangeRes
{
    Q_OBJECT

public:
    void setRead(bool start) override { record(QStringLiteral("Read"), truth(start)); }
    void setApply(bool start) override
    {
        record(QStringLiteral("Apply"), truth(start));
        failed = refuses && refuses(m_width, m_height);
    }
    bool Failed() const override
    {
        m_calls.append(QStringLiteral("Failed"));
        return failed;
    }
    QString DeviceDescription() const override { return asked(QStringLiteral("DeviceDescription")); }
    QString DisplayDriver() const override { return asked(QStringLiteral("DisplayDriver")); }
    QString HardwareID() const override { return asked(QStringLiteral("HardwareID")); }
    QString Manufacturer() const override { return asked(QStringLiteral("Manufacturer")); }
    qint32 Width() const override
    {
        asked(QStringLiteral("Width"));
        return m_width;
    }
    void setWidth(qint32 pixels) override
    {
        m_width = pixels;
        record(QStringLiteral("Width"), QString::number(pixels));
    }
    qint32 Height() const override
    {
        asked(QStringLiteral("Height"));
        return m_height;
    }
    void setHeight(qint32 pixels) override
    {
        m_height = pixels;
        record(QStringLiteral("Height"), QString::number(pixels));
    }

    /// What was told and asked since the last time this was called.
    QStringList takeCalls() { return std::exchange(m_calls, {}); }

    bool failed = false;
    /// Whether a change to that size fails.
    std::function<bool(qint32 width, qint32 height)> refuses;

private:
    static QString truth(bool value) { return value ? QStringLiteral("True") : QStringLiteral("False"); }
    void record(const QString &member, const QString &value)
    {
        m_calls.append(member + QStringLiteral(" = ") + value);
    }
    // A fact is worded by its member's name.
    QString asked(const QString &member) const
    {
        m_calls.append(member);
        return member;
    }

    qint32 m_width = 1920;
    qint32 m_height = 1080;
    mutable QStringList m_calls;
};

} // namespace vandrel::test
