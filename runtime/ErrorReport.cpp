#include "runtime/ErrorReport.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

#include <QCoreApplication>
#include <QScopedValueRollback>
#include <QThread>

#include "runtime/Prompts.h"

namespace vandrel {

namespace {

bool reporting = false;

// What the standard streams still hold would be lost; nothing else of the program outlives it.
void exitAtOnce(int status)
{
    std::fflush(nullptr);
    std::_Exit(status);
}

ProgramEnd &programEnd()
{
    static ProgramEnd end = exitAtOnce;
    return end;
}

bool isOnInterfaceThread()
{
    const QCoreApplication *application = QCoreApplication::instance();
    return !application || application->thread() == QThread::currentThread();
}

// A box that cannot be shown, for want of memory perhaps, must not keep the program from ending.
void showErrorBox(const RuntimeError &failure) noexcept
{
    try {
        prompts().errorBox(failure);
    } catch (...) {
        std::fprintf(stderr, "Run-time error '%d': %s\n", failure.number(), failure.what());
    }
}

void report(const RuntimeError &failure)
{
    if (reporting)
        return;
    const QScopedValueRollback<bool> inReport(reporting, true);
    showErrorBox(failure);
    endProgram(EXIT_FAILURE);
}

} // namespace

void setProgramEnd(ProgramEnd end)
{
    programEnd() = end ? std::move(end) : exitAtOnce;
}

void endProgram(int status)
{
    programEnd()(status);
}

RuntimeError currentFailure()
{
    try {
        throw;
    } catch (const RuntimeError &failure) {
        return failure;
    } catch (const std::bad_alloc &) {
        return RuntimeError(error::OutOfMemory);
    } catch (const std::exception &failure) {
        return {error::InternalError,
                runtimeErrorText(error::InternalError) + QStringLiteral(": ")
                    + QString::fromUtf8(failure.what())};
    } catch (...) {
        return RuntimeError(error::InternalError);
    }
}

bool isReportingFailure()
{
    return reporting;
}

void reportAndEnd(const RuntimeError &failure) noexcept
{
    if (isOnInterfaceThread())
        report(failure);
    else
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [failure] { report(failure); }, Qt::QueuedConnection);
}

void reportCurrentFailure() noexcept
{
    try {
        reportAndEnd(currentFailure());
    } catch (...) {
        // Not even the failure's text could be had.
        std::fputs("Run-time error '7': Out of memory\n", stderr);
        endProgram(EXIT_FAILURE);
    }
}

} // namespace vandrel
