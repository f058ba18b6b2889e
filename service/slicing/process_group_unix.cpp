#include "slicing/process_group.h"

#include <csignal>
#include <cstddef>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#include <sys/syscall.h>
#endif

namespace trovek::service {

class ProcessGroup::Private
{
public:
    bool lowPriority = false;
    pid_t parent = 0;
    pid_t group = 0;
};

namespace {

constexpr int kLowPriority = 15;

#ifdef __linux__
constexpr unsigned kFirstOwnDescriptor = 3;
constexpr unsigned kCloseOnExec = 1U << 2;
constexpr int kThisProcess = 1;
constexpr int kIdleDiskClass = 3 << 13;

void yieldDisk()
{
    ::syscall(SYS_ioprio_set, kThisProcess, 0, kIdleDiskClass);
}

void write(const char* path, const char* text, std::size_t size)
{
    const int file = ::open(path, O_WRONLY | O_CLOEXEC);
    if (file < 0)
        return;
    const ssize_t written = ::write(file, text, size);
    static_cast<void>(written);
    ::close(file);
}

/** Where each session has its share of the processor, a nice value counts inside of it only. */
void yieldSessionsShare()
{
    write("/proc/self/autogroup", "15", 2);
}

/** A model can need more memory than there is: the slicer is the one to go then. */
void beFirstToGoWithoutMemory()
{
    write("/proc/self/oom_score_adj", "1000", 4);
}

void closeAllOnExec()
{
#ifdef SYS_close_range
    ::syscall(SYS_close_range, kFirstOwnDescriptor, ~0U, kCloseOnExec);
#endif
}
#endif

} // namespace

ProcessGroup::ProcessGroup(bool lowPriority)
    : d(new Private)
{
    d->lowPriority = lowPriority;
    d->parent = ::getpid();
}

ProcessGroup::~ProcessGroup()
{
    kill();
}

void ProcessGroup::prepare(QProcess&) const {}

// Between fork and exec: only what may be called while other threads hold locks.
void ProcessGroup::enter() const
{
    ::setsid();
    const struct rlimit none = {0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    if (d->lowPriority)
        ::setpriority(PRIO_PROCESS, 0, kLowPriority);
#ifdef __linux__
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // The parent may have gone before this was set.
    if (::getppid() != d->parent)
        ::_exit(1);
    if (d->lowPriority) {
        yieldSessionsShare();
        yieldDisk();
    }
    beFirstToGoWithoutMemory();
    closeAllOnExec();
#endif
}

void ProcessGroup::adopt(qint64 processId)
{
    d->group = static_cast<pid_t>(processId);
}

void ProcessGroup::terminate()
{
    if (d->group > 0)
        ::kill(-d->group, SIGTERM);
}

void ProcessGroup::kill()
{
    if (d->group <= 0)
        return;
    ::kill(-d->group, SIGKILL);
    // Its number may be another's soon.
    d->group = 0;
}

} // namespace trovek::service
