#pragma once

#include "trovek-ui/export.h"

#include <trovek/slicer_configuration.h>

#include <QString>

namespace trovek {

/**
 * What the radio button of a preset reads, translated, with its mnemonic; a star at the end when
 * the user has changed values of the preset.
 * @throws std::runtime_error "presetLongName: invalid type" for any but the three presets
 */
TROVEK_UI_EXPORT QString presetLongName(SlicerConfiguration::Preset preset, bool overridden);

} // namespace trovek
