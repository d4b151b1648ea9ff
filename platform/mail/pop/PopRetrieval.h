#pragma once

#include <memory>

#include <QElapsedTimer>
#include <QObject>

#include "platform/mail/pop/MailSpool.h"
#include "platform/mail/pop/PopDialogue.h"
#include "platform/mail/pop/PopLimits.h"

namespace vandrel {

/// Fetches one message and turns it into readable text, the latter on a thread of its own. Destroying it stops both
/// at once as far as this side is concerned.
class PopRetrieval : public QObject
{
    Q_OBJECT

public:
    PopRetrieval(PopDialogue &dialogue, qint64 number, const PopLimits &limits, QObject *parent = nullptr);
    ~PopRetrieval() override;

    void start();
    /// Wants the message no more; cancelled() follows when the server has sent the rest of it.
    void cancel();

Q_SIGNALS:
    void status(const QString &text);
    void retrieved(const QString &text);
    /// `byServer` when the text repeats the server's words.
    void refused(const QString &text, bool byServer);
    void cancelled();
    /// The message has no end within the limit, so that the session cannot go on.
    void tooLarge(const QString &text);

private:
    struct Conversion;

    void received(QByteArrayView octets);
    void answered(const PopReply &reply);
    void convert();
    void converted(const std::shared_ptr<Conversion> &conversion);

    PopDialogue &m_dialogue;
    const qint64 m_number;
    const PopLimits m_limits;
    MailSpool m_spool;
    QElapsedTimer m_sinceStatus;
    std::shared_ptr<Conversion> m_conversion;
    bool m_cancelled = false;
    bool m_endless = false;
};

} // namespace vandrel
