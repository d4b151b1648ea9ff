#include "BenchText.h"

#include <algorithm>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTextCursor>

#include "platform/richtext/RichTextFiles.h"

namespace vandrel::bench {

QString plainText(int characters)
{
    static const QString words[] = {
        QStringLiteral("lorem"), QStringLiteral("ipsum"),   QStringLiteral("dolor"), QStringLiteral("sit"),
        QStringLiteral("amet"),  QStringLiteral("quick"),   QStringLiteral("brown"), QStringLiteral("foxes"),
        QStringLiteral("jump"),  QStringLiteral("over"),    QStringLiteral("lazy"),  QStringLiteral("dogs"),
        QStringLiteral("while"), QStringLiteral("wizards"), QStringLiteral("watch")};
    QString text;
    text.reserve(characters + 100);
    quint32 state = 1;
    qsizetype lineStart = 0;
    while (text.size() < characters) {
        state = state * 1664525U + 1013904223U;
        text += words[(state >> 16) % std::size(words)];
        if (text.size() - lineStart > 74) {
            text += u'\n';
            lineStart = text.size();
        } else {
            text += u' ';
        }
    }
    return text;
}

void fillRich(QTextDocument &document, int characters)
{
    const QString line = plainText(400).replace(u'\n', u' ');
    QTextCharFormat plain;
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);
    QTextBlockFormat paragraph;
    QTextCursor cursor(&document);
    cursor.beginEditBlock();
    for (int i = 0; cursor.position() < characters; ++i) {
        plain.setFontPointSize(9 + i % 4);
        paragraph.setAlignment(i % 5 == 0 ? Qt::AlignHCenter : Qt::AlignLeft);
        paragraph.setTopMargin(i % 3);
        cursor.setBlockFormat(paragraph);
        cursor.insertText(line.left(60 + i % 200), plain);
        cursor.insertText(QStringLiteral(" bold words "), bold);
        cursor.insertText(line.left(30), plain);
        cursor.insertBlock();
    }
    cursor.endEditBlock();
}

std::shared_ptr<const DocumentFiles> documentFiles()
{
    return std::make_shared<RichTextFiles>(std::make_shared<DriveView>());
}

double milliseconds(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double worst(const std::vector<double> &values)
{
    return *std::max_element(values.begin(), values.end());
}

void settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents();
}

} // namespace vandrel::bench
