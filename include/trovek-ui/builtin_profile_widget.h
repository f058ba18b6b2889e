#pragma once

#include "trovek-ui/export.h"

#include <qtshared/material.h>
#include <trovek/slicer_configuration.h>

#include <QWidget>

#include <memory>

namespace trovek {

/** Edits the numbers of one of the presets and tells whether any differs from the preset's. */
class TROVEK_UI_EXPORT BuiltInProfileWidget : public QWidget
{
    Q_OBJECT

public:
    explicit BuiltInProfileWidget(QWidget* parent = nullptr);
    ~BuiltInProfileWidget() override;

    /** Fills the fields with the preset's values. Custom and beyond change nothing. */
    void setSlicerConfig(SlicerConfiguration::Preset preset);
    SlicerConfiguration::Preset preset() const;
    /** Fills the fields anew, with what suits the materials. */
    void setMaterials(Orvane::Material rightOrOnly, Orvane::Material left);
    void setHasHeatedPlatform(bool hasHeatedPlatform);
    void setDualExtrusion(bool dual);
    /** Only the numbers: raft, supports and extruders are the caller's. */
    SlicerConfiguration configuration() const;
    /** Shows these numbers as overrides of the current preset; what is out of range is cut to it.
     */
    void setConfiguration(const SlicerConfiguration& configuration);

public slots:
    void resetToDefaults();
    void heatPlatformToggled(bool checked);
    void emitOverridednessChanged();

signals:
    void createProfileClicked();
    void overridednessChanged(SlicerConfiguration::Preset type, bool hasOverrides);

private:
    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
