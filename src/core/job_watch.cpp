#include "trovek-ui/job_watch.h"

#include "trovek-ui/trovekqt.h"

#include <trovek/log.h>

#include <QPointer>

#include <exception>
#include <utility>

static constexpr char kLogUnit[] = "src\\core\\job_watch";

namespace trovek {

class JobWatch::Private
{
public:
    Private(TrovekQt& watchedFacade, std::string ownerName)
        : facade(watchedFacade)
        , name(std::move(ownerName))
    {}

    TrovekQt& facade;
    const std::string name;
    Job::ID jobID = Job::kInvalidID;
    /** One of the three conclusion signals has been emitted for jobID. */
    bool concluded = false;
};

JobWatch::JobWatch(TrovekQt& facade, const std::string& name, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>(facade, name))
{
    connect(&facade, SIGNAL(jobChanged(const trovek::Job::ID)), this,
            SLOT(jobChanged(const trovek::Job::ID)));
}

JobWatch::~JobWatch() = default;

Job::ID JobWatch::jobID() const
{
    return d->jobID;
}

Job JobWatch::job() const
{
    return d->facade.jobFromID(d->jobID);
}

void JobWatch::clearJobID()
{
    TROVEK_LOG(1) << d->name << ": clear job ID" << std::endl;
    d->jobID = Job::kInvalidID;
    d->concluded = false;
}

void JobWatch::setJobID(Job::ID id)
{
    TROVEK_LOG(1) << d->name << ": set job ID " << id << std::endl;
    d->jobID = id;
    d->concluded = false;
    // The job may be over before it is watched, and then nothing else would tell.
    jobChanged(id);
}

void JobWatch::cancelJob()
{
    if (d->jobID == Job::kInvalidID || d->concluded)
        return;
    try {
        d->facade.cancelJob(d->jobID);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << d->name << ": " << error.what() << std::endl;
    }
}

void JobWatch::jobChanged(Job::ID id)
{
    if (id != d->jobID)
        return;
    // A receiver may delete the watch and then throw.
    const std::string name = d->name;
    try {
        report(id);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << name << ": " << error.what() << std::endl;
    }
}

void JobWatch::report(Job::ID id)
{
    const Job job = d->facade.jobFromID(id);
    if (d->concluded)
        return;

    const QPointer<JobWatch> self(this);
    emit changed(id);
    if (self.isNull() || d->jobID != id || d->concluded)
        return;

    switch (job.conclusion()) {
    case JobEnded:
        TROVEK_LOG(1) << "Job " << id << " concluded" << std::endl;
        d->concluded = true;
        emit ended(id);
        break;
    case JobFailed:
        TROVEK_LOG(1) << "Job " << id << " failed" << std::endl;
        d->concluded = true;
        emit failed(id);
        break;
    case JobCanceled:
        TROVEK_LOG(1) << "Job " << id << " canceled" << std::endl;
        d->concluded = true;
        emit canceled(id);
        break;
    case JobNotConcluded:
        break;
    }
}

} // namespace trovek
