#pragma once

#include <QByteArray>

/// Changes an environment variable for the lifetime of the object.
class Variable
{
public:
    Variable(const char* name, const QByteArray& value)
        : m_name(name)
        , m_wasSet(qEnvironmentVariableIsSet(name))
        , m_before(qgetenv(name))
    {
        qputenv(name, value);
    }
    ~Variable()
    {
        if (m_wasSet) {
            qputenv(m_name, m_before);
        } else {
            qunsetenv(m_name);
        }
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* const m_name;
    const bool m_wasSet;
    const QByteArray m_before;
};
