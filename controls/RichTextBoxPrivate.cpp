#include "controls/RichTextBoxPrivate.h"

#include <utility>

#include "runtime/Events.h"

namespace vandrel {

namespace {

// A handler of SelChange may change the selection itself; it is followed this far.
constexpr int mostSelChangesInARow = 8;

} // namespace

RichTextBox::Private::Private(RichTextBox *owner, std::shared_ptr<const DocumentFiles> documentFiles)
    : q(owner), files(std::move(documentFiles)), loading(*owner, files), layouts(*owner)
{ }

void RichTextBox::Private::connectSignals()
{
    onEvent(&changes, &RichTextChanges::textChanged, q, [this](int position) {
        changePending = true;
        search.textChanged(position);
    });
    onEvent(q, &QTextEdit::cursorPositionChanged, q, [this] { raiseEvents(); });
    onEvent(q, &QTextEdit::selectionChanged, q, [this] { raiseEvents(); });
    onEvent(q, &QTextEdit::currentCharFormatChanged, q, [this] { raiseEvents(); });
    onEvent(&loading, &RichTextLoading::loaded, q,
            [this](const std::shared_ptr<LoadedDocument> &result) { finishLoading(result); });
    onEvent(&loading, &RichTextLoading::failed, q,
            [this](const RuntimeError &failure) { failLoading(failure); });
    onEvent(&loading, &RichTextLoading::cancelled, q, [this] { Q_EMIT q->loadFinished(false, {}); });
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
    groupStep.reset();
    search.reset();
    changes.watch(shown);
    q->setDocument(shown);
    q->setTextCursor(QTextCursor(shown));
    // The caret of another document is another one, even where it looks the same.
    lastAnchor = -1;
    onEvent(shown, &QTextDocument::contentsChanged, q, [this] { raiseEvents(); });
}

void RichTextBox::Private::setCursor(const QTextCursor &cursor)
{
    if (groupCursor)
        groupCursor = cursor;
    else
        q->setTextCursor(cursor);
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
    if (loading.isRunning())
        return;
    perform([&] {
        if (groupCursor)
            groupCursor->mergeCharFormat(format);
        else
            q->mergeCurrentCharFormat(format);
    });
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
        rememberSelection();
        selChangeAgain = false;
        Q_EMIT q->SelChange();
        if (!selChangeAgain)
            return;
    }
}

void RichTextBox::Private::rememberSelection()
{
    const QTextCursor now = q->textCursor();
    lastAnchor = now.anchor();
    lastPosition = now.position();
    lastFormat = now.charFormat();
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

void RichTextBox::Private::finishLoading(const std::shared_ptr<LoadedDocument> &result)
{
    const bool loaded = result->document != nullptr;
    if (loaded)
        perform([&] { showDocument(std::move(result->document)); });
    Q_EMIT q->loadFinished(loaded, result->notices);
}

void RichTextBox::Private::failLoading(const RuntimeError &failure)
{
    Q_EMIT q->loadFinished(false, {});
    throw failure;
}

} // namespace vandrel
