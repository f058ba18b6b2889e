#pragma once

#include "running_job.h"
#include "scanner/line_scan.h"
#include "scanner/scanner_control.h"
#include "scanner/shape_list.h"

namespace trovek::service {

/**
 * Scans what stands on the turntable into a point cloud.
 *
 * The cloud has its new points when the job has ended, and its earlier ones when it failed or was
 * canceled. It ends as canceled, too, when the cloud is destroyed.
 */
class ScanJob : public RunningJob
{
    Q_OBJECT

public:
    /**
     * @param control    not owned; must outlive the job, as `shapes` must
     * @param occupation of the scanner
     * @param cloud      the client's own
     */
    ScanJob(ScannerControl& control, ScannerControl::Occupation occupation, ShapeList& shapes,
            Client& client, ShapeUse cloud, LineScan scan, QObject* parent = nullptr);

    void start() override;
    /** The conclusion comes when the scan has stopped. */
    void cancel() override;
    void abort(const QString& reason) override;

private:
    void finish(JobConclusion conclusion, const QString& failure = QString());

    ScannerControl& m_control;
    ScannerControl::Occupation m_occupation;
    ShapeList& m_shapes;
    Client& m_client;
    const ShapeUse m_cloud;
    const LineScan m_scan;
    int m_operation = 0;
};

} // namespace trovek::service
