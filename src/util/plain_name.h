#pragma once

#include "trovek-ui/export.h"

#include <QString>

namespace trovek {

/**
 * Whether a new entry of this name is made in the folder it is meant for, on every system: no
 * separators, no "." or "..", no resource prefix, no drive letter.
 */
TROVEK_UI_EXPORT bool isPlainName(const QString& name);

} // namespace trovek
