#include "util/text_editor.h"

#include <QProcess>

namespace trovek {

void startTextEditor(const QString& path)
{
    // Never deleted: the end of the process object would end the user's editor.
    auto* process = new QProcess;
    process->start(QStringLiteral("notepad.exe"), {path}, QIODevice::ReadWrite);
}

} // namespace trovek
