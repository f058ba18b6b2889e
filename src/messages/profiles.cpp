#include "trovek-ui/messages/profiles.h"

#include <QObject>

namespace message {

ConfirmCustomProfileDelete::ConfirmCustomProfileDelete(const QString& profileName, QWidget* parent)
    : Message(QMessageBox::Question,
              QObject::tr("Are you sure you want to delete \"%1\"?").arg(profileName),
              QObject::tr("This action cannot be undone."),
              {{QObject::tr("&Keep Profile"), KeepProfile, Default},
               {QObject::tr("&Delete Profile"), DeleteProfile}},
              parent)
{}

CustomProfileAlreadyExists::CustomProfileAlreadyExists(const QString& profileName, QWidget* parent)
    : Notice(QMessageBox::Critical,
             QObject::tr("A profile named %1 already exists").arg(profileName),
             QObject::tr("Choose a different name for the profile."), parent)
{}

CustomProfileDeleteFailed::CustomProfileDeleteFailed(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Failed to delete custom profile"),
             QObject::tr("The profile may have already been deleted, or you might not have "
                         "permissions to delete it."),
             parent)
{}

CustomProfileEditFailed::CustomProfileEditFailed(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Custom profile could not be opened for editing"),
             QString(), parent)
{}

SlashesInCustomProfileName::SlashesInCustomProfileName(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Invalid profile name"),
             QObject::tr("Profile name cannot contain slashes."), parent)
{}

StrandelConfigNeedsUpgrade::StrandelConfigNeedsUpgrade(QWidget* parent)
    : Message(QMessageBox::Question, QObject::tr("Custom profile requires upgrade"),
              QObject::tr("This profile was created for an older version of Orvane Slicer and is "
                          "not compatible with this version of Orvane Slicer. Upgrade this profile "
                          "to work with the latest version?"),
              {{QObject::tr("&Cancel"), Cancel, Default}, {QObject::tr("&Upgrade"), Upgrade}},
              parent)
{}

StrandelConfigTooNew::StrandelConfigTooNew(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Error in custom profile"),
             QObject::tr("This custom profile is for a newer version of Orvane Slicer than the "
                         "actual installed version of Orvane Slicer."),
             parent)
{}

} // namespace message
