#include "background_task.h"

#include <trovek/text.h>

#include <QRunnable>
#include <QSemaphore>

#include <atomic>
#include <exception>

namespace trovek::service {

class BackgroundTask::Private : public QRunnable, public Control
{
public:
    Private(BackgroundTask& owner, QThreadPool& pool_, Work work_)
        : q(owner)
        , pool(pool_)
        , work(std::move(work_))
    {
        setAutoDelete(false);
    }

    bool isCanceled() const override { return canceled; }

    void setProgress(int percent) override
    {
        // A queue of equal percentages would only keep the service's thread busy.
        if (progress.exchange(percent) == percent)
            return;
        QMetaObject::invokeMethod(
            &q, [this, percent] { emit q.progressed(percent); }, Qt::QueuedConnection);
    }

    void run() override
    {
        QString error;
        try {
            if (!canceled)
                work(*this);
        } catch (const std::exception& exception) {
            error = QString::fromUtf8(exception.what());
            if (error.isEmpty())
                error = QStringLiteral("Unknown error");
        }
        QMetaObject::invokeMethod(
            &q, [this, error] { emit q.ended(error); }, Qt::QueuedConnection);
        // The task may be destroyed while release() has not returned yet.
        const auto kept = returned;
        kept->release();
    }

    BackgroundTask& q;
    QThreadPool& pool;
    const Work work;
    std::atomic<bool> canceled{false};
    std::atomic<int> progress{-1};
    const std::shared_ptr<QSemaphore> returned = std::make_shared<QSemaphore>();
    bool started = false;
};

BackgroundTask::BackgroundTask(QThreadPool& pool, Work work, QObject* parent)
    : QObject(parent)
    , d(new Private(*this, pool, std::move(work)))
{}

BackgroundTask::~BackgroundTask()
{
    cancel();
    if (d->started && !d->pool.tryTake(d.get()))
        d->returned->acquire();
}

void BackgroundTask::start()
{
    d->started = true;
    d->pool.start(d.get());
}

void BackgroundTask::cancel()
{
    d->canceled = true;
}

} // namespace trovek::service
