#include "trovek-ui/color_label.h"

#include <QPalette>
#include <QString>

namespace trovek {

namespace {

QString rgbText(const QColor& color)
{
    return QStringLiteral("rgb(%1,%2,%3)").arg(color.red()).arg(color.green()).arg(color.blue());
}

QString backgroundDeclaration(const QColor& color)
{
    return QStringLiteral("background-color: %1;").arg(rgbText(color));
}

} // namespace

ColorLabel::ColorLabel(QWidget* parent)
    : QLabel(parent)
{
    setColor(Qt::black);
}

ColorLabel::~ColorLabel() = default;

void ColorLabel::setColor(const QColor& color)
{
    m_color = color;
    const QColor disabled = QPalette().color(QPalette::Disabled, QPalette::Button);
    setStyleSheet(QStringLiteral("QLabel {border: 1px solid %1; border-radius: 4px; %2} "
                                 "QLabel:disabled {%3}")
                      .arg(rgbText(QColor(92, 92, 92)), backgroundDeclaration(color),
                           backgroundDeclaration(disabled)));
}

} // namespace trovek
