#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QStringView>

namespace vandrel {

/// Appends text as RTF: 7-bit, one "?" behind each \uN for readers that know no Unicode (so \uc1 must be in
/// force). Control characters that are no tab and no form feed are dropped.
void appendRtfText(QByteArray &to, QStringView text);

/// Appends "\name" and the number.
void appendRtfWord(QByteArray &to, const char *name, int number);

/// The octets between the braces of a whole group; empty for none.
QByteArrayView insideRtfGroup(QByteArrayView group);

/// The stream of octets that a document is written to, gathered into pieces of a size that devices like.
class RtfOutput
{
public:
    explicit RtfOutput(QIODevice &device);

    /// Octets as they stand.
    RtfOutput &operator<<(QByteArrayView octets);
    void text(QStringView text);

    /// False once the device took less than it was given; nothing more is written then.
    bool isSound() const { return m_sound; }
    void flush();

private:
    QIODevice &m_device;
    QByteArray m_pending;
    bool m_sound = true;
};

} // namespace vandrel
