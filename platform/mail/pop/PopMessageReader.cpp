#include "platform/mail/pop/PopMessageReader.h"

namespace vandrel {

qsizetype PopMessageReader::read(QByteArrayView octets, const Sink &sink)
{
    qsizetype at = 0;
    while (at < octets.size() && m_state != State::End) {
        switch (m_state) {
        case State::Text:
            at = readText(octets, at, sink);
            break;
        case State::Dot:
            at = readBehindDot(octets, at);
            break;
        case State::DotReturn:
            at = readBehindReturn(octets, at, sink);
            break;
        case State::End:
            break;
        }
    }
    remember(octets.first(at));
    return at;
}

// Dots are rarer than line ends, so that they are what is looked for.
qsizetype PopMessageReader::readText(QByteArrayView octets, qsizetype at, const Sink &sink)
{
    qsizetype dot = octets.indexOf('.', at);
    while (dot >= 0 && !beginsLine(octets, dot))
        dot = octets.indexOf('.', dot + 1);
    const qsizetype end = dot < 0 ? octets.size() : dot;
    if (end > at)
        sink(octets.sliced(at, end - at));
    if (dot < 0)
        return end;
    m_state = State::Dot;
    return dot + 1;
}

qsizetype PopMessageReader::readBehindDot(QByteArrayView octets, qsizetype at)
{
    const char c = octets.at(at);
    if (c == '\r') {
        m_state = State::DotReturn;
        return at + 1;
    }
    if (c == '\n' && !m_strict) {
        m_state = State::End;
        return at + 1;
    }
    // Whatever follows is the message's own, a second dot too: the octet before it is no line end.
    m_state = State::Text;
    return at;
}

qsizetype PopMessageReader::readBehindReturn(QByteArrayView octets, qsizetype at, const Sink &sink)
{
    if (octets.at(at) == '\n') {
        m_state = State::End;
        return at + 1;
    }
    m_state = State::Text;
    sink(QByteArrayView("\r", 1));
    return at;
}

bool PopMessageReader::beginsLine(QByteArrayView octets, qsizetype at) const
{
    const char last = at > 0 ? octets.at(at - 1) : m_last;
    const char lastButOne = at > 1 ? octets.at(at - 2) : at == 1 ? m_last : m_lastButOne;
    return last == '\n' && (!m_strict || lastButOne == '\r');
}

void PopMessageReader::remember(QByteArrayView octets)
{
    if (octets.empty())
        return;
    m_lastButOne = octets.size() > 1 ? octets.at(octets.size() - 2) : m_last;
    m_last = octets.back();
}

} // namespace vandrel
