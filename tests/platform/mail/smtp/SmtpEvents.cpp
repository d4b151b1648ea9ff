#include "tests/platform/mail/smtp/SmtpEvents.h"

namespace vandrel {

namespace {

QString truth(bool value)
{
    return value ? QStringLiteral("True") : QStringLiteral("False");
}

} // namespace

SmtpEvents::SmtpEvents(const Smtp &smtp)
{
    connect(&smtp, &Smtp::Busy, this, [this](bool busy) { m_all += QStringLiteral("Busy ") + truth(busy); });
    connect(&smtp, &Smtp::Disconnected, this,
            [this](bool ended) { m_all += QStringLiteral("Disconnected ") + truth(ended); });
    connect(&smtp, &Smtp::Error, this,
            [this](const QString &description) { m_all += QStringLiteral("Error ") + description; });
    connect(&smtp, &Smtp::MailSent, this,
            [this](const QString &reply) { m_all += QStringLiteral("Sent ") + reply; });
    connect(&smtp, &Smtp::StatusText, this, [this](const QString &text) {
        m_all += QStringLiteral("Status ") + text;
        m_log += text;
    });
}

QStringList SmtpEvents::main() const
{
    QStringList events;
    for (const QString &event : m_all) {
        const QString kind = event.section(u' ', 0, 0);
        if (kind == QStringLiteral("Sent") || kind == QStringLiteral("Error"))
            events += kind;
        else if (kind != QStringLiteral("Status"))
            events += event;
    }
    return events;
}

bool SmtpEvents::haveEnded(int sends) const
{
    return m_all.count(QStringLiteral("Busy False")) == sends;
}

QString SmtpEvents::argumentOf(const QString &kind) const
{
    for (const QString &event : m_all) {
        if (event.startsWith(kind))
            return event.mid(kind.size());
    }
    return {};
}

} // namespace vandrel
