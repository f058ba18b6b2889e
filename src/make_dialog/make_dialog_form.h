#pragma once

class QDialog;
class QFormLayout;
class QLabel;
class QPushButton;
class QRadioButton;
class QVBoxLayout;
class QWidget;

namespace trovek {

class MachineComboBox;
class TrovekQt;

/** The widgets of a make dialog that all of its kinds have, with their texts and places. */
struct MakeDialogForm
{
    /** Makes them, as children of the dialog, and sets its layout. */
    void build(TrovekQt& facade, QDialog* dialog);

    // As MakeDialog says of its own.
    void insertAboveButtons(QWidget* row);
    void layOutAround(QWidget* row);
    void moveButtonsToEndOfTabOrder();

    QRadioButton* makeRadio = nullptr;
    QRadioButton* exportRadio = nullptr;
    /** Without a text, which depends on the mode, as the main button's. */
    QLabel* machineLabel = nullptr;
    MachineComboBox* machineCombo = nullptr;
    QFormLayout* rows = nullptr;
    /** The page with the rows, which scrolls on a small screen, and the row of buttons below. */
    QVBoxLayout* column = nullptr;
    QPushButton* cancelButton = nullptr;
    QPushButton* mainButton = nullptr;
};

} // namespace trovek
