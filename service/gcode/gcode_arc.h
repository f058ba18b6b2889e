#pragma once

#include <array>
#include <cstdint>

namespace trovek::service {

/** Where a move ends, as its file counts: millimetres of X, Y, Z and of filament. */
struct GCodePoint
{
    std::array<double, 3> position{};
    double extruded = 0;
    /** False for a move of filament alone. */
    bool namesPosition = true;
};

/** An arc in the XY plane (with Z and filament in proportion), handed out as chords within 0.01 mm
 * of it. */
class GCodeArc
{
public:
    static constexpr double kToleranceMm = 0.01;

    /**
     * From `start` around `center`; a full circle when both ends have the same X and Y.
     * `end` need not be exactly on the circle: the last chord leads to it.
     */
    GCodeArc(const GCodePoint& start, const GCodePoint& end, double centerX, double centerY,
             bool clockwise);

    /** @return false after the last chord */
    bool next(GCodePoint& point);

private:
    GCodePoint m_start;
    GCodePoint m_end;
    double m_centerX;
    double m_centerY;
    double m_radius;
    double m_startAngle;
    /** Radians, negative when clockwise. */
    double m_sweep;
    std::uint64_t m_chords;
    std::uint64_t m_done = 0;
};

} // namespace trovek::service
