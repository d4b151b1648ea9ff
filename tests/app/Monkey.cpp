#include "tests/app/Monkey.h"

#include <array>
#include <utility>

#include <QApplication>
#include <QEventLoop>
#include <QMenu>
#include <QMetaMethod>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

namespace vandrel::test {

namespace {

// How many boxes and menus may be open inside each other before it only closes them.
constexpr int deepest = 6;
// How many steps closing everything may take.
constexpr int enoughToClose = 2000;

QList<QWidget *> shownWindows()
{
    QList<QWidget *> shown;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->windowType() != Qt::ToolTip)
            shown += widget;
    }
    return shown;
}

/// A value of that type, or an invalid one for a type that no control tells of.
QVariant valueOf(QMetaType type, Monkey &monkey)
{
    switch (type.id()) {
    case QMetaType::QString:
        return monkey.text();
    case QMetaType::Bool:
        return monkey.below(2) == 1;
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::Double: {
        QVariant number(monkey.below(70'000) - 35'000);
        number.convert(type);
        return number;
    }
    default:
        return {};
    }
}

} // namespace

void Monkey::run(int steps)
{
    m_left = steps;
    m_ended = false;
    schedule();
    while (!m_ended)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void Monkey::schedule()
{
    QTimer::singleShot(0, qApp, [this] { step(); });
}

void Monkey::step()
{
    // The next step is on its way before this one, which may open a box and come back only when it is closed.
    --m_left;
    m_ended = m_left < 0 && shownWindows().isEmpty();
    if (m_ended)
        return;
    if (m_left < -enoughToClose)
        qFatal("\"%s\" cannot be closed", qPrintable(shownWindows().constFirst()->windowTitle()));
    schedule();
    ++m_depth;
    if (m_left < 0)
        finish();
    else
        act();
    --m_depth;
}

void Monkey::finish()
{
    if (QWidget *const window = target()) {
        if (QApplication::activePopupWidget())
            QTest::keyClick(window, Qt::Key_Escape);
        else
            window->close();
    }
}

QWidget *Monkey::target()
{
    if (QWidget *const popUp = QApplication::activePopupWidget())
        return popUp;
    if (QWidget *const box = QApplication::activeModalWidget())
        return box;
    const QList<QWidget *> shown = shownWindows();
    return shown.isEmpty() ? nullptr : shown.at(below(static_cast<int>(shown.size())));
}

void Monkey::act()
{
    QWidget *const window = target();
    const bool inner = QApplication::activePopupWidget() || QApplication::activeModalWidget();
    if (inner && (m_depth > deepest || below(4) == 0))
        return finish();
    if (!window || (!inner && below(40) == 0))
        return open();
    using Step = void (Monkey::*)(QWidget *);
    static const std::array<std::pair<Step, int>, 7> steps{{{&Monkey::click, 9},
                                                            {&Monkey::press, 5},
                                                            {&Monkey::type, 3},
                                                            {&Monkey::drag, 2},
                                                            {&Monkey::turnWheel, 1},
                                                            {&Monkey::raiseAnEvent, 5},
                                                            {&Monkey::close, 1}}};
    int chosen = below(26);
    for (const auto &[step, weight] : steps) {
        chosen -= weight;
        if (chosen < 0)
            return (this->*step)(window);
    }
}

/// A visible part of the window that takes input.
QWidget *Monkey::part(QWidget *window)
{
    QList<QWidget *> parts{window};
    for (QWidget *widget : window->findChildren<QWidget *>()) {
        if (widget->isVisible() && widget->isEnabled() && widget->window() == window
            && !widget->size().isEmpty())
            parts += widget;
    }
    return parts.at(below(static_cast<int>(parts.size())));
}

void Monkey::click(QWidget *window)
{
    ++taken[QStringLiteral("click")];
    QWidget *const hit = part(window);
    const QPoint place(below(qMax(1, hit->width())), below(qMax(1, hit->height())));
    const Qt::MouseButton button = below(6) == 0 ? Qt::RightButton : Qt::LeftButton;
    if (below(8) == 0)
        QTest::mouseDClick(hit, Qt::LeftButton, {}, place);
    else
        QTest::mouseClick(hit, button, below(6) == 0 ? Qt::ControlModifier : Qt::NoModifier, place);
}

void Monkey::drag(QWidget *window)
{
    ++taken[QStringLiteral("drag")];
    const QPointer<QWidget> hit = part(window);
    const QPoint size(qMax(1, hit->width()), qMax(1, hit->height()));
    QTest::mousePress(hit, Qt::LeftButton, {}, {below(size.x()), below(size.y())});
    // What is pressed may be gone at once.
    if (hit)
        QTest::mouseMove(hit, {below(2 * size.x()), below(2 * size.y())});
    if (hit)
        QTest::mouseRelease(hit, Qt::LeftButton, {}, {below(2 * size.x()), below(2 * size.y())});
}

void Monkey::turnWheel(QWidget *window)
{
    ++taken[QStringLiteral("wheel")];
    QWidget *const hit = part(window);
    const QPointF place = hit->rect().center();
    QWheelEvent event(place, hit->mapToGlobal(place), {}, {0, 120 * (below(7) - 3)}, Qt::NoButton,
                      below(4) == 0 ? Qt::ControlModifier : Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(hit, &event);
}

void Monkey::press(QWidget *window)
{
    ++taken[QStringLiteral("key")];
    static const std::array keys{
        Qt::Key_Tab,    Qt::Key_Return,    Qt::Key_Escape, Qt::Key_Up,     Qt::Key_Down,     Qt::Key_Left,
        Qt::Key_Right,  Qt::Key_Home,      Qt::Key_End,    Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Space,
        Qt::Key_Delete, Qt::Key_Backspace, Qt::Key_F1,     Qt::Key_F3,     Qt::Key_F5,       Qt::Key_Insert,
        Qt::Key_A,      Qt::Key_C,         Qt::Key_F,      Qt::Key_N,      Qt::Key_S,        Qt::Key_V,
        Qt::Key_X,      Qt::Key_Y,         Qt::Key_Z};
    static const std::array modifiers{Qt::NoModifier,    Qt::NoModifier,      Qt::NoModifier,
                                      Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier};
    QWidget *const focused = window->focusWidget() ? window->focusWidget() : window;
    QTest::keyClick(focused, keys.at(static_cast<std::size_t>(below(keys.size()))),
                    modifiers.at(static_cast<std::size_t>(below(modifiers.size()))));
}

void Monkey::type(QWidget *window)
{
    ++taken[QStringLiteral("text")];
    const QPointer<QWidget> focused = window->focusWidget() ? window->focusWidget() : window;
    for (const QChar character : text().left(40)) {
        if (focused)
            QTest::sendKeyEvent(QTest::Click, focused, Qt::Key_unknown, QString(character), Qt::NoModifier);
    }
}

void Monkey::open()
{
    const QString name = windows.keys().at(below(static_cast<int>(windows.size())));
    ++taken[name];
    windows.value(name)();
}

void Monkey::close(QWidget *window)
{
    ++taken[QStringLiteral("close")];
    window->close();
}

void Monkey::raiseAnEvent(QWidget *)
{
    controls.removeIf([](const QPointer<QObject> &control) { return !control; });
    if (controls.isEmpty())
        return;
    ++taken[QStringLiteral("event")];
    QObject *const control = controls.at(below(static_cast<int>(controls.size())));
    QList<QMetaMethod> events;
    // Signals of the toolkit's own classes are not the control's.
    for (int index = 0; index < control->metaObject()->methodCount(); ++index) {
        const QMetaMethod method = control->metaObject()->method(index);
        const QByteArrayView owner = method.enclosingMetaObject()->className();
        if (method.methodType() == QMetaMethod::Signal && owner.startsWith("vandrel::"))
            events += method;
    }
    if (events.isEmpty())
        return;
    const QMetaMethod event = events.at(below(static_cast<int>(events.size())));
    std::array<QVariant, 4> values;
    std::array<QGenericArgument, 4> arguments;
    for (int index = 0; index < event.parameterCount(); ++index) {
        const auto at = static_cast<std::size_t>(index);
        values.at(at) = valueOf(event.parameterMetaType(index), *this);
        if (!values.at(at).isValid())
            return;
        arguments.at(at) = QGenericArgument(values.at(at).typeName(), values.at(at).constData());
    }
    event.invoke(control, Qt::DirectConnection, arguments[0], arguments[1], arguments[2], arguments[3]);
}

QString Monkey::text()
{
    static const QStringList texts{
        QString(),
        QStringLiteral("0"),
        QStringLiteral("-1"),
        QStringLiteral("32768"),
        QStringLiteral("1e400"),
        QStringLiteral("99999999999999999999"),
        QStringLiteral("3,5"),
        QStringLiteral("127.0.0.1"),
        QStringLiteral("[::1]:99999"),
        QStringLiteral("a@b, \"c\r\nd\" <e@f>"),
        QStringLiteral("USER a\r\nDELE 1"),
        QStringLiteral("c:\\"),
        QStringLiteral("c:\\letter.rtf"),
        QStringLiteral("c:\\garden.bmp"),
        QStringLiteral("q:\\nowhere\\..\\.."),
        QStringLiteral("*.*;[a-"),
        QStringLiteral("con .  \\  a.txt"),
        QStringLiteral("Grüße 👍 ‏שלום"),
        QString(QChar(0xD800)),
        QString(5000, u'x'),
    };
    if (below(3) > 0)
        return texts.at(below(static_cast<int>(texts.size())));
    QString random;
    for (int length = below(12); length > 0; --length)
        random += QChar(u' ' + below(95));
    // Nothing outside of the drives that the test has made is to be named.
    return random.replace(u'/', u'\\');
}

} // namespace vandrel::test
