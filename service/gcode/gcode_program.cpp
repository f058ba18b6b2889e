#include "gcode_program.h"

#include "gcode_motion.h"
#include "machine_definition.h"
#include "number_text.h"

#include <cmath>
#include <optional>

namespace trovek::service {

namespace {

/** A file of made-up codes must not fill the memory. */
constexpr std::size_t kMaximumCodesCounted = 200;
constexpr char kOtherCodes[] = "others";
constexpr double kLongestDwellSeconds = 24 * 3600;
constexpr double kMmPerInch = 25.4;

bool isWhole(double value)
{
    return value == std::floor(value);
}

} // namespace

GCodeError::GCodeError(Kind kind, const std::string& text)
    : std::runtime_error(text)
    , m_kind(kind)
{}

std::string GCodeRemarks::toString() const
{
    std::string text;
    for (const auto& [code, count] : leftOut)
        text += (text.empty() ? "left out: " : ", ") + code + " (" + std::to_string(count) + ")";
    const auto append = [&](const std::string& part, std::uint64_t count, std::uint64_t line) {
        if (count == 0)
            return;
        text += (text.empty() ? "" : "; ") + part + std::to_string(count) +
                (count == 1 ? ", line " : ", first in line ") + std::to_string(line);
    };
    append("lines not understood: ", unreadableLines, firstUnreadableLine);
    append("moves that push cold filament: ", coldMoves, firstColdMoveLine);
    return text;
}

class GCodeProgram::Private
{
public:
    Private(const MachineDefinition& theMachine, std::vector<GCodeSection> theSections,
            ColdExtrusion theColdExtrusion)
        : machine(theMachine)
        , sections(std::move(theSections))
        , coldExtrusion(theColdExtrusion)
        , motion(theMachine)
    {}

    bool readLine();
    bool interpret(MachineCommand& command);
    bool interpretG(MachineCommand& command);
    bool interpretM(MachineCommand& command);

    bool move(MachineCommand& command, const GCodePoint& target);
    bool dwell(MachineCommand& command);
    bool toolChange(MachineCommand& command);
    bool toolTemperature(MachineCommand& command, bool wait);
    bool platformTemperature(MachineCommand& command, bool wait);
    bool fan(MachineCommand& command, bool on);
    bool motors(MachineCommand& command, bool enable);
    bool progress(MachineCommand& command);

    /** The target of M104 and its like; nothing when there is none or it makes no sense. */
    std::optional<int> celsius(bool wait, int limit, const char* what) const;
    void checkTool(int tool) const;
    std::string where() const;
    bool skipUnreadable();
    bool leaveOut();

    const MachineDefinition& machine;
    std::vector<GCodeSection> sections;
    const ColdExtrusion coldExtrusion;
    GCodeMotion motion;
    GCodeRemarks remarks;
    std::optional<GCodeReader> reader;
    std::size_t section = 0;
    std::uint64_t earlierBytes = 0;
    std::uint64_t lines = 0;
    GCodeLine line;
    std::optional<GCodeArc> arc;
    bool inXyPlane = true;
    std::array<int, 2> targets{};
};

GCodeProgram::GCodeProgram(const MachineDefinition& machine, std::vector<GCodeSection> sections,
                           ColdExtrusion coldExtrusion)
    : d(std::make_unique<Private>(machine, std::move(sections), coldExtrusion))
{}

GCodeProgram::~GCodeProgram() = default;

const GCodeRemarks& GCodeProgram::remarks() const
{
    return d->remarks;
}

std::uint64_t GCodeProgram::bytesRead() const
{
    return d->earlierBytes + (d->reader ? d->reader->bytesRead() : 0);
}

std::uint64_t GCodeProgram::linesRead() const
{
    return d->lines;
}

bool GCodeProgram::next(MachineCommand& command)
{
    for (;;) {
        GCodePoint chordEnd;
        if (d->arc && d->arc->next(chordEnd)) {
            if (d->move(command, chordEnd))
                return true;
            continue;
        }
        d->arc.reset();
        if (!d->readLine())
            return false;
        if (d->interpret(command))
            return true;
    }
}

bool GCodeProgram::Private::readLine()
{
    for (; section < sections.size(); ++section) {
        if (!reader)
            reader.emplace(std::move(sections[section].source));
        if (reader->next(line)) {
            ++lines;
            return true;
        }
        earlierBytes += reader->bytesRead();
        reader.reset();
    }
    return false;
}

std::string GCodeProgram::Private::where() const
{
    const std::string& name = sections[section].name;
    return (name.empty() ? "Line " : name + ", line ") + std::to_string(line.number()) + ": ";
}

bool GCodeProgram::Private::skipUnreadable()
{
    if (remarks.unreadableLines++ == 0)
        remarks.firstUnreadableLine = line.number();
    return false;
}

bool GCodeProgram::Private::leaveOut()
{
    const std::string name = line.name();
    const bool room = remarks.leftOut.size() < kMaximumCodesCounted;
    ++remarks.leftOut[room || remarks.leftOut.count(name) != 0 ? name : kOtherCodes];
    return false;
}

bool GCodeProgram::Private::interpret(MachineCommand& command)
{
    if (line.kind() == GCodeLine::Empty)
        return false;
    if (line.kind() == GCodeLine::Unreadable)
        return skipUnreadable();
    command.line = line.number();
    command.section = section;
    switch (line.letter()) {
    case 'G':
        return interpretG(command);
    case 'M':
        return interpretM(command);
    default:
        return toolChange(command);
    }
}

bool GCodeProgram::Private::interpretG(MachineCommand& command)
{
    if (line.subcode() != 0) {
        if (line.code() != 92 || line.subcode() != 1)
            return leaveOut();
        command.action = motion.clearShift();
        return true;
    }
    switch (line.code()) {
    case 0:
    case 1: {
        const auto target = motion.readMove(line);
        return target ? move(command, *target) : skipUnreadable();
    }
    case 2:
    case 3:
        if (!inXyPlane)
            return leaveOut();
        arc = motion.readArc(line);
        return arc ? false : skipUnreadable();
    case 4:
        return dwell(command);
    case 17:
    case 18:
    case 19:
        inXyPlane = line.code() == 17;
        return inXyPlane ? false : leaveOut();
    case 20:
        motion.setMmPerUnit(kMmPerInch);
        return false;
    case 21:
        motion.setMmPerUnit(1);
        return false;
    case 28: {
        std::array<bool, 3> axes = {line.has('X'), line.has('Y'), line.has('Z')};
        if (!axes[0] && !axes[1] && !axes[2])
            axes.fill(true);
        command.action = motion.home(axes);
        return true;
    }
    case 90:
    case 91:
        motion.setAbsolute(line.code() == 90);
        return false;
    case 92: {
        const auto position = motion.setPosition(line);
        if (!position)
            return skipUnreadable();
        command.action = *position;
        return true;
    }
    default:
        return leaveOut();
    }
}

bool GCodeProgram::Private::interpretM(MachineCommand& command)
{
    if (line.subcode() != 0)
        return leaveOut();
    switch (line.code()) {
    case 17:
        return motors(command, true);
    case 18:
    case 84:
        return motors(command, false);
    case 73:
        return progress(command);
    case 82:
    case 83:
        motion.setExtruderRelative(line.code() == 83);
        return false;
    case 104:
    case 109:
        return toolTemperature(command, line.code() == 109);
    case 106:
    case 107:
        return fan(command, line.code() == 106);
    case 117:
        command.action = MessageCommand{std::string(line.text())};
        return true;
    case 140:
    case 190:
        return platformTemperature(command, line.code() == 190);
    default:
        return leaveOut();
    }
}

bool GCodeProgram::Private::move(MachineCommand& command, const GCodePoint& target)
{
    std::optional<MoveCommand> move;
    try {
        move = motion.moveTo(target);
    } catch (const std::runtime_error& error) {
        throw GCodeError(GCodeError::OutsideBuildVolume, where() + error.what());
    }
    if (!move)
        return false;
    const int celsius = targets[static_cast<std::size_t>(motion.tool())];
    if (move->extruding && celsius < machine.minimumExtrusionCelsius) {
        if (coldExtrusion == RefuseCold) {
            throw GCodeError(GCodeError::ColdExtrusion,
                             where() + "the extruder would push filament with a target of " +
                                 std::to_string(celsius) + " °C; the machine needs " +
                                 std::to_string(machine.minimumExtrusionCelsius) + " °C");
        }
        if (remarks.coldMoves++ == 0)
            remarks.firstColdMoveLine = line.number();
    }
    command.line = line.number();
    command.section = section;
    command.action = *move;
    return true;
}

bool GCodeProgram::Private::dwell(MachineCommand& command)
{
    if (!line.hasOnly("PS") || (line.has('P') && line.has('S')))
        return skipUnreadable();
    const double seconds = line.has('S') ? line.value('S') : line.value('P') / 1000;
    if (seconds < 0 || seconds > kLongestDwellSeconds)
        return skipUnreadable();
    // A dwell of nothing only waits for the moves before it, as a machine does anyway.
    const auto milliseconds = static_cast<std::uint32_t>(std::lround(seconds * 1000));
    command.action = DwellCommand{milliseconds};
    return milliseconds > 0;
}

void GCodeProgram::Private::checkTool(int tool) const
{
    if (tool >= machine.extruders) {
        throw GCodeError(GCodeError::NoSuchTool,
                         where() + "the machine has no tool T" + std::to_string(tool));
    }
}

bool GCodeProgram::Private::toolChange(MachineCommand& command)
{
    if (line.subcode() != 0)
        return leaveOut();
    checkTool(line.code());
    motion.selectTool(line.code());
    command.action = ToolChangeCommand{line.code()};
    return true;
}

std::optional<int> GCodeProgram::Private::celsius(bool wait, int limit, const char* what) const
{
    // R asks to wait for cooling down, too; the machines' own wait does both.
    const char letter = wait && line.hasValue('R') && !line.has('S') ? 'R' : 'S';
    if (!line.hasValue(letter) || line.value(letter) < 0)
        return std::nullopt;
    const double target = std::round(line.value(letter));
    if (target > limit) {
        throw GCodeError(GCodeError::TemperatureLimit,
                         where() + numberText(target) + " °C is above the machine's limit of " +
                             std::to_string(limit) + " °C for " + what);
    }
    return static_cast<int>(target);
}

bool GCodeProgram::Private::toolTemperature(MachineCommand& command, bool wait)
{
    int tool = motion.tool();
    if (line.has('T')) {
        const double named = line.value('T');
        if (!line.hasValue('T') || named < 0 || !isWhole(named))
            return skipUnreadable();
        tool = static_cast<int>(named);
    }
    checkTool(tool);
    const auto target = celsius(wait, machine.toolhead.maxCelsius, "an extruder");
    if (!target)
        return skipUnreadable();
    targets[static_cast<std::size_t>(tool)] = *target;
    command.action = ToolTemperatureCommand{tool, *target, wait};
    return true;
}

bool GCodeProgram::Private::platformTemperature(MachineCommand& command, bool wait)
{
    // Slicers write these for every machine, also where nothing heats.
    if (!machine.hasHeatedPlatform)
        return leaveOut();
    const auto target = celsius(wait, machine.platform.maxCelsius, "the platform");
    if (!target)
        return skipUnreadable();
    command.action = PlatformTemperatureCommand{*target, wait};
    return true;
}

bool GCodeProgram::Private::fan(MachineCommand& command, bool on)
{
    // Other fans than the one at the tool.
    if (line.has('P') && line.value('P') != 0)
        return leaveOut();
    if (line.has('S') && (!line.hasValue('S') || line.value('S') < 0))
        return skipUnreadable();
    command.action = FanCommand{motion.tool(), on && !(line.has('S') && line.value('S') == 0)};
    return true;
}

bool GCodeProgram::Private::motors(MachineCommand& command, bool enable)
{
    // "M84 S60" sets how long idle motors stay on.
    if (line.has('S'))
        return leaveOut();
    MotorsCommand action;
    action.enable = enable;
    action.motors = {line.has('X'), line.has('Y'), line.has('Z'), line.has('E'),
                     line.has('E') && machine.extruders > 1};
    if (!line.has('X') && !line.has('Y') && !line.has('Z') && !line.has('E'))
        action.motors = {true, true, true, true, machine.extruders > 1};
    command.action = action;
    return true;
}

bool GCodeProgram::Private::progress(MachineCommand& command)
{
    if (!line.has('P'))
        return leaveOut();
    const double percent = line.value('P');
    if (!line.hasValue('P') || percent < 0 || percent > 100)
        return skipUnreadable();
    command.action = ProgressCommand{static_cast<int>(std::lround(percent))};
    return true;
}

} // namespace trovek::service
