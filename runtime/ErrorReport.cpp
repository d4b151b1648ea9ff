#include "runtime/ErrorReport.h"

#include <cstdlib>
#include <new>
#include <utility>

#include <QScopedValueRollback>

#include "runtime/Prompts.h"

namespace vandrel {

namespace {

ProgramEnd &programEnd()
{
    static ProgramEnd end = [](int status) { std::_Exit(status); };
    return end;
}

} // namespace

void setProgramEnd(ProgramEnd end)
{
    programEnd() = std::move(end);
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
                runtimeErrorText(error::InternalError) + QStringLiteral(": ") + QString::fromUtf8(failure.what())};
    } catch (...) {
        return RuntimeError(error::InternalError);
    }
}

void reportAndEnd(const RuntimeError &failure)
{
    static bool reporting = false;
    if (reporting)
        return;
    const QScopedValueRollback<bool> inReport(reporting, true);
    prompts().errorBox(failure);
    endProgram(EXIT_FAILURE);
}

} // namespace vandrel
