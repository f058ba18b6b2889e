#include "messages/expected_messages.h"

#include <type_traits>

namespace {

using Make = std::function<Shown(QWidget*, QSettings*)>;

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

template <typename Message>
Shown choice(Message message)
{
    static_assert(std::is_same_v<decltype(message.exec()), typename Message::ResultCode>);
    return {message.box(), [message]() mutable {
                return int(message.exec());
            }};
}

template <typename Message>
Shown notice(Message message)
{
    static_assert(std::is_same_v<decltype(message.exec()), void>);
    return {message.box(), [message]() mutable {
                message.exec();
                return 0;
            }};
}

template <typename Message, typename... Texts>
Make plainChoice(Texts... texts)
{
    return [texts...](QWidget* parent, QSettings*) {
        return choice(Message(texts..., parent));
    };
}

template <typename Message, typename... Texts>
Make plainNotice(Texts... texts)
{
    return [texts...](QWidget* parent, QSettings*) {
        return notice(Message(texts..., parent));
    };
}

template <typename Message, typename... Texts>
Make hideableChoice(Texts... texts)
{
    return [texts...](QWidget* parent, QSettings* settings) {
        return choice(Message(texts..., parent, settings));
    };
}

template <typename Message, typename... Texts>
Make hideableNotice(Texts... texts)
{
    return [texts...](QWidget* parent, QSettings* settings) {
        return notice(Message(texts..., parent, settings));
    };
}

static_assert(message::AllowCancelScan::CancelScan == 1);
static_assert(message::AllowCancelScan::KeepScanning == 0);
static_assert(message::AllowDiscardScan::Cancel == 0);
static_assert(message::AllowDiscardScan::DiscardScan == 1);
static_assert(message::AllowRevertScan::Cancel == 0);
static_assert(message::AllowRevertScan::RevertScan == 1);
static_assert(message::ConfirmCustomProfileDelete::KeepProfile == 0);
static_assert(message::ConfirmCustomProfileDelete::DeleteProfile == 1);
static_assert(message::DiscardScanFromComputer::Discard == 1);
static_assert(message::DiscardScanFromComputer::Cancel == 0);
static_assert(message::DiscardScanFromComputerAndSharevane::Discard == 1);
static_assert(message::DiscardScanFromComputerAndSharevane::Cancel == 0);
static_assert(message::DualExtrudeWithSingleExtruderPrinter::Cancel == 0);
static_assert(message::DualExtrudeWithSingleExtruderPrinter::DontConvert == 1);
static_assert(message::DualExtrudeWithSingleExtruderPrinter::Convert == 2);
static_assert(message::DualExtrusionHelp::LearnMore == 2);
static_assert(message::DualExtrusionHelp::OK == 1);
static_assert(message::FileChooserOverwriteConfirm::Cancel == 0);
static_assert(message::FileChooserOverwriteConfirm::Replace == 1);
static_assert(message::FilenameTooLongForPrinter::Cancel == 0);
static_assert(message::FilenameTooLongForPrinter::Save == 1);
static_assert(message::KillScanToClose::Quit == 1);
static_assert(message::KillScanToClose::KeepScanning == 0);
static_assert(message::LeftExtrudeWithSingleExtruderPrinter::Cancel == 0);
static_assert(message::LeftExtrudeWithSingleExtruderPrinter::DontConvert == 1);
static_assert(message::LeftExtrudeWithSingleExtruderPrinter::Convert == 2);
static_assert(message::StrandelConfigNeedsUpgrade::Cancel == 0);
static_assert(message::StrandelConfigNeedsUpgrade::Upgrade == 1);
static_assert(message::ModelIsTiny::KeepSize == 0);
static_assert(message::ModelIsTiny::RescaleObject == 1);
static_assert(message::OldFirmwareCheck::NotNow == 1);
static_assert(message::OldFirmwareCheck::UpgradeFirmware == 2);
static_assert(message::OnboardPreferencesConfirmReset::Cancel == 0);
static_assert(message::OnboardPreferencesConfirmReset::Reset == 1);
static_assert(message::OnboardPreferencesDiscardChanges::CloseWithoutSaving == 2);
static_assert(message::OnboardPreferencesDiscardChanges::Cancel == 0);
static_assert(message::OnboardPreferencesDiscardChanges::Save == 1);
static_assert(message::PutOnPlatform::KeepPosition == 0);
static_assert(message::PutOnPlatform::MoveToPlatform == 1);
static_assert(message::PutOnPlatformZ::KeepPosition == 0);
static_assert(message::PutOnPlatformZ::MoveToPlatform == 1);
static_assert(message::QuitDigitizerBeforeSaving::Quit == 1);
static_assert(message::QuitDigitizerBeforeSaving::Cancel == 0);
static_assert(message::ResizeModel::DontScale == 0);
static_assert(message::ResizeModel::ScaleToFit == 1);
static_assert(message::SaveBeforeClosing::CloseWithoutSaving == 2);
static_assert(message::SaveBeforeClosing::Cancel == 0);
static_assert(message::SaveBeforeClosing::Save == 1);
static_assert(message::SaveBeforeOpening::DiscardChanges == 2);
static_assert(message::SaveBeforeOpening::Cancel == 0);
static_assert(message::SaveBeforeOpening::Save == 1);
static_assert(message::UnfinishedExportJobs::Cancel == 0);
static_assert(message::UnfinishedExportJobs::CloseOstrand == 1);
static_assert(message::UpdatesAvailable::Continue == 0);
static_assert(message::UpdatesAvailable::Download == 1);

} // namespace

const std::vector<ExpectedMessage>& expectedMessages()
{
    static const std::vector<ExpectedMessage> messages{
        {"AllowCancelScan",
         plainChoice<message::AllowCancelScan>(),
         QMessageBox::Question,
         "Cancel in-progress scan?",
         "Do you want to cancel the in-progress scan?",
         {{"&Cancel Scan", 1}, {"&Keep Scanning", 0, true}},
         ""},
        {"AllowDiscardScan",
         plainChoice<message::AllowDiscardScan>(),
         QMessageBox::Question,
         "Discard scan?",
         "Your current scan is not yet saved, and will be lost.",
         {{"&Cancel", 0, true}, {"&Discard Scan", 1}},
         ""},
        {"AllowRevertScan",
         plainChoice<message::AllowRevertScan>(),
         QMessageBox::Question,
         "Discard scan?",
         "Are you sure you want to discard this scan? Discarding will revert the MultiScan to the "
         "last scan added.",
         {{"&Cancel", 0}, {"&Revert Scan", 1, true}},
         ""},
        {"BackgroundServiceUnavailable",
         plainNotice<message::BackgroundServiceUnavailable>(),
         QMessageBox::Critical,
         "Background Service Unavailable",
         "The background job management service is not available. Please go to Services -> Restart "
         "Background Service. <br/>For more help please visit <a href=\"" TROVEK_SUPPORT_URL
         "\">" TROVEK_SUPPORT_URL "</a>",
         {{"&OK", 0, true}},
         ""},
        {"CloseDuringFirmwareUpload",
         plainNotice<message::CloseDuringFirmwareUpload>(),
         QMessageBox::Critical,
         "Firmware upload in progress",
         "This operation cannot be canceled. Please wait for it to complete.",
         {{"&OK", 0, true}},
         ""},
        {"ConfirmCustomProfileDelete",
         plainChoice<message::ConfirmCustomProfileDelete>(text("fine %2")),
         QMessageBox::Question,
         "Are you sure you want to delete \"fine %2\"?",
         "This action cannot be undone.",
         {{"&Keep Profile", 0, true}, {"&Delete Profile", 1}},
         ""},
        {"ConnectToPortFailed",
         plainNotice<message::ConnectToPortFailed>(text("/dev/ttyACM0")),
         QMessageBox::Critical,
         "Failed to connect to printer",
         "Couldn't connect to port /dev/ttyACM0",
         {{"&OK", 0, true}},
         ""},
        {"TrovekNotConnected",
         plainNotice<message::TrovekNotConnected>(),
         QMessageBox::Critical,
         "Service Error",
         "No connection to background service",
         {{"&OK", 0, true}},
         ""},
        {"CustomProfileAlreadyExists",
         plainNotice<message::CustomProfileAlreadyExists>(text("fine %2")),
         QMessageBox::Critical,
         "A profile named fine %2 already exists",
         "Choose a different name for the profile.",
         {{"&OK", 0, true}},
         ""},
        {"CustomProfileDeleteFailed",
         plainNotice<message::CustomProfileDeleteFailed>(),
         QMessageBox::Critical,
         "Failed to delete custom profile",
         "The profile may have already been deleted, or you might not have permissions to delete "
         "it.",
         {{"&OK", 0, true}},
         ""},
        {"CustomProfileEditFailed",
         plainNotice<message::CustomProfileEditFailed>(),
         QMessageBox::Critical,
         "Custom profile could not be opened for editing",
         "",
         {{"&OK", 0, true}},
         ""},
        {"DiscardScanFromComputer",
         plainChoice<message::DiscardScanFromComputer>(),
         QMessageBox::Question,
         "Are you sure you want to discard this scan?",
         "This will remove it from your computer.",
         {{"&Discard", 1}, {"&Cancel", 0, true}},
         ""},
        {"DiscardScanFromComputerAndSharevane",
         plainChoice<message::DiscardScanFromComputerAndSharevane>(),
         QMessageBox::Question,
         "Are you sure you want to discard this scan?",
         "This will remove it from your computer and from Sharevane.",
         {{"&Discard", 1}, {"&Cancel", 0, true}},
         ""},
        {"DualExtrudeWithSingleExtruderPrinter",
         plainChoice<message::DualExtrudeWithSingleExtruderPrinter>(),
         QMessageBox::Question,
         "This Thing is a dual-extrusion Thing",
         "This Thing will not print correctly on a single-extruder Orvane. Convert to print with a "
         "single extruder?",
         {{"&Cancel", 0}, {"&Don't Convert", 1}, {"C&onvert", 2, true}},
         ""},
        {"DualExtrusionHelp",
         hideableChoice<message::DualExtrusionHelp>(),
         QMessageBox::Information,
         "Dual Extrusion",
         "This is a dual extrusion Thing. Click 'Learn More' to learn how to use dual extrusion.",
         {{"&Learn More", 2}, {"&OK", 1, true}},
         "dualExtrusionHelpSkip"},
        {"ErrorSavingModel",
         plainNotice<message::ErrorSavingModel>(text("part %2.stl")),
         QMessageBox::Critical,
         "Error saving \"part %2.stl\"",
         "Ensure that you have permission to save files in that location.",
         {{"&OK", 0, true}},
         ""},
        {"ExecOstrandFailed",
         plainNotice<message::ExecOstrandFailed>(),
         QMessageBox::Critical,
         "Ostrand failed to start",
         "Unable to load scan in Ostrand.",
         {{"&OK", 0, true}},
         ""},
        {"ExportJobMoverFailed",
         plainNotice<message::ExportJobMoverFailed>(),
         QMessageBox::Critical,
         "Export failed",
         "An error prevented the file from being saved.",
         {{"&OK", 0, true}},
         ""},
        {"FailedToStartPrint",
         plainNotice<message::FailedToStartPrint>(),
         QMessageBox::Critical,
         "Print Failed",
         "An unexpected error occurred while starting print.",
         {{"&OK", 0, true}},
         ""},
        {"FileChooserOverwriteConfirm",
         plainChoice<message::FileChooserOverwriteConfirm>(text("part %2.stl")),
         QMessageBox::Question,
         "A file named \"part %2.stl\" already exists",
         "Do you want to replace it?",
         {{"&Cancel", 0, true}, {"&Replace", 1}},
         ""},
        {"FileNotFound",
         plainNotice<message::FileNotFound>(),
         QMessageBox::Critical,
         "File not found",
         "The input file no longer exists.",
         {{"&OK", 0, true}},
         ""},
        {"FilenameTooLongForPrinter",
         plainChoice<message::FilenameTooLongForPrinter>(text("a_short_name.x3g")),
         QMessageBox::Question,
         "This filename is too long to show on your Orvane",
         "To view this file on your Orvane you must use a file name no longer than 30 characters. "
         "Shorten the name to \"a_short_name.x3g\"?",
         {{"&Cancel", 0, true}, {"&Save", 1}},
         ""},
        {"FirmwarePackageDoesNotMatchDevice",
         plainNotice<message::FirmwarePackageDoesNotMatchDevice>(),
         QMessageBox::Critical,
         "Firmware file is for a different type of device",
         "The selected firmware file cannot be used on this type of device.",
         {{"&OK", 0, true}},
         ""},
        {"FirmwareUploadNoInternetConnection",
         plainNotice<message::FirmwareUploadNoInternetConnection>(),
         QMessageBox::Critical,
         "Firmware upload failed",
         "Unable to connect to the download site.",
         {{"&OK", 0, true}},
         ""},
        {"GenericTrovekError",
         plainNotice<message::GenericTrovekError>(),
         QMessageBox::Critical,
         "An error occurred in the background service.",
         "",
         {{"&OK", 0, true}},
         ""},
        {"ImageLoadFailed",
         plainNotice<message::ImageLoadFailed>(),
         QMessageBox::Critical,
         "The selected image couldn't be opened",
         "Check that you have permission to open the file.",
         {{"&OK", 0, true}},
         ""},
        {"InvalidFirmwarePackage",
         plainNotice<message::InvalidFirmwarePackage>(),
         QMessageBox::Critical,
         "An error occurred while loading the firmware package",
         "The file may be invalid.",
         {{"&OK", 0, true}},
         ""},
        {"KillScanToClose",
         plainChoice<message::KillScanToClose>(),
         QMessageBox::Question,
         "Quit before scan completes?",
         "Quitting while a scan is in progress will cancel the scan.",
         {{"&Quit", 1}, {"&Keep Scanning", 0, true}},
         ""},
        {"LeftExtrudeWithSingleExtruderPrinter",
         plainChoice<message::LeftExtrudeWithSingleExtruderPrinter>(),
         QMessageBox::Question,
         "This Thing is set to use the left extruder",
         "This Thing is set to use the left extruder of a dual extruder Orvane. It will not print "
         "correctly on a single extruder Orvane. Convert to print with a single extruder?",
         {{"&Cancel", 0}, {"&Don't Convert", 1}, {"C&onvert", 2, true}},
         ""},
        {"MaterialPCLAlert",
         hideableNotice<message::MaterialPCLAlert>(),
         QMessageBox::Information,
         "Orvane Flexible Filament",
         "Remember: Flexible Filament should be unloaded at 120C and loaded at 120C when there is "
         "no PLA to be purged. Flexible Filament will only adhere to bare acrylic build plates. "
         "See our product page <a href=\"" TROVEK_FLEXIBLE_FILAMENT_URL
         "\">here</a> for more info. ",
         {{"&OK", 0, true}},
         "skipPCLAlert"},
        {"StrandelConfigNeedsUpgrade",
         plainChoice<message::StrandelConfigNeedsUpgrade>(),
         QMessageBox::Question,
         "Custom profile requires upgrade",
         "This profile was created for an older version of Orvane Slicer and is not compatible "
         "with this version of Orvane Slicer. Upgrade this profile to work with the latest "
         "version?",
         {{"&Cancel", 0, true}, {"&Upgrade", 1}},
         ""},
        {"StrandelConfigTooNew",
         plainNotice<message::StrandelConfigTooNew>(),
         QMessageBox::Critical,
         "Error in custom profile",
         "This custom profile is for a newer version of Orvane Slicer than the actual installed "
         "version of Orvane Slicer.",
         {{"&OK", 0, true}},
         ""},
        {"ModelBoundingBoxIsEmpty",
         plainNotice<message::ModelBoundingBoxIsEmpty>(),
         QMessageBox::Critical,
         "Unreadable file",
         "This file could not be loaded. It may be an unsupported file format.",
         {{"&OK", 0, true}},
         ""},
        {"ModelIsTiny",
         plainChoice<message::ModelIsTiny>(),
         QMessageBox::Question,
         "Scale up object?",
         "This object seems very small. It may have been designed in inches. Would you like to "
         "scale it to mm?",
         {{"Keep Size", 0}, {"Rescale Object", 1, true}},
         ""},
        {"NothingOnPlate",
         plainNotice<message::NothingOnPlate>(),
         QMessageBox::Warning,
         "There's nothing on the plate",
         "Add an object to the plate and click Make again.",
         {{"&OK", 0, true}},
         ""},
        {"ObjectsUpdated",
         plainNotice<message::ObjectsUpdated>(),
         QMessageBox::Warning,
         "Objects updated",
         "Your objects have been updated. Please check that they are still arranged correctly, "
         "then click Make It to print.",
         {{"&OK", 0, true}},
         ""},
        {"OldFirmwareCheck",
         hideableChoice<message::OldFirmwareCheck>(text("Fabrino %2"), text("7.2")),
         QMessageBox::Warning,
         "New firmware available",
         "Your Fabrino %2 is running firmware version 7.2. Some features of Ostrand are not "
         "compatible with your firmware, and print quality has been greatly improved with our "
         "latest firmware. We recommend that you upgrade your firmware now.",
         {{"&Not Now", 1}, {"&Upgrade Firmware...", 2, true}},
         "skipWarningForOldFirmware"},
        {"OnboardPreferencesConfirmReset",
         plainChoice<message::OnboardPreferencesConfirmReset>(),
         QMessageBox::Question,
         "Are you sure you want to factory reset?",
         "All settings in the onboard preferences will be reverted to factory defaults. This may "
         "take up to a minute, and Ostrand will be unresponsive during this process.",
         {{"&Cancel", 0, true}, {"&Reset", 1}},
         ""},
        {"OnboardPreferencesDiscardChanges",
         plainChoice<message::OnboardPreferencesDiscardChanges>(),
         QMessageBox::Question,
         "Save changes to onboard preferences before closing?",
         "Closing without saving will not write changes to the bot.",
         {{"Close &without Saving", 2}, {"&Cancel", 0, true}, {"&Save", 1}},
         ""},
        {"OnboardPreferencesFailedReset",
         plainNotice<message::OnboardPreferencesFailedReset>(),
         QMessageBox::Critical,
         "Error resetting onboard preferences",
         "An error occurred while reading or writing to the EEPROM.",
         {{"&OK", 0, true}},
         ""},
        {"OnboardPreferencesFailedWrite",
         plainNotice<message::OnboardPreferencesFailedWrite>(),
         QMessageBox::Critical,
         "Failed to save onboard preferences",
         "",
         {{"&OK", 0, true}},
         ""},
        {"OnboardPreferencesGenericError",
         plainNotice<message::OnboardPreferencesGenericError>(text("7.2")),
         QMessageBox::Critical,
         "Error displaying onboard preferences",
         "An error occurred displaying onboard preferences for firmware version 7.2.",
         {{"&OK", 0, true}},
         ""},
        {"OnboardPreferencesMissingEepromMap",
         plainNotice<message::OnboardPreferencesMissingEepromMap>(),
         QMessageBox::Critical,
         "Error displaying onboard preferences",
         "No map found for this printer's firmware version.",
         {{"&OK", 0, true}},
         ""},
        {"OnboardPreferencesPrinterAddedError",
         plainNotice<message::OnboardPreferencesPrinterAddedError>(),
         QMessageBox::Critical,
         "Error reading onboard preferences",
         "An error occurred while reading the EEPROM.",
         {{"&OK", 0, true}},
         ""},
        {"OnboardPreferencesPrinterBusy",
         plainNotice<message::OnboardPreferencesPrinterBusy>(),
         QMessageBox::Critical,
         "Error displaying onboard preferences",
         "Cannot edit onboard preferences while the printer is printing, in jog mode, or otherwise "
         "busy.",
         {{"&OK", 0, true}},
         ""},
        {"OnboardPreferencesPrinterNotConnected",
         plainNotice<message::OnboardPreferencesPrinterNotConnected>(),
         QMessageBox::Critical,
         "Error displaying onboard preferences",
         "Printer is not connected.",
         {{"&OK", 0, true}},
         ""},
        {"OnboardPreferencesSuccessfulReset",
         plainNotice<message::OnboardPreferencesSuccessfulReset>(),
         QMessageBox::Information,
         "Successfully reset onboard preferences",
         "",
         {{"&OK", 0, true}},
         ""},
        {"OnboardPreferencesSuccessfulWrite",
         plainNotice<message::OnboardPreferencesSuccessfulWrite>(),
         QMessageBox::Information,
         "Successfully updated onboard preferences",
         "",
         {{"&OK", 0, true}},
         ""},
        {"PrinterIsBusy",
         plainNotice<message::PrinterIsBusy>(),
         QMessageBox::Critical,
         "Printer is busy",
         "Wait until your current activity finishes before starting a new job on this Orvane.",
         {{"&OK", 0, true}},
         ""},
        {"PutOnPlatform",
         plainChoice<message::PutOnPlatform>(),
         QMessageBox::Question,
         "Put object on platform?",
         "This object is off the platform. Do you want to put it on the platform?",
         {{"Keep Position", 0}, {"Move to Platform", 1, true}},
         ""},
        {"PutOnPlatformZ",
         plainChoice<message::PutOnPlatformZ>(),
         QMessageBox::Question,
         "Put object on platform?",
         "This object is off the platform. Do you want to move it vertically to the platform?",
         {{"Keep Position", 0}, {"Move to Platform", 1, true}},
         ""},
        {"QuitDigitizerBeforeSaving",
         plainChoice<message::QuitDigitizerBeforeSaving>(),
         QMessageBox::Question,
         "Are you sure you want to quit?",
         "Your current scan is not yet saved, and will be lost.",
         {{"&Quit", 1}, {"&Cancel", 0, true}},
         ""},
        {"ResizeModel",
         plainChoice<message::ResizeModel>(),
         QMessageBox::Question,
         "Object too large",
         "This object is too large for the current build volume. Do you want to scale it to fit?",
         {{"Don't Scale", 0}, {"Scale to Fit", 1, true}},
         ""},
        {"SaveBeforeClosing",
         plainChoice<message::SaveBeforeClosing>(),
         QMessageBox::Question,
         "Save changes to this file before closing?",
         "Closing without saving will discard any changes since the last save.",
         {{"Close &without Saving", 2}, {"&Cancel", 0}, {"&Save", 1, true}},
         ""},
        {"SaveBeforeOpening",
         plainChoice<message::SaveBeforeOpening>(),
         QMessageBox::Question,
         "Save changes to this file before opening another one?",
         "Opening a file without saving will discard any changes since the last save.",
         {{"&Discard Changes", 2}, {"&Cancel", 0}, {"&Save", 1, true}},
         ""},
        {"SlashesInCustomProfileName",
         plainNotice<message::SlashesInCustomProfileName>(),
         QMessageBox::Critical,
         "Invalid profile name",
         "Profile name cannot contain slashes.",
         {{"&OK", 0, true}},
         ""},
        {"CBOCalibrationDone",
         plainNotice<message::CBOCalibrationDone>(),
         QMessageBox::Information,
         "Cubio Calibration",
         "Cubio Calibration completed!",
         {{"&OK", 0, true}},
         ""},
        {"CBOCalibrationStart",
         plainNotice<message::CBOCalibrationStart>(),
         QMessageBox::Information,
         "Cubio Calibration",
         "Move the build platform until the nozzle lies in the center, then turn the threaded rod "
         "until the nozzle just touches the surface without pressing into it.",
         {{"&OK", 0, true}},
         ""},
        {"ThingFileVersionError",
         plainNotice<message::ThingFileVersionError>(),
         QMessageBox::Warning,
         "Thing File Version Error",
         "This thing file is from a newer version of ostrand. Please update your Ostran and try "
         "again.",
         {{"&OK", 0, true}},
         ""},
        {"SharevaneDescriptionRequired",
         plainNotice<message::SharevaneDescriptionRequired>(),
         QMessageBox::Critical,
         "Missing description",
         "A Thing's description cannot be blank.",
         {{"&OK", 0, true}},
         ""},
        {"SharevaneNameRequired",
         plainNotice<message::SharevaneNameRequired>(),
         QMessageBox::Critical,
         "Missing name",
         "A Thing's name cannot be blank.",
         {{"&OK", 0, true}},
         ""},
        {"SharevaneNameTooLong",
         plainNotice<message::SharevaneNameTooLong>(),
         QMessageBox::Critical,
         "Name too long",
         "A Thing's name cannot be more than 50 characters long.",
         {{"&OK", 0, true}},
         ""},
        {"SharevaneSignInFailed",
         plainNotice<message::SharevaneSignInFailed>(),
         QMessageBox::Critical,
         "Sharevane sign-in failed",
         "Verify that your username and password are correct.",
         {{"&OK", 0, true}},
         ""},
        {"SharevaneUploadFailed",
         plainNotice<message::SharevaneUploadFailed>(),
         QMessageBox::Critical,
         "Sharevane upload failed",
         "Check that you are connected to the internet.",
         {{"&OK", 0, true}},
         ""},
        {"UnfinishedExportJobs",
         plainChoice<message::UnfinishedExportJobs>(),
         QMessageBox::Warning,
         "Unfinished Exports",
         "There are unfinished exports in progress. Closing Ostrand will prevent these files from "
         "being placed in the correct directory.",
         {{"&Cancel", 0, true}, {"Close &Ostrand", 1}},
         ""},
        {"UpdatesAvailable",
         plainChoice<message::UpdatesAvailable>(text("Ostrand 3.1 is here.")),
         QMessageBox::Information,
         "Updates Available",
         "Ostrand 3.1 is here.",
         {{"&Continue", 0}, {"&Download", 1, true}},
         ""},
        {"WindowsServiceError",
         plainNotice<message::WindowsServiceError>(),
         QMessageBox::Critical,
         "Windows service error",
         "An error occurred while starting or stopping the background service.",
         {{"&OK", 0, true}},
         ""},
    };
    return messages;
}
