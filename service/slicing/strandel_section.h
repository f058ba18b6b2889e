#pragma once

#include <json/value.h>

#include <cstddef>
#include <string>

namespace trovek::service {

/** A value and how a "strandel.json" calls it. */
template <typename Value>
struct StrandelName
{
    const char* text;
    Value value;
};

/** An object in a "strandel.json", which says of each key that is wrong what it must be. */
class StrandelSection
{
public:
    /**
     * @param value  not owned; must outlive the section
     * @param prefix stands before each key in errors, for example "right_extruder."
     * @throws std::runtime_error unless it is an object
     */
    explicit StrandelSection(const Json::Value& value, std::string prefix = {});

    /** All of these throw std::runtime_error for a user when the key is missing or wrong. */
    StrandelSection section(const char* key) const;
    double number(const char* key, double least, double most) const;
    int wholeNumber(const char* key, int least, int most) const;
    bool boolean(const char* key) const;
    std::string text(const char* key) const;
    template <typename Value, std::size_t Count>
    Value named(const char* key, const StrandelName<Value> (&names)[Count]) const
    {
        const Json::Value& member = at(key);
        std::string all;
        for (std::size_t i = 0; i < Count; ++i) {
            if (member.isString() && member.asString() == names[i].text)
                return names[i].value;
            all += i == 0 ? "" : i + 1 == Count ? " or " : ", ";
            all += "\"" + std::string(names[i].text) + "\"";
        }
        fail(key, "must be " + all);
    }

    /** Numbers of either kind, for code that goes through many. */
    void read(const char* key, double& value, double least, double most) const
    {
        value = number(key, least, most);
    }
    void read(const char* key, int& value, int least, int most) const
    {
        value = wholeNumber(key, least, most);
    }

    const Json::Value& at(const char* key) const;
    [[noreturn]] void fail(const std::string& key, const std::string& problem) const;

private:
    const Json::Value& m_value;
    const std::string m_prefix;
};

/** "must be a number from 0 to 1", "must be a whole number from 1 to 100". */
std::string rangeText(double least, double most);
std::string rangeText(int least, int most);

} // namespace trovek::service
