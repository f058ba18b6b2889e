#pragma once

#include "trovek-ui/export.h"

#include <json/value.h>

#include <QString>

namespace trovek {

/**
 * Writes a document of onboard preferences as JSON, whole or not at all.
 * @throws std::runtime_error with a text for the user
 */
TROVEK_UI_EXPORT void savePreferencesFile(const QString& path, const Json::Value& map);

/**
 * Reads what savePreferencesFile() wrote, or a text editor since. Only the form can tell whether
 * its entries and values suit a printer.
 * @throws std::runtime_error with a text for the user
 */
TROVEK_UI_EXPORT Json::Value loadPreferencesFile(const QString& path);

} // namespace trovek
