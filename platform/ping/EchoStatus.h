#pragma once

#include <QString>

#include "platform/ping/EchoWay.h"

namespace vandrel {

/// What came of a ping, as one sentence for the user. `name` is what was pinged, as shown.
QString echoStatus(const QString &name, const EchoQuestion &question, const EchoOutcome &outcome);

} // namespace vandrel
