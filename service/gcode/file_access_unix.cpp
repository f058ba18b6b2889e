#include "file_access.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trovek::service {

namespace {

[[noreturn]] void fail(const std::string& doing, const std::string& path, const std::string& reason)
{
    throw std::runtime_error("Cannot " + doing + " " + path + ": " + reason);
}

std::string systemReason()
{
    // What O_NOFOLLOW answers for a link.
    return errno == ELOOP ? "it is a link" : std::strerror(errno);
}

class Descriptor
{
public:
    explicit Descriptor(int descriptor)
        : m_descriptor(descriptor)
    {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    bool isValid() const { return m_descriptor >= 0; }
    int get() const { return m_descriptor; }
    int release()
    {
        const int descriptor = m_descriptor;
        m_descriptor = -1;
        return descriptor;
    }

private:
    int m_descriptor;
};

void checkPath(const std::string& doing, const std::string& path)
{
    if (path.empty() || path.front() != '/')
        fail(doing, "\"" + path + "\"", "its path is not absolute");
    if (path.find('\0') != std::string::npos)
        fail(doing, "a file", "its path holds a zero byte");
}

struct stat checkRegular(const std::string& doing, const std::string& path,
                         const Descriptor& descriptor)
{
    if (!descriptor.isValid())
        fail(doing, path, systemReason());
    struct stat status;
    if (::fstat(descriptor.get(), &status) != 0)
        fail(doing, path, systemReason());
    if (!S_ISREG(status.st_mode))
        fail(doing, path, "it is not a regular file");
    return status;
}

std::unique_ptr<QFile> handOver(const std::string& doing, const std::string& path,
                                Descriptor& descriptor, QIODevice::OpenMode mode)
{
    auto file = std::make_unique<QFile>();
    if (!file->open(descriptor.get(), mode, QFileDevice::AutoCloseHandle))
        fail(doing, path, "it cannot be used");
    descriptor.release();
    return file;
}

} // namespace

std::unique_ptr<QFile> openInput(const std::string& path)
{
    const std::string doing = "read";
    checkPath(doing, path);
    // Without O_NONBLOCK opening a pipe would wait for a writer.
    Descriptor descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    checkRegular(doing, path, descriptor);
    return handOver(doing, path, descriptor, QIODevice::ReadOnly);
}

std::unique_ptr<QFile> openOutput(const std::string& path)
{
    const std::string doing = "write to";
    checkPath(doing, path);
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == 0 ? "/" : path.substr(0, slash);
    const std::string name = path.substr(slash + 1);
    // The folder is held while its file is opened, so that nobody swaps it for a link in between.
    const Descriptor parent(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!parent.isValid()) {
        fail(doing, path,
             errno == ELOOP || errno == ENOTDIR ? "its folder is none, or is a link"
                                                : systemReason());
    }
    Descriptor descriptor(::openat(parent.get(), name.c_str(),
                                   O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    const struct stat status = checkRegular(doing, path, descriptor);
    if (status.st_uid != ::geteuid())
        fail(doing, path, "it belongs to another user");
    if (status.st_nlink != 1)
        fail(doing, path, "it has more than one name");
    if (::ftruncate(descriptor.get(), 0) != 0)
        fail(doing, path, systemReason());
    return handOver(doing, path, descriptor, QIODevice::WriteOnly);
}

} // namespace trovek::service
