#include "util/text_editor.h"

#include <QDesktopServices>
#include <QUrl>

namespace trovek {

void startTextEditor(const QString& path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

} // namespace trovek
