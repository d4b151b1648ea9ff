#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

namespace vandrel {

/// The picture of a tool-bar button, `resources/piceditor/<name>.svg`, drawn sharp at any scale. Its outlines take the
/// colour of the texts on buttons, so that they stand out from a light and from a dark desktop, or `ink` where that is
/// given: for a button with a colour of its own.
QIcon toolIcon(const QString &name, const QColor &ink = {});

} // namespace vandrel
