#pragma once

namespace Orvane {

/** What a three-dimensional view draws under the objects. */
struct Ground
{
    enum PlatformShape : int {
        Rectangular = 0,
        Round = 1,
    };

    /** Combined with |. */
    enum DrawFlags : int {
        DrawNothing = 0,
        DrawPlatform = 1,
        DrawGrid = 2,
        DrawAxes = 4,
        DrawLogo = 8,
        DrawBuildVolume = 16,
    };
};

} // namespace Orvane
