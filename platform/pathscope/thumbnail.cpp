#include "pathscope/thumbnail.h"

#include "pathscope/camera.h"
#include "pathscope/gcode_parser.h"
#include "pathscope/line_painter.h"
#include "pathscope/printed_bounds.h"
#include "pathscope/toolpath_palette.h"

#include <trovek/text.h>

#include <algorithm>
#include <exception>
#include <limits>

namespace pathscope {

namespace {

constexpr int kLargestSide = 8192;
/** Of the picture, on each side. */
constexpr float kMargin = 0.04F;
/** Where a file tells nothing. */
constexpr float kUsualWidth = 0.4F;
constexpr float kUsualHeight = 0.2F;

/** What of a style a picture needs, so that the moves' own loop stays short. */
struct Brush
{
    bool isShown = false;
    LinePainter::Bead bead;
};

/** How much wider than itself a line's top is drawn. */
float topOverlapOf(Feature feature)
{
    switch (feature) {
    case Feature::SolidInfill:
    case Feature::TopSurface:
    case Feature::Ironing:
    case Feature::Bridge:
    case Feature::GapFill:
    case Feature::SupportInterface:
        // Where two sweeps of lines meet the slicer leaves hairlines, which plastic closes.
        return 1.3F;
    default:
        return 1.03F;
    }
}

std::vector<Brush> brushesOf(const Toolpaths& toolpaths, const FeatureSet& features,
                             const std::vector<QColor>& colours)
{
    const std::vector<QColor> ofTools = toolColours(colours);
    std::vector<Brush> brushes;
    brushes.reserve(toolpaths.styles.size());
    for (const MoveStyle& style : toolpaths.styles) {
        const auto tool = std::min<std::size_t>(style.tool, kToolCount - 1);
        Brush brush;
        brush.isShown = features[static_cast<std::size_t>(style.feature)];
        brush.bead.width = style.width > 0 ? style.width : kUsualWidth;
        brush.bead.height = style.height > 0 ? style.height : kUsualHeight;
        brush.bead.topWidth = brush.bead.width * topOverlapOf(style.feature);
        brush.bead.colour = ofTools[tool];
        brushes.push_back(brush);
    }
    return brushes;
}

QVector3D placeOf(const PathPoint& point)
{
    return {point.x, point.y, point.z};
}

/**
 * Calls with both ends and the brush of every segment that is shown, the last one first: what is
 * on top comes early, and hides the rest before that is coloured.
 */
template <typename Use>
void forEachShown(const Toolpaths& toolpaths, const std::vector<Brush>& brushes, Use use)
{
    for (auto chunk = toolpaths.chunks.rbegin(); chunk != toolpaths.chunks.rend(); ++chunk) {
        const std::vector<PathPoint>& points = (*chunk)->points;
        for (std::size_t i = points.size(); i-- > 1;) {
            const PathPoint& end = points[i];
            if (end.kind() == MoveKind::Extrude && brushes[end.style()].isShown)
                use(placeOf(end), placeOf(points[i - 1]), brushes[end.style()]);
        }
    }
}

/** The smallest rectangle around all that is shown, in millimetres of the picture's plane. */
struct Frame
{
    static constexpr float kLimit = std::numeric_limits<float>::max();
    float left = kLimit;
    float right = -kLimit;
    float below = kLimit;
    float above = -kLimit;

    bool isEmpty() const { return !(left <= right && below <= above); }

    void add(float x, float y, float room)
    {
        left = std::min(left, x - room);
        right = std::max(right, x + room);
        below = std::min(below, y - room);
        above = std::max(above, y + room);
    }
};

LinePainter::View isometricView()
{
    Camera camera;
    camera.setPreset(Camera::Isometric);
    const QMatrix4x4 matrix = camera.view();
    LinePainter::View view;
    view.right = matrix.row(0).toVector3D();
    view.up = matrix.row(1).toVector3D();
    view.back = matrix.row(2).toVector3D();
    return view;
}

Frame frameOf(const Toolpaths& toolpaths, const std::vector<Brush>& brushes,
              const LinePainter::View& view)
{
    Frame frame;
    forEachShown(toolpaths, brushes, [&](QVector3D from, QVector3D to, const Brush& brush) {
        const float room = std::max(brush.bead.width / 2, brush.bead.height);
        for (const QVector3D& end : {from, to}) {
            frame.add(QVector3D::dotProduct(end, view.right), QVector3D::dotProduct(end, view.up),
                      room);
        }
    });
    return frame;
}

/** Puts the frame into the middle, as large as fits. */
void fit(LinePainter::View& view, const Frame& frame, QSize size)
{
    const auto width = static_cast<float>(size.width() * LinePainter::kOversampling);
    const auto height = static_cast<float>(size.height() * LinePainter::kOversampling);
    const float usable = 1 - 2 * kMargin;
    view.scale = std::min(width * usable / (frame.right - frame.left),
                          height * usable / (frame.above - frame.below));
    view.originX = width / 2 - (frame.left + frame.right) / 2 * view.scale;
    view.originY = height / 2 + (frame.below + frame.above) / 2 * view.scale;
}

void draw(LinePainter& painter, const Toolpaths& toolpaths, const std::vector<Brush>& brushes,
          float pixelsAMillimetre)
{
    // Curves come as many moves that are shorter than a pixel; together they are one bead.
    const float shortest = 1 / pixelsAMillimetre;
    const Brush* brush = nullptr;
    QVector3D start;
    QVector3D end;
    const auto drawWaiting = [&] {
        if (brush != nullptr)
            painter.drawBead(start, end, brush->bead);
    };
    forEachShown(toolpaths, brushes, [&](QVector3D from, QVector3D to, const Brush& next) {
        const bool goesOn =
            brush == &next && from == end && (end - start).lengthSquared() < shortest * shortest;
        if (!goesOn) {
            drawWaiting();
            brush = &next;
            start = from;
        }
        end = to;
    });
    drawWaiting();
}

} // namespace

QImage renderThumbnail(const QString& file, QSize size, const std::vector<QColor>& colours)
{
    try {
        return renderThumbnail(*parseGCodeFile(trovek::toStdString(file)), size, colours);
    } catch (const std::exception&) {
        // Not there, no file, or too large for the memory: the caller shows something else.
        return {};
    }
}

QImage renderThumbnail(const Toolpaths& toolpaths, QSize size, const std::vector<QColor>& colours)
{
    if (size.isEmpty() || size.width() > kLargestSide || size.height() > kLargestSide)
        return {};
    LinePainter::View view = isometricView();
    std::vector<Brush> brushes = brushesOf(toolpaths, shownOnPictures(), colours);
    Frame frame = frameOf(toolpaths, brushes, view);
    if (frame.isEmpty()) {
        // A print of nothing but a brim is still a print.
        for (Brush& brush : brushes)
            brush.isShown = true;
        frame = frameOf(toolpaths, brushes, view);
    }
    if (frame.isEmpty())
        return {};

    fit(view, frame, size);
    LinePainter painter(size, view);
    draw(painter, toolpaths, brushes, view.scale);
    return painter.finished();
}

} // namespace pathscope
