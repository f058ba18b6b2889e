#include "trovek-ui/collapse_expand_header.h"

namespace trovek {

CollapseExpandHeader::CollapseExpandHeader(const QString& text, QWidget* parent)
    : QToolButton(parent)
{
    setText(text);
    setCheckable(true);
    setAutoRaise(true);
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setArrowType(Qt::RightArrow);
    connect(this, &QToolButton::toggled, this, &CollapseExpandHeader::buttonToggled);
}

void CollapseExpandHeader::buttonToggled(bool checked)
{
    setArrowType(checked ? Qt::DownArrow : Qt::RightArrow);
}

} // namespace trovek
