#include "system.h"

#include <trovek/text.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <stdexcept>
#include <string>

#include <windows.h>

namespace trovek::service {

namespace {

TerminationWatcher* g_watcher = nullptr;

BOOL WINAPI handleConsoleEvent(DWORD)
{
    // Runs on a thread of its own, and the process ends when it returns from a closing console.
    if (g_watcher == nullptr)
        return FALSE;
    QMetaObject::invokeMethod(g_watcher, &TerminationWatcher::terminationRequested,
                              Qt::QueuedConnection);
    return TRUE;
}

} // namespace

// Folders below the user's profile are the user's alone here without further ado.
void makePrivateFolder(const QString& path)
{
    if (!QDir().mkpath(path) || !QFileInfo(path).isDir()) {
        throw std::runtime_error(
            toStdString(QStringLiteral("The folder \"%1\" cannot be made").arg(path)));
    }
}

bool writePrivateFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

// The toolkit keeps its own handle to itself; any other one to the same file does as well.
bool syncToDisk(const QFileDevice& file)
{
    const std::wstring path = QDir::toNativeSeparators(file.fileName()).toStdWString();
    const HANDLE handle =
        CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    const bool isSynced = FlushFileBuffers(handle) != 0;
    CloseHandle(handle);
    return isSynced;
}

// A local socket is a named pipe here and leaves no file.
bool isSocketFile(const QString&)
{
    return false;
}

class TerminationWatcher::Private
{
};

TerminationWatcher::TerminationWatcher(QObject* parent)
    : QObject(parent)
    , d(new Private)
{
    g_watcher = this;
    if (!SetConsoleCtrlHandler(handleConsoleEvent, TRUE))
        throw std::runtime_error("The system refuses a console handler");
}

TerminationWatcher::~TerminationWatcher()
{
    SetConsoleCtrlHandler(handleConsoleEvent, FALSE);
    g_watcher = nullptr;
}

} // namespace trovek::service
