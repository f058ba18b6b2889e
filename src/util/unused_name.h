#pragma once

#include "trovek-ui/export.h"

#include <QDir>

#include <functional>

namespace trovek {

/**
 * A name that does not exist in the folder, of at most three that `nextName` gives.
 * @throws std::runtime_error "UUID generation spectacularly wrong." when all three exist
 */
TROVEK_UI_EXPORT QString unusedName(const QDir& folder, const std::function<QString()>& nextName);

} // namespace trovek
