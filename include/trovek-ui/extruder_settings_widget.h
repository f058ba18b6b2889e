#pragma once

#include "trovek-ui/export.h"

#include <qtshared/material.h>
#include <trovek/printer.h>
#include <trovek/slicer_configuration.h>

#include <QWidget>

#include <memory>

namespace trovek {

class MaterialComboBox;

/** Chooses materials, the quality preset, raft and supports. */
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
    void setLeftMaterial(Orvane::Material material);
    void setRightMaterial(Orvane::Material material);
    void setSingleMaterial(Orvane::Material material);
    /** Greys what the machine cannot use and resets the choice to its usual one. */
    void sanitizeMaterialsForBot(Printer::Type type);

    /** SlicerConfiguration::Custom when no quality is chosen. */
    SlicerConfiguration::Preset quality() const;

    /** Of the boxes on a dual machine, 0 or 1 of the check boxes on a single one. */
    int raft() const;
    int supports() const;
    /** Out of range selects Off. */
    void setRaft(int choice);
    void setSupports(int choice);

    /** Which of the widgets are shown: those of a machine with two extruders, or of one. */
    void setDualExtrusion(bool dual);

public slots:
    void selectLowQuality();
    void selectMediumQuality();
    void selectHighQuality();
    void clearQuality();
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
    void raftChanged(int index);
    void supportsChanged(int index);
    /** Whatever was sliced with the old settings is out of date. */
    void resetIsSliced();

private:
    class TROVEK_UI_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
