#include "controls/DriveView.h"

#include <algorithm>
#include <optional>
#include <vector>

#include <QByteArrayList>
#include <QStringList>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

constexpr char16_t privateBase = 0xF000;

bool isForbiddenOctet(unsigned char octet)
{
    return (octet >= 0x01 && octet <= 0x1F) || octet == 0x7F
        || QByteArrayView("\"*:<>?|\\").contains(char(octet));
}

bool mapsBack(char16_t character)
{
    if (character <= privateBase || character > privateBase + 0xFF)
        return false;
    const auto octet = static_cast<unsigned char>(character - privateBase);
    return octet >= 0x80 || octet == ' ' || isForbiddenOctet(octet);
}

struct Utf8Form {
    int length;
    char32_t bits; ///< the payload bits of the first octet
    char32_t least; ///< smaller values are overlong
};

std::optional<Utf8Form> utf8Form(unsigned char first)
{
    if (first < 0x80)
        return Utf8Form{1, first, 0};
    if ((first & 0xE0U) == 0xC0)
        return Utf8Form{2, first & 0x1FU, 0x80};
    if ((first & 0xF0U) == 0xE0)
        return Utf8Form{3, first & 0x0FU, 0x800};
    if ((first & 0xF8U) == 0xF0)
        return Utf8Form{4, first & 0x07U, 0x10000};
    return {};
}

struct DecodedCharacter {
    char32_t character;
    int length;
};

// Decodes strictly, and by hand because the toolkit's decoder swallows a byte order mark, which is as good a
// first character of a file name as any.
std::optional<DecodedCharacter> decodeAt(const QByteArray &name, qsizetype at)
{
    const auto form = utf8Form(static_cast<unsigned char>(name[at]));
    if (!form || at + form->length > name.size())
        return {};
    char32_t value = form->bits;
    for (int i = 1; i < form->length; ++i) {
        const auto octet = static_cast<unsigned char>(name[at + i]);
        if ((octet & 0xC0U) != 0x80)
            return {};
        value = (value << 6) | (octet & 0x3FU);
    }
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < form->least || value > 0x10FFFF || isSurrogate)
        return {};
    return DecodedCharacter{value, form->length};
}

bool shownAsItIs(const DecodedCharacter &decoded, bool isLast)
{
    if (decoded.length == 1)
        return !isForbiddenOctet(static_cast<unsigned char>(decoded.character))
            && !(decoded.character == ' ' && isLast);
    return decoded.character <= privateBase || decoded.character > privateBase + 0xFF;
}

void appendEscaped(QString &shown, const QByteArray &name, qsizetype from, int length)
{
    for (int i = 0; i < length; ++i)
        shown += QChar(static_cast<char16_t>(privateBase + static_cast<unsigned char>(name[from + i])));
}

using Names = std::vector<QByteArray>;

// Resolves "." and ".." by name; ".." at the top stays there.
void descend(Names &names, const QByteArray &name)
{
    if (name.isEmpty() || name == ".")
        return;
    if (name != "..")
        names.push_back(name);
    else if (!names.empty())
        names.pop_back();
}

Names namesOf(const QByteArray &native)
{
    Names names;
    for (const QByteArray &name : native.split('/'))
        descend(names, name);
    return names;
}

bool startsWith(const Names &path, const Names &root)
{
    return path.size() >= root.size() && std::equal(root.begin(), root.end(), path.begin());
}

QByteArray joined(const QByteArray &root, const Names &names)
{
    QByteArray path = root;
    for (const QByteArray &name : names)
        path += '/' + name;
    return path.isEmpty() ? QByteArray("/") : path;
}

QString dosPath(char letter, const Names &path, std::size_t rootNames)
{
    QString dos = QLatin1Char(letter) + QLatin1String(":");
    for (std::size_t i = rootNames; i < path.size(); ++i)
        dos += u'\\' + dosName(path[i]);
    return path.size() > rootNames ? dos : dos + u'\\';
}

QString nativeText(const Names &path)
{
    QString text;
    for (const QByteArray &name : path)
        text += u'/' + dosName(name);
    return text.isEmpty() ? QStringLiteral("/") : text;
}

bool isSeparator(QChar c)
{
    return c == u'/' || c == u'\\';
}

bool namesADrive(const QString &dos)
{
    return dos.size() >= 2 && dos[1] == u':';
}

char lowerLetter(char16_t c)
{
    if (c >= u'A' && c <= u'Z')
        return static_cast<char>(c - u'A' + u'a');
    if (c >= u'a' && c <= u'z')
        return static_cast<char>(c);
    throw RuntimeError(error::DeviceUnavailable);
}

char lowerLetter(char c)
{
    return lowerLetter(static_cast<char16_t>(static_cast<unsigned char>(c)));
}

} // namespace

QString dosName(const QByteArray &nativeName)
{
    QString shown;
    shown.reserve(nativeName.size());
    for (qsizetype at = 0; at < nativeName.size();) {
        const auto decoded = decodeAt(nativeName, at);
        const int length = decoded ? decoded->length : 1;
        if (decoded && shownAsItIs(*decoded, at + length == nativeName.size()))
            shown += QChar::fromUcs4(decoded->character);
        else
            appendEscaped(shown, nativeName, at, length);
        at += length;
    }
    return shown;
}

QByteArray nativeName(const QString &dosName)
{
    if (dosName.contains(QChar::Null) || dosName.contains(u'/') || !dosName.isValidUtf16())
        throw RuntimeError(error::BadFileName);
    QByteArray name;
    name.reserve(dosName.size());
    qsizetype plainFrom = 0;
    for (qsizetype at = 0; at < dosName.size(); ++at) {
        const char16_t character = dosName[at].unicode();
        if (!mapsBack(character))
            continue;
        name += QStringView(dosName).sliced(plainFrom, at - plainFrom).toUtf8();
        name += static_cast<char>(character - privateBase);
        plainFrom = at + 1;
    }
    return name + QStringView(dosName).sliced(plainFrom).toUtf8();
}

void DriveView::setDrive(char letter, const QByteArray &nativeRoot)
{
    const std::lock_guard lock(m_mutex);
    const char drive = lowerLetter(letter);
    const QByteArray root = joined({}, namesOf(nativeRoot));
    const QByteArray normalized = root == "/" ? QByteArray() : root;
    const auto known = m_drives.find(drive);
    if (known != m_drives.end() && known->second == normalized)
        return;
    m_drives[drive] = normalized;
    m_currentFolders.erase(drive);
}

void DriveView::removeDrive(char letter)
{
    const std::lock_guard lock(m_mutex);
    const char drive = lowerLetter(letter);
    m_drives.erase(drive);
    m_currentFolders.erase(drive);
}

QString DriveView::toDos(const QByteArray &native) const
{
    const std::lock_guard lock(m_mutex);
    const char drive = driveOf(native);
    const Names path = namesOf(native);
    return drive ? dosPath(drive, path, namesOf(m_drives.at(drive)).size()) : nativeText(path);
}

QString DriveView::toDosOn(char letter, const QByteArray &native) const
{
    const std::lock_guard lock(m_mutex);
    const Names path = namesOf(native);
    const Names top = namesOf(root(letter));
    return startsWith(path, top) ? dosPath(lowerLetter(letter), path, top.size()) : toDos(native);
}

QByteArray DriveView::toNative(const QString &dos) const
{
    const std::lock_guard lock(m_mutex);
    if (dos.isEmpty() || dos.startsWith(QLatin1String("\\\\")))
        throw RuntimeError(error::BadFileName);
    Names names;
    if (dos.startsWith(u'/')) {
        for (const QString &name : dos.split(u'/'))
            descend(names, nativeName(name));
        return joined({}, names);
    }

    const char drive = driveNamedBy(dos);
    const QByteArray &top = root(drive);
    QString rest = namesADrive(dos) ? dos.sliced(2) : dos;
    if (rest.isEmpty() || !isSeparator(rest[0])) {
        for (const QByteArray &name : namesOf(folder(drive).sliced(top.size())))
            names.push_back(name);
    }
    rest.replace(u'\\', u'/');
    for (const QString &name : rest.split(u'/'))
        descend(names, nativeName(name));
    return joined(top, names);
}

std::map<char, QByteArray> DriveView::drives() const
{
    const std::lock_guard lock(m_mutex);
    return m_drives;
}

char DriveView::currentDrive() const
{
    const std::lock_guard lock(m_mutex);
    return m_currentDrive;
}

void DriveView::setCurrentDrive(char letter)
{
    const std::lock_guard lock(m_mutex);
    root(letter);
    m_currentDrive = lowerLetter(letter);
}

QString DriveView::currentFolder(char letter) const
{
    const std::lock_guard lock(m_mutex);
    return toDosOn(letter, folder(letter));
}

void DriveView::setCurrentFolder(const QString &dosFolder)
{
    const std::lock_guard lock(m_mutex);
    const QByteArray native = toNative(dosFolder);
    const char drive = dosFolder.startsWith(u'/') ? driveOf(native) : driveNamedBy(dosFolder);
    if (!drive)
        throw RuntimeError(error::DeviceUnavailable);
    m_currentFolders[drive] = native;
}

const QByteArray &DriveView::root(char letter) const
{
    const auto found = m_drives.find(lowerLetter(letter));
    if (found == m_drives.end())
        throw RuntimeError(error::DeviceUnavailable);
    return found->second;
}

const QByteArray &DriveView::folder(char letter) const
{
    const QByteArray &top = root(letter);
    const auto found = m_currentFolders.find(lowerLetter(letter));
    return found == m_currentFolders.end() ? top : found->second;
}

// The drive with the longest root that the path lies under; 0 when there is none.
char DriveView::driveOf(const QByteArray &native) const
{
    const Names path = namesOf(native);
    char best = 0;
    std::size_t bestLength = 0;
    for (const auto &[letter, root] : m_drives) {
        const Names top = namesOf(root);
        if (startsWith(path, top) && (!best || top.size() > bestLength)) {
            best = letter;
            bestLength = top.size();
        }
    }
    return best;
}

char DriveView::driveNamedBy(const QString &dos) const
{
    return namesADrive(dos) ? lowerLetter(dos[0].unicode()) : m_currentDrive;
}

} // namespace vandrel
