#pragma once

#include "machine.h"
#include "make_request.h"
#include "print_plan.h"
#include "running_job.h"

#include <QThreadPool>

#include <memory>

namespace trovek::service {

class BackgroundTask;

/** Reads a G-code file, then runs it on a machine, which cools down afterwards however it ends. */
class PrintJob : public RunningJob
{
    Q_OBJECT

public:
    /** @param machine free, open and not owned; `pool` is not owned either */
    PrintJob(Machine& machine, MakeRequest request, QThreadPool& pool, QObject* parent = nullptr);
    ~PrintJob() override;

    void start() override;
    void cancel() override;
    void abort(const QString& reason) override;

private:
    void takePlan(const QString& planningError);
    void print();
    void update();
    void end(JobConclusion conclusion, const QString& failure = QString());

    Machine& m_machine;
    const MakeRequest m_request;
    QThreadPool& m_pool;
    /** Written by the task, read after it has ended. */
    PrintPlan m_result;
    std::shared_ptr<const MotionPlan> m_plan;
    std::unique_ptr<Machine::Lease> m_lease;
    std::unique_ptr<BackgroundTask> m_planning;
};

} // namespace trovek::service
