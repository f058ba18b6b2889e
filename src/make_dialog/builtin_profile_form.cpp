#include "make_dialog/builtin_profile_form.h"

#include "trovek-ui/builtin_profile_widget.h"
#include "trovek-ui/double_spin_box.h"
#include "trovek-ui/spin_box.h"

#include "make_dialog/field_label.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QPushButton>

namespace trovek {

namespace {

QGroupBox* addGroup(const QString& title, const char* name, QWidget* owner)
{
    auto* const group = new QGroupBox(title, owner);
    group->setObjectName(QLatin1String(name));
    new QFormLayout(group);
    return group;
}

/** A row of the group: the label, which it also stores, and its box. */
template <typename Box>
Box* addRow(QGroupBox* group, FieldLabel*& label, const QString& text, const char* name,
            const QString& toolTip)
{
    auto* const box = new Box(group);
    box->setObjectName(QLatin1String(name));
    box->setToolTip(toolTip);
    label = new FieldLabel(text, group);
    label->setObjectName(box->objectName() + QStringLiteral("Label"));
    label->setBuddy(box);
    static_cast<QFormLayout*>(group->layout())->addRow(label, box);
    return box;
}

} // namespace

BuiltInProfileForm::BuiltInProfileForm(QWidget* owner)
{
    auto* const grid = new QGridLayout(owner);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(qualityGroup(owner), 0, 0);
    grid->addWidget(temperatureGroup(owner), 0, 1);
    grid->addWidget(speedGroup(owner), 1, 0);

    defaultsButton = new QPushButton(BuiltInProfileWidget::tr("Use &Defaults"), owner);
    defaultsButton->setObjectName(QStringLiteral("defaultsButton"));
    defaultsButton->setToolTip(BuiltInProfileWidget::tr("Revert to the defaults for this profile"));
    createProfileButton = new QPushButton(BuiltInProfileWidget::tr("&Create Profile..."), owner);
    createProfileButton->setObjectName(QStringLiteral("createProfileButton"));
    createProfileButton->setToolTip(BuiltInProfileWidget::tr("Create a new custom slicer profile"));
    // Return belongs to the main button of the dialog around.
    defaultsButton->setAutoDefault(false);
    createProfileButton->setAutoDefault(false);
    auto* const buttons = new QVBoxLayout;
    buttons->addStretch();
    buttons->addWidget(defaultsButton);
    buttons->addWidget(createProfileButton);
    grid->addLayout(buttons, 1, 1);
}

QGroupBox* BuiltInProfileForm::qualityGroup(QWidget* owner)
{
    auto* const group = addGroup(BuiltInProfileWidget::tr("&Quality"), "qualityGroup", owner);

    infill = addRow<SpinBox>(
        group, infillLabel, BuiltInProfileWidget::tr("I&nfill:"), "infill",
        BuiltInProfileWidget::tr("Fill interior regions of the model with this percentage of "
                                 "plastic"));
    infill->setRange(0, 100);
    infill->setSuffix(BuiltInProfileWidget::tr("%"));

    shells = addRow<SpinBox>(
        group, shellsLabel, BuiltInProfileWidget::tr("N&umber of Shells:"), "shells",
        BuiltInProfileWidget::tr("Thickness of model walls (higher numbers take longer to build "
                                 "but produce sturdier result)"));
    shells->setRange(1, 100);

    layerHeight = addRow<DoubleSpinBox>(
        group, layerHeightLabel, BuiltInProfileWidget::tr("La&yer Height:"), "layerHeight",
        BuiltInProfileWidget::tr("The height of each layer of plastic (lower values take longer "
                                 "to build but will produce smoother result)"));
    layerHeight->setDecimals(2);
    layerHeight->setRange(0.01, 0.4);
    layerHeight->setSingleStep(0.05);
    layerHeight->setSuffix(BuiltInProfileWidget::tr(" mm"));
    return group;
}

QGroupBox* BuiltInProfileForm::temperatureGroup(QWidget* owner)
{
    const QString celsius = BuiltInProfileWidget::tr(" \u00b0C");
    auto* const group =
        addGroup(BuiltInProfileWidget::tr("&Temperature"), "temperatureGroup", owner);

    rightTemperature = addRow<SpinBox>(
        group, rightTemperatureLabel, BuiltInProfileWidget::tr("Right Extr&uder:"),
        "rightTemperature",
        BuiltInProfileWidget::tr("Temperature of the right extruder in degrees celcius"));
    rightTemperature->setSuffix(celsius);

    leftTemperature = addRow<SpinBox>(
        group, leftTemperatureLabel, BuiltInProfileWidget::tr("Left Extruder:"), "leftTemperature",
        BuiltInProfileWidget::tr("Temperature of the left extruder in degrees celcius"));
    leftTemperature->setSuffix(celsius);

    heatPlatform = new QCheckBox(BuiltInProfileWidget::tr("Heat the Build Plate"), group);
    heatPlatform->setObjectName(QStringLiteral("heatPlatform"));
    heatPlatform->setToolTip(
        BuiltInProfileWidget::tr("Set whether to heat the build plate to the temperature below"));
    static_cast<QFormLayout*>(group->layout())->addRow(heatPlatform);

    platformTemperature = addRow<SpinBox>(
        group, platformTemperatureLabel, BuiltInProfileWidget::tr("Build Plate:"),
        "platformTemperature",
        BuiltInProfileWidget::tr(
            "Temperature of the heated build plate (if present) in degrees celcius"));
    platformTemperature->setRange(0, 200);
    platformTemperature->setSuffix(celsius);
    return group;
}

QGroupBox* BuiltInProfileForm::speedGroup(QWidget* owner)
{
    const QString speed = BuiltInProfileWidget::tr(" mm/s");
    auto* const group = addGroup(BuiltInProfileWidget::tr("S&peed"), "speedGroup", owner);

    extrudingSpeed = addRow<SpinBox>(
        group, extrudingSpeedLabel, BuiltInProfileWidget::tr("Speed while Extr&uding:"),
        "extrudingSpeed",
        BuiltInProfileWidget::tr("Top speed for toolhead movement while extruding"));
    extrudingSpeed->setRange(10, 200);
    extrudingSpeed->setSuffix(speed);

    travelingSpeed = addRow<SpinBox>(
        group, travelingSpeedLabel, BuiltInProfileWidget::tr("Speed while Travelin&g:"),
        "travelingSpeed",
        BuiltInProfileWidget::tr("Top speed for toolhead movement while not extruding"));
    travelingSpeed->setRange(10, 200);
    travelingSpeed->setSuffix(speed);
    return group;
}

} // namespace trovek
