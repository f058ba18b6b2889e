#pragma once

#include "gcode/start_end_code.h"

#include <array>

namespace trovek::service {

struct MachineDefinition;
struct SliceProfile;
struct SliceSettings;

/**
 * The start and end code around a sliced model: the profile's own, or the one around every print.
 *
 * Temperatures are those of the settings. Only tools in use are heated and primed.
 * @param usesTool right or only, left: what the sliced model prints with, or mayUseTool() before it
 * is known
 * @param profile null for a preset
 * @throws std::runtime_error for a user, with file and line, when the profile's code names
 * something that is not known
 */
StartEndCode sliceCode(const MachineDefinition& machine, const SliceSettings& settings,
                       const std::array<bool, 2>& usesTool, const SliceProfile* profile);

} // namespace trovek::service
