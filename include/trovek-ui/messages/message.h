#pragma once

#include "trovek-ui/export.h"
#include "trovek-ui/message_box.h"

#include <QPointer>
#include <QString>

#include <vector>

/** The messages; each fixes its texts, icon and buttons, so that no caller composes any. */
namespace message {

/**
 * What all messages share.
 *
 * The box is made with the message and is a child of the given parent; a message owns nothing, and
 * its copies share the box. With a null parent the box is never freed. A message may be shown more
 * than once. A class that lets the user choose has the codes of its buttons in `ResultCode`, and
 * its exec() gives one of them, or 0 when the box was rejected, was hidden by the user or was
 * destroyed with its parent while it was open.
 */
class TROVEK_UI_EXPORT Message
{
public:
    /** For whoever shows it without blocking; null once it was destroyed with its parent. */
    trovek::MessageBox* box() const;

protected:
    using Buttons = std::vector<trovek::MessageBox::Button>;
    static constexpr std::uint32_t Default = trovek::MessageBox::Button::Default;

    /** A message with settings may be hidden by the user; null settings: it may not. */
    Message(QMessageBox::Icon icon, const QString& heading, const QString& body,
            const Buttons& buttons, QWidget* parent, QSettings* settings = nullptr,
            const QString& settingsKey = QString());

    /** For a body with the name of a port or a file in it, which may look like markup. */
    void showAsPlainText();

    /** Shows the box unless the user has hidden it, and waits; the box's finishCode(), or 0. */
    int run();

private:
    QPointer<trovek::MessageBox> m_box;
};

/** A message that only tells: its one button "&OK" and Escape are the same. */
class TROVEK_UI_EXPORT Notice : public Message
{
public:
    void exec();

protected:
    Notice(QMessageBox::Icon icon, const QString& heading, const QString& body, QWidget* parent,
           QSettings* settings = nullptr, const QString& settingsKey = QString());
};

} // namespace message
