#pragma once

#include <QLabel>
#include <QString>

namespace vandrel {

/// A label of a form: plain text, whatever it holds, under its own name, and the name of its box where it has one.
QLabel *captionOf(const QString &name, const QString &caption, QWidget *buddy, QWidget *parent);

} // namespace vandrel
