#include "make_dialog/extruder_settings_form.h"

#include "trovek-ui/extruder_settings_widget.h"
#include "trovek-ui/material_combo_box.h"

#include "make_dialog/preset_long_name.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QIcon>
#include <QLabel>
#include <QRadioButton>

namespace trovek {

namespace {

enum Column : int { LabelColumn, FieldColumn };
enum Row : int { MaterialRow, LowRow, StandardRow, HighRow, RaftRow, SupportsRow, HelpRow };

template <typename Widget>
Widget* named(Widget* widget, const char* name, const QString& toolTip = {})
{
    widget->setObjectName(QLatin1String(name));
    widget->setToolTip(toolTip);
    return widget;
}

/** @param pictures the path of the four pictures up to their names */
void addChoices(QComboBox* box, const QString& pictures)
{
    // As large as they are drawn.
    box->setIconSize({24, 24});
    const auto add = [&](const char* picture, const QString& text, int choice) {
        box->addItem(QIcon(pictures + QLatin1String(picture)), text, choice);
    };
    add("off.png", ExtruderSettingsWidget::tr("Off"), ExtruderSettingsWidget::Off);
    add("color_matched.png", ExtruderSettingsWidget::tr("Color-Matched"),
        ExtruderSettingsWidget::ColorMatched);
    add("left.png", ExtruderSettingsWidget::tr("Left Extruder"),
        ExtruderSettingsWidget::LeftExtruder);
    add("right.png", ExtruderSettingsWidget::tr("Right Extruder"),
        ExtruderSettingsWidget::RightExtruder);
}

QHBoxLayout* rowOf(std::initializer_list<QWidget*> widgets)
{
    auto* const row = new QHBoxLayout;
    for (QWidget* widget : widgets)
        row->addWidget(widget);
    row->addStretch();
    return row;
}

} // namespace

ExtruderSettingsForm::ExtruderSettingsForm(QWidget* owner)
{
    auto* const grid = new QGridLayout(owner);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(FieldColumn, 1);
    addMaterials(owner, grid);
    addQualities(owner, grid);
    addRaftAndSupports(owner, grid);
    addHelp(owner, grid);
}

void ExtruderSettingsForm::showExtruders(bool dual) const
{
    for (QWidget* widget : std::initializer_list<QWidget*>{leftLabel, left, rightLabel, right, raft,
                                                           supports, help}) {
        widget->setVisible(dual);
    }
    for (QWidget* widget :
         std::initializer_list<QWidget*>{single, raftCheckBox, supportsCheckBox}) {
        widget->setVisible(!dual);
    }
    materialLabel->setBuddy(dual ? nullptr : single);
    raftLabel->setBuddy(dual ? static_cast<QWidget*>(raft) : raftCheckBox);
    supportsLabel->setBuddy(dual ? static_cast<QWidget*>(supports) : supportsCheckBox);
}

void ExtruderSettingsForm::addMaterials(QWidget* owner, QGridLayout* grid)
{
    materialLabel =
        named(new QLabel(ExtruderSettingsWidget::tr("Material:"), owner), "materialLabel");
    leftLabel = named(new QLabel(ExtruderSettingsWidget::tr("Left:"), owner), "leftLabel");
    rightLabel = named(new QLabel(ExtruderSettingsWidget::tr("Right:"), owner), "rightLabel");
    left = named(new MaterialComboBox(owner), "leftMaterial",
                 ExtruderSettingsWidget::tr("Select the material used by the left extruder"));
    right = named(new MaterialComboBox(owner), "rightMaterial",
                  ExtruderSettingsWidget::tr("Select the material used by the right extruder"));
    single = named(new MaterialComboBox(owner), "singleMaterial",
                   ExtruderSettingsWidget::tr("Select the material you are printing with"));
    leftLabel->setBuddy(left);
    rightLabel->setBuddy(right);

    grid->addWidget(materialLabel, MaterialRow, LabelColumn);
    grid->addLayout(rowOf({leftLabel, left, rightLabel, right, single}), MaterialRow, FieldColumn);
}

void ExtruderSettingsForm::addQualities(QWidget* owner, QGridLayout* grid)
{
    auto* const label =
        named(new QLabel(ExtruderSettingsWidget::tr("Resolution:"), owner), "resolutionLabel");
    low = named(new QRadioButton(presetLongName(SlicerConfiguration::Low, false), owner), "low",
                ExtruderSettingsWidget::tr("Build quickly but with a rougher result"));
    standard = named(new QRadioButton(presetLongName(SlicerConfiguration::Standard, false), owner),
                     "standard",
                     ExtruderSettingsWidget::tr("Sweet spot between speed and surface quality"));
    high =
        named(new QRadioButton(presetLongName(SlicerConfiguration::High, false), owner), "high",
              ExtruderSettingsWidget::tr("Build a very smooth surface with a longer build time"));
    qualities = new QButtonGroup(owner);
    qualities->addButton(low, SlicerConfiguration::Low);
    qualities->addButton(standard, SlicerConfiguration::Standard);
    qualities->addButton(high, SlicerConfiguration::High);

    grid->addWidget(label, LowRow, LabelColumn);
    grid->addWidget(low, LowRow, FieldColumn);
    grid->addWidget(standard, StandardRow, FieldColumn);
    grid->addWidget(high, HighRow, FieldColumn);
}

void ExtruderSettingsForm::addRaftAndSupports(QWidget* owner, QGridLayout* grid)
{
    const QString raftTip =
        ExtruderSettingsWidget::tr("Build a thin layer of plastic beneath the model");
    raftLabel = named(new QLabel(ExtruderSettingsWidget::tr("Raft:"), owner), "raftLabel");
    raft = named(new QComboBox(owner), "raft", raftTip);
    addChoices(raft, QStringLiteral(":/make/raft_"));
    raftCheckBox = named(new QCheckBox(owner), "raftCheckBox", raftTip);

    const QString supportsTip =
        ExtruderSettingsWidget::tr("Build plastic supports to hold up some parts of the model");
    supportsLabel =
        named(new QLabel(ExtruderSettingsWidget::tr("Supports:"), owner), "supportsLabel");
    supports = named(new QComboBox(owner), "supports", supportsTip);
    addChoices(supports, QStringLiteral(":/make/supports_"));
    supportsCheckBox = named(new QCheckBox(owner), "supportsCheckBox", supportsTip);

    grid->addWidget(raftLabel, RaftRow, LabelColumn);
    grid->addLayout(rowOf({raft, raftCheckBox}), RaftRow, FieldColumn);
    grid->addWidget(supportsLabel, SupportsRow, LabelColumn);
    grid->addLayout(rowOf({supports, supportsCheckBox}), SupportsRow, FieldColumn);
}

void ExtruderSettingsForm::addHelp(QWidget* owner, QGridLayout* grid)
{
    help = named(new QLabel(owner), "help");
    help->setText(ExtruderSettingsWidget::tr("For help with our Advanced Dual Extrusion settings, "
                                             "click <a href=\"%1\">here</a>")
                      .arg(QStringLiteral(TROVEK_DUAL_EXTRUSION_URL)));
    help->setOpenExternalLinks(true);
    help->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    grid->addWidget(help, HelpRow, LabelColumn, 1, 2);
}

} // namespace trovek
