#include "piceditor/GuideWindow.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "piceditor/Resources.h"
#include "runtime/Events.h"

namespace vandrel {

namespace {

// In characters and lines of the window's font.
constexpr int columns = 100;
constexpr int lines = 36;

} // namespace

QString guideChapter(const QString &guide, const QString &heading)
{
    const QString headingMark = QStringLiteral("## ");
    QStringList chapter;
    bool isInside = false;
    for (const QString &line : guide.split(u'\n')) {
        if (line.startsWith(headingMark))
            isInside = line == headingMark + heading;
        if (isInside && !line.startsWith(u"!["))
            chapter.append(line);
    }
    return chapter.join(u'\n');
}

GuideWindow::GuideWindow(const QString &chapter, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("GuideWindow"));
    setWindowTitle(tr("Help - %1").arg(chapter));
    auto *text = new QTextBrowser(this);
    text->setObjectName(QStringLiteral("GuideText"));
    text->setAccessibleName(tr("Help text"));
    text->setMarkdown(
        guideChapter(QString::fromUtf8(picEditorResource(QStringLiteral("user-guide.md"))), chapter));
    text->setOpenLinks(false);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    onEvent(buttons, &QDialogButtonBox::rejected, this, &QDialog::close);
    auto *column = new QVBoxLayout(this);
    column->addWidget(text);
    column->addWidget(buttons);
    resize(fontMetrics().averageCharWidth() * columns, fontMetrics().lineSpacing() * lines);
}

} // namespace vandrel
