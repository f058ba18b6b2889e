#pragma once

#include <cstdint>
#include <string>

namespace trovek {

/** One of the copies of a machine's onboard memory that the service makes before it is written. */
struct EepromBackup
{
    /** Names it to the service; never a path. */
    std::string name;
    /** When it was made: milliseconds since 1970, UTC. */
    std::int64_t time = 0;
};

} // namespace trovek
