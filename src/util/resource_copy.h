#pragma once

#include "trovek-ui/export.h"

#include <QByteArray>
#include <QDir>
#include <QResource>

namespace trovek {

/**
 * Writes a compiled-in file, or a whole compiled-in folder, to the disk.
 *
 * @param dstName a plain name, nothing that leads out of `dstDir`
 * @throws std::runtime_error "Failed to copy invalid QResource", "Failed to open QResource copy for
 *         writing", "Failed to write QResource copy", "Failed to create QResource copy directory"
 */
TROVEK_UI_EXPORT void copyQResource(const QResource& resource, const QDir& dstDir,
                                    const QString& dstName);

/**
 * The bytes of a compiled-in file.
 * @throws std::runtime_error "Failed to get data for invalid QResource" or "Failed to get data for
 *         non-file QResource"
 */
TROVEK_UI_EXPORT QByteArray qResourceData(const QResource& resource);

} // namespace trovek
