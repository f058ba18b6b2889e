#pragma once

#include <QObject>
#include <QString>
#include <QThreadPool>

#include <memory>
#include <vector>

namespace trovek::service {

class SliceTask;
class SlicerEngine;

/**
 * Where models are sliced: by which engine, how many at a time, and in which folder.
 *
 * What waits stands in the pool: prints and exports before previews, each in their order.
 */
class SliceQueue
{
public:
    /**
     * @param folder of the queue alone; what a killed service left in it is removed
     * @param atOnce 0 for one a processor
     * @throws std::runtime_error for a user when there cannot be such a folder
     */
    SliceQueue(std::unique_ptr<const SlicerEngine> engine, const QString& folder, int atOnce = 0);
    /** Ends what still runs. */
    ~SliceQueue();
    SliceQueue(const SliceQueue&) = delete;
    SliceQueue& operator=(const SliceQueue&) = delete;

    const SlicerEngine& engine() const { return *m_engine; }
    const QString& folder() const { return m_folder; }
    QThreadPool& pool() { return m_pool; }
    /** Whoever comes now has to wait. */
    bool isBusy() const { return m_pool.activeThreadCount() >= m_pool.maxThreadCount(); }

    /** Cancels a task whose result nobody wants any more; it goes when it has stopped. */
    void discard(std::unique_ptr<SliceTask> task);

private:
    void remove(const SliceTask* task);

    const std::unique_ptr<const SlicerEngine> m_engine;
    const QString m_folder;
    QThreadPool m_pool;
    std::vector<std::unique_ptr<SliceTask>> m_discarded;
    /** What is posted for the queue goes with it. */
    QObject m_context;
};

} // namespace trovek::service
