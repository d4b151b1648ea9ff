#include "controls/OneLine.h"

#include <algorithm>

#include <QLineEdit>
#include <QStringList>
#include <QValidator>

namespace vandrel {

namespace {

bool breaksLine(QChar character)
{
    switch (character.unicode()) {
    case u'\0':
    case u'\n':
    case u'\v':
    case u'\f':
    case u'\r':
    case 0x85:
    case QChar::LineSeparator:
    case QChar::ParagraphSeparator:
        return true;
    default:
        return false;
    }
}

// The toolkit asks for the text's state on every way into the box, and takes a better text with it.
class OneLine : public QValidator
{
public:
    OneLine(QLineEdit *box, QString separator) : QValidator(box), m_separator(std::move(separator)) { }

    State validate(QString &text, int &position) const override
    {
        if (std::none_of(text.begin(), text.end(), breaksLine))
            return Acceptable;
        const QString joined = onOneLine(text, m_separator);
        const QString behind = onOneLine(text.mid(position), m_separator);
        position = static_cast<int>(std::max<qsizetype>(0, joined.size() - behind.size()));
        text = joined;
        return Acceptable;
    }

private:
    const QString m_separator;
};

} // namespace

QString onOneLine(const QString &text, const QString &separator)
{
    if (std::none_of(text.begin(), text.end(), breaksLine))
        return text;
    QString joined;
    auto begin = text.begin();
    while (begin != text.end()) {
        const auto end = std::find_if(begin, text.end(), breaksLine);
        const QString line = QString(begin, end - begin).trimmed();
        if (!line.isEmpty() && !joined.isEmpty())
            joined += joined.endsWith(u',') || joined.endsWith(u';') ? QStringLiteral(" ") : separator;
        joined += line;
        begin = end == text.end() ? end : end + 1;
    }
    return joined;
}

void keepOnOneLine(QLineEdit *box, const QString &separator)
{
    delete box->validator();
    box->setValidator(new OneLine(box, separator));
}

} // namespace vandrel
