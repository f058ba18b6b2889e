#include "pathscope/toolpath_keys.h"

#include "pathscope/toolpath_overlay.h"
#include "pathscope/toolpath_scene.h"
#include "pathscope/toolpath_view_model.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QKeyEvent>

namespace pathscope {
namespace {

constexpr int kLayersAPage = 10;

} // namespace

template <typename Receiver, typename Slot>
QAction& ToolpathKeys::add(const char* name, const QString& text, int key, Receiver* receiver,
                           Slot slot)
{
    auto* action = new QAction(text, this);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(QKeySequence(key));
    action->setShortcutContext(m_context);
    connect(action, &QAction::triggered, receiver, slot);
    m_owner.addAction(action);
    return *action;
}

template <typename Receiver, typename Slot>
void ToolpathKeys::addSwitch(const char* name, const QString& text, int key, Receiver* receiver,
                             Slot slot)
{
    // A key that is held down would let the picture flicker.
    add(name, text, key, receiver, slot).setAutoRepeat(false);
}

ToolpathKeys::ToolpathKeys(ToolpathScene& scene, ToolpathOverlay& overlay, QWidget& owner,
                           Qt::ShortcutContext context)
    : QObject(&owner)
    , m_owner(owner)
    , m_context(context)
{
    ToolpathViewModel* const model = scene.viewModel();
    const auto jump = [model](int layers) {
        return [model, layers] {
            model->setLastLayer(model->lastLayer() + layers);
        };
    };
    add("layerUp", tr("Layer Up"), Qt::Key_Up, &overlay, &ToolpathOverlay::layerUp);
    add("layerDown", tr("Layer Down"), Qt::Key_Down, &overlay, &ToolpathOverlay::layerDown);
    addSwitch("orthoViewToggled", tr("Orthographic"), Qt::Key_O, model,
              &ToolpathViewModel::orthoViewToggled);
    add("tenLayersUp", tr("Ten Layers Up"), Qt::Key_PageUp, model, jump(kLayersAPage));
    add("tenLayersDown", tr("Ten Layers Down"), Qt::Key_PageDown, model, jump(-kLayersAPage));
    add("firstLayer", tr("First Layer"), Qt::Key_Home, model, [model] { model->setLastLayer(0); });
    add("lastLayer", tr("Last Layer"), Qt::Key_End, model,
        [model] { model->setLastLayer(model->layerCount() - 1); });
    addSwitch("singleLayer", tr("One Layer"), Qt::Key_X, model,
              &ToolpathViewModel::singleLayerToggled);
    addSwitch("fit", tr("Fit"), Qt::Key_F, &overlay, &ToolpathOverlay::fit);

    connect(qApp, &QApplication::focusChanged, this, &ToolpathKeys::follow);
    follow(nullptr, QApplication::focusWidget());
}

void ToolpathKeys::follow(QWidget* old, QWidget* now)
{
    if (old)
        old->removeEventFilter(this);
    const bool isMine = now && (m_context == Qt::WindowShortcut ? now->window() == m_owner.window()
                                                                : m_owner.isAncestorOf(now));
    if (isMine)
        now->installEventFilter(this);
}

bool ToolpathKeys::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::ShortcutOverride)
        return QObject::eventFilter(watched, event);
    const auto* key = static_cast<QKeyEvent*>(event);
    const int pressed = key->key() | int(key->modifiers() & ~Qt::KeypadModifier);
    for (const QAction* action : m_owner.actions()) {
        if (action->isEnabled() && action->shortcut() == QKeySequence(pressed)) {
            // A number that is typed counts first, so that the key goes on from there.
            if (auto* box = qobject_cast<QAbstractSpinBox*>(watched))
                box->interpretText();
            // The box does not get to claim the key, so the action does.
            event->ignore();
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

} // namespace pathscope
