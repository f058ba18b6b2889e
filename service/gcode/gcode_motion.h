#pragma once

#include "gcode_arc.h"
#include "gcode_command.h"
#include "machine_definition.h"

#include <array>
#include <optional>

namespace trovek::service {

class GCodeLine;

/**
 * Where a program's moves lead: units, absolute and relative positions, shifts by G92, tool
 * offsets.
 *
 * Three kinds of coordinates meet here. A line names where the nozzle in use goes, in the file's
 * shifted coordinates. The shift added gives the place on the platform, which must lie inside the
 * build volume. The nozzle's offset taken away gives the machine's counters, which go into
 * commands.
 *
 * The functions that take a line leave everything as it was when they cannot understand it.
 */
class GCodeMotion
{
public:
    /** @param machine not owned */
    explicit GCodeMotion(const MachineDefinition& machine);

    void setAbsolute(bool absolute) { m_absolute = absolute; }
    void setExtruderRelative(bool relative) { m_extruderRelative = relative; }
    void setMmPerUnit(double millimetres) { m_mmPerUnit = millimetres; }
    /** The next move that names X, Y or Z brings the new nozzle to its place. */
    void selectTool(int tool) { m_tool = tool; }
    int tool() const { return m_tool; }

    /** G0, G1. @return nothing when the line cannot be understood */
    std::optional<GCodePoint> readMove(const GCodeLine& line);
    /** G2, G3. @return nothing when the line cannot be understood */
    std::optional<GCodeArc> readArc(const GCodeLine& line);

    /**
     * Goes there.
     * @return nothing when nothing moves
     * @throws std::runtime_error for a user when that is outside the build volume
     */
    std::optional<MoveCommand> moveTo(const GCodePoint& target);

    /** G92; nothing when the line cannot be understood. */
    std::optional<SetPositionCommand> setPosition(const GCodeLine& line);
    /** G92.1 */
    SetPositionCommand clearShift();
    /** G28 */
    HomeCommand home(const std::array<bool, 3>& axes);

private:
    using Point = std::array<double, 3>;
    MachinePosition counters() const;
    bool readFeed(const GCodeLine& line, double& feed) const;
    GCodePoint readTarget(const GCodeLine& line) const;
    void checkInside(const Point& target) const;
    bool fitsCounter(int motor, double millimetres) const;
    bool fitsFilament(const GCodePoint& target) const;

    const MachineDefinition& m_machine;
    bool m_absolute = true;
    bool m_extruderRelative = false;
    double m_mmPerUnit = 1;
    /** Millimetres a second, as asked for. */
    double m_feed;
    int m_tool = 0;
    /** The tool whose offset the carriage stands by. */
    int m_placedTool = 0;
    /** As the file counts. */
    Point m_nozzle{};
    double m_extruded = 0;
    /** Added to m_nozzle gives the place on the platform. */
    Point m_shift{};
    std::array<double, 2> m_filament{};
    std::array<bool, 3> m_homed{};
};

} // namespace trovek::service
