#pragma once

#include "running_job.h"
#include "scanner/calibration_pictures.h"
#include "scanner/scanner_control.h"

#include <QThreadPool>

#include <memory>

namespace trovek::service {

class BackgroundTask;

/**
 * Takes the pictures that a calibration reads. They are in their folder when the job has ended; the
 * folder is as before when it failed before all were taken, or was canceled.
 */
class PictureJob : public RunningJob
{
    Q_OBJECT

public:
    /**
     * @param kind       the method that made it
     * @param name       for a user
     * @param folder     absolute, UTF-8
     * @param control    not owned; must outlive the job, as `pool` must
     * @param occupation of the scanner
     */
    PictureJob(const char* kind, const char* name, const std::string& folder,
               std::vector<BoardPicture> pictures, ScannerControl& control,
               ScannerControl::Occupation occupation, QThreadPool& pool, QObject* parent = nullptr);
    ~PictureJob() override;

    void start() override;
    /** The conclusion comes when the work has stopped. */
    void cancel() override;
    void abort(const QString& reason) override;

private:
    void finish(const QString& error);
    void leave(JobConclusion conclusion, const QString& failure = QString());

    const std::string m_folder;
    const std::vector<BoardPicture> m_pictures;
    ScannerControl& m_control;
    ScannerControl::Occupation m_occupation;
    QThreadPool& m_pool;
    bool m_canceled = false;
    std::unique_ptr<BackgroundTask> m_task;
};

} // namespace trovek::service
