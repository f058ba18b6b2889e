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
};

/** Goes along an arc in even steps; the last one ends exactly where the arc does. */
class ArcWalk
{
public:
    /** @param arc must outlive the walk */
    ArcWalk(const Arc& arc, std::uint32_t steps);

    /** Called as often as there are steps. */
    Place next();

private:
    const Arc& m_arc;
    const std::uint32_t m_steps;
    std::uint32_t m_step = 0;
    double m_radius = 0;
    double m_radiusStep = 0;
    double m_along = 0;
    double m_alongStep = 0;
    double m_cosine = 1;
    double m_sine = 0;
    double m_stepCosine = 1;
    double m_stepSine = 0;
};

} // namespace pathscope
