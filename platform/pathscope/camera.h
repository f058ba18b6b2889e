#pragma once

#include "pathscope/export.h"

#include <qtshared/bounding_box.h>

#include <QMatrix4x4>
#include <QPointF>
#include <QSizeF>
#include <QVector3D>

namespace pathscope {

/**
 * Where the viewer stands: an orbit around a target, z up. Millimetres and degrees; pure numbers.
 *
 * Points of the window are logical pixels from its top left corner.
 */
class PATHSCOPE_EXPORT Camera
{
public:
    enum Preset { Top, Front, Side, Isometric };

    QVector3D target() const { return m_target; }
    /** From the target to the eye, above 0. */
    float distance() const { return m_distance; }
    /** 0 looks along +y (from the front), 90 along -x (from the right). */
    float azimuth() const { return m_azimuth; }
    /** 90 looks straight down, 0 along the platform; -90 to 90. */
    float elevation() const { return m_elevation; }

    void setPreset(Preset preset);
    /** Puts a box into the middle so that all of it is seen, with a small margin. */
    void fit(const Orvane::BoundingBox& box, QSizeF window, bool orthographic);
    /** Turns by a drag of the mouse. */
    void orbit(QPointF delta);
    /** Moves the target so that what was under the mouse stays under it. */
    void pan(QPointF delta, QSizeF window, bool orthographic);
    /** Nearer for factors above 1; the point under the cursor stays where it is. */
    void zoom(float factor, QPointF cursor, QSizeF window, bool orthographic);

    QVector3D eye() const;
    QMatrix4x4 view() const;
    /** Near and far planes enclose the box. */
    QMatrix4x4 projection(const Orvane::BoundingBox& box, QSizeF window, bool orthographic) const;
    /** Millimetres that one logical pixel covers at the target. */
    float millimetresPerPixel(QSizeF window) const;

    bool operator==(const Camera& other) const;
    bool operator!=(const Camera& other) const { return !(*this == other); }

private:
    QVector3D m_target;
    float m_distance = 400;
    float m_azimuth = -30;
    float m_elevation = 30;
};

} // namespace pathscope
