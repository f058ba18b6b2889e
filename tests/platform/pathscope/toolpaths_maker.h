#pragma once

#include <pathscope/toolpaths.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace pathscope {

/**
 * Builds toolpaths by hand, move by move, as a parser would.
 *
 *     ToolpathsMaker maker;
 *     maker.style({Feature::OuterWall, 0, 0.4F, 0.2F, 50});
 *     maker.layer(0.2F);
 *     maker.travelTo(10, 10);
 *     maker.extrudeTo(20, 10);
 *     auto toolpaths = maker.made();
 *
 * A move takes its length divided by the style's speed, and filament of a twentieth of its length.
 */
class ToolpathsMaker
{
public:
    static constexpr double kFilamentAMillimetre = 0.05;

    ToolpathsMaker() { startChunk({}); }

    /** Of the moves from now on. */
    void style(const MoveStyle& style)
    {
        m_style = styleIndex(style);
        MoveStyle travelling = style;
        travelling.width = 0;
        travelling.height = 0;
        m_travelStyle = styleIndex(travelling);
    }

    /** Starts a layer; its height is what lies above the one before. */
    void layer(float z)
    {
        Layer layer;
        layer.segments = {m_paths.segmentCount, m_paths.segmentCount};
        layer.height = m_paths.layers.empty() ? z : z - m_paths.layers.back().z;
        layer.z = z;
        m_paths.layers.push_back(layer);
    }

    void extrudeTo(float x, float y) { move(MoveKind::Extrude, x, y, m_paths.layers.back().z); }
    void travelTo(float x, float y) { move(MoveKind::Travel, x, y, m_paths.layers.back().z); }
    void retract() { move(MoveKind::Retract, m_last.x, m_last.y, m_last.z); }

    /** A closed square wall of this side around a point. */
    void square(float x, float y, float side)
    {
        travelTo(x - side / 2, y - side / 2);
        extrudeTo(x + side / 2, y - side / 2);
        extrudeTo(x + side / 2, y + side / 2);
        extrudeTo(x - side / 2, y + side / 2);
        extrudeTo(x - side / 2, y - side / 2);
    }

    Toolpaths& paths() { return m_paths; }

    /** What was made so far; more may follow. */
    std::shared_ptr<const Toolpaths> made(bool complete = true)
    {
        auto paths = std::make_shared<Toolpaths>(m_paths);
        paths->complete = complete;
        for (auto& chunk : paths->chunks)
            chunk = std::make_shared<PointChunk>(*chunk);
        return paths;
    }

private:
    std::uint32_t styleIndex(const MoveStyle& style)
    {
        m_paths.styles.push_back(style);
        m_paths.styleAmounts.emplace_back();
        return static_cast<std::uint32_t>(m_paths.styles.size() - 1);
    }

    void startChunk(PathPoint first)
    {
        m_chunk = std::make_shared<PointChunk>();
        m_chunk->points.push_back(first);
        m_paths.chunks.push_back(m_chunk);
    }

    void move(MoveKind kind, float x, float y, float z)
    {
        const std::uint32_t style = kind == MoveKind::Extrude ? m_style : m_travelStyle;
        if (m_chunk->points.size() == PointChunk::kCapacity)
            startChunk(m_last);
        const double length = std::hypot(double(x) - m_last.x, double(y) - m_last.y);
        const bool extrudes = kind == MoveKind::Extrude;
        Amount amount;
        amount.seconds = length / std::max(m_paths.styles[style].speed, 1.0F);
        amount.millimetres = extrudes ? length : 0;
        amount.filament = extrudes ? length * kFilamentAMillimetre : 0;
        for (Amount* sum :
             {&m_paths.total, &m_paths.styleAmounts[style], &m_paths.layers.back().amount,
              &m_paths.toolAmounts[m_paths.styles[style].tool]}) {
            sum->seconds += amount.seconds;
            sum->millimetres += amount.millimetres;
            sum->filament += amount.filament;
        }
        const PathPoint before = m_last;
        m_last = {x, y, z, static_cast<std::uint32_t>(kind) << 28 | style};
        m_chunk->points.push_back(m_last);
        ++m_paths.segmentCount;
        m_paths.layers.back().segments.end = m_paths.segmentCount;
        switch (kind) {
        case MoveKind::Extrude:
            ++m_paths.extrudingCount;
            enclose(before);
            enclose(m_last);
            break;
        case MoveKind::Travel:
            ++m_paths.travelCount;
            break;
        default:
            ++m_paths.retractionCount;
            break;
        }
    }

    void enclose(const PathPoint& point)
    {
        Bounds& bounds = m_paths.bounds;
        const std::array<double, 3> at = {point.x, point.y, point.z};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            bounds.min[axis] = bounds.valid ? std::min(bounds.min[axis], at[axis]) : at[axis];
            bounds.max[axis] = bounds.valid ? std::max(bounds.max[axis], at[axis]) : at[axis];
        }
        bounds.valid = true;
    }

    Toolpaths m_paths;
    std::shared_ptr<PointChunk> m_chunk;
    PathPoint m_last;
    std::uint32_t m_style = 0;
    std::uint32_t m_travelStyle = 0;
};

} // namespace pathscope
