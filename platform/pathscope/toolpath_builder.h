#pragma once

#include "pathscope/gcode_number.h"
#include "pathscope/style_table.h"
#include "pathscope/toolpaths.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace pathscope {

/** A place in millimetres, or a step from one to another. */
struct Place
{
    double x = 0;
    double y = 0;
    double z = 0;

    bool operator==(const Place& other) const
    {
        return x == other.x && y == other.y && z == other.z;
    }
};

/**
 * Puts toolpaths together: segments into chunks, styles, layers and totals.
 *
 * Knows nothing of G-code. Everything that runs once a move stands in this header.
 */
class ToolpathBuilder
{
public:
    /** Millimetres a second, until one is set. */
    static constexpr double kDefaultSpeed = 25;

    /** @param filamentDiameter in millimetres, positive */
    explicit ToolpathBuilder(double filamentDiameter);
    ~ToolpathBuilder();

    const Place& place() const { return m_place; }
    std::uint64_t segmentCount() const { return m_fullSegments + segmentsInChunk(); }
    unsigned tool() const { return m_style.tool; }

    void setFeature(Feature feature);
    /** Millimetres a second, above zero. */
    void setSpeed(double speed);
    void setCelsius(double celsius);
    /** 0 to 1. */
    void setFan(double fan);
    /** Millimetres as the file tells them; 0 lets widths follow from the filament. */
    void setWidth(double width);
    /** Millimetres as the file tells them; 0 lets heights follow from the layers. */
    void setHeight(double height);

    /** From here on layers begin only where this is called. */
    void beginLayer();
    /** Top of the layer that was begun last; without it the first extruding move's height counts.
     */
    void setLayerZ(double z);

    /** A straight segment; one of no length is a retraction, or nothing without filament. */
    PATHSCOPE_INLINE void moveTo(const Place& to, double filament)
    {
        const double dx = to.x - m_place.x;
        const double dy = to.y - m_place.y;
        const double dz = to.z - m_place.z;
        const double length = std::sqrt(dx * dx + dy * dy + dz * dz);
        if (length > 0 && filament > 0)
            extrude(to, length, filament);
        else if (length > 0)
            travel(to, length);
        else if (filament != 0)
            retract(filament);
    }
    /** Filament goes back (negative) or forth while the head stands still. */
    void retract(double filament);
    /** Retraction by a length that only the firmware knows. */
    void firmwareRetract(bool back);
    /** @param celsius of the new tool */
    void changeTool(unsigned tool, double celsius);

    /** Paths, layers and totals so far; what the file tells beside is left to the caller. */
    std::shared_ptr<Toolpaths> snapshot();

private:
    /** What has come together in one style since it was last put into the totals. */
    struct Run
    {
        double length = 0;
        double filament = 0;
        double seconds = 0;
    };

    std::uint64_t segmentsInChunk() const
    {
        return static_cast<std::uint64_t>(m_next - m_begin) - 1;
    }

    PATHSCOPE_INLINE void extrude(const Place& to, double length, double filament)
    {
        if (to.z != m_settledZ)
            settleLayer(to.z);
        if (!m_widthIsTold)
            followWidth(filament / length);
        if (m_extrudeStale)
            refreshExtrudeStyle();
        if (m_afterQuiet) {
            include(m_place);
            m_afterQuiet = false;
        }
        include(to);
        m_extrudeRun.length += length;
        m_extrudeRun.filament += filament;
        append(to, m_extrudeWord);
    }

    PATHSCOPE_INLINE void travel(const Place& to, double length)
    {
        beginQuiet();
        m_quietRun.length += length;
        ++m_travelCount;
        append(to, static_cast<std::uint32_t>(MoveKind::Travel) << 28 | m_quietStyle);
    }

    PATHSCOPE_INLINE void append(const Place& to, std::uint32_t kindAndStyle)
    {
        m_place = to;
        PathPoint& point = *m_next;
        point.x = static_cast<float>(to.x);
        point.y = static_cast<float>(to.y);
        point.z = static_cast<float>(to.z);
        point.kindAndStyle = kindAndStyle;
        if (++m_next == m_end)
            makeRoom();
    }

    PATHSCOPE_INLINE void include(const Place& p)
    {
        m_min.x = p.x < m_min.x ? p.x : m_min.x;
        m_min.y = p.y < m_min.y ? p.y : m_min.y;
        m_min.z = p.z < m_min.z ? p.z : m_min.z;
        m_max.x = p.x > m_max.x ? p.x : m_max.x;
        m_max.y = p.y > m_max.y ? p.y : m_max.y;
        m_max.z = p.z > m_max.z ? p.z : m_max.z;
    }

    void makeRoom();
    void grow();
    void beginChunk(const PathPoint& first, std::size_t reserved);
    void beginQuiet();
    void appendQuiet(MoveKind kind);
    void settleLayer(double z);
    void pushLayer(std::uint64_t first, double z, float height);
    float heightOfStep(double above) const;
    void setLayerHeight(float height);
    void followWidth(double filamentPerMillimetre);
    void styleChanged();
    void refreshExtrudeStyle();
    void refreshQuietStyle();
    /** Puts what has run into the totals. */
    void flushExtrude();
    void flushQuiet();
    /** Gives the time of quiet moves to the present layer. */
    void settleQuiet();
    void flush();
    Amount& amountOf(std::uint32_t style);
    void fill(Toolpaths* paths) const;

    // Points
    std::vector<std::shared_ptr<const PointChunk>> m_fullChunks;
    std::shared_ptr<PointChunk> m_chunk;
    PathPoint* m_begin = nullptr;
    PathPoint* m_next = nullptr;
    PathPoint* m_end = nullptr;
    std::uint64_t m_fullSegments = 0;
    Place m_place;

    // Styles
    const double m_filamentArea;
    MoveStyle m_style;
    float m_toldHeight = 0;
    float m_layerHeight = 0;
    bool m_widthIsTold = false;
    bool m_extrudeStale = true;
    bool m_quietStale = true;
    std::uint32_t m_extrudeWord = 0;
    std::uint32_t m_quietStyle = 0;
    StyleTable m_styles;
    Run m_extrudeRun;
    Run m_quietRun;

    // Layers
    std::vector<Layer> m_layers;
    bool m_layersFromComments = false;
    bool m_layerZIsTold = false;
    /** Height of the last layer that was printed flat. */
    double m_flatHeight = 0;
    /** Extruding there needs no look at the layers; NaN when any height does. */
    double m_settledZ = std::numeric_limits<double>::quiet_NaN();
    /** Since extruding ended: nothing but travels, retractions and tool changes. */
    bool m_afterQuiet = true;
    std::uint64_t m_quietBegin = 0;
    double m_quietSeconds = 0;

    // Totals
    std::vector<Amount> m_styleAmounts;
    std::array<Amount, kToolCount> m_toolAmounts;
    Amount m_total;
    std::uint64_t m_travelCount = 0;
    std::uint64_t m_retractionCount = 0;
    std::uint64_t m_toolChangeCount = 0;
    Place m_min{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
                std::numeric_limits<double>::infinity()};
    Place m_max{-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                -std::numeric_limits<double>::infinity()};
};

} // namespace pathscope
