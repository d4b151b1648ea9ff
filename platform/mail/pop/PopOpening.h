#pragma once

#include <QObject>

#include "platform/mail/pop/PopDialogue.h"
#include "platform/mail/pop/PopLogin.h"

namespace vandrel {

/// Whom to log in, and where.
struct PopAccount {
    ServerAddress server;
    /// In UTF-8.
    QByteArray user;
    QByteArray password;
};

/// The way from the connection to the mailbox: greeting, encryption where the server offers it, login, STAT.
class PopOpening : public QObject
{
    Q_OBJECT

public:
    PopOpening(PopDialogue &dialogue, PopAccount account, QObject *parent = nullptr);

    void start();
    /// What the server offers to whom has logged in, for later questions.
    const PopCapabilities &offered() const { return m_offered; }

Q_SIGNALS:
    void status(const QString &text);
    /// The mailbox is open and holds `count` messages of `octets` together.
    void opened(qint64 count, qint64 octets);
    /// `byServer` when the text repeats the server's words.
    void refused(const QString &text, bool byServer);

private:
    void greeted(const PopReply &reply);
    void askCapabilities();
    void capabilitiesKnown();
    void encrypt();
    void logIn();
    void logInSteps(const QByteArray &mechanism, const QByteArrayList &responses);
    void logInCramMd5();
    void logInApop();
    void logInUserAndPass();
    void loginAnswered(const PopReply &reply);
    void askStat();
    void refuse(const QString &attempt, const PopReply &reply);

    PopDialogue &m_dialogue;
    const PopAccount m_account;
    QByteArray m_stamp;
    PopCapabilities m_offered;
};

} // namespace vandrel
