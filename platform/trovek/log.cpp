#include "trovek/log.h"

#include "trovek/text.h"

#include <QDateTime>

#include <algorithm>
#include <ios>
#include <locale>
#include <streambuf>
#include <utility>

namespace trovek {

namespace {

/** More entries than this are never open at once by honest nesting: the oldest was forgotten. */
constexpr std::size_t kMaxOpenEntries = 16;

/** True while this thread hands entries to the sinks; the delivery mutex is then its own. */
thread_local bool t_delivering = false;
/** What sinks of this thread logged meanwhile. */
thread_local std::vector<LogEntry>* t_loggedBySinks = nullptr;

class Registry
{
public:
    /** Never destroyed, since static objects may log while the process ends. */
    static Registry& instance()
    {
        static auto* const registry = new Registry;
        return *registry;
    }

    void add(std::shared_ptr<LogSink> sink)
    {
        const auto lock = lockUnlessDelivering();
        m_sinks.push_back(std::move(sink));
    }

    void remove(const std::shared_ptr<LogSink>& sink)
    {
        const auto lock = lockUnlessDelivering();
        m_sinks.erase(std::remove(m_sinks.begin(), m_sinks.end(), sink), m_sinks.end());
    }

    void deliver(LogEntry entry)
    {
        if (t_delivering) {
            // A sink logs. Its entry waits, and what the entry makes sinks log again is dropped,
            // since that would go on for ever.
            if (t_loggedBySinks)
                t_loggedBySinks->push_back(std::move(entry));
            return;
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<LogEntry> loggedBySinks;
        t_delivering = true;
        t_loggedBySinks = &loggedBySinks;
        writeToAll(entry);
        t_loggedBySinks = nullptr;
        for (const LogEntry& late : loggedBySinks)
            writeToAll(late);
        t_delivering = false;
    }

private:
    std::unique_lock<std::mutex> lockUnlessDelivering()
    {
        return t_delivering ? std::unique_lock<std::mutex>()
                            : std::unique_lock<std::mutex>(m_mutex);
    }

    void writeToAll(const LogEntry& entry)
    {
        const std::vector<std::shared_ptr<LogSink>> sinks = m_sinks;
        for (const std::shared_ptr<LogSink>& sink : sinks) {
            try {
                sink->write(entry);
            } catch (...) {
                // There is nowhere left to say it, and the other sinks still want the entry.
            }
        }
    }

    std::mutex m_mutex;
    std::vector<std::shared_ptr<LogSink>> m_sinks;
};

class ThreadLog;

/** The text of one entry. The flush of std::endl, which follows its line break, ends the entry. */
class EntryBuffer : public std::streambuf
{
public:
    explicit EntryBuffer(ThreadLog& thread)
        : m_thread(thread)
    {}

    void begin(const Log::Metadata& metadata)
    {
        m_entry = {metadata.severity, metadata.file, metadata.function,
                   metadata.line,     metadata.time, std::string()};
    }

    LogEntry take()
    {
        LogEntry entry = std::move(m_entry);
        m_entry = LogEntry();
        if (endsWithLineBreak(entry.message))
            entry.message.pop_back();
        return entry;
    }

private:
    static bool endsWithLineBreak(const std::string& text)
    {
        return !text.empty() && text.back() == '\n';
    }

    int_type overflow(int_type character) override
    {
        if (!traits_type::eq_int_type(character, traits_type::eof()))
            m_entry.message.push_back(traits_type::to_char_type(character));
        return traits_type::not_eof(character);
    }

    std::streamsize xsputn(const char* text, std::streamsize size) override
    {
        m_entry.message.append(text, static_cast<std::size_t>(size));
        return size;
    }

    int sync() override;

    ThreadLog& m_thread;
    LogEntry m_entry;
};

class EntryStream : public std::ostream
{
public:
    explicit EntryStream(ThreadLog& thread)
        : std::ostream(nullptr)
        , buffer(thread)
    {
        rdbuf(&buffer);
    }

    /** The one before may have left its number format and error state. */
    void begin(const Log::Metadata& metadata)
    {
        buffer.begin(metadata);
        copyfmt(std::ios(nullptr));
        imbue(std::locale::classic());
        clear();
    }

    EntryBuffer buffer;
};

/**
 * The entries that one thread has open, outermost first.
 *
 * A call that logs while its result is being streamed into an entry, and one that comes after an
 * entry that nobody ended, look alike: both open one more on top.
 */
class ThreadLog
{
public:
    ~ThreadLog() { endFrom(m_open.begin()); }

    std::ostream& begin(const Log::Metadata& metadata)
    {
        if (m_open.size() == kMaxOpenEntries)
            endForgotten();
        if (m_idle.empty())
            m_idle.push_back(std::make_unique<EntryStream>(*this));
        m_open.push_back(std::move(m_idle.back()));
        m_idle.pop_back();
        m_open.back()->begin(metadata);
        return *m_open.back();
    }

    void end(const EntryBuffer* buffer)
    {
        const auto it = std::find_if(m_open.begin(), m_open.end(), [buffer](const auto& open) {
            return &open->buffer == buffer;
        });
        if (it == m_open.end())
            return;
        // What was opened inside and not ended comes before the entry around it, as it happened.
        endFrom(it);
    }

private:
    using Streams = std::vector<std::unique_ptr<EntryStream>>;

    void endFrom(Streams::iterator first)
    {
        std::vector<LogEntry> entries;
        for (auto it = first; it != m_open.end(); ++it) {
            entries.push_back((*it)->buffer.take());
            m_idle.push_back(std::move(*it));
        }
        m_open.erase(first, m_open.end());
        for (auto it = entries.rbegin(); it != entries.rend(); ++it)
            Registry::instance().deliver(std::move(*it));
    }

    void endForgotten()
    {
        LogEntry entry = m_open.front()->buffer.take();
        m_idle.push_back(std::move(m_open.front()));
        m_open.erase(m_open.begin());
        Registry::instance().deliver(std::move(entry));
    }

    Streams m_open;
    Streams m_idle;
};

int EntryBuffer::sync()
{
    if (endsWithLineBreak(m_entry.message))
        m_thread.end(this);
    return 0;
}

/** Null before the thread's first entry and after its end. */
thread_local ThreadLog* t_threadLog = nullptr;
thread_local bool t_threadEnded = false;

struct ThreadLogOwner
{
    ThreadLog log;
    ThreadLogOwner() { t_threadLog = &log; }
    ~ThreadLogOwner()
    {
        t_threadLog = nullptr;
        t_threadEnded = true;
    }
};

QString severityText(int severity)
{
    switch (severity) {
    case Log::Error:
        return QStringLiteral("error");
    case Log::Info:
        return QStringLiteral("info");
    case Log::Detail:
        return QStringLiteral("detail");
    default:
        return QString::number(severity);
    }
}

/** One line: line breaks and whatever else steers a terminal become visible. */
QString escaped(const std::string& text)
{
    QString result;
    for (const QChar c : toQString(text)) {
        const bool separatesLines =
            c.category() == QChar::Separator_Line || c.category() == QChar::Separator_Paragraph;
        if (c == QLatin1Char('\n'))
            result += QLatin1String("\\n");
        else if (c == QLatin1Char('\r'))
            result += QLatin1String("\\r");
        else if (c == QLatin1Char('\t'))
            result += QLatin1String("\\t");
        else if (separatesLines || c.category() == QChar::Other_Control)
            result += QStringLiteral("\\u%1").arg(int(c.unicode()), 4, 16, QLatin1Char('0'));
        else
            result += c;
    }
    return result;
}

} // namespace

Log::Metadata::Metadata(Severity entrySeverity, std::string sourceUnit, std::string caller,
                        std::uint64_t sourceLine, std::int64_t secondsSince1970)
    : severity(entrySeverity)
    , file(std::move(sourceUnit))
    , function(std::move(caller))
    , line(sourceLine)
    , time(secondsSince1970)
{}

std::ostream& Log::appendToGlobalLog(const Metadata& metadata)
{
    if (t_threadEnded) {
        // A static object logs after its thread's stream has gone; there is no stream to give.
        static auto* const nowhere = new std::ostream(nullptr);
        return *nowhere;
    }
    if (!t_threadLog)
        static thread_local ThreadLogOwner owner;
    return t_threadLog->begin(metadata);
}

LogSink::~LogSink() = default;

void addLogSink(std::shared_ptr<LogSink> sink)
{
    if (sink)
        Registry::instance().add(std::move(sink));
}

void removeLogSink(const std::shared_ptr<LogSink>& sink)
{
    Registry::instance().remove(sink);
}

std::string formatLogEntry(const LogEntry& entry)
{
    const QString time = QDateTime::fromSecsSinceEpoch(entry.time, Qt::UTC).toString(Qt::ISODate);
    const QString place =
        escaped(entry.file) + QLatin1Char(':') + QString::number(qulonglong(entry.line));
    return toStdString(time + QLatin1Char(' ') + severityText(entry.severity) + QLatin1Char(' ') +
                       place + QLatin1String(" [") + escaped(entry.function) + QLatin1String("] ") +
                       escaped(entry.message));
}

void CapturingLogSink::write(const LogEntry& entry)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.push_back(entry);
}

std::vector<LogEntry> CapturingLogSink::entries() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_entries;
}

std::vector<std::string> CapturingLogSink::messages(int severity) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> messages;
    for (const LogEntry& entry : m_entries) {
        if (severity < 0 || entry.severity == severity)
            messages.push_back(entry.message);
    }
    return messages;
}

void CapturingLogSink::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
}

std::int64_t internal::logTime()
{
    return QDateTime::currentSecsSinceEpoch();
}

} // namespace trovek
