#include "tests/support/FormChecks.h"

#include <memory>
#include <utility>

#include <QApplication>
#include <QGroupBox>
#include <QLabel>
#include <QPointer>
#include <QTest>

#include "runtime/EventGate.h"

namespace vandrel::test {

namespace {

constexpr int longestFlood = 60'000;

// Counts how often a widget is painted.
class PaintCount : public QObject
{
public:
    explicit PaintCount(QWidget &widget) { widget.installEventFilter(this); }

    int paints() const { return m_paints; }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        m_paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

private:
    int m_paints = 0;
};

} // namespace

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

bool paintsDuringAFlood(QWidget &widget, int paints, const std::function<void(int)> &event)
{
    constexpr int mostEvents = 1'000'000;
    PaintCount count(widget);
    // What is still to come goes with it.
    const auto sender = std::make_unique<QObject>();
    int raised = 0;
    std::function<void()> raiseNext = [&] {
        event(raised);
        if (++raised < mostEvents && count.paints() < paints)
            EventGate::raise(sender.get(), raiseNext);
    };
    EventGate::raise(sender.get(), raiseNext);
    return QTest::qWaitFor([&] { return raised == mostEvents || count.paints() >= paints; }, longestFlood)
        && raised < mostEvents;
}

bool closingTakes(QWidget &form, QObject *control)
{
    const QPointer<QObject> watched(control);
    return form.close() && watched.isNull() && !form.isVisible();
}

} // namespace vandrel::test
