#include "RtfDescription.h"

#include <QBrush>
#include <QFont>
#include <QTextBlock>

#include "platform/richtext/RtfReader.h"

namespace vandrel::test {

LoadedDocument load(const QByteArray &rtf)
{
    DocumentProgress progress;
    return readRtf(rtf, progress);
}

LoadedDocument loadBody(const QByteArray &body)
{
    return load("{\\rtf1\\ansi\\deff0{\\fonttbl{\\f0 Serif;}{\\f1 Mono;}}"
                "{\\colortbl;\\red255\\green0\\blue0;\\red0\\green0\\blue255;}"
                + body + '}');
}

QString shownText(const QTextDocument &document)
{
    QString text = document.toRawText();
    const auto show = [&text](char16_t what, char as) { text.replace(QChar(what), QLatin1Char(as)); };
    show(0xFDD0, '[');
    show(0xFDD1, ']');
    show(0x2029, '\n');
    show(0x2028, '|');
    show(QChar::ObjectReplacementCharacter, '#');
    return text;
}

QString shownText(const QByteArray &body)
{
    return shownText(*loadBody(body).document);
}

namespace {

QString describe(const QTextCharFormat &format)
{
    QStringList parts;
    const auto say = [&parts](bool is, const QString &what) {
        if (is)
            parts.append(what);
    };
    say(format.fontWeight() == QFont::Bold, QStringLiteral("b"));
    say(format.fontItalic(), QStringLiteral("i"));
    say(format.fontUnderline(), QStringLiteral("ul"));
    say(format.fontStrikeOut(), QStringLiteral("strike"));
    say(format.boolProperty(richtext::DoubleStrike), QStringLiteral("double"));
    say(format.verticalAlignment() == QTextCharFormat::AlignSuperScript, QStringLiteral("super"));
    say(format.verticalAlignment() == QTextCharFormat::AlignSubScript, QStringLiteral("sub"));
    say(format.fontCapitalization() == QFont::AllUppercase, QStringLiteral("caps"));
    say(format.fontCapitalization() == QFont::SmallCaps, QStringLiteral("scaps"));
    say(format.fontPointSize() != 12, QString::number(format.fontPointSize()));
    const QString family = format.fontFamilies().toStringList().value(0);
    say(family != QLatin1String("Serif"), family);
    say(format.hasProperty(QTextFormat::ForegroundBrush), format.foreground().color().name());
    say(format.hasProperty(QTextFormat::BackgroundBrush),
        QStringLiteral("on ") + format.background().color().name());
    if (const int rise = format.intProperty(richtext::BaselineHalfPoints))
        parts.append(QStringLiteral("rise %1").arg(rise));
    if (const int style = format.intProperty(richtext::CharacterStyle))
        parts.append(QStringLiteral("cs%1").arg(style));
    if (const QString kept = format.stringProperty(richtext::KeptWords); !kept.isEmpty())
        parts.append(kept);
    return parts.join(u' ');
}

} // namespace

QString shownRuns(const QTextDocument &document)
{
    QString shown;
    for (auto it = document.begin().begin(); !it.atEnd(); ++it)
        shown += it.fragment().text() + u'{' + describe(it.fragment().charFormat()) + u'}';
    return shown;
}

QString shownRuns(const QByteArray &body)
{
    return shownRuns(*loadBody(body).document);
}

QTextCharFormat formatOf(const QTextDocument &document, const QString &text)
{
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            if (it.fragment().text().contains(text))
                return it.fragment().charFormat();
        }
    }
    return {};
}

} // namespace vandrel::test
