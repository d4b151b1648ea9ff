#include "platform/ping/EchoPing.h"

#include <utility>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QPointer>

#include "platform/ping/EchoStatus.h"
#include "runtime/EventGate.h"

namespace vandrel {

namespace {

using End = EchoOutcome::End;

// How long a wait for a name is away from the windows at a time, in milliseconds.
constexpr int lookupTurn = 20;

QString waitText(const char *text)
{
    return QCoreApplication::translate("EchoPing", text);
}

EchoOutcome
askEachWay(const std::vector<std::shared_ptr<EchoWay>> &ways, const EchoQuestion &question, EchoPause &pause)
{
    EchoOutcome outcome = EchoOutcome::failed(End::NotPermitted);
    for (const auto &way : ways) {
        outcome = way->ask(question, pause);
        if (outcome.end != End::NotPermitted)
            break;
    }
    return outcome;
}

QString tooLong(qsizetype size, qsizetype most)
{
    return waitText("The data is %1 bytes long; a request carries %2 at most.").arg(size).arg(most);
}

QString noTime(int milliseconds)
{
    return waitText("A time-out of %1 ms leaves no time for a reply: it is 1 to 32767.").arg(milliseconds);
}

// The nearest; no time-out is as long as what would not fit.
qint32 wholeMilliseconds(qint64 nanoseconds)
{
    return static_cast<qint32>((nanoseconds + 500'000) / 1'000'000);
}

} // namespace

/// One wait: the windows paint, everything else stands still, and the events of other controls wait behind the gate.
class EchoPing::Wait final : public EchoPause
{
public:
    bool passTurn() override
    {
        if (!m_isCancelled)
            QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        return !m_isCancelled;
    }

    void cancel() { m_isCancelled = true; }

    // The addresses of the target, or the reason why there are none.
    NameAnswer addresses(const PingTarget &target, const Means &means)
    {
        if (!target.address.isNull())
            return {{target.address}, {}};
        NameLookup lookup(target.name, means.resolver);
        const QDeadlineTimer end(means.lookupPatience);
        while (!lookup.wait(lookupTurn)) {
            if (!passTurn())
                return {{}, waitText("The ping of %1 was stopped.").arg(target.shown)};
            if (end.hasExpired())
                return {{},
                        waitText("The name %1 was not found: the name server does not answer.")
                            .arg(target.shown)};
        }
        NameAnswer answer = lookup.answer();
        if (answer.addresses.isEmpty())
            answer.problem = answer.problem.isEmpty()
                ? waitText("The name %1 has no address.").arg(target.shown)
                : waitText("The name %1 was not found: %2.").arg(target.shown, answer.problem);
        return answer;
    }

private:
    const EventGate::Hold m_hold;
    bool m_isCancelled = false;
};

EchoPing::EchoPing(Means means) : m_means(std::make_shared<const Means>(std::move(means))) { }

EchoPing::~EchoPing()
{
    if (m_wait)
        m_wait->cancel();
}

void EchoPing::setDataToSend(const QString &data)
{
    m_data = data;
}

void EchoPing::setHost(const QString &host)
{
    m_host = host;
}

void EchoPing::setTimeOut(qint16 milliseconds)
{
    m_timeOut = milliseconds;
}

// Nothing of this object is used while it waits: it may be destroyed meanwhile.
void EchoPing::setPing(bool start)
{
    if (!start && m_wait)
        m_wait->cancel();
    if (!start || m_wait)
        return;
    const QPointer<EchoPing> alive(this);
    const std::shared_ptr<const Means> means = m_means;
    Wait wait;
    m_wait = &wait;
    const QString host = m_host;
    const Results before = m_results;
    const Results results = pinged(*means, host, {{}, m_data.toUtf8(), m_timeOut}, before, wait);
    if (!alive)
        return;
    m_wait = nullptr;
    m_results = results;
}

// `question` lacks its address still; what a failure leaves unsaid stays as it was before.
EchoPing::Results EchoPing::pinged(
    const Means &means, const QString &host, EchoQuestion question, const Results &before, Wait &wait)
{
    const PingTarget target = PingTarget::parse(host);
    if (!target.problem.isEmpty())
        return before.failing(target.problem);
    if (question.timeOut < 1)
        return before.failing(noTime(question.timeOut));
    const NameAnswer found = wait.addresses(target, means);
    Results results = before.failing(found.problem);
    for (const QHostAddress &address : found.addresses) {
        question.to = address;
        const qsizetype most = mostEchoData(question.family());
        if (question.data.size() > most)
            return before.failing(tooLong(question.data.size(), most));
        const EchoOutcome outcome = askEachWay(means.ways, question, wait);
        results = before.after(outcome, echoStatus(target.shown, question, outcome));
        // Another address of the same name may have a way where this one has none.
        if (outcome.end != End::NoRoute)
            break;
    }
    return results;
}

EchoPing::Results EchoPing::Results::failing(const QString &why) const
{
    Results results = *this;
    results.failed = true;
    results.status = why;
    return results;
}

EchoPing::Results EchoPing::Results::after(const EchoOutcome &outcome, const QString &words) const
{
    if (outcome.end != End::Replied)
        return failing(words);
    Results results;
    results.status = words;
    results.echo = QString::fromUtf8(outcome.data.value_or(QByteArray()));
    results.size = static_cast<quint16>(outcome.dataSize);
    results.milliseconds = wholeMilliseconds(outcome.nanoseconds);
    return results;
}

} // namespace vandrel
