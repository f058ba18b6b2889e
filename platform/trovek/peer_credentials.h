#pragma once

#include "trovek/export.h"

#include <QtGlobal>

#include <string>

namespace trovek {

/**
 * True when the process at the other end of a connected local socket runs as the same user.
 *
 * @param socketDescriptor as QLocalSocket::socketDescriptor() gives it
 */
TROVEK_EXPORT bool peerIsSameUser(qintptr socketDescriptor);

/**
 * Refuses a folder in which another user could put a socket of their own.
 *
 * @param path the socket's path, UTF-8; the folder must belong to this user or the administrator,
 *             and neither its group nor others may write in it
 * @throws std::runtime_error "No folder for the service's socket: " or "Others can write the folder
 *         of the service's socket: ", and the folder
 */
TROVEK_EXPORT void checkSocketFolder(const std::string& path);

} // namespace trovek
