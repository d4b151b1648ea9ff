#pragma once

#include <memory>

#include <QByteArray>
#include <QObject>
#include <QString>

#include "platform/mail/compose/MailAddress.h"
#include "platform/mail/compose/OutgoingMail.h"

namespace vandrel {

class DriveView;

/// What a server is told of a message before the message itself.
struct MailEnvelope {
    MailAddress sender;
    std::vector<MailAddress> recipients;
    /// Octets of the message.
    qint64 size = 0;

    /// The addresses outside ASCII, which need a server with SMTPUTF8.
    std::vector<MailAddress> outsideAscii() const;
};

/// Builds a message and reads it on a thread of its own, since a disk may keep its reader waiting; what it
/// reads is ready for the wire, with dots doubled where a line begins with one (RFC 5321 section 4.5.2).
///
/// Lives on the user-interface thread. Signals come from the event loop. Destroying it raises nothing more
/// and waits for nothing: a thread that hangs on a disk ends when the disk answers.
class MessageFeed : public QObject
{
    Q_OBJECT

public:
    explicit MessageFeed(QObject *parent = nullptr);
    ~MessageFeed() override;

    /// Builds the message; prepared() or failed() follows. Once.
    void prepare(const MailDraft &draft, const std::shared_ptr<const DriveView> &drives);
    /// Asks for one block; block(), ended() or failed() follows. Several may be asked for in advance. Only
    /// after prepared().
    void request();

Q_SIGNALS:
    void prepared(const vandrel::MailEnvelope &envelope);
    /// Some 160 KB at most; never empty.
    void block(const QByteArray &octets);
    /// The message is complete, its last line ended.
    void ended();
    /// The message cannot be built, or read to its end; `text` says why.
    void failed(const QString &text);

private:
    class Worker;
    std::shared_ptr<Worker> m_worker;
};

/// Doubles the dots at the beginnings of lines in a stream of blocks.
class DotStuffing
{
public:
    QByteArray stuffed(const QByteArray &block);

private:
    bool m_lineBegins = true;
};

} // namespace vandrel
