#include "make_dialog/make_thing_form.h"

#include "make_dialog/preview_row.h"

#include "trovek-ui/builtin_profile_widget.h"
#include "trovek-ui/collapse_expand_header.h"
#include "trovek-ui/extruder_label.h"
#include "trovek-ui/extruder_settings_widget.h"
#include "trovek-ui/make_thing_dialog.h"
#include "trovek-ui/profile_combo_box.h"
#include "trovek-ui/util.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace trovek {

namespace {

template <typename Widget>
Widget* named(Widget* widget, const char* name, const QString& toolTip = QString())
{
    widget->setObjectName(QLatin1String(name));
    widget->setToolTip(toolTip);
    return widget;
}

/** Return belongs to the main button of the dialog. */
QPushButton* makeButton(const QString& text, const char* name, const QString& toolTip,
                        QWidget* parent)
{
    QPushButton* const button = named(new QPushButton(text, parent), name, toolTip);
    button->setAutoDefault(false);
    return button;
}

void addColumns(QWidget* row, QLabel* label, QWidget* field)
{
    auto* const columns = new QHBoxLayout(row);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->addWidget(label);
    columns->addWidget(field, 1);
}

} // namespace

void MakeThingForm::build(QFormLayout& rows, SlicerConfiguration::Extruder extruder,
                          QWidget* dialog)
{
    options = named(new QWidget(rows.parentWidget()), "options");
    extruderLabel = named(new ExtruderLabel(extruder, options), "extruderLabel");
    extruders = named(new ExtruderSettingsWidget(options), "extruderSettings");
    advancedHeader = named(
        new CollapseExpandHeader(MakeThingDialog::tr("Ad&vanced Options"), options),
        "advancedHeader",
        MakeThingDialog::tr("Show additional settings for the toolpath generator and the bot"));
    addProfileRows();
    addProfileButtons();
    numbers = named(new BuiltInProfileWidget(options), "builtInProfile");

    auto* const column = new QVBoxLayout(options);
    column->setContentsMargins(0, 0, 0, 0);
    for (QWidget* const row :
         std::initializer_list<QWidget*>{extruderLabel, extruders, advancedHeader, profileRow,
                                         slicerRow, profileHelp, profileButtons, numbers})
        column->addWidget(row);
    rows.addRow(options);
    alignLabels(rows);
    ignoreWheelUnlessFocused(options);

    setDualExtrusion(false);
    preview = named(new PreviewRow(dialog), "preview");
}

void MakeThingForm::addProfileRows()
{
    profileRow = new QWidget(options);
    auto* const profileLabel =
        named(new QLabel(MakeThingDialog::tr("Pr&ofile:"), profileRow), "profileLabel");
    profiles = named(new ProfileComboBox(true, false, profileRow), "profiles",
                     MakeThingDialog::tr("The base profile to use for slicing"));
    profileLabel->setBuddy(profiles);
    addColumns(profileRow, profileLabel, profiles);

    slicerRow = new QWidget(options);
    auto* const slicerLabel =
        named(new QLabel(MakeThingDialog::tr("Slicer:"), slicerRow), "slicerLabel");
    slicer =
        named(new QLabel(slicerRow), "slicer", MakeThingDialog::tr("The slicer this profile uses"));
    addColumns(slicerRow, slicerLabel, slicer);

    profileHelp = named(new QLabel(options), "profileHelp");
    profileHelp->setTextFormat(Qt::RichText);
    profileHelp->setWordWrap(true);
    profileHelp->setOpenExternalLinks(true);
    profileHelp->setTextInteractionFlags(Qt::TextBrowserInteraction);
}

void MakeThingForm::addProfileButtons()
{
    profileButtons = named(new QWidget(options), "profileButtons");
    createButton =
        makeButton(MakeThingDialog::tr("&Create Profile..."), "createButton",
                   MakeThingDialog::tr("Create a new custom slicer profile"), profileButtons);
    editButton =
        makeButton(MakeThingDialog::tr("Ed&it Profile"), "editButton",
                   MakeThingDialog::tr("Edit this custom slicer profile in an external editor"),
                   profileButtons);
    deleteButton =
        makeButton(MakeThingDialog::tr("&Delete Profile..."), "deleteButton",
                   MakeThingDialog::tr("Delete this custom slicer profile"), profileButtons);
    auto* const row = new QHBoxLayout(profileButtons);
    row->setContentsMargins(0, 0, 0, 0);
    for (QPushButton* const button : {createButton, editButton, deleteButton})
        row->addWidget(button);
    row->addStretch();
}

/** As if all labels stood in the form's first column. */
void MakeThingForm::alignLabels(QFormLayout& rows)
{
    QList<QWidget*> labels;
    for (int row = 0; row < rows.rowCount(); ++row) {
        if (QLayoutItem* const item = rows.itemAt(row, QFormLayout::LabelRole))
            labels.append(item->widget());
    }
    for (const char* const name : {"name", "materialLabel", "resolutionLabel", "raftLabel",
                                   "supportsLabel", "profileLabel", "slicerLabel"})
        labels.append(options->findChild<QWidget*>(QLatin1String(name)));

    int widest = 0;
    for (const QWidget* const label : labels)
        widest = qMax(widest, label->sizeHint().width());
    for (QWidget* const label : labels)
        label->setMinimumWidth(widest);
    // Nothing is between this one and its value.
    extruderLabel->findChild<QWidget*>(QStringLiteral("name"))
        ->setMinimumWidth(widest + qMax(0, rows.horizontalSpacing()));
}

void MakeThingForm::setDualExtrusion(bool dual)
{
    extruders->setDualExtrusion(dual);
    numbers->setDualExtrusion(dual);
    keepWidth();
}

/** The dialog is as wide closed as open. */
void MakeThingForm::keepWidth()
{
    int widest = 0;
    for (const QWidget* const row : {static_cast<QWidget*>(numbers), profileRow, profileButtons})
        widest = qMax(widest, row->sizeHint().width());
    options->setMinimumWidth(widest);
}

void MakeThingForm::show(const Shown& shown)
{
    profileRow->setVisible(shown.advanced || shown.customProfile);
    slicerRow->setVisible(shown.advanced);
    profileHelp->setVisible(shown.customProfile && (shown.advanced || !shown.usable));
    profileButtons->setVisible(shown.customProfile && shown.advanced);
    numbers->setVisible(!shown.customProfile && shown.advanced);
}

} // namespace trovek
