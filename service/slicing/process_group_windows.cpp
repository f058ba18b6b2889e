#include "slicing/process_group.h"

#include <QProcess>

#include <windows.h>

namespace trovek::service {

class ProcessGroup::Private
{
public:
    bool lowPriority = false;
    HANDLE job = nullptr;
};

ProcessGroup::ProcessGroup(bool lowPriority)
    : d(new Private)
{
    d->lowPriority = lowPriority;
    d->job = ::CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    ::SetInformationJobObject(d->job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
}

ProcessGroup::~ProcessGroup()
{
    kill();
    ::CloseHandle(d->job);
}

void ProcessGroup::prepare(QProcess& process) const
{
    const bool lowPriority = d->lowPriority;
    process.setCreateProcessArgumentsModifier(
        [lowPriority](QProcess::CreateProcessArguments* arguments) {
            arguments->flags |= CREATE_NO_WINDOW;
            if (lowPriority)
                arguments->flags |= IDLE_PRIORITY_CLASS;
        });
}

void ProcessGroup::enter() const {}

void ProcessGroup::adopt(qint64 processId)
{
    const HANDLE process =
        ::OpenProcess(PROCESS_SET_QUOTA | PROCESS_TERMINATE, FALSE, static_cast<DWORD>(processId));
    if (process == nullptr)
        return;
    ::AssignProcessToJobObject(d->job, process);
    ::CloseHandle(process);
}

void ProcessGroup::terminate()
{
    kill();
}

void ProcessGroup::kill()
{
    ::TerminateJobObject(d->job, 1);
}

} // namespace trovek::service
