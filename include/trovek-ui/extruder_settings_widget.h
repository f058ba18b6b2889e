#pragma once

#include "trovek-ui/export.h"

#include <qtshared/material.h>
#include <trovek/printer.h>
#include <trovek/slicer_configuration.h>

#include <QWidget>

#include <memory>

namespace trovek {

class MaterialComboBox;

/**
 * Chooses materials, the quality preset, raft and supports.
 *
 * Shows what a machine with one extruder needs at first, without a quality.
 */
class TROVEK_UI_EXPORT ExtruderSettingsWidget : public QWidget
{
    Q_OBJECT

public:
    /** What the raft and supports boxes offer, by index. */
    enum Choice { Off = 0, ColorMatched = 1, LeftExtruder = 2, RightExtruder = 3 };

    explicit ExtruderSettingsWidget(QWidget* parent = nullptr);
    ~ExtruderSettingsWidget() override;

    /** As the boxes have them, Orvane::UnknownMaterial when nothing is selected. */
    Orvane::Material leftMaterial() const;
    Orvane::Material rightMaterial() const;
    Orvane::Material singleMaterial() const;
    /** A material that the machine cannot use, or that is none, leaves the selection. */
    void setLeftMaterial(Orvane::Material material);
    void setRightMaterial(Orvane::Material material);
    void setSingleMaterial(Orvane::Material material);
    /** Greys what the machine cannot use and resets the choice to its usual one. */
    void sanitizeMaterialsForBot(Printer::Type type);

    /** SlicerConfiguration::Custom when no quality is chosen. */
    SlicerConfiguration::Preset quality() const;

    /** A Choice on a dual machine, 0 or 1 on a single one. */
    int raft() const;
    int supports() const;
    /** Out of range selects Off. */
    void setRaft(int choice);
    void setSupports(int choice);
    /** A user's profile says itself whether there are any. */
    void setRaftAndSupportsEnabled(bool enabled);

    /**
     * Which of the widgets are shown: those of a machine with two extruders, or of one. Raft and
     * supports that are on stay on: color-matched, unless a dual machine had them otherwise before.
     */
    void setDualExtrusion(bool dual);

public slots:
    void selectLowQuality();
    void selectMediumQuality();
    void selectHighQuality();
    void clearQuality();
    /** Puts a star on the preset's radio button, or takes it away. */
    void overridednessChanged(SlicerConfiguration::Preset type, bool hasOverrides);
    void raftCheckBoxSlot(bool checked);
    void supportsCheckBoxSlot(bool checked);

signals:
    void leftExtruderMaterialChanged(Orvane::Material material);
    void rightExtruderMaterialChanged(Orvane::Material material);
    void singleExtruderMaterialChanged(Orvane::Material material);
    void lowQualityToggled(bool checked);
    void mediumQualityToggled(bool checked);
    void highQualityToggled(bool checked);
    /** As raft() and supports() now are. */
    void raftChanged(int index);
    void supportsChanged(int index);
    /**
     * Whatever was sliced with the old settings is out of date. Comes after each of the signals
     * above, also where a box is refilled, or a radio button unchecked by another one.
     */
    void resetIsSliced();

private:
    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
