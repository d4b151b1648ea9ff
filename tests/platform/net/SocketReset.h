#pragma once

#include <QtGlobal>

namespace vandrel {

/// Makes closing that socket break the connection (RST) instead of ending it in good order.
void resetWhenClosed(qintptr socket);

} // namespace vandrel
