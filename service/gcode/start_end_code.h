#pragma once

#include <trovek/slicer_configuration.h>

#include <string>
#include <vector>

namespace trovek::service {

struct MachineDefinition;

struct StartEndCode
{
    /** Whole lines of G-code, each with its line feed. */
    std::string start;
    std::string end;
};

/** What decides whether a heated platform is heated. */
enum class PlatformHeat {
    /** One of the heated tools prints with "abs"; for G-code, which comes without settings of its
       own. */
    ByMaterial,
    /** SlicerConfiguration::heatPlatform(). */
    ByConfiguration,
};

/**
 * The G-code around a print.
 *
 * The start homes the machine, heats the tools that the configuration's extruder names (on a
 * machine with one extruder always that one) and perhaps the platform, and draws a line along the
 * front edge with each heated tool. The end switches heaters and fans off, moves platform and
 * toolhead out of the way and releases the motors. Both begin by setting units, positions and
 * extruder mode, so they fit around any file.
 * @param materials identifiers such as "abs": right or only tool first, then left
 */
StartEndCode startEndCode(const MachineDefinition& machine,
                          const std::vector<std::string>& materials,
                          const SlicerConfiguration& configuration,
                          PlatformHeat platformHeat = PlatformHeat::ByMaterial);

/** A line along the front edge that fills a warm tool's nozzle; it ends with a line feed. */
std::string primeLine(const MachineDefinition& machine, int tool);

} // namespace trovek::service
