#pragma once

#include <map>
#include <string>

namespace trovek::service {

/**
 * What stands for each name in braces. A name that is known but means nothing on this print, as the
 * temperature of a tool that stays cold, has an empty text.
 */
using ProfileCodeValues = std::map<std::string, std::string>;

/**
 * The G-code of a profile's file with values in place of names (docs/formats/profile_code.md).
 *
 * A line with a name that means nothing on this print becomes empty. Comments stay as they are.
 * @param fileName for errors
 * @throws std::runtime_error for a user: "start.gcode, line 5: ..."
 */
std::string expandProfileCode(const std::string& text, const std::string& fileName,
                              const ProfileCodeValues& values);

} // namespace trovek::service
