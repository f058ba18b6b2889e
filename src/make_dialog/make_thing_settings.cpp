#include "make_dialog/make_thing_settings.h"

#include <QSettings>
#include <QVariant>

namespace trovek {

namespace {

const QLatin1String kLeftMaterial("make_dialog/left_material");
const QLatin1String kRightMaterial("make_dialog/right_material");
const QLatin1String kSingleMaterial("make_dialog/single_material");
const QLatin1String kRaft("make_dialog/raft");
const QLatin1String kSupports("make_dialog/supports");
const QLatin1String kAdvanced("make_dialog/advanced");
const QLatin1String kPreview("make_dialog/preview");
const QLatin1String kSelectedProfile("make_dialog/selectedProfile");

const QLatin1String kNumbersFor("make_dialog/numbersFor");
const QLatin1String kInfill("make_dialog/infill");
const QLatin1String kLayerHeight("make_dialog/layerHeight");
const QLatin1String kShells("make_dialog/shells");
const QLatin1String kExtruderTemperature("make_dialog/extruderTemperature");
const QLatin1String kLeftExtruderTemperature("make_dialog/leftExtruderTemperature");
const QLatin1String kHeatPlatform("make_dialog/heatPlatform");
const QLatin1String kPlatformTemperature("make_dialog/platformTemperature");
const QLatin1String kExtrudingSpeed("make_dialog/extrudingSpeed");
const QLatin1String kTravelingSpeed("make_dialog/travelingSpeed");

const QLatin1String kPresetPrefix("preset:");
const QLatin1String kFolderPrefix("folder:");

constexpr int kChoiceCount = 4;
constexpr int kPresetCount = 3;

std::optional<double> fraction(const QVariant& stored, double minimum, double maximum)
{
    bool isNumber = false;
    const double value = stored.toDouble(&isNumber);
    // Written so that "nan" is out too.
    return isNumber && value >= minimum && value <= maximum ? std::optional<double>(value)
                                                            : std::nullopt;
}

std::optional<int> whole(const QVariant& stored, int minimum, int maximum)
{
    bool isNumber = false;
    // toInt() would take what is left of a number that is too large.
    const qlonglong value = stored.toLongLong(&isNumber);
    return isNumber && value >= minimum && value <= maximum ? std::optional<int>(int(value))
                                                            : std::nullopt;
}

/** Every text but a few would count as true. */
std::optional<bool> truth(const QVariant& stored)
{
    const QString text = stored.toString();
    if (text == QLatin1String("true") || text == QLatin1String("1"))
        return true;
    if (text == QLatin1String("false") || text == QLatin1String("0"))
        return false;
    return std::nullopt;
}

std::optional<SlicerConfiguration::Preset> presetOf(const QString& stored)
{
    const std::optional<int> value = whole(stored, 0, kPresetCount - 1);
    return value ? std::optional(static_cast<SlicerConfiguration::Preset>(*value)) : std::nullopt;
}

std::optional<Orvane::Material> material(const QVariant& stored)
{
    const std::optional<int> value = whole(stored, 0, Orvane::kMaterialCount - 1);
    return value ? std::optional(static_cast<Orvane::Material>(*value)) : std::nullopt;
}

template <typename Value>
void writeIfThere(QSettings& settings, QLatin1String key, const std::optional<Value>& value)
{
    if (value)
        settings.setValue(key, *value);
}

void writeIfThere(QSettings& settings, QLatin1String key,
                  const std::optional<Orvane::Material>& value)
{
    if (value && *value >= 0 && *value < Orvane::kMaterialCount)
        settings.setValue(key, int(*value));
}

} // namespace

MakeThingSettings MakeThingSettings::read(const QSettings& settings)
{
    MakeThingSettings read;
    read.leftMaterial = material(settings.value(kLeftMaterial));
    read.rightMaterial = material(settings.value(kRightMaterial));
    read.singleMaterial = material(settings.value(kSingleMaterial));
    read.raft = whole(settings.value(kRaft), 0, kChoiceCount - 1);
    read.supports = whole(settings.value(kSupports), 0, kChoiceCount - 1);
    read.advanced = truth(settings.value(kAdvanced));
    read.preview = truth(settings.value(kPreview));

    const QString profile = settings.value(kSelectedProfile).toString();
    if (profile.startsWith(kPresetPrefix))
        read.preset = presetOf(profile.mid(kPresetPrefix.size()));
    else if (profile.startsWith(kFolderPrefix))
        read.profileFolder = profile.mid(kFolderPrefix.size());
    read.numbersPreset =
        presetOf(settings.value(kNumbersFor).toString().section(QLatin1Char(':'), 0, 0));
    return read;
}

void MakeThingSettings::write(QSettings& settings) const
{
    writeIfThere(settings, kLeftMaterial, leftMaterial);
    writeIfThere(settings, kRightMaterial, rightMaterial);
    writeIfThere(settings, kSingleMaterial, singleMaterial);
    writeIfThere(settings, kRaft, raft);
    writeIfThere(settings, kSupports, supports);
    writeIfThere(settings, kAdvanced, advanced);
    writeIfThere(settings, kPreview, preview);
    if (preset)
        settings.setValue(kSelectedProfile, kPresetPrefix + QString::number(*preset));
    else if (!profileFolder.isEmpty())
        settings.setValue(kSelectedProfile, kFolderPrefix + profileFolder);
}

void readNumbers(const QSettings& settings, const QString& context,
                 SlicerConfiguration* configuration)
{
    if (settings.value(kNumbersFor, context).toString() != context)
        return;
    if (const auto value = fraction(settings.value(kInfill), 0, 1))
        configuration->setInfill(*value);
    if (const auto value = fraction(settings.value(kLayerHeight), 0.01, 0.4))
        configuration->setLayerHeight(*value);
    if (const auto value = whole(settings.value(kShells), 1, 100))
        configuration->setShells(std::uint32_t(*value));
    if (const auto value = whole(settings.value(kExtruderTemperature), 0, 280))
        configuration->setExtruderTemperature(std::uint32_t(*value));
    if (const auto value = whole(settings.value(kLeftExtruderTemperature), 0, 280))
        configuration->setLeftExtruderTemperature(std::uint32_t(*value));
    if (const auto value = truth(settings.value(kHeatPlatform)))
        configuration->setHeatPlatform(*value);
    if (const auto value = whole(settings.value(kPlatformTemperature), 0, 200))
        configuration->setPlatformTemperature(std::uint32_t(*value));
    if (const auto value = whole(settings.value(kExtrudingSpeed), 10, 200))
        configuration->setPrintSpeed(std::uint32_t(*value));
    if (const auto value = whole(settings.value(kTravelingSpeed), 10, 200))
        configuration->setTravelSpeed(std::uint32_t(*value));
}

void writeNumbers(QSettings& settings, const QString& context,
                  const SlicerConfiguration& configuration)
{
    settings.setValue(kNumbersFor, context);
    settings.setValue(kInfill, configuration.infill());
    settings.setValue(kLayerHeight, configuration.layerHeight());
    settings.setValue(kShells, configuration.shells());
    settings.setValue(kExtruderTemperature, configuration.extruderTemperature());
    settings.setValue(kLeftExtruderTemperature, configuration.leftExtruderTemperature());
    settings.setValue(kHeatPlatform, configuration.heatPlatform());
    settings.setValue(kPlatformTemperature, configuration.platformTemperature());
    settings.setValue(kExtrudingSpeed, configuration.printSpeed());
    settings.setValue(kTravelingSpeed, configuration.travelSpeed());
}

} // namespace trovek
