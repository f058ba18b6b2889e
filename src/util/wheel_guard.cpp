#include "trovek-ui/util.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>

namespace trovek {

namespace {

const QLatin1String kGuardName("wheelGuard");

class WheelGuard : public QObject
{
public:
    explicit WheelGuard(QWidget* box)
        : QObject(box)
    {
        setObjectName(kGuardName);
        box->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::Wheel || static_cast<QWidget*>(watched)->hasFocus())
            return false;
        // Not accepted, the event goes on to the page around the box.
        event->ignore();
        return true;
    }
};

bool isBox(const QWidget* widget)
{
    return qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QComboBox*>(widget);
}

void guard(QWidget* box)
{
    // The wheel would otherwise give the focus first, and then change the value.
    if (box->focusPolicy() == Qt::WheelFocus)
        box->setFocusPolicy(Qt::StrongFocus);
    if (!box->findChild<QObject*>(kGuardName, Qt::FindDirectChildrenOnly))
        new WheelGuard(box);
}

} // namespace

void ignoreWheelUnlessFocused(QWidget* widget)
{
    if (isBox(widget))
        guard(widget);
    const QList<QWidget*> children = widget->findChildren<QWidget*>();
    for (QWidget* child : children) {
        if (isBox(child))
            guard(child);
    }
}

} // namespace trovek
