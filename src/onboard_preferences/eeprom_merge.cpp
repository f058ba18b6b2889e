#include "onboard_preferences/eeprom_merge.h"

#include "onboard_preferences/eeprom_entry.h"

#include <trovek/text.h>

#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace trovek {

namespace {

/** Where a walk is among the members of two objects, which come in the order of their names. */
template <typename Iterator>
struct Level
{
    Iterator first;
    Iterator firstEnd;
    Json::Value::const_iterator second;
};

void mergeLeaf(Json::Value& destination, const Json::Value& source)
{
    Json::Value& to = destination["value"];
    const Json::Value& from = source["value"];
    if (to.isObject() || from.isObject() || to.isArray() != from.isArray() ||
        (to.isArray() && to.size() != from.size()))
        throw std::runtime_error("Value size mismatch");
    if (!to.isArray())
        return;
    for (Json::ArrayIndex i = 0; i < from.size(); ++i)
        to[i] = from[i];
}

/** True when the members of both are to be merged next. */
bool mergeOne(Json::Value& destination, const Json::Value& source)
{
    if (isEepromLeaf(destination) != isEepromLeaf(source))
        throw std::runtime_error("Leafiness mismatch");
    if (isEepromLeaf(destination)) {
        mergeLeaf(destination, source);
        return false;
    }
    if (destination.isObject() != source.isObject())
        throw std::runtime_error("Objectiness mismatch");
    if (!destination.isObject())
        return false;
    if (destination.size() != source.size())
        throw std::runtime_error("Member size mismatch");
    return true;
}

void checkLeaf(const std::string& name, const Json::Value& present, const Json::Value& loaded)
{
    if (isSameDocument(present["value"], loaded["value"]))
        return;
    try {
        const EepromEntry entry = readEepromEntry(&loaded);
        for (Json::ArrayIndex i = 0; i < loaded["value"].size(); ++i) {
            if (!isSameDocument(loaded["value"][i], present["value"][i]))
                checkElement(entry, loaded["value"][i]);
        }
    } catch (const std::exception& e) {
        throw std::runtime_error(e.what() + (": " + toStdString(labelFromKey(toQString(name)))));
    }
}

bool isNan(const Json::Value& value)
{
    return value.type() == Json::realValue && std::isnan(value.asDouble());
}

bool haveSameMembers(const Json::Value& first, const Json::Value& second)
{
    auto other = second.begin();
    for (auto member = first.begin(); member != first.end(); ++member, ++other) {
        if (member.name() != other.name() || !isSameDocument(*member, *other))
            return false;
    }
    return true;
}

} // namespace

bool isSameDocument(const Json::Value& first, const Json::Value& second)
{
    if (first.type() != second.type() || first.size() != second.size())
        return false;
    if (first.isObject())
        return haveSameMembers(first, second);
    if (!first.isArray())
        return first == second || (isNan(first) && isNan(second));
    for (Json::ArrayIndex i = 0; i < first.size(); ++i) {
        if (!isSameDocument(first[i], second[i]))
            return false;
    }
    return true;
}

// The walks keep their own stack: a document may be nested more deeply than the thread's.

void mergeValues(Json::Value& destination, const Json::Value& source)
{
    std::vector<Level<Json::Value::iterator>> levels;
    const auto enter = [&levels](Json::Value& to, const Json::Value& from) {
        if (mergeOne(to, from))
            levels.push_back({to.begin(), to.end(), from.begin()});
    };
    enter(destination, source);
    while (!levels.empty()) {
        auto& level = levels.back();
        if (level.first == level.firstEnd) {
            levels.pop_back();
            continue;
        }
        if (level.first.name() != level.second.name())
            throw std::runtime_error("Member name mismatch");
        Json::Value& to = *level.first++;
        const Json::Value& from = *level.second++;
        enter(to, from);
    }
}

void checkLoadedValues(const Json::Value& present, const Json::Value& loaded)
{
    std::vector<Level<Json::Value::const_iterator>> levels;
    const auto enter = [&levels](const Json::Value& before, const Json::Value& after) {
        if (before.isObject())
            levels.push_back({before.begin(), before.end(), after.begin()});
    };
    enter(present, loaded);
    while (!levels.empty()) {
        auto& level = levels.back();
        if (level.first == level.firstEnd) {
            levels.pop_back();
            continue;
        }
        const std::string name = level.first.name();
        const Json::Value& before = *level.first++;
        const Json::Value& after = *level.second++;
        if (isEepromLeaf(before))
            checkLeaf(name, before, after);
        else
            enter(before, after);
    }
}

void takeEdits(Json::Value& present, const Json::Value& read, const Json::Value& edited)
{
    struct Place
    {
        Json::Value* present;
        const Json::Value* read;
        const Json::Value* edited;
    };
    std::vector<Place> pending = {{&present, &read, &edited}};
    while (!pending.empty()) {
        const Place at = pending.back();
        pending.pop_back();
        if (isEepromLeaf(*at.present)) {
            const Json::Value& value = (*at.edited)["value"];
            if (value != (*at.read)["value"])
                (*at.present)["value"] = value;
        } else if (at.present->isObject()) {
            for (const std::string& name : at.present->getMemberNames())
                pending.push_back({&(*at.present)[name], &(*at.read)[name], &(*at.edited)[name]});
        }
    }
}

} // namespace trovek
