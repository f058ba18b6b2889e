#pragma once

#include "geometry/geometry_error.h"
#include "scanner/calibration.h"
#include "scanner/scanner_build.h"
#include "scanner/scanner_settings.h"
#include "scanner/scene.h"

#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <string>

namespace trovek::geometry {
class RayCaster;
}

namespace trovek::service {

/**
 * A scanner with a camera, two lasers and a turntable, and what stands on the table.
 *
 * What it remembers without power, its name and its user's calibration, is a file that stands for
 * its memory. A new one leaves the factory calibrated.
 */
class VirtualScanner : public QObject
{
    Q_OBJECT

public:
    /** UTF-8 bytes. */
    static constexpr std::size_t kNameAtMost = 64;

    /** @param memoryFile made when it is missing and something is written */
    VirtualScanner(const ScannerSettings& settings, const QString& memoryFile,
                   QObject* parent = nullptr);
    ~VirtualScanner() override;

    const ScannerSettings& settings() const { return m_settings; }
    const ScannerBuild& design() const { return m_design; }
    const ScannerBuild& build() const { return m_build; }

    bool isPluggedIn() const { return m_pluggedIn; }
    /** Both lasers are on again, and nothing is on its way; nothing happens when it is plugged in.
     */
    void plugIn();
    void unplug();

    LasersOn lasers() const { return m_lasers; }
    void setLasers(LasersOn lasers) { m_lasers = lasers; }

    /** Memory. Writing answers false, after logging why, when it failed and nothing changed. */
    const std::string& name() const { return m_name; }
    bool writeName(const std::string& name);
    /** Complete, or nothing. */
    const std::optional<Calibration>& userCalibration() const { return m_userCalibration; }
    bool writeUserCalibration(const std::optional<Calibration>& calibration);

    const ScannedModel& model() const { return m_model; }
    /** What rays meet on the table; null until it was loaded. */
    std::shared_ptr<const geometry::RayCaster> scenery() const { return m_scenery; }
    void setModel(const ScannedModel& model, std::shared_ptr<const geometry::RayCaster> scenery);

signals:
    void pluggedIn();
    void unplugged();

private:
    bool writeMemory(const std::string& name, const std::optional<Calibration>& calibration);

    const ScannerSettings m_settings;
    const QString m_memoryFile;
    const ScannerBuild m_design;
    const ScannerBuild m_build;
    bool m_pluggedIn;
    LasersOn m_lasers{true, true};
    std::string m_name;
    std::optional<Calibration> m_userCalibration;
    ScannedModel m_model;
    std::shared_ptr<const geometry::RayCaster> m_scenery;
};

/**
 * What rays meet of a model on the table; on any thread.
 * @throws geometry::FileFormatError, geometry::Canceled, and JsonRpcException FileAccessError
 */
std::shared_ptr<const geometry::RayCaster> loadScenery(const ScannedModel& model,
                                                       const geometry::Progress& progress);

} // namespace trovek::service
