#include "pathscope/toolpath_builder.h"

#include <algorithm>
#include <utility>

namespace pathscope {
namespace {

constexpr double kPi = 3.14159265358979323846;
/** Of a layer about whose height nothing is known. */
constexpr double kDefaultLayerHeight = 0.2;
/** Less than this apart are two heights of one layer. */
constexpr double kSameHeight = 0.005;
/** A step up by more is no layer but a part that stands on something else. */
constexpr double kLargestLayerHeight = 3;
constexpr double kLargestWidth = 5;
constexpr double kSmallestWidth = 0.05;
constexpr std::size_t kPointsAtOnce = 1024;

/** Slicers write 0.449999 and 0.450001; a thousandth tells enough and keeps the styles few. */
float rounded(double millimetres)
{
    return static_cast<float>(std::round(millimetres * 1000) / 1000);
}

void add(Amount* amount, double seconds, double millimetres, double filament)
{
    amount->seconds += seconds;
    amount->millimetres += millimetres;
    amount->filament += filament;
}

} // namespace

ToolpathBuilder::ToolpathBuilder(double filamentDiameter)
    : m_filamentArea(kPi / 4 * filamentDiameter * filamentDiameter)
{
    m_style.speed = static_cast<float>(kDefaultSpeed);
    beginChunk(PathPoint(), kPointsAtOnce + 1);
}

ToolpathBuilder::~ToolpathBuilder() = default;

void ToolpathBuilder::setFeature(Feature feature)
{
    if (m_style.feature == feature)
        return;
    flush();
    m_style.feature = feature;
    m_extrudeStale = true;
}

void ToolpathBuilder::setSpeed(double speed)
{
    const auto value = static_cast<float>(speed);
    if (m_style.speed == value)
        return;
    styleChanged();
    m_style.speed = value;
}

void ToolpathBuilder::setCelsius(double celsius)
{
    const auto value = static_cast<float>(celsius);
    if (m_style.celsius == value)
        return;
    styleChanged();
    m_style.celsius = value;
}

void ToolpathBuilder::setFan(double fan)
{
    const auto value = static_cast<float>(fan);
    if (m_style.fan == value)
        return;
    styleChanged();
    m_style.fan = value;
}

void ToolpathBuilder::setWidth(double width)
{
    const float value = rounded(width);
    m_widthIsTold = value > 0;
    if (!m_widthIsTold || m_style.width == value)
        return;
    flushExtrude();
    m_style.width = value;
    m_extrudeStale = true;
}

void ToolpathBuilder::setHeight(double height)
{
    m_toldHeight = rounded(height);
    // The first height that is told in a layer, before anything is extruded there, is the layer's.
    const bool layerIsOpen = m_layersFromComments && std::isnan(m_settledZ);
    if (layerIsOpen)
        m_layers.back().height = m_toldHeight;
    setLayerHeight(m_layerHeight);
}

/** The height of a layer whose top lies so much above the one below. */
float ToolpathBuilder::heightOfStep(double above) const
{
    if (above > kSameHeight && above < kLargestLayerHeight)
        return rounded(above);
    return m_layerHeight > 0 ? m_layerHeight : static_cast<float>(kDefaultLayerHeight);
}

/** Takes the height of the layer for extruding moves, unless the file tells theirs. */
void ToolpathBuilder::setLayerHeight(float height)
{
    m_layerHeight = height;
    const float value = m_toldHeight > 0 ? m_toldHeight : height;
    if (m_style.height == value)
        return;
    flushExtrude();
    m_style.height = value;
    m_extrudeStale = true;
}

void ToolpathBuilder::beginLayer()
{
    flush();
    settleQuiet();
    if (!m_layersFromComments) {
        // What came before, with layers by height as long as nothing better was known, belongs to
        // the first layer that the slicer marks.
        m_layersFromComments = true;
        m_layers.clear();
        pushLayer(0, 0, 0);
        m_layers.back().amount = m_total;
        m_quietSeconds = 0;
    } else if (m_layers.back().segments.first != segmentCount()) {
        pushLayer(segmentCount(), m_layers.back().z, 0);
    }
    m_layerZIsTold = false;
    m_settledZ = std::numeric_limits<double>::quiet_NaN();
}

void ToolpathBuilder::setLayerZ(double z)
{
    if (!m_layersFromComments || m_layerZIsTold || !std::isnan(m_settledZ))
        return;
    m_layers.back().z = static_cast<float>(z);
    m_layerZIsTold = true;
}

void ToolpathBuilder::pushLayer(std::uint64_t first, double z, float height)
{
    if (!m_layers.empty())
        m_layers.back().segments.end = first;
    Layer layer;
    layer.segments.first = first;
    layer.z = static_cast<float>(z);
    layer.height = height;
    m_layers.push_back(layer);
}

/** Before extruding at a height at which nothing was extruded just before. */
void ToolpathBuilder::settleLayer(double z)
{
    const bool isFlat = m_place.z == z;
    if (m_layersFromComments) {
        if (!std::isnan(m_settledZ)) {
            m_settledZ = z;
            return;
        }
        Layer& layer = m_layers.back();
        if (!m_layerZIsTold)
            layer.z = static_cast<float>(z);
        const double below = m_layers.size() > 1 ? m_layers[m_layers.size() - 2].z : 0;
        if (layer.height <= 0)
            layer.height = heightOfStep(double(layer.z) - below);
        setLayerHeight(layer.height);
        m_settledZ = z;
        return;
    }
    // A spiral rises with every move: it gets a layer for each turn's worth of height.
    const double above = m_layers.empty() ? z : z - double(m_layers.back().z);
    const double step = m_flatHeight > 0 ? m_flatHeight : kDefaultLayerHeight;
    const bool begins =
        m_layers.empty() || (isFlat ? std::abs(above) > kSameHeight : above > step - kSameHeight);
    if (begins) {
        flush();
        if (!m_afterQuiet)
            settleQuiet();
        const float height = heightOfStep(above);
        pushLayer(m_layers.empty() ? 0 : (m_afterQuiet ? m_quietBegin : segmentCount()), z, height);
        settleQuiet();
        setLayerHeight(height);
        if (isFlat)
            m_flatHeight = double(height);
    }
    m_settledZ = isFlat ? z : std::numeric_limits<double>::quiet_NaN();
}

void ToolpathBuilder::followWidth(double filamentPerMillimetre)
{
    // The shape of what is laid down: a rectangle with half a circle at either side.
    const auto height = double(m_style.height);
    const double width = filamentPerMillimetre * m_filamentArea / height + height * (1 - kPi / 4);
    const double clamped = std::min(std::max(width, kSmallestWidth), kLargestWidth);
    // Rounding in the file makes each move a little different; that is no other style.
    if (std::abs(clamped - double(m_style.width)) < 0.01)
        return;
    flushExtrude();
    m_style.width = static_cast<float>(std::round(clamped * 100) / 100);
    m_extrudeStale = true;
}

void ToolpathBuilder::styleChanged()
{
    flush();
    m_extrudeStale = true;
    m_quietStale = true;
}

void ToolpathBuilder::refreshExtrudeStyle()
{
    m_extrudeWord = m_styles.indexOf(m_style);
    m_extrudeStale = false;
}

void ToolpathBuilder::refreshQuietStyle()
{
    MoveStyle style = m_style;
    style.feature = Feature::Unknown;
    style.width = 0;
    style.height = 0;
    m_quietStyle = m_styles.indexOf(style);
    m_quietStale = false;
}

/** Before a segment that does not extrude. */
void ToolpathBuilder::beginQuiet()
{
    if (m_quietStale)
        refreshQuietStyle();
    if (m_afterQuiet)
        return;
    flushQuiet();
    settleQuiet();
    m_quietBegin = segmentCount();
    m_afterQuiet = true;
}

void ToolpathBuilder::appendQuiet(MoveKind kind)
{
    append(m_place, static_cast<std::uint32_t>(kind) << 28 | m_quietStyle);
}

void ToolpathBuilder::retract(double filament)
{
    beginQuiet();
    m_quietRun.seconds += std::abs(filament) / double(m_style.speed);
    ++m_retractionCount;
    appendQuiet(filament < 0 ? MoveKind::Retract : MoveKind::Unretract);
}

void ToolpathBuilder::firmwareRetract(bool back)
{
    beginQuiet();
    ++m_retractionCount;
    appendQuiet(back ? MoveKind::Retract : MoveKind::Unretract);
}

void ToolpathBuilder::changeTool(unsigned tool, double celsius)
{
    styleChanged();
    m_style.tool = static_cast<std::uint8_t>(tool);
    m_style.celsius = static_cast<float>(celsius);
    beginQuiet();
    ++m_toolChangeCount;
    appendQuiet(MoveKind::ToolChange);
}

/** When there is no room for the next point. */
void ToolpathBuilder::makeRoom()
{
    if (m_chunk->points.size() < PointChunk::kCapacity) {
        grow();
        return;
    }
    const PathPoint last = m_chunk->points.back();
    m_fullSegments += kSegmentsAChunk;
    m_fullChunks.push_back(std::move(m_chunk));
    beginChunk(last, PointChunk::kCapacity);
}

/** The first chunk of a small file stays small, and what is filled next is in the cache. */
void ToolpathBuilder::grow()
{
    std::vector<PathPoint>& points = m_chunk->points;
    const std::size_t used = points.size();
    points.resize(std::min(used + kPointsAtOnce, PointChunk::kCapacity));
    m_begin = points.data();
    m_next = m_begin + used;
    m_end = m_begin + points.size();
}

void ToolpathBuilder::beginChunk(const PathPoint& first, std::size_t reserved)
{
    m_chunk = std::make_shared<PointChunk>();
    m_chunk->points.reserve(reserved);
    m_chunk->points.push_back(first);
    grow();
}

Amount& ToolpathBuilder::amountOf(std::uint32_t style)
{
    if (style >= m_styleAmounts.size())
        m_styleAmounts.resize(m_styles.styles().size());
    return m_styleAmounts[style];
}

void ToolpathBuilder::flushExtrude()
{
    if (m_extrudeRun.length <= 0)
        return;
    const double seconds = m_extrudeRun.length / double(m_style.speed);
    for (Amount* const amount : {&amountOf(m_extrudeWord), &m_toolAmounts[m_style.tool], &m_total,
                                 &m_layers.back().amount})
        add(amount, seconds, m_extrudeRun.length, m_extrudeRun.filament);
    m_extrudeRun = Run();
}

void ToolpathBuilder::flushQuiet()
{
    const double seconds = m_quietRun.seconds + m_quietRun.length / double(m_style.speed);
    if (seconds <= 0)
        return;
    for (Amount* const amount : {&amountOf(m_quietStyle), &m_toolAmounts[m_style.tool], &m_total})
        add(amount, seconds, 0, 0);
    m_quietSeconds += seconds;
    m_quietRun = Run();
}

void ToolpathBuilder::settleQuiet()
{
    if (m_layers.empty())
        return;
    m_layers.back().amount.seconds += m_quietSeconds;
    m_quietSeconds = 0;
}

void ToolpathBuilder::flush()
{
    flushExtrude();
    flushQuiet();
}

void ToolpathBuilder::fill(Toolpaths* paths) const
{
    paths->segmentCount = segmentCount();
    paths->travelCount = m_travelCount;
    paths->retractionCount = m_retractionCount;
    paths->toolChangeCount = m_toolChangeCount;
    paths->extrudingCount =
        paths->segmentCount - m_travelCount - m_retractionCount - m_toolChangeCount;
    paths->toolAmounts = m_toolAmounts;
    paths->total = m_total;
    paths->layersFromComments = m_layersFromComments;
    paths->bounds.valid = m_min.x <= m_max.x;
    if (paths->bounds.valid) {
        paths->bounds.min = {m_min.x, m_min.y, m_min.z};
        paths->bounds.max = {m_max.x, m_max.y, m_max.z};
    }
}

std::shared_ptr<Toolpaths> ToolpathBuilder::snapshot()
{
    flush();
    const bool hasSegments = segmentCount() > 0;
    auto paths = std::make_shared<Toolpaths>();
    fill(paths.get());
    paths->chunks = m_fullChunks;
    auto open = std::make_shared<PointChunk>();
    open->points.assign(m_begin, m_next);
    if (hasSegments)
        paths->chunks.push_back(std::move(open));
    paths->styles = m_styles.styles();
    paths->styleAmounts = m_styleAmounts;
    paths->styleAmounts.resize(paths->styles.size());
    paths->layers = m_layers;
    if (!m_layers.empty() && m_layers.back().segments.first == segmentCount())
        paths->layers.pop_back();
    if (paths->layers.empty() && hasSegments)
        paths->layers.emplace_back();
    if (!paths->layers.empty()) {
        paths->layers.back().segments.end = paths->segmentCount;
        paths->layers.back().amount.seconds += m_quietSeconds;
    }
    return paths;
}

} // namespace pathscope
