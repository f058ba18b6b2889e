#pragma once

#include "trovek/export.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace trovek {

/**
 * The one log of the whole process.
 *
 * An entry is what is streamed between appendToGlobalLog() and the flush of std::endl; line breaks
 * inside it do not end it, and an entry always comes out as one line. Any thread may log; each has
 * a stream of its own. A log call inside the expression of another (by a function whose result is
 * being streamed) makes an entry of its own and tears nothing.
 */
class TROVEK_EXPORT Log
{
public:
    /** 0 error, 1 progress, 2 the finest detail. */
    enum Severity : int {
        Error = 0,
        Info = 1,
        Detail = 2,
    };

    struct TROVEK_EXPORT Metadata
    {
        /**
         * @param file     the source unit, for example "src\core\job_watch"
         * @param function the calling function's full signature
         * @param time     seconds since 1970
         */
        Metadata(Severity severity, std::string file, std::string function, std::uint64_t line,
                 std::int64_t time);

        Severity severity;
        std::string file;
        std::string function;
        std::uint64_t line;
        std::int64_t time;
    };

    /** The calling thread's stream; end the entry with std::endl. Never throws on its own. */
    static std::ostream& appendToGlobalLog(const Metadata& metadata);
};

/** A finished entry as a sink receives it. */
struct LogEntry
{
    int severity = 0;
    std::string file;
    std::string function;
    std::uint64_t line = 0;
    std::int64_t time = 0;
    /** As streamed, UTF-8, without the final line break. */
    std::string message;
};

/** Receives every entry, from any thread, one at a time. */
class TROVEK_EXPORT LogSink
{
public:
    virtual ~LogSink();
    virtual void write(const LogEntry& entry) = 0;
};

/** Sinks receive entries from addLogSink() until removeLogSink(); the log shares their ownership.
 */
TROVEK_EXPORT void addLogSink(std::shared_ptr<LogSink> sink);
TROVEK_EXPORT void removeLogSink(const std::shared_ptr<LogSink>& sink);

/** The entry as one line: time, severity, unit, line, function, message; line breaks as "\n". */
TROVEK_EXPORT std::string formatLogEntry(const LogEntry& entry);

/**
 * A file that rotates: `path`, then `path` with .1 and so on before the suffix.
 * @param path UTF-8; its folder must exist
 * @throws std::runtime_error when the file cannot be opened
 */
TROVEK_EXPORT std::shared_ptr<LogSink> makeRotatingFileLogSink(const std::string& path,
                                                               std::size_t bytesPerFile = 5 << 20,
                                                               std::size_t files = 3);
/** Standard error, entries up to `maxSeverity` only. */
TROVEK_EXPORT std::shared_ptr<LogSink> makeStandardErrorLogSink(int maxSeverity = Log::Info);

/** Keeps entries in memory; for tests and for log windows. */
class TROVEK_EXPORT CapturingLogSink : public LogSink
{
public:
    void write(const LogEntry& entry) override;
    std::vector<LogEntry> entries() const;
    /** Messages of one severity, in order; of all severities when it is negative. */
    std::vector<std::string> messages(int severity = -1) const;
    void clear();

private:
    mutable std::mutex m_mutex;
    std::vector<LogEntry> m_entries;
};

namespace internal {
TROVEK_EXPORT std::int64_t logTime();
}

} // namespace trovek

/**
 * Starts an entry from this place; stream the message and end with std::endl.
 *
 * The source file says first what unit it is, by
 *     static constexpr char kLogUnit[] = "src\\core\\job_watch";
 */
#if defined(_MSC_VER)
#define TROVEK_FUNCTION_SIGNATURE __FUNCSIG__
#else
#define TROVEK_FUNCTION_SIGNATURE __PRETTY_FUNCTION__
#endif
#define TROVEK_LOG(severity)                                                                       \
    ::trovek::Log::appendToGlobalLog(::trovek::Log::Metadata(                                      \
        static_cast<::trovek::Log::Severity>(severity), kLogUnit, TROVEK_FUNCTION_SIGNATURE,       \
        __LINE__, ::trovek::internal::logTime()))
