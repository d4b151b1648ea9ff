#include "controls/RichTextChanges.h"

#include <algorithm>
#include <utility>

#include <QTextBlock>

#include "runtime/Events.h"

namespace vandrel {

void RichTextChanges::watch(QTextDocument *document)
{
    if (m_document)
        disconnect(m_document, nullptr, this, nullptr);
    m_document = document;
    m_stepIsText.clear();
    m_step = document->availableUndoSteps();
    m_commandAdded = false;
    onEvent(document, &QTextDocument::undoCommandAdded, this, [this] { m_commandAdded = true; });
    onEvent(document, &QTextDocument::contentsChange, this, &RichTextChanges::contentsChange);
}

// The undo stack is a row of commands; a step is a place in it. Undoing or doing again moves the place
// without adding a command, and what it changes is what the commands passed over had changed.
void RichTextChanges::contentsChange(int position, int removed, int added)
{
    const int before = std::exchange(m_step, m_document->availableUndoSteps());
    const bool isNew
        = std::exchange(m_commandAdded, false) || m_step == before || !m_document->isUndoRedoEnabled();
    if (!isNew) {
        if (isText(std::min(before, m_step), std::max(before, m_step)))
            Q_EMIT textChanged(position);
        return;
    }
    const bool text = isNewText(position, removed, added);
    m_stepIsText.resize(static_cast<std::size_t>(m_step), true);
    // A command that joins the one before it leaves the step where it was.
    if (m_step > before)
        std::fill(m_stepIsText.begin() + std::max(0, before), m_stepIsText.end(), text);
    else if (m_step > 0)
        m_stepIsText.back() = m_stepIsText.back() || text;
    if (text)
        Q_EMIT textChanged(position);
}

// A change of format replaces text by as much text and leaves the paragraphs' revisions alone.
bool RichTextChanges::isNewText(int position, int removed, int added) const
{
    if (removed != added)
        return true;
    const int revision = m_document->revision();
    for (QTextBlock block = m_document->findBlock(position);
         block.isValid() && block.position() <= position + added; block = block.next()) {
        if (block.revision() == revision)
            return true;
    }
    return false;
}

bool RichTextChanges::isText(int fromStep, int toStep) const
{
    const auto size = static_cast<int>(m_stepIsText.size());
    if (toStep > size)
        return true;
    return std::any_of(m_stepIsText.begin() + fromStep, m_stepIsText.begin() + toStep,
                       [](bool text) { return text; });
}

} // namespace vandrel
