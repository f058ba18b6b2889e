#include "motion_job.h"

#include <trovek/text.h>

#include <QTimer>

#include <algorithm>
#include <cmath>

namespace trovek::service {

namespace {

constexpr double kJogExtruderMmPerSecond = 3.0;
constexpr double kProbeHeightMm = 5.0;
constexpr float kProbeSeconds = 2.0F;

trovek::Job::Data describeJob(const Machine& machine, const char* kind, const QString& name)
{
    trovek::Job::Data data;
    data.name = toStdString(name);
    data.kind = kind;
    data.machine = MachineName(machine.definition().key);
    return data;
}

/** Bounded, so that sums of plans stay finite. */
float secondsFor(double millimetres, double mmPerSecond)
{
    return static_cast<float>(std::max(0.05, std::abs(millimetres) / std::max(mmPerSecond, 0.1)));
}

void append(MotionPlan& plan, const PlanStep& step)
{
    plan.steps.push_back(step);
    plan.seconds += static_cast<double>(step.seconds);
}

} // namespace

MotionJob::MotionJob(Machine& machine, const char* kind, const QString& name, MotionPlan plan,
                     int limitMs, QObject* parent)
    : RunningJob(describeJob(machine, kind, name), parent)
    , m_machine(machine)
    , m_name(name)
    , m_plan(std::make_shared<const MotionPlan>(std::move(plan)))
    , m_limitMs(limitMs)
{}

MotionJob::~MotionJob() = default;

void MotionJob::start()
{
    m_lease = std::make_unique<Machine::Lease>(m_machine, *this);
    setStage(m_name);
    MachineDriver& driver = m_machine.driver();
    connect(&driver, &MachineDriver::changed, this, &MotionJob::update);
    connect(&driver, &MachineDriver::finished, this, [this] { end(JobEnded); });
    connect(&driver, &MachineDriver::failed, this,
            [this](const QString& reason) { end(JobFailed, reason); });
    if (m_limitMs > 0)
        QTimer::singleShot(m_limitMs, this, [this] { end(JobEnded); });
    driver.run(m_plan);
}

void MotionJob::update()
{
    if (!m_plan->repeats && m_plan->seconds > 0) {
        const double share = m_machine.driver().status().doneSeconds / m_plan->seconds;
        setProgress(std::min(99, static_cast<int>(share * 100)));
    }
}

void MotionJob::cancel()
{
    end(JobCanceled);
}

void MotionJob::abort(const QString& reason)
{
    end(JobFailed, reason);
}

void MotionJob::end(JobConclusion conclusion, const QString& failure)
{
    if (isConcluded())
        return;
    disconnect(&m_machine.driver(), nullptr, this, nullptr);
    m_machine.driver().stop();
    m_lease.reset();
    conclude(conclusion, failure);
}

MotionPlan jogPlan(const MachineDefinition& machine, Printer::Axis axis, int distanceMm)
{
    MotionPlan plan;
    plan.repeats = true;
    PlanStep step;
    step.kind = PlanStep::Move;
    step.relative = true;
    if (axis == Printer::RightExtruderAxis || axis == Printer::LeftExtruderAxis) {
        step.extrudes = true;
        step.tool = axis == Printer::RightExtruderAxis ? 0 : 1;
        step.seconds = secondsFor(distanceMm, kJogExtruderMmPerSecond);
    } else {
        const auto index = static_cast<std::size_t>(axis - Printer::XAxis);
        step.position[index] = static_cast<float>(distanceMm);
        step.seconds = secondsFor(distanceMm, machine.homingFeed[index]);
    }
    append(plan, step);
    return plan;
}

MotionPlan homingPlan(const MachineDefinition& machine)
{
    PlanStep step;
    step.kind = PlanStep::Home;
    step.axes = 1 | 2 | 4;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        step.seconds = std::max(
            step.seconds, secondsFor(machine.buildVolume[axis].length(), machine.homingFeed[axis]));
    }
    MotionPlan plan;
    append(plan, step);
    return plan;
}

MotionPlan calibrationPlan(const MachineDefinition& machine)
{
    MotionPlan plan = homingPlan(machine);
    const AxisRange& x = machine.buildVolume[MotorX];
    const AxisRange& y = machine.buildVolume[MotorY];
    const auto probe = [&](double acrossX, double acrossY) {
        PlanStep step;
        step.kind = PlanStep::Move;
        step.seconds = kProbeSeconds;
        step.position = {static_cast<float>(x.min + x.length() * acrossX),
                         static_cast<float>(y.min + y.length() * acrossY),
                         static_cast<float>(kProbeHeightMm)};
        append(plan, step);
        PlanStep touch;
        touch.seconds = 1.0F;
        append(plan, touch);
    };
    probe(0.5, 0.5);
    probe(0.1, 0.1);
    probe(0.9, 0.1);
    probe(0.5, 0.9);
    return plan;
}

} // namespace trovek::service
