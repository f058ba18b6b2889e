#pragma once

#include "trovek-ui/messages/message.h"

class QSettings;

// Messages about making a print: its materials and extruders, its start, its export.

namespace message {

class TROVEK_UI_EXPORT CBOCalibrationDone : public Notice
{
public:
    explicit CBOCalibrationDone(QWidget* parent);
};

class TROVEK_UI_EXPORT CBOCalibrationStart : public Notice
{
public:
    explicit CBOCalibrationStart(QWidget* parent);
};

class TROVEK_UI_EXPORT DualExtrudeWithSingleExtruderPrinter : public Message
{
public:
    enum ResultCode { Cancel = 0, DontConvert = 1, Convert = 2 };

    explicit DualExtrudeWithSingleExtruderPrinter(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT DualExtrusionHelp : public Message
{
public:
    enum ResultCode { LearnMore = 2, OK = 1 };

    DualExtrusionHelp(QWidget* parent, QSettings* settings);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT ExportJobMoverFailed : public Notice
{
public:
    explicit ExportJobMoverFailed(QWidget* parent);
};

class TROVEK_UI_EXPORT FailedToStartPrint : public Notice
{
public:
    explicit FailedToStartPrint(QWidget* parent);
};

class TROVEK_UI_EXPORT FilenameTooLongForPrinter : public Message
{
public:
    enum ResultCode { Cancel = 0, Save = 1 };

    FilenameTooLongForPrinter(const QString& shortenedFileName, QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT LeftExtrudeWithSingleExtruderPrinter : public Message
{
public:
    enum ResultCode { Cancel = 0, DontConvert = 1, Convert = 2 };

    explicit LeftExtrudeWithSingleExtruderPrinter(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT MaterialPCLAlert : public Notice
{
public:
    MaterialPCLAlert(QWidget* parent, QSettings* settings);
};

class TROVEK_UI_EXPORT PrinterIsBusy : public Notice
{
public:
    explicit PrinterIsBusy(QWidget* parent);
};

class TROVEK_UI_EXPORT UnfinishedExportJobs : public Message
{
public:
    enum ResultCode { Cancel = 0, CloseOstrand = 1 };

    explicit UnfinishedExportJobs(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

} // namespace message
