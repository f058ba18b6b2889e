#pragma once

#include <trovek-ui/messages.h>

#include <functional>
#include <vector>

/** A message under test: its box, and what its exec() returns; 0 where that returns nothing. */
struct Shown
{
    trovek::MessageBox* box;
    std::function<int()> exec;
};

struct ExpectedButton
{
    const char* text;
    int code;
    bool isDefault = false;
};

/** What a user sees of one message. */
struct ExpectedMessage
{
    const char* name;
    /** The settings are passed where the class takes them. */
    std::function<Shown(QWidget* parent, QSettings* settings)> make;
    QMessageBox::Icon icon;
    const char* heading;
    const char* body;
    std::vector<ExpectedButton> buttons;
    /** Empty where the user cannot hide the message. */
    const char* settingsKey;
};

const std::vector<ExpectedMessage>& expectedMessages();
