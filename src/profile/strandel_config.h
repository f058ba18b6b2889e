#pragma once

#include "trovek-ui/export.h"

#include <json/value.h>

#include <QDir>

namespace trovek {

/** The slicer's own settings in a profile's folder: "strandel.json". */

/** @throws std::runtime_error "Failed to open strandel.json" or "Failed to parse strandel.json" */
TROVEK_UI_EXPORT Json::Value readStrandelConfig(const QDir& profile);

/**
 * Replaces the file as a whole, so that whatever fails leaves the old one.
 * @throws std::runtime_error "Failed to open strandel.json for write" or "Failed to write
 *         strandel.json"
 */
TROVEK_UI_EXPORT void writeStrandelConfig(const QDir& profile, const Json::Value& config);

} // namespace trovek
