#pragma once

#include "trovek-ui/messages/message.h"

// Messages about the user's own slicer profiles.

namespace message {

class TROVEK_UI_EXPORT ConfirmCustomProfileDelete : public Message
{
public:
    enum ResultCode { KeepProfile = 0, DeleteProfile = 1 };

    ConfirmCustomProfileDelete(const QString& profileName, QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT CustomProfileAlreadyExists : public Notice
{
public:
    CustomProfileAlreadyExists(const QString& profileName, QWidget* parent);
};

class TROVEK_UI_EXPORT CustomProfileDeleteFailed : public Notice
{
public:
    explicit CustomProfileDeleteFailed(QWidget* parent);
};

class TROVEK_UI_EXPORT CustomProfileEditFailed : public Notice
{
public:
    explicit CustomProfileEditFailed(QWidget* parent);
};

class TROVEK_UI_EXPORT SlashesInCustomProfileName : public Notice
{
public:
    explicit SlashesInCustomProfileName(QWidget* parent);
};

class TROVEK_UI_EXPORT StrandelConfigNeedsUpgrade : public Message
{
public:
    enum ResultCode { Cancel = 0, Upgrade = 1 };

    explicit StrandelConfigNeedsUpgrade(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT StrandelConfigTooNew : public Notice
{
public:
    explicit StrandelConfigTooNew(QWidget* parent);
};

} // namespace message
