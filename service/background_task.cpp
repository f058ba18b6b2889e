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

    void setStage(const QString& text) override
    {
        if (text == stage)
            return;
        stage = text;
        QMetaObject::invokeMethod(
            &q, [this, text] { emit q.staged(text); }, Qt::QueuedConnection);
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
        end(error);
        // The task may be destroyed while release() has not returned yet.
        const auto kept = returned;
        kept->release();
    }

    void end(const QString& error)
    {
        QMetaObject::invokeMethod(
            &q, [this, error] { emit q.ended(error); }, Qt::QueuedConnection);
    }

    /** True when it was waiting for a thread, and does no longer. */
    bool takeBack()
    {
        if (!isInPool || !pool.tryTake(this))
            return false;
        isInPool = false;
        return true;
    }

    BackgroundTask& q;
    QThreadPool& pool;
    const Work work;
    std::atomic<bool> canceled{false};
    std::atomic<int> progress{-1};
    /** Of the pool's thread. */
    QString stage;
    const std::shared_ptr<QSemaphore> returned = std::make_shared<QSemaphore>();
    bool isInPool = false;
};

BackgroundTask::BackgroundTask(QThreadPool& pool, Work work, QObject* parent)
    : QObject(parent)
    , d(new Private(*this, pool, std::move(work)))
{}

BackgroundTask::~BackgroundTask()
{
    d->canceled = true;
    d->takeBack();
    if (d->isInPool)
        d->returned->acquire();
}

void BackgroundTask::start(int priority)
{
    d->isInPool = true;
    d->pool.start(d.get(), priority);
}

void BackgroundTask::cancel()
{
    d->canceled = true;
    if (d->takeBack())
        d->end(QString());
}

} // namespace trovek::service
