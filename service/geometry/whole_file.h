#pragma once

#include "byte_sink.h"
#include "geometry_error.h"

#include <functional>
#include <string>
#include <string_view>

namespace trovek::geometry {

/** More than a hundred times what a scan or a model has. */
constexpr std::size_t kMostFileBytes = std::size_t(1) << 30;

/**
 * @param path absolute, UTF-8
 * @throws std::runtime_error with the path, when it is no regular file, cannot be read, or is
 * larger than kMostFileBytes
 */
std::string readWholeFile(const std::string& path);

/**
 * Reads a file and makes something of its bytes.
 * @throws FileFormatError with the path and what `read` says, std::runtime_error as readWholeFile()
 */
template <typename Read>
auto readFile(const std::string& path, Read read)
{
    const std::string bytes = readWholeFile(path);
    try {
        return read(std::string_view(bytes));
    } catch (const FileFormatError& error) {
        throw FileFormatError(path + ": " + error.what());
    }
}

/** What follows the last dot of a path's last part, in lower case. */
std::string endingOf(std::string_view path);

/**
 * Replaces a file by what is written, or leaves what was there when that throws.
 * @param path absolute, UTF-8
 * @throws std::runtime_error with the path, when it cannot be written
 */
void replaceFile(const std::string& path, const std::function<void(const ByteSink& sink)>& write);

} // namespace trovek::geometry
