#pragma once

#include "pathscope/toolpaths.h"

#include <string_view>

namespace pathscope {

/** What a slicer's name of a feature means, such as "WALL-OUTER"; Unknown for any other text. */
Feature featureFromName(std::string_view name);

} // namespace pathscope
