#include "print_job.h"

#include "background_task.h"
#include "slicing/slice_queue.h"
#include "slicing/slice_task.h"

#include <trovek/log.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <cmath>
#include <exception>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\print_job";

namespace {

/** Of a print that begins with slicing, which takes minutes where the print takes hours. */
constexpr int kSlicedPercent = 10;
/** 100 is for what has ended. */
constexpr int kPrintedPercent = 99;

trovek::Job::Data describeJob(const Machine& machine, const MakeRequest& request)
{
    trovek::Job::Data data;
    data.name = request.name();
    data.kind = wire::method::kPrint;
    data.machine = MachineName(machine.definition().key);
    return data;
}

} // namespace

PrintJob::PrintJob(Machine& machine, MakeRequest request, QThreadPool& pool, SliceQueue& slices,
                   QObject* parent)
    : RunningJob(describeJob(machine, request), parent)
    , m_machine(machine)
    , m_request(std::move(request))
    , m_pool(pool)
    , m_slices(slices)
{}

PrintJob::~PrintJob() = default;

void PrintJob::start()
{
    m_lease = std::make_unique<Machine::Lease>(m_machine, *this);
    if (m_request.isModel())
        slice();
    else
        plan();
}

void PrintJob::slice()
{
    m_slicing = std::make_unique<SliceTask>(m_slices, m_machine.definition(), m_request,
                                            SliceTask::Wanted, m_pool);
    connect(m_slicing.get(), &SliceTask::progressed, this,
            [this](int percent) { setProgress(percent * kSlicedPercent / 100); });
    connect(m_slicing.get(), &SliceTask::staged, this, &PrintJob::setStage);
    connect(m_slicing.get(), &SliceTask::ended, this, &PrintJob::takeSlice);
    m_slicing->start();
}

void PrintJob::takeSlice(const QString& slicingError)
{
    if (!slicingError.isEmpty()) {
        end(JobFailed, slicingError);
        return;
    }
    m_request = m_slicing->result();
    setProgress(kSlicedPercent);
    plan();
}

void PrintJob::plan()
{
    setStage(QStringLiteral("Reading the file"));
    m_planning = std::make_unique<BackgroundTask>(m_pool, [this](BackgroundTask::Control& control) {
        const auto goOn = [&control](std::uint64_t) {
            return !control.isCanceled();
        };
        const MachineDefinition& definition = m_machine.definition();
        m_result = planPrint(definition, sectionsOf(definition, m_request), goOn);
    });
    connect(m_planning.get(), &BackgroundTask::ended, this, &PrintJob::takePlan);
    m_planning->start();
}

void PrintJob::takePlan(const QString& planningError)
{
    if (isConcluded())
        return;
    if (!planningError.isEmpty()) {
        end(JobFailed, planningError);
        return;
    }
    const std::string remarks = m_result.remarks.toString();
    if (!remarks.empty())
        TROVEK_LOG(1) << "Job " << data().id << ": " << remarks << std::endl;
    m_plan = std::make_shared<const MotionPlan>(std::move(m_result.motion));
    // A print takes hours; the files are of no use any more.
    m_request.input.reset();
    m_slicing.reset();

    if (m_machine.driver().status().state == Printer::Connecting) {
        setStage(QStringLiteral("Connecting"));
        connect(&m_machine.driver(), &MachineDriver::opened, this, &PrintJob::print);
        return;
    }
    print();
}

void PrintJob::print()
{
    MachineDriver& driver = m_machine.driver();
    disconnect(&driver, nullptr, this, nullptr);
    connect(&driver, &MachineDriver::changed, this, &PrintJob::update);
    connect(&driver, &MachineDriver::finished, this, [this] { end(JobEnded); });
    connect(&driver, &MachineDriver::failed, this,
            [this](const QString& reason) { end(JobFailed, reason); });
    try {
        driver.run(m_plan);
        update();
    } catch (const std::exception& error) {
        end(JobFailed, QString::fromUtf8(error.what()));
    }
}

void PrintJob::update()
{
    if (isConcluded())
        return;
    const MachineDriver::Status status = m_machine.driver().status();
    setStage(status.heating ? QStringLiteral("Heating") : QStringLiteral("Printing"));
    const double share = m_plan->seconds > 0 ? status.doneSeconds / m_plan->seconds : 0;
    const int before = m_request.isModel() ? kSlicedPercent : 0;
    setProgress(std::min(kPrintedPercent, before + static_cast<int>(share * (100 - before))));
    const double left = m_plan->seconds - status.doneSeconds + status.waitSeconds;
    setSecondsLeft(static_cast<int>(std::ceil(std::min(std::max(left, 0.0), 1e9))));
}

void PrintJob::cancel()
{
    end(JobCanceled);
}

void PrintJob::abort(const QString& reason)
{
    end(JobFailed, reason);
}

void PrintJob::end(JobConclusion conclusion, const QString& failure)
{
    if (isConcluded())
        return;
    MachineDriver& driver = m_machine.driver();
    disconnect(&driver, nullptr, this, nullptr);
    if (m_planning)
        m_planning->cancel();
    else if (m_slicing)
        m_slices.discard(std::move(m_slicing));
    driver.stop();
    for (int tool = 0; tool < m_machine.definition().extruders; ++tool)
        driver.setToolTarget(tool, 0);
    driver.setPlatformTarget(0);
    m_lease.reset();
    conclude(conclusion, failure);
}

} // namespace trovek::service
