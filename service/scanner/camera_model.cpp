#include "scanner/camera_model.h"

namespace trovek::service {

std::optional<PixelPoint> CameraModel::project(const geometry::Vector& point) const
{
    if (!(point.z > 0))
        return std::nullopt;
    const double x = point.x / point.z;
    const double y = point.y / point.z;
    const double stretch = 1 + distortion * (x * x + y * y);
    return PixelPoint{centerX + focalX * stretch * x, centerY + focalY * stretch * y};
}

geometry::Vector CameraModel::viewDirection(PixelPoint place) const
{
    const double seenX = (place.x - centerX) / focalX;
    const double seenY = (place.y - centerY) / focalY;
    double x = seenX;
    double y = seenY;
    // Each time the rest shrinks to a small part, as small as the distortion is.
    for (int i = 0; i < 6; ++i) {
        const double stretch = 1 + distortion * (x * x + y * y);
        x = seenX / stretch;
        y = seenY / stretch;
    }
    return {x, y, 1};
}

} // namespace trovek::service
