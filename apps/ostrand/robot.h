#pragma once

#include <QDeadlineTimer>
#include <QString>

#include <functional>

class QAbstractButton;
class QDialog;
class QWidget;

namespace trovek {
class TrovekQt;
}

namespace ostrand {

/** True when there are machines to print on and none of them is still being opened. */
bool machinesAreReady(const trovek::TrovekQt& facade);

/**
 * Uses windows as a user does, and waits for what they do.
 *
 * Everything waits for a condition until one deadline for all. A message box that nobody expects
 * ends the wait: it is closed and its text is thrown.
 */
class Robot
{
public:
    explicit Robot(int deadlineMs);

    /**
     * Runs the event loop until the condition holds.
     * @param what for the text that is thrown when it does not, for example "the print's end"
     * @throws std::runtime_error
     */
    void waitFor(const std::function<bool()>& condition, const QString& what);

    /**
     * Clicks, and answers the modal dialog that this opens while the click is still under way.
     * @param answer false when the dialog is not ready yet: it is called again soon. May throw; the
     *               dialog is closed then
     * @throws std::runtime_error what the answer threw, or that no such dialog came
     */
    void clickAndAnswer(const std::function<void()>& click,
                        const std::function<bool(QDialog& dialog)>& answer);

    /**
     * Clicks, and closes the message with this heading that this brings.
     * @throws std::runtime_error the text of another message, or that none came
     */
    void clickAndConfirm(const std::function<void()>& click, const QString& heading);

    /**
     * Clicks, and presses a button of the message that this brings.
     * @param beforePressing may be empty
     * @throws std::runtime_error the message's text when it has no such button, or that none came
     */
    void clickAndPress(const std::function<void()>& click, const QString& buttonText,
                       const std::function<void(QDialog& message)>& beforePressing = nullptr);

    /** Clicks where no dialog is to come; one that comes is closed, and its text is thrown. */
    void click(const std::function<void()>& click);

    /**
     * Types a path into a file dialog, chooses the filter whose text begins so, and accepts.
     * @return false when the dialog does not listen to the keyboard yet; nothing is done then
     */
    static bool fillFileDialog(QDialog& dialog, const QString& path, const QString& filterStart,
                               const std::function<void()>& beforeAccepting = nullptr);

private:
    void clickAndHandle(const std::function<void()>& click,
                        const std::function<bool(QDialog& dialog)>& answer, bool takesMessages);
    void refuseMessages();

    QDeadlineTimer m_deadline;
};

} // namespace ostrand
