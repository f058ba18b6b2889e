#pragma once

#include "pathscope/export.h"

#include <QObject>

class QAction;

namespace pathscope {

class ToolpathOverlay;
class ToolpathScene;

/**
 * The keys of a toolpath view, as actions of the widget around it.
 *
 * Up and Down go by a layer, PageUp and PageDown by ten, Home and End to the first and the last;
 * O changes between perspective and orthographic, X shows one layer alone, F fits. They work
 * wherever the focus is in the context, in number boxes too, which would keep letters, Home and
 * End to themselves. Those that step repeat while they are held down.
 */
class PATHSCOPE_EXPORT ToolpathKeys : public QObject
{
    Q_OBJECT

public:
    /**
     * @param owner   gets the actions until the keys are deleted, and owns them
     * @param context Qt::WindowShortcut or Qt::WidgetWithChildrenShortcut
     */
    ToolpathKeys(ToolpathScene& scene, ToolpathOverlay& overlay, QWidget& owner,
                 Qt::ShortcutContext context);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    template <typename Receiver, typename Slot>
    QAction& add(const char* name, const QString& text, int key, Receiver* receiver, Slot slot);
    template <typename Receiver, typename Slot>
    void addSwitch(const char* name, const QString& text, int key, Receiver* receiver, Slot slot);
    void follow(QWidget* old, QWidget* now);

    QWidget& m_owner;
    const Qt::ShortcutContext m_context;
};

} // namespace pathscope
