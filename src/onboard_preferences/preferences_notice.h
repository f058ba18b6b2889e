#pragma once

#include <QFrame>

#include <functional>

class QLabel;
class QPushButton;

namespace trovek {

/** A line across the dialog that says in what state it is; hidden without a text. */
class PreferencesNotice : public QFrame
{
public:
    explicit PreferencesNotice(QWidget* parent = nullptr);

    /**
     * Replaces what is shown.
     * @param text   plain; empty hides the line
     * @param button what can be done about it; empty for nothing
     * @param action done when the button is clicked; may replace what is shown, must not throw
     */
    void showNotice(const QString& text, const QString& button = QString(),
                    const std::function<void()>& action = nullptr);
    void clear() { showNotice(QString()); }

private:
    QLabel* const m_text;
    QPushButton* const m_button;
    std::function<void()> m_action;
};

} // namespace trovek
