#pragma once

#include "slicing/strandel_config.h"

#include <string>

namespace trovek::service {

/** A profile folder, as far as the service reads it. */
struct SliceProfile
{
    StrandelConfig config;
    /** The texts of "start.gcode" and "end.gcode" (docs/formats/profile_code.md). */
    std::string startCode;
    std::string endCode;
};

/**
 * Reads a profile folder's "strandel.json", "start.gcode" and "end.gcode".
 * @param folder absolute, UTF-8
 * @throws std::runtime_error for a user, with the file and what is wrong with it
 */
SliceProfile loadSliceProfile(const std::string& folder);

/**
 * The settings in the text of a "strandel.json", as users leave it: comments and a byte order mark
 * are passed over.
 * @throws std::runtime_error for a user, "strandel.json: " and what is wrong with it
 */
StrandelConfig parseStrandelConfig(const std::string& text);

} // namespace trovek::service
