#pragma once

#include "trovek/export.h"

#include <json/value.h>

#include <map>
#include <string>
#include <vector>

namespace trovek {

/**
 * A machine's onboard settings: a JSON object whose "eeprom_map" member holds named entries.
 *
 * An entry has "type", "value" (an array) and more; a container has "sub_map" with entries of its
 * own. A path names an entry with "." between the levels, e.g. "acceleration.rate".
 */
class TROVEK_EXPORT EepromMap
{
public:
    explicit EepromMap(Json::Value map);

    /**
     * The map as the client gives it out: every element in its type code's kind, so that two
     * documents compare equal when their values do. "f", "d" and a fixed-point "H" are real, "I"
     * without a list of allowed values is unsigned, all other numbers are signed.
     */
    static EepromMap fromService(Json::Value map);

    const Json::Value& getEepromMap() const { return m_map; }

    /**
     * The entry's values; null when the path is absent, holds another kind, or a value does not
     * fit. The vector belongs to the map and is valid until the map changes or goes; vectors of
     * other paths stay as they are.
     */
    const std::vector<int>* getInt(const std::string& path) const;
    const std::vector<float>* getFloat(const std::string& path) const;
    const std::vector<std::string>* getString(const std::string& path) const;

    /** Replace the values of an entry. @throws std::runtime_error "No such EEPROM entry: " + path
     */
    void setInt(const std::string& path, const std::vector<int>& values);
    void setFloat(const std::string& path, const std::vector<float>& values);
    void setString(const std::string& path, const std::vector<std::string>& values);

private:
    Json::Value m_map;
    mutable std::map<std::string, std::vector<int>> m_ints;
    mutable std::map<std::string, std::vector<float>> m_floats;
    mutable std::map<std::string, std::vector<std::string>> m_strings;
};

} // namespace trovek
