#include "machine_entry.h"

#include "number_text.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace trovek::service {

namespace {

std::string placed(const std::string& where)
{
    return where.empty() ? "Machines file: " : "Machines file: " + where + ": ";
}

} // namespace

MachineEntry::MachineEntry(const Json::Value& value, std::string where)
    : m_value(value)
    , m_where(std::move(where))
{
    if (!value.isObject())
        throw std::runtime_error(placed(m_where) + "must be an object");
}

void MachineEntry::fail(const std::string& name, const std::string& problem) const
{
    throw std::runtime_error(placed(m_where) + "\"" + name + "\" " + problem);
}

void MachineEntry::checkMembers(const std::vector<std::string>& allowed) const
{
    for (const std::string& name : m_value.getMemberNames()) {
        if (std::find(allowed.begin(), allowed.end(), name) == allowed.end())
            fail(name, "is not known here");
    }
}

const Json::Value& MachineEntry::member(const std::string& name) const
{
    if (!m_value.isMember(name))
        fail(name, "is missing");
    return m_value[name];
}

MachineEntry MachineEntry::object(const std::string& name) const
{
    const Json::Value& value = member(name);
    if (!value.isObject())
        fail(name, "must be an object");
    return MachineEntry(value, m_where.empty() ? name : m_where + "." + name);
}

const Json::Value& MachineEntry::list(const std::string& name) const
{
    const Json::Value& value = member(name);
    if (!value.isArray())
        fail(name, "must be a list");
    return value;
}

double MachineEntry::number(const std::string& name, double lowest, double highest) const
{
    const Json::Value& value = member(name);
    if (!value.isNumeric() || !(value.asDouble() >= lowest && value.asDouble() <= highest)) {
        fail(name, "must be a number from " + numberText(lowest) + " to " + numberText(highest));
    }
    return value.asDouble();
}

int MachineEntry::integer(const std::string& name, int lowest, int highest) const
{
    const Json::Value& value = member(name);
    if (!value.isInt() || value.asInt() < lowest || value.asInt() > highest) {
        fail(name, "must be a whole number from " + std::to_string(lowest) + " to " +
                       std::to_string(highest));
    }
    return value.asInt();
}

bool MachineEntry::boolean(const std::string& name) const
{
    const Json::Value& value = member(name);
    if (!value.isBool())
        fail(name, "must be true or false");
    return value.asBool();
}

std::string MachineEntry::text(const std::string& name) const
{
    const Json::Value& value = member(name);
    if (!value.isString() || value.asString().empty())
        fail(name, "must be a text");
    return value.asString();
}

std::string MachineEntry::choice(const std::string& name,
                                 const std::vector<std::string>& choices) const
{
    const std::string value = text(name);
    if (std::find(choices.begin(), choices.end(), value) == choices.end()) {
        std::string all;
        for (const std::string& choice : choices)
            all += (all.empty() ? "\"" : " or \"") + choice + "\"";
        fail(name, "must be " + all);
    }
    return value;
}

std::vector<std::string> MachineEntry::texts(const std::string& name) const
{
    std::vector<std::string> result;
    for (const Json::Value& value : list(name)) {
        if (!value.isString() || value.asString().empty())
            fail(name, "must be a list of texts");
        result.push_back(value.asString());
    }
    if (result.empty())
        fail(name, "must not be empty");
    return result;
}

std::vector<double> MachineEntry::numbers(const std::string& name, std::size_t count,
                                          double largest) const
{
    return numbersOf(member(name), name, count, largest);
}

std::vector<double> MachineEntry::numbersOf(const Json::Value& values, const std::string& name,
                                            std::size_t count, double largest) const
{
    std::vector<double> result;
    if (values.isArray() && values.size() == count) {
        for (const Json::Value& value : values) {
            if (value.isNumeric() && std::abs(value.asDouble()) <= largest)
                result.push_back(value.asDouble());
        }
    }
    if (result.size() != count)
        fail(name, "must hold " + std::to_string(count) + " numbers within " + numberText(largest));
    return result;
}

std::vector<std::array<double, 3>> MachineEntry::points(const std::string& name, std::size_t count,
                                                        double largest) const
{
    std::vector<std::array<double, 3>> result;
    for (const Json::Value& value : list(name)) {
        const std::vector<double> point = numbersOf(value, name, 3, largest);
        result.push_back({point[0], point[1], point[2]});
    }
    if (result.size() != count)
        fail(name, "must hold " + std::to_string(count) + " points");
    return result;
}

} // namespace trovek::service
