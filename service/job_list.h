#pragma once

#include <trovek/job.h>

#include <QObject>
#include <QString>

#include <memory>
#include <vector>

namespace trovek::service {

class RunningJob;

/**
 * All jobs: those that run, and what is known of the last ones that concluded.
 *
 * Numbers are never given twice, also not after a restart or a crash: they are reserved in the
 * state folder in blocks before the first of a block is given out.
 */
class JobList : public QObject
{
    Q_OBJECT

public:
    /** Concluded jobs that stay answerable. */
    static constexpr int kConcludedKept = 1000;
    /** Jobs that may run at a time. */
    static constexpr int kRunningAtMost = 256;
    /** Of one job's changes; its conclusion is told at once all the same. */
    static constexpr int kChangeIntervalMs = 100;

    /** @param stateFile keeps the next number */
    explicit JobList(const QString& stateFile, QObject* parent = nullptr);
    ~JobList() override;

    /**
     * Takes the job over, gives it its number, announces and starts it.
     * @throws JsonRpcException when too many run, or no number can be reserved; the job is
     * destroyed then
     */
    int add(std::unique_ptr<RunningJob> job);

    /** @throws JsonRpcException UnknownJobError */
    trovek::Job::Data job(int id) const;
    /** Running and kept ones, by number. */
    std::vector<trovek::Job::Data> jobs() const;
    /** Nothing happens when it has concluded. @throws JsonRpcException UnknownJobError */
    void cancel(int id);
    /** Ends every running job as failed. */
    void abortAll(const QString& reason);

signals:
    void added(int id);
    /** At most once in kChangeIntervalMs for one job; always once right before concluded(). */
    void changed(int id);
    void concluded(int id);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service
