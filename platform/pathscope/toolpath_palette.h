#pragma once

#include "pathscope/toolpaths.h"

#include <QColor>

#include <vector>

namespace pathscope {

/** As vertex colours want it: bytes r, g, b, a. */
std::uint32_t packed(const QColor& colour);

/** Fixed, so that users get to know them. */
QColor featureColour(Feature feature);

/** Of moves that do not extrude. */
QColor moveColour(MoveKind kind);

/** For what has no value, for example a temperature that was never set. */
QColor unknownColour();

/**
 * From dark violet over teal to yellow for 0 to 1. Lightness rises all the way, so that it also
 * reads without colour vision and printed in grey.
 */
QColor rangeColour(double position);

/**
 * One a tool: the wanted colour, opaque; where it is missing, not valid or transparent, a colour of
 * our own that looks like none of the others.
 */
std::vector<QColor> toolColours(const std::vector<QColor>& wanted, int count = kToolCount);

} // namespace pathscope
