#pragma once

#include "gcode/machine_file_writer.h"
#include "make_request.h"
#include "running_job.h"

#include <QThreadPool>

#include <memory>
#include <optional>

namespace trovek::service {

class BackgroundTask;
class SliceQueue;
class SliceTask;

/**
 * Writes a file instead of printing: a machine file, or G-code with or without start and end code.
 *
 * Models are sliced first.
 *
 * The output is complete when the job has ended, and empty when it failed or was canceled.
 */
class ExportJob : public RunningJob
{
    Q_OBJECT

public:
    /**
     * @param machine not owned; must outlive the job, as `pool` and `slices` must
     * @param output  open for writing and empty
     * @param format  of a machine file; none for G-code
     */
    ExportJob(const MachineDefinition& machine, MakeRequest request, std::unique_ptr<QFile> output,
              std::optional<MachineFileFormat> format, QThreadPool& pool, SliceQueue& slices,
              QObject* parent = nullptr);
    ~ExportJob() override;

    void start() override;
    /** The conclusion comes when the work has stopped. */
    void cancel() override;
    void abort(const QString& reason) override;

private:
    class Work;

    void slice();
    void takeSlice(const QString& error);
    void write();
    void finish(const QString& error);

    const MachineDefinition& m_machine;
    MakeRequest m_request;
    const std::optional<MachineFileFormat> m_format;
    QThreadPool& m_pool;
    SliceQueue& m_slices;
    const std::unique_ptr<Work> m_work;
    bool m_canceled = false;
    std::unique_ptr<SliceTask> m_slicing;
    std::unique_ptr<BackgroundTask> m_task;
};

} // namespace trovek::service
