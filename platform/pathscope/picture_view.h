#pragma once

#include "pathscope/camera.h"

#include <QMatrix4x4>
#include <QSize>
#include <QVector3D>
#include <QVector4D>

namespace pathscope {

/** A camera as the shaders want it. */
struct PictureView
{
    QMatrix4x4 viewProjection;
    /** With w 1 a point; with w 0 the direction to an eye far away. */
    QVector4D eye;
    QVector3D right;
    QVector3D up;
    /** Towards the light, which stands behind the viewer's left shoulder. */
    QVector3D light;
    /** Millimetres that a pixel covers where the depth (the clip coordinate w) is 1. */
    float pixel = 0;
};

/**
 * @param world   what near and far planes enclose
 * @param window  logical pixels
 * @param pixels  of the picture, above 0
 */
PictureView pictureView(const Camera& camera, const Orvane::BoundingBox& world, QSizeF window,
                        QSize pixels, bool orthographic);

} // namespace pathscope
