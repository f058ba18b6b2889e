#pragma once

#include "trovek-ui/messages/message.h"

class QSettings;

// Messages about the machines' firmware.

namespace message {

class TROVEK_UI_EXPORT CloseDuringFirmwareUpload : public Notice
{
public:
    explicit CloseDuringFirmwareUpload(QWidget* parent);
};

class TROVEK_UI_EXPORT FirmwarePackageDoesNotMatchDevice : public Notice
{
public:
    explicit FirmwarePackageDoesNotMatchDevice(QWidget* parent);
};

class TROVEK_UI_EXPORT FirmwareUploadNoInternetConnection : public Notice
{
public:
    explicit FirmwareUploadNoInternetConnection(QWidget* parent);
};

class TROVEK_UI_EXPORT InvalidFirmwarePackage : public Notice
{
public:
    explicit InvalidFirmwarePackage(QWidget* parent);
};

class TROVEK_UI_EXPORT OldFirmwareCheck : public Message
{
public:
    enum ResultCode { NotNow = 1, UpgradeFirmware = 2 };

    OldFirmwareCheck(const QString& machineName, const QString& firmwareVersion, QWidget* parent,
                     QSettings* settings);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

} // namespace message
