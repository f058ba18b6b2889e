#include "onboard_preferences/entry_label.h"

#include <QEvent>
#include <QFontMetrics>
#include <QPainter>
#include <QStyle>
#include <QTextDocument>

namespace trovek {

namespace {

constexpr int kDotSize = 7;
constexpr int kDotGap = 6;

QFont boldOf(QFont font)
{
    font.setBold(true);
    return font;
}

} // namespace

EntryLabel::EntryLabel(const QString& text, QWidget* parent)
    : QLabel(parent)
{
    // What a machine sends is no markup.
    setTextFormat(Qt::PlainText);
    setText(text);
}

void EntryLabel::mark(const QString& toolTip)
{
    const bool isMarkup = Qt::mightBeRichText(toolTip);
    setToolTip(isMarkup ? Qt::convertFromPlainText(toolTip) : toolTip);
    setAccessibleDescription(toolTip);
    if (m_marked)
        return;
    m_marked = true;
    setFont(boldOf(font()));
}

void EntryLabel::unmark()
{
    if (!m_marked)
        return;
    m_marked = false;
    setToolTip(QString());
    setAccessibleDescription(QString());
    setFont(QFont());
}

QSize EntryLabel::sizeHint() const
{
    return QLabel::sizeHint().expandedTo(QSize(markedWidth(), 0));
}

QSize EntryLabel::minimumSizeHint() const
{
    return QLabel::minimumSizeHint().expandedTo(QSize(markedWidth(), 0));
}

void EntryLabel::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        m_markedWidth = -1;
    QLabel::changeEvent(event);
}

void EntryLabel::paintEvent(QPaintEvent* event)
{
    QLabel::paintEvent(event);
    if (!m_marked)
        return;
    const int left = fontMetrics().size(0, text()).width() + kDotGap;
    const QRect dot(left, (height() - kDotSize) / 2, kDotSize, kDotSize);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(isEnabled() ? QPalette::Highlight : QPalette::WindowText));
    painter.drawEllipse(QStyle::visualRect(layoutDirection(), rect(), dot));
}

int EntryLabel::markedWidth() const
{
    if (m_markedWidth < 0)
        m_markedWidth = QFontMetrics(boldOf(font())).size(0, text()).width() + kDotGap + kDotSize;
    return m_markedWidth;
}

} // namespace trovek
