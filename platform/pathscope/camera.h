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
 * Points of the window are logical pixels from its top left corner. At the target both projections
 * show the same size, so that nothing jumps from one to the other. Numbers that are none change
 * nothing, and whatever is far too large is held where floats still tell points apart.
 */
class PATHSCOPE_EXPORT Camera
{
public:
    enum Preset { Top, Front, Side, Isometric };

    /** What the window's height spans in perspective. */
    static constexpr float kFieldOfView = 35;

    QVector3D target() const { return m_target; }
    /** From the target to the eye, above 0. */
    float distance() const { return m_distance; }
    /** 0 looks along +y (from the front), 90 along -x (from the right). */
    float azimuth() const { return m_azimuth; }
    /** 90 looks straight down, 0 along the platform; -90 to 90. */
    float elevation() const { return m_elevation; }

    /** Only turns; a fit brings everything into sight. Side looks from the right, Isometric from
     * the front right and above. */
    void setPreset(Preset preset);
    /**
     * Puts a box into the middle so that all of it is seen, with a small margin. A flat box and a
     * single point do as well; a box turned inside out changes nothing.
     */
    void fit(const Orvane::BoundingBox& box, QSizeF window, bool orthographic);
    /** Turns by a drag of the mouse. */
    void orbit(QPointF delta);
    /** Moves the target so that what was under the mouse, as far away as it, stays there. */
    void pan(QPointF delta, QSizeF window, bool orthographic);
    /** Nearer for factors above 1; the point under the cursor, as far away as the target, stays
     * where it is. */
    void zoom(float factor, QPointF cursor, QSizeF window, bool orthographic);

    QVector3D eye() const;
    QMatrix4x4 view() const;
    /** Near and far planes enclose the box; what lies beside or behind the eye is left out in
     * perspective. */
    QMatrix4x4 projection(const Orvane::BoundingBox& box, QSizeF window, bool orthographic) const;
    /** Millimetres that one logical pixel covers at the target. */
    float millimetresPerPixel(QSizeF window) const;

    bool operator==(const Camera& other) const;
    bool operator!=(const Camera& other) const { return !(*this == other); }

private:
    QVector3D right() const;
    QVector3D up() const;
    /** From the target towards the eye. */
    QVector3D back() const;
    void moveTarget(double rightwards, double upwards);

    QVector3D m_target;
    float m_distance = 400;
    float m_azimuth = 45;
    float m_elevation = 35.264F;
};

} // namespace pathscope
