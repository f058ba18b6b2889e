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

} // namespace

void MakeThingForm::build(QFormLayout& rows, SlicerConfiguration::Extruder extruder,
                          QWidget* dialog)
{
    QWidget* const page = rows.parentWidget();
    extruderLabel = named(new ExtruderLabel(extruder, page), "extruderLabel");
    extruders = named(new ExtruderSettingsWidget(page), "extruderSettings");
    advancedHeader = named(
        new CollapseExpandHeader(MakeThingDialog::tr("Ad&vanced Options"), page), "advancedHeader",
        MakeThingDialog::tr("Show additional settings for the toolpath generator and the bot"));
    rows.addRow(extruderLabel);
    rows.addRow(extruders);
    rows.addRow(advancedHeader);
    buildProfileRows(rows, page);
    numbers = named(new BuiltInProfileWidget(page), "builtInProfile");
    rows.addRow(numbers);

    keepWidth(page);
    ignoreWheelUnlessFocused(page);
    preview = named(new PreviewRow(dialog), "preview");
}

void MakeThingForm::buildProfileRows(QFormLayout& rows, QWidget* page)
{
    profiles = named(new ProfileComboBox(true, false, page), "profiles",
                     MakeThingDialog::tr("The base profile to use for slicing"));
    profileLabel = named(new QLabel(MakeThingDialog::tr("Pr&ofile:"), page), "profileLabel");
    profileLabel->setBuddy(profiles);
    slicer = named(new QLabel(page), "slicer", MakeThingDialog::tr("The slicer this profile uses"));
    slicerLabel = named(new QLabel(MakeThingDialog::tr("Slicer:"), page), "slicerLabel");

    profileHelp = named(new QLabel(page), "profileHelp");
    profileHelp->setTextFormat(Qt::RichText);
    profileHelp->setWordWrap(true);
    profileHelp->setOpenExternalLinks(true);
    profileHelp->setTextInteractionFlags(Qt::TextBrowserInteraction);
    buildProfileButtons(page);

    rows.addRow(profileLabel, profiles);
    rows.addRow(slicerLabel, slicer);
    rows.addRow(profileHelp);
    rows.addRow(profileButtons);
}

void MakeThingForm::buildProfileButtons(QWidget* page)
{
    profileButtons = named(new QWidget(page), "profileButtons");
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

/** The dialog is as wide closed as open, and for one extruder as for two. */
void MakeThingForm::keepWidth(QWidget* page)
{
    int widest = 0;
    for (const bool dual : {true, false}) {
        extruders->setDualExtrusion(dual);
        numbers->setDualExtrusion(dual);
        widest = qMax(widest, page->sizeHint().width());
    }
    page->setMinimumWidth(widest);
}

void MakeThingForm::show(const Shown& shown)
{
    profileLabel->setVisible(shown.advanced || shown.customProfile);
    profiles->setVisible(shown.advanced || shown.customProfile);
    slicerLabel->setVisible(shown.advanced);
    slicer->setVisible(shown.advanced);
    profileHelp->setVisible(shown.customProfile && (shown.advanced || !shown.usable));
    profileButtons->setVisible(shown.customProfile && shown.advanced);
    numbers->setVisible(!shown.customProfile && shown.advanced);
}

} // namespace trovek
