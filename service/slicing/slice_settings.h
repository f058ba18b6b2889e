#pragma once

#include <string>
#include <vector>

namespace trovek::service {

struct MachineDefinition;
struct MakeRequest;
struct StrandelConfig;

/** What one tool prints with. Degrees Celsius, millimetres, millimetres a second. */
struct ToolSettings
{
    /** An identifier such as "pla". */
    std::string material;
    int celsius = 0;
    /** How much filament is pushed, against what the paths' widths ask for. */
    double flow = 1;
    /** Of the cooling fan, 0 to 1; it is off while the first layer is printed. */
    double fan = 0;
    /** A layer that would take less is printed more slowly. */
    double minimumLayerSeconds = 10;
    /** Filament pulled back before a travel, and how fast. */
    double retraction = 1;
    double retractionSpeed = 30;
    double filamentDiameter = 1.75;
    double nozzleDiameter = 0.4;

    bool isDissolvable() const { return material == "dissolvable"; }
};

enum class InfillPattern { Linear, Grid, Hexagonal, Gyroid };

/**
 * What of a print neither the machine nor a tool decides.
 *
 * Lengths in millimetres, speeds in millimetres a second, temperatures in degrees Celsius, parts
 * as fractions of 1.
 */
struct PrintSettings
{
    double layerHeight = 0.2;
    /** With a raft, the raft's first layer. */
    double firstLayerHeight = 0.25;
    double infill = 0.1;
    InfillPattern infillPattern = InfillPattern::Hexagonal;
    int shells = 2;
    /** Solid layers at the bottom and the top. */
    int solidLayers = 4;

    /** The highest speed while extruding; what needs care is slower. */
    double printSpeed = 80;
    double outerShellSpeed = 50;
    double firstLayerSpeed = 30;
    double travelSpeed = 150;

    /** Degrees from the horizontal: what is flatter than this gets supports. */
    double supportAngle = 45;

    bool heatPlatform = false;
    int platformCelsius = 0;
};

/** Who prints a raft or supports. Tools count 0 right or only, 1 left. */
struct ExtraPart
{
    /** SameAsModel: the tool that prints the part of the model next to it. */
    enum Tool : int { SameAsModel = -1, RightTool = 0, LeftTool = 1 };

    bool isOn = false;
    Tool tool = SameAsModel;
};

/** Everything that a slicer is told of one print, whichever slicer it is. */
struct SliceSettings : PrintSettings
{
    /** One a tool of the machine, right or only first. */
    std::vector<ToolSettings> tools;
    /** The tool that prints the model; -1 leaves it to the file, whose parts may name tools. */
    int modelTool = 0;
    ExtraPart raft;
    ExtraPart supports;
};

/**
 * The settings of a request, fitted to the machine.
 *
 * A machine with one tool prints everything with it, and one without a heated platform heats none.
 * @param profile the settings of the request's profile folder; null without one, and then the
 * request's configuration and materials count
 * @throws std::runtime_error for a user when a value is out of its range, is more than the machine
 * can do, or names a tool that it does not have
 */
SliceSettings sliceSettings(const MachineDefinition& machine, const MakeRequest& request,
                            const StrandelConfig* profile);

/** Whether the print may use the tool, as far as settings alone can tell. */
bool mayUseTool(const SliceSettings& settings, int tool);

} // namespace trovek::service
