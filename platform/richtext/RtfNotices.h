#pragma once

#include <QStringList>

namespace vandrel {

/// What a reader met that is not shown as it is, or will not be kept.
struct RtfLosses {
    int drawingsAsText = 0;
    int drawingsHidden = 0;
    int objectsAsText = 0;
    int objectsHidden = 0;
    int pictureFrames = 0;
    int headers = 0;
    int footers = 0;
    int footnotes = 0;
    int comments = 0;
    bool hiddenText = false;
    bool deletedText = false;
    bool tablesAsText = false;
    bool tooDeep = false;
    bool tail = false;
    bool truncated = false;
};

/// The losses as sentences for the user, the gravest first. Empty when there are none.
QStringList rtfNotices(const RtfLosses &losses);

} // namespace vandrel
