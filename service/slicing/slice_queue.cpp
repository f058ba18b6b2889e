#include "slicing/slice_queue.h"

#include "slicing/slice_task.h"
#include "slicing/slicer_engine.h"
#include "system.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>

namespace trovek::service {

SliceQueue::SliceQueue(std::unique_ptr<const SlicerEngine> engine, const QString& folder,
                       int atOnce)
    : m_engine(std::move(engine))
    , m_folder(folder)
{
    if (!QFileInfo(folder).isDir() || QFileInfo(folder).isSymLink())
        QFile::remove(folder);
    QDir(folder).removeRecursively();
    makePrivateFolder(folder);
    m_pool.setMaxThreadCount(atOnce > 0 ? atOnce : std::max(1, QThread::idealThreadCount()));
}

SliceQueue::~SliceQueue() = default;

void SliceQueue::discard(std::unique_ptr<SliceTask> task)
{
    SliceTask* const discarded = task.get();
    m_discarded.push_back(std::move(task));
    discarded->disconnect();
    // Later in any case: who discards a task may stand in one of its signals.
    const auto goes = [this, discarded] {
        remove(discarded);
    };
    if (discarded->hasEnded())
        QMetaObject::invokeMethod(&m_context, goes, Qt::QueuedConnection);
    else
        QObject::connect(discarded, &SliceTask::ended, &m_context, goes, Qt::QueuedConnection);
    discarded->cancel();
}

void SliceQueue::remove(const SliceTask* task)
{
    m_discarded.erase(std::remove_if(m_discarded.begin(), m_discarded.end(),
                                     [&](const auto& kept) { return kept.get() == task; }),
                      m_discarded.end());
}

} // namespace trovek::service
