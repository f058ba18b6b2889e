#include "slicing/strandel_section.h"

#include "gcode/number_text.h"

#include <cmath>
#include <stdexcept>
#include <utility>

namespace trovek::service {

namespace {

constexpr char kFile[] = "strandel.json: ";

std::string rangeText(const char* kind, double least, double most)
{
    return std::string("must be a ") + kind + " from " + numberText(least) + " to " +
           numberText(most);
}

} // namespace

std::string rangeText(double least, double most)
{
    return rangeText("number", least, most);
}

std::string rangeText(int least, int most)
{
    return rangeText("whole number", least, most);
}

StrandelSection::StrandelSection(const Json::Value& value, std::string prefix)
    : m_value(value)
    , m_prefix(std::move(prefix))
{
    if (!value.isObject())
        throw std::runtime_error(std::string(kFile) + "must hold an object");
}

void StrandelSection::fail(const std::string& key, const std::string& problem) const
{
    throw std::runtime_error(kFile + ("\"" + m_prefix) + key + "\" " + problem);
}

const Json::Value& StrandelSection::at(const char* key) const
{
    const Json::Value* member = m_value.find(key, key + std::char_traits<char>::length(key));
    if (!member)
        fail(key, "is missing");
    return *member;
}

StrandelSection StrandelSection::section(const char* key) const
{
    const Json::Value& member = at(key);
    if (!member.isObject())
        fail(key, "must be an object");
    return StrandelSection(member, m_prefix + key + ".");
}

double StrandelSection::number(const char* key, double least, double most) const
{
    const Json::Value& member = at(key);
    const double value = member.isNumeric() ? member.asDouble() : std::nan("");
    if (!(value >= least && value <= most))
        fail(key, rangeText(least, most));
    return value;
}

int StrandelSection::wholeNumber(const char* key, int least, int most) const
{
    const Json::Value& member = at(key);
    const double value = member.isNumeric() ? member.asDouble() : std::nan("");
    if (!(value >= least && value <= most) || value != std::floor(value))
        fail(key, rangeText(least, most));
    return static_cast<int>(value);
}

bool StrandelSection::boolean(const char* key) const
{
    const Json::Value& member = at(key);
    if (!member.isBool())
        fail(key, "must be true or false");
    return member.asBool();
}

std::string StrandelSection::text(const char* key) const
{
    const Json::Value& member = at(key);
    if (!member.isString())
        fail(key, "must be a text");
    return member.asString();
}

} // namespace trovek::service
