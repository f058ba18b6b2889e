#pragma once

#include "trovek/export.h"

#include <QMetaType>

#include <string>

namespace trovek {

/** Identity of one machine inside the service; empty names no machine. Compared as bytes. */
class TROVEK_EXPORT MachineName
{
public:
    MachineName() = default;
    explicit MachineName(std::string name);

    const std::string& name() const { return m_name; }

    bool operator==(const MachineName& other) const { return m_name == other.m_name; }
    bool operator!=(const MachineName& other) const { return m_name != other.m_name; }
    bool operator<(const MachineName& other) const { return m_name < other.m_name; }

private:
    std::string m_name;
};

} // namespace trovek

Q_DECLARE_METATYPE(trovek::MachineName)
