#pragma once

#include "trovek-ui/export.h"

#include <trovek/printer.h>
#include <trovek/slicer_configuration.h>

#include <json/value.h>

#include <QDir>
#include <QString>

#include <vector>

namespace trovek {

/** What "profile.json" says of the machines and of the slicer, and how it is written. */

/**
 * @throws std::runtime_error "profile.json is missing the machine_type field", "profile.json
 *         machine_type field not an array", "machine_type contains invalid name " and the name
 */
TROVEK_UI_EXPORT std::vector<Printer::Type> machineTypesOf(const Json::Value& profileJson);

/**
 * @throws std::runtime_error "profile.json is missing the slicer field", "profile.json slicer field
 *         not a string", "Invalid slicer identifier\n" and the text
 */
TROVEK_UI_EXPORT SlicerConfiguration::Slicer slicerOf(const Json::Value& profileJson);

/** @throws std::runtime_error "Invalid slicer" or "Invalid machine type" */
TROVEK_UI_EXPORT Json::Value makeProfileJson(SlicerConfiguration::Slicer slicer,
                                             const std::vector<Printer::Type>& types);

/** @throws std::runtime_error "Cannot open profile.json for writing", "Cannot write profile.json"
 */
TROVEK_UI_EXPORT void writeProfileJson(const QDir& folder, const Json::Value& profileJson);

} // namespace trovek
