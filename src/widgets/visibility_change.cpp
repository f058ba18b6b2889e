#include "widgets/visibility_change.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLayout>
#include <QWidget>

namespace trovek {

VisibilityChange::VisibilityChange(QLayout* layout, LayOut layOut)
    : m_layout(layout)
    , m_form(layout->parentWidget())
    , m_layOut(layOut)
{}

VisibilityChange::~VisibilityChange()
{
    if (!m_isRunning)
        return;
    m_layout->setEnabled(true);
    if (!m_form->isVisible())
        return;
    if (m_layOut == AtOnce) {
        m_layout->activate();
        // A scroll bar that comes or goes makes every row narrower or wider, which asks again.
        QCoreApplication::sendPostedEvents(m_form->parentWidget(), QEvent::LayoutRequest);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateLater);
    } else {
        m_layout->update();
    }
    for (QWidget* widget : m_silent)
        widget->setAttribute(Qt::WA_UpdatesDisabled, false);
    m_form->update();
}

void VisibilityChange::set(QWidget* widget, bool shown)
{
    if (widget == nullptr || widget->isHidden() != shown)
        return;
    m_layout->setEnabled(false);
    m_isRunning = true;
    if (shown && m_form->isVisible())
        silence(widget);
    widget->setVisible(shown);
}

/** Not by setUpdatesEnabled(), which makes each widget ask at the end. */
void VisibilityChange::silence(QWidget* widget)
{
    if (widget->updatesEnabled()) {
        widget->setAttribute(Qt::WA_UpdatesDisabled, true);
        m_silent.push_back(widget);
    }
    for (QObject* child : widget->children()) {
        if (child->isWidgetType())
            silence(static_cast<QWidget*>(child));
    }
}

} // namespace trovek
