#include "runtime/SuiteApplication.h"

#include <utility>

#include <QFont>

#include "runtime/Events.h"

namespace vandrel {

namespace {

// Metric-compatible faces for the families that windows state, so that texts keep their measures where the
// families themselves are not installed. The last one would otherwise end up in a script face.
void substituteFonts()
{
    const std::pair<const char *, const char *> substitutes[]{
        {"Arial", "Liberation Sans"},       {"MS Sans Serif", "Liberation Sans"},
        {"Helvetica", "Liberation Sans"},   {"Times New Roman", "Liberation Serif"},
        {"Courier New", "Liberation Mono"}, {"Comic Sans MS", "Liberation Sans"},
    };
    for (const auto &[stated, installed] : substitutes)
        QFont::insertSubstitution(QString::fromLatin1(stated), QString::fromLatin1(installed));
}

} // namespace

SuiteApplication::SuiteApplication(int &argc, char **argv) : QApplication(argc, argv)
{
    // The display name stays unset: the toolkit would append it to every title.
    setApplicationName(QStringLiteral("vandrel"));
    setDesktopFileName(QStringLiteral("io.github.vandrel.Vandrel"));
    substituteFonts();
}

bool SuiteApplication::notify(QObject *receiver, QEvent *event)
{
    bool handled = false;
    guarded([&] { handled = QApplication::notify(receiver, event); });
    return handled;
}

} // namespace vandrel
