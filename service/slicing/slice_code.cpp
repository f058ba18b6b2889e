#include "slicing/slice_code.h"

#include "slicing/slice_profile.h"
#include "slicing/slice_settings.h"

namespace trovek::service {

StartEndCode sliceCode(const MachineDefinition& machine, const SliceSettings& settings,
                       const std::array<bool, 2>& usesTool, const SliceProfile* profile)
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
    (void)profile;
    return startEndCode(machine, {}, configuration, PlatformHeat::ByConfiguration);
}

} // namespace trovek::service
