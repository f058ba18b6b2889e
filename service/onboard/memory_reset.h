#pragma once

#include "machine.h"
#include "onboard/onboard_memory.h"
#include "running_job.h"

#include <memory>

namespace trovek::service {

/**
 * A factory reset of an onboard memory. It occupies the machine as a job does, but clients see no
 * job: whoever asked for it waits for the answer.
 */
class MemoryReset : public RunningJob
{
    Q_OBJECT

public:
    /** @param machine free, open and not owned */
    MemoryReset(Machine& machine, const OnboardMemory& memory);
    ~MemoryReset() override;

    /** @throws std::runtime_error when there can be no backup; then the machine is as before */
    void start() override;
    /** Does nothing: a memory that is half erased is of no use. */
    void cancel() override;
    void abort(const QString& reason) override;

private:
    void finish(bool kept);
    void end(JobConclusion conclusion, const QString& failure = QString());

    Machine& m_machine;
    OnboardMemory m_memory;
    std::unique_ptr<Machine::Lease> m_lease;
};

} // namespace trovek::service
