#pragma once

#include "pathscope/toolpaths.h"

#include <cstdint>
#include <vector>

namespace pathscope {

/**
 * The few paths that stand for all while the camera moves: what is seen from outside of every
 * n-th layer, straightened a little, to be drawn n times as high.
 *
 * Grows with the toolpaths and thins itself out, so that it never holds more than a given number
 * of segments. Numbers only.
 */
class CoarsePaths
{
public:
    /** As many as any OpenGL can look up in one buffer. */
    static constexpr std::size_t kMaxPoints = 60'000;

    /** @param maxPoints  above 1; a single layer may have more */
    explicit CoarsePaths(std::size_t maxPoints = kMaxPoints);

    void clear();
    /**
     * Takes in layers that follow those taken so far, until about that many segments were looked
     * at; a layer is taken in whole.
     *
     * @param layers  how many layers of the toolpaths stand; a file that is still read may yet add
     *                to its last one
     */
    void append(const Toolpaths& toolpaths, std::size_t layers, std::uint64_t maxSegments);
    /** Layers taken in so far. */
    std::size_t layers() const { return m_layers; }

    /** Every which layer is kept: the factor by which the heights grow. */
    std::size_t stride() const { return m_stride; }
    /** A segment runs from each point to the next; those that lead to a new path are travels. */
    const std::vector<PathPoint>& points() const { return m_points; }
    /** Changes with the points. */
    int revision() const { return m_revision; }

    /** A part of points(), counted in segments as ever: segment n ends at point n + 1. */
    struct Part
    {
        SegmentRange segments;
        /** The last layer that the part stands for; -1 for an empty one. */
        long lastLayer = -1;
    };
    /** What stands for the layers of an inclusive range. */
    Part part(std::size_t first, std::size_t last) const;

private:
    struct KeptLayer
    {
        std::size_t layer = 0;
        /** Into m_points. */
        std::size_t begin = 0;
    };

    void take(const Toolpaths& toolpaths, std::size_t layer);
    void thinOut();

    std::size_t m_maxPoints;
    std::size_t m_stride = 1;
    std::size_t m_layers = 0;
    std::vector<PathPoint> m_points;
    std::vector<KeptLayer> m_kept;
    int m_revision = 0;
};

} // namespace pathscope
