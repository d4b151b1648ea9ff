#include "platform/mail/compose/Attachment.h"

#include <cstring>

#include <QFile>
#include <QMimeDatabase>

#include "controls/DriveView.h"
#include "platform/filesystem/NativeFile.h"
#include "platform/mail/compose/HeaderText.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// 57 octets make a line of 76 characters.
constexpr qint64 octetsInLine = 57;
constexpr qint64 charactersInLine = 76;
constexpr qint64 linesInBlock = 2048;

QByteArray inLines(const QByteArray &base64)
{
    const qint64 size = base64.size();
    const qint64 lines = (size + charactersInLine - 1) / charactersInLine;
    QByteArray text(size + 2 * lines, Qt::Uninitialized);
    char *to = text.data();
    for (qint64 at = 0; at < size; at += charactersInLine) {
        const auto length = static_cast<std::size_t>(std::min(charactersInLine, size - at));
        std::memcpy(to, base64.constData() + at, length);
        to += length;
        *to++ = '\r';
        *to++ = '\n';
    }
    return text;
}

// Octets that are not UTF-8 are taken one by one, so that every file has a name that can be sent.
QString sentName(const QByteArray &nativeName)
{
    const QString name = QString::fromUtf8(nativeName);
    return name.toUtf8() == nativeName ? name : QString::fromLatin1(nativeName);
}

QByteArray mediaTypeOf(const QString &name, QFile &file)
{
    const QString type = QMimeDatabase().mimeTypeForFileNameAndData(name, &file).name();
    // Messages and containers of parts may not be sent in base64 under their own type, and an empty file of
    // an unknown kind has none.
    const bool usual = !type.startsWith(QStringLiteral("message/"))
        && !type.startsWith(QStringLiteral("multipart/")) && !type.startsWith(QStringLiteral("inode/"))
        && type != QStringLiteral("application/x-zerosize");
    return usual && type.contains(u'/') ? type.toLatin1() : QByteArrayLiteral("application/octet-stream");
}

} // namespace

Attachment::Attachment(const QString &dosPath, const DriveView &drives)
    : m_shownPath(dosPath), m_nativePath(drives.toNative(dosPath)),
      m_name(sentName(m_nativePath.mid(m_nativePath.lastIndexOf('/') + 1)))
{
    checkHeaderText(m_name, QStringLiteral("The name of the attachment \"%1\"").arg(m_shownPath));
    const auto file = openForReading(m_nativePath, m_shownPath);
    const auto state = fileState(*file);
    if (!state)
        refuseChanged();
    m_state = *state;
    m_mediaType = mediaTypeOf(m_name, *file);
}

Attachment::~Attachment() = default;

qint64 Attachment::encodedSize() const
{
    const qint64 characters = (m_state.size + 2) / 3 * 4;
    const qint64 lines = (characters + charactersInLine - 1) / charactersInLine;
    return characters + 2 * lines;
}

QByteArray Attachment::nextEncoded()
{
    if (!m_file)
        open();
    const qint64 wanted = std::min(octetsInLine * linesInBlock, m_state.size - m_read);
    const QByteArray octets = m_file->read(wanted);
    checkUnchanged();
    if (octets.size() != wanted)
        refuseChanged();
    m_read += wanted;
    if (wanted == 0)
        m_file.reset();
    return inLines(octets.toBase64());
}

void Attachment::open()
{
    m_file = openForReading(m_nativePath, m_shownPath);
    m_read = 0;
    checkUnchanged();
}

void Attachment::checkUnchanged() const
{
    if (fileState(*m_file) != m_state)
        refuseChanged();
}

void Attachment::refuseChanged() const
{
    throw RuntimeError(
        error::DeviceIoError,
        QStringLiteral("The attachment \"%1\" changed or vanished while the message was being sent, "
                       "so nobody gets the message. Send it again when the file is complete.")
            .arg(m_shownPath));
}

} // namespace vandrel
