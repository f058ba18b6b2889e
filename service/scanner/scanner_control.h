#pragma once

#include "geometry/geometry_error.h"
#include "method_table.h"
#include "scanner/calibration.h"

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <functional>
#include <memory>
#include <string>

namespace trovek::service {

class BackgroundTask;
class VirtualScanner;

/** The scanner as clients share it: who uses it now, and the calibration that scans use. */
class ScannerControl : public QObject
{
    Q_OBJECT

public:
    /** The scanner is in use as long as one of these lives. */
    using Occupation = std::shared_ptr<void>;

    /** @param scanner not owned; must outlive it, as `pool` must */
    ScannerControl(VirtualScanner& scanner, QThreadPool& pool, QObject* parent = nullptr);
    ~ScannerControl() override;

    /** @throws JsonRpcException ScannerUnavailableError */
    VirtualScanner& scanner() const;
    /** Plugged in or not. */
    VirtualScanner& virtualScanner() const { return m_scanner; }
    /** One that nobody uses. @throws JsonRpcException ScannerUnavailableError, ScannerBusyError */
    VirtualScanner& idleScanner() const;
    /** @param what for who finds it busy. @throws JsonRpcException as idleScanner() */
    Occupation occupy(const std::string& what);

    /** Nothing of it is known while the scanner is unplugged. */
    const Calibration& calibration() const { return m_calibration; }
    void setCalibration(const Calibration& calibration) { m_calibration = calibration; }
    /** @throws JsonRpcException NotCalibratedError */
    const Calibration& completeCalibration() const;

    /**
     * Work that is answered when it is done.
     * @param work   on the pool's thread; what it throws is the answer
     * @param finish on this thread, after it; gives the answer, or throws it. Not when the scanner
     * was unplugged meanwhile: that is the answer then
     */
    void runLate(const Responder& respond,
                 std::function<void(const geometry::Progress& progress)> work,
                 std::function<Json::Value()> finish);

private:
    struct LateWork;

    void finish(LateWork& work);

    VirtualScanner& m_scanner;
    QThreadPool& m_pool;
    Calibration m_calibration;
    std::weak_ptr<void> m_occupation;
    std::string m_occupiedBy;
    std::vector<std::unique_ptr<LateWork>> m_works;
    std::vector<std::unique_ptr<LateWork>> m_retired;
};

} // namespace trovek::service
