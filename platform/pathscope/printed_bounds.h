#pragma once

#include "pathscope/toolpaths.h"

#include <array>

namespace pathscope {

/** Of every feature, whether something is done with it. */
using FeatureSet = std::array<bool, kFeatureCount>;

/** What remains on the platform of a print, with its supports, but without skirts, brims, prime
 * towers and the lines that start or end a print. */
FeatureSet shownOnPictures();

/** The same without supports and rafts. */
FeatureSet partOfTheObject();

/**
 * From edge to edge of the lines of these features; of all that extrudes where there are none of
 * them. Walks all moves.
 */
Bounds printedBounds(const Toolpaths& toolpaths, const FeatureSet& features);

} // namespace pathscope
