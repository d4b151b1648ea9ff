#pragma once

#include <functional>

#include <QString>
#include <QStringList>

#include "tests/support/ScriptedPrompts.h"

class QObject;
class QWidget;

namespace vandrel::test {

/// What the tests of all windows ask of a form, by the names of its widgets.

/// What stands on a label, a button or a frame; null where the form has no widget of that name.
QString captionOf(const QWidget &form, const QString &name);
/// The name of the box that a label is the buddy of; null where there is no such label or no box.
QString buddyOf(const QWidget &form, const QString &label);

/// Shows the form and waits until it has the keyboard; false when it does not come.
bool showActive(QWidget &form);
/// The widgets that Tab visits, from the one with the focus on: `count` names and that of the one behind them.
QStringList tabbedThrough(int count);

/// What a form shows at two moments.
struct Shown {
    QString duringTheBox;
    QString afterwards;
};

/// Raises two events of a control right behind each other, of which the first opens `box`, and tells what the form
/// shows while the box is open and once something is shown.
Shown raiseAroundABox(ScriptedPrompts::Expectation &box,
                      QObject &control,
                      std::function<void()> opening,
                      std::function<void()> behind,
                      const std::function<QString()> &shown);

/// Raises event after event, each as soon as the one before is delivered, until `widget` has been painted `paints` times
/// between them. `event` gets the number of the event. False when the flood ran dry without.
bool paintsDuringAFlood(QWidget &widget, int paints, const std::function<void(int)> &event);

/// Closes the form; true when it is out of sight and has taken the control with it.
bool closingTakes(QWidget &form, QObject *control);

} // namespace vandrel::test
