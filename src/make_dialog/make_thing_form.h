#pragma once

#include <trovek/slicer_configuration.h>

class QFormLayout;
class QLabel;
class QPushButton;
class QWidget;

namespace trovek {

class BuiltInProfileWidget;
class CollapseExpandHeader;
class ExtruderLabel;
class ExtruderSettingsWidget;
class PreviewRow;
class ProfileComboBox;

/** The widgets that the make-thing dialog adds to the make dialog's, with their texts and places.
 */
struct MakeThingForm
{
    /** Which of the rows below the header are shown. */
    struct Shown
    {
        bool advanced;
        bool customProfile;
        /** A custom profile that can be used. */
        bool usable;
    };

    /** Makes them from top to bottom, below the form's rows; the preview has no place yet. */
    void build(QFormLayout& rows, SlicerConfiguration::Extruder extruder, QWidget* dialog);
    void show(const Shown& shown);
    /** For a machine with two extruders, or with one. */
    void setDualExtrusion(bool dual);

    ExtruderLabel* extruderLabel = nullptr;
    ExtruderSettingsWidget* extruders = nullptr;
    CollapseExpandHeader* advancedHeader = nullptr;
    QWidget* profileRow = nullptr;
    ProfileComboBox* profiles = nullptr;
    QWidget* slicerRow = nullptr;
    QLabel* slicer = nullptr;
    QLabel* profileHelp = nullptr;
    QWidget* profileButtons = nullptr;
    QPushButton* createButton = nullptr;
    QPushButton* editButton = nullptr;
    QPushButton* deleteButton = nullptr;
    BuiltInProfileWidget* numbers = nullptr;
    PreviewRow* preview = nullptr;

private:
    void addProfileRows();
    void addProfileButtons();
    void alignLabels(QFormLayout& rows);
    void keepWidth();

    /** Holds everything but the preview: unlike a form, its layout leaves no gap for what is
     * hidden.
     */
    QWidget* options = nullptr;
};

} // namespace trovek
