#include "trovek-ui/builtin_profile_widget.h"

#include "trovek-ui/double_spin_box.h"
#include "trovek-ui/spin_box.h"
#include "trovek-ui/util.h"

#include "make_dialog/builtin_profile_form.h"
#include "make_dialog/field_label.h"
#include "make_dialog/preset_values.h"

#include <trovek/log.h>

#include <QCheckBox>
#include <QPushButton>
#include <QScopedValueRollback>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

namespace trovek {

namespace {

static constexpr char kLogUnit[] = "src\\make_dialog\\builtin_profile_widget";

constexpr int kMaxCelsius = 280;
/** Flexible filament burns above. */
constexpr int kMaxFlexibleCelsius = 250;
constexpr int kPlatformCelsius = 110;

SlicerConfiguration defaultsOf(SlicerConfiguration::Preset preset)
{
    const std::unique_ptr<SlicerConfiguration> defaults(
        SlicerConfiguration::defaultConfiguration(preset));
    return *defaults;
}

bool isKnown(Orvane::Material material)
{
    if (material == Orvane::UnknownMaterial)
        TROVEK_LOG(0) << "Unknown material" << std::endl;
    return material >= 0 && material < Orvane::kMaterialCount;
}

void setMaterialRange(SpinBox& temperature, Orvane::Material material)
{
    if (material == Orvane::Flexible)
        temperature.setRange(0, kMaxFlexibleCelsius);
    else if (material >= 0 && material <= Orvane::UnknownMaterial)
        temperature.setRange(0, kMaxCelsius);
}

int toInt(std::uint32_t value)
{
    return int(std::min<std::uint32_t>(value, std::numeric_limits<int>::max()));
}

QString shown(const SpinBox& box, int value)
{
    return box.locale().toString(value) + box.suffix();
}

QString shown(const DoubleSpinBox& box, double value)
{
    return box.locale().toString(value, 'f', box.decimals()) + box.suffix();
}

/**
 * Marks the label while the box shows another value; true when it does.
 * @param expected null where nothing is expected
 */
template <typename Box, typename Value>
bool mark(FieldLabel* label, const Box* box, Value PresetValues::*value,
          const PresetValues* expected)
{
    const QString defaultText = expected ? shown(*box, expected->*value) : QString();
    const bool differs = expected && shown(*box, box->value()) != defaultText;
    label->setMark(differs ? BuiltInProfileWidget::tr("Default: %1").arg(defaultText) : QString());
    return differs;
}

} // namespace

class BuiltInProfileWidget::Private
{
public:
    explicit Private(BuiltInProfileWidget* owner)
        : form(owner)
    {}

    void fillFromPreset();
    void populateWidgets(const SlicerConfiguration& configuration);
    void applyHeatedPlatform();
    bool compareWithPreset();

    BuiltInProfileForm form;
    SlicerConfiguration::Preset preset = SlicerConfiguration::Standard;
    Orvane::Material rightMaterial = Orvane::PLA;
    Orvane::Material leftMaterial = Orvane::PLA;
    bool hasHeatedPlatform = true;
    /** While the fields change together; what the owner hears of is the result. */
    bool filling = false;
};

BuiltInProfileWidget::BuiltInProfileWidget(QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>(this))
{
    // The signal names the type without its namespace.
    qRegisterMetaType<SlicerConfiguration::Preset>("SlicerConfiguration::Preset");
    d->form.platformTemperature->setValue(kPlatformCelsius);
    setMaterialRange(*d->form.rightTemperature, d->rightMaterial);
    setMaterialRange(*d->form.leftTemperature, d->leftMaterial);
    d->fillFromPreset();
    ignoreWheelUnlessFocused(this);

    const BuiltInProfileForm& form = d->form;
    for (SpinBox* box : {form.infill, form.shells, form.rightTemperature, form.leftTemperature,
                         form.platformTemperature, form.extrudingSpeed, form.travelingSpeed}) {
        connect(box, QOverload<int>::of(&QSpinBox::valueChanged), this,
                &BuiltInProfileWidget::emitOverridednessChanged);
    }
    connect(form.layerHeight, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            &BuiltInProfileWidget::emitOverridednessChanged);
    connect(form.heatPlatform, &QCheckBox::toggled, this,
            &BuiltInProfileWidget::heatPlatformToggled);
    connect(form.defaultsButton, &QPushButton::clicked, this,
            &BuiltInProfileWidget::resetToDefaults);
    connect(form.createProfileButton, &QPushButton::clicked, this,
            &BuiltInProfileWidget::createProfileClicked);
}

BuiltInProfileWidget::~BuiltInProfileWidget() = default;

SlicerConfiguration::Preset BuiltInProfileWidget::preset() const
{
    return d->preset;
}

void BuiltInProfileWidget::setSlicerConfig(SlicerConfiguration::Preset preset)
{
    if (preset < SlicerConfiguration::Low || preset > SlicerConfiguration::High) {
        TROVEK_LOG(0) << "Invalid slicer configuration type" << std::endl;
        return;
    }
    d->preset = preset;
    d->fillFromPreset();
    emitOverridednessChanged();
}

void BuiltInProfileWidget::setMaterials(Orvane::Material rightOrOnly, Orvane::Material left)
{
    {
        const QScopedValueRollback<bool> filling(d->filling, true);
        d->rightMaterial = rightOrOnly;
        d->leftMaterial = left;
        setMaterialRange(*d->form.rightTemperature, rightOrOnly);
        setMaterialRange(*d->form.leftTemperature, left);
    }
    d->fillFromPreset();
    emitOverridednessChanged();
}

void BuiltInProfileWidget::setHasHeatedPlatform(bool hasHeatedPlatform)
{
    // The owner tells it again and again; the user's choice stays as long as the machine does.
    if (hasHeatedPlatform == d->hasHeatedPlatform)
        return;
    {
        const QScopedValueRollback<bool> filling(d->filling, true);
        d->hasHeatedPlatform = hasHeatedPlatform;
        d->applyHeatedPlatform();
    }
    emitOverridednessChanged();
}

void BuiltInProfileWidget::setDualExtrusion(bool dual)
{
    d->form.leftTemperatureLabel->setVisible(dual);
    d->form.leftTemperature->setVisible(dual);
    d->form.rightTemperatureLabel->setName(dual ? tr("Right Extruder:") : tr("Extruder:"));
}

SlicerConfiguration BuiltInProfileWidget::configuration() const
{
    const BuiltInProfileForm& form = d->form;
    SlicerConfiguration configuration = defaultsOf(d->preset);
    configuration.setInfill(form.infill->value() * 0.01);
    configuration.setLayerHeight(form.layerHeight->value());
    configuration.setShells(std::uint32_t(form.shells->value()));
    configuration.setExtruderTemperature(std::uint32_t(form.rightTemperature->value()));
    configuration.setLeftExtruderTemperature(std::uint32_t(form.leftTemperature->value()));
    configuration.setHeatPlatform(form.heatPlatform->isChecked());
    configuration.setPlatformTemperature(std::uint32_t(form.platformTemperature->value()));
    configuration.setPrintSpeed(std::uint32_t(form.extrudingSpeed->value()));
    configuration.setTravelSpeed(std::uint32_t(form.travelingSpeed->value()));
    return configuration;
}

void BuiltInProfileWidget::setConfiguration(const SlicerConfiguration& configuration)
{
    {
        const QScopedValueRollback<bool> filling(d->filling, true);
        const BuiltInProfileForm& form = d->form;
        form.infill->setValue(infillPercent(configuration));
        form.layerHeight->setValue(configuration.layerHeight());
        form.shells->setValue(toInt(configuration.shells()));
        form.rightTemperature->setValue(toInt(configuration.extruderTemperature()));
        form.leftTemperature->setValue(toInt(configuration.leftExtruderTemperature()));
        form.heatPlatform->setChecked(d->hasHeatedPlatform && configuration.heatPlatform());
        form.platformTemperature->setValue(toInt(configuration.platformTemperature()));
        form.extrudingSpeed->setValue(toInt(configuration.printSpeed()));
        form.travelingSpeed->setValue(toInt(configuration.travelSpeed()));
    }
    emitOverridednessChanged();
}

void BuiltInProfileWidget::resetToDefaults()
{
    setSlicerConfig(d->preset);
}

void BuiltInProfileWidget::heatPlatformToggled(bool checked)
{
    const bool heat = checked && d->hasHeatedPlatform;
    if (heat != d->form.heatPlatform->isChecked())
        d->form.heatPlatform->setChecked(heat); // and comes back here
    else
        emitOverridednessChanged();
}

void BuiltInProfileWidget::emitOverridednessChanged()
{
    if (!d->filling)
        emit overridednessChanged(d->preset, d->compareWithPreset());
}

void BuiltInProfileWidget::Private::fillFromPreset()
{
    const QScopedValueRollback<bool> guard(filling, true);
    SlicerConfiguration configuration = defaultsOf(preset);
    if (needsHeatedPlatform(rightMaterial) || needsHeatedPlatform(leftMaterial))
        configuration.setHeatPlatform(true);
    populateWidgets(configuration);
    applyHeatedPlatform();
}

void BuiltInProfileWidget::Private::populateWidgets(const SlicerConfiguration& configuration)
{
    if (isKnown(rightMaterial)) {
        const PresetValues values(configuration, rightMaterial);
        form.infill->setValue(values.infillPercent);
        form.layerHeight->setValue(values.layerHeight);
        form.shells->setValue(values.shells);
        form.rightTemperature->setValue(values.extruderCelsius);
        form.heatPlatform->setChecked(needsHeatedPlatform(rightMaterial));
        // PLA sticks at many temperatures; the user's stays.
        if (rightMaterial != Orvane::PLA)
            form.platformTemperature->setValue(kPlatformCelsius);
        form.extrudingSpeed->setValue(values.printSpeed);
        form.travelingSpeed->setValue(values.travelSpeed);
    }
    if (isKnown(leftMaterial))
        form.leftTemperature->setValue(leftExtruderCelsius(configuration, leftMaterial));
}

/** Either material may need the heat, whatever the right one alone asks for. */
void BuiltInProfileWidget::Private::applyHeatedPlatform()
{
    form.heatPlatform->setChecked(hasHeatedPlatform && (needsHeatedPlatform(rightMaterial) ||
                                                        needsHeatedPlatform(leftMaterial)));
    form.heatPlatform->setEnabled(hasHeatedPlatform);
    form.platformTemperature->setEnabled(hasHeatedPlatform);
    form.platformTemperatureLabel->setEnabled(hasHeatedPlatform);
}

bool BuiltInProfileWidget::Private::compareWithPreset()
{
    std::optional<PresetValues> expected;
    if (isKnown(rightMaterial))
        expected.emplace(defaultsOf(preset), rightMaterial);
    const PresetValues* const values = expected ? &*expected : nullptr;

    bool differs = false;
    differs |= mark(form.infillLabel, form.infill, &PresetValues::infillPercent, values);
    differs |= mark(form.shellsLabel, form.shells, &PresetValues::shells, values);
    differs |= mark(form.layerHeightLabel, form.layerHeight, &PresetValues::layerHeight, values);
    differs |= mark(form.rightTemperatureLabel, form.rightTemperature,
                    &PresetValues::extruderCelsius, values);
    differs |= mark(form.platformTemperatureLabel, form.platformTemperature,
                    &PresetValues::platformCelsius, values);
    differs |=
        mark(form.extrudingSpeedLabel, form.extrudingSpeed, &PresetValues::printSpeed, values);
    differs |=
        mark(form.travelingSpeedLabel, form.travelingSpeed, &PresetValues::travelSpeed, values);
    return differs;
}

} // namespace trovek
