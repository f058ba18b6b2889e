#include "slicing/slice_code.h"

#include "gcode/machine_definition.h"
#include "gcode/number_text.h"
#include "slicing/profile_code.h"
#include "slicing/slice_profile.h"
#include "slicing/slice_settings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace trovek::service {

namespace {

/** Room below the nozzle while it warms up. */
constexpr double kHeatingHeight = 10;

SlicerConfiguration configurationOf(const SliceSettings& settings,
                                    const std::array<bool, 2>& usesTool)
{
    SlicerConfiguration configuration;
    configuration.setExtruder(usesTool[0] && usesTool[1] ? SlicerConfiguration::Both
                              : usesTool[1]              ? SlicerConfiguration::Left
                                                         : SlicerConfiguration::Right);
    configuration.setHeatPlatform(settings.heatPlatform);
    configuration.setPlatformTemperature(static_cast<std::uint32_t>(settings.platformCelsius));
    configuration.setExtruderTemperature(static_cast<std::uint32_t>(settings.tools[0].celsius));
    if (settings.tools.size() > 1)
        configuration.setLeftExtruderTemperature(
            static_cast<std::uint32_t>(settings.tools[1].celsius));
    return configuration;
}

/** A prime line ends with a line break, as the line does that it stands in. */
std::string withoutLastBreak(std::string text)
{
    text.pop_back();
    return text;
}

ProfileCodeValues valuesFor(const MachineDefinition& machine, const SliceSettings& settings,
                            const std::array<bool, 2>& usesTool)
{
    const auto& [x, y, z] = machine.buildVolume;
    ProfileCodeValues values{
        {"x_min", numberText(x.min)},
        {"x_max", numberText(x.max)},
        {"y_min", numberText(y.min)},
        {"y_max", numberText(y.max)},
        {"z_min", numberText(z.min)},
        {"z_max", numberText(z.max)},
        {"heating_height", numberText(std::min(z.min + kHeatingHeight, z.max))},
        {"platform_temperature",
         settings.heatPlatform ? std::to_string(settings.platformCelsius) : std::string()},
        {"platform_off", machine.hasHeatedPlatform ? "0" : ""},
    };
    const char* const sides[] = {"right", "left"};
    for (int tool = 0; tool < 2; ++tool) {
        const auto index = static_cast<std::size_t>(tool);
        const std::string side = sides[tool];
        const bool isThere = index < settings.tools.size();
        const bool isUsed = isThere && usesTool[index];
        values[side + "_temperature"] =
            isUsed ? std::to_string(settings.tools[index].celsius) : std::string();
        values["prime_" + side] =
            isUsed ? withoutLastBreak(primeLine(machine, tool)) : std::string();
        values[side + "_off"] = isThere ? "0" : "";
    }
    return values;
}

} // namespace

StartEndCode sliceCode(const MachineDefinition& machine, const SliceSettings& settings,
                       const std::array<bool, 2>& usesTool, const SliceProfile* profile)
{
    if (!profile) {
        return startEndCode(machine, {}, configurationOf(settings, usesTool),
                            PlatformHeat::ByConfiguration);
    }
    const ProfileCodeValues values = valuesFor(machine, settings, usesTool);
    StartEndCode code;
    code.start = expandProfileCode(profile->startCode, "start.gcode", values);
    code.end = expandProfileCode(profile->endCode, "end.gcode", values);
    // What is sliced for the first tool alone does not name it.
    if (machine.extruders > 1 && !usesTool[1])
        code.start += "T0\n";
    return code;
}

} // namespace trovek::service
