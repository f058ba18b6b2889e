#pragma once

#include "trovek-ui/export.h"

#include <trovek/job.h>

#include <QObject>

#include <memory>
#include <string>

namespace trovek {

class TrovekQt;

/**
 * Follows one job of the service and says once how it ended.
 *
 * While a job is watched every change of it emits changed(); its conclusion emits changed() and
 * then exactly one of ended(), failed() and canceled(), after which the watch is silent until
 * another setJobID(). A receiver may set another job, clear the watch or delete it in any of these
 * signals. GUI thread only.
 */
class TROVEK_UI_EXPORT JobWatch : public QObject
{
    Q_OBJECT

public:
    /**
     * @param facade not owned; must outlive the watch
     * @param name   the owner's name, which begins the watch's log lines
     */
    JobWatch(TrovekQt& facade, const std::string& name, QObject* parent = nullptr);
    /** The job goes on. */
    ~JobWatch() override;

    /** Job::kInvalidID when nothing is watched. */
    Job::ID jobID() const;
    /** What the service says of the job now. @throws std::exception as Trovek::jobFromID() does */
    Job job() const;

public slots:
    /** Watches nothing; emits nothing. */
    void clearJobID();
    /** Watches a job; one that has concluded already gives its signals before this returns. */
    void setJobID(trovek::Job::ID id);
    /** Asks the service to cancel the job if it is not over; canceled() comes when it is. */
    void cancelJob();

signals:
    void changed(trovek::Job::ID id);
    void ended(trovek::Job::ID id);
    void failed(trovek::Job::ID id);
    void canceled(trovek::Job::ID id);

private slots:
    void jobChanged(trovek::Job::ID id);

private:
    void report(Job::ID id);

    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
