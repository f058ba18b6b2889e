#include "direct_controls/extruder_control_form.h"

#include "trovek-ui/extruder_control_widget.h"
#include "trovek-ui/spin_box.h"
#include "trovek-ui/util.h"

#include <trovek/printer.h>

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>

namespace trovek {

namespace {

constexpr int kMaxCelsius = 260;
constexpr int kUsualCelsius = 230;

QString degreeCelsius()
{
    return ExtruderControlWidget::tr("\u00b0C");
}

template <typename Widget>
Widget* named(Widget* widget, const char* name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

/** A reading, and the label in front of it. */
QLabel* addReading(QFormLayout* form, QLabel*& label, const QString& text, const char* name)
{
    QWidget* const parent = form->parentWidget();
    QLabel* const reading = named(new QLabel(parent), name);
    label = new QLabel(text, parent);
    label->setObjectName(reading->objectName() + QStringLiteral("Label"));
    form->addRow(label, reading);
    return reading;
}

} // namespace

ExtruderControlForm::ExtruderControlForm(QWidget* owner)
{
    auto* const column = new QVBoxLayout(owner);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(controls(owner));
    column->addWidget(readings(owner));
    column->addStretch();
    offerTwoExtruders(false);
    showHeating(false);
    showTemperatures(nullptr);
    ignoreWheelUnlessFocused(owner);
}

QGroupBox* ExtruderControlForm::controls(QWidget* owner)
{
    auto* const group = new QGroupBox(ExtruderControlWidget::tr("Heat && Extrude"), owner);
    auto* const form = new QFormLayout(group);

    load = named(new QPushButton(ExtruderControlWidget::tr("Extrude (Load)"), group), "load");
    unload = named(new QPushButton(ExtruderControlWidget::tr("Reverse (Unload)"), group), "unload");
    stop = named(new QPushButton(ExtruderControlWidget::tr("Stop"), group), "stop");
    stop->setToolTip(ExtruderControlWidget::tr("Stop loading or unloading the filament"));
    auto* const motor = new QHBoxLayout;
    for (QPushButton* button : {load, unload, stop})
        motor->addWidget(button);
    form->addRow(ExtruderControlWidget::tr("Motor:"), motor);

    use = named(new QComboBox(group), "use");
    useLabel = named(new QLabel(ExtruderControlWidget::tr("Use:"), group), "useLabel");
    form->addRow(useLabel, use);

    currentTemperature = named(new QLabel(group), "currentTemperature");
    form->addRow(ExtruderControlWidget::tr("Current Temperature:"), currentTemperature);

    targetTemperature = named(new SpinBox(group), "targetTemperature");
    targetTemperature->setRange(0, kMaxCelsius);
    targetTemperature->setValue(kUsualCelsius);
    targetTemperature->setSuffix(ExtruderControlWidget::tr(" %1").arg(degreeCelsius()));
    targetTemperature->setToolTip(
        ExtruderControlWidget::tr("Temperature to heat the extruder to when \"Heat\" is clicked"));
    form->addRow(ExtruderControlWidget::tr("Target Temperature:"), targetTemperature);

    heat = named(new QPushButton(group), "heat");
    form->addRow(QString(), heat);

    notice = named(new QLabel(group), "notice");
    notice->setTextFormat(Qt::PlainText);
    notice->setWordWrap(true);
    notice->hide();
    form->addRow(notice);
    return group;
}

QGroupBox* ExtruderControlForm::readings(QWidget* owner)
{
    temperatures =
        named(new QGroupBox(ExtruderControlWidget::tr("Temperatures"), owner), "temperatures");
    auto* const form = new QFormLayout(temperatures);
    leftTemperature =
        addReading(form, leftLabel, ExtruderControlWidget::tr("Left Extruder:"), "leftTemperature");
    rightTemperature = addReading(form, rightLabel, ExtruderControlWidget::tr("Right Extruder:"),
                                  "rightTemperature");
    platformTemperature = addReading(form, platformLabel, ExtruderControlWidget::tr("Build Plate:"),
                                     "platformTemperature");
    return temperatures;
}

void ExtruderControlForm::offerTwoExtruders(bool two)
{
    if (two != (use->count() == 2)) {
        const QSignalBlocker silence(use);
        use->clear();
        if (two) {
            use->addItems({ExtruderControlWidget::tr("Left Extruder"),
                           ExtruderControlWidget::tr("Right Extruder")});
        }
    }
    useLabel->setVisible(two);
    use->setVisible(two);
}

void ExtruderControlForm::showHeating(bool heating)
{
    heat->setText(heating ? ExtruderControlWidget::tr("Stop Heating")
                          : ExtruderControlWidget::tr("Heat"));
    heat->setToolTip(heating ? ExtruderControlWidget::tr("Let the extruder cool down")
                             : ExtruderControlWidget::tr(
                                   "Start heating the extruder to the target temperature"));
    heat->setEnabled(true);
    targetTemperature->setEnabled(!heating);
}

void ExtruderControlForm::showTemperatures(const Printer* printer)
{
    const std::size_t toolheads =
        printer ? printer->toolTemperature().toolheads.size() : std::size_t(0);
    const auto show = [](QLabel* label, QLabel* reading, bool visible, int celsius) {
        reading->setText(visible ? celsiusText(celsius) : QString());
        label->setVisible(visible);
        reading->setVisible(visible);
    };
    // A single one stands in the group above.
    const bool two = toolheads >= 2;
    show(leftLabel, leftTemperature, two,
         two ? printer->toolTemperature().at(Printer::LeftToolhead) : 0);
    show(rightLabel, rightTemperature, two,
         two ? printer->toolTemperature().at(Printer::RightToolhead) : 0);
    const bool platform = printer && printer->hasHeatedPlatform();
    show(platformLabel, platformTemperature, platform,
         platform ? printer->toolTemperature().platform : 0);
    temperatures->setVisible(two || platform);
}

QString ExtruderControlForm::celsiusText(int celsius)
{
    return ExtruderControlWidget::tr("%1 %2").arg(celsius).arg(degreeCelsius());
}

} // namespace trovek
