#pragma once

namespace Orvane {

/** An axis-aligned box in millimetres, in the machine's coordinates. */
struct BoundingBox
{
    float xMin = 0;
    float yMin = 0;
    float zMin = 0;
    float xMax = 0;
    float yMax = 0;
    float zMax = 0;

    float width() const { return xMax - xMin; }
    float depth() const { return yMax - yMin; }
    float height() const { return zMax - zMin; }

    /** True when the box holds no volume; a box turned inside out is empty. */
    bool isEmpty() const { return !(width() > 0 && depth() > 0 && height() > 0); }
};

} // namespace Orvane
