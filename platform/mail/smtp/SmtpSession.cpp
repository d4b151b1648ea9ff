#include "platform/mail/smtp/SmtpSession.h"

#include <utility>

#include "runtime/Events.h"
#include "runtime/SizeText.h"

namespace vandrel {

namespace {

// Blocks that are read from disk in advance.
constexpr int blocksAhead = 2;
// Milliseconds between two lines that show how far the message has gone.
constexpr qint64 progressInterval = 1000;
constexpr qsizetype mostRefusalsNamed = 20;

// The name by which a client without a name of its own introduces itself (RFC 5321, section 4.1.3).
QByteArray addressLiteral(const QHostAddress &address)
{
    QHostAddress plain = address;
    plain.setScopeId({});
    bool isFour = false;
    const QHostAddress four(plain.toIPv4Address(&isFour));
    if (isFour)
        return '[' + four.toString().toLatin1() + ']';
    return "[IPv6:" + plain.toString().toLatin1() + ']';
}

} // namespace

SmtpSession::SmtpSession(SmtpServer server, MailEnvelope envelope, MessageFeed &feed, const SmtpTimes &times)
    : m_server(std::move(server)), m_envelope(std::move(envelope)), m_feed(feed), m_times(times),
      m_dialogue(times)
{
    if (m_server.login)
        m_dialogue.setCensor([this](const QString &words) { return m_server.login->withoutLogin(words); });
    onEvent(&m_dialogue, &SmtpDialogue::progress, this, [this](const QString &text) { Q_EMIT status(text); });
    onEvent(&m_dialogue, &SmtpDialogue::connected, this, [this] { m_wasConnected = true; });
    onEvent(&m_dialogue, &SmtpDialogue::sent, this, &SmtpSession::showProgress);
    onEvent(&m_dialogue, &SmtpDialogue::drained, this, &SmtpSession::sendBlocks);
    onEvent(&m_dialogue, &SmtpDialogue::ended, this, &SmtpSession::connectionEnded);
    onEvent(&m_feed, &MessageFeed::block, this, &SmtpSession::takeBlock);
    onEvent(&m_feed, &MessageFeed::ended, this, &SmtpSession::endMessage);
    onEvent(&m_feed, &MessageFeed::failed, this, &SmtpSession::feedFailed);
}

SmtpSession::~SmtpSession() = default;

void SmtpSession::start()
{
    m_dialogue.open(m_server.host, m_server.port, m_server.implicitTls,
                    [this](const SmtpReply &reply) { greeted(reply); });
}

void SmtpSession::ask(const QByteArray &command, const QString &awaited, Step answered)
{
    m_dialogue.ask(command, awaited, m_times.reply,
                   [this, answered](const SmtpReply &reply) { (this->*answered)(reply); });
}

// --- Opening
// --------------------------------------------------------------------------------------------------------

void SmtpSession::greeted(const SmtpReply &reply)
{
    Q_EMIT status(tr("Connected to %1, port %2: %3")
                      .arg(m_server.host, QString::number(m_server.port), m_dialogue.words(reply)));
    if (reply.kind() != 2)
        return fail(refusal(tr("The server \"%1\" does not serve now").arg(m_server.host), reply));
    sayHello();
}

void SmtpSession::sayHello()
{
    m_services = {};
    ask("EHLO " + addressLiteral(m_dialogue.connection().localAddress()), tr("the reply to EHLO"),
        &SmtpSession::helloAnswered);
}

void SmtpSession::helloAnswered(const SmtpReply &reply)
{
    if (reply.kind() == 5) {
        ask("HELO " + addressLiteral(m_dialogue.connection().localAddress()), tr("the reply to HELO"),
            &SmtpSession::oldHelloAnswered);
        return;
    }
    if (reply.kind() != 2)
        return fail(refusal(tr("The server \"%1\" does not accept this computer").arg(m_server.host), reply));
    m_services = SmtpServices::of(reply);
    if (m_services.startTls && !m_dialogue.connection().isEncrypted())
        ask(QByteArrayLiteral("STARTTLS"), tr("the reply to STARTTLS"), &SmtpSession::startTlsAnswered);
    else
        useConnection();
}

void SmtpSession::oldHelloAnswered(const SmtpReply &reply)
{
    if (reply.kind() != 2)
        return fail(refusal(tr("The server \"%1\" does not accept this computer").arg(m_server.host), reply));
    useConnection();
}

void SmtpSession::startTlsAnswered(const SmtpReply &reply)
{
    if (reply.kind() != 2)
        return fail(refusal(
            tr("The server \"%1\" offers to encrypt the connection and then refuses to").arg(m_server.host),
            reply));
    m_dialogue.startTls([this] { sayHello(); });
}

void SmtpSession::useConnection()
{
    Q_EMIT status(m_dialogue.connection().isEncrypted()
                      ? tr("The connection is encrypted (%1).").arg(m_dialogue.connection().tlsVersion())
                      : tr("The connection is not encrypted: the message can be read on its way."));
    if (m_server.login)
        logIn();
    else
        sendEnvelope();
}

void SmtpSession::logIn()
{
    if (m_services.logins.isEmpty())
        return fail(tr("The server \"%1\" offers no login. Type its name without a user and a password.")
                        .arg(m_server.host));
    const bool mayTellPassword
        = m_dialogue.connection().isEncrypted() || m_dialogue.connection().peerAddress().isLoopback();
    if (m_server.login->choose(m_services.logins, mayTellPassword)) {
        Q_EMIT status(tr("Logging in..."));
        ask(m_server.login->command(), tr("the reply to the login"), &SmtpSession::logInAnswered);
    } else if (mayTellPassword) {
        fail(tr("The server \"%1\" offers no way to log in that is known here (PLAIN, LOGIN, CRAM-MD5).")
                 .arg(m_server.host));
    } else {
        fail(tr("The connection to \"%1\" is not encrypted, so the password is not sent. Type smtps:// "
                "before the "
                "server's name, or choose a server that offers encryption.")
                 .arg(m_server.host));
    }
}

void SmtpSession::logInAnswered(const SmtpReply &reply)
{
    if (reply.kind() == 3) {
        const auto answer = m_server.login->answer(reply.texts.last());
        ask(answer.value_or("*"), tr("the reply to the login"),
            answer ? &SmtpSession::logInAnswered : &SmtpSession::logInCancelled);
        return;
    }
    if (reply.kind() != 2)
        return fail(refusal(tr("The server \"%1\" refuses the login").arg(m_server.host), reply));
    Q_EMIT status(tr("Logged in: %1").arg(m_dialogue.words(reply)));
    sendEnvelope();
}

// RFC 4954, section 4: a lone "*" ends an exchange in which the server asks for more than there is to tell.
void SmtpSession::logInCancelled(const SmtpReply &reply)
{
    fail(refusal(tr("The server \"%1\" asks for more than a user and a password").arg(m_server.host), reply));
}

// --- Envelope
// -------------------------------------------------------------------------------------------------------

// Why this server cannot take this message at all; empty when it can.
QString SmtpSession::obstacle() const
{
    const auto foreign = m_envelope.outsideAscii();
    if (!foreign.empty() && !m_services.smtpUtf8)
        return tr("The server \"%1\" takes no addresses with letters outside ASCII before the \"@\" (%2), so "
                  "nobody "
                  "gets the message.")
            .arg(m_server.host, QString::fromUtf8(foreign.front().addrSpec()));
    if (m_services.largestMessage && m_envelope.size > *m_services.largestMessage)
        return tr("The message has %1, and the server \"%2\" takes at most %3. Send fewer or smaller files.")
            .arg(sizeText(m_envelope.size), m_server.host, sizeText(*m_services.largestMessage));
    return {};
}

void SmtpSession::sendEnvelope()
{
    const QString reason = obstacle();
    if (!reason.isEmpty())
        return fail(reason);
    m_stage = Stage::Envelope;
    QByteArray command = "MAIL FROM:<" + m_envelope.sender.addrSpec() + '>';
    if (m_services.size)
        command += " SIZE=" + QByteArray::number(m_envelope.size);
    if (!m_envelope.outsideAscii().empty())
        command += m_services.eightBitMime ? " BODY=8BITMIME SMTPUTF8" : " SMTPUTF8";
    ask(command, tr("the reply to the sender"), &SmtpSession::senderAnswered);
}

void SmtpSession::senderAnswered(const SmtpReply &reply)
{
    const QString sender = QString::fromUtf8(m_envelope.sender.addrSpec());
    if (reply.kind() != 2)
        return fail(refusal(tr("The server \"%1\" refuses the sender %2").arg(m_server.host, sender), reply));
    Q_EMIT status(tr("Sender %1: %2").arg(sender, m_dialogue.words(reply)));
    askRecipient();
}

void SmtpSession::askRecipient()
{
    if (m_recipient < m_envelope.recipients.size())
        ask("RCPT TO:<" + m_envelope.recipients[m_recipient].addrSpec() + '>', tr("the reply to a recipient"),
            &SmtpSession::recipientAnswered);
    else if (m_refused.isEmpty())
        ask(QByteArrayLiteral("DATA"), tr("the reply to DATA"), &SmtpSession::dataAnswered);
    else
        refuseRecipients();
}

void SmtpSession::recipientAnswered(const SmtpReply &reply)
{
    const QString line = QStringLiteral("%1: %2").arg(
        QString::fromUtf8(m_envelope.recipients[m_recipient].addrSpec()), m_dialogue.words(reply));
    Q_EMIT status(tr("Recipient %1").arg(line));
    if (reply.kind() != 2)
        m_refused += line;
    // Behind a server that closes the channel, nothing else is asked.
    m_recipient = reply.code == 421 ? m_envelope.recipients.size() : m_recipient + 1;
    askRecipient();
}

void SmtpSession::refuseRecipients()
{
    QString text
        = tr("The server \"%1\" refuses these recipients, so nobody gets the message:").arg(m_server.host);
    for (const QString &line : m_refused.mid(0, mostRefusalsNamed))
        text += QStringLiteral("\r\n") + line;
    if (m_refused.size() > mostRefusalsNamed)
        text += QStringLiteral("\r\n")
            + tr("and %n more", nullptr, static_cast<int>(m_refused.size() - mostRefusalsNamed));
    m_dialogue.ask(QByteArrayLiteral("RSET"), tr("the reply to RSET"), m_times.farewell,
                   [this](const SmtpReply &) { leave(); });
    m_stage = Stage::Leaving;
    Q_EMIT failed(text, false, false);
}

// --- Message
// --------------------------------------------------------------------------------------------------------

void SmtpSession::dataAnswered(const SmtpReply &reply)
{
    if (reply.kind() != 3)
        return fail(refusal(tr("The server \"%1\" refuses the message").arg(m_server.host), reply));
    m_stage = Stage::Message;
    m_dialogue.awaitProgress(tr("the server to take the message"), m_times.block);
    m_lastShown.start();
    for (int i = 0; i < blocksAhead; ++i)
        m_feed.request();
    Q_EMIT status(tr("Sending the message (%1)...").arg(sizeText(m_envelope.size)));
}

void SmtpSession::takeBlock(const QByteArray &octets)
{
    m_blocks.push_back(octets);
    sendBlocks();
}

void SmtpSession::sendBlocks()
{
    while (m_stage == Stage::Message && !m_blocks.empty() && m_dialogue.write(m_blocks.front())) {
        m_written += m_blocks.front().size();
        m_blocks.pop_front();
        m_feed.request();
    }
    if (m_stage != Stage::Message || !m_blocks.empty() || !m_messageEnded)
        return;
    m_stage = Stage::Confirming;
    m_dialogue.expect(tr("the confirmation of the message"), m_times.confirmation,
                      [this](const SmtpReply &reply) { confirmed(reply); });
}

void SmtpSession::endMessage()
{
    m_messageEnded = true;
    takeBlock(QByteArrayLiteral(".\r\n"));
}

// Steps of a tenth, and not more than one a second.
void SmtpSession::showProgress(qint64 unsent)
{
    if (m_stage != Stage::Message && m_stage != Stage::Confirming)
        return;
    const auto tenths = static_cast<int>(10 * (m_written - unsent) / m_envelope.size);
    if (tenths <= m_shownTenths || tenths >= 10 || m_lastShown.elapsed() < progressInterval)
        return;
    m_shownTenths = tenths;
    m_lastShown.start();
    Q_EMIT status(tr("%1 % of the message sent").arg(tenths * 10));
}

void SmtpSession::confirmed(const SmtpReply &reply)
{
    if (reply.kind() != 2)
        return fail(refusal(tr("The server \"%1\" does not accept the message").arg(m_server.host), reply));
    const QString words = m_dialogue.words(reply);
    leave();
    Q_EMIT status(tr("The server has accepted the message: %1").arg(words));
    Q_EMIT delivered(words);
}

void SmtpSession::feedFailed(const QString &text)
{
    // Without the line that closes it, the server throws away what it has of the message.
    m_dialogue.abort();
    m_stage = Stage::Leaving;
    Q_EMIT failed(text, false, false);
    Q_EMIT finished();
}

// --- Ends
// -----------------------------------------------------------------------------------------------------------

QString SmtpSession::refusal(const QString &what, const SmtpReply &reply) const
{
    QString text = QStringLiteral("%1: %2").arg(what, m_dialogue.words(reply));
    if (reply.code == 530 && !m_server.login)
        text += QStringLiteral("\r\n")
            + tr("The server asks for a login: type user:password@ before its name, with \"@\", \":\", \"/\" "
                 "and \"%\" in "
                 "them as %40, %3A, %2F and %25.");
    return text;
}

void SmtpSession::fail(const QString &text)
{
    const bool beforeEnvelope = m_stage == Stage::Opening;
    leave();
    Q_EMIT failed(text, beforeEnvelope, false);
}

void SmtpSession::leave()
{
    m_stage = Stage::Leaving;
    m_dialogue.ask(QByteArrayLiteral("QUIT"), tr("the reply to QUIT"), m_times.farewell,
                   [this](const SmtpReply &) { m_dialogue.close(); });
}

void SmtpSession::connectionEnded(const QString &problem, bool unknownHost)
{
    const Stage stage = std::exchange(m_stage, Stage::Leaving);
    if (stage == Stage::Confirming)
        Q_EMIT failed(tr("%1 By then it had the whole message, and it is unknown whether it delivers it. Ask "
                         "a recipient "
                         "before you send it again.")
                          .arg(problem),
                      false, false);
    else if (stage != Stage::Leaving)
        Q_EMIT failed(stage == Stage::Opening ? problem : tr("%1 Nobody gets the message.").arg(problem),
                      stage == Stage::Opening, unknownHost);
    Q_EMIT finished();
}

} // namespace vandrel
