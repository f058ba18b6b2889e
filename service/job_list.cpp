#include "job_list.h"

#include "running_job.h"
#include "state_file.h"
#include "throttle.h"

#include <trovek/log.h>
#include <trovek/wire.h>

#include <deque>
#include <exception>
#include <limits>
#include <map>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\job_list";

namespace {

constexpr int kReservedAtOnce = 100;

} // namespace

class JobList::Private
{
public:
    struct Entry
    {
        std::unique_ptr<RunningJob> job;
        std::unique_ptr<Throttle> throttle;
    };

    int nextId();
    void conclude(int id);

    JobList* q = nullptr;
    QString stateFile;
    int next = 1;
    int reservedUntil = 1;
    std::map<int, Entry> running;
    /** Concluded; destroyed from the event loop. */
    std::vector<std::unique_ptr<RunningJob>> retired;
    std::map<int, trovek::Job::Data> concluded;
    /** In the order of conclusion, which is not that of the numbers. */
    std::deque<int> conclusions;
};

int JobList::Private::nextId()
{
    if (next >= reservedUntil) {
        if (next > std::numeric_limits<int>::max() - kReservedAtOnce)
            throw JsonRpcException("There are no job numbers left");
        Json::Value saved(Json::objectValue);
        saved["next_job"] = next + kReservedAtOnce;
        if (!writeStateFile(stateFile, saved))
            throw JsonRpcException("The service cannot write its state folder");
        reservedUntil = next + kReservedAtOnce;
    }
    return next++;
}

void JobList::Private::conclude(int id)
{
    const auto found = running.find(id);
    if (found == running.end())
        return;
    concluded.emplace(id, found->second.job->data());
    conclusions.push_back(id);
    // The job is inside its own signal now, and must be gone before the machine and the pool it
    // uses.
    retired.push_back(std::move(found->second.job));
    QMetaObject::invokeMethod(
        q, [this] { retired.clear(); }, Qt::QueuedConnection);
    running.erase(found);
    while (conclusions.size() > static_cast<std::size_t>(kConcludedKept)) {
        concluded.erase(conclusions.front());
        conclusions.pop_front();
    }
    emit q->changed(id);
    emit q->concluded(id);
}

JobList::JobList(const QString& stateFile, QObject* parent)
    : QObject(parent)
    , d(new Private)
{
    d->q = this;
    d->stateFile = stateFile;
    const Json::Value saved = readStateFile(stateFile);
    if (saved.isObject() && saved["next_job"].isInt() && saved["next_job"].asInt() > 0)
        d->next = saved["next_job"].asInt();
    d->reservedUntil = d->next;
}

JobList::~JobList() = default;

int JobList::add(std::unique_ptr<RunningJob> job)
{
    if (d->running.size() >= static_cast<std::size_t>(kRunningAtMost))
        throw wire::makeError(wire::error::kTooManyRequests, "Too many jobs are running");
    const int id = d->nextId();
    job->setId(id);
    TROVEK_LOG(1) << "Job " << id << " (" << job->data().kind << ") on \""
                  << job->data().machine.name() << "\": " << job->data().name << std::endl;

    auto throttle = std::make_unique<Throttle>(kChangeIntervalMs);
    connect(throttle.get(), &Throttle::released, this, [this, id] { emit changed(id); });
    connect(job.get(), &RunningJob::changed, throttle.get(), &Throttle::request);
    connect(job.get(), &RunningJob::concluded, this, [this, id] { d->conclude(id); });
    RunningJob& started = *job;
    d->running.emplace(id, Private::Entry{std::move(job), std::move(throttle)});
    emit added(id);
    try {
        started.start();
    } catch (const std::exception& error) {
        started.abort(QString::fromUtf8(error.what()));
    }
    return id;
}

trovek::Job::Data JobList::job(int id) const
{
    if (const auto found = d->running.find(id); found != d->running.end())
        return found->second.job->data();
    if (const auto found = d->concluded.find(id); found != d->concluded.end())
        return found->second;
    throw wire::makeError(wire::error::kUnknownJob, "No such job: " + std::to_string(id));
}

std::vector<trovek::Job::Data> JobList::jobs() const
{
    std::map<int, trovek::Job::Data> all = d->concluded;
    for (const auto& [id, entry] : d->running)
        all.emplace(id, entry.job->data());
    std::vector<trovek::Job::Data> list;
    for (auto& [id, data] : all)
        list.push_back(std::move(data));
    return list;
}

void JobList::cancel(int id)
{
    const auto found = d->running.find(id);
    if (found != d->running.end())
        found->second.job->cancel();
    else if (d->concluded.count(id) == 0)
        throw wire::makeError(wire::error::kUnknownJob, "No such job: " + std::to_string(id));
}

void JobList::abortAll(const QString& reason)
{
    std::vector<int> ids;
    for (const auto& [id, entry] : d->running)
        ids.push_back(id);
    for (const int id : ids) {
        const auto found = d->running.find(id);
        if (found != d->running.end())
            found->second.job->abort(reason);
    }
}

} // namespace trovek::service
