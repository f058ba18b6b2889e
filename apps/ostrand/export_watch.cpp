#include "export_watch.h"

#include "unknown_job.h"

#include <trovek-ui/trovekqt.h>

#include <trovek/log.h>
#include <trovek/wire.h>

#include <QTimer>

#include <exception>

namespace ostrand {
namespace {

constexpr char kLogUnit[] = "apps\\ostrand\\export_watch";

} // namespace

ExportWatch::ExportWatch(trovek::TrovekQt& facade, Pending pending, QObject* parent)
    : QObject(parent)
    , m_facade(facade)
    , m_pending(std::move(pending))
{
    connect(&m_facade, &trovek::TrovekQt::disconnected, this, [this] {
        const QStringList waiting = unfinished();
        if (!waiting.isEmpty())
            emit interrupted(waiting);
    });
    // From the event loop, so that whoever connected has its call behind it.
    connect(&m_facade, &trovek::TrovekQt::connected, this, &ExportWatch::settle,
            Qt::QueuedConnection);
}

QStringList ExportWatch::unfinished() const
{
    QStringList destinations;
    for (const auto& [job, destination] : m_pending()) {
        if (m_lost.count(job) == 0)
            destinations.append(destination);
    }
    return destinations;
}

void ExportWatch::settle()
{
    QStringList lostNow;
    bool complete = true;
    for (const auto& [job, destination] : m_pending()) {
        if (m_lost.count(job) > 0)
            continue;
        try {
            const Fate fate = fateOf(job);
            if (fate == Fate::Failed || fate == Fate::Gone) {
                TROVEK_LOG(1) << "Export of job " << job << " is lost" << std::endl;
                m_lost.insert(job);
                lostNow.append(destination);
            }
            if (fate != Fate::Running && fate != Fate::Gone) {
                // The end came while nobody listened.
                emit m_facade.jobChanged(job);
                emit m_facade.jobConcluded(job);
            }
        } catch (const std::exception& e) {
            // The link is gone again; the next one brings us back here.
            TROVEK_LOG(1) << e.what() << std::endl;
            complete = false;
            break;
        }
    }
    if (!lostNow.isEmpty())
        emit lost(lostNow);
    else if (complete)
        emit settled();
}

ExportWatch::Fate ExportWatch::fateOf(int job)
{
    try {
        switch (m_facade.jobFromID(job).conclusion()) {
        case trovek::JobEnded:
        case trovek::JobCanceled:
            return Fate::Concluded;
        case trovek::JobFailed:
            return Fate::Failed;
        default:
            return Fate::Running;
        }
    } catch (const JsonRpcException& e) {
        TROVEK_LOG(1) << "Job " << job << ": " << e.message() << std::endl;
        return saysUnknownJob(e) ? Fate::Gone : Fate::Running;
    }
}

} // namespace ostrand
