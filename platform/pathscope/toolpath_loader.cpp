#include "pathscope/toolpath_loader.h"

#include "pathscope/gcode_parser.h"
#include "pathscope/printed_bounds.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QDir>
#include <QFileInfo>
#include <QPointer>

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace pathscope {

namespace {

constexpr char kLogUnit[] = "platform\\pathscope\\toolpath_loader";

enum class Outcome { Running, Finished, Failed, OutOfMemory };

/** What the reading thread has to tell that was not delivered yet. */
struct News
{
    /** Below 0 for nothing new. */
    double progress = -1;
    std::shared_ptr<const Toolpaths> piece;
    std::shared_ptr<const Toolpaths> result;
    Outcome outcome = Outcome::Running;
    std::string reason;
};

/** Looks at all moves here, where nobody waits for an answer to a key. */
std::shared_ptr<const Toolpaths> withObjectBounds(std::shared_ptr<const Toolpaths> read)
{
    if (!read->complete)
        return read;
    auto paths = std::make_shared<Toolpaths>(*read);
    paths->objectBounds = printedBounds(*read, partOfTheObject());
    return paths;
}

/** One reading of one file, shared by both threads. */
class Reading
{
public:
    void cancel() { m_canceled = true; }
    const std::atomic<bool>* canceled() const { return &m_canceled; }

    /** True when whoever delivers has to be called: it is not on its way already. */
    template <typename Change>
    bool add(Change change)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        change(m_news);
        return !std::exchange(m_isAnnounced, true);
    }

    News take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isAnnounced = false;
        return std::exchange(m_news, News());
    }

private:
    std::atomic<bool> m_canceled{false};
    std::mutex m_mutex;
    News m_news;
    bool m_isAnnounced = false;
};

} // namespace

class ToolpathLoader::Private
{
public:
    Private(ToolpathLoader* owner, Parse parser)
        : loader(owner)
        , parse(std::move(parser))
    {}

    void start()
    {
        reading = std::make_shared<Reading>();
        try {
            thread = std::thread([this, current = reading, path = trovek::toStdString(file)] {
                read(current, path);
            });
        } catch (const std::system_error&) {
            tell(reading, [](News& news) { news.outcome = Outcome::OutOfMemory; });
        }
    }

    void stop()
    {
        if (reading != nullptr)
            reading->cancel();
        reading.reset();
        if (thread.joinable())
            thread.join();
    }

    void deliver(const std::shared_ptr<Reading>& told);

    ToolpathLoader* const loader;
    const Parse parse;
    QString file;
    /** Null when nothing is read. */
    std::shared_ptr<Reading> reading;
    std::thread thread;

private:
    /** In the reading thread; no exception leaves it. */
    void read(const std::shared_ptr<Reading>& current, const std::string& path)
    {
        try {
            ParseOptions options;
            options.canceled = current->canceled();
            options.progress = [&](double fraction) {
                tell(current, [&](News& news) { news.progress = fraction; });
            };
            options.piece = [&](const std::shared_ptr<const Toolpaths>& piece) {
                tell(current, [&](News& news) { news.piece = piece; });
            };
            const auto result = withObjectBounds(parse(path, options));
            tell(current, [&](News& news) {
                news.result = result;
                news.outcome = Outcome::Finished;
            });
        } catch (const std::bad_alloc&) {
            tell(current, [](News& news) { news.outcome = Outcome::OutOfMemory; });
        } catch (const std::exception& error) {
            tell(current, [&](News& news) {
                news.outcome = Outcome::Failed;
                news.reason = error.what();
            });
        }
    }

    template <typename Change>
    void tell(const std::shared_ptr<Reading>& current, Change change)
    {
        if (current->add(change)) {
            QMetaObject::invokeMethod(
                loader, [this, current] { deliver(current); }, Qt::QueuedConnection);
        }
    }

    QString reasonOf(const News& news) const
    {
        const QString name = QDir::toNativeSeparators(file);
        if (news.outcome == Outcome::OutOfMemory)
            return tr("There is not enough memory to read %1.").arg(name);
        // What the reader says is in English; these are what users meet.
        const QFileInfo info(file);
        if (!info.exists())
            return tr("The file %1 does not exist.").arg(name);
        if (info.isDir())
            return tr("%1 is a folder.").arg(name);
        if (!info.isFile())
            return tr("%1 is not a file.").arg(name);
        if (!info.isReadable())
            return tr("The file %1 may not be read.").arg(name);
        TROVEK_LOG(1) << news.reason << std::endl;
        return tr("The file %1 cannot be read.").arg(name);
    }
};

void ToolpathLoader::Private::deliver(const std::shared_ptr<Reading>& told)
{
    if (told != reading)
        return;
    const News news = told->take();
    const bool isOver = news.outcome != Outcome::Running;
    ToolpathLoader* const receiver = loader;
    const QPointer<ToolpathLoader> alive(receiver);
    // A receiver may cancel, load another file or destroy the loader at any of the signals.
    const auto goesOn = [&] {
        return alive && reading == told;
    };

    const double progress = news.outcome == Outcome::Finished ? 1 : news.progress;
    if (progress >= 0)
        emit receiver->progressChanged(progress);
    if (news.piece != nullptr && !isOver && goesOn())
        emit receiver->pieceReady(news.piece);
    if (!isOver || !goesOn())
        return;

    stop();
    if (news.outcome == Outcome::Finished)
        emit receiver->finished(news.result);
    else
        emit receiver->failed(reasonOf(news));
}

ToolpathLoader::ToolpathLoader(QObject* parent)
    : ToolpathLoader(parseGCodeFile, parent)
{}

ToolpathLoader::ToolpathLoader(Parse parse, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>(this, std::move(parse)))
{
    qRegisterMetaType<std::shared_ptr<const Toolpaths>>();
}

ToolpathLoader::~ToolpathLoader()
{
    d->stop();
}

bool ToolpathLoader::isLoading() const
{
    return d->reading != nullptr;
}

QString ToolpathLoader::file() const
{
    return d->file;
}

void ToolpathLoader::load(const QString& file)
{
    d->stop();
    d->file = file;
    d->start();
}

void ToolpathLoader::cancel()
{
    d->stop();
}

} // namespace pathscope
