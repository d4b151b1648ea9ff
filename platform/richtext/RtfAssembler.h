#pragma once

#include <memory>

#include "controls/DocumentFiles.h"
#include "platform/richtext/RtfFormats.h"
#include "platform/richtext/RtfLists.h"
#include "platform/richtext/RtfNotices.h"
#include "platform/richtext/RtfPrologue.h"
#include "platform/richtext/RtfRows.h"
#include "platform/richtext/RtfStory.h"

namespace vandrel {

/// All that was read of a document, ready to be put together.
struct RtfContents {
    RtfStory body;
    RtfStory notes; ///< footnotes and comments, put behind the body
    const RtfFormats &formats;
    const RtfLists &lists;
    const QList<RtfLegacyList> &legacyLists;
    const QList<RtfRowDefinition> &rows;
    const QList<QByteArray> &sections;
};

/// Fills an empty document. `progress.done` grows by about one for each unit of the text. Returns false when
/// cancelled. Adds to `losses` what the toolkit cannot show.
bool assembleRtf(RichTextDocument &document,
                 const RtfContents &contents,
                 DocumentProgress &progress,
                 RtfLosses &losses);

} // namespace vandrel
