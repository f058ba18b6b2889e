#pragma once

#include "trovek-ui/messages/message.h"

// Messages about the files that a user opens and saves.

namespace message {

class TROVEK_UI_EXPORT ErrorSavingModel : public Notice
{
public:
    ErrorSavingModel(const QString& fileName, QWidget* parent);
};

class TROVEK_UI_EXPORT FileChooserOverwriteConfirm : public Message
{
public:
    enum ResultCode { Cancel = 0, Replace = 1 };

    FileChooserOverwriteConfirm(const QString& fileName, QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT FileNotFound : public Notice
{
public:
    explicit FileNotFound(QWidget* parent);
};

class TROVEK_UI_EXPORT ImageLoadFailed : public Notice
{
public:
    explicit ImageLoadFailed(QWidget* parent);
};

class TROVEK_UI_EXPORT SaveBeforeClosing : public Message
{
public:
    enum ResultCode { CloseWithoutSaving = 2, Cancel = 0, Save = 1 };

    explicit SaveBeforeClosing(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT SaveBeforeOpening : public Message
{
public:
    enum ResultCode { DiscardChanges = 2, Cancel = 0, Save = 1 };

    explicit SaveBeforeOpening(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT ThingFileVersionError : public Notice
{
public:
    explicit ThingFileVersionError(QWidget* parent);
};

} // namespace message
