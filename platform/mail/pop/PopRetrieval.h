#pragma once

#include <memory>

#include <QElapsedTimer>
#include <QObject>

#include "platform/mail/pop/MailSpool.h"
#include "platform/mail/pop/PopDialogue.h"
#include "platform/mail/pop/PopLimits.h"

namespace vandrel {

/// Fetches one message and turns it into readable text, the latter on a thread of its own unless the message is small.
/// Destroying it stops both at once as far as this side is concerned.
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

    void giveUp();
    void received(QByteArrayView octets);
    void showProgress();
    void answered(const PopReply &reply);
    void convertMeanwhile();
    void converted();
    void deliver();

    PopDialogue &m_dialogue;
    const qint64 m_number;
    const PopLimits m_limits;
    const std::shared_ptr<MailSpool> m_spool;
    const std::shared_ptr<Conversion> m_conversion;
    QElapsedTimer m_sinceStatus;
    qint64 m_size = 0;
    bool m_isWhole = false;
    bool m_isConverting = false;
    bool m_isConverted = false;
    bool m_cancelled = false;
    bool m_endless = false;
};

} // namespace vandrel
