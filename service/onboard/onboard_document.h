#pragma once

#include "onboard/onboard_map.h"

#include <json/value.h>

#include <vector>

namespace trovek::service {

/**
 * Where a document from a client is not of the map's shape: it is of another firmware, entries are
 * missing, unknown, or not what the map says that they are.
 *
 * Members beside "offset", "type", "value" and "sub_map" are the clients' own affair.
 * @param known the map's document, without values
 */
std::vector<OnboardProblem> compareShapes(const Json::Value& known, const Json::Value& document);

/** The entry's values in a document; null unless it holds as many as it should. */
const Json::Value* findElements(const Json::Value& document, const OnboardEntry& entry);

} // namespace trovek::service
