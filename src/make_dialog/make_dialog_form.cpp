#include "make_dialog/make_dialog_form.h"

#include "trovek-ui/machine_combo_box.h"
#include "trovek-ui/make_dialog.h"
#include "trovek-ui/util.h"

#include "make_dialog/fitting_scroll_area.h"

#include <QButtonGroup>
#include <QFormLayout>
#include <QFrame>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace trovek {

void MakeDialogForm::build(TrovekQt& facade, QDialog* dialog)
{
    auto* const frame = new QFrame(dialog);
    frame->setObjectName(QStringLiteral("frame"));
    frame->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);

    makeRadio = new QRadioButton(MakeDialog::tr("Ma&ke It Now"), frame);
    makeRadio->setObjectName(QStringLiteral("makeRadio"));
    makeRadio->setToolTip(MakeDialog::tr("Begin making when the \"Make It!\" button is pressed"));
    makeRadio->setChecked(true);
    exportRadio = new QRadioButton(MakeDialog::tr("E&xport to a File"), frame);
    exportRadio->setObjectName(QStringLiteral("exportRadio"));
    exportRadio->setToolTip(MakeDialog::tr("Export to a file to make via SD card"));
    auto* const modes = new QButtonGroup(dialog);
    modes->addButton(makeRadio);
    modes->addButton(exportRadio);
    auto* const modeRow = new QHBoxLayout;
    modeRow->addWidget(makeRadio);
    modeRow->addSpacing(12);
    modeRow->addWidget(exportRadio);
    modeRow->addStretch();

    machineCombo = new MachineComboBox(facade, frame);
    machineCombo->setObjectName(QStringLiteral("machineCombo"));
    machineCombo->setToolTip(MakeDialog::tr("The machine to build with"));
    machineLabel = new QLabel(frame);
    machineLabel->setObjectName(QStringLiteral("machineLabel"));
    machineLabel->setBuddy(machineCombo);

    rows = new QFormLayout(frame);
    rows->addRow(MakeDialog::tr("I want to:"), modeRow);
    rows->addRow(machineLabel, machineCombo);

    cancelButton = new QPushButton(MakeDialog::tr("Cancel"), dialog);
    cancelButton->setObjectName(QStringLiteral("cancelButton"));
    mainButton = new QPushButton(dialog);
    mainButton->setObjectName(QStringLiteral("mainButton"));
    mainButton->setAutoDefault(true);
    mainButton->setDefault(true);
    mainButton->setFocus();
    auto* const buttonRow = new QHBoxLayout;
    buttonRow->addWidget(cancelButton, 1);
    buttonRow->addWidget(mainButton, 2);

    auto* const page = new FittingScrollArea(dialog);
    page->setObjectName(QStringLiteral("page"));
    page->setWidget(frame);

    column = new QVBoxLayout(dialog);
    column->setSizeConstraint(QLayout::SetFixedSize);
    column->addWidget(page);
    column->addLayout(buttonRow);
    ignoreWheelUnlessFocused(dialog);
}

void MakeDialogForm::insertAboveButtons(QWidget* row)
{
    column->insertWidget(column->count() - 1, row);
}

void MakeDialogForm::layOutAround(QWidget* row)
{
    const QWidget* const dialog = column->parentWidget();
    for (QWidget* widget = row; widget != dialog; widget = widget->parentWidget()) {
        if (widget->layout() != nullptr)
            widget->layout()->activate();
        widget->updateGeometry();
    }
    column->activate();
}

void MakeDialogForm::moveButtonsToEndOfTabOrder()
{
    QWidget* last = column->parentWidget()->previousInFocusChain();
    while (last->focusPolicy() == Qt::NoFocus || last == cancelButton || last == mainButton)
        last = last->previousInFocusChain();
    QWidget::setTabOrder(last, cancelButton);
    QWidget::setTabOrder(cancelButton, mainButton);
}

} // namespace trovek
