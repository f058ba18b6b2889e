#include "plan_runner.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace trovek::service {

namespace {

/** A step that repeats against an end stop must take some time, or it would repeat for ever. */
constexpr double kShortestStepSeconds = 0.05;

} // namespace

MachineBody::MachineBody(const MachineDefinition& definition)
    : tools(static_cast<std::size_t>(definition.extruders), Heater(definition.toolhead))
    , platform(definition.platform)
    , position(definition.homePosition)
    , limits(definition.buildVolume)
    , home(definition.homePosition)
    , homingFeed(definition.homingFeed)
    , minimumExtrusionCelsius(definition.minimumExtrusionCelsius)
{
    // End stops may stand outside the volume that can be printed in.
    for (std::size_t axis = 0; axis < limits.size(); ++axis) {
        limits[axis].min = std::min(limits[axis].min, home[axis]);
        limits[axis].max = std::max(limits[axis].max, home[axis]);
    }
}

void MachineBody::heat(double seconds)
{
    for (Heater& tool : tools)
        tool.advance(seconds);
    platform.advance(seconds);
}

bool MachineBody::isAtRest() const
{
    return platform.isAtRest() &&
           std::all_of(tools.begin(), tools.end(), [](const Heater& h) { return h.isAtRest(); });
}

PlanRunner::PlanRunner(std::shared_ptr<const MotionPlan> plan)
    : m_plan(std::move(plan))
{}

bool PlanRunner::isFinished() const
{
    return m_index >= m_plan->steps.size();
}

const PlanStep* PlanRunner::current() const
{
    return isFinished() ? nullptr : &m_plan->steps[m_index];
}

const Heater* PlanRunner::awaited(const MachineBody& body) const
{
    const PlanStep* step = current();
    if (step == nullptr)
        return nullptr;
    if (step->kind == PlanStep::WaitForPlatform)
        return &body.platform;
    if (step->kind == PlanStep::WaitForTool && step->tool < body.tools.size())
        return &body.tools[step->tool];
    return nullptr;
}

bool PlanRunner::isHeating(const MachineBody& body) const
{
    const Heater* heater = awaited(body);
    return heater != nullptr && !heater->isWarm();
}

double PlanRunner::waitSeconds(const MachineBody& body) const
{
    const Heater* heater = awaited(body);
    return heater != nullptr ? heater->secondsUntilWarm() : 0;
}

void PlanRunner::begin(MachineBody& body, const PlanStep& step)
{
    m_begun = true;
    m_stepDone = 0;
    m_stepSeconds = std::max(0.0, static_cast<double>(step.seconds));
    m_from = body.position;
    m_to = body.position;
    switch (step.kind) {
    case PlanStep::Move:
        if (step.extrudes) {
            const double celsius = body.tools.at(step.tool).celsius();
            if (celsius < body.minimumExtrusionCelsius) {
                throw std::runtime_error("Cold extrusion refused: the extruder has " +
                                         std::to_string(std::lround(celsius)) + " of at least " +
                                         std::to_string(body.minimumExtrusionCelsius) +
                                         " degrees Celsius");
            }
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double goal = step.position[axis] + (step.relative ? m_from[axis] : 0.0);
            m_to[axis] = std::clamp(goal, body.limits[axis].min, body.limits[axis].max);
        }
        if (step.relative && !step.extrudes)
            m_stepSeconds = std::max(kShortestStepSeconds, m_stepSeconds * reachedShare(step));
        break;
    case PlanStep::Home:
        // The plan's own figure is a guess made without knowing where the toolhead stands.
        m_stepSeconds = 0;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            if ((step.axes & (1U << axis)) == 0)
                continue;
            m_to[axis] = body.home[axis];
            const double seconds = std::abs(m_to[axis] - m_from[axis]) / body.homingFeed[axis];
            m_stepSeconds = std::max(m_stepSeconds, seconds);
        }
        break;
    case PlanStep::SetToolTarget:
        body.tools.at(step.tool).setTarget(static_cast<int>(std::lround(step.celsius)));
        break;
    case PlanStep::SetPlatformTarget:
        body.platform.setTarget(static_cast<int>(std::lround(step.celsius)));
        break;
    case PlanStep::Dwell:
    case PlanStep::WaitForTool:
    case PlanStep::WaitForPlatform:
        break;
    }
}

/** How much of a relative step is left when it ends at the axis' limit. */
double PlanRunner::reachedShare(const PlanStep& step) const
{
    double asked = 0;
    double reached = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        asked += std::abs(static_cast<double>(step.position[axis]));
        reached += std::abs(m_to[axis] - m_from[axis]);
    }
    return asked > 0 ? reached / asked : 0;
}

void PlanRunner::next()
{
    m_doneSeconds += static_cast<double>(m_plan->steps[m_index].seconds);
    m_begun = false;
    ++m_index;
    if (m_plan->repeats && isFinished() && m_plan->seconds > 0) {
        m_index = 0;
        m_doneSeconds = 0;
    }
}

void PlanRunner::advance(MachineBody& body, double seconds)
{
    double left = seconds;
    while (const PlanStep* step = current()) {
        if (!m_begun)
            begin(body, *step);
        if (const Heater* heater = awaited(body)) {
            const double wait = std::min(left, heater->secondsUntilWarm());
            body.heat(wait);
            left -= wait;
            if (!heater->isWarm() && left <= 0)
                return;
            next();
            continue;
        }
        const double part = std::min(left, m_stepSeconds - m_stepDone);
        body.heat(part);
        left -= part;
        m_stepDone += part;
        const bool done = m_stepDone >= m_stepSeconds;
        const double fraction = done ? 1.0 : m_stepDone / m_stepSeconds;
        for (std::size_t axis = 0; axis < 3; ++axis)
            body.position[axis] = m_from[axis] + (m_to[axis] - m_from[axis]) * fraction;
        if (!done)
            return;
        next();
    }
    body.heat(left);
}

} // namespace trovek::service
