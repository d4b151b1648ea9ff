#include "platform/ping/EchoStatus.h"

#include <QCoreApplication>

namespace vandrel {

namespace {

using End = EchoOutcome::End;

QString tr(const char *text, int number = -1)
{
    return QCoreApplication::translate("EchoStatus", text, nullptr, number);
}

// A name is followed by the address that it stands for.
QString named(const QString &host, const QString &address)
{
    return host == address ? host : QStringLiteral("%1 (%2)").arg(host, address);
}

QString milliseconds(qint64 nanoseconds)
{
    const double value = static_cast<double>(nanoseconds) / 1e6;
    return QString::number(value, 'f', value < 10 ? 2 : 0);
}

QString reply(const QString &host, const EchoOutcome &outcome)
{
    const QString form = outcome.timeIsBound ? tr("Reply from %1: %2 bytes in less than %3 ms.")
                                             : tr("Reply from %1: %2 bytes in %3 ms.");
    QString text = form.arg(host, QString::number(outcome.dataSize), milliseconds(outcome.nanoseconds));
    if (!outcome.data)
        text
            += u' ' + tr("The system's ping filled them itself: it sends typed data of up to 15 bytes only.");
    return text;
}

QString silence(const QString &host, const EchoQuestion &question, const EchoOutcome &outcome)
{
    const QString text = tr("No reply from %1 within %2 ms.").arg(host, QString::number(question.timeOut));
    return outcome.otherDataCame ? text + u' ' + tr("What came back was not the data that was sent.") : text;
}

QString refusal(const QString &host, const EchoOutcome &outcome)
{
    const QString reporter = outcome.reporter.isEmpty() ? tr("a host on the way") : outcome.reporter;
    const auto says = [&](const char *form) { return tr(form).arg(host, reporter); };
    switch (outcome.refusal) {
    case EchoRefusal::NetworkUnreachable:
        return says("%1 cannot be reached: %2 knows no way to its network.");
    case EchoRefusal::HostUnreachable:
        return says("%1 cannot be reached: %2 does not find the host.");
    case EchoRefusal::ProtocolUnreachable:
        return says("%1 cannot be pinged: %2 says that it does not know the protocol.");
    case EchoRefusal::PortUnreachable:
        return says("%1 cannot be pinged: %2 rejects the request.");
    case EchoRefusal::PacketTooBig:
        return says(
            "%1 cannot be reached with so much data: the next link after %2 takes smaller packets only.");
    case EchoRefusal::Forbidden:
        return says("%1 cannot be reached: %2 forbids it.");
    case EchoRefusal::TimeToLiveExceeded:
        return says("%1 was not reached: the request had passed as many hosts as it may when it came to %2.");
    case EchoRefusal::Other:
        break;
    }
    return says("%1 cannot be reached: %2 sent the request back.");
}

// What to do is said in full: the way that needs nothing from anybody first.
QString notPermitted()
{
    return tr("This program may not send echo requests, and the system's ping command is missing or may not "
              "either. "
              "Install that command (Debian: apt install iputils-ping), or have an administrator run: "
              "sysctl -w net.ipv4.ping_group_range=\"0 2147483647\"");
}

} // namespace

QString echoStatus(const QString &name, const EchoQuestion &question, const EchoOutcome &outcome)
{
    const QString host = named(name, question.to.toString());
    switch (outcome.end) {
    case End::Replied:
        return reply(host, outcome);
    case End::Silent:
        return silence(host, question, outcome);
    case End::Cancelled:
        return tr("The ping of %1 was stopped.").arg(host);
    case End::Refused:
        return refusal(host, outcome);
    case End::NoRoute:
        return tr("%1 cannot be reached: this computer knows no way to it.").arg(host);
    case End::NotAllowed:
        return tr("%1 was not pinged: it stands for a whole network, or this computer must not reach it.")
            .arg(host);
    case End::Filtered:
        return tr("%1 was not pinged: this computer's firewall stopped the request.").arg(host);
    case End::TooLong:
        return tr("%1 was not pinged: this computer's network does not take %2 bytes in one packet.")
            .arg(host)
            .arg(question.data.size());
    case End::NotPermitted:
        return notPermitted();
    case End::Failed:
        break;
    }
    return outcome.detail.isEmpty() ? tr("%1 was not pinged: the system does not say why.").arg(host)
                                    : tr("%1 was not pinged: %2.").arg(host, outcome.detail);
}

} // namespace vandrel
