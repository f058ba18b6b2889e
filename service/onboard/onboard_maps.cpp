#include "gcode/machine_definition.h"
#include "onboard/onboard_map.h"

#include <rpcwire/json_text.h>
#include <trovek/text.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

static void initializeOnboardMapsResource()
{
    // A static library's resources are dropped by the linker when nobody asks for them.
    Q_INIT_RESOURCE(onboard_maps);
}

namespace trovek::service {

namespace {

constexpr char kFolder[] = ":/trovek/onboard_maps";

Json::Value parsed(const QString& path)
{
    QFile file(path);
    Json::Value source;
    std::string error;
    if (!file.open(QIODevice::ReadOnly) ||
        !rpcwire::parseJson(file.readAll().toStdString(), &source, &error))
        throw std::runtime_error("Onboard map: " + toStdString(path) + ": " + error);
    return source;
}

QString fileName(const OnboardLayout& layout)
{
    return QStringLiteral("%1-%2.%3.json")
        .arg(toQString(machineTypeName(layout.type)))
        .arg(layout.major)
        .arg(layout.minor);
}

} // namespace

const OnboardMap* OnboardMaps::find(const OnboardLayout& layout) const
{
    initializeOnboardMapsResource();
    const auto known = m_maps.find(layout);
    if (known != m_maps.end())
        return known->second.get();
    const QString path = QDir{QLatin1String(kFolder)}.filePath(fileName(layout));
    if (!QFile::exists(path))
        return nullptr;
    return m_maps.emplace(layout, std::make_unique<const OnboardMap>(parsed(path)))
        .first->second.get();
}

std::vector<OnboardLayout> OnboardMaps::layouts()
{
    initializeOnboardMapsResource();
    std::vector<OnboardLayout> layouts;
    const QDir folder{QLatin1String(kFolder)};
    for (const QString& name : folder.entryList(QDir::Files))
        layouts.push_back(OnboardMap(parsed(folder.filePath(name))).layout());
    return layouts;
}

std::set<FirmwareVersion> OnboardMaps::firmwareVersions(Printer::Type type)
{
    initializeOnboardMapsResource();
    const QString prefix = toQString(machineTypeName(type)) + QLatin1Char('-');
    std::set<FirmwareVersion> versions;
    for (const QFileInfo& file : QDir{QLatin1String(kFolder)}.entryInfoList(QDir::Files)) {
        const QString name = file.completeBaseName();
        if (name.startsWith(prefix))
            versions.emplace(toStdString(name.mid(prefix.size())));
    }
    return versions;
}

} // namespace trovek::service
