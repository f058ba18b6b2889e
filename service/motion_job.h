#pragma once

#include "machine.h"
#include "motion_plan.h"
#include "running_job.h"

#include <memory>

namespace trovek::service {

/** Runs a plan that the service made itself: jogging, homing, a calibration. Heaters stay as they
 * are. */
class MotionJob : public RunningJob
{
    Q_OBJECT

public:
    /**
     * @param machine free, open and not owned
     * @param kind    the service's method
     * @param limitMs milliseconds after which it ends, also when the plan has not; 0 is without
     */
    MotionJob(Machine& machine, const char* kind, const QString& name, MotionPlan plan,
              int limitMs = 0, QObject* parent = nullptr);
    ~MotionJob() override;

    void start() override;
    void cancel() override;
    void abort(const QString& reason) override;

private:
    void update();
    void end(JobConclusion conclusion, const QString& failure = QString());

    Machine& m_machine;
    const QString m_name;
    const std::shared_ptr<const MotionPlan> m_plan;
    const int m_limitMs;
    std::unique_ptr<Machine::Lease> m_lease;
};

/**
 * One step of one axis, again and again.
 * @param distanceMm not 0; the sign is the direction
 */
MotionPlan jogPlan(const MachineDefinition& machine, Printer::Axis axis, int distanceMm);

/** All axes to their end stops. */
MotionPlan homingPlan(const MachineDefinition& machine);

/** Homes, then touches the platform in its middle and at its corners. */
MotionPlan calibrationPlan(const MachineDefinition& machine);

} // namespace trovek::service
