#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace vandrel::test {

/// A variable of this process's environment that gets back what it was, or goes, with this object.
class EnvironmentVariable
{
public:
    explicit EnvironmentVariable(const char *name) : m_name(name), m_before(qgetenv(name)) { }
    ~EnvironmentVariable()
    {
        if (m_before.isNull())
            qunsetenv(m_name);
        else
            qputenv(m_name, m_before);
    }
    EnvironmentVariable(const EnvironmentVariable &) = delete;
    EnvironmentVariable &operator=(const EnvironmentVariable &) = delete;

    void set(const QByteArray &value) const { qputenv(m_name, value); }

private:
    const char *m_name;
    const QByteArray m_before;
};

} // namespace vandrel::test
