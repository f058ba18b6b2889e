#pragma once

#include <QString>

namespace trovek {

/**
 * Makes one folder that only its user can read, from its first moment on; one file for each system.
 * @param enterable others may reach what is in it by name, but cannot list it
 * @return false when it exists or cannot be made
 */
bool makePrivateDirectory(const QString& path, bool enterable);

} // namespace trovek
