#pragma once

#include <QString>

namespace trovek {

/**
 * Whether a new entry of this name is made in the folder it is meant for, on every system: no
 * separators, no "." or "..", no resource prefix, no drive letter.
 */
bool isPlainName(const QString& name);

} // namespace trovek
