#include "platform/ftp/FtpLogin.h"

#include <utility>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

constexpr quint16 usualPort = 21;
constexpr quint16 encryptedPort = 990;
constexpr int passwordWanted = 331;

const std::vector<ServerScheme> &schemes()
{
    static const std::vector<ServerScheme> known{{QStringLiteral("ftp"), usualPort, false},
                                                 {QStringLiteral("ftps"), encryptedPort, true}};
    return known;
}

bool isAnonymous(const QString &user)
{
    return user.compare(QLatin1String("anonymous"), Qt::CaseInsensitive) == 0
        || user.compare(QLatin1String("ftp"), Qt::CaseInsensitive) == 0;
}

} // namespace

FtpLogin::FtpLogin(FtpLink &link, const FtpRequest &request, QObject *parent)
    : QObject(parent), m_link(link), m_address(ServerAddress::parse(request.server, schemes())),
      m_user(request.user), m_password(request.password)
{
    // A user in the address counts for more than the one that stands in the box unasked.
    if (m_address.userGiven && (m_user.isEmpty() || isAnonymous(m_user))) {
        m_user = m_address.user;
        m_password = m_address.password;
    }
    if (m_user.isEmpty())
        m_user = QStringLiteral("anonymous");
    if (isAnonymous(m_user) && m_password.isEmpty())
        m_password = QStringLiteral("anonymous@");
}

void FtpLogin::start()
{
    if (!m_address.isUsable()) {
        Q_EMIT failed(ftpFailure(FtpProblem::BadAddress, m_address.problem));
        return;
    }
    m_link.open(m_address.host, m_address.port, m_address.implicitTls,
                [this](const FtpReply &reply) { greeted(reply); });
}

void FtpLogin::ask(const QByteArray &command, FtpLink::OnReply onReply)
{
    if (!m_link.ask(command, std::move(onReply)))
        Q_EMIT failed(ftpFailure(error::BadFileName,
                                 tr("The user name or password holds a line break or a NUL, which "
                                    "cannot be sent. Type it again.")));
}

void FtpLogin::greeted(const FtpReply &reply)
{
    // 120: the server asks to wait for its second greeting.
    if (reply.isPreliminary())
        return;
    if (!reply.isCompletion())
        Q_EMIT failed(ftpFailure(reply.number, reply.text()));
    else if (m_link.isEncrypted())
        sendUser();
    else
        offerTls();
}

void FtpLogin::offerTls()
{
    ask("AUTH TLS", [this](const FtpReply &reply) {
        if (reply.isCompletion())
            m_link.startTls([this] { sendUser(); });
        else
            refuseIfOffered(reply);
    });
}

// A server that offers encryption and does not give it would be sent the password in the clear, and so would be whoever
// took the place of its answer.
void FtpLogin::refuseIfOffered(const FtpReply &refusal)
{
    ask("FEAT", [this, refusal](const FtpReply &features) {
        if (features.isCompletion() && offersTls(features))
            Q_EMIT failed(ftpFailure(FtpProblem::Encryption,
                                     tr("The server offers to encrypt the connection and then refuses to: %1")
                                         .arg(refusal.text())));
        else
            sendUser();
    });
}

void FtpLogin::sendUser()
{
    ask("USER " + m_user.toUtf8(), [this](const FtpReply &reply) {
        if (reply.isCompletion())
            loggedIn();
        else if (reply.number == passwordWanted)
            sendPassword();
        else
            Q_EMIT failed(ftpFailure(reply.number, reply.text()));
    });
}

void FtpLogin::sendPassword()
{
    ask("PASS " + m_password.toUtf8(), [this](const FtpReply &reply) {
        if (reply.isCompletion())
            loggedIn();
        else
            Q_EMIT failed(ftpFailure(reply.number, reply.text()));
    });
}

void FtpLogin::loggedIn()
{
    if (m_link.isEncrypted())
        protectData();
    else
        askFeatures();
}

void FtpLogin::protectData()
{
    ask("PBSZ 0", [this](const FtpReply &) {
        ask("PROT P", [this](const FtpReply &reply) {
            m_protectsData = reply.isCompletion();
            if (m_protectsData)
                askFeatures();
            else
                Q_EMIT failed(
                    ftpFailure(reply.number,
                               tr("The server does not encrypt what is transferred: %1").arg(reply.text())));
        });
    });
}

void FtpLogin::askFeatures()
{
    ask("FEAT", [this](const FtpReply &reply) {
        if (reply.isCompletion())
            m_features = featuresOffered(reply);
        if (m_features.contains("UTF8"))
            chooseUtf8();
        else
            Q_EMIT done();
    });
}

void FtpLogin::chooseUtf8()
{
    ask("OPTS UTF8 ON", [this](const FtpReply &) { Q_EMIT done(); });
}

} // namespace vandrel
