#pragma once

#include <optional>

#include <QByteArrayView>

#include "platform/ping/EchoWay.h"

namespace vandrel {

/// Reads what the system's ping command prints about one request, in its untranslated words (iputils; called with -n).
/// `output` is what it has printed so far. Nothing while that decides nothing yet.
std::optional<EchoOutcome> readPingCommandOutput(QByteArrayView output);

/// What to make of an output that is complete and has decided nothing: its first line is the reason.
EchoOutcome undecidedPingCommandOutput(QByteArrayView output);

} // namespace vandrel
