#include "make_dialog/preset_values.h"

#include <QtGlobal>

namespace trovek {

namespace {

constexpr int kDissolvableCelsius = 250;
constexpr int kFlexibleCelsius = 100;

/** A temperature of the preset, unless the material asks for one of its own. */
int extruderCelsiusFor(Orvane::Material material, std::uint32_t ofPreset)
{
    switch (material) {
    case Orvane::Dissolvable:
        return kDissolvableCelsius;
    case Orvane::Flexible:
        return kFlexibleCelsius;
    default:
        return int(ofPreset);
    }
}

} // namespace

PresetValues::PresetValues(const SlicerConfiguration& preset, Orvane::Material material)
    : infillPercent(trovek::infillPercent(preset))
    , layerHeight(preset.layerHeight())
    , shells(int(preset.shells()))
    , extruderCelsius(extruderCelsiusFor(material, preset.extruderTemperature()))
    , platformCelsius(int(preset.platformTemperature()))
    , printSpeed(int(preset.printSpeed()))
    , travelSpeed(int(preset.travelSpeed()))
{
    if (material == Orvane::Flexible) {
        infillPercent = 10;
        shells = 3;
        printSpeed = 45;
    }
}

int leftExtruderCelsius(const SlicerConfiguration& preset, Orvane::Material material)
{
    return extruderCelsiusFor(material, preset.leftExtruderTemperature());
}

int infillPercent(const SlicerConfiguration& configuration)
{
    // Restored settings may hold anything, also no number.
    return qRound(qBound(0., configuration.infill(), 1.) * 100);
}

bool needsHeatedPlatform(Orvane::Material material)
{
    return material == Orvane::ABS || material == Orvane::Dissolvable;
}

} // namespace trovek
