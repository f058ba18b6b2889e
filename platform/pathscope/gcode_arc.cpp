#include "pathscope/gcode_arc.h"

#include <algorithm>
#include <cmath>

namespace pathscope {
namespace {

constexpr double kPi = 3.14159265358979323846;
/** Of the chord from the arc; what is left to 0.01 mm takes the rounding of the points. */
constexpr double kDeviation = 0.009;
/** Slicers write ends and centres with three digits; more apart is a mistake. */
constexpr double kRadiusTolerance = 0.05;
constexpr double kLargestChordCount = 4096;

/** A place as seen along the axis: right, up, and towards the eye. */
struct Seen
{
    double right = 0;
    double up = 0;
    double along = 0;
};

Seen seen(const Place& place, ArcPlane plane)
{
    switch (plane) {
    case ArcPlane::ZX:
        return {place.z, place.x, place.y};
    case ArcPlane::YZ:
        return {place.y, place.z, place.x};
    case ArcPlane::XY:
        break;
    }
    return {place.x, place.y, place.z};
}

Place placeOf(const Seen& seen, ArcPlane plane)
{
    switch (plane) {
    case ArcPlane::ZX:
        return {seen.up, seen.along, seen.right};
    case ArcPlane::YZ:
        return {seen.along, seen.right, seen.up};
    case ArcPlane::XY:
        break;
    }
    return {seen.right, seen.up, seen.along};
}

double distance(const Seen& a, const Seen& b)
{
    return std::hypot(a.right - b.right, a.up - b.up);
}

double angle(const Seen& of, const Seen& about)
{
    return std::atan2(of.up - about.up, of.right - about.right);
}

} // namespace

bool Arc::setRadius(double radius)
{
    const Seen a = seen(from, plane);
    const Seen b = seen(to, plane);
    const double chord = distance(a, b);
    const double half = chord / 2;
    if (!(chord > 0) || std::abs(radius) < half - kRadiusTolerance)
        return false;
    const double offset = std::sqrt(std::max(0.0, radius * radius - half * half));
    // Counter-clockwise the short way round has the centre on the left.
    const double side = clockwise == (radius < 0) ? offset : -offset;
    Seen middle{(a.right + b.right) / 2, (a.up + b.up) / 2, a.along};
    middle.right -= side * (b.up - a.up) / chord;
    middle.up += side * (b.right - a.right) / chord;
    centre = placeOf(middle, plane);
    return true;
}

bool Arc::isRound() const
{
    const Seen about = seen(centre, plane);
    const double first = distance(seen(from, plane), about);
    const double last = distance(seen(to, plane), about);
    return first > 0 && std::abs(first - last) <= std::max(kRadiusTolerance, first * 0.001);
}

double Arc::radius() const
{
    const Seen about = seen(centre, plane);
    return std::max(distance(seen(from, plane), about), distance(seen(to, plane), about));
}

double Arc::sweep() const
{
    const Seen about = seen(centre, plane);
    const Seen a = seen(from, plane);
    const Seen b = seen(to, plane);
    if (distance(a, b) == 0)
        return 2 * kPi;
    const double turn = angle(b, about) - angle(a, about);
    const double forward = clockwise ? -turn : turn;
    return forward > 0 ? forward : forward + 2 * kPi;
}

std::uint32_t Arc::chordCount() const
{
    const double r = radius();
    const double step = r > kDeviation ? 2 * std::acos(1 - kDeviation / r) : kPi;
    return static_cast<std::uint32_t>(
        std::min(std::max(1.0, std::ceil(sweep() / std::min(step, kPi / 2))), kLargestChordCount));
}

ArcWalk::ArcWalk(const Arc& arc, std::uint32_t steps)
    : m_arc(arc)
    , m_steps(steps)
{
    const Seen about = seen(arc.centre, arc.plane);
    const Seen from = seen(arc.from, arc.plane);
    const Seen to = seen(arc.to, arc.plane);
    const double angle = (arc.clockwise ? -1 : 1) * arc.sweep() / steps;
    // The radius goes evenly from the start's to the end's, which rounding made a little different.
    m_radius = distance(from, about);
    m_radiusStep = (distance(to, about) - m_radius) / steps;
    m_along = from.along;
    m_alongStep = (to.along - from.along) / steps;
    m_cosine = (from.right - about.right) / m_radius;
    m_sine = (from.up - about.up) / m_radius;
    m_stepCosine = std::cos(angle);
    m_stepSine = std::sin(angle);
}

Place ArcWalk::next()
{
    if (++m_step >= m_steps)
        return m_arc.to;
    const double cosine = m_cosine * m_stepCosine - m_sine * m_stepSine;
    m_sine = m_sine * m_stepCosine + m_cosine * m_stepSine;
    m_cosine = cosine;
    m_radius += m_radiusStep;
    m_along += m_alongStep;
    const Seen about = seen(m_arc.centre, m_arc.plane);
    return placeOf({about.right + m_radius * m_cosine, about.up + m_radius * m_sine, m_along},
                   m_arc.plane);
}

} // namespace pathscope
