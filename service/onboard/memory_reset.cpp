#include "onboard/memory_reset.h"

#include <trovek/wire.h>

namespace trovek::service {

namespace {

trovek::Job::Data describeJob(const Machine& machine)
{
    trovek::Job::Data data;
    data.name = "Factory reset";
    data.kind = wire::method::kResetEepromCompletely;
    data.machine = MachineName(machine.definition().key);
    return data;
}

} // namespace

MemoryReset::MemoryReset(Machine& machine, const OnboardMemory& memory)
    : RunningJob(describeJob(machine))
    , m_machine(machine)
    , m_memory(memory)
{}

MemoryReset::~MemoryReset() = default;

void MemoryReset::start()
{
    connect(&m_machine.driver(), &MachineDriver::memoryReset, this, &MemoryReset::finish);
    m_memory.startReset();
    m_lease = std::make_unique<Machine::Lease>(m_machine, *this);
}

void MemoryReset::finish(bool kept)
{
    try {
        if (!kept)
            throw std::runtime_error("The machine did not take its factory settings");
        m_memory.checkReset();
        end(JobEnded);
    } catch (const std::exception& error) {
        end(JobFailed, QString::fromUtf8(error.what()));
    }
}

void MemoryReset::cancel() {}

void MemoryReset::abort(const QString& reason)
{
    end(JobFailed, reason);
}

void MemoryReset::end(JobConclusion conclusion, const QString& failure)
{
    if (isConcluded())
        return;
    disconnect(&m_machine.driver(), nullptr, this, nullptr);
    m_lease.reset();
    conclude(conclusion, failure);
}

} // namespace trovek::service
