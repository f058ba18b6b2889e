#include "scanner/virtual_scanner.h"

#include "geometry/mesh.h"
#include "geometry/mesh_file.h"
#include "geometry/ray_caster.h"
#include "scanner/default_model.h"
#include "scanner/shape_arguments.h"
#include "state_file.h"

#include <trovek/log.h>

#include <QFileInfo>

#include <exception>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\scanner\\virtual_scanner";

namespace {

constexpr char kFactoryName[] = "Virtual Scanner";

} // namespace

VirtualScanner::VirtualScanner(const ScannerSettings& settings, const QString& memoryFile,
                               QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_memoryFile(memoryFile)
    , m_design(designedScanner(settings))
    , m_build(builtScanner(settings))
    , m_pluggedIn(settings.pluggedIn)
    , m_name(kFactoryName)
    , m_model(settings.model)
{
    if (!QFileInfo::exists(memoryFile)) {
        m_userCalibration = m_build.truth;
        return;
    }
    const Json::Value memory = readStateFile(memoryFile);
    if (memory.isObject() && memory["name"].isString())
        m_name = memory["name"].asString();
    if (!memory.isObject() || memory["calibration"].isNull())
        return;
    try {
        const Calibration calibration = calibrationFromJson(memory["calibration"]);
        if (calibration.isComplete())
            m_userCalibration = calibration;
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << "The scanner's memory is damaged: " << error.what() << std::endl;
    }
}

VirtualScanner::~VirtualScanner() = default;

void VirtualScanner::plugIn()
{
    if (m_pluggedIn)
        return;
    m_pluggedIn = true;
    m_lasers = {true, true};
    emit pluggedIn();
}

void VirtualScanner::unplug()
{
    if (!m_pluggedIn)
        return;
    m_pluggedIn = false;
    emit unplugged();
}

bool VirtualScanner::writeName(const std::string& name)
{
    if (!writeMemory(name, m_userCalibration))
        return false;
    m_name = name;
    return true;
}

bool VirtualScanner::writeUserCalibration(const std::optional<Calibration>& calibration)
{
    if (!writeMemory(m_name, calibration))
        return false;
    m_userCalibration = calibration;
    return true;
}

void VirtualScanner::setModel(const ScannedModel& model,
                              std::shared_ptr<const geometry::RayCaster> scenery)
{
    m_model = model;
    m_scenery = std::move(scenery);
}

bool VirtualScanner::writeMemory(const std::string& name,
                                 const std::optional<Calibration>& calibration)
{
    Json::Value memory(Json::objectValue);
    memory["name"] = name;
    memory["calibration"] = calibration ? toJson(*calibration) : Json::Value();
    return writeStateFile(m_memoryFile, memory);
}

std::shared_ptr<const geometry::RayCaster> loadScenery(const ScannedModel& model,
                                                       const geometry::Progress& progress)
{
    geometry::Mesh mesh;
    if (model.path.empty()) {
        mesh = defaultModel();
    } else {
        const auto format = geometry::meshFormatOfPath(model.path);
        if (!format)
            throw geometry::FileFormatError("Not a mesh file by its name: " + model.path);
        mesh = geometry::readMesh(readClientFile(model.path), *format, progress);
    }
    return std::make_shared<geometry::RayCaster>(transformed(mesh, model.toTable()));
}

} // namespace trovek::service
