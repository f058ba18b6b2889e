#pragma once

#include <cstddef>
#include <functional>

namespace trovek::geometry {

/** Takes the next bytes of a file; throws std::runtime_error when it cannot. */
using ByteSink = std::function<void(const char* bytes, std::size_t size)>;

} // namespace trovek::geometry
