#include "tests/support/FormChecks.h"

#include <utility>

#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QPointer>
#include <QTest>

#include "runtime/EventGate.h"

namespace vandrel::test {

QString captionOf(const QWidget &form, const QString &name)
{
    const auto *widget = form.findChild<QWidget *>(name);
    if (!widget)
        return {};
    return widget->property(qobject_cast<const QGroupBox *>(widget) ? "title" : "text").toString();
}

QString buddyOf(const QWidget &form, const QString &label)
{
    const auto *found = form.findChild<QLabel *>(label);
    return found && found->buddy() ? found->buddy()->objectName() : QString();
}

bool showActive(QWidget &form)
{
    form.show();
    form.activateWindow();
    return QTest::qWaitForWindowActive(&form);
}

QStringList tabbedThrough(int count)
{
    QStringList visited;
    while (QApplication::focusWidget() && visited.size() <= count) {
        visited.append(QApplication::focusWidget()->objectName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    return visited;
}

Shown raiseAroundABox(ScriptedPrompts::Expectation &box,
                      QObject &control,
                      std::function<void()> opening,
                      std::function<void()> behind,
                      const std::function<QString()> &shown)
{
    Shown result{QStringLiteral("no box"), {}};
    box.meanwhile([&] {
        QCoreApplication::processEvents();
        result.duringTheBox = shown();
    });
    EventGate::raise(&control, std::move(opening));
    EventGate::raise(&control, std::move(behind));
    static_cast<void>(QTest::qWaitFor([&shown] { return !shown().isEmpty(); }));
    result.afterwards = shown();
    return result;
}

bool closingTakes(QWidget &form, QObject *control)
{
    const QPointer<QObject> watched(control);
    return form.close() && watched.isNull() && !form.isVisible();
}

} // namespace vandrel::test
