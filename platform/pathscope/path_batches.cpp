#include "path_batches.h"

#include <algorithm>
#include <limits>

namespace pathscope {

namespace {

constexpr std::uint64_t kBatchesAChunk =
    (kSegmentsAChunk + PathBatches::kSegments - 1) / PathBatches::kSegments;
constexpr float kFar = std::numeric_limits<float>::max();
constexpr PathBatches::Box kNothing = {{kFar, kFar, kFar}, {-kFar, -kFar, -kFar}};

std::size_t batchOf(std::uint64_t segment)
{
    return segment / kSegmentsAChunk * kBatchesAChunk +
           segment % kSegmentsAChunk / PathBatches::kSegments;
}

/** The corner of a box that lies farthest along a direction. */
QVector3D farthestCorner(const QVector3D& min, const QVector3D& max, const QVector4D& direction)
{
    return {direction.x() > 0 ? max.x() : min.x(), direction.y() > 0 ? max.y() : min.y(),
            direction.z() > 0 ? max.z() : min.z()};
}

float distanceTo(const QVector4D& plane, const QVector3D& point)
{
    return QVector4D::dotProduct(plane, QVector4D(point, 1));
}

} // namespace

Frustum::Frustum(const QMatrix4x4& viewProjection)
    : m_depth(viewProjection.row(3))
{
    for (int axis = 0; axis < 3; ++axis) {
        m_planes[2 * axis] = viewProjection.row(3) + viewProjection.row(axis);
        m_planes[2 * axis + 1] = viewProjection.row(3) - viewProjection.row(axis);
    }
}

bool Frustum::mayShow(const QVector3D& min, const QVector3D& max) const
{
    return std::all_of(m_planes.begin(), m_planes.end(), [&](const QVector4D& plane) {
        return distanceTo(plane, farthestCorner(min, max, plane)) >= 0;
    });
}

float Frustum::nearestDepth(const QVector3D& min, const QVector3D& max) const
{
    return distanceTo(m_depth, farthestCorner(min, max, -m_depth));
}

void PathBatches::clear()
{
    m_boxes.clear();
    m_end = 0;
}

void PathBatches::append(const Toolpaths& toolpaths, std::uint64_t end)
{
    const auto grow = [](Box& box, const PathPoint& point) {
        // What is none of its own width away from the path is not worth a test: beads are thin.
        constexpr float kBead = 1;
        box.min = {std::min(box.min.x(), point.x - kBead), std::min(box.min.y(), point.y - kBead),
                   std::min(box.min.z(), point.z - kBead)};
        box.max = {std::max(box.max.x(), point.x + kBead), std::max(box.max.y(), point.y + kBead),
                   std::max(box.max.z(), point.z + kBead)};
    };
    while (m_end < end) {
        const std::uint64_t chunk = m_end / kSegmentsAChunk;
        const std::uint64_t inChunk = m_end % kSegmentsAChunk;
        const std::uint64_t batch = inChunk / kSegments;
        const std::size_t index = chunk * kBatchesAChunk + batch;
        if (index >= m_boxes.size())
            m_boxes.resize(index + 1, kNothing);
        const std::uint64_t stop = std::min({end, chunk * kSegmentsAChunk + (batch + 1) * kSegments,
                                             (chunk + 1) * kSegmentsAChunk});
        Box& box = m_boxes[index];
        const std::vector<PathPoint>& points = toolpaths.chunks[chunk]->points;
        for (std::uint64_t i = inChunk; i <= inChunk + (stop - m_end); ++i)
            grow(box, points[i]);
        m_end = stop;
    }
}

void PathBatches::visit(SegmentRange range, const Frustum& frustum, float thinFrom,
                        const std::function<void(const Run&)>& draw) const
{
    Run run;
    std::uint64_t segment = range.first;
    const std::uint64_t end = std::min(range.end, m_end);
    while (segment < end) {
        const std::uint64_t chunk = segment / kSegmentsAChunk;
        const std::uint64_t inChunk = segment % kSegmentsAChunk;
        const std::uint64_t batch = inChunk / kSegments;
        const std::uint64_t stop = std::min({end, chunk * kSegmentsAChunk + (batch + 1) * kSegments,
                                             (chunk + 1) * kSegmentsAChunk});
        const Box& box = m_boxes[chunk * kBatchesAChunk + batch];
        if (frustum.mayShow(box.min, box.max)) {
            const bool thin = frustum.nearestDepth(box.min, box.max) >= thinFrom;
            const bool follows = run.count > 0 && run.chunk == chunk && run.thin == thin &&
                                 run.first + run.count == inChunk;
            if (!follows) {
                if (run.count > 0)
                    draw(run);
                run = {std::size_t(chunk), std::uint32_t(inChunk), 0, thin};
            }
            run.count += std::uint32_t(stop - segment);
        }
        segment = stop;
    }
    if (run.count > 0)
        draw(run);
}

PathBatches::Box PathBatches::boxAround(SegmentRange range) const
{
    Box around = kNothing;
    range.end = std::min(range.end, m_end);
    if (range.isEmpty())
        return around;
    for (std::size_t batch = batchOf(range.first); batch <= batchOf(range.end - 1); ++batch) {
        const Box& box = m_boxes[batch];
        for (int axis = 0; axis < 3; ++axis) {
            around.min[axis] = std::min(around.min[axis], box.min[axis]);
            around.max[axis] = std::max(around.max[axis], box.max[axis]);
        }
    }
    return around;
}

} // namespace pathscope
