#pragma once

#include <pathscope/toolpaths.h>

#include <memory>

namespace pathscope {

/**
 * A tower of squares, 20 mm wide: each layer is 0.2 mm thick and has four extruding moves of two
 * features, outer wall and infill, that take a second each and 5 mm of filament.
 */
inline std::shared_ptr<Toolpaths> tower(int layers, bool complete = true)
{
    auto paths = std::make_shared<Toolpaths>();
    MoveStyle wall;
    wall.feature = Feature::OuterWall;
    wall.width = 0.4F;
    wall.height = 0.2F;
    wall.speed = 20;
    MoveStyle infill = wall;
    infill.feature = Feature::SparseInfill;
    paths->styles = {wall, infill};
    paths->styleAmounts.resize(2);

    auto chunk = std::make_shared<PointChunk>();
    chunk->points.push_back({20, 20, 0.2F, 0});
    const float corners[4][2] = {{40, 20}, {40, 40}, {20, 40}, {20, 20}};
    for (int i = 0; i < layers; ++i) {
        Layer layer;
        layer.segments = {paths->segmentCount, paths->segmentCount + 4};
        layer.height = 0.2F;
        layer.z = 0.2F * float(i + 1);
        for (std::uint32_t side = 0; side < 4; ++side) {
            const std::uint32_t style = side == 3 ? 1 : 0;
            chunk->points.push_back({corners[side][0], corners[side][1], layer.z, style});
            for (Amount* amount : {&layer.amount, &paths->styleAmounts[style],
                                   &paths->toolAmounts[0], &paths->total}) {
                amount->seconds += 1;
                amount->millimetres += 20;
                amount->filament += 5;
            }
        }
        paths->segmentCount += 4;
        paths->extrudingCount += 4;
        paths->layers.push_back(layer);
    }
    paths->chunks.push_back(chunk);
    if (layers > 0)
        paths->bounds = {{20, 20, 0.2}, {40, 40, 0.2 * layers}, true};
    paths->complete = complete;
    return paths;
}

} // namespace pathscope
