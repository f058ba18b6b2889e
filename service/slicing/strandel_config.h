#pragma once

#include <json/value.h>

#include <string>

namespace trovek::service {

/** What a "strandel.json" holds (docs/formats/strandel_json.md); the members are the implementer's.
 */
struct StrandelConfig;

enum class StrandelVersion { NeedsUpgrade = 0, UpToDate = 1, TooNew = 2 };

/** @throws std::runtime_error for a user when it is no such document */
StrandelVersion checkStrandelVersion(const Json::Value& document);

/** The document in the current version; keys that are not known are kept. */
Json::Value upgradeStrandelConfig(const Json::Value& document);

} // namespace trovek::service
