#include "tests/support/FakeMyIP.h"

namespace vandrel::test {

void FakeMyIP::setQuery(bool start)
{
    ++(start ? queries : endings);
    // A copy: what runs may take the control away.
    const auto raise = onQuery;
    if (start && raise)
        raise();
}

} // namespace vandrel::test
