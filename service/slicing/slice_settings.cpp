#include "slicing/slice_settings.h"

#include "gcode/machine_definition.h"
#include "gcode/number_text.h"
#include "make_request.h"
#include "slicing/strandel_config.h"
#include "slicing/usual_settings.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace trovek::service {

namespace {

/** A number of a request as one that can be compared; nothing sensible is as large as its limit. */
int toInt(std::uint32_t value)
{
    return static_cast<int>(std::min<std::uint32_t>(value, 1'000'000));
}

ExtraPartChoice choiceOf(const MachineDefinition& machine, const std::string& what, bool isOn,
                         bool isAutomatic, std::uint32_t tool)
{
    if (!isOn)
        return ExtraPartChoice::Off;
    if (isAutomatic)
        return ExtraPartChoice::ColorMatched;
    if (tool >= static_cast<std::uint32_t>(machine.extruders)) {
        throw std::runtime_error(
            "The " + what + " cannot be printed with an extruder that the machine does not have");
    }
    return tool == 0 ? ExtraPartChoice::Right : ExtraPartChoice::Left;
}

/** What a request without a profile asks for, in the words of one. */
StrandelConfig presetConfig(const MachineDefinition& machine, const MakeRequest& request)
{
    const SlicerConfiguration& asked = request.configuration;
    StrandelConfig config;
    config.layerHeight = asked.layerHeight();
    config.firstLayerHeight = firstLayerHeightFor(asked.layerHeight());
    config.infill = asked.infill();
    config.infillPattern = InfillPattern::Linear;
    config.shells = toInt(asked.shells());
    config.solidLayers = solidLayersFor(asked.layerHeight());
    config.printSpeed = asked.printSpeed();
    config.outerShellSpeed = outerShellSpeedFor(asked.printSpeed());
    config.firstLayerSpeed = firstLayerSpeedFor(asked.printSpeed());
    config.travelSpeed = asked.travelSpeed();
    config.heatPlatform = asked.heatPlatform();
    config.platformCelsius = toInt(asked.platformTemperature());
    for (std::size_t tool = 0; tool < config.tools.size(); ++tool) {
        const bool isKnown = tool < request.materials.size();
        config.tools[tool] = materialSettings(isKnown ? request.materials[tool] : std::string());
    }
    config.tools[0].celsius = toInt(asked.extruderTemperature());
    config.tools[1].celsius = toInt(asked.leftExtruderTemperature());
    config.raft =
        choiceOf(machine, "raft", asked.raft(), asked.doAutoRaft(), asked.defaultRaftExtruder());
    config.supports = choiceOf(machine, "supports", asked.supports(), asked.doAutoSupport(),
                               asked.defaultSupportExtruder());
    return config;
}

int modelToolOf(const MachineDefinition& machine, SlicerConfiguration::Extruder extruder)
{
    if (machine.extruders < 2 || extruder == SlicerConfiguration::Right)
        return 0;
    return extruder == SlicerConfiguration::Left ? 1 : -1;
}

ExtraPart::Tool colorMatchedTool(const SliceSettings& settings)
{
    const bool isRight = settings.tools[0].isDissolvable();
    const bool isLeft = settings.tools[1].isDissolvable();
    if (isRight == isLeft)
        return ExtraPart::SameAsModel;
    return isRight ? ExtraPart::RightTool : ExtraPart::LeftTool;
}

ExtraPart extraPart(const SliceSettings& settings, ExtraPartChoice choice)
{
    ExtraPart part;
    part.isOn = choice != ExtraPartChoice::Off;
    if (settings.tools.size() < 2)
        return part;
    if (choice == ExtraPartChoice::ColorMatched)
        part.tool = colorMatchedTool(settings);
    else if (choice == ExtraPartChoice::Right)
        part.tool = ExtraPart::RightTool;
    else if (choice == ExtraPartChoice::Left)
        part.tool = ExtraPart::LeftTool;
    return part;
}

std::string extruderName(const MachineDefinition& machine, int tool)
{
    if (machine.extruders < 2)
        return "extruder";
    return tool == 0 ? "right extruder" : "left extruder";
}

void checkTemperature(const std::string& what, int celsius, int most)
{
    if (celsius <= most)
        return;
    throw std::runtime_error("The temperature of the " + what + ", " + std::to_string(celsius) +
                             " °C, is above what the machine can do: at most " +
                             std::to_string(most) + " °C");
}

void checkLayerHeight(const std::string& what, double height, double nozzle)
{
    // What is no height at all is told by its range.
    if (!(height > nozzle))
        return;
    throw std::runtime_error("A " + what + " of " + numberText(height) +
                             " mm is more than a nozzle of " + numberText(nozzle) +
                             " mm can print");
}

/** In the order in which a user would find out. */
void checkMachine(const MachineDefinition& machine, const SliceSettings& settings)
{
    for (int tool = 0; tool < machine.extruders; ++tool) {
        if (!mayUseTool(settings, tool))
            continue;
        const ToolSettings& used = settings.tools[static_cast<std::size_t>(tool)];
        checkTemperature(extruderName(machine, tool), used.celsius, machine.toolhead.maxCelsius);
        checkLayerHeight("layer height", settings.layerHeight, used.nozzleDiameter);
        checkLayerHeight("first layer height", settings.firstLayerHeight, used.nozzleDiameter);
    }
    if (settings.heatPlatform)
        checkTemperature("build plate", settings.platformCelsius, machine.platform.maxCelsius);
}

} // namespace

SliceSettings sliceSettings(const MachineDefinition& machine, const MakeRequest& request,
                            const StrandelConfig* profile)
{
    const StrandelConfig config = profile ? *profile : presetConfig(machine, request);

    SliceSettings settings;
    static_cast<PrintSettings&>(settings) = config;
    settings.tools.assign(config.tools.begin(), config.tools.begin() + machine.extruders);
    settings.modelTool = modelToolOf(machine, request.configuration.extruder());
    settings.raft = extraPart(settings, config.raft);
    settings.supports = extraPart(settings, config.supports);
    settings.heatPlatform = config.heatPlatform && machine.hasHeatedPlatform;

    checkMachine(machine, settings);
    checkRanges(config, "Slicer settings");
    return settings;
}

bool mayUseTool(const SliceSettings& settings, int tool)
{
    const auto uses = [&](const ExtraPart& part) {
        return part.isOn && part.tool == tool;
    };
    return settings.modelTool == tool || settings.modelTool == -1 || uses(settings.raft) ||
           uses(settings.supports);
}

} // namespace trovek::service
