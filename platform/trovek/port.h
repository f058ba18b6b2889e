#pragma once

#include "trovek/export.h"

#include <string>

namespace trovek {

/** A place where a machine can be attached, as the service sees it. Ordered by name, then identity.
 */
class TROVEK_EXPORT Port
{
public:
    /**
     * What the service says of the device on the port.
     *
     * The identity tells one device from another and stays the same when it is plugged in again:
     * USB vendor, product and serial number where there are any ("23c1:d314:0042"), else what else
     * stays.
     */
    struct Data
    {
        std::string name;
        std::string identity;
        /** What a user reads, for example "Virtual Fabrino 2 on port 1"; the name when empty. */
        std::string displayName;
        /** The machine that is opened on it; empty when it is closed. */
        std::string machineName;
        bool inConnectionWhitelist = false;
    };

    Port() = default;
    explicit Port(Data data);

    /** The same string that Printer::portName() gives for a machine on this port. */
    const std::string& name() const { return m_data.name; }
    /** Never empty for a port that the service reported. */
    const std::string& identity() const { return m_data.identity; }
    const std::string& displayName() const;
    const std::string& machineName() const { return m_data.machineName; }
    bool inConnectionWhitelist() const { return m_data.inConnectionWhitelist; }

    bool operator<(const Port& other) const;
    /** Same name and identity. */
    bool operator==(const Port& other) const;

private:
    Data m_data;
};

/** True for ports that are opened at once when they are attached. */
TROVEK_EXPORT bool portInConnectionWhitelist(const Port& port);

/** One line for the log. */
TROVEK_EXPORT std::string to_string(const Port& port);

} // namespace trovek
