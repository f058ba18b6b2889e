#include "slicing/prusa_options.h"

#include "gcode/machine_definition.h"
#include "gcode/number_text.h"
#include "slicing/slice_settings.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>

namespace trovek::service {

namespace {

constexpr int kRaftLayers = 3;
/** Between what is to come apart, in millimetres. */
constexpr double kRaftGap = 0.1;
constexpr double kSupportGap = 0.2;
/** What a tool pulls back before it rests, in retractions. */
constexpr double kParkedRetractions = 3;
constexpr double kFinestSpeedShare = 0.5;
constexpr double kBridgeSpeed = 50;

class Options
{
public:
    void set(const char* key, const std::string& value)
    {
        m_text += std::string(key) + " = " + value + "\n";
    }
    void set(const char* key, const char* value) { set(key, std::string(value)); }
    void set(const char* key, bool value) { set(key, value ? "1" : "0"); }
    void set(const char* key, int value) { set(key, std::to_string(value)); }
    void set(const char* key, double value) { set(key, numberText(value)); }
    void percent(const char* key, double part) { set(key, numberText(part * 100) + "%"); }

    const std::string& text() const { return m_text; }

private:
    std::string m_text;
};

/** One value a tool, with commas between. */
std::string each(const SliceSettings& settings,
                 const std::function<std::string(const ToolSettings&)>& valueOf)
{
    std::string list;
    for (const ToolSettings& tool : settings.tools)
        list += (list.empty() ? "" : ",") + valueOf(tool);
    return list;
}

std::string each(const SliceSettings& settings, double ToolSettings::*member)
{
    return each(settings, [&](const ToolSettings& tool) { return numberText(tool.*member); });
}

std::string same(const SliceSettings& settings, const std::string& value)
{
    return each(settings, [&](const ToolSettings&) { return value; });
}

const char* patternName(const SliceSettings& settings)
{
    // The slicer fills whole layers with nothing else.
    if (settings.infill >= 1)
        return "rectilinear";
    switch (settings.infillPattern) {
    case InfillPattern::Linear:
        return "rectilinear";
    case InfillPattern::Grid:
        return "grid";
    case InfillPattern::Gyroid:
        return "gyroid";
    case InfillPattern::Hexagonal:
        break;
    }
    return "honeycomb";
}

void addMachine(Options& options, const MachineDefinition& machine, const SliceSettings& settings)
{
    const auto& [x, y, z] = machine.buildVolume;
    const auto corner = [](double cornerX, double cornerY) {
        return numberText(cornerX) + "x" + numberText(cornerY);
    };
    options.set("printer_technology", "FFF");
    options.set("gcode_flavor", "marlin");
    options.set("bed_shape", corner(x.min, y.min) + "," + corner(x.max, y.min) + "," +
                                 corner(x.max, y.max) + "," + corner(x.min, y.max));
    options.set("max_print_height", z.max);
    options.set("z_offset", z.min);
    options.set("nozzle_diameter", each(settings, &ToolSettings::nozzleDiameter));
    // The machine's tool offsets are taken into account when the G-code is carried out.
    options.set("extruder_offset", same(settings, "0x0"));
    options.set("single_extruder_multi_material", false);
    options.set("use_relative_e_distances", true);
    options.set("use_firmware_retraction", false);
    options.set("use_volumetric_e", false);
    options.set("silent_mode", false);
    options.set("machine_limits_usage", "time_estimate_only");
    options.set("machine_max_feedrate_x", machine.maxFeed[MotorX]);
    options.set("machine_max_feedrate_y", machine.maxFeed[MotorY]);
    options.set("machine_max_feedrate_z", machine.maxFeed[MotorZ]);
    options.set("machine_max_feedrate_e", machine.maxFeed[MotorA]);
}

void addCode(Options& options)
{
    options.set("post_process", "");
    options.set("start_gcode", "");
    options.set("end_gcode", "");
    options.set("before_layer_gcode", "");
    // Relative distances are rounded one by one, so the counter begins anew with each layer.
    options.set("layer_gcode", "G92 E0");
    options.set("toolchange_gcode", "");
    options.set("between_objects_gcode", "");
    // One text counts for all tools.
    options.set("start_filament_gcode", "\"\"");
    options.set("end_filament_gcode", "\"\"");
    options.set("gcode_comments", false);
    options.set("gcode_label_objects", false);
    options.set("remaining_times", false);
    options.set("thumbnails", "");
}

void addTools(Options& options, const MachineDefinition& machine, const SliceSettings& settings)
{
    const std::string celsius =
        each(settings, [](const ToolSettings& tool) { return std::to_string(tool.celsius); });
    options.set("temperature", celsius);
    options.set("first_layer_temperature", celsius);
    const std::string platform =
        same(settings, std::to_string(settings.heatPlatform ? settings.platformCelsius : 0));
    options.set("bed_temperature", platform);
    options.set("first_layer_bed_temperature", platform);
    options.set("filament_diameter", each(settings, &ToolSettings::filamentDiameter));
    options.set("extrusion_multiplier", each(settings, &ToolSettings::flow));
    options.set("filament_soluble", each(settings, [](const ToolSettings& tool) {
                    return tool.isDissolvable() ? "1" : "0";
                }));

    const auto fan = [](const ToolSettings& tool) {
        return std::to_string(static_cast<int>(std::lround(tool.fan * 100)));
    };
    options.set("cooling", same(settings, "1"));
    options.set("fan_always_on",
                each(settings, [](const ToolSettings& tool) { return tool.fan > 0 ? "1" : "0"; }));
    options.set("min_fan_speed", each(settings, fan));
    options.set("max_fan_speed", each(settings, fan));
    options.set("bridge_fan_speed", each(settings, fan));
    options.set("disable_fan_first_layers", same(settings, "1"));
    options.set("full_fan_speed_layer", same(settings, "0"));
    options.set("slowdown_below_layer_time", each(settings, [](const ToolSettings& tool) {
                    return std::to_string(static_cast<int>(std::lround(tool.minimumLayerSeconds)));
                }));
    options.set("min_print_speed", same(settings, "10"));

    const double fastest = machine.maxFeed[MotorA];
    options.set("retract_length", each(settings, &ToolSettings::retraction));
    options.set("retract_speed", each(settings, [fastest](const ToolSettings& tool) {
                    return numberText(std::min(tool.retractionSpeed, fastest));
                }));
    options.set("deretract_speed", same(settings, "0"));
    options.set("retract_before_travel", same(settings, "2"));
    options.set("retract_layer_change", same(settings, "1"));
    options.set("retract_lift", same(settings, "0"));
    options.set("retract_restart_extra", same(settings, "0"));
    options.set("retract_length_toolchange", each(settings, [](const ToolSettings& tool) {
                    return numberText(tool.retraction * kParkedRetractions);
                }));
    options.set("retract_restart_extra_toolchange", same(settings, "0"));
    options.set("wipe", same(settings, "0"));
}

void addLayers(Options& options, const SliceSettings& settings)
{
    options.set("layer_height", settings.layerHeight);
    options.set("first_layer_height", settings.firstLayerHeight);
    options.set("perimeters", settings.shells);
    options.percent("fill_density", settings.infill);
    options.set("fill_pattern", patternName(settings));
    options.set("top_solid_layers", settings.solidLayers);
    options.set("bottom_solid_layers", settings.solidLayers);
    options.set("top_solid_min_thickness", 0);
    options.set("bottom_solid_min_thickness", 0);
    // By themselves these would make slopes thicker and fill what is small.
    options.set("extra_perimeters", false);
    options.set("solid_infill_below_area", 0);
    // As wide as any other, not twice as wide as it is high.
    options.set("first_layer_extrusion_width", 0);
    options.set("complete_objects", false);
    options.set("spiral_vase", false);
}

void addSpeeds(Options& options, const MachineDefinition& machine, const SliceSettings& settings)
{
    const double fastest = std::min(machine.maxFeed[MotorX], machine.maxFeed[MotorY]);
    const double print = std::min(settings.printSpeed, fastest);
    const double outer = std::min(settings.outerShellSpeed, print);
    const double first = std::min(settings.firstLayerSpeed, print);
    options.set("perimeter_speed", print);
    options.set("external_perimeter_speed", outer);
    options.set("small_perimeter_speed", print * kFinestSpeedShare);
    options.set("infill_speed", print);
    options.set("solid_infill_speed", print);
    options.set("top_solid_infill_speed", outer);
    options.set("gap_fill_speed", print * kFinestSpeedShare);
    options.set("bridge_speed", std::min(print, kBridgeSpeed));
    options.set("support_material_speed", print);
    options.set("support_material_interface_speed", outer);
    options.set("first_layer_speed", first);
    options.set("first_layer_speed_over_raft", first);
    options.set("travel_speed", std::min(settings.travelSpeed, fastest));
    options.set("travel_speed_z", std::min(settings.travelSpeed, machine.maxFeed[MotorZ]));
    options.set("max_print_speed", print);
}

/** Whether supports dissolve in what leaves the model alone: they may touch it then. */
bool dissolve(const SliceSettings& settings)
{
    const ExtraPart& supports = settings.supports;
    if (!supports.isOn || supports.tool == ExtraPart::SameAsModel ||
        supports.tool == settings.modelTool)
        return false;
    return settings.tools[static_cast<std::size_t>(supports.tool)].isDissolvable();
}

/** Options count tools from 1; 0 is the one in use. */
void addParts(Options& options, const SliceSettings& settings)
{
    const int model = settings.modelTool + 1;
    if (settings.modelTool >= 0) {
        options.set("perimeter_extruder", model);
        options.set("infill_extruder", model);
        options.set("solid_infill_extruder", model);
    }
    options.set("raft_layers", settings.raft.isOn ? kRaftLayers : 0);
    options.set("support_material", settings.supports.isOn);
    options.set("support_material_auto", true);
    options.set("support_material_threshold", static_cast<int>(std::lround(settings.supportAngle)));
    const ExtraPart& part = settings.supports.isOn ? settings.supports : settings.raft;
    const int tool = part.tool == ExtraPart::SameAsModel ? model : part.tool + 1;
    options.set("support_material_extruder", tool);
    options.set("support_material_interface_extruder", tool);
    // A wall around supports would hold on to the model.
    options.set("support_material_with_sheath", false);
    options.set("support_material_contact_distance", dissolve(settings) ? 0 : kSupportGap);
    options.set("support_material_synchronize_layers", dissolve(settings));
    options.set("raft_contact_distance", kRaftGap);
    // The start code primes the tools, and a skirt may not fit the platform that the model fits.
    options.set("skirts", 0);
    options.set("brim_width", 0);
    options.set("wipe_tower", false);
    options.set("ooze_prevention", false);
}

} // namespace

std::string prusaOptions(const MachineDefinition& machine, const SliceSettings& settings)
{
    Options options;
    addMachine(options, machine, settings);
    addCode(options);
    addTools(options, machine, settings);
    addLayers(options, settings);
    addSpeeds(options, machine, settings);
    addParts(options, settings);
    return options.text();
}

} // namespace trovek::service
