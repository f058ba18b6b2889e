#include "pathscope/toolpath_scene.h"

#include "pathscope/printed_bounds.h"
#include "pathscope/toolpath_colouring.h"
#include "pathscope/toolpath_palette.h"
#include "pathscope/toolpath_view_model.h"

#include <QPointer>

#include <algorithm>
#include <limits>

namespace pathscope {

namespace {

/** Shown where there is neither a path nor a machine. */
constexpr Orvane::BoundingBox kBareGround = {0, 0, 0, 100, 100, 0};
/** Travels leave the extruding paths by this much, as a rule. */
constexpr float kTravelRoom = 50;

constexpr double kFilamentRadius = 1.75 / 2;
constexpr double kPi = 3.14159265358979323846;

/** Grams a cubic millimetre as makers of filament state them; 0 where the material is not known. */
double densityOf(Orvane::Material material)
{
    switch (material) {
    case Orvane::ABS:
        return 1.04e-3;
    case Orvane::PLA:
        return 1.24e-3;
    case Orvane::Dissolvable:
        return 1.19e-3;
    case Orvane::Flexible:
        return 1.21e-3;
    case Orvane::UnknownMaterial:
        break;
    }
    return 0;
}

Orvane::BoundingBox boxOf(const Bounds& bounds)
{
    const auto side = [](double value) {
        return static_cast<float>(value);
    };
    return {side(bounds.min[0]), side(bounds.min[1]), side(bounds.min[2]),
            side(bounds.max[0]), side(bounds.max[1]), side(bounds.max[2])};
}

Orvane::BoundingBox united(const Orvane::BoundingBox& a, const Orvane::BoundingBox& b)
{
    return {std::min(a.xMin, b.xMin), std::min(a.yMin, b.yMin), std::min(a.zMin, b.zMin),
            std::max(a.xMax, b.xMax), std::max(a.yMax, b.yMax), std::max(a.zMax, b.zMax)};
}

int countOf(std::uint64_t number)
{
    return static_cast<int>(std::min<std::uint64_t>(number, std::numeric_limits<int>::max()));
}

void setShares(std::vector<LegendEntry>& entries)
{
    double seconds = 0;
    for (const LegendEntry& entry : entries)
        seconds += entry.amount.seconds;
    if (!(seconds > 0))
        return;
    for (LegendEntry& entry : entries)
        entry.share = entry.amount.seconds / seconds;
}

} // namespace

class ToolpathScene::Private
{
public:
    Private(ToolpathScene* scene, SceneSetting sceneSetting)
        : setting(std::move(sceneSetting))
        , viewModel(new ToolpathViewModel(scene))
        , toolpaths(std::make_shared<Toolpaths>())
    {}

    const Layer* topLayer() const
    {
        const auto index = static_cast<std::size_t>(viewModel->lastLayer());
        return index < toolpaths->layers.size() ? &toolpaths->layers[index] : nullptr;
    }

    /** Tells the view model how many moves the top layer has. */
    void countMoves()
    {
        const Layer* const layer = topLayer();
        const int count = layer != nullptr ? countOf(layer->segments.count()) : 0;
        const int index = viewModel->lastLayer();
        if (index == countedLayer) {
            viewModel->extendMoveCount(count);
        } else {
            countedLayer = index;
            viewModel->setMoveCount(count);
        }
    }

    void colour()
    {
        colouring = colouringOf(*toolpaths, setting, viewModel->colourMode());
        ++colourRevision;
    }

    const SceneSetting setting;
    ToolpathViewModel* const viewModel;
    std::shared_ptr<const Toolpaths> toolpaths;
    ToolpathColouring colouring;
    int colourRevision = 0;
    Camera camera;
    /** The layer whose moves the view model counts; -1 after another file. */
    int countedLayer = -1;
    /** Above 0 while several changes become one. */
    int settling = 0;
    /** Of a file whose paths come without; found only once. */
    Bounds objectBounds;
};

ToolpathScene::ToolpathScene(SceneSetting setting, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>(this, std::move(setting)))
{
    connect(d->viewModel, &ToolpathViewModel::layersChanged, this, [this] { d->countMoves(); });
    connect(d->viewModel, &ToolpathViewModel::coloursChanged, this, [this] { d->colour(); });
    connect(d->viewModel, &ToolpathViewModel::changed, this, [this] {
        if (d->settling == 0)
            emit changed();
    });
    d->camera.fit(fitBox(), QSizeF(1, 1), d->viewModel->isOrthographic());
}

ToolpathScene::~ToolpathScene() = default;

const SceneSetting& ToolpathScene::setting() const
{
    return d->setting;
}

ToolpathViewModel* ToolpathScene::viewModel() const
{
    return d->viewModel;
}

std::shared_ptr<const Toolpaths> ToolpathScene::toolpaths() const
{
    return d->toolpaths;
}

void ToolpathScene::setToolpaths(std::shared_ptr<const Toolpaths> toolpaths)
{
    const bool wasBlank = d->toolpaths->segmentCount == 0 && !d->toolpaths->complete;
    if (toolpaths == d->toolpaths || (toolpaths == nullptr && wasBlank))
        return;
    const bool isOtherFile = toolpaths == nullptr || wasBlank || d->toolpaths->complete;
    d->toolpaths = toolpaths != nullptr ? std::move(toolpaths) : std::make_shared<Toolpaths>();
    d->objectBounds = d->toolpaths->objectBounds;
    d->colour();

    const QPointer<ToolpathScene> self(this);
    ++d->settling;
    const int layers = countOf(d->toolpaths->layers.size());
    if (isOtherFile) {
        d->countedLayer = -1;
        d->viewModel->startOver(layers);
    } else {
        d->viewModel->setLayerCount(layers);
    }
    if (self)
        d->countMoves();
    if (self)
        emit toolpathsChanged();
    if (self && --d->settling == 0)
        emit changed();
}

SegmentRange ToolpathScene::shownSegments() const
{
    const Layer* const top = d->topLayer();
    if (top == nullptr)
        return {};
    const auto first = static_cast<std::size_t>(d->viewModel->firstLayer());
    return {d->toolpaths->layers[first].segments.first, topLayerSegments().end};
}

SegmentRange ToolpathScene::topLayerSegments() const
{
    const Layer* const top = d->topLayer();
    if (top == nullptr)
        return {};
    const auto shown = static_cast<std::uint64_t>(d->viewModel->shownMoves());
    return {top->segments.first, top->segments.first + std::min(shown, top->segments.count())};
}

bool ToolpathScene::isShown(MoveKind kind) const
{
    switch (kind) {
    case MoveKind::Extrude:
        return true;
    case MoveKind::Travel:
        return d->viewModel->showsTravels();
    case MoveKind::Retract:
    case MoveKind::Unretract:
    case MoveKind::ToolChange:
        return d->viewModel->showsRetractions();
    }
    return false;
}

std::uint32_t ToolpathScene::kindColour(MoveKind kind)
{
    return packed(moveColour(kind));
}

const std::vector<std::uint32_t>& ToolpathScene::styleColours() const
{
    return d->colouring.styles;
}

const std::vector<std::uint32_t>& ToolpathScene::layerColours() const
{
    return d->colouring.layers;
}

int ToolpathScene::colourRevision() const
{
    return d->colourRevision;
}

std::vector<LegendEntry> ToolpathScene::legend() const
{
    std::vector<LegendEntry> entries = d->colouring.entries;
    if (d->viewModel->showsTravels() && d->toolpaths->travelCount > 0)
        entries.push_back({moveColour(MoveKind::Travel), tr("Travels"), d->colouring.travels, 0});
    if (d->viewModel->showsRetractions() && d->toolpaths->retractionCount > 0)
        entries.push_back({moveColour(MoveKind::Retract), tr("Retractions"), {}, 0});
    setShares(entries);
    return entries;
}

Totals ToolpathScene::totals() const
{
    const Toolpaths& paths = *d->toolpaths;
    Totals totals;
    totals.layers = countOf(paths.layers.size());
    if (paths.complete && paths.bounds.valid && !d->objectBounds.valid)
        d->objectBounds = printedBounds(paths, partOfTheObject());
    const Bounds& bounds = paths.complete ? d->objectBounds : paths.bounds;
    if (bounds.valid) {
        totals.width = bounds.max[0] - bounds.min[0];
        totals.depth = bounds.max[1] - bounds.min[1];
        totals.height = bounds.max[2] - bounds.min[2];
    }
    totals.secondsFromSlicer = paths.estimates.seconds > 0;
    totals.seconds = totals.secondsFromSlicer ? paths.estimates.seconds : paths.total.seconds;

    const std::vector<QColor> colours = toolColours(d->setting.colours);
    for (std::size_t tool = 0; tool < paths.toolAmounts.size(); ++tool) {
        const double filament = paths.toolAmounts[tool].filament;
        if (!(filament > 0))
            continue;
        const double density =
            tool < d->setting.materials.size() ? densityOf(d->setting.materials[tool]) : 0;
        const double cubic = filament * kPi * kFilamentRadius * kFilamentRadius;
        totals.tools.push_back({toolName(d->setting, static_cast<int>(tool)), colours[tool],
                                filament, density > 0 ? cubic * density : -1});
    }
    return totals;
}

const Camera& ToolpathScene::camera() const
{
    return d->camera;
}

void ToolpathScene::setCamera(const Camera& camera)
{
    if (camera == d->camera)
        return;
    d->camera = camera;
    const QPointer<ToolpathScene> self(this);
    emit cameraChanged();
    if (self)
        emit changed();
}

Orvane::BoundingBox ToolpathScene::fitBox() const
{
    if (d->toolpaths->bounds.valid)
        return boxOf(d->toolpaths->bounds);
    return d->setting.buildVolume.isEmpty() ? kBareGround : d->setting.buildVolume;
}

Orvane::BoundingBox ToolpathScene::worldBox() const
{
    Orvane::BoundingBox box = fitBox();
    if (!d->setting.buildVolume.isEmpty())
        box = united(box, d->setting.buildVolume);
    return {box.xMin - kTravelRoom, box.yMin - kTravelRoom, std::min(box.zMin, 0.0F) - 1,
            box.xMax + kTravelRoom, box.yMax + kTravelRoom, box.zMax + kTravelRoom};
}

} // namespace pathscope
