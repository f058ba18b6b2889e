#pragma once

#include "trovek-ui/export.h"

#include <QDialog>
#include <QMessageBox>
#include <QPointer>
#include <QSettings>
#include <QString>

#include <cstdint>
#include <vector>

class QCheckBox;
class QLayout;
class QPushButton;

namespace trovek {

class CopyableLabel;

/**
 * One message: an icon, a bold heading, a text that a click copies, buttons, and, where the user
 * may hide the message, a check box for that.
 *
 * The result is finishCode(): the code of the pressed button, or 0 for Escape, the window's close
 * button and every button with the code 0. What exec() itself returns only tells accepted from
 * rejected. A box may be shown again; finishCode() is then 0 until it closes.
 *
 * The heading is plain text; the text may be rich, and its links open in the browser.
 * GUI thread only.
 */
class TROVEK_UI_EXPORT MessageBox : public QDialog
{
    Q_OBJECT

public:
    /** One button of the row. */
    struct TROVEK_UI_EXPORT Button
    {
        /** The flag of the button that Enter presses; exactly one button of a box has it. */
        static constexpr std::uint32_t Default = 1;

        /**
         * @param label      may have a mnemonic, "&OK"; unlike the labels of the other buttons
         * @param resultCode 0 rejects; unlike the codes of the other buttons
         * @param buttonFlags 0 or Default
         * @throws std::runtime_error "Invalid flags in MessageBox::Button"
         */
        Button(const QString& label, std::int32_t resultCode, std::uint32_t buttonFlags = 0);

        QString text;
        std::int32_t code;
        std::uint32_t flags;
    };

    /**
     * A box that cannot be hidden by the user.
     *
     * @param buttons from left to right
     * @param icon    one of the four icons, not QMessageBox::NoIcon
     * @throws std::runtime_error "Duplicate text in MessageBox buttons",
     *         "Duplicate code in MessageBox buttons", "More than one default MessageBox button",
     *         "A default MessageBox button is required", "Invalid MessageBox icon"
     */
    MessageBox(const std::vector<Button>& buttons, const QString& title, const QString& text,
               QMessageBox::Icon icon, QWidget* parent = nullptr);

    /**
     * A box that the user may hide for the future.
     *
     * @param settings    not owned; keeps the user's choice. Null: as with the other constructor
     * @param settingsKey the choice stands under "MessageBox/" and this key; ignored without
     * settings
     * @throws std::runtime_error "settingsKey is invalid" when it is empty, and as the other one
     */
    MessageBox(const std::vector<Button>& buttons, const QString& title, const QString& text,
               QMessageBox::Icon icon, QSettings* settings, const QString& settingsKey,
               QWidget* parent = nullptr);

    /**
     * Shows the box and waits until it is closed; false when the user has hidden it.
     * The box may be destroyed with its parent meanwhile: look before finishCode() is read.
     */
    bool maybeShowModal();

    /** Shows the box in front and returns at once; false when the user has hidden it. */
    bool maybeShowNonModal();

    /** Whether the user has hidden this message. */
    bool skip() const;

    int finishCode() const;

    /** Makes the text at least so wide that `guide` fits on one line. */
    void setWrapGuideText(const QString& guide);

    /** Qt::AutoText at first. A text with a name in it that may look like markup is Qt::PlainText.
     */
    void setTextFormat(Qt::TextFormat format);

signals:
    /**
     * Emitted once whenever the box closes, with finishCode(). It hides QDialog's signal of that
     * name, which knows only 0 and 1: connect with &MessageBox::finished.
     */
    void finished(int code);

protected:
    void showEvent(QShowEvent* event) override;

private slots:
    void mapClick(int code);
    void mapReject();

private:
    void init(const std::vector<Button>& buttons, const QString& title, const QString& text,
              QMessageBox::Icon icon);
    QLayout* createButtonsAndLayout(const std::vector<Button>& buttons);
    QString storedKey() const;
    void storeChoice();

    QPointer<QSettings> m_settings;
    QString m_settingsKey;
    CopyableLabel* m_textLabel = nullptr;
    QCheckBox* m_dontShowAgain = nullptr;
    QPushButton* m_defaultButton = nullptr;
    int m_finishCode = 0;
};

/**
 * Shows a box with the one button "&OK" and waits until it is closed. The box remains a child of
 * `parent`. A box that cannot be made is logged and replaced by a plain one; nothing is thrown.
 */
TROVEK_UI_EXPORT void displayCriticalError(const QString& title, const QString& text,
                                           QWidget* parent);
/** The same with any of the four icons. */
TROVEK_UI_EXPORT void displayOKBox(const QString& title, const QString& text,
                                   QMessageBox::Icon icon, QWidget* parent);

} // namespace trovek
