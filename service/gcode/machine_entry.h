#pragma once

#include <json/value.h>

#include <array>
#include <string>
#include <vector>

namespace trovek::service {

/** An object of the machines file, read member by member; every error names the place and the
 * member. */
class MachineEntry
{
public:
    /**
     * @param value not owned
     * @param where for example "machines[2]"; empty for the whole file
     * @throws std::runtime_error unless it is an object
     */
    MachineEntry(const Json::Value& value, std::string where);

    const Json::Value& value() const { return m_value; }

    /** No others are allowed: a misspelt member would silently do nothing. */
    void checkMembers(const std::vector<std::string>& allowed) const;

    MachineEntry object(const std::string& name) const;
    const Json::Value& list(const std::string& name) const;
    double number(const std::string& name, double lowest, double highest) const;
    int integer(const std::string& name, int lowest, int highest) const;
    bool boolean(const std::string& name) const;
    /** Not empty. */
    std::string text(const std::string& name) const;
    std::string choice(const std::string& name, const std::vector<std::string>& choices) const;
    /** At least one. */
    std::vector<std::string> texts(const std::string& name) const;
    std::vector<double> numbers(const std::string& name, std::size_t count, double largest) const;
    std::vector<std::array<double, 3>> points(const std::string& name, std::size_t count,
                                              double largest) const;

    /** @throws std::runtime_error "Machines file: machines[2]: \"name\" " and the problem */
    [[noreturn]] void fail(const std::string& name, const std::string& problem) const;

private:
    const Json::Value& member(const std::string& name) const;
    std::vector<double> numbersOf(const Json::Value& list, const std::string& name,
                                  std::size_t count, double largest) const;

    const Json::Value& m_value;
    std::string m_where;
};

} // namespace trovek::service
