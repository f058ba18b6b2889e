#include "trovek-ui/extruder_settings_widget.h"

#include "trovek-ui/material_combo_box.h"
#include "trovek-ui/util.h"

#include "make_dialog/extruder_settings_form.h"
#include "make_dialog/preset_long_name.h"

#include <trovek/log.h>

#include <QButtonGroup>
#include <QCheckBox>
#include <QRadioButton>
#include <QSignalBlocker>

#include <exception>

namespace trovek {

namespace {

static constexpr char kLogUnit[] = "src\\make_dialog\\extruder_settings_widget";

bool isChoice(int index)
{
    return index >= ExtruderSettingsWidget::Off && index <= ExtruderSettingsWidget::RightExtruder;
}

void selectIfUsable(MaterialComboBox& box, Orvane::Material material)
{
    if (box.isUsable(material))
        box.select(material);
}

/** The two boxes of raft or supports: the combo box of dual machines, the check box of others. */
struct Pair
{
    QComboBox* comboBox;
    QCheckBox* checkBox;

    int choice(bool dual) const { return dual ? comboBox->currentIndex() : checkBox->isChecked(); }

    /** Only the box that is shown tells of it; the other one follows in silence. */
    void set(int choice, bool dual) const
    {
        const QSignalBlocker silence(dual ? static_cast<QWidget*>(checkBox) : comboBox);
        comboBox->setCurrentIndex(choice);
        checkBox->setChecked(choice != ExtruderSettingsWidget::Off);
    }

    /** What was on for the last machine is on for this one. */
    void carryOver(bool toDual) const
    {
        const bool wasOn = choice(!toDual) != ExtruderSettingsWidget::Off;
        const bool isOn = choice(toDual) != ExtruderSettingsWidget::Off;
        if (wasOn == isOn)
            return;
        if (toDual)
            comboBox->setCurrentIndex(wasOn ? ExtruderSettingsWidget::ColorMatched
                                            : ExtruderSettingsWidget::Off);
        else
            checkBox->setChecked(wasOn);
    }
};

} // namespace

class ExtruderSettingsWidget::Private
{
public:
    explicit Private(ExtruderSettingsWidget* owner)
        : form(owner)
    {}

    Pair raft() const { return {form.raft, form.raftCheckBox}; }
    Pair supports() const { return {form.supports, form.supportsCheckBox}; }

    ExtruderSettingsForm form;
    bool dual = false;
};

ExtruderSettingsWidget::ExtruderSettingsWidget(QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>(this))
{
    const ExtruderSettingsForm& form = d->form;
    form.showExtruders(d->dual);
    ignoreWheelUnlessFocused(this);

    const auto forwardMaterial = [this](MaterialComboBox* box, auto signal) {
        connect(box, &MaterialComboBox::materialChanged, this, signal);
        connect(box, &MaterialComboBox::materialChanged, this,
                &ExtruderSettingsWidget::resetIsSliced);
    };
    forwardMaterial(form.left, &ExtruderSettingsWidget::leftExtruderMaterialChanged);
    forwardMaterial(form.right, &ExtruderSettingsWidget::rightExtruderMaterialChanged);
    forwardMaterial(form.single, &ExtruderSettingsWidget::singleExtruderMaterialChanged);

    const auto forwardQuality = [this](QRadioButton* radio, auto signal) {
        connect(radio, &QRadioButton::toggled, this, signal);
        connect(radio, &QRadioButton::toggled, this, &ExtruderSettingsWidget::resetIsSliced);
    };
    forwardQuality(form.low, &ExtruderSettingsWidget::lowQualityToggled);
    forwardQuality(form.standard, &ExtruderSettingsWidget::mediumQualityToggled);
    forwardQuality(form.high, &ExtruderSettingsWidget::highQualityToggled);

    const auto forwardChoice = [this](QComboBox* box, auto signal) {
        const auto changed = QOverload<int>::of(&QComboBox::currentIndexChanged);
        connect(box, changed, this, signal);
        connect(box, changed, this, &ExtruderSettingsWidget::resetIsSliced);
    };
    forwardChoice(form.raft, &ExtruderSettingsWidget::raftChanged);
    forwardChoice(form.supports, &ExtruderSettingsWidget::supportsChanged);
    connect(form.raftCheckBox, &QCheckBox::toggled, this,
            &ExtruderSettingsWidget::raftCheckBoxSlot);
    connect(form.supportsCheckBox, &QCheckBox::toggled, this,
            &ExtruderSettingsWidget::supportsCheckBoxSlot);
}

ExtruderSettingsWidget::~ExtruderSettingsWidget() = default;

Orvane::Material ExtruderSettingsWidget::leftMaterial() const
{
    return d->form.left->material();
}

Orvane::Material ExtruderSettingsWidget::rightMaterial() const
{
    return d->form.right->material();
}

Orvane::Material ExtruderSettingsWidget::singleMaterial() const
{
    return d->form.single->material();
}

void ExtruderSettingsWidget::setLeftMaterial(Orvane::Material material)
{
    selectIfUsable(*d->form.left, material);
}

void ExtruderSettingsWidget::setRightMaterial(Orvane::Material material)
{
    selectIfUsable(*d->form.right, material);
}

void ExtruderSettingsWidget::setSingleMaterial(Orvane::Material material)
{
    selectIfUsable(*d->form.single, material);
}

void ExtruderSettingsWidget::sanitizeMaterialsForBot(Printer::Type type)
{
    for (MaterialComboBox* box : {d->form.left, d->form.right, d->form.single})
        box->sanitizeForBot(type);
}

SlicerConfiguration::Preset ExtruderSettingsWidget::quality() const
{
    const int id = d->form.qualities->checkedId();
    return id < 0 ? SlicerConfiguration::Custom : static_cast<SlicerConfiguration::Preset>(id);
}

int ExtruderSettingsWidget::raft() const
{
    return d->raft().choice(d->dual);
}

int ExtruderSettingsWidget::supports() const
{
    return d->supports().choice(d->dual);
}

void ExtruderSettingsWidget::setRaft(int choice)
{
    d->raft().set(isChoice(choice) ? choice : Off, d->dual);
}

void ExtruderSettingsWidget::setSupports(int choice)
{
    d->supports().set(isChoice(choice) ? choice : Off, d->dual);
}

void ExtruderSettingsWidget::setRaftAndSupportsEnabled(bool enabled)
{
    const ExtruderSettingsForm& form = d->form;
    for (QWidget* widget :
         std::initializer_list<QWidget*>{form.raftLabel, form.raft, form.raftCheckBox,
                                         form.supportsLabel, form.supports, form.supportsCheckBox})
        widget->setEnabled(enabled);
}

void ExtruderSettingsWidget::setDualExtrusion(bool dual)
{
    if (dual == d->dual)
        return;
    d->dual = dual;
    d->form.showExtruders(dual);
    d->raft().carryOver(dual);
    d->supports().carryOver(dual);
}

void ExtruderSettingsWidget::selectLowQuality()
{
    d->form.low->setChecked(true);
}

void ExtruderSettingsWidget::selectMediumQuality()
{
    d->form.standard->setChecked(true);
}

void ExtruderSettingsWidget::selectHighQuality()
{
    d->form.high->setChecked(true);
}

void ExtruderSettingsWidget::clearQuality()
{
    QAbstractButton* const checked = d->form.qualities->checkedButton();
    if (!checked)
        return;
    // An exclusive group keeps one of its buttons checked.
    d->form.qualities->setExclusive(false);
    checked->setChecked(false);
    d->form.qualities->setExclusive(true);
}

void ExtruderSettingsWidget::overridednessChanged(SlicerConfiguration::Preset type,
                                                  bool hasOverrides)
{
    try {
        const QString name = presetLongName(type, hasOverrides);
        d->form.qualities->button(type)->setText(name);
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
    }
}

void ExtruderSettingsWidget::raftCheckBoxSlot(bool checked)
{
    emit raftChanged(checked);
    emit resetIsSliced();
}

void ExtruderSettingsWidget::supportsCheckBoxSlot(bool checked)
{
    emit supportsChanged(checked);
    emit resetIsSliced();
}

} // namespace trovek
