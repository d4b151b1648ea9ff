#include "tests/platform/command/CommandOutput.h"

#include <QProcess>

namespace vandrel::test {

namespace {

constexpr int patience = 60'000;

} // namespace

QByteArray commandOutput(const QStringList &command, const QProcessEnvironment &environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(command.first(), command.mid(1));
    if (!process.waitForFinished(patience) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0) {
        qWarning("%s: %s", qPrintable(command.join(u' ')), process.readAllStandardError().constData());
        return {};
    }
    const QByteArray written = process.readAllStandardOutput();
    return written.isNull() ? QByteArrayLiteral("") : written;
}

} // namespace vandrel::test
