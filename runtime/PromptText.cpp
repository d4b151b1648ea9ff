#include "runtime/PromptText.h"

#include <algorithm>

#include <QDialog>
#include <QFontMetrics>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScreen>
#include <QStyle>

namespace vandrel {

namespace {

// Longer texts are not measured: they scroll. What is measured opens at once.
constexpr qsizetype longestLabel = 4000;
// Bounds for texts that come from servers and files: layout takes time that grows with a line's length.
constexpr qsizetype longestText = 1'000'000;
constexpr qsizetype longestLine = 5000;
// Lines much longer than this are hard to read.
constexpr int charactersPerLine = 90;
constexpr int frameMargin = 40;

constexpr Qt::TextInteractionFlags selectable = Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard;

QSize availableSize(const QWidget *widget)
{
    return widget->screen()->availableSize();
}

// The largest text that leaves room for an icon, the buttons and the window's frame.
QSize largestText(const QWidget *box)
{
    const QSize available = availableSize(box);
    const int readable = box->fontMetrics().averageCharWidth() * charactersPerLine;
    return {std::min(available.width() * 3 / 5, readable), available.height() / 2};
}

QString withLineFeeds(QString text)
{
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(u'\r', u'\n');
    return text;
}

QString bounded(const QString &text)
{
    if (text.size() <= longestText)
        return text;
    return text.left(longestText)
        + QStringLiteral("\n... and %1 more characters.").arg(text.size() - longestText);
}

QString withBrokenLines(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (QStringView line : QStringView(text).split(u'\n')) {
        for (; line.size() > longestLine; line = line.mid(longestLine))
            result.append(line.left(longestLine)).append(u'\n');
        result.append(line).append(u'\n');
    }
    result.chop(1);
    return result;
}

QSize measured(const QString &text, int width, int wrap, const QWidget *box)
{
    return box->fontMetrics()
        .boundingRect(QRect(0, 0, width, QWIDGETSIZE_MAX), Qt::AlignLeft | Qt::TextExpandTabs | wrap, text)
        .size();
}

// A view as large as its text needs, within a bound.
class TextView : public QPlainTextEdit
{
public:
    TextView(const QString &text, QSize wanted, QWidget *parent) : QPlainTextEdit(parent), m_wanted(wanted)
    {
        setReadOnly(true);
        setUndoRedoEnabled(false);
        setTextInteractionFlags(selectable);
        setTabChangesFocus(true);
        setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        setPlainText(text);
    }

    QSize sizeHint() const override { return m_wanted; }
    QSize minimumSizeHint() const override { return {m_wanted.width() / 3, fontMetrics().height() * 3}; }

private:
    QSize m_wanted;
};

QWidget *makeView(const QString &text, QWidget *box)
{
    const QSize largest = largestText(box);
    int height = largest.height();
    if (text.size() <= longestLabel)
        height = std::min(height, measured(text, largest.width(), Qt::TextWrapAnywhere, box).height());
    // The frame, the document's margin and lines to spare, for the view breaks at words first.
    const int extra = 2 * box->fontMetrics().lineSpacing() + frameMargin / 2;
    auto *const view
        = new TextView(withBrokenLines(bounded(text)), {largest.width() + frameMargin, height + extra}, box);
    view->setAccessibleName(QStringLiteral("Message"));
    return view;
}

QWidget *makeLabel(const QString &text, QSize size, QWidget *box)
{
    auto *const label = new QLabel(text, box);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(selectable);
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    // The label lays its text out a little wider than it was measured.
    label->setMinimumWidth(size.width() + label->fontMetrics().averageCharWidth());
    return label;
}

} // namespace

QWidget *makePromptText(const QString &text, QWidget *screenOf)
{
    const QString shown = withLineFeeds(text);
    const QSize largest = largestText(screenOf);
    QSize size = largest + QSize(1, 1);
    if (shown.size() <= longestLabel)
        size = measured(shown, largest.width(), Qt::TextWordWrap, screenOf);
    const bool fits = size.width() <= largest.width() && size.height() <= largest.height();
    QWidget *const widget = fits ? makeLabel(shown, size, screenOf) : makeView(shown, screenOf);
    widget->setObjectName(QStringLiteral("text"));
    return widget;
}

void keepOnScreen(QDialog *box)
{
    box->setMaximumSize(availableSize(box) - QSize(frameMargin / 2, frameMargin));
}

} // namespace vandrel
