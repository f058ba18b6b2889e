#include "pathscope/layer_slider.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <utility>

namespace pathscope {
namespace {

constexpr int kWidth = 26;
constexpr int kHandleWidth = 20;
constexpr int kHandleHeight = 11;
constexpr int kGrooveWidth = 6;
constexpr int kLayersAPage = 10;
constexpr int kAnglesANotch = 120;

QColor mixed(const QColor& first, const QColor& second, qreal share)
{
    return QColor::fromRgbF(first.redF() + (second.redF() - first.redF()) * share,
                            first.greenF() + (second.greenF() - first.greenF()) * share,
                            first.blueF() + (second.blueF() - first.blueF()) * share);
}

void drawHandle(QPainter& painter, const QRectF& handle, const QPalette& palette, bool isMarked,
                bool hasFocus)
{
    const QColor face = palette.color(QPalette::Button);
    const QColor text = palette.color(QPalette::ButtonText);
    const QColor highlight = palette.color(QPalette::Highlight);
    painter.setPen(QPen(hasFocus ? highlight : mixed(face, text, 0.55), hasFocus ? 2 : 1));
    painter.setBrush(isMarked ? mixed(face, highlight, 0.35) : mixed(face, text, 0.05));
    painter.drawRoundedRect(handle.adjusted(1, 1, -1, -1), 3, 3);
    painter.setPen(QPen(mixed(face, text, 0.6), 1));
    const qreal middle = handle.center().y();
    for (const qreal line : {middle - 1.5, middle + 1.5})
        painter.drawLine(QPointF(handle.left() + 6, line), QPointF(handle.right() - 6, line));
}

} // namespace

LayerSlider::LayerSlider(QWidget* parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    setMouseTracking(true);
}

void LayerSlider::setLayers(int count, int first, int last, bool single)
{
    count = std::max(count, 0);
    last = std::clamp(last, 0, std::max(count - 1, 0));
    first = single ? last : std::clamp(first, 0, last);
    if (count != m_count || single != m_single)
        update();
    m_count = count;
    m_single = single;
    place(first, last);
}

QSize LayerSlider::sizeHint() const
{
    return {kWidth, 240};
}

QSize LayerSlider::minimumSizeHint() const
{
    return {kWidth, 80};
}

qreal LayerSlider::positionOf(int layer) const
{
    const qreal span = height() - 2.0 * kHandleHeight;
    if (m_count < 2)
        return kHandleHeight;
    return kHandleHeight + span * (m_count - 1 - layer) / (m_count - 1);
}

int LayerSlider::layerAt(qreal y) const
{
    const qreal span = height() - 2.0 * kHandleHeight;
    if (m_count < 2 || span <= 0)
        return 0;
    const qreal share = std::clamp((y - kHandleHeight) / span, 0.0, 1.0);
    return m_count - 1 - qRound(share * (m_count - 1));
}

QRectF LayerSlider::upperHandle() const
{
    return {(width() - kHandleWidth) / 2.0, positionOf(m_last) - kHandleHeight, kHandleWidth,
            kHandleHeight};
}

QRectF LayerSlider::lowerHandle() const
{
    const qreal y = m_count < 2 ? height() - kHandleHeight : positionOf(m_first);
    return {(width() - kHandleWidth) / 2.0, y, kHandleWidth, kHandleHeight};
}

LayerSlider::Part LayerSlider::partAt(QPointF point) const
{
    const qreal y = point.y();
    if (y <= upperHandle().bottom() || m_single)
        return Upper;
    return y >= lowerHandle().top() ? Lower : Span;
}

void LayerSlider::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& colours = palette();
    const QColor ground = colours.color(QPalette::Window);
    const QRectF groove((width() - kGrooveWidth) / 2.0, kHandleHeight / 2.0, kGrooveWidth,
                        height() - kHandleHeight);
    painter.setPen(QPen(mixed(ground, colours.color(QPalette::WindowText), 0.3), 1));
    painter.setBrush(mixed(ground, colours.color(QPalette::WindowText), 0.12));
    painter.drawRoundedRect(groove, kGrooveWidth / 2.0, kGrooveWidth / 2.0);
    if (m_count == 0)
        return;

    const QRectF upper = upperHandle();
    const QRectF lower = lowerHandle();
    if (!m_single) {
        painter.setPen(Qt::NoPen);
        QColor span = colours.color(isEnabled() ? QPalette::Highlight : QPalette::Mid);
        painter.setBrush(m_hovered == Span || m_dragged == Span ? span.lighter(120) : span);
        painter.drawRect(QRectF(groove.left() + 0.5, upper.center().y(), kGrooveWidth - 1,
                                lower.center().y() - upper.center().y()));
        drawHandle(painter, lower, colours, m_hovered == Lower || m_dragged == Lower, false);
    }
    drawHandle(painter, upper, colours, m_hovered == Upper || m_dragged == Upper, hasFocus());
}

void LayerSlider::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || m_count == 0) {
        event->ignore();
        return;
    }
    const QPointF point = event->localPos();
    m_dragged = partAt(point);
    const bool isLower = m_dragged == Lower;
    const QRectF handle = isLower ? lowerHandle() : upperHandle();
    const qreal edge = isLower ? handle.top() : handle.bottom();
    // What is hit beside the handles comes to the mouse at once.
    const bool isHit = m_dragged == Span || handle.adjusted(0, -2, 0, 2).contains(point) ||
                       (point.y() >= handle.top() && point.y() <= handle.bottom());
    m_grip = isHit ? point.y() - edge : (isLower ? 1 : -1) * kHandleHeight / 2.0;
    if (!isHit)
        drag(point.y());
    update();
}

void LayerSlider::mouseMoveEvent(QMouseEvent* event)
{
    if (m_dragged != None)
        drag(event->localPos().y());
    else
        setHover(m_count == 0 ? None : partAt(event->localPos()));
}

void LayerSlider::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_dragged = None;
    update();
}

void LayerSlider::leaveEvent(QEvent* event)
{
    setHover(None);
    QWidget::leaveEvent(event);
}

void LayerSlider::setHover(Part part)
{
    if (part == m_hovered)
        return;
    m_hovered = part;
    update();
}

void LayerSlider::drag(qreal y)
{
    const int layer = layerAt(y - m_grip);
    switch (m_dragged) {
    case Upper:
        moveLast(m_single ? layer : std::max(layer, m_first));
        break;
    case Lower:
        moveFirst(std::min(layer, m_last));
        break;
    case Span: {
        const int thickness = m_last - m_first;
        const int last = std::clamp(layer, thickness, m_count - 1);
        moveTo(last - thickness, last);
        break;
    }
    case None:
        break;
    }
}

void LayerSlider::moveLast(int last)
{
    last = std::clamp(last, 0, std::max(m_count - 1, 0));
    moveTo(m_single ? last : std::min(m_first, last), last);
}

void LayerSlider::moveFirst(int first)
{
    moveTo(std::clamp(first, 0, m_last), m_last);
}

void LayerSlider::moveTo(int first, int last)
{
    if (first == m_first && last == m_last)
        return;
    place(first, last);
    emit rangeMoved(first, last);
}

void LayerSlider::place(int first, int last)
{
    const QRectF upper = upperHandle();
    const QRectF lower = lowerHandle();
    m_first = first;
    m_last = last;
    // A step draws what lies between the old and the new place, not all of the groove.
    for (const auto& [before, now] : {std::pair(upper, upperHandle()), {lower, lowerHandle()}}) {
        if (before != now)
            update(before.united(now).toAlignedRect().adjusted(-1, -1, 1, 1));
    }
}

void LayerSlider::wheelEvent(QWheelEvent* event)
{
    m_wheel += event->angleDelta().y();
    const int notches = m_wheel / kAnglesANotch;
    m_wheel -= notches * kAnglesANotch;
    event->accept();
    if (notches != 0)
        moveLast(m_last + notches * (event->modifiers() & Qt::ControlModifier ? kLayersAPage : 1));
}

void LayerSlider::keyPressEvent(QKeyEvent* event)
{
    const bool movesFirst = (event->modifiers() & Qt::ShiftModifier) != 0 && !m_single;
    const int layer = movesFirst ? m_first : m_last;
    int target = layer;
    switch (event->key()) {
    case Qt::Key_Up:
        target = layer + 1;
        break;
    case Qt::Key_Down:
        target = layer - 1;
        break;
    case Qt::Key_PageUp:
        target = layer + kLayersAPage;
        break;
    case Qt::Key_PageDown:
        target = layer - kLayersAPage;
        break;
    case Qt::Key_Home:
        target = 0;
        break;
    case Qt::Key_End:
        target = m_count - 1;
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    if (movesFirst)
        moveFirst(target);
    else
        moveLast(target);
}

} // namespace pathscope
