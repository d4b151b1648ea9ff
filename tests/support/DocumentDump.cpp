#include "tests/support/DocumentDump.h"

#include <utility>

#include <QCryptographicHash>
#include <QDebug>
#include <QTextBlock>
#include <QTextFragment>
#include <QTextFrame>
#include <QTextList>
#include <QTextTable>

#include "controls/RichTextDocument.h"

namespace vandrel {

namespace {

QString hashOf(const QByteArray &octets)
{
    return QString::fromLatin1(QCryptographicHash::hash(octets, QCryptographicHash::Md5).toHex().left(8));
}

class Dump
{
public:
    explicit Dump(const QTextDocument &document) : m_document(document) { }

    QString text()
    {
        for (QTextBlock block = m_document.begin(); block.isValid(); block = block.next())
            addBlock(block);
        return m_text;
    }

private:
    void line(const QString &text) { m_text += text + QLatin1Char('\n'); }

    // Where a block stands: each table and cell around it.
    QString placeOf(const QTextBlock &block) const
    {
        QString place;
        QTextCursor cursor(block);
        for (QTextFrame *frame = cursor.currentFrame(); frame; frame = frame->parentFrame()) {
            const auto *table = qobject_cast<const QTextTable *>(frame);
            if (!table)
                continue;
            const QTextTableCell cell = table->cellAt(block.position());
            place.prepend(QStringLiteral("[%1x%2 cell %3,%4 span %5x%6 %7]")
                              .arg(table->rows())
                              .arg(table->columns())
                              .arg(cell.row())
                              .arg(cell.column())
                              .arg(cell.rowSpan())
                              .arg(cell.columnSpan())
                              .arg(tableFormat(*table) + cellFormat(cell)));
        }
        return place;
    }

    static QString tableFormat(const QTextTable &table)
    {
        QString text;
        for (const QTextLength &length : table.format().columnWidthConstraints())
            text += QStringLiteral("%1 ").arg(length.rawValue());
        return text + QString::number(table.format().headerRowCount()) + QLatin1Char(' ')
            + QString::number(table.format().border());
    }

    static QString cellFormat(const QTextTableCell &cell)
    {
        const QBrush behind = cell.format().background();
        const QString colour = behind.style() == Qt::SolidPattern ? behind.color().name() : QString();
        return QStringLiteral(" %1 %2").arg(cell.format().verticalAlignment()).arg(colour);
    }

    void addBlock(const QTextBlock &block)
    {
        line(QStringLiteral("paragraph %1 %2 %3 mark %4")
                 .arg(placeOf(block), blockFormat(block.blockFormat()), listOf(block), markFormat(block)));
        for (auto it = block.begin(); !it.atEnd(); ++it)
            addFragment(it.fragment());
    }

    static QString listOf(const QTextBlock &block)
    {
        const QTextList *list = block.textList();
        if (!list)
            return {};
        const QTextListFormat format = list->format();
        return QStringLiteral("list(%1 '%2' '%3' item %4 level %5 start %6)")
            .arg(format.style())
            .arg(format.numberPrefix(), format.numberSuffix())
            .arg(list->itemNumber(block))
            .arg(block.blockFormat().intProperty(richtext::ListLevel))
            .arg(format.intProperty(richtext::ListStart));
    }

    // Numbers of one list, of one file and of the toolkit's tables are told elsewhere or mean nothing.
    static QString blockFormat(const QTextBlockFormat &format)
    {
        QString text;
        for (const auto &[key, value] : format.properties().asKeyValueRange()) {
            if (key == QTextFormat::ObjectIndex || key == richtext::ListLevel
                || key == QTextFormat::TabPositions)
                continue;
            text += property(key, value);
        }
        for (const QTextOption::Tab &tab : format.tabPositions())
            text += QStringLiteral("tab(%1 %2)").arg(tab.position).arg(tab.type);
        return text;
    }

    // Whether the end of a paragraph is inside a field shows nowhere.
    QString markFormat(const QTextBlock &block)
    {
        QTextCharFormat format = block.charFormat();
        for (const int property :
             {int(richtext::FieldId), int(richtext::FieldInstruction), int(richtext::OuterFields),
              int(QTextFormat::IsAnchor), int(QTextFormat::AnchorHref)})
            format.clearProperty(property);
        return charFormat(format);
    }

    QString charFormat(const QTextCharFormat &format)
    {
        QString text;
        for (const auto &[key, value] : format.properties().asKeyValueRange()) {
            if (key == QTextFormat::ObjectIndex || key == richtext::RawHash)
                continue;
            if (key == richtext::FieldId)
                text += fieldOf(value.toInt());
            else if (key == richtext::OuterFields)
                text += outerFields(value.toList());
            else if (key == QTextFormat::ImageName)
                text += pictureOf(value.toString());
            else
                text += property(key, value);
        }
        return text;
    }

    static QString property(int key, const QVariant &value)
    {
        QString text;
        if (value.userType() == QMetaType::QByteArray)
            text = QString::fromLatin1(value.toByteArray());
        else
            QDebug(&text).nospace() << value;
        text.replace(QLatin1Char('\n'), QLatin1Char(' '));
        return QStringLiteral("%1=%2 ").arg(key, 0, 16).arg(text.trimmed());
    }

    // Numbers of fields mean nothing; only whether neighbouring runs are in one field does.
    QString fieldOf(int id)
    {
        const bool continues = id == std::exchange(m_field, id);
        return continues ? QStringLiteral("field goes on ") : QStringLiteral("field ");
    }

    static QString outerFields(const QVariantList &fields)
    {
        QString text;
        for (qsizetype i = 0; i + 1 < fields.size(); i += 2) {
            text += QStringLiteral("outer ") + QString::fromLatin1(fields[i + 1].toByteArray());
        }
        return text;
    }

    QString pictureOf(const QString &name) const
    {
        const auto *own = qobject_cast<const RichTextDocument *>(&m_document);
        const DocumentPicture *picture = own ? own->picture(name) : nullptr;
        if (!picture)
            return QStringLiteral("no picture ");
        return QStringLiteral("picture(%1 %2x%3) ")
            .arg(hashOf(picture->data))
            .arg(picture->goal.width())
            .arg(picture->goal.height());
    }

    void addFragment(const QTextFragment &fragment)
    {
        const QTextCharFormat format = fragment.charFormat();
        if (!format.hasProperty(richtext::FieldId))
            m_field = 0;
        QString text = fragment.text();
        text.replace(QChar::LineSeparator, QStringLiteral("\\l"));
        // A kept fragment shows nothing, so that its formatting is nobody's concern.
        const QString told = format.objectType() == richtext::RawObject
            ? QString::fromLatin1(format.property(richtext::RawRtf).toByteArray())
            : charFormat(format);
        line(QStringLiteral("  \"%1\" %2")
                 .arg(text, QString(told).replace(QLatin1Char('\n'), QLatin1Char(' '))));
    }

    const QTextDocument &m_document;
    QString m_text;
    int m_field = 0;
};

} // namespace

QString dumpOf(const QTextDocument &document)
{
    return Dump(document).text();
}

QString firstDifference(const QString &left, const QString &right)
{
    const QStringList lefts = left.split(QLatin1Char('\n'));
    const QStringList rights = right.split(QLatin1Char('\n'));
    for (qsizetype i = 0; i < std::max(lefts.size(), rights.size()); ++i) {
        if (lefts.value(i) != rights.value(i))
            return QStringLiteral("line %1:\n%2\n%3").arg(i + 1).arg(lefts.value(i), rights.value(i));
    }
    return {};
}

} // namespace vandrel
