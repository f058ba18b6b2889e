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

    /** Makes them from top to bottom, as rows of the form; the preview's row has no place yet. */
    void build(QFormLayout& rows, SlicerConfiguration::Extruder extruder, QWidget* dialog);
    void show(const Shown& shown);

    ExtruderLabel* extruderLabel = nullptr;
    ExtruderSettingsWidget* extruders = nullptr;
    CollapseExpandHeader* advancedHeader = nullptr;
    QLabel* profileLabel = nullptr;
    ProfileComboBox* profiles = nullptr;
    QLabel* slicerLabel = nullptr;
    QLabel* slicer = nullptr;
    QLabel* profileHelp = nullptr;
    QWidget* profileButtons = nullptr;
    QPushButton* createButton = nullptr;
    QPushButton* editButton = nullptr;
    QPushButton* deleteButton = nullptr;
    BuiltInProfileWidget* numbers = nullptr;
    PreviewRow* preview = nullptr;

private:
    void buildProfileRows(QFormLayout& rows, QWidget* page);
    void buildProfileButtons(QWidget* page);
    void keepWidth(QWidget* page);
};

} // namespace trovek
