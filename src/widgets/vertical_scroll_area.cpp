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
        setMinimumWidth(minimumWidthOf(widget()) + verticalScrollBar()->width());
}

} // namespace trovek
