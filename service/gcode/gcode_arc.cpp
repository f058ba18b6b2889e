#include "gcode_arc.h"

#include <algorithm>
#include <cmath>

namespace trovek::service {

namespace {

const double kTurn = 2 * std::acos(-1.0);
constexpr double kSamePointMm = 1e-6;

} // namespace

GCodeArc::GCodeArc(const GCodePoint& start, const GCodePoint& end, double centerX, double centerY,
                   bool clockwise)
    : m_start(start)
    , m_end(end)
    , m_centerX(centerX)
    , m_centerY(centerY)
    , m_radius(std::hypot(start.position[0] - centerX, start.position[1] - centerY))
    , m_startAngle(std::atan2(start.position[1] - centerY, start.position[0] - centerX))
{
    const bool fullCircle = std::hypot(end.position[0] - start.position[0],
                                       end.position[1] - start.position[1]) < kSamePointMm;
    const double endAngle = std::atan2(end.position[1] - centerY, end.position[0] - centerX);
    m_sweep = fullCircle ? 0 : endAngle - m_startAngle;
    if (clockwise && m_sweep >= 0)
        m_sweep -= kTurn;
    else if (!clockwise && m_sweep <= 0)
        m_sweep += kTurn;

    // A chord of angle t stays within r * (1 - cos(t / 2)) of its arc; tiny circles get a hexagon.
    const double cosine = std::max(1 - kToleranceMm / std::max(m_radius, kToleranceMm), 0.5);
    const double chordAngle = 2 * std::acos(cosine);
    m_chords = static_cast<std::uint64_t>(std::max(1.0, std::ceil(std::abs(m_sweep) / chordAngle)));
}

bool GCodeArc::next(GCodePoint& point)
{
    if (m_done == m_chords)
        return false;
    ++m_done;
    point = m_end;
    if (m_done == m_chords)
        return true;
    const double share = static_cast<double>(m_done) / static_cast<double>(m_chords);
    const double angle = m_startAngle + m_sweep * share;
    point.position[0] = m_centerX + m_radius * std::cos(angle);
    point.position[1] = m_centerY + m_radius * std::sin(angle);
    point.position[2] = m_start.position[2] + (m_end.position[2] - m_start.position[2]) * share;
    point.extruded = m_start.extruded + (m_end.extruded - m_start.extruded) * share;
    return true;
}

} // namespace trovek::service
