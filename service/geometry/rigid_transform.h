#pragma once

#include "vector.h"

#include <array>

namespace trovek::geometry {

/** Turns about the origin and then moves; sizes stay. As made, it changes nothing. */
struct RigidTransform
{
    /** Rows of a rotation matrix. */
    std::array<Vector, 3> rotation{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    Vector translation;

    static RigidTransform moving(const Vector& by);
    /** @param axis any length but zero; angles count counter-clockwise as seen against it */
    static RigidTransform turning(const Vector& axis, double radians);
    /** The shortest turn that takes one direction to the other; neither may be zero. */
    static RigidTransform turning(const Vector& from, const Vector& to);

    Vector point(const Vector& point) const { return direction(point) + translation; }
    Vector direction(const Vector& direction) const
    {
        return {dot(rotation[0], direction), dot(rotation[1], direction),
                dot(rotation[2], direction)};
    }
    RigidTransform inverse() const;
    /** Of the turn, 0 to pi. */
    double radians() const;
};

/** What the right one does, then what the left one does. */
RigidTransform operator*(const RigidTransform& left, const RigidTransform& right);

} // namespace trovek::geometry
