#include "print_plan.h"

#include "gcode/machine_definition.h"

#include <stdexcept>
#include <type_traits>

namespace trovek::service {

namespace {

constexpr float kPieceSeconds = 0.25F;
constexpr std::uint64_t kCommandsBetweenProgress = 4096;

/** Gathers commands to steps, and follows where the toolhead really is while G-code shifts its
 * counters. */
class Planner
{
public:
    explicit Planner(const MachineDefinition& machine)
        : m_machine(machine)
        , m_place(machine.homePosition)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
            m_shift[axis] = m_place[axis];
    }

    void add(const MachineCommand& command)
    {
        std::visit([this](const auto& action) { take(action); }, command.action);
    }

    MotionPlan finish()
    {
        flush();
        return std::move(m_plan);
    }

private:
    void take(const MoveCommand& move)
    {
        if (m_piece.seconds > 0 && m_piece.extrudes != move.extruding)
            flush();
        m_piece.kind = PlanStep::Move;
        m_piece.tool = static_cast<std::uint8_t>(m_tool);
        m_piece.extrudes = move.extruding;
        m_piece.seconds += static_cast<float>(move.seconds);
        for (std::size_t axis = 0; axis < 3; ++axis)
            m_place[axis] = move.target[axis] + m_shift[axis];
        if (m_piece.seconds >= kPieceSeconds)
            flush();
    }

    void take(const SetPositionCommand& set)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
            m_shift[axis] = m_place[axis] - set.position[axis];
    }

    void take(const HomeCommand& home)
    {
        flush();
        PlanStep step;
        step.kind = PlanStep::Home;
        step.seconds = static_cast<float>(home.seconds);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            if (home.axes[axis]) {
                step.axes = static_cast<std::uint8_t>(step.axes | (1U << axis));
                m_place[axis] = m_machine.homePosition[axis];
            }
            m_shift[axis] = m_place[axis] - home.position[axis];
        }
        append(step);
    }

    void take(const ToolChangeCommand& change)
    {
        flush();
        m_tool = change.tool;
    }

    void take(const ToolTemperatureCommand& temperature)
    {
        setTarget(PlanStep::SetToolTarget, temperature.tool, temperature.celsius);
        if (temperature.wait)
            wait(PlanStep::WaitForTool, temperature.tool);
    }

    void take(const PlatformTemperatureCommand& temperature)
    {
        setTarget(PlanStep::SetPlatformTarget, 0, temperature.celsius);
        if (temperature.wait)
            wait(PlanStep::WaitForPlatform, 0);
    }

    void take(const DwellCommand& dwell)
    {
        flush();
        PlanStep step;
        step.seconds = static_cast<float>(dwell.milliseconds) / 1000.0F;
        append(step);
    }

    // What a virtual machine has no part for.
    void take(const FanCommand&) {}
    void take(const MotorsCommand&) {}
    void take(const MessageCommand&) {}
    void take(const ProgressCommand&) {}

    void setTarget(PlanStep::Kind kind, int tool, int celsius)
    {
        flush();
        PlanStep step;
        step.kind = kind;
        step.tool = static_cast<std::uint8_t>(tool);
        step.celsius = static_cast<float>(celsius);
        append(step);
    }

    void wait(PlanStep::Kind kind, int tool)
    {
        PlanStep step;
        step.kind = kind;
        step.tool = static_cast<std::uint8_t>(tool);
        append(step);
    }

    void flush()
    {
        if (m_piece.seconds <= 0)
            return;
        for (std::size_t axis = 0; axis < 3; ++axis)
            m_piece.position[axis] = static_cast<float>(m_place[axis]);
        append(m_piece);
        m_piece = PlanStep();
    }

    void append(const PlanStep& step)
    {
        m_plan.seconds += static_cast<double>(step.seconds);
        m_plan.steps.push_back(step);
    }

    const MachineDefinition& m_machine;
    MotionPlan m_plan;
    PlanStep m_piece;
    int m_tool = 0;
    /** Millimetres of the machine, not of the G-code's counters. */
    std::array<double, 3> m_place;
    /** Place less counter. */
    std::array<double, 3> m_shift = {0, 0, 0};
};

} // namespace

PrintPlan planPrint(const MachineDefinition& machine, std::vector<GCodeSection> sections,
                    const GCodeProgress& progress)
{
    std::size_t userSection = 0;
    for (std::size_t i = 0; i < sections.size(); ++i) {
        if (sections[i].name.empty())
            userSection = i;
    }
    GCodeProgram program(machine, std::move(sections), GCodeProgram::RefuseCold);
    Planner planner(machine);
    MachineCommand command;
    std::uint64_t commands = 0;
    bool hasOwnCommands = false;
    while (program.next(command)) {
        hasOwnCommands = hasOwnCommands || command.section == userSection;
        planner.add(command);
        if (++commands % kCommandsBetweenProgress == 0 && !progress(program.bytesRead()))
            throw GCodeCanceled();
    }
    if (!hasOwnCommands)
        throw std::runtime_error("The file holds no G-code");
    return {planner.finish(), program.remarks()};
}

} // namespace trovek::service
