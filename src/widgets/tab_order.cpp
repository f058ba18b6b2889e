#include "widgets/tab_order.h"

#include <QFormLayout>
#include <QHash>
#include <QVector>
#include <QWidget>

namespace trovek {

namespace {

struct TabStop
{
    QWidget* widget;
    /** Its place among all widgets of the window; 0 for what stands behind others. */
    int place;
};

using TabStops = QHash<const QWidget*, QVector<TabStop>>;

bool isTabStop(const QWidget& widget)
{
    // One with a proxy is a part of it, like the line edit of a spin box.
    return (widget.focusPolicy() & Qt::TabFocus) != 0 && widget.focusProxy() == nullptr;
}

/** The tab stops of each of the container's children, in one walk that starts at `first`. */
TabStops tabStopsByChild(const QWidget& container, const QWidget* first)
{
    TabStops stops;
    int place = 0;
    bool isBehindOthers = false;
    for (QWidget* widget = first->nextInFocusChain(); widget != first;
         widget = widget->nextInFocusChain()) {
        ++place;
        if (!isTabStop(*widget))
            continue;
        const QWidget* child = widget;
        while (child != nullptr && child->parentWidget() != &container)
            child = child->parentWidget();
        if (child != nullptr)
            stops[child].append({widget, isBehindOthers ? 0 : place});
        else
            isBehindOthers = true;
    }
    return stops;
}

} // namespace

void orderTabStops(const QFormLayout& form, QWidget* first)
{
    const TabStops stops = tabStopsByChild(*form.parentWidget(), first);
    QWidget* previous = first;
    // Only what is out of order moves: each move searches what the former ones left behind.
    int place = 0;
    for (int row = 0; row < form.rowCount(); ++row) {
        for (const QFormLayout::ItemRole role : {QFormLayout::LabelRole, QFormLayout::FieldRole}) {
            QLayoutItem* item = form.itemAt(row, role);
            if (item == nullptr)
                continue;
            for (const TabStop& stop : stops.value(item->widget())) {
                if (stop.place > place)
                    place = stop.place;
                else
                    QWidget::setTabOrder(previous, stop.widget);
                previous = stop.widget;
            }
        }
    }
}

} // namespace trovek
