#pragma once

#include "trovek-ui/messages/message.h"

// Messages about scans, for a host that drives a scanner.

namespace message {

class TROVEK_UI_EXPORT AllowCancelScan : public Message
{
public:
    enum ResultCode { CancelScan = 1, KeepScanning = 0 };

    explicit AllowCancelScan(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT AllowDiscardScan : public Message
{
public:
    enum ResultCode { Cancel = 0, DiscardScan = 1 };

    explicit AllowDiscardScan(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT AllowRevertScan : public Message
{
public:
    enum ResultCode { Cancel = 0, RevertScan = 1 };

    explicit AllowRevertScan(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT DiscardScanFromComputer : public Message
{
public:
    enum ResultCode { Discard = 1, Cancel = 0 };

    explicit DiscardScanFromComputer(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT DiscardScanFromComputerAndSharevane : public Message
{
public:
    enum ResultCode { Discard = 1, Cancel = 0 };

    explicit DiscardScanFromComputerAndSharevane(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT ExecOstrandFailed : public Notice
{
public:
    explicit ExecOstrandFailed(QWidget* parent);
};

class TROVEK_UI_EXPORT KillScanToClose : public Message
{
public:
    enum ResultCode { Quit = 1, KeepScanning = 0 };

    explicit KillScanToClose(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT QuitDigitizerBeforeSaving : public Message
{
public:
    enum ResultCode { Quit = 1, Cancel = 0 };

    explicit QuitDigitizerBeforeSaving(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

} // namespace message
