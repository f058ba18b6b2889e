#include "trovek-ui/elided_label.h"

#include <QPainter>

namespace trovek {

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent)
    : QWidget(parent)
    , m_text(text)
{
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::MinimumExpanding);
    setAccessibleName(text);
}

QSize ElidedLabel::sizeHint() const
{
    return QSize(0, fontMetrics().height());
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QFontMetrics metrics = fontMetrics();
    painter.drawText(0, metrics.ascent(), metrics.elidedText(m_text, Qt::ElideRight, width()));
}

} // namespace trovek
