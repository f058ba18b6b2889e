#pragma once

#include <string>

namespace trovek::service {

struct MachineDefinition;
struct SliceSettings;

/**
 * The settings as the options file of prusa-slicer (docs/slicing.md has the table).
 *
 * Bed, volume and tool offsets come from the machine. Start and end code stay out: the service puts
 * them around what was sliced. Nothing in it lets the slicer run another program.
 */
std::string prusaOptions(const MachineDefinition& machine, const SliceSettings& settings);

} // namespace trovek::service
