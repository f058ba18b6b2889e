#pragma once

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <functional>
#include <memory>

namespace trovek::service {

/**
 * Work on a thread of a pool, so that the service's own thread never waits for a file.
 *
 * Its signals come from the event loop of the thread that made the task. Destroying it cancels the
 * work and waits until it has returned, so what the work refers to may belong to the task's owner.
 */
class BackgroundTask : public QObject
{
    Q_OBJECT

public:
    /** What the work sees of its task; used from the pool's thread. */
    class Control
    {
    public:
        virtual ~Control() = default;
        /** The work looks often and returns early. */
        virtual bool isCanceled() const = 0;
        /** 0 to 100. */
        virtual void setProgress(int percent) = 0;
        /** What it does now, for a user. */
        virtual void setStage(const QString& stage) = 0;
    };
    using Work = std::function<void(Control& control)>;

    /** @param pool not owned; must outlive the task */
    BackgroundTask(QThreadPool& pool, Work work, QObject* parent = nullptr);
    ~BackgroundTask() override;

    /**
     * Once.
     * @param priority of those that wait for a thread the highest goes first
     */
    void start(int priority = 0);
    /**
     * ended() still comes, when the work has returned; at once for work that has not begun, which
     * never does then.
     */
    void cancel();

signals:
    /** Only when it is another one than before; so is the stage. */
    void progressed(int percent);
    void staged(const QString& stage);
    /** @param error what the work threw; empty when it returned */
    void ended(const QString& error);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service
