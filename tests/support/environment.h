#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace trovek {

/** Gives a variable of the environment another value until it goes; a null value takes it away. */
class Environment
{
public:
    Environment(const char* name, const QByteArray& value)
        : m_name(name)
        , m_earlier(qgetenv(name))
        , m_wasSet(qEnvironmentVariableIsSet(name))
    {
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, value);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    ~Environment()
    {
        if (m_wasSet)
            qputenv(m_name, m_earlier);
        else
            qunsetenv(m_name);
    }

private:
    const char* m_name;
    const QByteArray m_earlier;
    const bool m_wasSet;
};

} // namespace trovek
