#include "gcode_estimate.h"

#include "machine_definition.h"

#include <algorithm>

namespace trovek::service {

namespace {

template <typename... Functions>
struct Overloaded : Functions...
{
    using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

} // namespace

ProgramClock::ProgramClock(const MachineDefinition& machine)
{
    for (HeaterState& tool : m_tools)
        tool = {&machine.toolhead, HeaterDefinition::kRoomCelsius, 0, 0};
    m_platform = {&machine.platform, HeaterDefinition::kRoomCelsius, 0, 0};
}

double ProgramClock::setTarget(HeaterState& heater, int celsius, bool wait)
{
    const HeaterDefinition& definition = *heater.definition;
    heater.celsius =
        definition.celsiusAfter(heater.celsius, heater.target, m_seconds - heater.since);
    heater.since = m_seconds;
    heater.target = celsius;
    return wait ? definition.secondsToHeat(heater.celsius, celsius) : 0;
}

double ProgramClock::advance(const MachineCommand& command)
{
    const double seconds =
        std::visit(Overloaded{
                       [](const MoveCommand& move) { return move.seconds; },
                       [](const HomeCommand& home) { return home.seconds; },
                       [](const DwellCommand& dwell) { return dwell.milliseconds / 1000.0; },
                       [this](const ToolTemperatureCommand& heat) {
                           return setTarget(m_tools[static_cast<std::size_t>(heat.tool)],
                                            heat.celsius, heat.wait);
                       },
                       [this](const PlatformTemperatureCommand& heat) {
                           return setTarget(m_platform, heat.celsius, heat.wait);
                       },
                       [](const auto&) { return 0.0; },
                   },
                   command.action);
    m_seconds += seconds;
    return seconds;
}

GCodeEstimate estimateGCode(const MachineDefinition& machine, std::vector<GCodeSection> sections,
                            GCodeProgram::ColdExtrusion coldExtrusion,
                            const GCodeProgress& progress)
{
    GCodeProgram program(machine, std::move(sections), coldExtrusion);
    ProgramClock clock(machine);
    GCodeEstimate estimate;
    MachinePosition position{};
    MachineCommand command;
    while (program.next(command)) {
        clock.advance(command);
        if (const auto* move = std::get_if<MoveCommand>(&command.action)) {
            for (std::size_t tool = 0; tool < 2; ++tool) {
                const double pushed = move->target[MotorA + tool] - position[MotorA + tool];
                estimate.filamentMm[tool] += pushed;
                estimate.usesTool[tool] = estimate.usesTool[tool] || pushed > 0;
            }
            position = move->target;
        } else if (const auto* set = std::get_if<SetPositionCommand>(&command.action)) {
            position = set->position;
        }
        if (++estimate.commands % kCommandsPerProgress == 0 && progress &&
            !progress(program.bytesRead()))
            throw GCodeCanceled();
    }
    estimate.seconds = clock.seconds();
    estimate.lines = program.linesRead();
    estimate.remarks = program.remarks();
    return estimate;
}

} // namespace trovek::service
