#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/file_chooser.h"

#include <QString>

#include <list>

namespace trovek {

/** The kinds of file that a make dialog exports, in the order of the save dialog. */
TROVEK_UI_EXPORT std::list<FileFilter> exportFilters();

/**
 * The filters with that one preselected whose text was saved, else the first.
 * @throws std::runtime_error "Empty filters"
 */
TROVEK_UI_EXPORT FileFilterList preselectFilter(const std::list<FileFilter>& filters,
                                                const QString& savedText);

/**
 * Creates an empty file in a temporary folder of its own, writable for the service, which may run
 * under another account. The folder is removed with the managed directories.
 * @return its absolute path
 * @throws std::runtime_error "Failed to create temporary file"
 */
TROVEK_UI_EXPORT QString createServiceOutput(const QString& fileName);

/**
 * Removes it with its folder, for a file that nobody needs until the end of the process. Nothing
 * happens when somebody has it open where that keeps a file from being removed.
 */
TROVEK_UI_EXPORT void removeServiceOutput(const QString& path);

} // namespace trovek
