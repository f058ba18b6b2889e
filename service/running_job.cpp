#include "running_job.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <algorithm>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\running_job";

RunningJob::RunningJob(trovek::Job::Data data, QObject* parent)
    : QObject(parent)
    , m_data(std::move(data))
{
    m_data.conclusion = JobNotConcluded;
}

RunningJob::~RunningJob() = default;

void RunningJob::setProgress(int percent)
{
    const int progress = std::clamp(percent, 0, 100);
    if (progress == m_data.progress || isConcluded())
        return;
    m_data.progress = progress;
    emit changed();
}

void RunningJob::setStage(const QString& stage)
{
    const std::string text = toStdString(stage);
    if (text == m_data.stage || isConcluded())
        return;
    m_data.stage = text;
    emit changed();
}

void RunningJob::setSecondsLeft(int seconds)
{
    if (seconds == m_data.secondsLeft || isConcluded())
        return;
    m_data.secondsLeft = seconds;
    emit changed();
}

void RunningJob::conclude(JobConclusion conclusion, const QString& failure)
{
    if (isConcluded())
        return;
    m_data.conclusion = conclusion;
    m_data.secondsLeft = -1;
    switch (conclusion) {
    case JobEnded:
        m_data.progress = 100;
        m_data.stage = "Done";
        break;
    case JobCanceled:
        m_data.stage = "Canceled";
        break;
    default:
        m_data.stage = "Failed";
        m_data.failure = toStdString(failure);
        break;
    }
    TROVEK_LOG(1) << "Job " << m_data.id << " (" << m_data.kind << "): " << m_data.stage
                  << (m_data.failure.empty() ? "" : ": ") << m_data.failure << std::endl;
    emit concluded();
}

} // namespace trovek::service
