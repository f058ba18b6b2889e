#include "pathscope/toolpath_overlay.h"

#include "pathscope/height_box.h"
#include "pathscope/layer_slider.h"
#include "pathscope/legend_list.h"
#include "pathscope/overlay_form.h"
#include "pathscope/toolpath_colouring.h"
#include "pathscope/toolpath_scene.h"
#include "pathscope/toolpath_texts.h"
#include "pathscope/toolpath_view_model.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>

#include <algorithm>
#include <cmath>

namespace pathscope {
namespace {

constexpr int kWidth = 248;

void check(QCheckBox& box, bool checked)
{
    const QSignalBlocker quiet(box);
    box.setChecked(checked);
}

/** To the two decimals of the box, which would round what it gets. */
double asShown(double millimetres)
{
    return std::round(millimetres * 100) / 100;
}

QString ofText(int count)
{
    return ToolpathOverlay::tr("of %1").arg(QLocale().toString(count));
}

} // namespace

class ToolpathOverlay::Private
{
public:
    Private(ToolpathOverlay& owner, ToolpathScene& shownScene)
        : scene(shownScene)
        , model(*shownScene.viewModel())
        , form(owner)
    {}

    template <typename Box, typename Number>
    void put(Box& box, Number lowest, Number highest, Number value);
    void put(QLabel& label, const QString& text);

    void showAll();
    void showLayers();
    void showMoves();
    void showColours();
    void showTotals();
    void showChoices();
    void setHeight(double millimetres);

    ToolpathScene& scene;
    ToolpathViewModel& model;
    OverlayForm form;
    QString error;
};

template <typename Box, typename Number>
void ToolpathOverlay::Private::put(Box& box, Number lowest, Number highest, Number value)
{
    const QSignalBlocker quiet(box);
    if (box.minimum() != lowest || box.maximum() != highest) {
        box.setRange(lowest, highest);
        form.growToContent(box);
    }
    // Keeps what a user is typing where the number is the same.
    if (box.value() != value)
        box.setValue(value);
}

void ToolpathOverlay::Private::put(QLabel& label, const QString& text)
{
    if (text == label.text())
        return;
    label.setText(text);
    form.growToContent(label);
}

void ToolpathOverlay::Private::showAll()
{
    showLayers();
    showMoves();
    showColours();
    showTotals();
    showChoices();
}

void ToolpathOverlay::Private::showLayers()
{
    const int count = model.layerCount();
    const int last = model.lastLayer();
    form.slider->setLayers(count, model.firstLayer(), last, model.isSingleLayer());
    put(*form.layer, std::min(count, 1), count, last + 1);
    put(*form.layerCount, ofText(count));
    put(*form.from, std::min(count, 1), count, model.firstLayer() + 1);
    check(*form.single, model.isSingleLayer());
    form.setNavigable(count > 0, model.isSingleLayer());

    const auto paths = scene.toolpaths();
    const auto index = static_cast<std::size_t>(last);
    if (index >= paths->layers.size()) {
        put(*form.height, 0.0, 0.0, 0.0);
        put(*form.layerInfo, QString());
        return;
    }
    const Layer& layer = paths->layers[index];
    const double low = paths->bounds.valid ? paths->bounds.min[2] : 0;
    const double high = paths->bounds.valid ? paths->bounds.max[2] : 0;
    const double z = asShown(layer.z);
    put(*form.height, std::min({0.0, asShown(low), z}), std::max({0.0, asShown(high), z}), z);
    put(*form.layerInfo, tr("%1 mm thick, %2")
                             .arg(QLocale().toString(layer.height, 'f', 2),
                                  durationText(layer.amount.seconds * timeScaleOf(*paths))));
}

void ToolpathOverlay::Private::showMoves()
{
    const int count = model.moveCount();
    const QSignalBlocker quiet(form.moves);
    form.moves->setRange(0, count);
    form.moves->setValue(model.shownMoves());
    // About a hundred steps from end to end, whatever the layer.
    form.moves->setPageStep(std::max(1, count / 100));
    put(*form.move, 0, count, model.shownMoves());
    put(*form.moveCount, ofText(count));
}

void ToolpathOverlay::Private::showColours()
{
    const QSignalBlocker quiet(form.colour);
    form.colour->setCurrentIndex(form.colour->findData(int(model.colourMode())));
    form.legend->setEntries(scene.legend());
}

void ToolpathOverlay::Private::showTotals()
{
    const auto paths = scene.toolpaths();
    QString text = error;
    if (text.isEmpty() && paths->segmentCount > 0)
        text = totalsLines(scene.totals()).join(QLatin1Char('\n'));
    form.totals->setText(text);
    form.totals->setVisible(!text.isEmpty());

    const QString skipped = error.isEmpty() ? skippedText(paths->skipped) : QString();
    QStringList examples;
    for (const auto& [line, content] : paths->skipped.examples)
        examples.append(tr("Line %1: %2").arg(line).arg(QString::fromStdString(content)));
    form.skipped->setText(skipped);
    form.skipped->setToolTip(
        Qt::convertFromPlainText(examples.join(QLatin1Char('\n')), Qt::WhiteSpaceNormal));
    form.skipped->setVisible(!skipped.isEmpty());
}

void ToolpathOverlay::Private::showChoices()
{
    check(*form.travels, model.showsTravels());
    check(*form.retractions, model.showsRetractions());
    check(*form.orthographic, model.isOrthographic());
}

void ToolpathOverlay::Private::setHeight(double millimetres)
{
    model.setLastLayer(int(scene.toolpaths()->layerAt(float(millimetres))));
    // The layer that is there already may lie at another height than the one typed.
    showLayers();
}

ToolpathOverlay::ToolpathOverlay(ToolpathScene* scene, QWidget* parent)
    : QWidget(parent)
    , d(std::make_unique<Private>(*this, *scene))
{
    setObjectName(QStringLiteral("toolpathOverlay"));
    // Stands above a window that OpenGL draws, which would shine through.
    setAutoFillBackground(true);
    setFocusPolicy(Qt::NoFocus);

    ToolpathViewModel* const model = &d->model;
    OverlayForm& form = d->form;
    connect(model, &ToolpathViewModel::layersChanged, this, [this] { d->showLayers(); });
    connect(model, &ToolpathViewModel::movesChanged, this, [this] { d->showMoves(); });
    connect(model, &ToolpathViewModel::coloursChanged, this, [this] { d->showColours(); });
    connect(model, &ToolpathViewModel::visibilityChanged, this, [this] {
        d->showChoices();
        d->showColours();
    });
    connect(model, &ToolpathViewModel::projectionChanged, this, [this] { d->showChoices(); });
    connect(scene, &ToolpathScene::toolpathsChanged, this, [this] { d->showAll(); });

    connect(form.slider, &LayerSlider::rangeMoved, model, [model](int first, int last) {
        // One layer alone leaves the beginning of the range as it was.
        if (model->isSingleLayer())
            model->setLastLayer(last);
        else
            model->setLayerRange(first, last);
    });
    connect(form.layer, qOverload<int>(&QSpinBox::valueChanged), model,
            [model](int number) { model->setLastLayer(number - 1); });
    connect(form.from, qOverload<int>(&QSpinBox::valueChanged), model,
            [model](int number) { model->setFirstLayer(number - 1); });
    connect(form.height, qOverload<double>(&HeightBox::valueChanged), this,
            [this](double millimetres) { d->setHeight(millimetres); });
    connect(form.height, &HeightBox::stepped, model,
            [model](int steps) { model->setLastLayer(model->lastLayer() + steps); });
    connect(form.single, &QCheckBox::toggled, model, &ToolpathViewModel::setSingleLayer);
    connect(form.moves, &QSlider::valueChanged, model, &ToolpathViewModel::setShownMoves);
    connect(form.move, qOverload<int>(&QSpinBox::valueChanged), model,
            &ToolpathViewModel::setShownMoves);
    connect(form.colour, qOverload<int>(&QComboBox::currentIndexChanged), model,
            [model, &form](int index) {
                model->setColourMode(
                    ToolpathViewModel::ColourMode(form.colour->itemData(index).toInt()));
            });
    connect(form.travels, &QCheckBox::toggled, model, &ToolpathViewModel::setTravelsShown);
    connect(form.retractions, &QCheckBox::toggled, model, &ToolpathViewModel::setRetractionsShown);
    connect(form.orthographic, &QCheckBox::toggled, model, &ToolpathViewModel::setOrthographic);
    for (const OverlayForm::View& view : form.views) {
        connect(view.button, &QAbstractButton::clicked, this,
                [this, preset = view.preset] { emit cameraRequested(preset); });
    }
    for (QWidget* box : {static_cast<QWidget*>(form.layer), static_cast<QWidget*>(form.height),
                         static_cast<QWidget*>(form.from), static_cast<QWidget*>(form.move),
                         static_cast<QWidget*>(form.colour)})
        box->installEventFilter(this);
    d->showAll();
}

ToolpathOverlay::~ToolpathOverlay() = default;

QSize ToolpathOverlay::sizeHint() const
{
    return QWidget::sizeHint().expandedTo({kWidth, 0});
}

void ToolpathOverlay::layerUp()
{
    d->model.layerUp();
}

void ToolpathOverlay::layerDown()
{
    d->model.layerDown();
}

void ToolpathOverlay::fit()
{
    emit cameraRequested(-1);
}

void ToolpathOverlay::setProgress(double fraction)
{
    QProgressBar& bar = *d->form.progress;
    bar.setVisible(fraction < 1);
    bar.setValue(int(std::clamp(fraction, 0.0, 1.0) * bar.maximum()));
}

void ToolpathOverlay::setError(const QString& reason)
{
    if (reason == d->error)
        return;
    d->error = reason;
    d->showTotals();
}

bool ToolpathOverlay::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        auto* box = qobject_cast<QAbstractSpinBox*>(watched);
        if (box && (key == Qt::Key_Return || key == Qt::Key_Enter)) {
            // Ends the number, and must not go on to the default button of a dialog.
            box->interpretText();
            box->selectAll();
            return true;
        }
    } else if (event->type() == QEvent::Wheel && watched == d->form.colour &&
               !d->form.colour->hasFocus()) {
        // Scrolls the panel; another colour by chance would surprise.
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void ToolpathOverlay::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        d->form.takeFont();
}

} // namespace pathscope
