#pragma once

#include "trovek-ui/messages/message.h"

// Messages about uploads to the sharing site.

namespace message {

class TROVEK_UI_EXPORT SharevaneDescriptionRequired : public Notice
{
public:
    explicit SharevaneDescriptionRequired(QWidget* parent);
};

class TROVEK_UI_EXPORT SharevaneNameRequired : public Notice
{
public:
    explicit SharevaneNameRequired(QWidget* parent);
};

class TROVEK_UI_EXPORT SharevaneNameTooLong : public Notice
{
public:
    explicit SharevaneNameTooLong(QWidget* parent);
};

class TROVEK_UI_EXPORT SharevaneSignInFailed : public Notice
{
public:
    explicit SharevaneSignInFailed(QWidget* parent);
};

class TROVEK_UI_EXPORT SharevaneUploadFailed : public Notice
{
public:
    explicit SharevaneUploadFailed(QWidget* parent);
};

} // namespace message
