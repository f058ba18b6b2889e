#include "export_job.h"

#include "background_task.h"
#include "gcode/machine_definition.h"
#include "slicing/slice_queue.h"
#include "slicing/slice_task.h"
#include "write_all.h"

#include <trovek/log.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\export_job";

namespace {

constexpr std::size_t kCopyBytes = 1 << 18;
/** Of an export that begins with slicing. */
constexpr int kSlicedPercent = 90;

trovek::Job::Data describeJob(const MachineDefinition& machine, const MakeRequest& request,
                              bool isMachineFile)
{
    trovek::Job::Data data;
    data.name = request.name();
    data.kind = isMachineFile ? wire::method::kPrintToFile : wire::method::kSlice;
    data.machine = MachineName(machine.key);
    return data;
}

} // namespace

/** What happens on the pool's thread; the job touches it only before and after. */
class ExportJob::Work
{
public:
    Work(const MachineDefinition& machine, const MakeRequest& request,
         std::unique_ptr<QFile> output, std::optional<MachineFileFormat> format)
        : m_machine(machine)
        , m_request(request)
        , m_output(std::move(output))
        , m_format(format)
    {}

    void run(BackgroundTask::Control& control)
    {
        try {
            if (m_format)
                writeMachineCode(control);
            else
                writeGCode(control);
            if (!m_output->flush())
                throw WriteError(*m_output);
        } catch (const WriteError& error) {
            throw std::runtime_error(std::string("Cannot write the output: ") + error.what());
        }
    }

    void emptyOutput() { m_output->resize(0); }
    const std::string& remarks() const { return m_remarks; }

private:
    void writeMachineCode(BackgroundTask::Control& control)
    {
        const auto open = [this] {
            return sectionsOf(m_machine, m_request);
        };
        const auto sink = [this](const char* bytes, std::size_t size) {
            write(bytes, size);
        };
        const auto progress = [this, &control](std::uint64_t bytesRead) {
            tell(control, bytesRead / 2);
            return !control.isCanceled();
        };
        const MachineFileResult result =
            writeMachineFile(m_machine, *m_format, m_request.name(), open, sink, progress);
        m_remarks = result.estimate.remarks.toString();
    }

    void writeGCode(BackgroundTask::Control& control)
    {
        std::vector<char> buffer(kCopyBytes);
        std::uint64_t bytesRead = 0;
        for (const GCodeSection& section : sectionsOf(m_machine, m_request)) {
            // A file may end without a line break, and code after it must begin a line.
            if (m_lastByte != '\n')
                write("\n", 1);
            while (const std::size_t size = section.source(buffer.data(), buffer.size())) {
                if (control.isCanceled())
                    throw GCodeCanceled();
                write(buffer.data(), size);
                bytesRead += size;
                tell(control, bytesRead);
            }
        }
    }

    void write(const char* bytes, std::size_t size)
    {
        if (size == 0)
            return;
        writeAll(*m_output, bytes, static_cast<qint64>(size));
        m_lastByte = bytes[size - 1];
    }

    void tell(BackgroundTask::Control& control, std::uint64_t bytes) const
    {
        const auto all = static_cast<std::uint64_t>(std::max<qint64>(1, m_request.input->size()));
        control.setProgress(static_cast<int>(std::min<std::uint64_t>(99, bytes * 100 / all)));
    }

    const MachineDefinition& m_machine;
    /** The job's. */
    const MakeRequest& m_request;
    const std::unique_ptr<QFile> m_output;
    const std::optional<MachineFileFormat> m_format;
    char m_lastByte = '\n';
    std::string m_remarks;
};

ExportJob::ExportJob(const MachineDefinition& machine, MakeRequest request,
                     std::unique_ptr<QFile> output, std::optional<MachineFileFormat> format,
                     QThreadPool& pool, SliceQueue& slices, QObject* parent)
    : RunningJob(describeJob(machine, request, format.has_value()), parent)
    , m_machine(machine)
    , m_request(std::move(request))
    , m_format(format)
    , m_pool(pool)
    , m_slices(slices)
    , m_work(new Work(machine, m_request, std::move(output), format))
{}

ExportJob::~ExportJob() = default;

void ExportJob::start()
{
    if (m_request.isModel())
        slice();
    else
        write();
}

void ExportJob::slice()
{
    // What is only looked at first must not slow down what is waited for.
    const auto urgency = m_format ? SliceTask::Wanted : SliceTask::Preview;
    m_slicing = std::make_unique<SliceTask>(m_slices, m_machine, m_request, urgency, m_pool);
    connect(m_slicing.get(), &SliceTask::progressed, this,
            [this](int percent) { setProgress(percent * kSlicedPercent / 100); });
    connect(m_slicing.get(), &SliceTask::staged, this, &ExportJob::setStage);
    connect(m_slicing.get(), &SliceTask::ended, this, &ExportJob::takeSlice);
    m_slicing->start();
}

void ExportJob::takeSlice(const QString& error)
{
    if (m_canceled || !error.isEmpty()) {
        finish(error);
        return;
    }
    m_request = m_slicing->result();
    setProgress(kSlicedPercent);
    write();
}

void ExportJob::write()
{
    setStage(QStringLiteral("Writing the file"));
    m_task = std::make_unique<BackgroundTask>(
        m_pool, [this](BackgroundTask::Control& control) { m_work->run(control); });
    const int before = m_slicing ? kSlicedPercent : 0;
    connect(m_task.get(), &BackgroundTask::progressed, this,
            [this, before](int percent) { setProgress(before + percent * (100 - before) / 100); });
    connect(m_task.get(), &BackgroundTask::ended, this, &ExportJob::finish);
    m_task->start();
}

void ExportJob::cancel()
{
    if (isConcluded())
        return;
    m_canceled = true;
    setStage(QStringLiteral("Canceling"));
    if (m_task)
        m_task->cancel();
    else
        m_slicing->cancel();
}

void ExportJob::abort(const QString& reason)
{
    if (isConcluded())
        return;
    m_task.reset();
    if (m_slicing)
        m_slices.discard(std::move(m_slicing));
    m_work->emptyOutput();
    conclude(JobFailed, reason);
}

void ExportJob::finish(const QString& error)
{
    if (isConcluded())
        return;
    if (m_canceled || !error.isEmpty())
        m_work->emptyOutput();
    if (m_canceled) {
        conclude(JobCanceled);
    } else if (!error.isEmpty()) {
        conclude(JobFailed, error);
    } else {
        if (!m_work->remarks().empty())
            TROVEK_LOG(1) << "Job " << data().id << ": " << m_work->remarks() << std::endl;
        conclude(JobEnded);
    }
}

} // namespace trovek::service
