#pragma once

#include <memory>
#include <optional>

#include <QScopedValueRollback>
#include <QTextCursor>

#include "controls/RichTextBox.h"
#include "controls/RichTextChanges.h"
#include "controls/RichTextFormats.h"
#include "controls/RichTextLayouts.h"
#include "controls/RichTextLoading.h"
#include "controls/RichTextPositions.h"
#include "controls/RichTextSearch.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

/// What the rich-text box keeps behind its members: the document it shows, the selection its program works on, the
/// events it owes, the open group of changes.
class RichTextBox::Private
{
public:
    Private(RichTextBox *owner, std::shared_ptr<const DocumentFiles> documentFiles);

    void connectSignals();
    void showDocument(std::unique_ptr<RichTextDocument> document);
    std::unique_ptr<RichTextDocument> emptyDocument() const;

    // The selection that the program works on; inside a group the window's own stays behind.
    QTextCursor cursor() const { return groupCursor ? *groupCursor : q->textCursor(); }
    void setCursor(const QTextCursor &cursor);
    RichTextPositions positions() const { return RichTextPositions(*q->document()); }
    const RichTextFormats &formats();
    void mergeFormat(const QTextCharFormat &format);

    // Runs one operation; its events are raised behind it.
    template<typename Operation>
    void perform(Operation &&operation);
    void raiseEvents();
    void raiseSelChange();
    void rememberSelection();

    void beginGroup();
    void pauseGroup();
    void resumeGroup();
    void endGroup();

    void finishLoading(const std::shared_ptr<LoadedDocument> &result);
    void failLoading(const RuntimeError &failure);

    RichTextBox *q;
    /// A child of the box.
    RichTextDocument *shown = nullptr;
    std::shared_ptr<const DocumentFiles> files;
    RichTextLoading loading;
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

    // Saving or printing is under way.
    bool busy = false;
};

template<typename Operation>
void RichTextBox::Private::perform(Operation &&operation)
{
    {
        const QScopedValueRollback<int> inside(operations, operations + 1);
        operation();
    }
    raiseEvents();
}

} // namespace vandrel
