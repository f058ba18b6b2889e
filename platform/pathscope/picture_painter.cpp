#include "picture_painter.h"

#include "gl_program.h"

#include "pathscope/toolpath_scene.h"
#include "pathscope/toolpath_view_model.h"

#include <algorithm>

namespace pathscope {

namespace {

constexpr std::uint64_t kUploadBytes = 2 << 20;
constexpr std::uint64_t kCoarseSegments = 50'000;
/** Of the top layer, in a coarse picture. */
constexpr std::uint64_t kMostOfTopLayer = 40'000;
/** How much wider beads are drawn for each layer that they stand for. */
constexpr float kWiderALayer = 0.25F;
constexpr float kMostWider = 3;
constexpr qint64 kSliceNanoseconds = 6'000'000;
constexpr qint64 kFrameNanoseconds = 30'000'000;

std::uint32_t shownKinds(const ToolpathScene& scene)
{
    std::uint32_t kinds = 0;
    for (const MoveKind kind : {MoveKind::Extrude, MoveKind::Travel, MoveKind::Retract,
                                MoveKind::Unretract, MoveKind::ToolChange}) {
        if (scene.isShown(kind))
            kinds |= 1U << unsigned(kind);
    }
    return kinds;
}

bool isSame(const Orvane::BoundingBox& a, const Orvane::BoundingBox& b)
{
    return a.xMin == b.xMin && a.yMin == b.yMin && a.zMin == b.zMin && a.xMax == b.xMax &&
           a.yMax == b.yMax && a.zMax == b.zMax;
}

/** The build volume, or without one a platform under the paths. */
Orvane::BoundingBox groundBox(const ToolpathScene& scene)
{
    const Orvane::BoundingBox& volume = scene.setting().buildVolume;
    if (!volume.isEmpty())
        return volume;
    constexpr float kMargin = 10;
    const Orvane::BoundingBox paths = scene.fitBox();
    const float z = std::min(0.0F, paths.zMin);
    return {paths.xMin - kMargin, paths.yMin - kMargin, z,
            paths.xMax + kMargin, paths.yMax + kMargin, z};
}

/** Visits neighbouring layers of one colour together: each change of it is a call to OpenGL more.
 */
template <typename Visit>
void visitRuns(const std::vector<std::uint32_t>& colours, std::size_t first, std::size_t end,
               Visit visit)
{
    while (first < end) {
        std::size_t stop = first + 1;
        while (stop < end && colours[stop] == colours[first])
            ++stop;
        visit(first, stop - 1);
        first = stop;
    }
}

SegmentRange overlap(SegmentRange a, SegmentRange b)
{
    return {std::max(a.first, b.first), std::min(a.end, b.end)};
}

} // namespace

/** What a picture depends on beside the range of segments. */
struct PicturePainter::Look
{
    std::shared_ptr<const Toolpaths> toolpaths;
    Camera camera;
    Orvane::BoundingBox world;
    bool orthographic = false;
    std::uint32_t kinds = 0;
    int colourRevision = -1;
};

PicturePainter::PicturePainter(QOpenGLFunctions_3_3_Core& gl, ToolpathScene& scene)
    : m_gl(gl)
    , m_scene(scene)
    , m_renderer(gl)
    , m_ground(gl)
    , m_buffers(gl)
    , m_look(std::make_unique<Look>())
{
    for (const MoveKind kind :
         {MoveKind::Travel, MoveKind::Retract, MoveKind::Unretract, MoveKind::ToolChange})
        m_renderer.setKindColour(kind, ToolpathScene::kindColour(kind));
    update();
}

PicturePainter::~PicturePainter() = default;

void PicturePainter::setColours(const GroundColours& colours)
{
    m_colours = colours;
    m_schedule.invalidate();
}

void PicturePainter::setSize(QSizeF window, QSize size)
{
    if (size.isEmpty())
        size = QSize(1, 1);
    if (!m_buffers.resize(size) && window == m_window)
        return;
    m_window = window;
    m_hasPicture = false;
    m_begun = false;
    m_isQuickBegun = false;
    m_schedule.invalidate();
}

void PicturePainter::setInMotion(bool inMotion)
{
    m_schedule.setInMotion(inMotion);
}

void PicturePainter::update()
{
    Look look;
    look.toolpaths = m_scene.toolpaths();
    look.camera = m_scene.camera();
    look.world = m_scene.worldBox();
    look.orthographic = m_scene.viewModel()->isOrthographic();
    look.kinds = shownKinds(m_scene);
    look.colourRevision = m_scene.colourRevision();

    if (look.toolpaths != m_look->toolpaths) {
        const auto& before = m_look->toolpaths;
        const auto& chunks = look.toolpaths->chunks;
        // Pieces of one file share all chunks but the last one, which may have grown.
        const bool follows = before != nullptr && before->chunks.size() > 1 && !chunks.empty() &&
                             before->chunks.front() == chunks.front();
        if (!follows) {
            m_renderer.clear();
            m_coarse.clear();
            m_segments = 0;
            m_schedule.setCoarseReady(false);
        }
        m_ground.setShape(
            {groundBox(m_scene), m_scene.setting().platformShape, m_scene.setting().drawFlags});
    }
    const bool isOtherPicture =
        look.toolpaths != m_look->toolpaths || look.camera != m_look->camera ||
        !isSame(look.world, m_look->world) || look.orthographic != m_look->orthographic ||
        look.kinds != m_look->kinds;
    const bool hasOtherColours = look.colourRevision != m_look->colourRevision;
    *m_look = look;
    if (hasOtherColours)
        m_renderer.setStyles(look.toolpaths->styles, m_scene.styleColours());
    if (isOtherPicture || hasOtherColours) {
        m_schedule.invalidate();
        m_begun = false;
        m_isQuickBegun = false;
    }
    setTarget();
}

/** Only what the GPU has can be shown. */
void PicturePainter::setTarget()
{
    SegmentRange shown = m_scene.shownSegments();
    shown.end = std::min(shown.end, m_segments);
    m_schedule.setTarget(shown);
}

bool PicturePainter::hasAllPoints() const
{
    const Toolpaths& toolpaths = *m_look->toolpaths;
    const std::size_t layers = toolpaths.layers.size();
    return m_segments >= toolpaths.segmentCount &&
           m_coarse.layers() + (toolpaths.complete ? 0 : 1) >= layers;
}

bool PicturePainter::isBusy() const
{
    return !hasAllPoints() || m_isQuickBegun || m_schedule.isBusy();
}

bool PicturePainter::isComplete() const
{
    return m_look->toolpaths == m_scene.toolpaths() && hasAllPoints() && !m_isQuickBegun &&
           m_schedule.isComplete();
}

void PicturePainter::takeInPoints(const QElapsedTimer& clock, int milliseconds)
{
    const Toolpaths& toolpaths = *m_look->toolpaths;
    while (m_segments < toolpaths.segmentCount && clock.elapsed() < milliseconds) {
        const std::uint64_t segments = m_renderer.upload(toolpaths, kUploadBytes);
        if (segments == m_segments)
            break;
        m_segments = segments;
    }
    // A file that is still read may add to its last layer.
    const std::size_t layers = toolpaths.layers.size() - (toolpaths.complete ? 0 : 1);
    while (!toolpaths.layers.empty() && m_coarse.layers() < layers &&
           clock.elapsed() < milliseconds)
        m_coarse.append(toolpaths, layers, kCoarseSegments);
    m_schedule.setCoarseReady(!toolpaths.layers.empty());
    setTarget();
}

bool PicturePainter::work(int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    if (!hasAllPoints())
        takeInPoints(clock, milliseconds);
    if (!hasAllPoints())
        return false;
    bool isShown = false;
    while (!isShown && clock.elapsed() < milliseconds) {
        if (m_isQuickBegun) {
            isShown = goOnWithQuickPicture();
            continue;
        }
        const PictureSchedule::Step step = m_schedule.next(m_segmentsASlice);
        if (step.kind == PictureSchedule::Step::Rest)
            break;
        isShown = carryOut(step);
    }
    m_gl.glBindFramebuffer(GL_FRAMEBUFFER, 0);
    return isShown;
}

/** @return true when there is another picture to show */
bool PicturePainter::carryOut(const PictureSchedule::Step& step)
{
    using Step = PictureSchedule::Step;
    switch (step.kind) {
    case Step::Rest:
        return false;
    case Step::Coarse:
        beginQuickPicture();
        return false;
    case Step::Begin:
        m_begun = false;
        m_changed = QRect(QPoint(), m_buffers.size());
        m_buffers.bindPicture();
        m_ground.draw(pictureView(m_look->camera, m_look->world, m_window, m_buffers.pictureSize(),
                                  m_look->orthographic),
                      m_colours);
        return false;
    case Step::Restore:
        m_buffers.restore(step.checkpoint);
        m_changed = QRect(QPoint(), m_buffers.size());
        return false;
    case Step::Save:
        m_buffers.save(step.checkpoint);
        return false;
    case Step::Draw: {
        QElapsedTimer clock;
        clock.start();
        m_buffers.bindPicture();
        if (!m_begun)
            beginPaths(m_buffers.pictureSize());
        m_begun = true;
        drawSegments(step.segments);
        m_gl.glFinish();
        m_changed |= placeOf(step.segments);
        learnSpeed(step.segments.count(), clock.nsecsElapsed());
        return false;
    }
    case Step::Show:
        m_buffers.finish(m_changed);
        m_changed = QRect();
        m_hasPicture = true;
        return true;
    }
    return false;
}

void PicturePainter::beginPaths(QSize pixels)
{
    m_renderer.begin(
        pictureView(m_look->camera, m_look->world, m_window, pixels, m_look->orthographic),
        m_look->kinds);
}

void PicturePainter::drawSegments(SegmentRange segments)
{
    const std::vector<std::uint32_t>& colours = m_scene.layerColours();
    if (colours.empty()) {
        m_renderer.draw(segments);
        return;
    }
    if (segments.isEmpty())
        return;
    const Toolpaths& toolpaths = *m_look->toolpaths;
    const std::vector<Layer>& layers = toolpaths.layers;
    visitRuns(colours, toolpaths.layerOf(segments.first), toolpaths.layerOf(segments.end - 1) + 1,
              [&](std::size_t first, std::size_t last) {
                  m_renderer.setColour(colours[first]);
                  m_renderer.draw(
                      overlap(segments, {layers[first].segments.first, layers[last].segments.end}));
              });
    m_renderer.setColour(0);
}

void PicturePainter::beginQuickPicture()
{
    if (m_coarseUploaded != m_coarse.revision()) {
        m_renderer.uploadCoarse(m_coarse);
        m_coarseUploaded = m_coarse.revision();
    }
    m_buffers.bindQuickPicture();
    m_ground.draw(pictureView(m_look->camera, m_look->world, m_window, m_buffers.size(),
                              m_look->orthographic),
                  m_colours);
    beginPaths(m_buffers.size());
    m_begun = false;
    const auto stride = float(m_coarse.stride());
    // Where a wall leans, the next kept layer lies beside this one.
    m_renderer.setFactors(std::min(1 + kWiderALayer * (stride - 1), kMostWider), stride);
    const ToolpathViewModel& model = *m_scene.viewModel();
    m_coarseLeft =
        m_coarse.part(std::size_t(model.firstLayer()), std::size_t(model.lastLayer())).segments;
    m_isQuickBegun = true;
}

/** @return true when it is finished */
bool PicturePainter::goOnWithQuickPicture()
{
    m_buffers.bindQuickPicture();
    if (!m_coarseLeft.isEmpty()) {
        const std::uint64_t stop =
            std::min(m_coarseLeft.end, m_coarseLeft.first + m_segmentsASlice);
        drawCoarse({m_coarseLeft.first, stop});
        m_coarseLeft.first = stop;
        m_gl.glFinish();
        return false;
    }
    drawTopLayer();
    m_buffers.finishQuickPicture();
    m_isQuickBegun = false;
    m_hasPicture = true;
    return true;
}

void PicturePainter::drawCoarse(SegmentRange segments)
{
    const std::vector<std::uint32_t>& colours = m_scene.layerColours();
    if (colours.empty()) {
        m_renderer.drawCoarse(segments);
        return;
    }
    visitRuns(colours, 0, colours.size(), [&](std::size_t first, std::size_t last) {
        const SegmentRange wanted = overlap(segments, m_coarse.part(first, last).segments);
        if (wanted.isEmpty())
            return;
        m_renderer.setColour(colours[first]);
        m_renderer.drawCoarse(wanted);
    });
    m_renderer.setColour(0);
}

/** It is seen best: all of it is drawn, reaching down to what lies below. */
void PicturePainter::drawTopLayer()
{
    SegmentRange top = m_scene.topLayerSegments();
    top.end = std::min({top.end, m_segments, top.first + kMostOfTopLayer});
    if (top.isEmpty())
        return;
    const long first = m_scene.viewModel()->firstLayer();
    const long last = m_scene.viewModel()->lastLayer();
    const long coarse = m_coarse.part(std::size_t(first), std::size_t(last)).lastLayer;
    m_renderer.setFactors(1, float(std::max(1L, last - std::max(coarse, first - 1))));
    drawSegments(top);
}

/** All that may have been drawn of them, in pixels of the window's part from its bottom left. */
QRect PicturePainter::placeOf(SegmentRange segments) const
{
    const QRect all(QPoint(), m_buffers.size());
    const PathBatches::Box box = m_renderer.batches().boxAround(segments);
    const PictureView view = pictureView(m_look->camera, m_look->world, m_window, m_buffers.size(),
                                         m_look->orthographic);
    QRectF place;
    for (unsigned corner = 0; corner < 8; ++corner) {
        const QVector4D clip =
            view.viewProjection * QVector4D((corner & 1U) != 0 ? box.max.x() : box.min.x(),
                                            (corner & 2U) != 0 ? box.max.y() : box.min.y(),
                                            (corner & 4U) != 0 ? box.max.z() : box.min.z(), 1);
        if (!(clip.w() > 0))
            return all;
        const QPointF at((clip.x() / clip.w() + 1) / 2 * float(all.width()),
                         (clip.y() / clip.w() + 1) / 2 * float(all.height()));
        place |= QRectF(at, QSizeF(1, 1));
    }
    // Marks of retractions are as wide as a few pixels wherever they are.
    constexpr int kMargin = 6;
    const QRectF held = place & QRectF(all);
    return held.toAlignedRect().adjusted(-kMargin, -kMargin, kMargin, kMargin) & all;
}

/** So that a slice takes about as long as it should, whatever draws. */
void PicturePainter::learnSpeed(std::uint64_t segments, qint64 nanoseconds)
{
    // Short runs tell more about the call than about the segments.
    if (segments < 2048 || nanoseconds <= 0)
        return;
    const double each = double(nanoseconds) / double(segments);
    const auto fitting = [each](qint64 time, std::uint64_t least) {
        return std::clamp(std::uint64_t(double(time) / each), least, std::uint64_t(1) << 24);
    };
    m_segmentsASlice = (m_segmentsASlice + fitting(kSliceNanoseconds, 2048)) / 2;
    m_schedule.setSegmentsAFrame(fitting(kFrameNanoseconds, 20'000));
}

void PicturePainter::show(GLuint framebuffer, QPoint bottomLeft)
{
    m_buffers.show(framebuffer, bottomLeft);
}

} // namespace pathscope
