#include "widgets/tab_order.h"

#include <QFormLayout>
#include <QHash>
#include <QVector>
#include <QWidget>

namespace trovek {

namespace {

using TabStops = QHash<const QWidget*, QVector<QWidget*>>;

bool isTabStop(const QWidget& widget)
{
    // One with a proxy is a part of it, like the line edit of a spin box.
    return (widget.focusPolicy() & Qt::TabFocus) != 0 && widget.focusProxy() == nullptr;
}

/** The tab stops of each of the container's children, in one walk. */
TabStops tabStopsByChild(const QWidget& container)
{
    TabStops stops;
    for (QWidget* widget = container.nextInFocusChain(); widget != &container;
         widget = widget->nextInFocusChain()) {
        if (!isTabStop(*widget))
            continue;
        const QWidget* child = widget;
        while (child != nullptr && child->parentWidget() != &container)
            child = child->parentWidget();
        if (child != nullptr)
            stops[child].append(widget);
    }
    return stops;
}

} // namespace

void orderTabStops(const QFormLayout& form, QWidget* first)
{
    const TabStops stops = tabStopsByChild(*form.parentWidget());
    QWidget* previous = first;
    for (int row = 0; row < form.rowCount(); ++row) {
        for (const QFormLayout::ItemRole role : {QFormLayout::LabelRole, QFormLayout::FieldRole}) {
            QLayoutItem* item = form.itemAt(row, role);
            if (item == nullptr)
                continue;
            for (QWidget* stop : stops.value(item->widget())) {
                QWidget::setTabOrder(previous, stop);
                previous = stop;
            }
        }
    }
}

} // namespace trovek
