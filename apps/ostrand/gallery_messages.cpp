#include "gallery_messages.h"

#include <trovek-ui/message_box.h>
#include <trovek-ui/messages.h>

namespace ostrand {
namespace {

template <typename Message, typename... Texts>
SampleMessage plain(const char* name, Texts... texts)
{
    return {QLatin1String(name), [texts...](QWidget* parent, QSettings*) {
                return static_cast<trovek::MessageBox*>(Message(texts..., parent).box());
            }};
}

template <typename Message, typename... Texts>
SampleMessage withSettings(const char* name, Texts... texts)
{
    return {QLatin1String(name), [texts...](QWidget* parent, QSettings* settings) {
                return static_cast<trovek::MessageBox*>(Message(texts..., parent, settings).box());
            }};
}

} // namespace

std::vector<SampleMessage> sampleMessages()
{
    return {
        plain<message::AllowCancelScan>("AllowCancelScan"),
        plain<message::AllowDiscardScan>("AllowDiscardScan"),
        plain<message::AllowRevertScan>("AllowRevertScan"),
        plain<message::BackgroundServiceUnavailable>("BackgroundServiceUnavailable"),
        plain<message::CloseDuringFirmwareUpload>("CloseDuringFirmwareUpload"),
        plain<message::ConfirmCustomProfileDelete>("ConfirmCustomProfileDelete",
                                                   QStringLiteral("Fine PLA")),
        plain<message::ConnectToPortFailed>("ConnectToPortFailed", QStringLiteral("/dev/ttyACM0")),
        plain<message::TrovekNotConnected>("TrovekNotConnected"),
        plain<message::CustomProfileAlreadyExists>("CustomProfileAlreadyExists",
                                                   QStringLiteral("Fine PLA")),
        plain<message::CustomProfileDeleteFailed>("CustomProfileDeleteFailed"),
        plain<message::CustomProfileEditFailed>("CustomProfileEditFailed"),
        plain<message::DiscardScanFromComputer>("DiscardScanFromComputer"),
        plain<message::DiscardScanFromComputerAndSharevane>("DiscardScanFromComputerAndSharevane"),
        plain<message::DualExtrudeWithSingleExtruderPrinter>(
            "DualExtrudeWithSingleExtruderPrinter"),
        withSettings<message::DualExtrusionHelp>("DualExtrusionHelp"),
        plain<message::ErrorSavingModel>("ErrorSavingModel", QStringLiteral("bracket.stl")),
        plain<message::ExecOstrandFailed>("ExecOstrandFailed"),
        plain<message::ExportJobMoverFailed>("ExportJobMoverFailed"),
        plain<message::FailedToStartPrint>("FailedToStartPrint"),
        plain<message::FileChooserOverwriteConfirm>("FileChooserOverwriteConfirm",
                                                    QStringLiteral("bracket.x3g")),
        plain<message::FileNotFound>("FileNotFound"),
        plain<message::FilenameTooLongForPrinter>("FilenameTooLongForPrinter",
                                                  QStringLiteral("left_side_of_the_gear_hous.x3g")),
        plain<message::FirmwarePackageDoesNotMatchDevice>("FirmwarePackageDoesNotMatchDevice"),
        plain<message::FirmwareUploadNoInternetConnection>("FirmwareUploadNoInternetConnection"),
        plain<message::GenericTrovekError>("GenericTrovekError"),
        plain<message::ImageLoadFailed>("ImageLoadFailed"),
        plain<message::InvalidFirmwarePackage>("InvalidFirmwarePackage"),
        plain<message::KillScanToClose>("KillScanToClose"),
        plain<message::LeftExtrudeWithSingleExtruderPrinter>(
            "LeftExtrudeWithSingleExtruderPrinter"),
        withSettings<message::MaterialPCLAlert>("MaterialPCLAlert"),
        plain<message::StrandelConfigNeedsUpgrade>("StrandelConfigNeedsUpgrade"),
        plain<message::StrandelConfigTooNew>("StrandelConfigTooNew"),
        plain<message::ModelBoundingBoxIsEmpty>("ModelBoundingBoxIsEmpty"),
        plain<message::ModelIsTiny>("ModelIsTiny"),
        plain<message::NothingOnPlate>("NothingOnPlate"),
        plain<message::ObjectsUpdated>("ObjectsUpdated"),
        withSettings<message::OldFirmwareCheck>(
            "OldFirmwareCheck", QStringLiteral("Orvane Fabrino 2"), QStringLiteral("7.1")),
        plain<message::OnboardPreferencesConfirmReset>("OnboardPreferencesConfirmReset"),
        plain<message::OnboardPreferencesDiscardChanges>("OnboardPreferencesDiscardChanges"),
        plain<message::OnboardPreferencesFailedReset>("OnboardPreferencesFailedReset"),
        plain<message::OnboardPreferencesFailedWrite>("OnboardPreferencesFailedWrite"),
        plain<message::OnboardPreferencesGenericError>("OnboardPreferencesGenericError",
                                                       QStringLiteral("7.1")),
        plain<message::OnboardPreferencesMissingEepromMap>("OnboardPreferencesMissingEepromMap"),
        plain<message::OnboardPreferencesPrinterAddedError>("OnboardPreferencesPrinterAddedError"),
        plain<message::OnboardPreferencesPrinterBusy>("OnboardPreferencesPrinterBusy"),
        plain<message::OnboardPreferencesPrinterNotConnected>(
            "OnboardPreferencesPrinterNotConnected"),
        plain<message::OnboardPreferencesSuccessfulReset>("OnboardPreferencesSuccessfulReset"),
        plain<message::OnboardPreferencesSuccessfulWrite>("OnboardPreferencesSuccessfulWrite"),
        plain<message::PrinterIsBusy>("PrinterIsBusy"),
        plain<message::PutOnPlatform>("PutOnPlatform"),
        plain<message::PutOnPlatformZ>("PutOnPlatformZ"),
        plain<message::QuitDigitizerBeforeSaving>("QuitDigitizerBeforeSaving"),
        plain<message::ResizeModel>("ResizeModel"),
        plain<message::SaveBeforeClosing>("SaveBeforeClosing"),
        plain<message::SaveBeforeOpening>("SaveBeforeOpening"),
        plain<message::SlashesInCustomProfileName>("SlashesInCustomProfileName"),
        plain<message::CBOCalibrationDone>("CBOCalibrationDone"),
        plain<message::CBOCalibrationStart>("CBOCalibrationStart"),
        plain<message::ThingFileVersionError>("ThingFileVersionError"),
        plain<message::SharevaneDescriptionRequired>("SharevaneDescriptionRequired"),
        plain<message::SharevaneNameRequired>("SharevaneNameRequired"),
        plain<message::SharevaneNameTooLong>("SharevaneNameTooLong"),
        plain<message::SharevaneSignInFailed>("SharevaneSignInFailed"),
        plain<message::SharevaneUploadFailed>("SharevaneUploadFailed"),
        plain<message::UnfinishedExportJobs>("UnfinishedExportJobs"),
        plain<message::UpdatesAvailable>("UpdatesAvailable",
                                         QStringLiteral("Ostrand 2.0 is available.")),
        plain<message::WindowsServiceError>("WindowsServiceError"),
    };
}

} // namespace ostrand
