#pragma once

#include <QtGlobal>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>

namespace trovek {

/** No file grows beyond so many bytes for a while, as on a disk that is nearly full. */
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
        : m_earlierHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_earlier);
        rlimit limit = m_earlier;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_earlier);
        std::signal(SIGXFSZ, m_earlierHandler);
    }

private:
    void (*m_earlierHandler)(int);
    rlimit m_earlier;
};

} // namespace trovek
#endif
