#pragma once

#include <memory>

#include <QByteArray>
#include <QString>

#include "platform/mail/compose/FileState.h"

namespace vandrel {

class DriveView;

/// A file that is sent with a message. It is looked at once when the message is built, and read in blocks
/// when it is sent; between the two, and while it is read, it must stay as it is.
class Attachment
{
public:
    /// Looks at the file of a DOS-style path. Raises what openForReading() raises: the file is missing,
    /// unreadable, or no plain file. A name with a line break raises Invalid procedure call (5).
    Attachment(const QString &dosPath, const DriveView &drives);
    ~Attachment();
    Attachment(const Attachment &) = delete;
    Attachment &operator=(const Attachment &) = delete;

    /// The name under which the recipient saves it.
    const QString &name() const { return m_name; }
    /// "type/subtype" by name and contents; "application/octet-stream" when unknown.
    const QByteArray &mediaType() const { return m_mediaType; }
    qint64 size() const { return m_state.size; }
    /// Octets of its base64 form (RFC 2045, section 6.8) with its line breaks.
    qint64 encodedSize() const;

    /// The next lines of the base64 form, each ended by CR LF, at most some 160 KB; empty at the end. Raises
    /// Device I/O error (57) when the file is no longer what it was when the message was built, and File not
    /// found (53) when it is gone.
    QByteArray nextEncoded();

private:
    void open();
    void checkUnchanged() const;
    [[noreturn]] void refuseChanged() const;

    QString m_shownPath;
    QByteArray m_nativePath;
    QString m_name;
    QByteArray m_mediaType;
    FileState m_state;
    std::unique_ptr<QFile> m_file;
    qint64 m_read = 0;
};

} // namespace vandrel
