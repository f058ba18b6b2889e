#pragma once

#include <trovek/job.h>

#include <QObject>
#include <QString>

namespace trovek::service {

/**
 * One job from its making to its conclusion. JobList owns it and gives it its number.
 *
 * The data changes first, then the signal comes; after concluded() it changes no more.
 */
class RunningJob : public QObject
{
    Q_OBJECT

public:
    /** @param data its number does not count */
    explicit RunningJob(trovek::Job::Data data, QObject* parent = nullptr);
    ~RunningJob() override;

    const trovek::Job::Data& data() const { return m_data; }
    bool isConcluded() const { return m_data.conclusion != JobNotConcluded; }
    void setId(int id) { m_data.id = id; }

    /** Once, when it is in the list. It may conclude at once. */
    virtual void start() = 0;
    /** A machine that it uses is free when this returns; concluded() may come later. */
    virtual void cancel() = 0;
    /** Ends it as failed; its machine can do nothing more for it. Nothing after the conclusion. */
    virtual void abort(const QString& reason) = 0;

signals:
    void changed();
    void concluded();

protected:
    /** The setters emit changed(), each only when the value is another one. */
    void setProgress(int percent);
    void setStage(const QString& stage);
    void setSecondsLeft(int seconds);
    /**
     * Ends it; once, later calls do nothing.
     * @param failure for a user; for JobFailed only
     */
    void conclude(JobConclusion conclusion, const QString& failure = QString());

private:
    trovek::Job::Data m_data;
};

} // namespace trovek::service
