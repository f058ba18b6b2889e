#include "util/text_editor.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

namespace trovek {
namespace {

constexpr char kLogUnit[] = "src/util/text_editor_desktop";
/** The desktop's question is answered from a few small files. */
constexpr int kQueryWaitMs = 3000;

/** The name of the desktop entry that opens plain texts; empty when the desktop names none. */
QString defaultEntry()
{
    QProcess query;
    query.start(QStringLiteral("xdg-mime"),
                {QStringLiteral("query"), QStringLiteral("default"), QStringLiteral("text/plain")},
                QIODevice::ReadOnly);
    if (!query.waitForFinished(kQueryWaitMs)) {
        query.kill();
        query.waitForFinished();
        return QString();
    }
    return QString::fromUtf8(query.readAllStandardOutput()).trimmed();
}

struct EditorEntry
{
    QString exec;
    bool needsTerminal = false;
};

EditorEntry readEntry(const QString& path)
{
    EditorEntry entry;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return entry;
    bool isMainGroup = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        const QString value = line.section(QLatin1Char('='), 1).trimmed();
        const QString key = line.section(QLatin1Char('='), 0, 0).trimmed();
        if (line.startsWith(QLatin1Char('[')))
            isMainGroup = line == QLatin1String("[Desktop Entry]");
        else if (isMainGroup && key == QLatin1String("Exec"))
            entry.exec = value;
        else if (isMainGroup && key == QLatin1String("Terminal"))
            entry.needsTerminal = value == QLatin1String("true");
    }
    return entry;
}

/** "Exec" with the path in the place of its field codes (freedesktop.org, Desktop Entry). */
QStringList commandOf(const QString& exec, const QString& path)
{
    QStringList command;
    bool hasPath = false;
    for (QString word : QProcess::splitCommand(exec)) {
        if (word == QLatin1String("%f") || word == QLatin1String("%F") ||
            word == QLatin1String("%u") || word == QLatin1String("%U")) {
            hasPath = true;
            command.append(path);
        } else if (!(word.size() == 2 && word.startsWith(QLatin1Char('%')) &&
                     word != QLatin1String("%%"))) {
            command.append(word.replace(QLatin1String("%%"), QLatin1String("%")));
        }
    }
    if (!command.isEmpty() && !hasPath)
        command.append(path);
    return command;
}

/** The command in a window of its own; empty where there is no terminal. */
QStringList inTerminal(const QStringList& command)
{
    if (command.isEmpty())
        return {};
    const QString terminal = QStandardPaths::findExecutable(QStringLiteral("x-terminal-emulator"));
    if (terminal.isEmpty())
        return {};
    return QStringList{terminal, QStringLiteral("-e")} + command;
}

QStringList desktopEditor(const QString& path)
{
    const QString file =
        QStandardPaths::locate(QStandardPaths::ApplicationsLocation, defaultEntry());
    if (!file.endsWith(QLatin1String(".desktop")))
        return {};
    const EditorEntry entry = readEntry(file);
    const QStringList command = commandOf(entry.exec, path);
    return entry.needsTerminal ? inTerminal(command) : command;
}

/** What the user's environment names, which needs a terminal. */
QStringList environmentEditor(const QString& path)
{
    for (const char* name : {"VISUAL", "EDITOR"}) {
        const QStringList command = QProcess::splitCommand(QString::fromLocal8Bit(qgetenv(name)));
        if (command.isEmpty() || QStandardPaths::findExecutable(command.first()).isEmpty())
            continue;
        return inTerminal(command + QStringList{path});
    }
    return {};
}

bool start(QStringList command)
{
    if (command.isEmpty())
        return false;
    const QString program = command.takeFirst();
    return QProcess::startDetached(program, command);
}

} // namespace

void startTextEditor(const QString& path)
{
    if (start(desktopEditor(path)) || start(environmentEditor(path)))
        return;
    TROVEK_LOG(0) << "There is no text editor to open " << toStdString(path)
                  << ": the desktop names none for plain texts, and neither VISUAL nor EDITOR "
                     "names one that can be started in a terminal"
                  << std::endl;
}

} // namespace trovek
