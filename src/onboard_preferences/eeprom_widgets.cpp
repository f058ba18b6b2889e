#include "trovek-ui/eeprom_widgets.h"

#include "trovek-ui/json_widgets.h"

#include <trovek/eeprom_map.h>
#include <trovek/log.h>
#include <trovek/text.h>

#include <QCheckBox>
#include <QRegExpValidator>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <exception>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "src\\onboard_preferences\\eeprom_widgets";

/** What a machine's display has room for. */
constexpr int kMaximumTextLength = 16;
constexpr int kFloatDecimals = 5;

bool isInteger(const Json::Value* value)
{
    return value != nullptr && value->type() == Json::intValue;
}

std::string invalidJson(const Json::Value* value)
{
    return "Invalid JSON: " + (value != nullptr ? value->toStyledString() : "(null)");
}

bool isDecimal(const QString& text)
{
    bool ok = false;
    text.toLongLong(&ok);
    return ok;
}

template <typename T>
bool hasElement(const std::vector<T>* values, int index)
{
    return values != nullptr && index >= 0 && static_cast<std::size_t>(index) < values->size();
}

/** A copy with the element replaced, as the list itself belongs to the map. */
template <typename T>
std::vector<T> withElement(const std::vector<T>* values, int index, const T& element,
                           const char* indexError)
{
    if (!hasElement(values, index))
        throw std::runtime_error(indexError);
    std::vector<T> changed = *values;
    changed[static_cast<std::size_t>(index)] = element;
    return changed;
}

/** Runs what an edit does; Qt lets no exception through. */
template <typename Function>
void guarded(Function function)
{
    try {
        function();
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

} // namespace

EepromAxisBitfield::EepromAxisBitfield(Json::Value* value, QWidget* parent)
    : QWidget(parent)
    , m_value(value)
    , m_boxes{new QCheckBox(tr("X"), this), new QCheckBox(tr("Y"), this),
              new QCheckBox(tr("Z"), this), new QCheckBox(tr("A"), this),
              new QCheckBox(tr("B"), this)}
{
    if (!isInteger(m_value)) {
        TROVEK_LOG(0) << invalidJson(m_value) << std::endl;
        throw std::runtime_error("EepromAxisBitfield requires a JSON int");
    }
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    for (QCheckBox* box : m_boxes) {
        box->setObjectName(QStringLiteral("axis") + QString::number(layout->count()));
        layout->addWidget(box);
        connect(box, &QCheckBox::toggled, this, &EepromAxisBitfield::slotAnyToggled);
    }
    reset();
}

void EepromAxisBitfield::reset()
{
    if (!isInteger(m_value))
        return;
    const Json::Int64 bits = m_value->asInt64();
    Json::Int64 bit = 1;
    for (QCheckBox* box : m_boxes) {
        // A box that told of its change would write back the value of boxes that are not set yet.
        const QSignalBlocker blocker(box);
        box->setChecked((bits & bit) != 0);
        bit *= 2;
    }
}

void EepromAxisBitfield::slotAnyToggled()
{
    int bits = 0;
    int bit = 1;
    for (const QCheckBox* box : m_boxes) {
        if (box->isChecked())
            bits += bit;
        bit *= 2;
    }
    *m_value = bits;
    emit updated();
}

EepromComboBox::EepromComboBox(QStringList items, Json::Value* value, QWidget* parent)
    : QComboBox(parent)
    , m_value(value)
{
    for (const QString& item : items) {
        if (!isDecimal(item))
            throw std::runtime_error("EepromComboBox given non-int item");
    }
    if (!isInteger(m_value)) {
        TROVEK_LOG(0) << invalidJson(m_value) << std::endl;
        throw std::runtime_error("EepromComboBox requires a JSON int");
    }
    setFocusPolicy(Qt::StrongFocus);
    addItems(items);
    setEnabled(!items.isEmpty());
    reset();
    // Deprecated in Qt 5.15, so that its pointer cannot be named without a warning.
    connect(this, SIGNAL(currentIndexChanged(QString)), this, SLOT(takeChosen(QString)));
}

void EepromComboBox::reset()
{
    if (!isInteger(m_value))
        return;
    for (int row = 0; row < count(); ++row) {
        const QString item = itemText(row);
        if (isDecimal(item) && item.toLongLong() == m_value->asInt64()) {
            setCurrentIndex(row);
            return;
        }
    }
}

void EepromComboBox::slotIndexChanged(const QString& text)
{
    if (!isDecimal(text))
        throw std::runtime_error("EepromComboBox changed to a non-int value");
    *m_value = Json::Int64(text.toLongLong());
    emit updated();
}

void EepromComboBox::takeChosen(const QString& text)
{
    try {
        slotIndexChanged(text);
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

void EepromComboBox::wheelEvent(QWheelEvent* event)
{
    // Qt then gives it to the parent, which scrolls.
    event->ignore();
}

JsonLineEdit* makeEepromTextLine(Json::Value* value, QWidget* parent)
{
    auto* const line = new JsonLineEdit(value, parent);
    line->setValidator(
        new QRegExpValidator(QRegExp(QStringLiteral("[a-zA-Z0-9 ]*"), Qt::CaseSensitive), line));
    line->setMaxLength(kMaximumTextLength);
    return line;
}

EepromSpinBox::EepromSpinBox(const QString& path, int index, QWidget* parent)
    : SpinBox(parent)
    , m_path(path)
    , m_index(index)
{
    setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    setMap(nullptr);
    connect(this, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this](int value) { guarded([&] { slotValueChanged(value); }); });
}

void EepromSpinBox::setMap(EepromMap* map)
{
    m_map = map;
    setEnabled(map != nullptr);
    const QSignalBlocker blocker(this);
    if (map == nullptr) {
        clear();
        return;
    }
    const std::vector<int>* values = map->getInt(toStdString(m_path));
    if (hasElement(values, m_index))
        setValue(values->at(static_cast<std::size_t>(m_index)));
}

void EepromSpinBox::slotValueChanged(int value)
{
    const std::string path = toStdString(m_path);
    const auto changed = withElement(m_map != nullptr ? m_map->getInt(path) : nullptr, m_index,
                                     value, "Invalid EepromSpinBox index");
    m_map->setInt(path, changed);
    emit updated();
}

EepromFloatSpinBox::EepromFloatSpinBox(const QString& path, int index, QWidget* parent)
    : DoubleSpinBox(parent)
    , m_path(path)
    , m_index(index)
{
    setDecimals(kFloatDecimals);
    setRange(double(std::numeric_limits<float>::lowest()),
             double(std::numeric_limits<float>::max()));
    setMap(nullptr);
    connect(this, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            [this](double value) { guarded([&] { slotValueChanged(value); }); });
}

void EepromFloatSpinBox::setMap(EepromMap* map)
{
    m_map = map;
    setEnabled(map != nullptr);
    const QSignalBlocker blocker(this);
    if (map == nullptr) {
        clear();
        return;
    }
    const std::vector<float>* values = map->getFloat(toStdString(m_path));
    if (hasElement(values, m_index))
        setValue(double(values->at(static_cast<std::size_t>(m_index))));
}

void EepromFloatSpinBox::slotValueChanged(double value)
{
    const std::string path = toStdString(m_path);
    const auto number = static_cast<float>(qBound(minimum(), value, maximum()));
    const auto changed = withElement(m_map != nullptr ? m_map->getFloat(path) : nullptr, m_index,
                                     number, "Invalid EepromFloatSpinBox index");
    m_map->setFloat(path, changed);
    emit updated();
}

EepromLineEdit::EepromLineEdit(const QString& path, int index, QWidget* parent)
    : QLineEdit(parent)
    , m_path(path)
    , m_index(index)
{
    setMap(nullptr);
    connect(this, &QLineEdit::textEdited, this,
            [this](const QString& text) { guarded([&] { slotTextEdited(text); }); });
}

void EepromLineEdit::setMap(EepromMap* map)
{
    m_map = map;
    setEnabled(map != nullptr);
    if (map == nullptr) {
        clear();
        return;
    }
    const std::vector<std::string>* values = map->getString(toStdString(m_path));
    if (hasElement(values, m_index))
        setText(toQString(values->at(static_cast<std::size_t>(m_index))));
}

void EepromLineEdit::slotTextEdited(const QString& text)
{
    const std::string path = toStdString(m_path);
    const auto changed = withElement(m_map != nullptr ? m_map->getString(path) : nullptr, m_index,
                                     toStdString(text), "Invalid EepromLineEdit index");
    m_map->setString(path, changed);
    emit updated();
}

} // namespace trovek
