#pragma once

#include "pathscope/export.h"

#include <QWidget>

namespace pathscope {

/**
 * An upright slider with two handles for a range of layers, the lowest at the bottom.
 *
 * The upper handle stands on the position of the last layer, the lower one hangs from that of the
 * first, so that they never cover each other. What lies between them can be dragged as a whole.
 * With one layer there is but one handle.
 */
class PATHSCOPE_EXPORT LayerSlider : public QWidget
{
    Q_OBJECT

public:
    explicit LayerSlider(QWidget* parent = nullptr);

    int layerCount() const { return m_count; }
    int firstLayer() const { return m_first; }
    int lastLayer() const { return m_last; }
    bool isSingleLayer() const { return m_single; }

    /** Layers from 0; without layers the slider shows an empty groove. Emits nothing. */
    void setLayers(int count, int first, int last, bool single);

    /** The edge of the handles at which a layer lies, in pixels from the top. */
    qreal positionOf(int layer) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    /** The user moved a handle, and the range is another one now. */
    void rangeMoved(int first, int last);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    enum Part { None, Upper, Lower, Span };

    int layerAt(qreal y) const;
    QRectF upperHandle() const;
    QRectF lowerHandle() const;
    Part partAt(QPointF point) const;
    void drag(qreal y);
    void setHover(Part part);
    void moveTo(int first, int last);
    void place(int first, int last);
    void moveLast(int last);
    void moveFirst(int first);

    int m_count = 0;
    int m_first = 0;
    int m_last = 0;
    bool m_single = false;
    Part m_dragged = None;
    Part m_hovered = None;
    /** Of the mouse from the handle's edge, while it is dragged. */
    qreal m_grip = 0;
    int m_wheel = 0;
};

} // namespace pathscope
