#include "tests/platform/mail/pop/PopRecorder.h"

#include <algorithm>

namespace vandrel {

namespace {

QString shownBool(bool value)
{
    return value ? QStringLiteral("True") : QStringLiteral("False");
}

} // namespace

PopRecorder::PopRecorder(const PopLimits &limits) : mailbox(std::make_unique<PopMailbox>(limits))
{
    const PopMailbox *m = mailbox.get();
    const auto note = [this](const char *event) {
        return [this, event](bool value) { events += QLatin1String(event) + u' ' + shownBool(value); };
    };
    QObject::connect(m, &POPMail::HasMail, note("HasMail"));
    QObject::connect(m, &POPMail::MailDownloaded, note("MailDownloaded"));
    QObject::connect(m, &POPMail::Disconnected, note("Disconnected"));
    QObject::connect(m, &POPMail::LoggedIn, note("LoggedIn"));
    QObject::connect(m, &POPMail::Busy, note("Busy"));
    QObject::connect(m, &POPMail::NoMail,
                     [this](std::int32_t count) { events += u"NoMail %1"_qs.arg(count); });
    QObject::connect(m, &POPMail::MailboxStat, [this](std::int16_t count, std::int32_t octets) {
        events += u"MailboxStat %1 %2"_qs.arg(count).arg(octets);
    });
    QObject::connect(m, &POPMail::MailDeleted,
                     [this](std::int16_t number) { events += u"MailDeleted %1"_qs.arg(number); });
    QObject::connect(m, &POPMail::MailText, [this](const QString &text) {
        events += u"MailText"_qs;
        mails += text;
    });
    QObject::connect(m, &POPMail::MailList, [this](const QString &text) {
        events += u"MailList"_qs;
        listing = text;
    });
    QObject::connect(m, &POPMail::StatusText, [this](const QString &text) { statuses += text; });
    QObject::connect(m, &POPMail::Error, [this](bool failed, std::int32_t code, const QString &text) {
        events += u"Error %1 %2"_qs.arg(shownBool(failed)).arg(code);
        errors += text;
    });
}

void PopRecorder::logIn(const QString &server, const QString &user, const QString &password)
{
    mailbox->setPOPServer(server);
    mailbox->setPOPUser(user);
    mailbox->setPOPPassword(password);
    mailbox->setConnectNow(true);
}

void PopRecorder::retrieve(int number)
{
    mailbox->setMailNumber(static_cast<std::int16_t>(number));
    mailbox->setRetrieveNow(true);
}

void PopRecorder::remove(int number)
{
    mailbox->setMailNumber(static_cast<std::int16_t>(number));
    mailbox->setDeleteNow(true);
}

bool PopRecorder::hasStatus(const QString &text) const
{
    return std::any_of(statuses.begin(), statuses.end(),
                       [&](const QString &status) { return status.contains(text); });
}

QString PopRecorder::shown() const
{
    return (statuses + errors + mails + QStringList{listing}).join(u'\n');
}

} // namespace vandrel
