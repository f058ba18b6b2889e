#pragma once

#include "slicing/slice_settings.h"

#include <json/value.h>

#include <array>
#include <string>

namespace trovek::service {

/** Who prints a raft or supports, as a user chooses it. */
enum class ExtraPartChoice {
    Off,
    /** The other tool when it holds dissolvable filament, otherwise the one that prints the part
       of the model next to it. */
    ColorMatched,
    Right,
    Left,
};

/**
 * What a "strandel.json" says (docs/formats/strandel_json.md), and a preset as well.
 *
 * It suits machines of all types: what is said of a tool or a platform that a machine lacks does
 * not count there.
 */
struct StrandelConfig : PrintSettings
{
    /** Right or only, left. */
    std::array<ToolSettings, 2> tools;
    ExtraPartChoice raft = ExtraPartChoice::Off;
    ExtraPartChoice supports = ExtraPartChoice::Off;
};

/** What upgradeStrandelConfig() makes. */
constexpr int kStrandelVersion = 3;

enum class StrandelVersion { NeedsUpgrade = 0, UpToDate = 1, TooNew = 2 };

/**
 * Which version it is of. An older or the current one is checked as a whole; of a newer one nothing
 * else is known.
 * @throws std::runtime_error for a user, with the key that is missing or wrong
 */
StrandelVersion checkStrandelVersion(const Json::Value& document);

/**
 * The document in the current version; keys that are not known are kept.
 * @throws std::runtime_error as checkStrandelVersion(), and for a version that is too new
 */
Json::Value upgradeStrandelConfig(const Json::Value& document);

/**
 * The settings of a document in the current version.
 * @throws std::runtime_error for a user, with the key that is missing or wrong, or when the
 * document has another version
 */
StrandelConfig readStrandelConfig(const Json::Value& document);

/**
 * @param where what the text begins with
 * @throws std::runtime_error for a user, with the key whose value is out of its range
 */
void checkRanges(const StrandelConfig& config, const std::string& where);

} // namespace trovek::service
