#include "make_dialog/make_thing_dialog_p.h"
#include "make_dialog/tell.h"

#include "trovek-ui/builtin_profile_widget.h"
#include "trovek-ui/create_profile_dialog.h"
#include "trovek-ui/extruder_settings_widget.h"
#include "trovek-ui/machine_combo_box.h"
#include "trovek-ui/machine_types.h"
#include "trovek-ui/messages.h"
#include "trovek-ui/profile_combo_box.h"
#include "trovek-ui/profile_list_model.h"

#include <trovek/log.h>
#include <trovek/printer.h>
#include <trovek/text.h>

#include <QFileInfo>
#include <QLabel>
#include <QPointer>

#include <algorithm>
#include <exception>
#include <stdexcept>

// The part of the dialog that is about the user's own profiles.

static constexpr char kLogUnit[] = "src\\make_dialog\\make_thing_dialog";

namespace trovek {

namespace {

/** The presets have no file that says so. */
SlicerConfiguration::Slicer slicerOf(const Profile& profile)
{
    if (!profile.isOnDisk())
        return SlicerConfiguration::Strandel;
    try {
        return profile.slicer();
    } catch (const std::exception&) {
        // Shown as the profile's error.
        return SlicerConfiguration::UnknownSlicer;
    }
}

/** @throws std::runtime_error that says what keeps the profile from being used at all */
void readAll(const Profile& profile)
{
    if (!QFileInfo::exists(profile.path() + QLatin1String("/strandel.json")))
        throw std::runtime_error("strandel.json not found");
    profile.slicer();
    profile.machineTypes();
}

} // namespace

const Profile& MakeThingDialog::profile() const
{
    return *d->form.profiles->currentProfile();
}

/** The presets stand first in the list, in their order. */
void MakeThingDialog::selectPreset(SlicerConfiguration::Preset preset)
{
    d->form.profiles->setCurrentIndex(preset);
}

/** Nothing happens when there is none of that name, or when it cannot be used. */
void MakeThingDialog::selectUserProfile(const QString& name)
{
    const ProfileListModel& model = d->form.profiles->profileModel();
    for (int row = 0; row < model.rowCount(); ++row) {
        const Profile& candidate = *model.profileAt(row);
        if (candidate.isOnDisk() && candidate.name() == name && model.item(row)->isEnabled())
            d->form.profiles->setCurrentIndex(row);
    }
}

void MakeThingDialog::profileSelected(Profile* profile)
{
    BuiltInProfileWidget& numbers = *d->form.numbers;
    ExtruderSettingsWidget& extruders = *d->form.extruders;
    const SlicerConfiguration::Preset preset = profile->preset();
    switch (preset) {
    case SlicerConfiguration::Low:
        extruders.selectLowQuality();
        break;
    case SlicerConfiguration::Standard:
        extruders.selectMediumQuality();
        break;
    case SlicerConfiguration::High:
        extruders.selectHighQuality();
        break;
    case SlicerConfiguration::Custom:
        extruders.clearQuality();
        break;
    }
    if (preset != SlicerConfiguration::Custom && preset != numbers.preset()) {
        // What was changed in the other preset goes, and its mark with it.
        extruders.overridednessChanged(numbers.preset(), false);
        numbers.setSlicerConfig(preset);
    }
    d->form.slicer->setText(slicerToHumanString(slicerOf(*profile)));
    requestSanitize();
}

void MakeThingDialog::updateCustomProfileHelpText()
{
    d->profileIsReadable = true;
    if (!profile().isOnDisk())
        return;
    QLabel& help = *d->form.profileHelp;
    try {
        readAll(profile());
    } catch (const std::exception& error) {
        d->profileIsReadable = false;
        help.setText(tr("This custom slicer profile has an error:<br/><br/>Invalid profile: %1")
                         .arg(toQString(error.what()).toHtmlEscaped()));
        return;
    }
    if (!isProfileCompatibleWithMachine()) {
        help.setText(tr("This custom slicer profile is not valid for<br/>the selected bot."));
        return;
    }
    help.setText(
        tr("<p>You are using a custom profile.</p>"
           "<p>Clicking 'Edit Profile' below will open this profile's<br/>"
           "configuration file in your text editor.</p>"
           "<p><a href=\"%1\">See documentation for custom Orvane Slicer profiles.</a></p>")
            .arg(QStringLiteral(TROVEK_PROFILE_DOCUMENTATION_URL)));
}

bool MakeThingDialog::isProfileCompatibleWithMachine() const
{
    try {
        const std::vector<Printer::Type> types = profile().machineTypes();
        return d->machineType == Printer::UnknownType ||
               std::find(types.begin(), types.end(), d->machineType) != types.end();
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        return false;
    }
}

void MakeThingDialog::createProfile()
{
    auto* const dialog = new CreateProfileDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &CreateProfileDialog::profileCreated, d->form.profiles,
            QOverload<const QDir&>::of(&ProfileComboBox::selectProfile));
    dialog->open();
}

void MakeThingDialog::deleteProfile()
{
    const QPointer<MakeThingDialog> self(this);
    const QString path = profile().path();
    if (path.isEmpty())
        return;
    try {
        const auto answer = ask<message::ConfirmCustomProfileDelete>(path, this);
        if (!self.isNull() && answer == message::ConfirmCustomProfileDelete::DeleteProfile)
            d->form.profiles->profileModel().removeProfile(QDir(path));
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        tell<message::CustomProfileDeleteFailed>(this);
    }
}

void MakeThingDialog::editProfile()
{
    try {
        d->form.profiles->currentProfile()->edit();
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
        tell<message::CustomProfileEditFailed>(this);
    }
}

} // namespace trovek
