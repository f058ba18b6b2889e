#pragma once

#include <QtGlobal>

#include <memory>

class QProcess;

namespace trovek::service {

/**
 * A child process with everything that it starts, so that all of it can be ended together.
 *
 * The group's first process also ends when the thread that started it does, so nothing is left
 * when this program is killed.
 */
class ProcessGroup
{
public:
    /** @param lowPriority for the processor and the disk */
    explicit ProcessGroup(bool lowPriority);
    /** Kills what is left of it. */
    ~ProcessGroup();
    ProcessGroup(const ProcessGroup&) = delete;
    ProcessGroup& operator=(const ProcessGroup&) = delete;

    /** Before the process starts. */
    void prepare(QProcess& process) const;
    /** In the child, before it becomes the other program; the system does not need it everywhere.
     */
    void enter() const;
    /** Once it has started. */
    void adopt(qint64 processId);

    /** Asks all of it to end, where a system knows how to ask. */
    void terminate();
    /** Once. */
    void kill();

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service
