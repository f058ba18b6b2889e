#include "make_dialog/fitting_scroll_area.h"

#include <QApplication>
#include <QEvent>
#include <QLayout>
#include <QScreen>
#include <QScrollBar>

namespace trovek {

namespace {

/** What a title bar takes; nobody knows it before the window is shown. */
constexpr int kTitleBarHeight = 36;
/** However small the screen is, a few rows are seen. */
constexpr int kLeastHeight = 100;

int heightOf(const QWidget& content)
{
    const int width = content.sizeHint().expandedTo(content.minimumSize()).width();
    return content.hasHeightForWidth() ? content.heightForWidth(width)
                                       : content.sizeHint().height();
}

/** What the other items of the window's column take. */
int heightBeside(const QWidget& area, const QLayout& column)
{
    const QMargins margins = column.contentsMargins();
    int height = margins.top() + margins.bottom();
    for (int i = 0; i < column.count(); ++i) {
        QLayoutItem* const item = column.itemAt(i);
        if (item->widget() != &area && !item->isEmpty())
            height += item->sizeHint().height() + column.spacing();
    }
    return height;
}

} // namespace

FittingScrollArea::FittingScrollArea(QWidget* parent)
    : VerticalScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    // Whatever scrolls here has the focus itself.
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Minimum);
    connect(qApp, &QApplication::focusChanged, this,
            [this](QWidget*, QWidget* focused) { showFocus(focused); });
    window()->installEventFilter(this);
}

FittingScrollArea::~FittingScrollArea()
{
    // The focus leaves the content while it is destroyed, when only the widget is left of the area.
    disconnect(qApp, nullptr, this, nullptr);
}

QSize FittingScrollArea::sizeHint() const
{
    if (widget() == nullptr)
        return VerticalScrollArea::sizeHint();
    if (m_maximumHeight == 0)
        m_maximumHeight = roomOnScreen();
    const int width = widget()->sizeHint().expandedTo(widget()->minimumSize()).width();
    return {width + verticalScrollBar()->sizeHint().width(),
            qMin(heightOf(*widget()), m_maximumHeight)};
}

bool FittingScrollArea::event(QEvent* event)
{
    const bool handled = VerticalScrollArea::event(event);
    if (event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return handled;
}

bool FittingScrollArea::viewportEvent(QEvent* event)
{
    // The content asks for another size.
    if (event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return VerticalScrollArea::viewportEvent(event);
}

bool FittingScrollArea::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == window() && event->type() == QEvent::LayoutRequest)
        followScreen();
    return VerticalScrollArea::eventFilter(watched, event);
}

void FittingScrollArea::showEvent(QShowEvent* event)
{
    VerticalScrollArea::showEvent(event);
    followScreen();
}

int FittingScrollArea::roomOnScreen() const
{
    const QWidget& dialog = *window();
    const QScreen* const screen = dialog.screen();
    if (screen == nullptr || dialog.layout() == nullptr)
        return QWIDGETSIZE_MAX;
    const int decoration =
        qMax(kTitleBarHeight, dialog.frameGeometry().height() - dialog.geometry().height());
    const int room =
        screen->availableGeometry().height() - decoration - heightBeside(*this, *dialog.layout());
    return qMax(room, kLeastHeight);
}

void FittingScrollArea::followScreen()
{
    const int room = roomOnScreen();
    if (room == m_maximumHeight)
        return;
    m_maximumHeight = room;
    updateGeometry();
}

/** Not for the mouse, under which nothing may move. */
void FittingScrollArea::showFocus(const QWidget* focused)
{
    if (focused == nullptr || widget() == nullptr || !widget()->isAncestorOf(focused) ||
        QApplication::mouseButtons() != Qt::NoButton)
        return;
    ensureWidgetVisible(const_cast<QWidget*>(focused));
}

} // namespace trovek
