#include "widgets/copyable_label.h"

#include <QClipboard>
#include <QGuiApplication>

namespace trovek {

CopyableLabel::CopyableLabel(const QString& text, QWidget* parent)
    : QLabel(text, parent)
{
    setToolTip(QLabel::tr("Click to copy message to clipboard"));
    setOpenExternalLinks(true);
}

void CopyableLabel::mousePressEvent(QMouseEvent*)
{
    QGuiApplication::clipboard()->setText(text(), QClipboard::Clipboard);
}

} // namespace trovek
