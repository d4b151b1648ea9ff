#pragma once

#include <memory>

#include "controls/DocumentFiles.h"
#include "platform/richtext/RtfFormats.h"
#include "platform/richtext/RtfLists.h"
#include "platform/richtext/RtfPrologue.h"
#include "platform/richtext/RtfRows.h"
#include "platform/richtext/RtfStory.h"

namespace vandrel {

/// All that was read of a document, ready to be put together.
struct RtfContents {
    RtfStory body;
    RtfStory notes; ///< footnotes, endnotes and comments, put behind the body
    const RtfFormats &formats;
    const RtfLists &lists;
    const QList<RtfLegacyList> &legacyLists;
    const QList<RtfRowDefinition> &rows;
    const QList<QByteArray> &sections;
};

/// Fills an empty document. `progress.done` grows by about one for each unit of the text. Returns false when
/// cancelled.
bool assembleRtf(RichTextDocument &document, const RtfContents &contents, DocumentProgress &progress);

} // namespace vandrel
