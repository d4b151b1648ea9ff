#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>

#include <QSet>
#include <QTimer>

#include "controls/POPMail.h"
#include "platform/mail/pop/PopDialogue.h"
#include "platform/mail/pop/PopLimits.h"

namespace vandrel {

class PopListing;
class PopOpening;
class PopRetrieval;

/// The POP3 mailbox (RFC 1939, 2449, 2595, 5034): encrypted from the first octet on port 995 and with "pop3s://",
/// otherwise by STLS as soon as the server offers it. A user and a password before the host's name serve where the
/// properties are empty.
///
/// One session is one connection. What is asked for is carried out in order; "DisconnectNow" overtakes transfers,
/// which it ends, but no deletion.
class PopMailbox : public POPMail
{
    Q_OBJECT

public:
    explicit PopMailbox(const PopLimits &limits = {}, QObject *parent = nullptr);
    ~PopMailbox() override;

    void setPOPServer(const QString &server) override;
    void setPOPUser(const QString &user) override;
    void setPOPPassword(const QString &password) override;
    void setMailNumber(std::int16_t number) override;
    std::int16_t MailNumber() const override;
    std::int16_t MailCount() const override;
    void setConnectNow(bool start) override;
    void setDisconnectNow(bool start) override;
    void setRetrieveNow(bool start) override;
    void setListNow(bool start) override;
    void setDeleteNow(bool start) override;

private:
    enum class Kind {
        Connect,
        Disconnect,
        Retrieve,
        List,
        Delete,
    };

    struct Operation {
        Kind kind = Kind::Connect;
        std::int16_t number = 0;
        QString server;
        QString user;
        QString password;
    };

    // What is known of the open mailbox.
    struct Session {
        // Declared here and defined outside: the class around it is not complete yet when the optional asks for it.
        Session();

        std::unique_ptr<PopDialogue> dialogue;
        QString host;
        PopCapabilities offered;
        bool loggedIn = false;
        qint64 count = 0;
        QSet<qint64> deleted;
    };

    void request(Operation operation);
    void startNext();
    void run(const Operation &operation);
    void finishOperation();
    bool hasQueued(Kind kind) const;

    void connectMailbox(const Operation &operation);
    void makeSession(const QString &host);
    void opened(qint64 count, qint64 octets);
    void reportMailbox(qint64 count, qint64 octets);

    void retrieve(std::int16_t number);
    void list();
    void remove(std::int16_t number);
    void removeAnswered(std::int16_t number, const PopReply &reply);
    QString numberProblem(std::int16_t number) const;

    void hurryToDisconnect();
    void cancelTransfer();
    void quit();
    void quitAnswered(const PopReply &reply);
    void quitUnanswered(const QString &problem, bool byServer);

    void refuseOperation(const QString &text);
    void failOperation(const QString &text, bool byServer);
    void dialogueEnded(const QString &problem, bool byServer);
    void endSession(const QString &problem, bool byServer);
    void dropSession();
    void dropQueuedForSession();

    void raise(std::function<void()> event);
    void raiseStatus(const QString &text);
    void raiseError(const QString &text, bool byServer);
    void raiseBusy(bool busy);

    const PopLimits m_limits;
    QString m_server;
    QString m_user;
    QString m_password;
    std::int16_t m_mailNumber = 0;
    // As the events delivered so far have it.
    std::int16_t m_mailCount = 0;

    std::deque<Operation> m_queue;
    std::optional<Kind> m_running;
    std::optional<Session> m_session;
    std::unique_ptr<PopOpening> m_opening;
    std::unique_ptr<PopRetrieval> m_retrieval;
    std::unique_ptr<PopListing> m_listing;
    QTimer m_endingTransfer;
};

} // namespace vandrel
