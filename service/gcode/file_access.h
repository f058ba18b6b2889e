#pragma once

#include "gcode_reader.h"

#include <memory>
#include <string>

class QFile;

namespace trovek::service {

/**
 * Opens a file that a client named, for reading.
 *
 * A regular file only, be it through a link: no folder, and no device or pipe, which could block
 * for ever.
 * @param path absolute, UTF-8
 * @throws std::runtime_error for a user, with the path
 */
std::unique_ptr<QFile> openInput(const std::string& path);

/**
 * Opens a file that a client made for the service to write into, and empties it.
 *
 * It must be there already: a regular file of the user that the service runs as, with one name
 * only, and neither it nor its folder may be a link. A file that fails a check keeps its contents.
 * Nothing is created. It is not buffered, so that a full disk is told by the write that it fails.
 * @param path absolute, UTF-8
 * @throws std::runtime_error for a user, with the path
 */
std::unique_ptr<QFile> openOutput(const std::string& path);

/**
 * Checks a folder that a client named for the service to write several files into.
 *
 * It must be there already, belong to the user that the service runs as, and be no link.
 * @param path absolute, UTF-8
 * @throws std::runtime_error for a user, with the path
 */
void checkOutputFolder(const std::string& path);

/**
 * Opens a file of such a folder, empty. It is made when it is missing; one that is there must pass
 * the checks of openOutput().
 * @param name without a slash
 * @throws std::runtime_error for a user, with the path
 */
std::unique_ptr<QFile> openOutputIn(const std::string& folder, const std::string& name);

/** Reads the file from its beginning, whatever was read before; shares its ownership. */
ByteSource byteSourceOf(std::shared_ptr<QFile> file);

} // namespace trovek::service
