#include "tests/support/FakeWebBrowser.h"

#include "runtime/RuntimeError.h"

namespace vandrel::test {

void FakeWebBrowser::record(const QString &call)
{
    m_calls.append(call);
    if (failure != 0)
        throw RuntimeError(failure);
}

} // namespace vandrel::test
