#include "platform/web/EngineStart.h"

#include <QCoreApplication>
#include <QDir>
#include <QLoggingCategory>
#include <QOpenGLContext>
#include <QQuickWindow>

#include "platform/web/BuiltInPages.h"
#include "platform/web/PageSandbox.h"
#include "runtime/RuntimeError.h"

// The toolkit's own, without a public header: the context that the engine's views share.
Q_GUI_EXPORT void qt_gl_set_global_share_context(QOpenGLContext *context);
Q_GUI_EXPORT QOpenGLContext *qt_gl_global_share_context();

namespace vandrel {

namespace {

constexpr const char *flagsVariable = "QTWEBENGINE_CHROMIUM_FLAGS";

QByteArray &formerFlags()
{
    static QByteArray flags;
    return flags;
}

void dropSharedContext()
{
    delete qt_gl_global_share_context();
    qt_gl_set_global_share_context(nullptr);
}

// What the application attribute for shared contexts would have done at every start of the program.
void shareContexts()
{
    if (qt_gl_global_share_context())
        return;
    auto *shared = new QOpenGLContext;
    shared->create();
    qt_gl_set_global_share_context(shared);
    qAddPostRoutine(dropSharedContext);
}

bool hasGraphicsHardware()
{
    return !QDir(QStringLiteral("/dev/dri")).entryList({QStringLiteral("renderD*")}, QDir::System).isEmpty();
}

// What the engine notes of servers, and pages in their consoles, is for those who look for it: they ask by the
// variables that the engine and the toolkit read, which count more than this.
void quietTheLogs()
{
    QLoggingCategory::setFilterRules(QStringLiteral("js=false\nqt.webengine*=false"));
}

QByteArray logFlags(const QByteArray &given)
{
    const bool isAskedFor = given.contains("--log-level") || given.contains("--enable-logging");
    // Only what ends the engine.
    return isAskedFor ? QByteArray() : QByteArrayLiteral(" --log-level=3");
}

// The engine speaks to nobody but the servers of the pages.
QByteArray flags(bool hardware)
{
    const QByteArray given = qgetenv(flagsVariable);
    QByteArray list = given + logFlags(given)
        + " --disable-background-networking --disable-component-update --disable-domain-reliability "
          "--disable-sync"
          " --no-pings --disable-features=Reporting,NetworkErrorLogging";
    if (!hardware)
        list += " --disable-gpu";
    if (!pagesAreSandboxed())
        list += " --no-sandbox";
    return list;
}

void start()
{
    if (pagesAreSandboxed() && !sandboxCanBeMade())
        throw RuntimeError(error::CannotCreateObject,
                           QCoreApplication::translate(
                               "EngineStart",
                               "The browser cannot be started: this system does not allow the sandbox that "
                               "keeps web pages away from "
                               "your files. An administrator can allow it (user.max_user_namespaces, "
                               "kernel.unprivileged_userns_clone)."));
    const bool hardware = hasGraphicsHardware();
    if (!hardware)
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    shareContexts();
    registerBuiltInScheme();
    quietTheLogs();
    formerFlags() = qgetenv(flagsVariable);
    qputenv(flagsVariable, flags(hardware));
}

} // namespace

void prepareEngine()
{
    static bool ready = false;
    if (ready)
        return;
    start();
    ready = true;
}

void engineHasStarted()
{
    if (formerFlags().isEmpty())
        qunsetenv(flagsVariable);
    else
        qputenv(flagsVariable, formerFlags());
}

bool pagesAreSandboxed()
{
    static const bool sandboxed = !runsAsRoot();
    return sandboxed;
}

} // namespace vandrel
