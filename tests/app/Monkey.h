#pragma once

#include <functional>

#include <QList>
#include <QMap>
#include <QPointer>
#include <QRandomGenerator>
#include <QString>
#include <QWidget>

namespace vandrel::test {

/// Uses windows at random: clicks, drags, types, opens menus, closes windows and opens them again, and lets controls
/// tell of events. It goes on inside the modal boxes and menus that it opens.
class Monkey
{
public:
    explicit Monkey(quint32 seed) : m_random(seed) { }

    /// How the windows are opened, by their names.
    QMap<QString, std::function<void()>> windows;
    /// The controls whose signals it raises; those that are gone are left out.
    QList<QPointer<QObject>> controls;

    /// Takes that many steps, then closes all that is open; ends the program where something cannot be closed.
    void run(int steps);

    /// How often each kind of step was taken, and each window opened.
    QMap<QString, int> taken;

    /// A random text of what breaks programs.
    QString text();
    /// A random number from 0 to `bound` - 1.
    int below(int bound) { return static_cast<int>(m_random.bounded(bound)); }

private:
    void schedule();
    void step();
    void act();
    void finish();
    QWidget *target();
    QWidget *part(QWidget *window);
    void click(QWidget *window);
    void drag(QWidget *window);
    void turnWheel(QWidget *window);
    void press(QWidget *window);
    void type(QWidget *window);
    void open();
    void close(QWidget *window);
    void raiseAnEvent(QWidget *window);

    QRandomGenerator m_random;
    int m_left = 0;
    int m_depth = 0;
    bool m_ended = false;
};

} // namespace vandrel::test
