#include "controls/RichTextBox.h"

#include <algorithm>
#include <utility>

#include <QCoreApplication>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>
#include <QPrinter>
#include <QScopedValueRollback>
#include <QUrl>

#include "controls/PrintProgress.h"
#include "controls/RichTextBoxPrivate.h"
#include "controls/RichTextClipboard.h"
#include "controls/RichTextPrinting.h"
#include "runtime/EventGate.h"
#include "runtime/Events.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// Up to this size a file is read at once: it takes less than the 50 ms that a person would notice.
constexpr qint64 largestImmediateFile = 512 * 1024;
// How long the window may go without being painted during long work.
constexpr int paintInterval = 50;

constexpr float smallestFontSize = 1;
constexpr float largestFontSize = 2160;

// Lets the window paint itself every now and then during long work on the user-interface thread. Input waits,
// and so do the events of other controls.
class WindowPainter
{
public:
    WindowPainter() { m_sinceLast.start(); }

    void operator()()
    {
        if (m_sinceLast.elapsed() < paintInterval)
            return;
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        m_sinceLast.restart();
    }

private:
    EventGate::Hold m_hold;
    QElapsedTimer m_sinceLast;
};

bool mayBeOpened(const QUrl &link)
{
    const QString scheme = link.scheme().toLower();
    return scheme == u"http" || scheme == u"https" || scheme == u"mailto";
}

void openLink(const QString &link)
{
    const QUrl url(link, QUrl::StrictMode);
    if (url.isValid() && mayBeOpened(url))
        QDesktopServices::openUrl(url);
}

} // namespace

RichTextBox::RichTextBox(std::shared_ptr<const DocumentFiles> files, QWidget *parent)
    : QTextEdit(parent), d(std::make_unique<Private>(this, std::move(files)))
{
    d->connectSignals();
    d->showDocument(d->emptyDocument());
    d->rememberSelection();
}

RichTextBox::~RichTextBox()
{
    // The base class still raises signals while it goes down, and what took them here is gone by then.
    disconnect(this, nullptr, this, nullptr);
    document()->disconnect(this);
}

QString RichTextBox::text() const
{
    return d->positions().text(0, document()->characterCount() - 1);
}

qint32 RichTextBox::textLength() const
{
    return d->positions().length();
}

void RichTextBox::setText(const QString &text)
{
    if (isLoading())
        return;
    d->perform([&] {
        QTextCursor all = d->cursor();
        all.beginEditBlock();
        all.select(QTextCursor::Document);
        all.removeSelectedText();
        all.setBlockFormat(QTextBlockFormat());
        all.setBlockCharFormat(QTextCharFormat());
        all.insertText(text, QTextCharFormat());
        all.endEditBlock();
        d->search.textChanged(0);
        d->groupHasChanged = true;
        all.setPosition(0);
        d->setCursor(all);
    });
}

qint32 RichTextBox::SelStart() const
{
    return d->positions().toText(d->cursor().selectionStart());
}

void RichTextBox::setSelStart(qint32 position)
{
    if (position < 0)
        throw RuntimeError(error::InvalidPropertyValue);
    d->perform([&] {
        QTextCursor caret = d->cursor();
        caret.setPosition(d->positions().toDocument(position));
        d->setCursor(caret);
    });
}

qint32 RichTextBox::SelLength() const
{
    const QTextCursor selection = d->cursor();
    return d->positions().toText(selection.selectionEnd())
        - d->positions().toText(selection.selectionStart());
}

void RichTextBox::setSelLength(qint32 length)
{
    if (length < 0)
        throw RuntimeError(error::InvalidPropertyValue);
    d->perform([&] {
        const RichTextPositions positions = d->positions();
        QTextCursor selection = d->cursor();
        const qint32 start = positions.toText(selection.selectionStart());
        const qint32 end = start + std::min(length, positions.length() - start);
        if (start == 0 && end == positions.length() && !d->groupCursor) {
            // The whole text is selected without scrolling to its end.
            selectAll();
            return;
        }
        selection.setPosition(selection.selectionStart());
        selection.setPosition(positions.toDocument(end), QTextCursor::KeepAnchor);
        d->setCursor(selection);
    });
}

QString RichTextBox::SelText() const
{
    const QTextCursor selection = d->cursor();
    return d->positions().text(selection.selectionStart(), selection.selectionEnd());
}

void RichTextBox::setSelText(const QString &text)
{
    if (isLoading())
        return;
    d->perform([&] {
        QTextCursor selection = d->cursor();
        const int start = selection.selectionStart();
        QTextCharFormat format = selection.charFormat();
        if (selection.hasSelection()) {
            // New text looks like the first character of what it replaces.
            QTextCursor first = selection;
            first.setPosition(start + 1);
            format = first.charFormat();
        }
        selection.beginEditBlock();
        selection.insertText(text, plainTextFormat(format));
        selection.endEditBlock();
        d->search.textChanged(start);
        d->groupHasChanged = true;
        d->setCursor(selection);
    });
}

std::optional<bool> RichTextBox::SelBold() const
{
    return d->formats().bold;
}

void RichTextBox::setSelBold(bool bold)
{
    if (SelBold() == bold)
        return;
    QTextCharFormat format;
    format.setFontWeight(bold ? QFont::Bold : QFont::Normal);
    d->mergeFormat(format);
}

std::optional<bool> RichTextBox::SelItalic() const
{
    return d->formats().italic;
}

void RichTextBox::setSelItalic(bool italic)
{
    if (SelItalic() == italic)
        return;
    QTextCharFormat format;
    format.setFontItalic(italic);
    d->mergeFormat(format);
}

std::optional<bool> RichTextBox::SelUnderline() const
{
    return d->formats().underline;
}

void RichTextBox::setSelUnderline(bool underline)
{
    if (SelUnderline() == underline)
        return;
    QTextCharFormat format;
    format.setFontUnderline(underline);
    d->mergeFormat(format);
}

std::optional<qint32> RichTextBox::SelColor() const
{
    return d->formats().color;
}

void RichTextBox::setSelColor(qint32 rgb)
{
    if (rgb >= 0 && SelColor() == (rgb & 0xFFFFFF))
        return;
    QTextCharFormat format;
    format.setForeground(fromRgbLong(rgb));
    d->mergeFormat(format);
}

std::optional<QString> RichTextBox::SelFontName() const
{
    return d->formats().fontName;
}

void RichTextBox::setSelFontName(const QString &name)
{
    if (SelFontName() == name)
        return;
    QTextCharFormat format;
    format.setFontFamilies({name});
    d->mergeFormat(format);
}

std::optional<float> RichTextBox::SelFontSize() const
{
    return d->formats().fontSize;
}

void RichTextBox::setSelFontSize(float points)
{
    if (!(points >= smallestFontSize && points <= largestFontSize))
        throw RuntimeError(error::InvalidPropertyValue);
    if (SelFontSize() == points)
        return;
    QTextCharFormat format;
    format.setFontPointSize(static_cast<qreal>(points));
    d->mergeFormat(format);
}

RichTextBox::Font RichTextBox::font() const
{
    const RichTextFormats unset = RichTextFormats::of(QTextCharFormat(), document()->defaultFont());
    return {*unset.fontName, static_cast<double>(*unset.fontSize)};
}

qint32 RichTextBox::find(const QString &what, std::optional<qint32> start, std::optional<qint32> end)
{
    const RichTextPositions positions = d->positions();
    const int last = document()->characterCount() - 1;
    if (start && *start > positions.length())
        return -1;
    const int from = start ? positions.toDocument(*start, RichTextPositions::Inside::Behind) : 0;
    const int to = end ? positions.toDocument(*end) : last;
    const std::optional<RichTextSearch::Match> match = d->search.find(*document(), what, from, to);
    if (!match)
        return -1;
    d->perform([&] {
        QTextCursor selection = d->cursor();
        selection.setPosition(match->start);
        selection.setPosition(match->end, QTextCursor::KeepAnchor);
        d->setCursor(selection);
    });
    return d->positions().toText(match->start);
}

void RichTextBox::LoadFile(const QString &dosPath)
{
    const qint64 size = d->files->probe(dosPath);
    if (size > largestImmediateFile) {
        d->pauseGroup();
        d->perform([this] { d->showDocument(d->emptyDocument()); });
        d->loading.start(dosPath);
        return;
    }
    DocumentProgress progress;
    LoadedDocument loaded = d->files->load(dosPath, progress);
    d->loading.stop();
    d->pauseGroup();
    d->perform([&] { d->showDocument(std::move(loaded.document)); });
    Q_EMIT loadFinished(true, loaded.notices);
}

bool RichTextBox::isLoading() const
{
    return d->loading.isRunning();
}

void RichTextBox::cancelLoading()
{
    d->loading.cancel();
}

void RichTextBox::SaveFile(const QString &dosPath)
{
    if (isLoading() || d->busy)
        throw RuntimeError(error::PermissionDenied,
                           tr("\"%1\" cannot be saved while the document is being opened, saved or printed. "
                              "Save it again when that has ended.")
                               .arg(dosPath));
    const QScopedValueRollback<bool> busy(d->busy, true);
    WindowPainter painter;
    d->files->save(dosPath, *document(), [&painter] { painter(); });
    document()->setModified(false);
}

void RichTextBox::SelPrint(QPrinter *device)
{
    if (!device || d->busy)
        return;
    const QScopedValueRollback<bool> busy(d->busy, true);
    PrintProgress progress(*this);
    if (printRichText(d->cursor(), *device, [&progress](double done) { return progress.goOn(done); })
        == PrintResult::Failed)
        throw RuntimeError(
            error::PrinterError,
            tr("The document cannot be printed on \"%1\". Check the printer and print again.")
                .arg(device->outputFileName().isEmpty() ? device->printerName() : device->outputFileName()));
}

void RichTextBox::SetFocus()
{
    setFocus(Qt::OtherFocusReason);
}

QMimeData *RichTextBox::createMimeDataFromSelection() const
{
    std::unique_ptr<QMimeData> selected;
    guarded([&] { selected = richTextMimeData(textCursor(), *d->files); });
    return selected.release();
}

bool RichTextBox::canInsertFromMimeData(const QMimeData *source) const
{
    return !isLoading() && source && hasRichText(*source);
}

void RichTextBox::insertFromMimeData(const QMimeData *source)
{
    if (isReadOnly() || !canInsertFromMimeData(source))
        return;
    guarded([&] { d->perform([&] { insertRichTextMimeData(textCursor(), *source, *d->files); }); });
    ensureCursorVisible();
}

void RichTextBox::keyPressEvent(QKeyEvent *event)
{
    // A letter with Alt asks for a mnemonic; one that nothing answers to is no text. Alt with Ctrl is how some
    // keyboards spell the third level of a key, and does type.
    const bool asksForMnemonic = event->modifiers().testFlag(Qt::AltModifier)
        && !event->modifiers().testFlag(Qt::ControlModifier) && !event->text().isEmpty()
        && event->text().front().isPrint();
    if (asksForMnemonic)
        event->ignore();
    else
        QTextEdit::keyPressEvent(event);
}

void RichTextBox::mouseReleaseEvent(QMouseEvent *event)
{
    QTextEdit::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton || !event->modifiers().testFlag(Qt::ControlModifier)
        || textCursor().hasSelection())
        return;
    guarded([&] { openLink(anchorAt(event->position().toPoint())); });
}

void RichTextBox::resizeEvent(QResizeEvent *event)
{
    QTextEdit::resizeEvent(event);
    d->loading.boxResized();
}

class RichTextBox::ChangeGroup::Private
{
public:
    QPointer<RichTextBox> box;
};

RichTextBox::ChangeGroup::ChangeGroup(RichTextBox &box) : d(std::make_unique<Private>())
{
    d->box = &box;
    box.d->beginGroup();
}

RichTextBox::ChangeGroup::~ChangeGroup()
{
    guarded([this] {
        if (d->box)
            d->box->d->endGroup();
    });
}

void RichTextBox::ChangeGroup::pause()
{
    if (d->box)
        d->box->d->pauseGroup();
}

void RichTextBox::ChangeGroup::resume()
{
    if (d->box)
        d->box->d->resumeGroup();
}

} // namespace vandrel
