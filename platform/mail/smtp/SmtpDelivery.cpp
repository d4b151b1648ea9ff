#include "platform/mail/smtp/SmtpDelivery.h"

#include <algorithm>
#include <random>
#include <utility>

#include "runtime/Events.h"

namespace vandrel {

namespace {

constexpr quint16 transferPort = 25;
constexpr quint16 submissionPort = 587;
constexpr quint16 encryptedPort = 465;

void shuffled(std::vector<MailExchanger> &exchangers)
{
    std::shuffle(exchangers.begin(), exchangers.end(), std::mt19937(std::random_device()()));
}

} // namespace

SmtpDelivery::SmtpDelivery(MailExchangers &exchangers, const SmtpTimes &times)
    : m_exchangers(exchangers), m_times(times)
{
    m_asking.setSingleShot(true);
    onEvent(&m_asking, &QTimer::timeout, this, [this] { end(m_problem); });
    onEvent(&m_exchangers, &MailExchangers::found, this, &SmtpDelivery::useExchangers);
    onEvent(&m_exchangers, &MailExchangers::failed, this, [this] {
        if (m_asking.isActive())
            end(m_problem);
    });
    onEvent(&m_feed, &MessageFeed::prepared, this, [this](const MailEnvelope &envelope) {
        m_envelope = envelope;
        connectTo(m_address.host);
    });
    // Once a session reads the message, its failures are the session's.
    onEvent(&m_feed, &MessageFeed::failed, this, [this](const QString &text) {
        if (!m_session)
            end(text);
    });
}

SmtpDelivery::~SmtpDelivery() = default;

void SmtpDelivery::start(const MailDraft &draft,
                         const QString &server,
                         const std::shared_ptr<const DriveView> &drives)
{
    m_address = addressOf(server);
    if (m_address.isUsable())
        m_feed.prepare(draft, drives);
    else
        end(m_address.problem);
}

ServerAddress SmtpDelivery::addressOf(const QString &server)
{
    ServerAddress address;
    if (server.trimmed().isEmpty()) {
        address.problem = tr("No mail server is named. Type its name into Mail Server Domain.");
        return address;
    }
    address = ServerAddress::parse(
        server,
        {{QStringLiteral("smtp"), transferPort, false}, {QStringLiteral("smtps"), encryptedPort, true}});
    // An address that is not understood may hold the password in any place.
    if (!address.isUsable() && server.contains(u'@'))
        address.problem = tr(
            "The mail server's address cannot be understood. It is written user:password@host:port, with "
            "\"@\", \":\", \"/\" and \"%\" in the user and the password as %40, %3A, %2F and %25.");
    else if (address.isUsable() && address.path.size() > 1)
        address.problem
            = tr("A mail server's address ends with its name or its port; write \"/\" in a password as %2F.");
    if (address.userGiven && !address.portGiven && !address.implicitTls)
        address.port = submissionPort;
    return address;
}

void SmtpDelivery::connectTo(const QString &host)
{
    SmtpServer server{host, m_address.port, m_address.implicitTls, {}};
    if (m_address.userGiven)
        server.login.emplace(m_address.user, m_address.password);
    m_session = std::make_unique<SmtpSession>(std::move(server), m_envelope, m_feed, m_times);
    onEvent(m_session.get(), &SmtpSession::status, this,
            [this](const QString &text) { Q_EMIT status(text); });
    onEvent(m_session.get(), &SmtpSession::delivered, this,
            [this](const QString &reply) { Q_EMIT delivered(reply); });
    onEvent(m_session.get(), &SmtpSession::failed, this, &SmtpDelivery::sessionFailed);
    onEvent(m_session.get(), &SmtpSession::finished, this, &SmtpDelivery::sessionFinished);
    m_session->start();
}

void SmtpDelivery::sessionFailed(const QString &text, bool beforeEnvelope, bool unknownHost)
{
    const bool mayAsk = unknownHost && isBareDomain() && !m_askedForExchangers;
    m_tryNext = beforeEnvelope && (mayAsk || !m_hosts.empty());
    m_problem = text;
    if (!m_tryNext)
        Q_EMIT failed(text);
}

void SmtpDelivery::sessionFinished()
{
    m_wasConnected = m_wasConnected || m_session->wasConnected();
    m_session.release()->deleteLater();
    if (!std::exchange(m_tryNext, false)) {
        Q_EMIT finished(m_wasConnected);
        return;
    }
    Q_EMIT status(m_problem);
    if (m_hosts.empty())
        askForExchangers();
    else
        connectToNext();
}

void SmtpDelivery::connectToNext()
{
    const QString host = m_hosts.front();
    m_hosts.pop_front();
    connectTo(host);
}

bool SmtpDelivery::isBareDomain() const
{
    return !m_address.portGiven && !m_address.userGiven && !m_address.implicitTls;
}

void SmtpDelivery::askForExchangers()
{
    Q_EMIT status(tr("Looking for the hosts that take mail for %1...").arg(m_address.host));
    m_askedForExchangers = true;
    m_asking.start(m_times.exchangers);
    m_exchangers.ask(m_address.host);
}

void SmtpDelivery::useExchangers(const std::vector<MailExchanger> &exchangers)
{
    if (!m_asking.isActive())
        return;
    m_asking.stop();
    const std::vector<QString> hosts = hostsInOrder(exchangers, &shuffled);
    m_hosts.assign(hosts.begin(), hosts.end());
    if (exchangers.empty()) {
        end(m_problem);
    } else if (m_hosts.empty()) {
        end(tr("The domain \"%1\" states that it takes no mail.").arg(m_address.host));
    } else {
        connectToNext();
    }
}

// Told from the event loop, also when the reason was found at once.
void SmtpDelivery::end(const QString &problem)
{
    m_asking.stop();
    QMetaObject::invokeMethod(
        this,
        [this, problem] {
            Q_EMIT failed(problem);
            Q_EMIT finished(m_wasConnected);
        },
        Qt::QueuedConnection);
}

} // namespace vandrel
