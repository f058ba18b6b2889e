#include "slicing/strandel_config.h"

#include "slicing/strandel_section.h"

#include <cstddef>
#include <stdexcept>

namespace trovek::service {

namespace {

constexpr char kToolKeys[][16] = {"right_extruder", "left_extruder"};

constexpr StrandelName<InfillPattern> kPatterns[] = {
    {"linear", InfillPattern::Linear},
    {"grid", InfillPattern::Grid},
    {"hexagonal", InfillPattern::Hexagonal},
    {"gyroid", InfillPattern::Gyroid},
};
constexpr StrandelName<ExtraPartChoice> kChoices[] = {
    {"off", ExtraPartChoice::Off},
    {"color_matched", ExtraPartChoice::ColorMatched},
    {"right", ExtraPartChoice::Right},
    {"left", ExtraPartChoice::Left},
};

/** Calls visit(key, member, least, most) for every number that is no tool's. */
template <typename Config, typename Visit>
void visitNumbers(Config& config, Visit visit)
{
    visit("layer_height", config.layerHeight, 0.01, 1.0);
    visit("first_layer_height", config.firstLayerHeight, 0.05, 1.0);
    visit("infill", config.infill, 0.0, 1.0);
    visit("shells", config.shells, 0, 100);
    visit("solid_layers", config.solidLayers, 0, 1000);
    visit("print_speed", config.printSpeed, 1.0, 500.0);
    visit("outer_shell_speed", config.outerShellSpeed, 0.5, 500.0);
    visit("first_layer_speed", config.firstLayerSpeed, 0.5, 500.0);
    visit("travel_speed", config.travelSpeed, 1.0, 500.0);
    visit("support_angle", config.supportAngle, 1.0, 90.0);
    visit("platform_temperature", config.platformCelsius, 0, 400);
}

template <typename Tool, typename Visit>
void visitToolNumbers(Tool& tool, Visit visit)
{
    visit("temperature", tool.celsius, 0, 400);
    visit("flow", tool.flow, 0.5, 2.0);
    visit("fan", tool.fan, 0.0, 1.0);
    visit("minimum_layer_seconds", tool.minimumLayerSeconds, 0.0, 300.0);
    visit("retraction", tool.retraction, 0.0, 20.0);
    visit("retraction_speed", tool.retractionSpeed, 1.0, 200.0);
    visit("filament_diameter", tool.filamentDiameter, 0.5, 5.0);
    visit("nozzle_diameter", tool.nozzleDiameter, 0.1, 2.0);
}

int versionOf(const Json::Value& document)
{
    return StrandelSection(document).wholeNumber("version", 1, 1'000'000);
}

} // namespace

StrandelVersion checkStrandelVersion(const Json::Value& document)
{
    const int version = versionOf(document);
    if (version > kStrandelVersion)
        return StrandelVersion::TooNew;
    readStrandelConfig(upgradeStrandelConfig(document));
    return version == kStrandelVersion ? StrandelVersion::UpToDate : StrandelVersion::NeedsUpgrade;
}

StrandelConfig readStrandelConfig(const Json::Value& document)
{
    const int version = versionOf(document);
    const StrandelSection whole(document);
    if (version != kStrandelVersion) {
        whole.fail("version", "is " + std::to_string(version) + "; this service reads version " +
                                  std::to_string(kStrandelVersion));
    }
    StrandelConfig config;
    visitNumbers(config, [&](const char* key, auto& number, auto least, auto most) {
        whole.read(key, number, least, most);
    });
    config.infillPattern = whole.named("infill_pattern", kPatterns);
    config.heatPlatform = whole.boolean("heat_platform");
    config.raft = whole.named("raft", kChoices);
    config.supports = whole.named("supports", kChoices);
    for (std::size_t i = 0; i < config.tools.size(); ++i) {
        const StrandelSection section = whole.section(kToolKeys[i]);
        ToolSettings& tool = config.tools[i];
        tool.material = section.text("material");
        visitToolNumbers(tool, [&](const char* key, auto& number, auto least, auto most) {
            section.read(key, number, least, most);
        });
    }
    return config;
}

void checkRanges(const StrandelConfig& config, const std::string& where)
{
    const auto check = [&where](const std::string& prefix) {
        return [&where, prefix](const char* key, const auto& number, auto least, auto most) {
            if (number >= least && number <= most)
                return;
            throw std::runtime_error(where + ": \"" + prefix + key + "\" " +
                                     rangeText(least, most));
        };
    };
    visitNumbers(config, check(std::string()));
    for (std::size_t i = 0; i < config.tools.size(); ++i)
        visitToolNumbers(config.tools[i], check(std::string(kToolKeys[i]) + "."));
}

} // namespace trovek::service
