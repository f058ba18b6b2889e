#pragma once

#include "trovek-ui/messages/message.h"

// Messages about the preferences in a machine's own memory.

namespace message {

class TROVEK_UI_EXPORT OnboardPreferencesConfirmReset : public Message
{
public:
    enum ResultCode { Cancel = 0, Reset = 1 };

    explicit OnboardPreferencesConfirmReset(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT OnboardPreferencesDiscardChanges : public Message
{
public:
    enum ResultCode { CloseWithoutSaving = 2, Cancel = 0, Save = 1 };

    explicit OnboardPreferencesDiscardChanges(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT OnboardPreferencesFailedReset : public Notice
{
public:
    explicit OnboardPreferencesFailedReset(QWidget* parent);
};

class TROVEK_UI_EXPORT OnboardPreferencesFailedWrite : public Notice
{
public:
    explicit OnboardPreferencesFailedWrite(QWidget* parent);
};

class TROVEK_UI_EXPORT OnboardPreferencesGenericError : public Notice
{
public:
    OnboardPreferencesGenericError(const QString& firmwareVersion, QWidget* parent);
};

class TROVEK_UI_EXPORT OnboardPreferencesMissingEepromMap : public Notice
{
public:
    explicit OnboardPreferencesMissingEepromMap(QWidget* parent);
};

class TROVEK_UI_EXPORT OnboardPreferencesPrinterAddedError : public Notice
{
public:
    explicit OnboardPreferencesPrinterAddedError(QWidget* parent);
};

class TROVEK_UI_EXPORT OnboardPreferencesPrinterBusy : public Notice
{
public:
    explicit OnboardPreferencesPrinterBusy(QWidget* parent);
};

class TROVEK_UI_EXPORT OnboardPreferencesPrinterNotConnected : public Notice
{
public:
    explicit OnboardPreferencesPrinterNotConnected(QWidget* parent);
};

class TROVEK_UI_EXPORT OnboardPreferencesSuccessfulReset : public Notice
{
public:
    explicit OnboardPreferencesSuccessfulReset(QWidget* parent);
};

class TROVEK_UI_EXPORT OnboardPreferencesSuccessfulWrite : public Notice
{
public:
    explicit OnboardPreferencesSuccessfulWrite(QWidget* parent);
};

} // namespace message
