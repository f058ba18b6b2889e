#include "trovek/eeprom_map.h"

#include <cfloat>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace trovek {

namespace {

enum class Kind { None, Signed, Unsigned, Real, Text };

bool isTrueText(const Json::Value& value)
{
    return value.isString() && value.asString() == "True";
}

/** What the elements of an entry are kept as in the document; None for what is no entry. */
Kind kindOfEntry(const Json::Value& entry)
{
    if (!entry.isObject() || !entry["type"].isString() || !entry["value"].isArray())
        return Kind::None;
    const std::string type = entry["type"].asString();
    if (type.empty() || std::string("BbHhIiqfds").find(type[0]) == std::string::npos)
        return Kind::None;
    switch (type[0]) {
    case 's':
        return Kind::Text;
    case 'f':
    case 'd':
        return Kind::Real;
    case 'H':
        return isTrueText(entry["floating_point"]) ? Kind::Real : Kind::Signed;
    case 'I': {
        const Json::Value& constraints = entry["constraints"];
        const bool listed = constraints.isString() && constraints.asString().rfind('l', 0) == 0;
        return listed ? Kind::Signed : Kind::Unsigned;
    }
    default:
        return Kind::Signed;
    }
}

/** The element in the kind; as it is when it does not fit. */
Json::Value inKind(const Json::Value& element, Kind kind)
{
    if (!element.isNumeric())
        return element;
    if (kind == Kind::Real)
        return element.asDouble();
    if (kind == Kind::Unsigned && element.isUInt64())
        return element.asUInt64();
    if (kind == Kind::Signed && element.isInt64())
        return element.asInt64();
    return element;
}

void normalizeEntry(Json::Value& entry)
{
    if (!entry.isObject())
        return;
    const Kind kind = kindOfEntry(entry);
    if (kind != Kind::None) {
        for (Json::Value& element : entry["value"])
            element = inKind(element, kind);
    }
    if (entry.isMember("sub_map") && entry["sub_map"].isObject()) {
        Json::Value& children = entry["sub_map"];
        for (auto child = children.begin(); child != children.end(); ++child) {
            // Children may be wrapped twice; the entry is then what is inside.
            const bool isWrapper =
                child.name() == "sub_map" && child->isObject() && child->isMember("sub_map");
            normalizeEntry(isWrapper ? (*child)["sub_map"] : *child);
        }
    }
}

/** Null when the path names nothing. */
const Json::Value* findEntry(const Json::Value& document, const std::string& path)
{
    if (!document.isObject())
        return nullptr;
    const Json::Value* level = &document["eeprom_map"];
    std::size_t begin = 0;
    while (true) {
        const std::size_t point = path.find('.', begin);
        const std::string name = path.substr(begin, point - begin);
        if (!level->isObject() || !level->isMember(name))
            return nullptr;
        const Json::Value& entry = (*level)[name];
        if (point == std::string::npos)
            return &entry;
        if (!entry.isObject())
            return nullptr;
        level = &entry["sub_map"];
        begin = point + 1;
    }
}

bool readElement(const Json::Value& element, int* value)
{
    if (!element.isInt())
        return false;
    *value = element.asInt();
    return true;
}

bool readElement(const Json::Value& element, float* value)
{
    if (!element.isNumeric() || std::abs(element.asDouble()) > double(FLT_MAX))
        return false;
    *value = static_cast<float>(element.asDouble());
    return true;
}

bool readElement(const Json::Value& element, std::string* value)
{
    if (!element.isString())
        return false;
    *value = element.asString();
    return true;
}

template <typename T>
const std::vector<T>* read(const Json::Value& entry, std::vector<T>* values)
{
    values->clear();
    for (const Json::Value& element : entry["value"]) {
        T value = T();
        if (!readElement(element, &value))
            return nullptr;
        values->push_back(value);
    }
    return values;
}

template <typename T>
void write(Json::Value& document, const std::string& path, const std::vector<T>& values)
{
    const Json::Value* found = findEntry(document, path);
    const Kind kind = found ? kindOfEntry(*found) : Kind::None;
    if (kind == Kind::None)
        throw std::runtime_error("No such EEPROM entry: " + path);
    // The document is ours and not const: only the search does not need to know that.
    Json::Value& elements = const_cast<Json::Value&>(*found)["value"];
    elements = Json::Value(Json::arrayValue);
    for (const T& value : values)
        elements.append(inKind(Json::Value(value), kind));
}

} // namespace

EepromMap::EepromMap(Json::Value map)
    : m_map(std::move(map))
{}

EepromMap EepromMap::fromService(Json::Value map)
{
    if (map.isObject() && map.isMember("eeprom_map") && map["eeprom_map"].isObject()) {
        for (Json::Value& entry : map["eeprom_map"])
            normalizeEntry(entry);
    }
    return EepromMap(std::move(map));
}

const std::vector<int>* EepromMap::getInt(const std::string& path) const
{
    const Json::Value* entry = findEntry(m_map, path);
    const Kind kind = entry ? kindOfEntry(*entry) : Kind::None;
    return kind == Kind::Signed || kind == Kind::Unsigned ? read(*entry, &m_ints[path]) : nullptr;
}

const std::vector<float>* EepromMap::getFloat(const std::string& path) const
{
    const Json::Value* entry = findEntry(m_map, path);
    return entry && kindOfEntry(*entry) == Kind::Real ? read(*entry, &m_floats[path]) : nullptr;
}

const std::vector<std::string>* EepromMap::getString(const std::string& path) const
{
    const Json::Value* entry = findEntry(m_map, path);
    return entry && kindOfEntry(*entry) == Kind::Text ? read(*entry, &m_strings[path]) : nullptr;
}

void EepromMap::setInt(const std::string& path, const std::vector<int>& values)
{
    write(m_map, path, values);
}

void EepromMap::setFloat(const std::string& path, const std::vector<float>& values)
{
    write(m_map, path, values);
}

void EepromMap::setString(const std::string& path, const std::vector<std::string>& values)
{
    write(m_map, path, values);
}

} // namespace trovek
