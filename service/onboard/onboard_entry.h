#pragma once

#include <json/value.h>

#include <cstdint>
#include <string>
#include <vector>

namespace trovek::service {

/** One setting of a map: where it lies, what kind of value it has and which ones it takes. */
struct OnboardEntry
{
    /** Names from the top level down to its own. */
    std::vector<std::string> path;
    /** One of BHIbdfhiqs, as in docs/formats/onboard_map.md. */
    char type = '\0';
    int offset = 0;
    /** Of one element; of a text with its closing zero. */
    int elementBytes = 0;
    /** An "H" of which the low byte is a fraction. */
    bool fixedPoint = false;
    /** Whole numbers that it takes; empty when it takes every one in the range. */
    std::vector<std::int64_t> allowed;
    /** The range, both ends included: the type's, or the narrower one that the map gives. */
    double least = 0;
    double most = 0;
    /** One value for each element. */
    std::vector<Json::Value> factory;

    int bytes() const { return elementBytes * static_cast<int>(factory.size()); }
    bool isText() const { return type == 's'; }
    bool isReal() const { return type == 'f' || type == 'd' || fixedPoint; }
    std::string name() const;
};

/** A path with points between the names. */
std::string entryName(const std::vector<std::string>& path);

/**
 * Reads and checks one leaf of a map's source.
 * @throws std::runtime_error saying what is wrong with it, without its name
 */
OnboardEntry readOnboardEntry(const std::vector<std::string>& path, const Json::Value& source);

} // namespace trovek::service
