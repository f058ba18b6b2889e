#pragma once

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QRadioButton;
class QWidget;

namespace trovek {

class MaterialComboBox;

/** The fields of the extruder settings widget. All belong to it. */
struct ExtruderSettingsForm
{
    explicit ExtruderSettingsForm(QWidget* owner);

    /** Shows the widgets of a machine with two extruders, or of one. */
    void showExtruders(bool dual) const;

    QLabel* materialLabel;
    QLabel* leftLabel;
    QLabel* rightLabel;
    MaterialComboBox* left;
    MaterialComboBox* right;
    MaterialComboBox* single;

    QButtonGroup* qualities;
    QRadioButton* low;
    QRadioButton* standard;
    QRadioButton* high;

    QLabel* raftLabel;
    QComboBox* raft;
    QCheckBox* raftCheckBox;
    QLabel* supportsLabel;
    QComboBox* supports;
    QCheckBox* supportsCheckBox;
    QLabel* help;

private:
    void addMaterials(QWidget* owner, QGridLayout* grid);
    void addQualities(QWidget* owner, QGridLayout* grid);
    void addRaftAndSupports(QWidget* owner, QGridLayout* grid);
    void addHelp(QWidget* owner, QGridLayout* grid);
};

} // namespace trovek
