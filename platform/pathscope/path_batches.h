#pragma once

#include "pathscope/toolpaths.h"

#include <QMatrix4x4>
#include <QVector3D>

#include <functional>
#include <vector>

namespace pathscope {

/** Where the camera looks, as the planes that what it sees lies between. */
class Frustum
{
public:
    explicit Frustum(const QMatrix4x4& viewProjection);

    /** False only when the box is surely not seen. */
    bool mayShow(const QVector3D& min, const QVector3D& max) const;
    /** The least depth (the clip coordinate w) of a corner of the box. */
    float nearestDepth(const QVector3D& min, const QVector3D& max) const;

private:
    std::array<QVector4D, 6> m_planes;
    QVector4D m_depth;
};

/**
 * Boxes around short runs of segments, so that what the camera does not see is not drawn.
 *
 * Numbers only; grows with the toolpaths.
 */
class PathBatches
{
public:
    struct Box
    {
        QVector3D min;
        QVector3D max;
    };

    /** Segments of a batch; the last one of a chunk is one shorter. */
    static constexpr std::uint64_t kSegments = 2048;

    /** A run within one chunk that is drawn in one go. */
    struct Run
    {
        std::size_t chunk = 0;
        /** Counted from the chunk's first segment. */
        std::uint32_t first = 0;
        std::uint32_t count = 0;
        /** Thinner than what is worth a surface of its own. */
        bool thin = false;
    };

    void clear();
    /** Takes in the segments from end() up to but without another. */
    void append(const Toolpaths& toolpaths, std::uint64_t end);
    /** Segments taken in so far. */
    std::uint64_t end() const { return m_end; }

    /**
     * The runs of a range that may be seen, in order and as long as can be.
     *
     * @param thinFrom  depth from which on segments are thin; see Frustum::nearestDepth()
     */
    void visit(SegmentRange range, const Frustum& frustum, float thinFrom,
               const std::function<void(const Run&)>& draw) const;

    /** Around the batches that a range touches; turned inside out for an empty range. */
    Box boxAround(SegmentRange range) const;

private:
    /** kBatchesAChunk for each chunk. */
    std::vector<Box> m_boxes;
    std::uint64_t m_end = 0;
};

} // namespace pathscope
