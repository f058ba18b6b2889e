#include "system.h"

#include <trovek/text.h>

#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trovek::service {

namespace {

std::runtime_error folderError(const QString& path, const QString& problem)
{
    return std::runtime_error(
        toStdString(QStringLiteral("The folder \"%1\" %2").arg(path, problem)));
}

// The handler may only write to a descriptor; everything else happens in the event loop.
int g_signalWriteEnd = -1;

void handleSignal(int)
{
    const int savedErrno = errno;
    const char byte = 1;
    const ssize_t written = ::write(g_signalWriteEnd, &byte, 1);
    static_cast<void>(written);
    errno = savedErrno;
}

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};

} // namespace

void makePrivateFolder(const QString& path)
{
    const QByteArray native = QFile::encodeName(path);
    if (::mkdir(native.constData(), S_IRWXU) != 0) {
        if (errno == ENOENT) {
            const QString parent = QFileInfo(path).path();
            if (parent == path)
                throw folderError(path, QStringLiteral("cannot be made"));
            makePrivateFolder(parent);
            if (::mkdir(native.constData(), S_IRWXU) != 0 && errno != EEXIST)
                throw folderError(path, QStringLiteral("cannot be made"));
        } else if (errno != EEXIST) {
            throw folderError(path, QStringLiteral("cannot be made: ") +
                                        QString::fromLocal8Bit(std::strerror(errno)));
        }
    }
    struct stat info = {};
    if (::stat(native.constData(), &info) != 0 || !S_ISDIR(info.st_mode))
        throw folderError(path, QStringLiteral("is not a folder"));
    if (info.st_uid != ::geteuid())
        throw folderError(path, QStringLiteral("belongs to another user"));
    if ((info.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        throw folderError(path, QStringLiteral("can be written by other users"));
}

bool writePrivateFile(const QString& path, const QByteArray& bytes)
{
    const QByteArray native = QFile::encodeName(path);
    ::unlink(native.constData());
    const int descriptor =
        ::open(native.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0)
        return false;
    const bool written =
        ::write(descriptor, bytes.constData(), static_cast<size_t>(bytes.size())) ==
        static_cast<ssize_t>(bytes.size());
    return ::close(descriptor) == 0 && written;
}

bool syncToDisk(const QFileDevice& file)
{
    // Some file systems know no such thing.
    return ::fsync(file.handle()) == 0 || errno == EINVAL;
}

bool isSocketFile(const QString& path)
{
    struct stat info = {};
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0 && S_ISSOCK(info.st_mode);
}

class TerminationWatcher::Private
{
public:
    int ends[2] = {-1, -1};
    struct sigaction earlier[sizeof kSignals / sizeof *kSignals] = {};
};

TerminationWatcher::TerminationWatcher(QObject* parent)
    : QObject(parent)
    , d(new Private)
{
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, d->ends) != 0)
        throw std::runtime_error("The system gives no socket pair for signals");
    g_signalWriteEnd = d->ends[0];
    auto* notifier = new QSocketNotifier(d->ends[1], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        while (::read(d->ends[1], &byte, 1) > 0) {
        }
        emit terminationRequested();
    });
    struct sigaction action = {};
    action.sa_handler = handleSignal;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < std::size(kSignals); ++i)
        ::sigaction(kSignals[i], &action, &d->earlier[i]);
}

TerminationWatcher::~TerminationWatcher()
{
    for (std::size_t i = 0; i < std::size(kSignals); ++i)
        ::sigaction(kSignals[i], &d->earlier[i], nullptr);
    g_signalWriteEnd = -1;
    ::close(d->ends[0]);
    ::close(d->ends[1]);
}

} // namespace trovek::service
