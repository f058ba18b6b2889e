#include "pathscope/overlay_form.h"

#include "pathscope/camera.h"
#include "pathscope/height_box.h"
#include "pathscope/layer_slider.h"
#include "pathscope/legend_list.h"
#include "pathscope/toolpath_overlay.h"
#include "pathscope/toolpath_view_model.h"
#include "pathscope/view_button.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>
#include <QScopedValueRollback>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>

namespace pathscope {
namespace {

constexpr int kProgressSteps = 1000;
constexpr Qt::Alignment kBeginning = Qt::AlignLeft | Qt::AlignVCenter;

QString tr(const char* text)
{
    return ToolpathOverlay::tr(text);
}

template <typename Widget>
Widget* named(Widget* widget, const char* name, const QString& toolTip, const QString& accessible)
{
    widget->setObjectName(QLatin1String(name));
    widget->setToolTip(toolTip);
    widget->setAccessibleName(accessible);
    return widget;
}

/** A box whose number counts once it is finished: half of a typed number is another layer. */
template <typename Box>
Box* numberBox(QWidget* parent, const char* name, const QString& toolTip, const QString& accessible)
{
    auto* box = named(new Box(parent), name, toolTip, accessible);
    box->setKeyboardTracking(false);
    box->setGroupSeparatorShown(true);
    box->setAlignment(Qt::AlignRight);
    return box;
}

/** Wide enough for the numbers of nearly all files, so that the boxes stand as one column. */
QSize sizeOf(const QAbstractSpinBox& box)
{
    constexpr int kFrameAndArrows = 34;
    const int width = box.fontMetrics().horizontalAdvance(QStringLiteral("0,000,000"));
    return box.minimumSizeHint().expandedTo({width + kFrameAndArrows, 0});
}

QCheckBox* checkBox(QWidget* parent, const char* name, const QString& text, const QString& toolTip)
{
    auto* box = new QCheckBox(text, parent);
    box->setObjectName(QLatin1String(name));
    box->setToolTip(toolTip);
    return box;
}

QLabel* buddyLabel(const QString& text, QWidget* buddy)
{
    auto* label = new QLabel(text, buddy->parentWidget());
    label->setBuddy(buddy);
    return label;
}

QLabel* textLabel(QWidget* parent, const char* name)
{
    auto* label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    // Materials and lines of the file must not turn into mark-up.
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

QFrame* separator(QWidget* parent)
{
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

/** Lets what is in it shrink before the panel scrolls; a scroll area asks for this height alone. */
class ShrinkingColumn : public QVBoxLayout
{
public:
    using QVBoxLayout::QVBoxLayout;

    int heightForWidth(int width) const override
    {
        // Asking for the least height fills in both, by way of this function.
        if (m_isAsking)
            return QVBoxLayout::heightForWidth(width);
        const QScopedValueRollback<bool> asking(m_isAsking, true);
        return minimumHeightForWidth(width);
    }

private:
    mutable bool m_isAsking = false;
};

} // namespace

OverlayForm::OverlayForm(QWidget& panel)
    : slider(named(new LayerSlider(&panel), "layerSlider",
                   tr("Drag the handles to choose the layers that are shown"), tr("Layers")))
{
    m_area = new QScrollArea(&panel);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setWidgetResizable(true);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_area->setFocusPolicy(Qt::NoFocus);
    m_column = new QWidget(m_area);
    auto* column = new ShrinkingColumn(m_column);
    column->setContentsMargins(2, 0, 2, 0);
    column->setSpacing(6);
    makeNavigation(*column);
    column->addWidget(separator(m_column));
    makeColours(*column);
    makeTotals(*column);
    column->addWidget(separator(m_column));
    makeSwitches(*column);
    makeViews(*column);
    column->addStretch(1);
    m_area->setWidget(m_column);
    takeFont();

    auto* row = new QHBoxLayout;
    row->setSpacing(6);
    row->addWidget(slider);
    row->addWidget(m_area, 1);
    auto* rows = new QVBoxLayout(&panel);
    rows->setContentsMargins(6, 8, 6, 8);
    rows->addLayout(row, 1);
    makeProgress(panel, *rows);
}

void OverlayForm::makeNavigation(QBoxLayout& column)
{
    layer = numberBox<QSpinBox>(
        m_column, "layerBox", tr("The topmost layer that is shown (Up and Down)"), tr("Top layer"));
    layerCount = textLabel(m_column, "layerCount");
    layerCount->setWordWrap(false);
    height = numberBox<HeightBox>(m_column, "heightBox",
                                  tr("The height of the topmost layer: type one to go there"),
                                  tr("Height of the top layer"));
    // A point in it is one of decimals; see HeightBox.
    height->setGroupSeparatorShown(false);
    layerInfo = textLabel(m_column, "layerInfo");
    layerInfo->setWordWrap(false);
    from = numberBox<QSpinBox>(m_column, "fromBox", tr("The lowest layer that is shown"),
                               tr("Lowest layer"));
    move = numberBox<QSpinBox>(m_column, "moveBox",
                               tr("How many moves of the topmost layer are shown"),
                               tr("Number of moves"));
    moves = named(new QSlider(Qt::Horizontal, m_column), "moveSlider",
                  tr("How far the topmost layer is printed"), tr("Moves"));
    moveCount = textLabel(m_column, "moveCount");
    moveCount->setWordWrap(false);

    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(6);
    grid->setVerticalSpacing(4);
    grid->addWidget(buddyLabel(tr("&Layer:"), layer), 0, 0);
    grid->addWidget(layer, 0, 1, kBeginning);
    grid->addWidget(layerCount, 0, 2, kBeginning);
    grid->addWidget(buddyLabel(tr("Hei&ght:"), height), 1, 0);
    grid->addWidget(height, 1, 1, kBeginning);
    grid->addWidget(layerInfo, 2, 0, 1, 3, kBeginning);
    grid->addWidget(buddyLabel(tr("Fr&om:"), from), 3, 0);
    grid->addWidget(from, 3, 1, kBeginning);
    grid->addWidget(buddyLabel(tr("Mov&es:"), move), 4, 0);
    grid->addWidget(move, 4, 1, kBeginning);
    grid->addWidget(moveCount, 4, 2, kBeginning);
    grid->addWidget(moves, 5, 0, 1, 3);
    grid->setColumnStretch(2, 1);
    column.addLayout(grid);
}

void OverlayForm::makeColours(QBoxLayout& column)
{
    colour = named(new QComboBox(m_column), "colorMode", tr("What the colors mean"), tr("Color"));
    const struct
    {
        ToolpathViewModel::ColourMode mode;
        QString text;
    } modes[] = {
        {ToolpathViewModel::ByFeature, tr("Feature")},
        {ToolpathViewModel::ByExtruder, tr("Extruder")},
        {ToolpathViewModel::ByHeight, tr("Layer height")},
        {ToolpathViewModel::ByWidth, tr("Width")},
        {ToolpathViewModel::BySpeed, tr("Speed")},
        {ToolpathViewModel::ByTemperature, tr("Temperature")},
        {ToolpathViewModel::ByLayerTime, tr("Layer time")},
    };
    for (const auto& [mode, text] : modes)
        colour->addItem(text, int(mode));
    legend = named(new LegendList(m_column), "legend", QString(), tr("Legend"));

    auto* row = new QHBoxLayout;
    row->addWidget(buddyLabel(tr("&Color:"), colour));
    row->addWidget(colour, 1);
    column.addLayout(row);
    column.addWidget(legend);
}

void OverlayForm::makeTotals(QBoxLayout& column)
{
    totals = textLabel(m_column, "totals");
    skipped = textLabel(m_column, "skipped");
    column.addWidget(totals);
    column.addWidget(skipped);
}

void OverlayForm::makeSwitches(QBoxLayout& column)
{
    travels = checkBox(m_column, "travels", tr("&Travels"),
                       tr("Show where the head moves without printing"));
    single =
        checkBox(m_column, "singleLayer", tr("One la&yer"), tr("Show the top layer alone (X)"));
    retractions = checkBox(m_column, "retractions", tr("Retractio&ns"),
                           tr("Show where filament is pulled back and pushed forth again"));
    orthographic =
        checkBox(m_column, "orthographic", tr("Orthogra&phic"), tr("Draw without perspective (O)"));
    auto* grid = new QGridLayout;
    grid->setVerticalSpacing(2);
    grid->addWidget(travels, 0, 0);
    grid->addWidget(single, 0, 1);
    grid->addWidget(retractions, 1, 0);
    grid->addWidget(orthographic, 1, 1);
    column.addLayout(grid);
}

void OverlayForm::makeViews(QBoxLayout& column)
{
    const struct
    {
        int preset;
        const char* name;
        QString text;
        QString toolTip;
    } kinds[] = {
        {Camera::Top, "viewTop", tr("Top"), tr("Look from above")},
        {Camera::Front, "viewFront", tr("Front"), tr("Look from the front")},
        {Camera::Side, "viewSide", tr("Side"), tr("Look from the right")},
        {Camera::Isometric, "viewIsometric", tr("Isometric"),
         tr("Look from the front, the side and above")},
        {-1, "viewFit", tr("Fit"), tr("Show everything that is printed (F)")},
    };
    auto* row = new QHBoxLayout;
    row->setSpacing(2);
    for (std::size_t i = 0; i < views.size(); ++i) {
        auto* button = named(new ViewButton(kinds[i].preset, m_column), kinds[i].name,
                             kinds[i].toolTip, kinds[i].text);
        button->setText(kinds[i].text);
        views[i] = {kinds[i].preset, button};
        row->addWidget(button);
    }
    row->addStretch(1);
    column.addLayout(row);
}

void OverlayForm::makeProgress(QWidget& panel, QBoxLayout& rows)
{
    progress = named(new QProgressBar(&panel), "progress", QString(), tr("Reading the file"));
    progress->setRange(0, kProgressSteps);
    progress->setFormat(tr("Reading: %p %"));
    progress->hide();
    rows.addWidget(progress);
}

void OverlayForm::takeFont()
{
    for (QAbstractSpinBox* box :
         std::initializer_list<QAbstractSpinBox*>{layer, height, from, move})
        box->setFixedSize(sizeOf(*box));
    for (QLabel* label : {layerCount, layerInfo, moveCount})
        label->setFixedSize(label->minimumSizeHint());
    widen();
}

void OverlayForm::growToContent(QWidget& widget)
{
    const QSize needed = widget.minimumSizeHint().expandedTo(widget.minimumSize());
    if (needed == widget.minimumSize())
        return;
    widget.setFixedSize(needed);
    widen();
}

void OverlayForm::widen()
{
    // Before that the layout answers with what it knew.
    m_column->layout()->activate();
    m_area->setMinimumWidth(m_column->layout()->minimumSize().width() +
                            m_area->verticalScrollBar()->sizeHint().width());
}

void OverlayForm::setNavigable(bool navigable, bool singleLayer)
{
    for (QWidget* widget : {static_cast<QWidget*>(slider), static_cast<QWidget*>(layer),
                            static_cast<QWidget*>(height), static_cast<QWidget*>(single),
                            static_cast<QWidget*>(moves), static_cast<QWidget*>(move)})
        widget->setEnabled(navigable);
    from->setEnabled(navigable && !singleLayer);
}

} // namespace pathscope
