#pragma once

#include "gcode/gcode_estimate.h"
#include "motion_plan.h"

#include <vector>

namespace trovek::service {

struct MachineDefinition;

struct PrintPlan
{
    MotionPlan motion;
    GCodeRemarks remarks;
};

/**
 * Reads a whole program and checks that the machine can run it.
 *
 * @param progress bytes read of all sections; false stops
 * @throws GCodeError, GCodeCanceled, std::runtime_error "The file holds no G-code" and from a
 * source
 */
PrintPlan planPrint(const MachineDefinition& machine, std::vector<GCodeSection> sections,
                    const GCodeProgress& progress);

} // namespace trovek::service
