#pragma once

#include "trovek-ui/export.h"

#include <qtshared/material.h>
#include <trovek/slicer_configuration.h>

#include <QString>

#include <optional>

class QSettings;

namespace trovek {

/**
 * What the make-thing dialog remembers, in the forms in which it is stored.
 *
 * Whatever is absent, or is nothing that the dialog would have stored, is empty here.
 */
struct TROVEK_UI_EXPORT MakeThingSettings
{
    static MakeThingSettings read(const QSettings& settings);
    /** What is empty is not written, and what is there stays. */
    void write(QSettings& settings) const;

    std::optional<Orvane::Material> leftMaterial;
    std::optional<Orvane::Material> rightMaterial;
    std::optional<Orvane::Material> singleMaterial;
    /** 0 to 3, by index of the boxes. */
    std::optional<int> raft;
    std::optional<int> supports;
    std::optional<bool> advanced;
    std::optional<bool> preview;
    /** One of the presets, or else the name of a user's profile. */
    std::optional<SlicerConfiguration::Preset> preset;
    QString profileFolder;
    /** The one that the numbers belong to; a user's profile leaves it in the background. */
    std::optional<SlicerConfiguration::Preset> numbersPreset;
};

/**
 * The numbers of a preset as the user changed them.
 * @param context what they were changed for; numbers of another are left alone, since those for one
 *                material harm the print with another
 * @param configuration gets every stored number that its field can show
 */
TROVEK_UI_EXPORT void readNumbers(const QSettings& settings, const QString& context,
                                  SlicerConfiguration* configuration);
TROVEK_UI_EXPORT void writeNumbers(QSettings& settings, const QString& context,
                                   const SlicerConfiguration& configuration);

} // namespace trovek
