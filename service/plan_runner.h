#pragma once

#include "heater.h"
#include "motion_plan.h"

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace trovek::service {

/** The heaters and the place of the toolhead: what a plan acts on. */
struct MachineBody
{
    /** Cold, at the end stops. */
    explicit MachineBody(const MachineDefinition& definition);

    std::vector<Heater> tools;
    Heater platform;
    /** Millimetres. */
    std::array<double, 3> position = {0, 0, 0};
    /** Where motion ends by itself. */
    std::array<AxisRange, 3> limits;
    /** Where the end stops stand. */
    std::array<double, 3> home = {0, 0, 0};
    /** Millimetres a second. */
    std::array<double, 3> homingFeed = {0, 0, 0};
    /** Below it an extruder's motor is not turned. */
    int minimumExtrusionCelsius = 0;

    /** Lets time pass for the heaters. */
    void heat(double seconds);
    bool isAtRest() const;
};

/** Carries out a plan on a body, as far as the time reaches that it is given. */
class PlanRunner
{
public:
    explicit PlanRunner(std::shared_ptr<const MotionPlan> plan);

    /**
     * Lets time pass for the body and the plan.
     * @throws std::runtime_error what a user reads when the machine must refuse to go on
     */
    void advance(MachineBody& body, double seconds);

    bool isFinished() const;
    /** Of MotionPlan::seconds. */
    double doneSeconds() const { return m_doneSeconds; }
    bool isHeating(const MachineBody& body) const;
    double waitSeconds(const MachineBody& body) const;

private:
    const PlanStep* current() const;
    const Heater* awaited(const MachineBody& body) const;
    void begin(MachineBody& body, const PlanStep& step);
    double reachedShare(const PlanStep& step) const;
    void next();

    std::shared_ptr<const MotionPlan> m_plan;
    std::size_t m_index = 0;
    bool m_begun = false;
    double m_doneSeconds = 0;
    double m_stepSeconds = 0;
    double m_stepDone = 0;
    std::array<double, 3> m_from = {0, 0, 0};
    std::array<double, 3> m_to = {0, 0, 0};
};

} // namespace trovek::service
