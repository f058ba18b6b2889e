#pragma once

#include "trovek-ui/messages/message.h"

// Messages about the objects on the build plate.

namespace message {

class TROVEK_UI_EXPORT ModelBoundingBoxIsEmpty : public Notice
{
public:
    explicit ModelBoundingBoxIsEmpty(QWidget* parent);
};

class TROVEK_UI_EXPORT ModelIsTiny : public Message
{
public:
    enum ResultCode { KeepSize = 0, RescaleObject = 1 };

    explicit ModelIsTiny(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT NothingOnPlate : public Notice
{
public:
    explicit NothingOnPlate(QWidget* parent);
};

class TROVEK_UI_EXPORT ObjectsUpdated : public Notice
{
public:
    explicit ObjectsUpdated(QWidget* parent);
};

class TROVEK_UI_EXPORT PutOnPlatform : public Message
{
public:
    enum ResultCode { KeepPosition = 0, MoveToPlatform = 1 };

    explicit PutOnPlatform(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT PutOnPlatformZ : public Message
{
public:
    enum ResultCode { KeepPosition = 0, MoveToPlatform = 1 };

    explicit PutOnPlatformZ(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

class TROVEK_UI_EXPORT ResizeModel : public Message
{
public:
    enum ResultCode { DontScale = 0, ScaleToFit = 1 };

    explicit ResizeModel(QWidget* parent);
    ResultCode exec() { return static_cast<ResultCode>(run()); }
};

} // namespace message
