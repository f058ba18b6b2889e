#pragma once

#include "machine.h"
#include "make_request.h"
#include "print_plan.h"
#include "running_job.h"

#include <QThreadPool>

#include <memory>

namespace trovek::service {

class BackgroundTask;
class SliceQueue;
class SliceTask;

/**
 * Reads a G-code file, or slices a model, then runs it on a machine, which cools down afterwards
 * however it ends.
 */
class PrintJob : public RunningJob
{
    Q_OBJECT

public:
    /** @param machine free, open and not owned; neither are `pool` and `slices` */
    PrintJob(Machine& machine, MakeRequest request, QThreadPool& pool, SliceQueue& slices,
             QObject* parent = nullptr);
    ~PrintJob() override;

    void start() override;
    void cancel() override;
    void abort(const QString& reason) override;

private:
    void slice();
    void takeSlice(const QString& slicingError);
    void plan();
    void takePlan(const QString& planningError);
    void print();
    void update();
    void end(JobConclusion conclusion, const QString& failure = QString());

    Machine& m_machine;
    MakeRequest m_request;
    QThreadPool& m_pool;
    SliceQueue& m_slices;
    /** Written by the task, read after it has ended. */
    PrintPlan m_result;
    std::shared_ptr<const MotionPlan> m_plan;
    std::unique_ptr<Machine::Lease> m_lease;
    std::unique_ptr<SliceTask> m_slicing;
    std::unique_ptr<BackgroundTask> m_planning;
};

} // namespace trovek::service
