#include "trovek-ui/vertical_scroll_area.h"

#include <QScrollBar>

namespace trovek {

namespace {

/** What a layout would respect: the width that was set, or else the one that the content needs. */
int minimumWidthOf(const QWidget* widget)
{
    return widget->minimumWidth() > 0 ? widget->minimumWidth()
                                      : qMax(0, widget->minimumSizeHint().width());
}

/** A bar that was never shown has the width that every widget starts with. */
int widthOf(const QScrollBar* bar)
{
    return bar->isVisible() ? bar->width() : bar->sizeHint().width();
}

} // namespace

VerticalScrollArea::VerticalScrollArea(QWidget* parent)
    : QScrollArea(parent)
{
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
}

void VerticalScrollArea::resizeEvent(QResizeEvent* event)
{
    QScrollArea::resizeEvent(event);
    if (widget() && verticalScrollBar())
        setMinimumWidth(minimumWidthOf(widget()) + widthOf(verticalScrollBar()));
}

} // namespace trovek
