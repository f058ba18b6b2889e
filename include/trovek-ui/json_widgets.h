#pragma once

#include "trovek-ui/double_spin_box.h"
#include "trovek-ui/export.h"

#include <json/value.h>

#include <QCheckBox>
#include <QLineEdit>
#include <QString>

#include <utility>

namespace trovek {

/*
 * Editors of one value in a JSON document.
 *
 * The value is not owned and has to outlive its editor, at the same address. An editor shows it
 * when it is built and by reset(), which never changes it; every edit is written at once, in the
 * value's own JSON type, and told by updated(). A value is judged by its type, not by what it could
 * be converted to: 1.0 is no integer. One that has become of another type is neither shown nor
 * written; then only the text with which the constructor would refuse it is logged.
 */

/** A check box "Enabled" for a boolean, or for a signed integer that is 0 or not. */
class TROVEK_UI_EXPORT JsonCheckBox : public QCheckBox
{
    Q_OBJECT

public:
    /**
     * @throws std::runtime_error "JsonCheckBox given null JSON",
     *                            "JsonCheckBox requires int or bool input"
     */
    explicit JsonCheckBox(Json::Value* value, QWidget* parent = nullptr);

public slots:
    /** Shows the value; updated() comes only when the check changes by it. */
    void reset();
    /** Writes 1 or 0 into an integer, true or false into a boolean. */
    void slotToggled(bool checked);

signals:
    void updated();

private:
    Json::Value* const m_value;
    bool m_showing = false;
};

/** A line for a text. */
class TROVEK_UI_EXPORT JsonLineEdit : public QLineEdit
{
    Q_OBJECT

public:
    /**
     * @throws std::runtime_error "JsonLineEdit given null JSON",
     *                            "JsonLineEdit requires string input"
     */
    explicit JsonLineEdit(Json::Value* value, QWidget* parent = nullptr);

public slots:
    /** Shows the value; no signal. */
    void reset();
    /** Writes the text up to its first zero character. */
    void slotTextEdited(const QString& text);

signals:
    /** Emitted by the user's edits, not by setText(). */
    void updated();

private:
    Json::Value* const m_value;
};

/** A box for a number: signed or unsigned integer, or real. The wheel scrolls what is around it. */
class TROVEK_UI_EXPORT JsonSpinBox : public DoubleSpinBox
{
    Q_OBJECT

public:
    /**
     * @param range minimum and maximum of what can be entered; a value outside is shown as the
     *              nearest limit and stays as it is until it is edited
     * @param suffix shown after the number, with its own blank
     * @throws std::runtime_error "JsonSpinBox given null JSON",
     *                            "JsonSpinBox requires numeric input"
     */
    JsonSpinBox(Json::Value* value, const std::pair<double, double>& range, double singleStep,
                int decimals, const QString& suffix, QWidget* parent = nullptr);

public slots:
    /**
     * Shows the value, rounded to the decimals and brought into the range, and emits updated():
     * twice when the shown number changes, else once. What is not a number leaves the box alone.
     */
    void reset();
    /**
     * Writes the number into a real, and without its fraction into an integer: a signed one holds
     * 32 bits, an unsigned one 64. What does not fit is stored as the nearest number that does,
     * which the box then shows; what is not a number changes no integer. The number as which the
     * value shows already is no edit and leaves it all its digits.
     */
    void slotValueChanged(double value);

signals:
    void updated();

private:
    bool showsAs(double number) const;
    void showValue();
    void storeInteger(double value);

    Json::Value* const m_value;
};

} // namespace trovek
