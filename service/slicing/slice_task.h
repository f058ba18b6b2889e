#pragma once

#include "background_task.h"
#include "gcode/start_end_code.h"
#include "make_request.h"

#include <QObject>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace trovek::service {

struct MachineDefinition;
class SliceQueue;

/**
 * Turns one model into G-code: reads the request's files at once, waits for its turn, slices.
 *
 * From then on it works on copies of its own, so the user may change the files. Everything lies in
 * a folder that goes with the task. Its signals come from the event loop.
 */
class SliceTask : public QObject
{
    Q_OBJECT

public:
    enum Urgency {
        /** Gives way to everything, and runs at a low priority. */
        Preview,
        Wanted,
    };

    /**
     * @param queue   not owned; must outlive the task, as machine and pool must
     * @param request with its input open
     * @param pool    for reading the files
     */
    SliceTask(SliceQueue& queue, const MachineDefinition& machine, const MakeRequest& request,
              Urgency urgency, QThreadPool& pool, QObject* parent = nullptr);
    /** Ends it; waits until nothing of it runs. */
    ~SliceTask() override;

    /** Once. */
    void start();
    /** ended() still comes; at once when it waits for its turn. */
    void cancel();

    bool hasEnded() const { return m_ended; }
    /**
     * The request with G-code as input and with the code around it; after ended() without an error.
     * The file lies in the task's folder.
     */
    MakeRequest result() const;

signals:
    /** 0 to 100, never falling. */
    void progressed(int percent);
    void staged(const QString& stage);
    /** Once. @param error for a user; empty when it has been sliced, or was canceled */
    void ended(const QString& error);

private:
    class Work;

    void follow(BackgroundTask& task);
    void slice();
    void end(const QString& error);

    SliceQueue& m_queue;
    const Urgency m_urgency;
    bool m_canceled = false;
    bool m_ended = false;
    const std::unique_ptr<Work> m_work;
    // These use the work.
    std::unique_ptr<BackgroundTask> m_reading;
    std::unique_ptr<BackgroundTask> m_slicing;
};

} // namespace trovek::service
