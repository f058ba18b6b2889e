#pragma once

#include "trovek-ui/messages/message.h"

// Messages about the background service, its ports and updates.

namespace message {

class TROVEK_UI_EXPORT BackgroundServiceUnavailable : public Notice
{
public:
    explicit BackgroundServiceUnavailable(QWidget* parent);
};

class TROVEK_UI_EXPORT ConnectToPortFailed : public Notice
{
public:
    ConnectToPortFailed(const QString& portName, QWidget* parent);
};

class TROVEK_UI_EXPORT GenericTrovekError : public Notice
{
public:
    explicit GenericTrovekError(QWidget* parent);
};

class TROVEK_UI_EXPORT TrovekNotConnected : public Notice
{
public:
    explicit TrovekNotConnected(QWidget* parent);
};

class TROVEK_UI_EXPORT UpdatesAvailable : public Message
{
public:
    enum ResultCode { Continue = 0, Download = 1 };

    UpdatesAvailable(const QString& updates, QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT WindowsServiceError : public Notice
{
public:
    explicit WindowsServiceError(QWidget* parent);
};

} // namespace message
