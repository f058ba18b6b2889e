#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace pathscope {

/** What a segment does. */
enum class MoveKind : std::uint8_t {
    Extrude,
    Travel,
    /** Filament goes back or forth while the head stands still: the segment has no length. */
    Retract,
    Unretract,
    ToolChange,
};

/** What a segment is printed for, as the slicer's comments say. */
enum class Feature : std::uint8_t {
    Unknown,
    OuterWall,
    InnerWall,
    Overhang,
    SparseInfill,
    SolidInfill,
    TopSurface,
    Ironing,
    Bridge,
    GapFill,
    Skirt,
    Brim,
    Raft,
    Support,
    SupportInterface,
    PrimeTower,
    Custom,
};
constexpr int kFeatureCount = 17;

/** At most this many tools are told apart; a higher number counts as the last one. */
constexpr int kToolCount = 16;

/**
 * Where a move ends, in millimetres, and how it was made. The segment runs from the point before.
 *
 * This record is what stands in memory and, unchanged, on the GPU.
 */
struct PathPoint
{
    float x = 0;
    float y = 0;
    float z = 0;
    /** The kind in the top 4 bits, an index into Toolpaths::styles in the others. */
    std::uint32_t kindAndStyle = 0;

    MoveKind kind() const { return static_cast<MoveKind>(kindAndStyle >> 28); }
    std::uint32_t style() const { return kindAndStyle & 0x0fffffffU; }
};
static_assert(sizeof(PathPoint) == 16, "the record is uploaded as it stands");

/**
 * Everything of a move beside where it goes; as many moves as can be share one.
 *
 * There are at most 65,536 in a file: the smallest buffer texture that OpenGL 3.3 promises.
 */
struct MoveStyle
{
    /** Unknown for what does not extrude. */
    Feature feature = Feature::Unknown;
    std::uint8_t tool = 0;
    /** Millimetres; above 0 for what extrudes, and 0 for nothing else. */
    float width = 0;
    float height = 0;
    /** Millimetres a second. */
    float speed = 0;
    /** Degrees Celsius of the tool's last set temperature; 0 when none was set. */
    float celsius = 0;
    /** 0 to 1. */
    float fan = 0;
};

/** What the moves of one style (or of one layer) come to. */
struct Amount
{
    /** Length by speed, without acceleration: a third less than a machine takes for small moves. */
    double seconds = 0;
    /** Of extruding moves. */
    double millimetres = 0;
    /** Filament pushed by extruding moves, in millimetres of filament. */
    double filament = 0;
};

/**
 * A run of points that one allocation holds. The first point repeats the last one of the chunk
 * before (in the first chunk: the start position), so that every segment lies within one chunk.
 */
struct PointChunk
{
    /** Points a chunk holds at most, the repeated one included: 1 MiB. */
    static constexpr std::size_t kCapacity = 65536;
    std::vector<PathPoint> points;
};

/** Segment n (counted from 0 over the file) ends at point 1 + n % kSegmentsAChunk of chunk n /
 * kSegmentsAChunk. */
constexpr std::uint64_t kSegmentsAChunk = PointChunk::kCapacity - 1;

/** A half-open range of segments. */
struct SegmentRange
{
    std::uint64_t first = 0;
    std::uint64_t end = 0;

    bool isEmpty() const { return first >= end; }
    std::uint64_t count() const { return isEmpty() ? 0 : end - first; }
    bool operator==(const SegmentRange& other) const
    {
        return first == other.first && end == other.end;
    }
};

/** Segments that are printed at one height. Layers cover all segments, in order, without a gap. */
struct Layer
{
    SegmentRange segments;
    /** Top of the layer, in millimetres. */
    float z = 0;
    float height = 0;
    Amount amount;
};

struct Bounds
{
    std::array<double, 3> min = {0, 0, 0};
    std::array<double, 3> max = {0, 0, 0};
    /** False until something lies inside; min and max mean nothing then. */
    bool valid = false;
};

/** A picture that the slicer stored in the file's comments. */
struct Thumbnail
{
    int width = 0;
    int height = 0;
    /** As named in the file: "PNG", "JPG" or "QOI". */
    std::string format;
    /** Decoded from base64. */
    std::string bytes;
};

/** Totals that the slicer itself wrote; negative where it wrote none. */
struct SlicerEstimates
{
    double seconds = -1;
    /** Millimetres of filament, one a tool. */
    std::vector<double> filament;
};

/** What was not understood, so that a user can be told. */
struct Skipped
{
    std::uint64_t lines = 0;
    /** Moves with a number that is none, or is too large to draw. */
    std::uint64_t badNumbers = 0;
    /** Arcs that no circle fits; drawn as a straight line. */
    std::uint64_t badArcs = 0;
    /** The first few lines that were skipped, cut to 80 bytes, with their numbers from 1. */
    std::vector<std::pair<std::uint64_t, std::string>> examples;
};

/**
 * The toolpaths of a sliced file, or of its beginning while it is still read.
 *
 * Immutable once handed out, and may be read from any thread. Snapshots of one file share chunks.
 */
struct Toolpaths
{
    std::vector<std::shared_ptr<const PointChunk>> chunks;
    std::vector<Layer> layers;
    std::vector<MoveStyle> styles;
    /** As many as styles. */
    std::vector<Amount> styleAmounts;
    /** By tool. */
    std::array<Amount, kToolCount> toolAmounts;
    std::uint64_t segmentCount = 0;
    std::uint64_t extrudingCount = 0;
    std::uint64_t travelCount = 0;
    std::uint64_t retractionCount = 0;
    std::uint64_t toolChangeCount = 0;
    Amount total;
    /** Of extruding segments. */
    Bounds bounds;
    /** From edge to edge of the object alone; valid only where it was looked for, which takes a
     * walk over all moves: see printedBounds(). */
    Bounds objectBounds;
    /** True when the layers come from the slicer's comments, false when from the heights. */
    bool layersFromComments = false;
    /** "PrusaSlicer 2.5.0", or empty. */
    std::string generator;
    SlicerEstimates estimates;
    std::vector<Thumbnail> thumbnails;
    Skipped skipped;
    std::uint64_t bytes = 0;
    /** False for a piece handed out while the file is still read, and for a canceled one. */
    bool complete = false;

    /** The point where a segment ends, and with segment - 1's, where it starts. */
    const PathPoint& endOf(std::uint64_t segment) const
    {
        return chunks[segment / kSegmentsAChunk]->points[1 + segment % kSegmentsAChunk];
    }
    const PathPoint& startOf(std::uint64_t segment) const
    {
        return chunks[segment / kSegmentsAChunk]->points[segment % kSegmentsAChunk];
    }
    /** The layer of a segment; layers.size() when there is none. */
    std::size_t layerOf(std::uint64_t segment) const;
    /** The layer whose top is nearest to a height; 0 without layers. */
    std::size_t layerAt(float z) const;
};

} // namespace pathscope
