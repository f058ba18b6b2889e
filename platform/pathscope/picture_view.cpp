#include "picture_view.h"

namespace pathscope {

PictureView pictureView(const Camera& camera, const Orvane::BoundingBox& world, QSizeF window,
                        QSize pixels, bool orthographic)
{
    const QMatrix4x4 view = camera.view();
    const QMatrix4x4 projection = camera.projection(world, window, orthographic);
    const QVector3D right = view.row(0).toVector3D();
    const QVector3D up = view.row(1).toVector3D();
    const QVector3D back = view.row(2).toVector3D();
    // From the left of the viewer, or round shapes would look flat; some of it from above
    // whichever way the camera looks, so that edges below stay dark.
    const QVector3D lamp = (-0.9F * right + 0.5F * up + 0.6F * back).normalized();
    const QVector3D light = (lamp + QVector3D(0, 0, 0.3F)).normalized();
    return {projection * view,
            orthographic ? QVector4D(back, 0) : QVector4D(camera.eye(), 1),
            right,
            up,
            light,
            2 / (projection(1, 1) * float(pixels.height()))};
}

} // namespace pathscope
