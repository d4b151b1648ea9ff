#include "platform/mail/pop/PopOpening.h"

#include <memory>
#include <utility>

#include "platform/net/SaslResponses.h"

namespace vandrel {

namespace {

constexpr qint64 largestOffer = 64 * 1024;

} // namespace

PopOpening::PopOpening(PopDialogue &dialogue, PopAccount account, QObject *parent)
    : QObject(parent), m_dialogue(dialogue), m_account(std::move(account))
{ }

void PopOpening::start()
{
    m_dialogue.open(m_account.server, [this](const PopReply &reply) { greeted(reply); });
}

void PopOpening::refuse(const QString &attempt, const PopReply &reply)
{
    const QString words = reply.text().isEmpty() ? tr("it gave no reason") : reply.text();
    Q_EMIT refused(tr("\"%1\" %2: %3").arg(m_account.server.host, attempt, words), true);
}

void PopOpening::greeted(const PopReply &reply)
{
    if (!reply.isOk()) {
        refuse(tr("does not take the connection"), reply);
        return;
    }
    m_stamp = apopStamp(reply.words);
    askCapabilities();
}

void PopOpening::askCapabilities()
{
    // What was said before the connection was encrypted may have been anybody's word.
    m_offered = {};
    m_dialogue.askLines(
        "CAPA", tr("the list of what it offers"), largestOffer,
        [this](const QByteArray &line) { m_offered.add(line); },
        [this](const PopReply &reply) {
            m_offered.stated = reply.isOk();
            capabilitiesKnown();
        });
}

void PopOpening::capabilitiesKnown()
{
    if (m_offered.stls && !m_dialogue.isEncrypted())
        encrypt();
    else
        logIn();
}

// Once offered, encryption is not done without: whoever makes it fail may want to read along.
void PopOpening::encrypt()
{
    m_dialogue.ask("STLS", tr("the answer to STLS"), [this](const PopReply &reply) {
        if (reply.isOk())
            m_dialogue.startTls([this] { askCapabilities(); });
        else
            refuse(tr("offered to encrypt the connection and then refused"), reply);
    });
}

void PopOpening::logIn()
{
    const bool encrypted = m_dialogue.isEncrypted();
    Q_EMIT status(encrypted ? tr("Encrypted with %1. Logging in...").arg(m_dialogue.tlsVersion())
                            : tr("Logging in..."));
    switch (chooseLogin(m_offered, encrypted, !m_stamp.isEmpty())) {
    case PopLogin::Plain:
        logInSteps("PLAIN", {saslPlainResponse(m_account.user, m_account.password)});
        break;
    case PopLogin::Login:
        logInSteps("LOGIN", {m_account.user.toBase64(), m_account.password.toBase64()});
        break;
    case PopLogin::CramMd5:
        logInCramMd5();
        break;
    case PopLogin::Apop:
        logInApop();
        break;
    case PopLogin::UserAndPass:
        logInUserAndPass();
        break;
    case PopLogin::None:
        Q_EMIT refused(tr("\"%1\" offers no way to log in that is known here; it offers %2.")
                           .arg(m_account.server.host, popText(m_offered.sasl.join(", "))),
                       false);
        break;
    }
}

void PopOpening::logInSteps(const QByteArray &mechanism, const QByteArrayList &responses)
{
    const auto left = std::make_shared<QByteArrayList>(responses);
    m_dialogue.askInSteps("AUTH " + mechanism, tr("the answer to the login"),
                          [this, left](const PopReply &reply) {
                              if (reply.kind != PopReply::Kind::Continuation)
                                  loginAnswered(reply);
                              else
                                  m_dialogue.reply(left->isEmpty() ? "*" : left->takeFirst());
                          });
}

void PopOpening::logInCramMd5()
{
    m_dialogue.askInSteps("AUTH CRAM-MD5", tr("the answer to the login"),
                          [this, answeredOnce = std::make_shared<bool>(false)](const PopReply &reply) {
                              if (reply.kind != PopReply::Kind::Continuation)
                                  loginAnswered(reply);
                              else if (std::exchange(*answeredOnce, true))
                                  m_dialogue.reply("*");
                              else
                                  m_dialogue.reply(
                                      saslCramMd5Response(m_account.user, m_account.password, reply.words));
                          });
}

void PopOpening::logInApop()
{
    m_dialogue.ask("APOP " + m_account.user + ' ' + apopDigest(m_stamp, m_account.password),
                   tr("the answer to the login"), [this](const PopReply &reply) { loginAnswered(reply); });
}

void PopOpening::logInUserAndPass()
{
    m_dialogue.ask("USER " + m_account.user, tr("the answer to the user name"),
                   [this](const PopReply &named) {
                       if (!named.isOk()) {
                           loginAnswered(named);
                           return;
                       }
                       m_dialogue.ask("PASS " + m_account.password, tr("the answer to the login"),
                                      [this](const PopReply &reply) { loginAnswered(reply); });
                   });
}

void PopOpening::loginAnswered(const PopReply &reply)
{
    if (reply.isOk())
        askStat();
    else
        refuse(tr("refused the login"), reply);
}

void PopOpening::askStat()
{
    m_dialogue.ask("STAT", tr("the answer to STAT"), [this](const PopReply &reply) {
        const auto numbers = PopNumbers::parse(reply.words);
        if (!reply.isOk())
            refuse(tr("does not tell what the mailbox holds"), reply);
        else if (!numbers)
            Q_EMIT refused(tr(R"("%1" answered "%2" when asked what the mailbox holds.)")
                               .arg(m_account.server.host, reply.text()),
                           false);
        else
            Q_EMIT opened(numbers->first, numbers->second);
    });
}

} // namespace vandrel
