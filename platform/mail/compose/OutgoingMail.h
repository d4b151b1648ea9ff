#pragma once

#include <deque>
#include <vector>

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

#include "platform/mail/compose/Attachment.h"
#include "platform/mail/compose/MailAddress.h"

namespace vandrel {

class DriveView;

/// A message as it was typed.
struct MailDraft {
    QString from;
    QString to;
    QString cc;
    QString subject;
    QString body;
    /// Full DOS-style paths, each followed by ";" (see attachmentPaths()).
    QString attachments;
};

/// A message ready to be sent (RFC 5322, RFC 2045 to 2047, RFC 2231): its envelope, its size, and its octets
/// in blocks. Every line ends in CR LF and is at most 998 octets long, the message's last one too; everything
/// but header fields with addresses outside ASCII is 7-bit. Attachments are read from disk while the message
/// is sent and never held as a whole.
///
/// Built and read on any one thread; both may wait for a disk.
class OutgoingMail
{
public:
    /// Raises Invalid procedure call (5) with a text for the user when a field cannot be sent, and what
    /// Attachment raises for a file that cannot be.
    OutgoingMail(const MailDraft &draft, const DriveView &drives);

    /// The address in the envelope; never empty.
    const MailAddress &sender() const { return m_sender; }
    /// To and Cc in order, each mailbox once; at least one.
    const std::vector<MailAddress> &recipients() const { return m_recipients; }

    /// Octets in all, as the blocks will have.
    qint64 size() const { return m_size; }
    /// The next block, at most some 160 KB beside the text; empty at the end. Raises what
    /// Attachment::nextEncoded() raises.
    QByteArray next();

private:
    void readAddresses(const MailDraft &draft);
    QByteArray header(const MailDraft &draft) const;
    void build(const MailDraft &draft);
    void buildParts(const QByteArray &fields, const QByteArray &text);

    MailAddress m_sender;
    std::vector<MailAddress> m_to;
    std::vector<MailAddress> m_cc;
    std::vector<MailAddress> m_recipients;
    std::deque<Attachment> m_attachments;
    // What comes before each attachment, and at the end what follows the last.
    std::deque<QByteArray> m_texts;
    bool m_textIsNext = true;
    qint64 m_size = 0;
};

} // namespace vandrel
