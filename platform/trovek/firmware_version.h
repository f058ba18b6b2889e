#pragma once

#include "trovek/export.h"

#include <QMetaType>

#include <set>
#include <string>

namespace trovek {

/**
 * A firmware's version, "MAJOR.MINOR", with an optional description.
 *
 * A text of another form is not valid(); it keeps its text and counts as version 0.0.
 */
class TROVEK_EXPORT FirmwareVersion
{
public:
    FirmwareVersion() = default;
    explicit FirmwareVersion(const std::string& version);
    FirmwareVersion(const std::string& version, const std::string& description);

    bool valid() const { return m_valid; }
    int major() const { return m_major; }
    int minor() const { return m_minor; }
    /** As given, for example "7.2". */
    const std::string& str() const { return m_text; }
    const std::string& description() const { return m_description; }

    /** By number, then by text; invalid ones first. The description does not count. */
    bool operator<(const FirmwareVersion& other) const;

private:
    std::string m_text;
    std::string m_description;
    int m_major = 0;
    int m_minor = 0;
    bool m_valid = false;
};

} // namespace trovek

Q_DECLARE_METATYPE(trovek::FirmwareVersion)
Q_DECLARE_METATYPE(std::set<trovek::FirmwareVersion>)
