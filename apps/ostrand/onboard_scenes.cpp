#include "onboard_scenes.h"

#include <trovek-ui/eeprom_grama.h>
#include <trovek-ui/eeprom_widgets.h>
#include <trovek-ui/json_widgets.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>

#include <algorithm>
#include <stdexcept>

namespace ostrand::onboard {
namespace {

void press(QWidget& widget, int key, const QString& text = QString())
{
    QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
    QApplication::sendEvent(&widget, &down);
    QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QApplication::sendEvent(&widget, &up);
}

void type(QLineEdit& line, const QString& text)
{
    line.setFocus();
    line.selectAll();
    if (text.isEmpty())
        press(line, Qt::Key_Delete);
    for (const QChar& character : text)
        press(line, Qt::Key_unknown, character);
}

/** @throws std::runtime_error when the form has none that suits */
template <typename Widget, typename Suits>
Widget* firstOf(const trovek::EepromGrama& form, Suits suits)
{
    const QList<Widget*> all = form.findChildren<Widget*>();
    const auto found = std::find_if(all.begin(), all.end(), suits);
    if (found == all.end())
        throw std::runtime_error(std::string("The form has no such editor: ") +
                                 Widget::staticMetaObject.className());
    return *found;
}

const auto any = [](const QWidget*) {
    return true;
};

} // namespace

trovek::EepromGrama& formOf(QWidget& window)
{
    auto* form = window.findChild<trovek::EepromGrama*>();
    if (!form)
        throw std::runtime_error("The window has no form");
    return *form;
}

void setCollapsed(trovek::EepromGrama& form, bool collapsed)
{
    for (auto* row : form.findChildren<trovek::GramaLeftContainerWidget*>()) {
        trovek::GramaCollapseExpandButton* arrow = row->button();
        // Those at the top stand farthest to the left.
        const bool isTop = arrow->x() <= 0 || row->layoutDirection() == Qt::RightToLeft;
        if (isTop && arrow->isCollapsible() && arrow->isChecked() == collapsed)
            arrow->click();
    }
}

void filter(QWidget& window, const QString& text)
{
    auto* line = window.findChild<QLineEdit*>(QStringLiteral("filterEdit"));
    if (!line)
        throw std::runtime_error("The window has no filter");
    type(*line, text);
}

Samples::Samples(trovek::EepromGrama& form)
    : number(firstOf<trovek::JsonSpinBox>(form,
                                          [](const trovek::JsonSpinBox* box) {
                                              // Away from the ends that only the machine knows.
                                              return box->decimals() == 0 && box->value() >= 50 &&
                                                     box->minimum() < 0;
                                          }))
    , fixedPoint(firstOf<trovek::JsonSpinBox>(
          form, [](const trovek::JsonSpinBox* box) { return box->decimals() == 2; }))
    , axes(firstOf<trovek::EepromAxisBitfield>(form, any))
    , list(firstOf<trovek::EepromComboBox>(
          form, [](const trovek::EepromComboBox* box) { return box->count() > 2; }))
    , line(firstOf<trovek::JsonLineEdit>(form, any))
    , check(firstOf<trovek::JsonCheckBox>(form, any))
{}

void Samples::edit() const
{
    press(*number, Qt::Key_Down);
    press(*fixedPoint, Qt::Key_Up);
    press(*axes->findChildren<QCheckBox*>().at(1), Qt::Key_Space);
    const auto& choice = static_cast<const QComboBox&>(*list);
    press(*list, choice.currentIndex() == 0 ? Qt::Key_Down : Qt::Key_Up);
    type(static_cast<QLineEdit&>(*line), QStringLiteral("Tour"));
    press(*check, Qt::Key_Space);
}

QStringList Samples::shown() const
{
    QString bits;
    for (const QCheckBox* box : axes->findChildren<QCheckBox*>()) {
        if (box->isChecked())
            bits += box->text();
    }
    const bool isChecked = static_cast<const QCheckBox*>(check)->isChecked();
    return {
        QStringLiteral("number ") + static_cast<const QDoubleSpinBox*>(number)->text(),
        QStringLiteral("fixed point ") + static_cast<const QDoubleSpinBox*>(fixedPoint)->text(),
        QStringLiteral("axes ") + bits,
        QStringLiteral("list ") + static_cast<const QComboBox*>(list)->currentText(),
        QStringLiteral("text ") + static_cast<const QLineEdit*>(line)->text(),
        QStringLiteral("check box ") + (isChecked ? QStringLiteral("on") : QStringLiteral("off")),
    };
}

std::unique_ptr<QWidget> makeFormWithErrors(Json::Value map)
{
    const auto leaf = [](const char* type, const Json::Value& value) {
        Json::Value entry(Json::objectValue);
        entry["offset"] = 0;
        entry["type"] = type;
        entry["value"] = value;
        return entry;
    };
    Json::Value two(Json::arrayValue);
    two.append(1);
    two.append(2);
    Json::Value words(Json::arrayValue);
    words.append("warm");
    Json::Value& entries = map["eeprom_map"];
    if (!entries.isObject())
        throw std::runtime_error("The machine has no map");
    Json::Value broken(Json::objectValue);
    broken["mixed_types"] = leaf("Bb", two);
    broken["one_value_too_many"] = leaf("B", two);
    broken["unknown_type"] = leaf("xx", two);
    broken["words_for_a_number"] = leaf("H", words);
    broken["words_for_a_number"]["tooltip"] = "Other entries work as ever.";
    // The first row of the form.
    entries["_broken"]["sub_map"] = broken;

    auto form = std::make_unique<trovek::EepromGrama>(map);
    form->setWindowTitle(QStringLiteral("Onboard Preferences"));
    form->resize(720, 560);
    form->show();
    return form;
}

} // namespace ostrand::onboard
