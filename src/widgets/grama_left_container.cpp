#include "trovek-ui/grama.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

namespace trovek {

namespace {

constexpr int kButtonSize = 24;
constexpr int kIndentation = 12;

} // namespace

GramaCollapseExpandButton::GramaCollapseExpandButton(QWidget* parent)
    : QAbstractButton(parent)
{
    setCheckable(true);
    setChecked(true);
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

bool GramaCollapseExpandButton::isCollapsible() const
{
    return m_collapsible;
}

void GramaCollapseExpandButton::setCollapsible(bool collapsible)
{
    if (collapsible == m_collapsible)
        return;
    m_collapsible = collapsible;
    setFocusPolicy(collapsible ? Qt::TabFocus : Qt::NoFocus);
    update();
}

QSize GramaCollapseExpandButton::sizeHint() const
{
    return QSize(kButtonSize, kButtonSize);
}

void GramaCollapseExpandButton::keyPressEvent(QKeyEvent* event)
{
    // As in a tree view; a plain button would move the focus.
    if (event->key() == Qt::Key_Left)
        setChecked(false);
    else if (event->key() == Qt::Key_Right)
        setChecked(true);
    else
        QAbstractButton::keyPressEvent(event);
}

void GramaCollapseExpandButton::paintEvent(QPaintEvent* /*event*/)
{
    if (!m_collapsible)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QStyleOption arrow;
    arrow.initFrom(this);
    style()->drawPrimitive(isChecked() ? QStyle::PE_IndicatorArrowDown
                                       : QStyle::PE_IndicatorArrowRight,
                           &arrow, &painter, this);
    if (hasFocus()) {
        QStyleOptionFocusRect frame;
        frame.initFrom(this);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &frame, &painter, this);
    }
}

GramaLeftContainerWidget::GramaLeftContainerWidget(QWidget* label, int level, QWidget* parent)
    : QWidget(parent)
    , m_button(new GramaCollapseExpandButton(this))
{
    if (const auto* text = qobject_cast<QLabel*>(label))
        m_button->setAccessibleName(text->text());
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    if (level > 0)
        layout->addSpacing(kIndentation * level);
    layout->addWidget(m_button, 0, Qt::AlignLeft);
    layout->addWidget(label, 0, Qt::AlignLeft);
    connect(m_button, &QAbstractButton::toggled, this,
            &GramaLeftContainerWidget::collapsedOrExpanded);
}

GramaCollapseExpandButton* GramaLeftContainerWidget::button() const
{
    return m_button;
}

void GramaLeftContainerWidget::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_button->toggle();
    else
        QWidget::mouseDoubleClickEvent(event);
}

} // namespace trovek
