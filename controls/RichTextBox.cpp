#include "controls/RichTextBox.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <QCoreApplication>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QMimeData>
#include <QMouseEvent>
#include <QPrinter>
#include <QScopedValueRollback>
#include <QTextBlock>
#include <QTimer>
#include <QUrl>

#include "controls/LoadProgress.h"
#include "controls/RichTextChanges.h"
#include "controls/RichTextClipboard.h"
#include "controls/RichTextFormats.h"
#include "controls/RichTextLayouts.h"
#include "controls/RichTextLoader.h"
#include "controls/RichTextPositions.h"
#include "controls/RichTextPrinting.h"
#include "controls/RichTextSearch.h"
#include "runtime/EventGate.h"
#include "runtime/Events.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// Up to this size a file is read at once: it takes less than the 50 ms that a person would notice.
constexpr qint64 largestImmediateFile = 512 * 1024;
// How long the window may go without being painted during long work.
constexpr int paintInterval = 50;
// Loading shows its progress only when it takes this long.
constexpr int progressDelay = 1000;
constexpr int progressInterval = 100;
// Programs that a handler of SelChange sets off by changing the selection itself are followed this far.
constexpr int mostSelChangesInARow = 8;

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

} // namespace

class RichTextBox::Private
{
public:
    Private(RichTextBox *owner, std::shared_ptr<const DocumentFiles> documentFiles)
        : q(owner), files(std::move(documentFiles)), loader(files), layouts(*owner)
    { }

    void connectSignals();
    void showDocument(std::unique_ptr<RichTextDocument> document);
    std::unique_ptr<RichTextDocument> emptyDocument() const;

    // The selection that the program works on; inside a group the window's own stays behind.
    QTextCursor cursor() const { return groupCursor ? *groupCursor : q->textCursor(); }
    void setCursor(const QTextCursor &cursor);
    RichTextPositions positions() const { return RichTextPositions(*q->document()); }
    const RichTextFormats &formats();
    void mergeFormat(const QTextCharFormat &format);
    void suitLayout(qint64 newCharacters = 0);

    // Runs one operation; its events are raised behind it.
    template<typename Operation>
    void perform(Operation &&operation);
    void raiseEvents();
    void raiseSelChange();

    void beginGroup();
    void pauseGroup();
    void resumeGroup();
    void endGroup();

    void startLoading(const QString &dosPath);
    void endLoading();
    void showProgress();
    void finishLoading(const std::shared_ptr<LoadedDocument> &result);
    void failLoading(const RuntimeError &failure);
    void openLink(const QString &link) const;

    RichTextBox *q;
    /// A child of the box.
    RichTextDocument *shown = nullptr;
    std::shared_ptr<const DocumentFiles> files;
    RichTextLoader loader;
    RichTextChanges changes;
    RichTextSearch search;
    RichTextLayouts layouts;

    int operations = 0;
    bool changePending = false;
    bool raisingSelChange = false;
    bool selChangeAgain = false;
    int lastAnchor = 0;
    int lastPosition = 0;
    QTextCharFormat lastFormat;

    struct KnownFormats {
        int start = 0;
        int end = 0;
        int revision = 0;
        RichTextFormats formats;
    };
    std::optional<KnownFormats> knownFormats;

    int groups = 0;
    std::optional<QTextCursor> groupCursor;
    bool groupHasChanged = false;
    // The undo step at which the group was paused; nothing to join before its first change.
    std::optional<int> groupStep;

    bool wasReadOnly = false;
    QTimer progressTimer;
    LoadProgress *progress = nullptr;
    bool busy = false;
};

void RichTextBox::Private::connectSignals()
{
    onEvent(&changes, &RichTextChanges::textChanged, q, [this](int position) {
        changePending = true;
        search.textChanged(position);
    });
    onEvent(q, &QTextEdit::cursorPositionChanged, q, [this] { raiseEvents(); });
    onEvent(q, &QTextEdit::selectionChanged, q, [this] { raiseEvents(); });
    onEvent(q, &QTextEdit::currentCharFormatChanged, q, [this] { raiseEvents(); });
    onEvent(&loader, &RichTextLoader::loaded, q,
            [this](const std::shared_ptr<LoadedDocument> &result) { finishLoading(result); });
    onEvent(&loader, &RichTextLoader::failed, q,
            [this](const RuntimeError &failure) { failLoading(failure); });
    onEvent(&progressTimer, &QTimer::timeout, q, [this] { showProgress(); });
}

std::unique_ptr<RichTextDocument> RichTextBox::Private::emptyDocument() const
{
    auto document = std::make_unique<RichTextDocument>();
    document->setDefaultFont(q->QTextEdit::font());
    return document;
}

void RichTextBox::Private::showDocument(std::unique_ptr<RichTextDocument> document)
{
    // The document that the toolkit's control starts with is the control's own and goes by itself.
    const std::unique_ptr<RichTextDocument> old(std::exchange(shown, document.release()));
    // The box's children are deleted behind its own parts, which refer to the document to the last.
    shown->setParent(q);
    shown->setUndoRedoEnabled(true);
    shown->setModified(false);
    layouts.prepare(*shown);
    knownFormats.reset();
    search.reset();
    changes.watch(shown);
    q->setDocument(shown);
    q->setTextCursor(QTextCursor(shown));
    onEvent(shown, &QTextDocument::contentsChanged, q, [this] {
        suitLayout();
        raiseEvents();
    });
}

void RichTextBox::Private::setCursor(const QTextCursor &cursor)
{
    if (groupCursor)
        groupCursor = cursor;
    else
        q->setTextCursor(cursor);
}

// A layout can change only between operations; what is going to be inserted is better laid out by the right one
// from the start.
void RichTextBox::Private::suitLayout(qint64 newCharacters)
{
    if (groupCursor)
        return;
    const qint64 characters = q->document()->characterCount() + newCharacters;
    if (!layouts.isUnsuited(static_cast<int>(std::min<qint64>(characters, std::numeric_limits<int>::max()))))
        return;
    changes.setPaused(true);
    layouts.change();
    changes.setPaused(false);
}

const RichTextFormats &RichTextBox::Private::formats()
{
    const QTextCursor selection = cursor();
    const KnownFormats now{
        selection.selectionStart(), selection.selectionEnd(), q->document()->revision(), {}};
    // Without a selection it is the caret that has a format, and that changes with no trace in the document.
    const bool known = selection.hasSelection() && knownFormats && knownFormats->start == now.start
        && knownFormats->end == now.end && knownFormats->revision == now.revision;
    if (!known) {
        knownFormats = now;
        knownFormats->formats = RichTextFormats::of(selection);
    }
    return knownFormats->formats;
}

void RichTextBox::Private::mergeFormat(const QTextCharFormat &format)
{
    if (loader.isRunning())
        return;
    perform([&] {
        if (groupCursor)
            groupCursor->mergeCharFormat(format);
        else
            q->mergeCurrentCharFormat(format);
    });
}

template<typename Operation>
void RichTextBox::Private::perform(Operation &&operation)
{
    {
        const QScopedValueRollback<int> inside(operations, operations + 1);
        operation();
    }
    raiseEvents();
}

void RichTextBox::Private::raiseEvents()
{
    if (operations > 0 || groupCursor)
        return;
    if (std::exchange(changePending, false))
        Q_EMIT q->Change();
    raiseSelChange();
}

// The toolkit reports one move of the caret by up to three signals, and a handler may itself change what is
// selected or its format: the event is raised once for each state, and never from inside itself.
void RichTextBox::Private::raiseSelChange()
{
    if (raisingSelChange) {
        selChangeAgain = true;
        return;
    }
    const QScopedValueRollback<bool> raising(raisingSelChange, true);
    for (int round = 0; round < mostSelChangesInARow; ++round) {
        const QTextCursor now = q->textCursor();
        const QTextCharFormat format = now.charFormat();
        if (now.anchor() == lastAnchor && now.position() == lastPosition && format == lastFormat)
            return;
        lastAnchor = now.anchor();
        lastPosition = now.position();
        lastFormat = format;
        selChangeAgain = false;
        Q_EMIT q->SelChange();
        if (!selChangeAgain)
            return;
    }
}

void RichTextBox::Private::beginGroup()
{
    if (groups++ == 0)
        resumeGroup();
}

void RichTextBox::Private::resumeGroup()
{
    if (groupCursor)
        return;
    groupCursor = q->textCursor();
    groupHasChanged = false;
    // Joining a step that is not the group's own would undo the user's work together with the group's.
    if (groupStep && *groupStep > 0 && *groupStep == q->document()->availableUndoSteps())
        groupCursor->joinPreviousEditBlock();
    else
        groupCursor->beginEditBlock();
}

void RichTextBox::Private::pauseGroup()
{
    if (!groupCursor)
        return;
    const QTextCursor selection = *groupCursor;
    {
        const QScopedValueRollback<int> inside(operations, operations + 1);
        groupCursor->endEditBlock();
        groupCursor.reset();
        if (groupHasChanged)
            groupStep = q->document()->availableUndoSteps();
        q->setTextCursor(selection);
    }
    raiseEvents();
}

void RichTextBox::Private::endGroup()
{
    if (--groups > 0)
        return;
    pauseGroup();
    groupStep.reset();
}

void RichTextBox::Private::startLoading(const QString &dosPath)
{
    if (!loader.isRunning())
        wasReadOnly = q->isReadOnly();
    perform([this] { showDocument(emptyDocument()); });
    q->setReadOnly(true);
    loader.start(dosPath);
    progressTimer.start(progressDelay);
}

void RichTextBox::Private::endLoading()
{
    progressTimer.stop();
    if (progress)
        progress->deleteLater();
    progress = nullptr;
    q->setReadOnly(wasReadOnly);
}

void RichTextBox::Private::showProgress()
{
    if (!progress) {
        progress = new LoadProgress(q->viewport());
        onEvent(progress, &LoadProgress::cancelled, q, &RichTextBox::cancelLoading);
        progress->center();
        progress->show();
        progressTimer.start(progressInterval);
    }
    progress->setProgress(loader.progress());
}

void RichTextBox::Private::finishLoading(const std::shared_ptr<LoadedDocument> &result)
{
    endLoading();
    const bool loaded = result->document != nullptr;
    if (loaded)
        perform([&] { showDocument(std::move(result->document)); });
    Q_EMIT q->loadFinished(loaded, result->notices);
}

void RichTextBox::Private::failLoading(const RuntimeError &failure)
{
    endLoading();
    Q_EMIT q->loadFinished(false, {});
    throw failure;
}

void RichTextBox::Private::openLink(const QString &link) const
{
    const QUrl url(link, QUrl::StrictMode);
    if (url.isValid() && mayBeOpened(url))
        QDesktopServices::openUrl(url);
}

RichTextBox::RichTextBox(std::shared_ptr<const DocumentFiles> files, QWidget *parent)
    : QTextEdit(parent), d(std::make_unique<Private>(this, std::move(files)))
{
    d->connectSignals();
    d->showDocument(d->emptyDocument());
    d->changePending = false;
}

RichTextBox::~RichTextBox()
{
    // The base class still raises signals while it goes down, and there is nobody left to take them.
    disconnect();
    document()->disconnect(this);
    d->loader.cancel();
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
    d->suitLayout(text.size());
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
    d->suitLayout(text.size());
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
        d->startLoading(dosPath);
        return;
    }
    DocumentProgress progress;
    LoadedDocument loaded = d->files->load(dosPath, progress);
    if (isLoading()) {
        d->loader.cancel();
        d->endLoading();
    }
    d->perform([&] { d->showDocument(std::move(loaded.document)); });
    Q_EMIT loadFinished(true, loaded.notices);
}

bool RichTextBox::isLoading() const
{
    return d->loader.isRunning();
}

void RichTextBox::cancelLoading()
{
    if (!isLoading())
        return;
    d->loader.cancel();
    d->endLoading();
    Q_EMIT loadFinished(false, {});
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
    WindowPainter painter;
    if (!printRichText(d->cursor(), *device, [&painter] { painter(); }))
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

void RichTextBox::mouseReleaseEvent(QMouseEvent *event)
{
    QTextEdit::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton || !event->modifiers().testFlag(Qt::ControlModifier)
        || textCursor().hasSelection())
        return;
    guarded([&] { d->openLink(anchorAt(event->position().toPoint())); });
}

void RichTextBox::resizeEvent(QResizeEvent *event)
{
    QTextEdit::resizeEvent(event);
    if (d->progress)
        d->progress->center();
}

class RichTextBox::ChangeGroup::Private
{
public:
    explicit Private(RichTextBox &owner) : box(owner) { }

    RichTextBox &box;
};

RichTextBox::ChangeGroup::ChangeGroup(RichTextBox &box) : d(std::make_unique<Private>(box))
{
    box.d->beginGroup();
}

RichTextBox::ChangeGroup::~ChangeGroup()
{
    guarded([this] { d->box.d->endGroup(); });
}

void RichTextBox::ChangeGroup::pause()
{
    d->box.d->pauseGroup();
}

void RichTextBox::ChangeGroup::resume()
{
    d->box.d->resumeGroup();
}

} // namespace vandrel
