#pragma once

#include "gcode/machine_definition.h"

#include <array>
#include <string>

class QIODevice;

namespace trovek::service {

/** What is to be known of a slicer's G-code before it is used. */
struct SlicedFile
{
    /** X, Y, Z: where its moves lead, in millimetres. */
    std::array<AxisRange, 3> reach;
    /** Right or only, left. */
    std::array<bool, 2> usesTool{};
    /** "PrusaSlicer 2.5.0 ..."; empty when it does not say. */
    std::string generator;
};

/**
 * Looks through it as fast as it can be read.
 * @param file positions absolute and in millimetres, as slicers write them
 * @throws std::runtime_error for a user when it cannot be read or moves nothing
 */
SlicedFile readSlicedFile(QIODevice& file);

/** @throws std::runtime_error for a user when it does not fit */
void checkFits(const MachineDefinition& machine, const SlicedFile& file);

} // namespace trovek::service
