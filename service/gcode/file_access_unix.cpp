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
    Descriptor(Descriptor&& other) noexcept
        : m_descriptor(other.release())
    {}
    Descriptor& operator=(Descriptor&&) = delete;
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

constexpr char kWriting[] = "write to";

Descriptor openFolder(const std::string& path, const std::string& folder)
{
    Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!descriptor.isValid()) {
        fail(kWriting, path,
             errno == ELOOP || errno == ENOTDIR ? "its folder is none, or is a link"
                                                : systemReason());
    }
    return descriptor;
}

void checkOwner(const std::string& path, const Descriptor& descriptor)
{
    struct stat status;
    if (::fstat(descriptor.get(), &status) != 0)
        fail(kWriting, path, systemReason());
    if (status.st_uid != ::geteuid())
        fail(kWriting, path, "it belongs to another user");
}

/** Opens and empties a file of a folder. @param flags O_CREAT to make it, or 0 */
std::unique_ptr<QFile> openIn(const Descriptor& folder, const std::string& path,
                              const std::string& name, int flags)
{
    constexpr mode_t kPrivate = 0600;
    Descriptor descriptor(
        ::openat(folder.get(), name.c_str(),
                 O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | flags, kPrivate));
    const struct stat status = checkRegular(kWriting, path, descriptor);
    checkOwner(path, descriptor);
    if (status.st_nlink != 1)
        fail(kWriting, path, "it has more than one name");
    if (::ftruncate(descriptor.get(), 0) != 0)
        fail(kWriting, path, systemReason());
    return handOver(kWriting, path, descriptor, QIODevice::WriteOnly | QIODevice::Unbuffered);
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
    checkPath(kWriting, path);
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == 0 ? "/" : path.substr(0, slash);
    // The folder is held while its file is opened, so that nobody swaps it for a link in between.
    const Descriptor parent = openFolder(path, folder);
    return openIn(parent, path, path.substr(slash + 1), 0);
}

void checkOutputFolder(const std::string& path)
{
    checkPath(kWriting, path);
    checkOwner(path, openFolder(path, path));
}

std::unique_ptr<QFile> openOutputIn(const std::string& folder, const std::string& name)
{
    checkPath(kWriting, folder);
    const Descriptor parent = openFolder(folder, folder);
    checkOwner(folder, parent);
    return openIn(parent, folder + "/" + name, name, O_CREAT);
}

} // namespace trovek::service
