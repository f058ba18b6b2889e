#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace trovek::service {

struct MachineDefinition;
struct MakeRequest;
struct StrandelConfig;

/** Who prints a raft or supports. Tools count 0 right or only, 1 left. */
struct ExtraPart
{
    enum Tool : int { SameAsModel = -1, RightTool = 0, LeftTool = 1 };

    bool isOn = false;
    Tool tool = SameAsModel;
};

/** What one tool prints with. Degrees Celsius, millimetres. */
struct ToolSettings
{
    /** An identifier such as "pla". */
    std::string material;
    int celsius = 0;
    double filamentDiameter = 1.75;
    double nozzleDiameter = 0.4;
};

/**
 * Everything that a slicer is told of one print, whichever slicer it is.
 *
 * Lengths in millimetres, speeds in millimetres a second, temperatures in degrees Celsius, parts
 * as fractions of 1.
 */
struct SliceSettings
{
    double layerHeight = 0.2;
    double firstLayerHeight = 0.2;
    double infill = 0.1;
    int shells = 2;
    /** Solid layers at the bottom and the top. */
    int solidLayers = 4;
    double printSpeed = 80;
    double travelSpeed = 150;
    /** Of the cooling fan, 0 to 1. */
    double fan = 0;
    double retraction = 1;

    /** One a tool of the machine. */
    std::vector<ToolSettings> tools;
    /** The tool that prints the model; -1 leaves it to the file, whose parts may name tools. */
    int modelTool = 0;
    ExtraPart raft;
    ExtraPart supports;

    bool heatPlatform = false;
    int platformCelsius = 0;
};

/**
 * @param profile the settings of the request's profile folder; null without one, and then the
 * request's configuration counts
 * @throws std::runtime_error for a user when they contradict the machine, as a tool that it does
 * not have
 */
SliceSettings sliceSettings(const MachineDefinition& machine, const MakeRequest& request,
                            const StrandelConfig* profile);

} // namespace trovek::service
