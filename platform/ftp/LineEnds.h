#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace vandrel {

/// Turns the line ends of a text transfer (CR LF) into this system's (LF), piece by piece. A lone CR stays.
class LineEndsReceived
{
public:
    QByteArray convert(QByteArrayView octets);
    /// A CR at the very end that no LF has followed.
    QByteArray rest();

private:
    bool m_hasReturn = false;
};

/// Turns this system's line ends into those of a text transfer, piece by piece. A CR LF stays what it is.
class LineEndsSent
{
public:
    QByteArray convert(QByteArrayView octets);

private:
    char m_last = 0;
};

} // namespace vandrel
