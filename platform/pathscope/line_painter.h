#pragma once

#include <QColor>
#include <QImage>
#include <QSize>
#include <QVector3D>

#include <vector>

namespace pathscope {

/**
 * Draws beads of plastic with a depth buffer, without OpenGL.
 *
 * The picture is drawn twice as fine as asked for and made smaller at the end. A bead is a bar: its
 * top and the side towards the eye are drawn, which is all that can be seen from above.
 */
class LinePainter
{
public:
    /** Drawn pixels for one of the picture, each way. */
    static constexpr int kOversampling = 2;

    /** How the world comes to the picture: by parallel rays, z up. */
    struct View
    {
        /** Of length 1, at right angles to each other; back points to the eye. */
        QVector3D right;
        QVector3D up;
        QVector3D back;
        /** Drawn pixels a millimetre. */
        float scale = 1;
        /** The drawn pixel of the world's origin, y downwards. */
        float originX = 0;
        float originY = 0;
    };

    /** What a line is drawn with; millimetres. */
    struct Bead
    {
        float width = 0;
        float height = 0;
        /** Above the width it closes what lines of an area leave open between each other. */
        float topWidth = 0;
        QColor colour;
    };

    LinePainter(QSize size, const View& view);

    /** From one point to another of the middle of the bead's top, in millimetres. */
    void drawBead(QVector3D from, QVector3D to, const Bead& bead);

    /** Darkens what lies deep between others, and makes the picture. */
    QImage finished();

private:
    /** A parallelogram in drawn pixels, with the depth as z. */
    struct Face
    {
        QVector3D corner;
        QVector3D along;
        QVector3D across;
    };

    QVector3D projected(QVector3D point) const;
    QVector3D projectedDirection(QVector3D direction) const;
    void fill(const Face& face, const QColor& colour, float light, float roundness);
    void darkenHollows();
    float hollownessAt(int x, int y) const;

    QSize m_size;
    int m_width;
    int m_height;
    View m_view;
    /** Towards the eye, in drawn pixels; row by row. */
    std::vector<float> m_depth;
    std::vector<QRgb> m_colour;
};

} // namespace pathscope
