#include "trovek-ui/messages/firmware.h"

#include <QObject>

namespace message {

CloseDuringFirmwareUpload::CloseDuringFirmwareUpload(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Firmware upload in progress"),
             QObject::tr("This operation cannot be canceled. Please wait for it to complete."),
             parent)
{}

FirmwarePackageDoesNotMatchDevice::FirmwarePackageDoesNotMatchDevice(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Firmware file is for a different type of device"),
             QObject::tr("The selected firmware file cannot be used on this type of device."),
             parent)
{}

FirmwareUploadNoInternetConnection::FirmwareUploadNoInternetConnection(QWidget* parent)
    : Notice(QMessageBox::Critical, QObject::tr("Firmware upload failed"),
             QObject::tr("Unable to connect to the download site."), parent)
{}

InvalidFirmwarePackage::InvalidFirmwarePackage(QWidget* parent)
    : Notice(QMessageBox::Critical,
             QObject::tr("An error occurred while loading the firmware package"),
             QObject::tr("The file may be invalid."), parent)
{}

OldFirmwareCheck::OldFirmwareCheck(const QString& machineName, const QString& firmwareVersion,
                                   QWidget* parent, QSettings* settings)
    : Message(
          QMessageBox::Warning, QObject::tr("New firmware available"),
          QObject::tr("Your %1 is running firmware version %2. Some features of Ostrand are not "
                      "compatible with your firmware, and print quality has been greatly improved "
                      "with our latest firmware. We recommend that you upgrade your firmware now.")
              .arg(machineName, firmwareVersion),
          {{QObject::tr("&Not Now"), NotNow},
           {QObject::tr("&Upgrade Firmware..."), UpgradeFirmware, Default}},
          parent, settings, QStringLiteral("skipWarningForOldFirmware"))
{
    showAsPlainText();
}

} // namespace message
