#include "trovek/log.h"

#include "trovek/text.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <spdlog/details/log_msg.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <limits>
#include <stdexcept>
#include <utility>

namespace trovek {

namespace {

/** Hands finished lines to a sink of the logging library; the log itself takes care of threads. */
class ForwardingSink : public LogSink
{
public:
    ForwardingSink(std::unique_ptr<spdlog::sinks::sink> target, int maxSeverity)
        : m_target(std::move(target))
        , m_maxSeverity(maxSeverity)
    {
        m_target->set_pattern("%v");
    }

    void write(const LogEntry& entry) override
    {
        if (entry.severity > m_maxSeverity)
            return;
        const auto level = entry.severity <= Log::Error  ? spdlog::level::err
                           : entry.severity == Log::Info ? spdlog::level::info
                                                         : spdlog::level::debug;
        const std::string line = formatLogEntry(entry);
        m_target->log(spdlog::details::log_msg("trovek", level, line));
        m_target->flush();
    }

private:
    const std::unique_ptr<spdlog::sinks::sink> m_target;
    const int m_maxSeverity;
};

/** As the C library of the system takes a path. */
std::string nativePath(const std::string& path)
{
#ifdef Q_OS_WIN
    return QFile::encodeName(toQString(path)).toStdString();
#else
    return path;
#endif
}

} // namespace

std::shared_ptr<LogSink> makeRotatingFileLogSink(const std::string& path, std::size_t bytesPerFile,
                                                 std::size_t files)
{
    if (!QFileInfo(toQString(path)).absoluteDir().exists())
        throw std::runtime_error("No folder for the log file: " + path);
    try {
        auto target = std::make_unique<spdlog::sinks::rotating_file_sink_st>(nativePath(path),
                                                                             bytesPerFile, files);
        return std::make_shared<ForwardingSink>(std::move(target), std::numeric_limits<int>::max());
    } catch (const spdlog::spdlog_ex& e) {
        throw std::runtime_error(e.what());
    }
}

std::shared_ptr<LogSink> makeStandardErrorLogSink(int maxSeverity)
{
    return std::make_shared<ForwardingSink>(std::make_unique<spdlog::sinks::stderr_sink_st>(),
                                            maxSeverity);
}

} // namespace trovek
