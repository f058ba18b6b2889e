#include "gcode_motion.h"

#include "gcode_reader.h"
#include "number_text.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace trovek::service {

namespace {

constexpr char kAxisLetters[] = {'X', 'Y', 'Z'};
/** Until the file says how fast. */
constexpr double kFirstFeed = 25;
/** Keeps one line from taking a machine for days. */
constexpr double kSlowestFeed = 0.1;
/** Machines count steps in 32 bits; half of that leaves room for the build volume and tool offsets.
 */
constexpr double kMostSteps = 1 << 30;
constexpr double kNothingMoves = 1e-9;
/** Slicers round to hundredths, also on the very edge. */
constexpr double kVolumeTolerance = 0.01;
/** How far the ends of an arc may be off its circle. */
constexpr double kRadiusTolerance = 0.05;

bool allHaveValues(const GCodeLine& line, std::string_view letters)
{
    return line.hasOnly(letters) && std::all_of(letters.begin(), letters.end(), [&](char c) {
               return !line.has(c) || line.hasValue(c);
           });
}

} // namespace

GCodeMotion::GCodeMotion(const MachineDefinition& machine)
    : m_machine(machine)
    , m_feed(kFirstFeed)
{}

MachinePosition GCodeMotion::counters() const
{
    const auto& offset = m_machine.toolOffsets[static_cast<std::size_t>(m_placedTool)];
    return {m_nozzle[0] - offset[0], m_nozzle[1] - offset[1], m_nozzle[2] - offset[2],
            m_filament[0], m_filament[1]};
}

bool GCodeMotion::readFeed(const GCodeLine& line, double& feed) const
{
    if (!line.has('F'))
        return true;
    const double asked = line.value('F') * m_mmPerUnit / 60;
    if (!(asked > 0))
        return false;
    feed = std::max(asked, kSlowestFeed);
    return true;
}

GCodePoint GCodeMotion::readTarget(const GCodeLine& line) const
{
    GCodePoint target{m_nozzle, m_extruded, false};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const char letter = kAxisLetters[axis];
        if (!line.has(letter))
            continue;
        const double value = line.value(letter) * m_mmPerUnit;
        target.position[axis] = m_absolute ? value : m_nozzle[axis] + value;
        target.namesPosition = true;
    }
    if (line.has('E')) {
        const double value = line.value('E') * m_mmPerUnit;
        const bool relative = m_extruderRelative || !m_absolute;
        target.extruded = relative ? m_extruded + value : value;
    }
    return target;
}

std::optional<GCodePoint> GCodeMotion::readMove(const GCodeLine& line)
{
    double feed = m_feed;
    if (!allHaveValues(line, "XYZEF") || !readFeed(line, feed))
        return std::nullopt;
    const GCodePoint target = readTarget(line);
    if (!fitsFilament(target))
        return std::nullopt;
    m_feed = feed;
    return target;
}

bool GCodeMotion::fitsCounter(int motor, double millimetres) const
{
    return std::abs(millimetres) * m_machine.stepsPerMm[static_cast<std::size_t>(motor)] <=
           kMostSteps;
}

bool GCodeMotion::fitsFilament(const GCodePoint& target) const
{
    const double filament = m_filament[static_cast<std::size_t>(m_tool)];
    return fitsCounter(MotorA + m_tool, filament + target.extruded - m_extruded);
}

std::optional<GCodeArc> GCodeMotion::readArc(const GCodeLine& line)
{
    double feed = m_feed;
    if (!allHaveValues(line, "XYZEFIJR") || !readFeed(line, feed))
        return std::nullopt;
    const bool byRadius = line.has('R');
    const bool byCenter = line.has('I') || line.has('J');
    if (byRadius == byCenter)
        return std::nullopt;

    const GCodePoint start{m_nozzle, m_extruded, true};
    GCodePoint end = readTarget(line);
    if (!fitsFilament(end))
        return std::nullopt;
    end.namesPosition = true;
    const bool clockwise = line.code() == 2;
    double centerX = m_nozzle[0] + line.value('I') * m_mmPerUnit;
    double centerY = m_nozzle[1] + line.value('J') * m_mmPerUnit;
    if (byRadius) {
        const double radius = line.value('R') * m_mmPerUnit;
        const double dx = end.position[0] - start.position[0];
        const double dy = end.position[1] - start.position[1];
        const double half = std::hypot(dx, dy) / 2;
        if (half < kNothingMoves || half > std::abs(radius) + kRadiusTolerance)
            return std::nullopt;
        // The centre lies beside the chord's middle; a negative radius asks for the longer way
        // round.
        const double height = std::sqrt(std::max(radius * radius - half * half, 0.0));
        const double side = (radius > 0) == clockwise ? 1 : -1;
        centerX = start.position[0] + dx / 2 + side * height * dy / (2 * half);
        centerY = start.position[1] + dy / 2 - side * height * dx / (2 * half);
    } else {
        const double startRadius =
            std::hypot(start.position[0] - centerX, start.position[1] - centerY);
        const double endRadius = std::hypot(end.position[0] - centerX, end.position[1] - centerY);
        if (startRadius < kNothingMoves || std::abs(startRadius - endRadius) > kRadiusTolerance)
            return std::nullopt;
    }
    m_feed = feed;
    return GCodeArc(start, end, centerX, centerY, clockwise);
}

void GCodeMotion::checkInside(const Point& target) const
{
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (target[axis] == m_nozzle[axis])
            continue;
        const double place = target[axis] + m_shift[axis];
        const AxisRange& range = m_machine.buildVolume[axis];
        if (place >= range.min - kVolumeTolerance && place <= range.max + kVolumeTolerance)
            continue;
        throw std::runtime_error(std::string(1, kAxisLetters[axis]) + " " + numberText(place) +
                                 " mm is outside the machine's build volume (" +
                                 numberText(range.min) + " to " + numberText(range.max) + " mm)");
    }
}

std::optional<MoveCommand> GCodeMotion::moveTo(const GCodePoint& target)
{
    checkInside(target.position);
    const MachinePosition from = counters();
    if (target.namesPosition)
        m_placedTool = m_tool;
    m_nozzle = target.position;
    m_filament[static_cast<std::size_t>(m_tool)] += target.extruded - m_extruded;
    const bool extruding = target.extruded > m_extruded;
    m_extruded = target.extruded;

    MoveCommand move;
    move.target = counters();
    std::array<double, kMotorCount> way{};
    for (std::size_t motor = 0; motor < way.size(); ++motor)
        way[motor] = std::abs(move.target[motor] - from[motor]);
    move.distance = std::sqrt(way[0] * way[0] + way[1] * way[1] + way[2] * way[2]);
    if (move.distance < kNothingMoves)
        move.distance = std::max(way[MotorA], way[MotorB]);
    if (move.distance < kNothingMoves)
        return std::nullopt;
    move.seconds = move.distance / m_feed;
    for (std::size_t motor = 0; motor < way.size(); ++motor)
        move.seconds = std::max(move.seconds, way[motor] / m_machine.maxFeed[motor]);
    move.feed = move.distance / move.seconds;
    move.extruding = extruding;
    return move;
}

std::optional<SetPositionCommand> GCodeMotion::setPosition(const GCodeLine& line)
{
    if (!allHaveValues(line, "XYZE"))
        return std::nullopt;
    const bool all = !line.has('X') && !line.has('Y') && !line.has('Z') && !line.has('E');
    for (int axis = 0; axis < 3; ++axis) {
        if (!fitsCounter(axis, line.value(kAxisLetters[axis]) * m_mmPerUnit))
            return std::nullopt;
    }
    if (!fitsCounter(MotorA + m_tool, line.value('E') * m_mmPerUnit))
        return std::nullopt;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (!all && !line.has(kAxisLetters[axis]))
            continue;
        const double value = line.value(kAxisLetters[axis]) * m_mmPerUnit;
        m_shift[axis] += m_nozzle[axis] - value;
        m_nozzle[axis] = value;
    }
    if (all || line.has('E')) {
        m_extruded = line.value('E') * m_mmPerUnit;
        m_filament[static_cast<std::size_t>(m_tool)] = m_extruded;
    }
    return SetPositionCommand{counters()};
}

SetPositionCommand GCodeMotion::clearShift()
{
    for (std::size_t axis = 0; axis < 3; ++axis) {
        m_nozzle[axis] += m_shift[axis];
        m_shift[axis] = 0;
    }
    return SetPositionCommand{counters()};
}

HomeCommand GCodeMotion::home(const std::array<bool, 3>& axes)
{
    const auto& offset = m_machine.toolOffsets[static_cast<std::size_t>(m_placedTool)];
    std::array<double, 3> seconds{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (!axes[axis])
            continue;
        const double target = m_machine.homePosition[axis] + offset[axis];
        // Nobody knows where a machine stands that was not homed: halfway, on average.
        const double way = m_homed[axis] ? std::abs(m_nozzle[axis] + m_shift[axis] - target)
                                         : m_machine.buildVolume[axis].length() / 2;
        seconds[axis] = way / m_machine.homingFeed[axis];
        m_nozzle[axis] = target;
        m_shift[axis] = 0;
        m_homed[axis] = true;
    }
    return HomeCommand{axes, counters(), std::max(seconds[0], seconds[1]) + seconds[2]};
}

} // namespace trovek::service
