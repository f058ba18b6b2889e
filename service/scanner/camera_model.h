#pragma once

#include "geometry/vector.h"

#include <optional>

namespace trovek::service {

/** A place in a picture, in pixels from its upper left corner. */
struct PixelPoint
{
    double x = 0;
    double y = 0;
};

/**
 * How a camera takes what it sees into its picture. In its own coordinates x points to the right, y
 * down and z ahead, all in millimetres.
 */
struct CameraModel
{
    int width = 0;
    int height = 0;
    /** In pixels, of each direction. */
    double focalX = 0;
    double focalY = 0;
    /** What lies straight ahead. */
    double centerX = 0;
    double centerY = 0;
    /** The lens moves what is `r` from the center, in focal lengths, to r * (1 + distortion r²). */
    double distortion = 0;

    /** Nothing for what is not ahead of the camera; the place may lie outside the picture. */
    std::optional<PixelPoint> project(const geometry::Vector& point) const;
    /** Towards what is seen at a place; with z = 1. */
    geometry::Vector viewDirection(PixelPoint place) const;
    bool contains(PixelPoint place) const
    {
        return place.x >= 0 && place.x < width && place.y >= 0 && place.y < height;
    }
};

} // namespace trovek::service
