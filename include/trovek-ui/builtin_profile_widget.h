#pragma once

#include "trovek-ui/export.h"

#include <qtshared/material.h>
#include <trovek/slicer_configuration.h>

#include <QWidget>

#include <memory>

namespace trovek {

/**
 * Edits the numbers of one of the presets and tells whether any differs from the preset's.
 *
 * A field that differs has a star on its label, whose tooltip tells the default. Shows Standard
 * for PLA on a dual machine with a heated platform at first.
 */
class TROVEK_UI_EXPORT BuiltInProfileWidget : public QWidget
{
    Q_OBJECT

public:
    explicit BuiltInProfileWidget(QWidget* parent = nullptr);
    ~BuiltInProfileWidget() override;

    /**
     * Fills the fields with the preset's values as the materials ask for them, and heats the
     * platform where there is one and a material needs it. Custom and beyond change nothing.
     */
    void setSlicerConfig(SlicerConfiguration::Preset preset);
    /** One of the three presets. */
    SlicerConfiguration::Preset preset() const;
    /**
     * Limits the temperatures, and fills the fields anew, also for the same materials.
     * @param left the same as the other one on a machine with one extruder: either counts for
     *             the heat of the platform
     */
    void setMaterials(Orvane::Material rightOrOnly, Orvane::Material left);
    /** Sets the platform's heat anew, unless this is what the widget knows already. */
    void setHasHeatedPlatform(bool hasHeatedPlatform);
    /** Whether the left extruder's temperature is asked for. */
    void setDualExtrusion(bool dual);
    /** Only the numbers: raft, supports and extruders are the caller's. */
    SlicerConfiguration configuration() const;
    /**
     * Shows these numbers as overrides of the current preset, cut to the fields' ranges. For
     * restoring; the preset, the materials and the platform are set before.
     */
    void setConfiguration(const SlicerConfiguration& configuration);

public slots:
    /** Fills the fields anew with the current preset. */
    void resetToDefaults();
    /** Checks the box, where there is a heated platform. */
    void heatPlatformToggled(bool checked);
    void emitOverridednessChanged();

signals:
    void createProfileClicked();
    /**
     * Emitted with the current state by every change of a field, and once by each of the setters,
     * after all of its changes.
     */
    void overridednessChanged(SlicerConfiguration::Preset type, bool hasOverrides);

private:
    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
