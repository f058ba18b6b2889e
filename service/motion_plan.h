#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace trovek::service {

/** One thing that a machine does; what does not concern its kind is zero. */
struct PlanStep
{
    enum Kind : std::uint8_t {
        /** To `position`, or by it when `relative`, within `seconds`. */
        Move,
        /** To the end stops of the axes that `axes` names (bits 1 X, 2 Y, 4 Z). */
        Home,
        /** Nothing, for `seconds`. */
        Dwell,
        SetToolTarget,
        SetPlatformTarget,
        WaitForTool,
        WaitForPlatform,
    };

    Kind kind = Dwell;
    /** 0 right or only, 1 left; of targets, waits and moves that extrude. */
    std::uint8_t tool = 0;
    std::uint8_t axes = 0;
    bool extrudes = false;
    bool relative = false;
    float seconds = 0;
    /** Of targets; 0 is off. */
    float celsius = 0;
    /** Millimetres: X, Y, Z. */
    std::array<float, 3> position = {0, 0, 0};
};

/**
 * What a machine is to do from beginning to end.
 *
 * Made ahead, so that its duration is known before it starts. A print's moves are gathered to
 * pieces of a quarter of a second: more than anybody sees, and little enough to keep in memory.
 */
struct MotionPlan
{
    std::vector<PlanStep> steps;
    /** Sum over the steps; waiting for temperatures not included. */
    double seconds = 0;
    /** Starts anew after the last step until it is stopped. */
    bool repeats = false;
};

} // namespace trovek::service
