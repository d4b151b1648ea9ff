#pragma once

#include "platform/imaging/codecs/Decoding.h"

namespace vandrel {

/// Pictures that are made of lines, shapes and text.
enum class DrawingKind { Wmf, Wpg };

/// Has a metafile or a vector picture drawn by the program that the request names. Such files are little programs, and
/// what runs them is the part of the suite that is easiest to lead astray; so it runs as a process of its own, within
/// limits of time and memory, that reads the file from its input and answers with nothing but pixels. Raises
/// PictureFailure where it fails, answers nonsense, or takes longer than 15 seconds.
///
/// The program is called with "wmf" or "wpg" and answers: "VPIX", the width and the height in pixels, of 32 bits each,
/// least significant octet first, then the rows, top to bottom, blue, green and red an octet each, nothing between.
DecodedPicture drawWithProgram(QIODevice &device, DrawingKind kind, const DecodeRequest &request);

} // namespace vandrel
