#include "gallery_widgets.h"

#include "icons.h"

#include <trovek-ui/collapse_expand_header.h>
#include <trovek-ui/color_combo_box.h>
#include <trovek-ui/color_label.h>
#include <trovek-ui/double_spin_box.h>
#include <trovek-ui/elided_label.h>
#include <trovek-ui/machine_combo_box.h>
#include <trovek-ui/material_combo_box.h>
#include <trovek-ui/push_button.h>
#include <trovek-ui/spin_box.h>

#include <QFormLayout>
#include <QHBoxLayout>

namespace ostrand {
namespace {

QString text(const char* english)
{
    return QString::fromUtf8(english);
}

QWidget* buttons(QWidget* parent)
{
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* tight = new PushButton(text("&Tight"), row);
    tight->setTight(true);
    auto* disabled = new PushButton(text("&Disabled"), row);
    disabled->setEnabled(false);
    layout->addWidget(new PushButton(icon("save"), text("&Save"), row));
    layout->addWidget(tight);
    layout->addWidget(disabled);
    layout->addStretch();
    return row;
}

QWidget* swatches(QWidget* parent)
{
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    for (int i = 0; i < 9; ++i) {
        auto* label = new trovek::ColorLabel(row);
        label->setColor(
            trovek::ColorComboBox::colorToQColor(static_cast<trovek::ColorComboBox::Color>(i)));
        label->setFixedSize(28, 28);
        layout->addWidget(label);
    }
    layout->addStretch();
    return row;
}

QWidget* headers(QWidget* parent)
{
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* open = new trovek::CollapseExpandHeader(text("Expanded"), row);
    open->setChecked(true);
    layout->addWidget(new trovek::CollapseExpandHeader(text("Collapsed"), row));
    layout->addWidget(open);
    layout->addStretch();
    return row;
}

template <typename Box, typename Number>
Box* numberBox(QWidget* parent, Number step, Number value, const char* suffix)
{
    auto* box = new Box(parent);
    box->setSingleStep(step);
    box->setRange(0, 500);
    box->setValue(value);
    box->setSuffix(text(suffix));
    return box;
}

} // namespace

std::unique_ptr<QWidget> makeWidgetsPage(trovek::TrovekQt& facade)
{
    auto page = std::make_unique<QWidget>();
    page->setWindowTitle(text("Widgets"));
    auto* form = new QFormLayout(page.get());
    form->setContentsMargins(16, 16, 16, 16);
    form->setVerticalSpacing(10);

    auto* archetypes = new trovek::MachineComboBox(facade, page.get());
    archetypes->toggleArchetypes(true);
    auto* material = new trovek::MaterialComboBox(page.get());
    material->sanitizeForBot(trovek::Printer::Fabrino2);
    auto* disabled = new trovek::MaterialComboBox(page.get());
    disabled->setEnabled(false);
    auto* path = new trovek::ElidedLabel(
        text("/home/user/Documents/models/a name that is far too long to be shown/gear.gcode"),
        page.get());
    path->setFixedWidth(320);

    form->addRow(text("Machines:"), new trovek::MachineComboBox(facade, page.get()));
    form->addRow(text("Machines for exports:"), archetypes);
    form->addRow(text("Material:"), material);
    form->addRow(text("Material, disabled:"), disabled);
    form->addRow(text("Color:"), new trovek::ColorComboBox(page.get()));
    form->addRow(text("Swatches:"), swatches(page.get()));
    form->addRow(text("Whole number:"), numberBox<SpinBox>(page.get(), 5, 210, " \u00b0C"));
    form->addRow(text("Number:"), numberBox<DoubleSpinBox>(page.get(), 0.1, 0.2, " mm"));
    form->addRow(text("Buttons:"), buttons(page.get()));
    form->addRow(text("Headers:"), headers(page.get()));
    form->addRow(text("Elided path:"), path);
    return page;
}

} // namespace ostrand
