#include "trovek-ui/json_widgets.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QScopedValueRollback>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "src\\widgets\\json_widgets";

constexpr char kCheckBoxRequires[] = "JsonCheckBox requires int or bool input";
constexpr char kLineEditRequires[] = "JsonLineEdit requires string input";
constexpr char kSpinBoxRequires[] = "JsonSpinBox requires numeric input";

bool isIntOrBool(const Json::Value& value)
{
    return value.type() == Json::intValue || value.type() == Json::booleanValue;
}

bool isNumber(const Json::Value& value)
{
    return value.type() == Json::intValue || value.type() == Json::uintValue ||
           value.type() == Json::realValue;
}

/** The number without its fraction, or the nearest that the type holds. */
template <typename Integer>
Integer nearest(double number)
{
    using Limits = std::numeric_limits<Integer>;
    // One above the largest is a power of two: a double holds it exactly, unlike the largest.
    if (number >= std::ldexp(1.0, Limits::digits))
        return Limits::max();
    if (number <= static_cast<double>(Limits::min()))
        return Limits::min();
    return static_cast<Integer>(number);
}

} // namespace

JsonCheckBox::JsonCheckBox(Json::Value* value, QWidget* parent)
    : QCheckBox(tr("Enabled"), parent)
    , m_value(value)
{
    if (m_value == nullptr)
        throw std::runtime_error("JsonCheckBox given null JSON");
    if (!isIntOrBool(*m_value))
        throw std::runtime_error(kCheckBoxRequires);
    reset();
    connect(this, &QCheckBox::toggled, this, &JsonCheckBox::slotToggled);
}

void JsonCheckBox::reset()
{
    if (!isIntOrBool(*m_value)) {
        TROVEK_LOG(0) << kCheckBoxRequires << std::endl;
        return;
    }
    // An integer is not limited to 32 bits here, and a 5 shown as checked has to stay a 5.
    const bool checked =
        m_value->type() == Json::intValue ? m_value->asInt64() != 0 : m_value->asBool();
    const QScopedValueRollback<bool> showing(m_showing, true);
    setChecked(checked);
}

void JsonCheckBox::slotToggled(bool checked)
{
    // Ends with the first call: whoever edits during updated() does mean it.
    if (!std::exchange(m_showing, false)) {
        if (!isIntOrBool(*m_value)) {
            TROVEK_LOG(0) << kCheckBoxRequires << std::endl;
            return;
        }
        *m_value =
            m_value->type() == Json::intValue ? Json::Value(checked ? 1 : 0) : Json::Value(checked);
    }
    emit updated();
}

JsonLineEdit::JsonLineEdit(Json::Value* value, QWidget* parent)
    : QLineEdit(parent)
    , m_value(value)
{
    if (m_value == nullptr)
        throw std::runtime_error("JsonLineEdit given null JSON");
    if (m_value->type() != Json::stringValue)
        throw std::runtime_error(kLineEditRequires);
    reset();
    connect(this, &QLineEdit::textEdited, this, &JsonLineEdit::slotTextEdited);
}

void JsonLineEdit::reset()
{
    if (m_value->type() == Json::stringValue)
        setText(toQString(m_value->asString()));
    else
        TROVEK_LOG(0) << kLineEditRequires << std::endl;
}

void JsonLineEdit::slotTextEdited(const QString& text)
{
    if (m_value->type() != Json::stringValue) {
        TROVEK_LOG(0) << kLineEditRequires << std::endl;
        return;
    }
    // A machine's text ends at its first zero byte, and so does one made of a plain pointer.
    *m_value = text.toUtf8().constData();
    emit updated();
}

JsonSpinBox::JsonSpinBox(Json::Value* value, const std::pair<double, double>& range,
                         double singleStep, int decimals, const QString& suffix, QWidget* parent)
    : DoubleSpinBox(parent)
    , m_value(value)
{
    if (m_value == nullptr)
        throw std::runtime_error("JsonSpinBox given null JSON");
    if (!isNumber(*m_value))
        throw std::runtime_error(kSpinBoxRequires);
    setFocusOnScroll(false);
    setRange(range.first, range.second);
    setSuffix(suffix);
    setSingleStep(singleStep);
    setDecimals(decimals);
    reset();
    connect(this, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            &JsonSpinBox::slotValueChanged);
}

void JsonSpinBox::reset()
{
    if (!isNumber(*m_value)) {
        TROVEK_LOG(0) << kSpinBoxRequires << std::endl;
        return;
    }
    showValue();
    emit updated();
}

void JsonSpinBox::slotValueChanged(double value)
{
    if (!isNumber(*m_value)) {
        TROVEK_LOG(0) << kSpinBoxRequires << std::endl;
        return;
    }
    // A reset and the Return key tell of numbers that nobody edited. What the box shows of the
    // value may be rounded, and the value is not.
    if (!showsAs(value)) {
        if (m_value->type() == Json::realValue)
            *m_value = value;
        else
            storeInteger(value);
    }
    emit updated();
}

bool JsonSpinBox::showsAs(double number) const
{
    const double value = m_value->asDouble();
    // The box's own rounding, which it does not offer.
    return !std::isnan(value) &&
           QString::number(qBound(minimum(), value, maximum()), 'f', decimals()).toDouble() ==
               number;
}

void JsonSpinBox::showValue()
{
    const double value = m_value->asDouble();
    // A box would take it for its maximum.
    if (!std::isnan(value))
        setValue(value);
}

void JsonSpinBox::storeInteger(double value)
{
    if (!std::isnan(value)) {
        if (m_value->type() == Json::uintValue)
            *m_value = nearest<Json::UInt64>(value);
        else
            *m_value = nearest<Json::Int>(value);
    }
    // Only then: a fraction that is being typed must not go under the user's fingers.
    if (m_value->asDouble() != std::trunc(value))
        showValue();
}

} // namespace trovek
