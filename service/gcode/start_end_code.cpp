#include "start_end_code.h"

#include "machine_definition.h"
#include "number_text.h"

#include <algorithm>
#include <cmath>

namespace trovek::service {

namespace {

constexpr char kAbs[] = "abs";
constexpr double kTravelMmPerMinute = 6000;
constexpr double kPrimeMmPerMinute = 900;
constexpr double kHeatingHeight = 10;
constexpr double kPrimeHeight = 0.3;
constexpr double kPrimeLength = 80;
constexpr double kPrimeFilament = 12;
constexpr double kPrimeEdge = 5;
constexpr double kPrimeSpacing = 4;

struct HeatedTool
{
    int tool;
    std::uint32_t celsius;
};

std::vector<HeatedTool> heatedTools(const MachineDefinition& machine,
                                    const SlicerConfiguration& configuration)
{
    const HeatedTool right{0, configuration.extruderTemperature()};
    const HeatedTool left{1, configuration.leftExtruderTemperature()};
    if (machine.extruders < 2 || configuration.extruder() == SlicerConfiguration::Right)
        return {right};
    if (configuration.extruder() == SlicerConfiguration::Left)
        return {left};
    return {right, left};
}

bool printsWithAbs(const std::vector<HeatedTool>& tools, const std::vector<std::string>& materials)
{
    return std::any_of(tools.begin(), tools.end(), [&](const HeatedTool& heated) {
        const auto index = static_cast<std::size_t>(heated.tool);
        return index < materials.size() && materials[index] == kAbs;
    });
}

std::string target(const char* code, const HeatedTool& heated)
{
    return std::string(code) + " T" + std::to_string(heated.tool) + " S" +
           std::to_string(heated.celsius) + "\n";
}

std::string feed(double mmPerMinute)
{
    return " F" + numberText(mmPerMinute) + "\n";
}

} // namespace

std::string primeLine(const MachineDefinition& machine, int tool)
{
    const AxisRange& x = machine.buildVolume[0];
    const AxisRange& y = machine.buildVolume[1];
    const AxisRange& z = machine.buildVolume[2];
    const double length = std::min(kPrimeLength, x.length() - 2 * kPrimeEdge);
    const std::string yText = numberText(y.min + kPrimeEdge + tool * kPrimeSpacing);
    const std::string xBegin = numberText(x.min + kPrimeEdge);
    const std::string xEnd = numberText(x.min + kPrimeEdge + length);
    return "T" + std::to_string(tool) + "\n" + "G92 E0\n" + "G1 X" + xBegin + " Y" + yText +
           feed(kTravelMmPerMinute) + "G1 Z" + numberText(z.min + kPrimeHeight) +
           feed(kPrimeMmPerMinute) + "G1 X" + xEnd + " E" + numberText(kPrimeFilament) +
           feed(kPrimeMmPerMinute) + "G92 E0\n" + "G1 Z" + numberText(z.min + kHeatingHeight) +
           feed(kPrimeMmPerMinute);
}

StartEndCode startEndCode(const MachineDefinition& machine,
                          const std::vector<std::string>& materials,
                          const SlicerConfiguration& configuration, PlatformHeat platformHeat)
{
    const std::vector<HeatedTool> tools = heatedTools(machine, configuration);
    const bool heatPlatform = machine.hasHeatedPlatform && (platformHeat == PlatformHeat::ByMaterial
                                                                ? printsWithAbs(tools, materials)
                                                                : configuration.heatPlatform());
    const AxisRange& z = machine.buildVolume[2];

    StartEndCode code;
    std::string& start = code.start;
    start += "; start code\n"
             "G21\n"
             "G90\n"
             "M82\n"
             "G28\n"
             "G1 Z" +
             numberText(std::min(z.min + kHeatingHeight, z.max)) + feed(kPrimeMmPerMinute);
    // The platform takes longest, so it starts first and everything warms up together.
    if (heatPlatform)
        start += "M140 S" + std::to_string(configuration.platformTemperature()) + "\n";
    for (const HeatedTool& heated : tools)
        start += target("M104", heated);
    if (heatPlatform)
        start += "M190 S" + std::to_string(configuration.platformTemperature()) + "\n";
    for (const HeatedTool& heated : tools)
        start += target("M109", heated);
    for (auto heated = tools.rbegin(); heated != tools.rend(); ++heated)
        start += primeLine(machine, heated->tool);
    start += "; end of start code\n";

    std::string& end = code.end;
    end += "; end code\n"
           "G21\n"
           "G90\n"
           "G92.1\n";
    for (int tool = 0; tool < machine.extruders; ++tool)
        end += "M104 T" + std::to_string(tool) + " S0\n";
    if (machine.hasHeatedPlatform)
        end += "M140 S0\n";
    // All the way down rather than a little up: that fits below a print of any height.
    end += "M107\n"
           "G1 Z" +
           numberText(z.max) + feed(kPrimeMmPerMinute) +
           "G28 X Y\n"
           "M84\n"
           "; end of end code\n";
    return code;
}

} // namespace trovek::service
