#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include "slicing/process_group.h"

namespace trovek::service {

/**
 * Another program that this thread waits for; it and all that it starts end together.
 *
 * It has nothing of this program's: no descriptor, no input, a small environment and a folder of
 * its own. Its output and its errors come as one stream. Used from one thread, which needs no event
 * loop.
 */
class ChildProcess : private QProcess
{
public:
    struct Command
    {
        QString program;
        QStringList arguments;
        /** Its working, temporary and home folder. */
        QString folder;
        bool lowPriority = false;
    };

    /** Between the question and the order to end. */
    static constexpr int kGraceMs = 500;

    /** Starts it. @throws std::runtime_error the system's reason why it cannot */
    explicit ChildProcess(const Command& command);
    /** Ends it when it still runs. */
    ~ChildProcess() override;

    /**
     * Returns when it has written something, when it has ended, or after `ms`.
     * @return false when it has ended; what it wrote last can still be read
     */
    bool wait(int ms);
    /** What it has written since the last call. */
    QByteArray read();
    /** Asks the whole group to end, kills it after kGraceMs, and returns when it has. */
    void stop();

    /** Once it has ended: the number of the signal that killed it; 0 when none did. */
    int signalNumber() const;
    /** Once it has ended by itself. */
    int exitStatus() const;

protected:
    void setupChildProcess() override;

private:
    ProcessGroup m_group;
};

} // namespace trovek::service
