#pragma once

#include "pathscope/toolpaths.h"

#include <array>
#include <cstdint>

namespace pathscope {

/**
 * Decides what to draw next, so that a picture of millions of segments comes in short steps, and a
 * layer more or less costs next to nothing.
 *
 * The picture is kept with its depths: segments are drawn onto it in order, from the first to the
 * last. Two copies (checkpoints) are taken some way before its end; a picture that ends earlier is
 * drawn on from there. Numbers only; does not know of OpenGL.
 */
class PictureSchedule
{
public:
    static constexpr int kCheckpoints = 2;
    /** How many segments before the end of a picture the checkpoints are taken. */
    static constexpr std::array<std::uint64_t, 2> kDistances = {500'000, 60'000};
    /** A picture that lies farther than this from every checkpoint is made one itself. */
    static constexpr std::uint64_t kMostWithoutCheckpoint = 240'000;
    /** A picture that takes longer than this many frames is first shown coarse. */
    static constexpr std::uint64_t kFramesBeforeCoarse = 8;

    struct Step
    {
        enum Kind {
            /** There is nothing to do before a change (or before the camera rests). */
            Rest,
            /** Draw and show the coarse picture. */
            Coarse,
            /** Begin an empty picture. */
            Begin,
            /** Go back to a checkpoint. */
            Restore,
            /** Draw the segments. */
            Draw,
            /** Copy the picture to a checkpoint. */
            Save,
            /** Show the picture: it is complete. */
            Show,
        };
        Kind kind = Rest;
        int checkpoint = 0;
        SegmentRange segments;
    };

    /** All that a picture shows beside more or fewer segments is different from now on. */
    void invalidate();
    /** The picture that is wanted now. */
    void setTarget(SegmentRange segments);
    /** While it holds, only coarse pictures (or short ones) are drawn. */
    void setInMotion(bool inMotion) { m_inMotion = inMotion; }
    bool isInMotion() const { return m_inMotion; }
    /** How many segments can be drawn for each frame of a moving picture. */
    void setSegmentsAFrame(std::uint64_t segments) { m_segmentsAFrame = segments; }
    /** Whether there are coarse paths to show. */
    void setCoarseReady(bool ready) { m_coarseReady = ready; }
    /** The coarse picture would look different now. */
    void invalidateCoarse();

    /** The next step, with at most so many segments; counts as done when asked for the one after.
     */
    Step next(std::uint64_t maxSegments);
    /** True while next() has something to do. */
    bool isBusy() const;
    /** The wanted picture is shown in full. */
    bool isComplete() const { return m_shown == Full; }

private:
    enum Shown { Outdated, CoarseOne, Full };

    struct Picture
    {
        bool valid = false;
        SegmentRange segments;
    };
    bool leadsToTarget(const Picture& picture) const;
    bool mayDrawInFull() const;
    const Picture* bestStart() const;
    bool wantsCheckpoint() const;
    bool isSaved(const Picture& picture) const;
    Step save();

    Picture m_picture;
    std::array<Picture, kCheckpoints> m_checkpoints;
    SegmentRange m_target;
    Shown m_shown = Outdated;
    std::uint64_t m_segmentsAFrame = 60'000;
    bool m_inMotion = false;
    bool m_coarseReady = false;
};

} // namespace pathscope
