#include "machine_file_writer.h"

#include "machine_definition.h"
#include "machine_file_bytes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace trovek::service {

namespace {

enum CommandCode : std::uint8_t {
    HomeToMinimum = 131,
    HomeToMaximum = 132,
    Delay = 133,
    ChangeTool = 134,
    WaitForTool = 135,
    ToolAction = 136,
    SwitchMotors = 137,
    SetPosition = 140,
    WaitForPlatform = 141,
    MoveInTime = 142,
    RecallHome = 144,
    ShowMessage = 149,
    ShowProgress = 150,
    BeginBuild = 153,
    EndBuild = 154,
    MoveAtSpeed = 155,
    StreamVersion = 157,
};

enum ToolActionCode : std::uint8_t {
    SetToolTarget = 3,
    SwitchFan = 12,
    SetPlatformTarget = 31,
};

constexpr std::size_t kFlushBytes = 64 * 1024;
constexpr std::size_t kLongestName = 30;
/** Four lines of twenty characters. */
constexpr std::size_t kLongestMessage = 80;
constexpr std::uint8_t kLastMessageOfGroup = 2;
constexpr std::uint8_t kEnableMotors = 0x80;
constexpr std::uint16_t kPollMs = 100;
constexpr std::uint16_t kHeatTimeoutSeconds = 1800;
constexpr double kSpeedUnitsPerMm = 64;

template <typename Integer>
Integer clampedTo(double value)
{
    return static_cast<Integer>(
        std::clamp(std::round(value), static_cast<double>(std::numeric_limits<Integer>::min()),
                   static_cast<double>(std::numeric_limits<Integer>::max())));
}

} // namespace

std::optional<MachineFileFormat> machineFileFormatFromName(const std::string& name)
{
    if (name == "x3g")
        return MachineFileFormat::X3g;
    if (name == "s3g")
        return MachineFileFormat::S3g;
    return std::nullopt;
}

class MachineFileWriter::Private
{
public:
    Private(const MachineDefinition& theMachine, MachineFileFormat theFormat,
            const std::string& theBuildName, double theSeconds, ByteSink theSink)
        : machine(theMachine)
        , format(theFormat)
        , buildName(displayText(theBuildName, kLongestName))
        , totalSeconds(theSeconds)
        , sink(std::move(theSink))
        , clock(theMachine)
    {}

    void operator()(const MoveCommand& move);
    void operator()(const SetPositionCommand& set);
    void operator()(const HomeCommand& home);
    void operator()(const ToolChangeCommand& change);
    void operator()(const ToolTemperatureCommand& heat);
    void operator()(const PlatformTemperatureCommand& heat);
    void operator()(const FanCommand& fan);
    void operator()(const DwellCommand& dwell);
    void operator()(const MotorsCommand& motors);
    void operator()(const MessageCommand& message);
    void operator()(const ProgressCommand& progress);

    MachineFileBytes& begin(CommandCode code);
    void appendSteps();
    void homeToEndStop(std::array<bool, 3> axes);
    void setCounters(const MachinePosition& target);
    void showProgressUpTo(int percent);
    void flush();

    const MachineDefinition& machine;
    const MachineFileFormat format;
    const std::string buildName;
    const double totalSeconds;
    const ByteSink sink;

    MachineFileBytes buffer;
    ProgramClock clock;
    MachinePosition position{};
    /** The machine's counters. */
    std::array<std::int32_t, kMotorCount> steps{};
    /**
     * How far the counters are off the position's steps since the last set position: less than a
     * step, carried along so that a thousand resets of the extruder do not add up.
     */
    std::array<double, kMotorCount> offset{};
    int percent = -1;
    std::uint64_t commands = 0;
    std::uint64_t flushedBytes = 0;
};

MachineFileWriter::MachineFileWriter(const MachineDefinition& machine, MachineFileFormat format,
                                     const std::string& buildName, double seconds, ByteSink sink)
    : d(std::make_unique<Private>(machine, format, buildName, seconds, std::move(sink)))
{}

MachineFileWriter::~MachineFileWriter() = default;

void MachineFileWriter::begin()
{
    if (d->format == MachineFileFormat::X3g) {
        d->begin(StreamVersion).u8(1).u8(0).zeros(5).u16(d->machine.x3gMachineId).zeros(11);
    }
    d->begin(BeginBuild).u32(0).text(d->buildName);
    d->showProgressUpTo(0);
}

void MachineFileWriter::write(const MachineCommand& command)
{
    std::visit(*d, command.action);
    d->clock.advance(command);
    if (d->totalSeconds > 0) {
        const double share = std::min(d->clock.seconds() / d->totalSeconds, 1.0);
        d->showProgressUpTo(static_cast<int>(share * 100));
    }
    if (d->buffer.size() >= kFlushBytes)
        d->flush();
}

void MachineFileWriter::finish()
{
    d->showProgressUpTo(100);
    d->begin(EndBuild).u8(0);
    d->flush();
}

std::uint64_t MachineFileWriter::commandsWritten() const
{
    return d->commands;
}

std::uint64_t MachineFileWriter::bytesWritten() const
{
    return d->flushedBytes + d->buffer.size();
}

MachineFileBytes& MachineFileWriter::Private::begin(CommandCode code)
{
    ++commands;
    return buffer.u8(code);
}

void MachineFileWriter::Private::flush()
{
    sink(buffer.data(), buffer.size());
    flushedBytes += buffer.size();
    buffer.clear();
}

void MachineFileWriter::Private::appendSteps()
{
    for (std::int32_t count : steps)
        buffer.i32(count);
}

void MachineFileWriter::Private::showProgressUpTo(int target)
{
    while (percent < target)
        begin(ShowProgress).u8(static_cast<std::uint8_t>(++percent)).u8(0);
}

void MachineFileWriter::Private::operator()(const MoveCommand& move)
{
    position = move.target;
    double mostSteps = 0;
    for (std::size_t motor = 0; motor < steps.size(); ++motor) {
        const auto target =
            clampedTo<std::int32_t>(position[motor] * machine.stepsPerMm[motor] + offset[motor]);
        mostSteps = std::max(mostSteps, std::abs(double(target) - double(steps[motor])));
        steps[motor] = target;
    }
    // Less than half a step: the next move makes up for it.
    if (mostSteps == 0)
        return;
    if (format == MachineFileFormat::S3g) {
        begin(MoveInTime);
        appendSteps();
        buffer.u32(clampedTo<std::uint32_t>(std::max(move.seconds * 1e6, 1.0))).u8(0);
        return;
    }
    begin(MoveAtSpeed);
    appendSteps();
    buffer.u32(clampedTo<std::uint32_t>(std::max(mostSteps / move.seconds, 1.0)))
        .u8(0)
        .f32(static_cast<float>(move.distance))
        .u16(clampedTo<std::uint16_t>(std::max(move.feed * kSpeedUnitsPerMm, 1.0)));
}

void MachineFileWriter::Private::setCounters(const MachinePosition& target)
{
    for (std::size_t motor = 0; motor < steps.size(); ++motor) {
        if (target[motor] == position[motor])
            continue;
        const double perMm = machine.stepsPerMm[motor];
        const double rounding = position[motor] * perMm + offset[motor] - steps[motor];
        steps[motor] = clampedTo<std::int32_t>(target[motor] * perMm - rounding);
        offset[motor] = steps[motor] + rounding - target[motor] * perMm;
    }
    position = target;
}

void MachineFileWriter::Private::operator()(const SetPositionCommand& set)
{
    setCounters(set.position);
    begin(SetPosition);
    appendSteps();
}

void MachineFileWriter::Private::homeToEndStop(std::array<bool, 3> axes)
{
    for (bool maximum : {false, true}) {
        int bits = 0;
        double microsecondsPerStep = 0;
        double seconds = 0;
        for (std::size_t axis = 0; axis < axes.size(); ++axis) {
            if (!axes[axis] || machine.homesToMaximum[axis] != maximum)
                continue;
            bits |= 1 << axis;
            const double feed = machine.homingFeed[axis];
            // One pace for all of them: that of the slowest.
            microsecondsPerStep =
                std::max(microsecondsPerStep, 1e6 / (feed * machine.stepsPerMm[axis]));
            seconds = std::max(seconds, machine.buildVolume[axis].length() / feed);
        }
        if (bits == 0)
            continue;
        begin(maximum ? HomeToMaximum : HomeToMinimum)
            .u8(static_cast<std::uint8_t>(bits))
            .u32(clampedTo<std::uint32_t>(std::max(microsecondsPerStep, 1.0)))
            .u16(clampedTo<std::uint16_t>(2 * seconds + 10));
    }
}

void MachineFileWriter::Private::operator()(const HomeCommand& home)
{
    // A platform that sinks to its end stop goes first, one that rises towards the nozzle last.
    const std::array<bool, 3> height = {false, false, home.axes[2]};
    if (machine.homesToMaximum[2])
        homeToEndStop(height);
    homeToEndStop({home.axes[0], home.axes[1], false});
    if (!machine.homesToMaximum[2])
        homeToEndStop(height);

    int bits = 0;
    for (std::size_t axis = 0; axis < home.axes.size(); ++axis) {
        if (!home.axes[axis])
            continue;
        bits |= 1 << axis;
        position[axis] = home.position[axis];
        offset[axis] = 0;
        steps[axis] = clampedTo<std::int32_t>(position[axis] * machine.stepsPerMm[axis]);
    }
    begin(SetPosition);
    appendSteps();
    // A machine that was calibrated knows its end stops' places better than its definition does.
    begin(RecallHome).u8(static_cast<std::uint8_t>(bits));
}

void MachineFileWriter::Private::operator()(const ToolChangeCommand& change)
{
    begin(ChangeTool).u8(static_cast<std::uint8_t>(change.tool));
}

void MachineFileWriter::Private::operator()(const ToolTemperatureCommand& heat)
{
    const auto tool = static_cast<std::uint8_t>(heat.tool);
    begin(ToolAction)
        .u8(tool)
        .u8(SetToolTarget)
        .u8(2)
        .u16(static_cast<std::uint16_t>(heat.celsius));
    if (heat.wait && heat.celsius > 0)
        begin(WaitForTool).u8(tool).u16(kPollMs).u16(kHeatTimeoutSeconds);
}

void MachineFileWriter::Private::operator()(const PlatformTemperatureCommand& heat)
{
    begin(ToolAction)
        .u8(0)
        .u8(SetPlatformTarget)
        .u8(2)
        .u16(static_cast<std::uint16_t>(heat.celsius));
    if (heat.wait && heat.celsius > 0)
        begin(WaitForPlatform).u8(0).u16(kPollMs).u16(kHeatTimeoutSeconds);
}

void MachineFileWriter::Private::operator()(const FanCommand& fan)
{
    begin(ToolAction)
        .u8(static_cast<std::uint8_t>(fan.tool))
        .u8(SwitchFan)
        .u8(1)
        .u8(fan.on ? 1 : 0);
}

void MachineFileWriter::Private::operator()(const DwellCommand& dwell)
{
    begin(Delay).u32(dwell.milliseconds);
}

void MachineFileWriter::Private::operator()(const MotorsCommand& motors)
{
    int bits = motors.enable ? kEnableMotors : 0;
    for (std::size_t motor = 0; motor < motors.motors.size(); ++motor)
        bits |= motors.motors[motor] ? 1 << motor : 0;
    begin(SwitchMotors).u8(static_cast<std::uint8_t>(bits));
}

void MachineFileWriter::Private::operator()(const MessageCommand& message)
{
    begin(ShowMessage)
        .u8(kLastMessageOfGroup)
        .u8(0)
        .u8(0)
        .u8(0)
        .text(displayText(message.text, kLongestMessage));
}

void MachineFileWriter::Private::operator()(const ProgressCommand&)
{
    // The file's progress is counted here, by time, over start and end code, too.
}

MachineFileResult writeMachineFile(const MachineDefinition& machine, MachineFileFormat format,
                                   const std::string& buildName,
                                   const std::function<std::vector<GCodeSection>()>& open,
                                   const ByteSink& sink, const GCodeProgress& progress)
{
    std::uint64_t checkedBytes = 0;
    MachineFileResult result;
    result.estimate =
        estimateGCode(machine, open(), GCodeProgram::CountCold, [&](std::uint64_t bytes) {
            checkedBytes = bytes;
            return !progress || progress(bytes);
        });

    GCodeProgram program(machine, open());
    MachineFileWriter writer(machine, format, buildName, result.estimate.seconds, sink);
    writer.begin();
    MachineCommand command;
    std::uint64_t commands = 0;
    while (program.next(command)) {
        writer.write(command);
        if (++commands % kCommandsPerProgress == 0 && progress &&
            !progress(checkedBytes + program.bytesRead()))
            throw GCodeCanceled();
    }
    writer.finish();
    result.commands = writer.commandsWritten();
    result.bytes = writer.bytesWritten();
    return result;
}

} // namespace trovek::service
