#include "onboard/onboard_document.h"

namespace trovek::service {

namespace {

bool isLeaf(const Json::Value& entry)
{
    return entry.isMember("type");
}

/** Walks the two side by side; `known` bounds the depth, whatever the document does. */
class ShapeComparison
{
public:
    std::vector<OnboardProblem> problems;

    void compareGroups(const Json::Value& known, const Json::Value& document,
                       const std::string& prefix)
    {
        for (const std::string& name : known.getMemberNames()) {
            if (document.isMember(name))
                compareEntries(known[name], document[name], prefix + name);
            else
                problems.push_back({prefix + name, "is missing"});
        }
        for (const std::string& name : document.getMemberNames()) {
            if (!known.isMember(name))
                problems.push_back({prefix + name, "is unknown to this firmware"});
        }
    }

private:
    void compareEntries(const Json::Value& known, const Json::Value& document,
                        const std::string& name)
    {
        if (!document.isObject()) {
            problems.push_back({name, "is not an object"});
        } else if (isLeaf(known)) {
            compareLeaves(known, document, name);
        } else if (!document["sub_map"].isObject()) {
            problems.push_back({name, "is no group of settings"});
        } else {
            compareGroups(known["sub_map"], document["sub_map"], name + ".");
        }
    }

    void compareLeaves(const Json::Value& known, const Json::Value& document,
                       const std::string& name)
    {
        const Json::ArrayIndex count =
            static_cast<Json::ArrayIndex>(known["type"].asString().size());
        if (document["type"] != known["type"])
            problems.push_back({name, "has another type here"});
        else if (document["offset"] != known["offset"])
            problems.push_back({name, "lies elsewhere here"});
        else if (!document["value"].isArray() || document["value"].size() != count)
            problems.push_back(
                {name, "must have " + std::to_string(count) + (count == 1 ? " value" : " values")});
    }
};

} // namespace

std::vector<OnboardProblem> compareShapes(const Json::Value& known, const Json::Value& document)
{
    ShapeComparison comparison;
    if (!document.isObject() || !document["eeprom_map"].isObject()) {
        comparison.problems.push_back({"", "this is no document of onboard settings"});
        return comparison.problems;
    }
    // A document that does not say whose it is stands or falls by its entries.
    for (const char* member : {"machine_type", "firmware_version"}) {
        if (document.isMember(member) && document[member] != known[member]) {
            comparison.problems.push_back({"", "they are of another firmware than " +
                                                   known["machine_type"].asString() + " " +
                                                   known["firmware_version"].asString()});
            return comparison.problems;
        }
    }
    comparison.compareGroups(known["eeprom_map"], document["eeprom_map"], "");
    return comparison.problems;
}

const Json::Value* findElements(const Json::Value& document, const OnboardEntry& entry)
{
    const Json::Value* level = &document;
    const char* members = "eeprom_map";
    for (const std::string& name : entry.path) {
        if (!level->isObject() || !(*level)[members].isObject())
            return nullptr;
        level = &(*level)[members][name];
        members = "sub_map";
    }
    if (!level->isObject())
        return nullptr;
    const Json::Value& elements = (*level)["value"];
    return elements.isArray() && elements.size() == entry.factory.size() ? &elements : nullptr;
}

} // namespace trovek::service
