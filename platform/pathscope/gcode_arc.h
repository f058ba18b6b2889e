#pragma once

#include "pathscope/toolpath_builder.h"

#include <cstdint>

namespace pathscope {

enum class ArcPlane { XY, ZX, YZ };

/** An arc of a helix: about an axis through the centre, along it evenly. */
struct Arc
{
    Place from;
    Place to;
    Place centre;
    ArcPlane plane = ArcPlane::XY;
    bool clockwise = false;

    /**
     * From the radius instead of the centre; a negative one takes the longer way round.
     *
     * @return false when no circle of that radius goes through both ends
     */
    bool setRadius(double radius);
    /** False when the ends do not lie on one circle about the centre. */
    bool isRound() const;
    /** The farthest that a coordinate may lie from the centre. */
    double radius() const;
    /** Radians, above zero; a whole turn when the ends are the same. */
    double sweep() const;
    /** How many chords stay within 0.01 mm of the arc. */
    std::uint32_t chordCount() const;
    /** The point after a part of the way, 0 to 1. */
    Place at(double part) const;
};

} // namespace pathscope
