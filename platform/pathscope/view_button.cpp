#include "pathscope/view_button.h"

#include "pathscope/camera.h"

#include <QPainter>
#include <QPolygonF>
#include <QStyleOptionToolButton>
#include <QStylePainter>

namespace pathscope {
namespace {

constexpr qreal kPicture = 18;

/** Corners of a cube that is seen from the front, the right and above, in a square of 18. */
constexpr QPointF kTopBack(9, 1.5);
constexpr QPointF kTopRight(16, 5.2);
constexpr QPointF kTopFront(9, 8.9);
constexpr QPointF kTopLeft(2, 5.2);
constexpr QPointF kBottomRight(16, 12.8);
constexpr QPointF kBottomFront(9, 16.5);
constexpr QPointF kBottomLeft(2, 12.8);

void drawCube(QPainter& painter, int preset, const QColor& line, const QColor& fill)
{
    const QPolygonF top{{kTopBack, kTopRight, kTopFront, kTopLeft}};
    const QPolygonF front{{kTopLeft, kTopFront, kBottomFront, kBottomLeft}};
    const QPolygonF side{{kTopFront, kTopRight, kBottomRight, kBottomFront}};
    painter.setPen(QPen(line, 1.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    const bool all = preset == Camera::Isometric;
    const auto face = [&](const QPolygonF& polygon, bool isSeen) {
        painter.setBrush(isSeen ? QBrush(fill) : QBrush(Qt::NoBrush));
        painter.drawPolygon(polygon);
    };
    face(top, all || preset == Camera::Top);
    face(front, all || preset == Camera::Front);
    face(side, all || preset == Camera::Side);
}

/** The corners of a frame around a filled square. */
void drawFit(QPainter& painter, const QColor& line, const QColor& fill)
{
    painter.setPen(QPen(line, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    for (const QPointF& sign : {QPointF(-1, -1), QPointF(1, -1), QPointF(1, 1), QPointF(-1, 1)}) {
        const QPointF corner(9 + 7 * sign.x(), 9 + 7 * sign.y());
        painter.drawPolyline(QPolygonF{{QPointF(corner.x() - 4 * sign.x(), corner.y()), corner,
                                        QPointF(corner.x(), corner.y() - 4 * sign.y())}});
    }
    painter.setBrush(fill);
    painter.drawRect(QRectF(5.5, 5.5, 7, 7));
}

} // namespace

ViewButton::ViewButton(int preset, QWidget* parent)
    : QToolButton(parent)
    , m_preset(preset)
{
    setAutoRaise(true);
    setFocusPolicy(Qt::StrongFocus);
}

QSize ViewButton::sizeHint() const
{
    return {32, 28};
}

void ViewButton::paintEvent(QPaintEvent* /*event*/)
{
    QStylePainter painter(this);
    QStyleOptionToolButton option;
    initStyleOption(&option);
    option.text.clear();
    option.icon = QIcon();
    painter.drawComplexControl(QStyle::CC_ToolButton, option);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate((width() - kPicture) / 2, (height() - kPicture) / 2);
    const QColor line = palette().color(QPalette::ButtonText);
    const QColor fill = palette().color(QPalette::Highlight);
    if (m_preset < 0)
        drawFit(painter, line, fill);
    else
        drawCube(painter, m_preset, line, fill);
}

} // namespace pathscope
