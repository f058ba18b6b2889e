#include "trovek-ui/make_gcode_dialog.h"

#include "trovek-ui/elided_label.h"
#include "trovek-ui/machine_combo_box.h"
#include "trovek-ui/material_combo_box.h"
#include "trovek-ui/util.h"

#include <trovek/printer.h>

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QIcon>
#include <QLabel>
#include <QTextDocument>

#include <memory>

namespace trovek {

namespace {

/** What is selected when nothing sensible is: PLA, and the right extruder. */
constexpr int kFallbackIndex = 1;

void ensureSelection(QComboBox& comboBox)
{
    if (comboBox.currentIndex() < 0 || comboBox.currentIndex() >= comboBox.count())
        comboBox.setCurrentIndex(kFallbackIndex);
}

} // namespace

MakeGCodeDialog::MakeGCodeDialog(TrovekQt& facade, const QString& inputFile, QSettings* settings,
                                 const Printer* printer, const QString& defaultExportDir,
                                 bool showCboArchetypes, QWidget* parent)
    : MakeDialog(facade, inputFile, settings, printer, defaultExportDir, showCboArchetypes, parent)
    , m_addStartEnd(new QCheckBox(tr("Add start/end GCode"), this))
    , m_materialLabel(new QLabel(tr("M&aterial:"), this))
    , m_material(new MaterialComboBox(this))
    , m_extruderLabel(new QLabel(tr("Extruder:"), this))
    , m_extruder(new QComboBox(this))
    , m_extruderWarning(new QLabel(tr("Warning: always select the same extruder that the GCode "
                                      "file was created with."),
                                   this))
{
    auto* const file = new ElidedLabel(inputFile, this);
    file->setObjectName(QStringLiteral("file"));
    // Also for a name that reads like markup.
    file->setToolTip(Qt::convertFromPlainText(inputFile));

    m_addStartEnd->setObjectName(QStringLiteral("addStartEnd"));
    m_addStartEnd->setToolTip(
        tr("Add initialization GCode (not needed for GCode created by Ostrand)"));

    m_materialLabel->setObjectName(QStringLiteral("materialLabel"));
    m_materialLabel->setBuddy(m_material);
    m_material->setObjectName(QStringLiteral("material"));
    m_material->setToolTip(tr("If ABS is selected, heats the build platform"));

    m_extruderLabel->setObjectName(QStringLiteral("extruderLabel"));
    m_extruderLabel->setBuddy(m_extruder);
    m_extruder->setObjectName(QStringLiteral("extruder"));
    m_extruder->setToolTip(tr("For a dual-extruder bot, set which extruder(s) to heat"));
    m_extruder->addItem(QIcon(QStringLiteral(":/make/extruder_left.png")), tr("Left"));
    m_extruder->addItem(QIcon(QStringLiteral(":/make/extruder_right.png")), tr("Right"));
    m_extruder->addItem(QIcon(QStringLiteral(":/make/extruder_dual.png")), tr("Dual"));
    m_extruder->setCurrentIndex(kFallbackIndex);
    m_extruderWarning->setObjectName(QStringLiteral("extruderWarning"));
    m_extruderWarning->setWordWrap(true);

    QFormLayout& form = formLayout();
    form.addRow(tr("File:"), file);
    form.addRow(QString(), new QWidget(this));
    form.addRow(QString(), m_addStartEnd);
    form.addRow(m_materialLabel, m_material);
    form.addRow(m_extruderLabel, m_extruder);
    form.addRow(QString(), m_extruderWarning);
    moveButtonsToEndOfTabOrder();
    ignoreWheelUnlessFocused(this);

    connect(m_addStartEnd, &QCheckBox::toggled, this, &MakeGCodeDialog::requestSanitize);
    MakeGCodeDialog::sanitize();
}

MakeGCodeDialog::~MakeGCodeDialog() = default;

Orvane::Material MakeGCodeDialog::singleMaterial()
{
    return qMin(m_material->material(), Orvane::PLA);
}

Orvane::Material MakeGCodeDialog::leftMaterial()
{
    return singleMaterial();
}

Orvane::Material MakeGCodeDialog::rightMaterial()
{
    return singleMaterial();
}

SlicerConfiguration MakeGCodeDialog::slicerConfiguration()
{
    const std::unique_ptr<SlicerConfiguration> defaults(
        SlicerConfiguration::defaultConfiguration(SlicerConfiguration::Standard));
    SlicerConfiguration configuration = *defaults;
    switch (m_extruder->currentIndex()) {
    case 0:
        configuration.setExtruder(SlicerConfiguration::Left);
        break;
    case 1:
        configuration.setExtruder(SlicerConfiguration::Right);
        break;
    case 2:
        configuration.setExtruder(SlicerConfiguration::Both);
        break;
    default:
        break;
    }
    return configuration;
}

bool MakeGCodeDialog::skipStartEndCode()
{
    return !m_addStartEnd->isChecked();
}

void MakeGCodeDialog::sanitize()
{
    MakeDialog::sanitize();

    const Printer* const machine = machineComboBox().machine();
    const bool addStartEnd = m_addStartEnd->isChecked();
    const bool askMaterial = addStartEnd && machine != nullptr && machine->hasHeatedPlatform();
    const bool askExtruder = addStartEnd && machine != nullptr && machine->numberOfExtruders() >= 2;

    m_materialLabel->setEnabled(askMaterial);
    m_material->setEnabled(askMaterial);
    if (askMaterial)
        ensureSelection(*m_material);

    m_extruderLabel->setEnabled(askExtruder);
    m_extruder->setEnabled(askExtruder);
    m_extruderWarning->setEnabled(askExtruder);
    if (askExtruder)
        ensureSelection(*m_extruder);
    else
        m_extruder->setCurrentIndex(-1);
}

} // namespace trovek
