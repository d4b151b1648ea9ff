#include "internet/RemoteNameBox.h"

#include <algorithm>

#include "runtime/Events.h"

namespace vandrel {

namespace {

constexpr char16_t firstPrivate = 0xF000;
constexpr char16_t firstControlPicture = 0x2400;
constexpr char16_t deletePicture = 0x2421;
constexpr char16_t blankPicture = 0x2423;
constexpr char16_t fractionSlash = 0x2044;
constexpr char16_t noCharacter = 0xFFFD;

char16_t readableOctet(char16_t octet)
{
    if (octet < u' ')
        return static_cast<char16_t>(firstControlPicture + octet);
    if (octet == u' ')
        return blankPicture;
    if (octet == u'/')
        return fractionSlash;
    if (octet == 0x7F)
        return deletePicture;
    return octet < 0xA0 ? noCharacter : octet;
}

} // namespace

QString readableRemoteText(QString text)
{
    for (QChar &character : text) {
        const char16_t value = character.unicode();
        if (value >= firstPrivate && value <= firstPrivate + 0xFF)
            character = QChar(readableOctet(static_cast<char16_t>(value - firstPrivate)));
    }
    return text;
}

RemoteNameBox::RemoteNameBox(QWidget *parent) : QLineEdit(parent)
{
    onEvent(this, &QLineEdit::textChanged, this, &RemoteNameBox::follow);
}

void RemoteNameBox::setName(const QString &name)
{
    m_name = name;
    m_shown = readableRemoteText(name);
    setText(m_shown);
}

// Name and shown text have as many characters, so that what stands before and behind a change is found in both.
void RemoteNameBox::follow(const QString &text)
{
    const auto before = std::mismatch(m_shown.cbegin(), m_shown.cend(), text.cbegin(), text.cend()).first;
    const qsizetype kept = before - m_shown.cbegin();
    const qsizetype mostBehind = std::min(m_shown.size(), text.size()) - kept;
    qsizetype behind = 0;
    while (behind < mostBehind && m_shown[m_shown.size() - 1 - behind] == text[text.size() - 1 - behind])
        ++behind;
    m_name = m_name.left(kept) + text.mid(kept, text.size() - kept - behind) + m_name.right(behind);
    m_shown = text;
}

} // namespace vandrel
