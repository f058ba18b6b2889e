#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

namespace trovek::geometry {

/** A point or a direction; millimetres where nothing else is said. */
struct Vector
{
    double x = 0;
    double y = 0;
    double z = 0;
};

inline bool operator==(const Vector& a, const Vector& b)
{
    return a.x == b.x && a.y == b.y && a.z == b.z;
}
inline bool operator!=(const Vector& a, const Vector& b)
{
    return !(a == b);
}
inline Vector operator-(const Vector& a)
{
    return {-a.x, -a.y, -a.z};
}
inline Vector operator+(const Vector& a, const Vector& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vector operator-(const Vector& a, const Vector& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vector operator*(double factor, const Vector& a)
{
    return {factor * a.x, factor * a.y, factor * a.z};
}
inline double dot(const Vector& a, const Vector& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vector cross(const Vector& a, const Vector& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(const Vector& a)
{
    return std::sqrt(dot(a, a));
}
inline bool isFinite(const Vector& a)
{
    return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z);
}
/** Of length 1. The direction must have a length. */
inline Vector normalized(const Vector& a)
{
    return 1 / length(a) * a;
}

/** Along the axes, with what lies on its sides. */
struct Box
{
    Vector minimum;
    Vector maximum;

    bool contains(const Vector& point) const
    {
        return minimum.x <= point.x && point.x <= maximum.x && minimum.y <= point.y &&
               point.y <= maximum.y && minimum.z <= point.z && point.z <= maximum.z;
    }
};

/** The smallest; there must be a point. */
inline Box boundingBoxOf(const std::vector<Vector>& points)
{
    Box box{points.front(), points.front()};
    for (const Vector& point : points) {
        box.minimum = {std::min(box.minimum.x, point.x), std::min(box.minimum.y, point.y),
                       std::min(box.minimum.z, point.z)};
        box.maximum = {std::max(box.maximum.x, point.x), std::max(box.maximum.y, point.y),
                       std::max(box.maximum.z, point.z)};
    }
    return box;
}

} // namespace trovek::geometry
