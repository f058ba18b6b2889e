#include "scanner/picture_job.h"

#include "background_task.h"
#include "gcode/file_access.h"
#include "scanner/virtual_scanner.h"
#include "write_all.h"

#include <trovek/text.h>

#include <QFile>

#include <algorithm>
#include <stdexcept>

namespace trovek::service {

namespace {

trovek::Job::Data describeJob(const char* kind, const char* name)
{
    trovek::Job::Data data;
    data.name = name;
    data.kind = kind;
    return data;
}

void writePictures(const std::string& folder, const std::vector<BoardPicture>& pictures,
                   const std::vector<std::string>& files)
{
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::unique_ptr<QFile> file = openOutputIn(folder, pictures[i].fileName);
        try {
            writeAll(*file, files[i].data(), static_cast<qint64>(files[i].size()));
        } catch (const WriteError& error) {
            throw std::runtime_error("Cannot write " + pictures[i].fileName + ": " + error.what());
        }
    }
}

} // namespace

PictureJob::PictureJob(const char* kind, const char* name, const std::string& folder,
                       std::vector<BoardPicture> pictures, ScannerControl& control,
                       ScannerControl::Occupation occupation, QThreadPool& pool, QObject* parent)
    : RunningJob(describeJob(kind, name), parent)
    , m_folder(folder)
    , m_pictures(std::move(pictures))
    , m_control(control)
    , m_occupation(std::move(occupation))
    , m_pool(pool)
{}

PictureJob::~PictureJob() = default;

void PictureJob::start()
{
    setStage(QStringLiteral("Taking pictures"));
    VirtualScanner& scanner = m_control.virtualScanner();
    connect(&scanner, &VirtualScanner::unplugged, this,
            [this] { abort(QStringLiteral("The scanner was unplugged")); });
    const auto work = [this, &scanner](BackgroundTask::Control& control) {
        const auto progress = [&control](double done) {
            control.setProgress(std::min(99, static_cast<int>(done * 100)));
            return !control.isCanceled();
        };
        const ScannerSettings& settings = scanner.settings();
        const std::vector<std::string> files = takePictures(
            scanner.build(), m_pictures, settings.pictureNoise, settings.seed, progress);
        writePictures(m_folder, m_pictures, files);
    };
    m_task = std::make_unique<BackgroundTask>(m_pool, work);
    connect(m_task.get(), &BackgroundTask::progressed, this, &PictureJob::setProgress);
    connect(m_task.get(), &BackgroundTask::ended, this, &PictureJob::finish);
    m_task->start();
}

void PictureJob::cancel()
{
    if (isConcluded())
        return;
    m_canceled = true;
    setStage(QStringLiteral("Canceling"));
    m_task->cancel();
}

void PictureJob::abort(const QString& reason)
{
    if (isConcluded())
        return;
    m_task.reset();
    leave(JobFailed, reason);
}

void PictureJob::finish(const QString& error)
{
    if (isConcluded())
        return;
    if (m_canceled)
        leave(JobCanceled);
    else if (!error.isEmpty())
        leave(JobFailed, error);
    else
        leave(JobEnded);
}

void PictureJob::leave(JobConclusion conclusion, const QString& failure)
{
    m_occupation.reset();
    conclude(conclusion, failure);
}

} // namespace trovek::service
