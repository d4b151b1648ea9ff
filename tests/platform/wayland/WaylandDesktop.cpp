#include "tests/platform/wayland/WaylandDesktop.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTest>

#include "tests/platform/command/CommandOutput.h"

namespace vandrel::test {

namespace {

// Bounds a wait, in milliseconds.
constexpr int patience = 60'000;

} // namespace

WaylandDesktop::WaylandDesktop(const QString &compositor, int monitors, const QByteArray &configuration)
{
    m_runtimeFolder.set(m_folder.path().toLocal8Bit());
    m_isThere = compositor == sway() ? startSway(monitors, configuration) : startWeston();
}

WaylandDesktop::~WaylandDesktop()
{
    m_compositor.terminate();
    if (!m_compositor.waitForFinished(patience)) {
        m_compositor.kill();
        m_compositor.waitForFinished(patience);
    }
}

bool WaylandDesktop::has(const QString &program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}

// Sway does not run as root.
QStringList WaylandDesktop::asOrdinaryUser(const QStringList &command) const
{
    if (commandOutput({QStringLiteral("id"), QStringLiteral("-u")}, QProcessEnvironment::systemEnvironment())
            .trimmed()
        != "0")
        return command;
    const QString nobody = QStringLiteral("65534");
    if (commandOutput({QStringLiteral("chown"), QStringLiteral("-R"), nobody, m_folder.path()},
                      QProcessEnvironment::systemEnvironment())
            .isNull())
        return {};
    return QStringList{QStringLiteral("setpriv"), QStringLiteral("--reuid=") + nobody,
                       QStringLiteral("--regid=") + nobody, QStringLiteral("--clear-groups")}
    + command;
}

bool WaylandDesktop::startSway(int monitors, const QByteArray &configuration)
{
    const QString file = m_folder.filePath(QStringLiteral("config"));
    QFile config(file);
    if (!config.open(QIODevice::WriteOnly))
        return false;
    config.write(
        configuration
        + "\nexec cd \"$XDG_RUNTIME_DIR\" && echo \"$WAYLAND_DISPLAY $SWAYSOCK\" > told && mv told ready\n");
    config.close();

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    environment.insert(QStringLiteral("HOME"), m_folder.path());
    environment.insert(QStringLiteral("WLR_BACKENDS"), QStringLiteral("headless"));
    environment.insert(QStringLiteral("WLR_RENDERER"), QStringLiteral("pixman"));
    environment.insert(QStringLiteral("WLR_LIBINPUT_NO_DEVICES"), QStringLiteral("1"));
    environment.insert(QStringLiteral("WLR_HEADLESS_OUTPUTS"), QString::number(monitors));
    const QStringList command = asOrdinaryUser({sway(), QStringLiteral("-c"), file});
    if (command.isEmpty())
        return false;
    start(command.first(), command.mid(1), environment);
    if (!awaitFile(QStringLiteral("ready")))
        return false;
    QFile ready(m_folder.filePath(QStringLiteral("ready")));
    if (!ready.open(QIODevice::ReadOnly))
        return false;
    const QByteArrayList words = ready.readAll().trimmed().split(' ');
    m_display.set(words.value(0));
    m_swaySocket = words.value(1);
    return words.size() == 2;
}

bool WaylandDesktop::startWeston()
{
    const QString socket = QStringLiteral("wayland-test");
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    start(weston(),
          {QStringLiteral("--backend=headless-backend.so"), QStringLiteral("--no-config"),
           QStringLiteral("--socket=") + socket},
          environment);
    m_display.set(socket.toLatin1());
    return awaitFile(socket);
}

void WaylandDesktop::start(const QString &program,
                           const QStringList &arguments,
                           const QProcessEnvironment &environment)
{
    m_compositor.setProcessEnvironment(environment);
    m_compositor.setStandardOutputFile(QProcess::nullDevice());
    m_compositor.setStandardErrorFile(m_folder.filePath(QStringLiteral("log")));
    m_compositor.start(program, arguments);
}

bool WaylandDesktop::awaitFile(const QString &name)
{
    const QString path = m_folder.filePath(name);
    const bool isThere = QTest::qWaitFor(
        [&] { return QFile::exists(path) || m_compositor.state() == QProcess::NotRunning; }, patience);
    return isThere && QFile::exists(path);
}

QByteArray WaylandDesktop::output(const QStringList &command) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("SWAYSOCK"), QString::fromLocal8Bit(m_swaySocket));
    return commandOutput(command, environment);
}

QStringList WaylandDesktop::monitors() const
{
    QStringList lines;
    const QByteArray told = output({QStringLiteral("swaymsg"), QStringLiteral("-r"), QStringLiteral("-t"),
                                    QStringLiteral("get_outputs")});
    for (const QJsonValue monitor : QJsonDocument::fromJson(told).array()) {
        if (!monitor[QLatin1String("active")].toBool())
            continue;
        const QJsonValue place = monitor[QLatin1String("rect")];
        const QJsonValue mode = monitor[QLatin1String("current_mode")];
        lines.append(QStringLiteral("%1 %2,%3 %4x%5")
                         .arg(monitor[QLatin1String("name")].toString())
                         .arg(place[QLatin1String("x")].toInt())
                         .arg(place[QLatin1String("y")].toInt())
                         .arg(mode[QLatin1String("width")].toInt())
                         .arg(mode[QLatin1String("height")].toInt()));
    }
    lines.sort();
    return lines;
}

} // namespace vandrel::test
