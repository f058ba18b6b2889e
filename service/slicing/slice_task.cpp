#include "slicing/slice_task.h"

#include "gcode/machine_definition.h"
#include "slicing/model_file.h"
#include "slicing/slice_code.h"
#include "slicing/slice_profile.h"
#include "slicing/slice_queue.h"
#include "slicing/slice_settings.h"
#include "slicing/sliced_file.h"
#include "slicing/slicer_engine.h"

#include <trovek/log.h>
#include <trovek/text.h>

#include <QFile>

#include <optional>
#include <stdexcept>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\slicing\\slice_task";

namespace {

/** What an engine sees of a task. */
class EngineControl : public SlicerEngine::Control
{
public:
    explicit EngineControl(BackgroundTask::Control& control)
        : m_control(control)
    {}
    bool isCanceled() const override { return m_control.isCanceled(); }
    void setProgress(int percent, const QString& stage) override
    {
        m_control.setProgress(percent);
        m_control.setStage(stage);
    }

private:
    BackgroundTask::Control& m_control;
};

} // namespace

/** What happens on the pools' threads, one after the other. */
class SliceTask::Work
{
public:
    Work(const SlicerEngine& engine, const MachineDefinition& machine, const MakeRequest& request,
         const QString& folder, bool lowPriority)
        : m_engine(engine)
        , m_machine(machine)
        , m_request(request)
        , m_folder(folder + QStringLiteral("/XXXXXX"))
        , m_lowPriority(lowPriority)
    {}

    void read(BackgroundTask::Control& control)
    {
        if (!m_folder.isValid())
            throw std::runtime_error("Cannot make a folder for slicing: " +
                                     toStdString(m_folder.errorString()));
        control.setStage(QStringLiteral("Reading the model"));
        const std::string profilePath = m_request.configuration.profilePath();
        if (!profilePath.empty())
            m_profile = loadSliceProfile(profilePath);
        m_settings = sliceSettings(m_machine, m_request, m_profile ? &m_profile->config : nullptr);
        // Mistakes in a profile's code are told before minutes of slicing.
        if (m_request.addStartEndCode)
            code({mayUseTool(m_settings, 0), mayUseTool(m_settings, 1)});
        // Whoever names one extruder means all parts.
        const PartTools tools = m_settings.modelTool < 0 ? PartTools::Kept : PartTools::Dropped;
        m_modelPath = copyModel(*m_request.input, m_request.inputPath, m_folder.path(), tools,
                                [&control] { return !control.isCanceled(); });
    }

    void slice(BackgroundTask::Control& control)
    {
        control.setStage(QStringLiteral("Slicing"));
        SliceJob job;
        job.machine = &m_machine;
        job.settings = &m_settings;
        job.modelPath = m_modelPath;
        job.outputPath = m_folder.filePath(QStringLiteral("sliced.gcode"));
        job.workFolder = m_folder.path();
        job.lowPriority = m_lowPriority;
        EngineControl engineControl(control);
        m_engine.slice(job, engineControl);
        QFile::remove(m_modelPath);

        const auto sliced = std::make_shared<QFile>(job.outputPath);
        if (!sliced->open(QIODevice::ReadOnly))
            throw std::runtime_error("Cannot read the sliced model: " +
                                     toStdString(sliced->errorString()));
        const SlicedFile file = readSlicedFile(*sliced);
        checkFits(m_machine, file);
        m_request.input = sliced;
        m_request.sectionName = "Sliced model";
        if (m_request.addStartEndCode)
            m_request.code = std::make_shared<const StartEndCode>(code(file.usesTool));
        TROVEK_LOG(1) << "Sliced by " << file.generator << std::endl;
    }

    const MakeRequest& request() const { return m_request; }

private:
    StartEndCode code(const std::array<bool, 2>& usesTool) const
    {
        return sliceCode(m_machine, m_settings, usesTool, m_profile ? &*m_profile : nullptr);
    }

    const SlicerEngine& m_engine;
    const MachineDefinition& m_machine;
    MakeRequest m_request;
    const QTemporaryDir m_folder;
    const bool m_lowPriority;
    std::optional<SliceProfile> m_profile;
    SliceSettings m_settings;
    QString m_modelPath;
};

SliceTask::SliceTask(SliceQueue& queue, const MachineDefinition& machine,
                     const MakeRequest& request, Urgency urgency, QThreadPool& pool,
                     QObject* parent)
    : QObject(parent)
    , m_queue(queue)
    , m_urgency(urgency)
    , m_work(new Work(queue.engine(), machine, request, queue.folder(), urgency == Preview))
    , m_reading(new BackgroundTask(
          pool, [this](BackgroundTask::Control& control) { m_work->read(control); }))
    , m_slicing(new BackgroundTask(
          queue.pool(), [this](BackgroundTask::Control& control) { m_work->slice(control); }))
{}

SliceTask::~SliceTask() = default;

void SliceTask::start()
{
    follow(*m_reading);
    follow(*m_slicing);
    connect(m_reading.get(), &BackgroundTask::ended, this, [this](const QString& error) {
        if (m_canceled || !error.isEmpty())
            end(error);
        else
            slice();
    });
    connect(m_slicing.get(), &BackgroundTask::ended, this, &SliceTask::end);
    m_reading->start();
}

void SliceTask::follow(BackgroundTask& task)
{
    connect(&task, &BackgroundTask::progressed, this, &SliceTask::progressed);
    connect(&task, &BackgroundTask::staged, this, &SliceTask::staged);
}

void SliceTask::slice()
{
    if (m_queue.isBusy())
        emit staged(QStringLiteral("Waiting for other slices"));
    m_slicing->start(m_urgency);
}

void SliceTask::end(const QString& error)
{
    m_ended = true;
    emit ended(m_canceled ? QString() : error);
}

void SliceTask::cancel()
{
    m_canceled = true;
    m_reading->cancel();
    m_slicing->cancel();
}

MakeRequest SliceTask::result() const
{
    return m_work->request();
}

} // namespace trovek::service
