#include "scanner/scanner_service.h"

#include "scanner/calibration_methods.h"
#include "scanner/mesh_methods.h"
#include "scanner/point_cloud_methods.h"
#include "scanner/scanner_control.h"
#include "scanner/scanner_methods.h"
#include "scanner/shape_list.h"
#include "scanner/virtual_scanner.h"

#include <rpcwire/json_text.h>
#include <trovek/text.h>

#include <QFile>
#include <QFileInfo>

#include <stdexcept>

namespace trovek::service {

namespace {

ScannerSettings readSettings(const QString& path)
{
    if (path.isEmpty())
        return {};
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error(
            toStdString(QStringLiteral("Cannot read the scanner settings \"%1\"").arg(path)));
    }
    Json::Value value;
    std::string error;
    if (!rpcwire::parseJson(file.readAll().toStdString(), &value, &error))
        throw std::runtime_error("Scanner settings: " + error);
    return scannerSettingsFromJson(value);
}

} // namespace

class ScannerService::Private
{
public:
    Private(const ScannerSettings& settings, const QString& memoryFile, QThreadPool& threads)
        : pool(threads)
        , scanner(settings, memoryFile)
        , control(scanner, threads)
    {}

    QThreadPool& pool;
    ShapeList shapes;
    VirtualScanner scanner;
    ScannerControl control;
};

ScannerService::ScannerService(const QString& settingsFile, const QString& memoryFile,
                               QThreadPool& pool, QObject* parent)
    : QObject(parent)
    , d(new Private(readSettings(settingsFile), memoryFile, pool))
{
    connect(&d->scanner, &VirtualScanner::unplugged, this,
            [this] { emit cameraClosed(d->scanner.settings().devicePath); });
}

ScannerService::~ScannerService() = default;

void ScannerService::addTo(MethodTable& table, JobList& jobs)
{
    addPointCloudMethods(table, d->shapes);
    addMeshMethods(table, d->shapes);
    addScannerMethods(table, d->control, d->shapes, jobs);
    addCalibrationMethods(table, d->control, jobs, d->pool);
}

} // namespace trovek::service
