#include "trovek-ui/make_thing_dialog.h"

#include "make_dialog/make_thing_dialog_p.h"
#include "make_dialog/make_thing_settings.h"
#include "make_dialog/preview_row.h"
#include "make_dialog/strandel_check.h"
#include "make_dialog/tell.h"

#include "trovek-ui/builtin_profile_widget.h"
#include "trovek-ui/collapse_expand_header.h"
#include "trovek-ui/extruder_label.h"
#include "trovek-ui/extruder_settings_widget.h"
#include "trovek-ui/machine_combo_box.h"
#include "trovek-ui/messages.h"
#include "trovek-ui/profile_combo_box.h"
#include "trovek-ui/profile_list_model.h"

#include <trovek/log.h>
#include <trovek/printer.h>
#include <trovek/text.h>

#include <QEvent>
#include <QPointer>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QTimer>

#include <exception>

static constexpr char kLogUnit[] = "src\\make_dialog\\make_thing_dialog";

namespace trovek {

namespace {

Orvane::Material orPla(Orvane::Material material)
{
    return material >= 0 && material < Orvane::kMaterialCount ? material : Orvane::PLA;
}

/** Raft and support extruders count 0 right and 1 left. */
std::uint32_t toolOf(int choice)
{
    return choice == ExtruderSettingsWidget::LeftExtruder ? 1 : 0;
}

} // namespace

MakeThingDialog::MakeThingDialog(TrovekQt& facade, const QString& inputFile,
                                 SlicerConfiguration::Extruder extruder, QSettings* settings,
                                 const Printer* printer, const QString& defaultExportDir,
                                 bool showCboArchetypes, QWidget* parent)
    : MakeDialog(facade, inputFile, settings, printer, defaultExportDir, showCboArchetypes, parent)
    , d(std::make_unique<Private>(facade, extruder))
{
    d->form.build(formLayout(), extruder, this);
    insertAboveButtons(d->form.preview);
    moveButtonsToEndOfTabOrder();
    connectSignals();
    restoreSettings();
    MakeThingDialog::sanitize();
}

MakeThingDialog::~MakeThingDialog() = default;

void MakeThingDialog::connectSignals()
{
    const MakeThingForm& form = d->form;
    connect(&machineComboBox(), &MachineComboBox::machineSelected, this,
            &MakeThingDialog::machineSelected);
    connect(form.advancedHeader, &CollapseExpandHeader::toggled, this,
            &MakeThingDialog::requestSanitize);

    connect(form.profiles, &ProfileComboBox::currentProfileChanged, this,
            &MakeThingDialog::profileSelected);
    connect(form.profiles, &ProfileComboBox::currentEnabledChanged, this,
            &MakeThingDialog::requestSanitize);
    connect(form.createButton, &QPushButton::clicked, this, &MakeThingDialog::createProfile);
    connect(form.numbers, &BuiltInProfileWidget::createProfileClicked, this,
            &MakeThingDialog::createProfile);
    connect(form.editButton, &QPushButton::clicked, this, &MakeThingDialog::editProfile);
    connect(form.deleteButton, &QPushButton::clicked, this, &MakeThingDialog::deleteProfile);

    const ExtruderSettingsWidget* const extruders = form.extruders;
    connect(extruders, &ExtruderSettingsWidget::leftExtruderMaterialChanged, this,
            &MakeThingDialog::leftMaterialChanged);
    connect(extruders, &ExtruderSettingsWidget::rightExtruderMaterialChanged, this,
            &MakeThingDialog::materialChanged);
    connect(extruders, &ExtruderSettingsWidget::singleExtruderMaterialChanged, this,
            &MakeThingDialog::materialChanged);
    connect(extruders, &ExtruderSettingsWidget::lowQualityToggled, this,
            &MakeThingDialog::lowQualityRadioButtonToggled);
    connect(extruders, &ExtruderSettingsWidget::mediumQualityToggled, this,
            &MakeThingDialog::mediumQualityRadioButtonToggled);
    connect(extruders, &ExtruderSettingsWidget::highQualityToggled, this,
            &MakeThingDialog::highQualityRadioButtonToggled);
    connect(form.numbers, &BuiltInProfileWidget::overridednessChanged, form.extruders,
            &ExtruderSettingsWidget::overridednessChanged);

    connect(extruders, &ExtruderSettingsWidget::resetIsSliced, form.preview,
            &PreviewRow::clearNotice);
    connect(form.preview, &PreviewRow::cancelClicked, this, &MakeThingDialog::cancelPreview);
    connect(this, &QDialog::finished, &d->slice, &PreviewSlice::cancel);
    connect(&d->slice, &PreviewSlice::progressed, this, &MakeThingDialog::showPreviewProgress);
    connect(&d->slice, &PreviewSlice::sliced, this, &MakeThingDialog::showPrintPreview);
    connect(&d->slice, &PreviewSlice::canceled, this, &MakeThingDialog::cancelPreview);
    connect(&d->slice, &PreviewSlice::linkLost, this, &MakeThingDialog::tellOfLostLink);
    // Others wait for the news of the job, and the message would keep them waiting.
    connect(&d->slice, &PreviewSlice::failed, this, &MakeThingDialog::tellOfFailedPreview,
            Qt::QueuedConnection);
}

void MakeThingDialog::restoreSettings()
{
    const MakeThingSettings stored = MakeThingSettings::read(settings());
    const MakeThingForm& form = d->form;
    d->wished.left = stored.leftMaterial.value_or(Orvane::UnknownMaterial);
    d->wished.right = stored.rightMaterial.value_or(Orvane::UnknownMaterial);
    d->wished.single = stored.singleMaterial.value_or(Orvane::UnknownMaterial);
    selectMaterials();
    tellMachine();
    form.extruders->setRaft(stored.raft.value_or(ExtruderSettingsWidget::Off));
    form.extruders->setSupports(stored.supports.value_or(ExtruderSettingsWidget::Off));
    form.advancedHeader->setChecked(stored.advanced.value_or(false));
    form.preview->setWanted(stored.preview.value_or(false));

    selectPreset(stored.preset.value_or(SlicerConfiguration::Standard));
    selectUserProfile(stored.profileFolder);
    profileSelected(form.profiles->currentProfile());
    if (profile().isOnDisk() && stored.numbersPreset)
        form.numbers->setSlicerConfig(*stored.numbersPreset);
    SlicerConfiguration numbers = form.numbers->configuration();
    readNumbers(settings(), numbersContext(), &numbers);
    form.numbers->setConfiguration(numbers);
}

void MakeThingDialog::saveSettings()
{
    MakeDialog::saveSettings();
    const MakeThingForm& form = d->form;
    MakeThingSettings chosen;
    chosen.leftMaterial = form.extruders->leftMaterial();
    chosen.rightMaterial = form.extruders->rightMaterial();
    chosen.singleMaterial = form.extruders->singleMaterial();
    chosen.raft = form.extruders->raft();
    chosen.supports = form.extruders->supports();
    chosen.advanced = form.advancedHeader->isChecked();
    chosen.preview = form.preview->isWanted();
    if (profile().isOnDisk())
        chosen.profileFolder = profile().name();
    else
        chosen.preset = profile().preset();
    chosen.write(settings());
    writeNumbers(settings(), numbersContext(), form.numbers->configuration());
}

QString MakeThingDialog::numbersContext() const
{
    const QString preset = QString::number(d->form.numbers->preset());
    const ExtruderSettingsWidget& extruders = *d->form.extruders;
    return d->dual ? QStringLiteral("%1:%2,%3")
                         .arg(preset)
                         .arg(extruders.rightMaterial())
                         .arg(extruders.leftMaterial())
                   : QStringLiteral("%1:%2").arg(preset).arg(extruders.singleMaterial());
}

Orvane::Material MakeThingDialog::singleMaterial()
{
    return orPla(d->form.extruders->singleMaterial());
}

Orvane::Material MakeThingDialog::leftMaterial()
{
    return orPla(d->form.extruders->leftMaterial());
}

Orvane::Material MakeThingDialog::rightMaterial()
{
    return orPla(d->form.extruders->rightMaterial());
}

bool MakeThingDialog::skipStartEndCode()
{
    return false;
}

SlicerConfiguration MakeThingDialog::slicerConfiguration()
{
    const Printer* const machine = machineComboBox().machine();
    const bool single = machine == nullptr || machine->numberOfExtruders() < 2;
    SlicerConfiguration configuration;
    if (profile().isOnDisk()) {
        configuration.setSlicer(SlicerConfiguration::Strandel);
        configuration.setProfilePath(toStdString(profile().path()));
    } else {
        const int raft = d->form.extruders->raft();
        const int supports = d->form.extruders->supports();
        configuration = d->form.numbers->configuration();
        configuration.setRaft(raft != ExtruderSettingsWidget::Off);
        configuration.setSupports(supports != ExtruderSettingsWidget::Off);
        configuration.setDefaultRaftExtruder(single ? 0 : toolOf(raft));
        configuration.setDefaultSupportExtruder(single ? 0 : toolOf(supports));
        configuration.setDoAutoRaft(!single && raft == ExtruderSettingsWidget::ColorMatched);
        configuration.setDoAutoSupport(!single && supports == ExtruderSettingsWidget::ColorMatched);
    }
    if (d->extruder >= SlicerConfiguration::Left && d->extruder <= SlicerConfiguration::Both)
        configuration.setExtruder(d->extruder);
    if (single)
        configuration.setExtruder(SlicerConfiguration::Right);
    return configuration;
}

bool MakeThingDialog::finalMakeOrExportCheck()
{
    const QPointer<MakeThingDialog> self(this);
    QString error;
    const bool passed = checkStrandelConfig(facade(), profile(), this, &error);
    if (!self.isNull())
        d->form.preview->showQuestion(error);
    return passed;
}

void MakeThingDialog::sanitize()
{
    try {
        MakeDialog::sanitize();
        tellMachine();
        updateCustomProfileHelpText();
        const bool custom = profile().isOnDisk();
        d->form.show({d->form.advancedHeader->isChecked(), custom,
                      d->form.profiles->isCurrentEnabled() && d->profileIsReadable});
        d->form.extruders->setRaftAndSupportsEnabled(!custom);
        layOutAround(d->form.numbers->parentWidget());
        updateMainButton();
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << error.what() << std::endl;
    }
}

void MakeThingDialog::updateMainButton()
{
    mainButton().setEnabled(d->form.profiles->isCurrentEnabled() && !d->slice.isRunning());
}

// Whoever edited a profile comes back to the dialog.
void MakeThingDialog::changeEvent(QEvent* event)
{
    MakeDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        requestSanitize();
}

/**
 * Not at once: between machines and archetypes the box passes others, whose materials would take
 * the user's numbers away.
 */
void MakeThingDialog::machineSelected(Printer*)
{
    requestSanitize();
}

void MakeThingDialog::tellMachine()
{
    const Printer* const machine = machineComboBox().machine();
    ExtruderLabel& label = *d->form.extruderLabel;
    label.update(machine);
    label.setVisible(machine == nullptr || label.isError() || machine->numberOfExtruders() > 1);
    // While the link is down everything stays as it was for the last machine.
    if (machine == nullptr)
        return;

    d->dual = machine->numberOfExtruders() == 2;
    d->form.setDualExtrusion(d->dual);
    d->form.numbers->setHasHeatedPlatform(machine->hasHeatedPlatform());
    if (machine->type() != d->machineType) {
        d->machineType = machine->type();
        d->form.profiles->profileModel().setSelectedMachineType(d->machineType);
        selectMaterials();
    }
    updateMaterials();
}

/** What the user wished, where the machine can use it; what is usual for the machine elsewhere. */
void MakeThingDialog::selectMaterials()
{
    const QScopedValueRollback<bool> filling(d->filling, true);
    ExtruderSettingsWidget& extruders = *d->form.extruders;
    extruders.sanitizeMaterialsForBot(d->machineType);
    extruders.setLeftMaterial(d->wished.left);
    extruders.setRightMaterial(d->wished.right);
    extruders.setSingleMaterial(d->wished.single);
}

void MakeThingDialog::materialChanged(Orvane::Material material)
{
    if (d->filling)
        return;
    (d->dual ? d->wished.right : d->wished.single) = material;
    updateMaterials();
    warnOf(material);
}

void MakeThingDialog::leftMaterialChanged(Orvane::Material material)
{
    if (d->filling)
        return;
    d->wished.left = material;
    updateMaterials();
    warnOf(material);
}

/** Only what changed: the numbers are filled anew for it, and what the user changed is gone. */
void MakeThingDialog::updateMaterials()
{
    const Orvane::Material right = d->dual ? rightMaterial() : singleMaterial();
    const Orvane::Material left = d->dual ? leftMaterial() : right;
    if (right == d->rightMaterial && left == d->leftMaterial)
        return;
    d->rightMaterial = right;
    d->leftMaterial = left;
    d->form.numbers->setMaterials(right, left);
}

/** Later, when the box has closed its list. */
void MakeThingDialog::warnOf(Orvane::Material material)
{
    if (material != Orvane::Flexible)
        return;
    QTimer::singleShot(0, this, [this] {
        tell<message::MaterialPCLAlert>(static_cast<QWidget*>(this), &settings());
    });
}

void MakeThingDialog::lowQualityRadioButtonToggled(bool checked)
{
    if (checked)
        selectPreset(SlicerConfiguration::Low);
}

void MakeThingDialog::mediumQualityRadioButtonToggled(bool checked)
{
    if (checked)
        selectPreset(SlicerConfiguration::Standard);
}

void MakeThingDialog::highQualityRadioButtonToggled(bool checked)
{
    if (checked)
        selectPreset(SlicerConfiguration::High);
}

} // namespace trovek
