#include "job_methods.h"

#include "export_job.h"
#include "gcode/file_access.h"
#include "job_list.h"
#include "machine.h"
#include "machine_list.h"
#include "method_table.h"
#include "motion_job.h"
#include "print_job.h"

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QFileInfo>

#include <limits>

namespace trovek::service {

namespace {

JsonRpcException invalidArgument(const std::string& text)
{
    return wire::makeError(wire::error::kInvalidArgument, text);
}

template <typename Open>
auto openFile(Open open, const std::string& path)
{
    try {
        return open(path);
    } catch (const std::exception& error) {
        throw wire::makeError(wire::error::kFileAccess, error.what());
    }
}

/** Opening the output empties it, so it must be another file by whatever name. */
bool isSameFile(const std::string& left, const std::string& right)
{
    const QString path = QFileInfo(toQString(left)).canonicalFilePath();
    return !path.isEmpty() && path == QFileInfo(toQString(right)).canonicalFilePath();
}

Json::Value idOf(int job)
{
    Json::Value result(Json::objectValue);
    result["id"] = job;
    return result;
}

/** A machine without a job that answers; everything but a print calls a busy one by its state. */
Machine& idleMachine(const MachineList& machines, const Params& params)
{
    Machine& machine = machines.openMachine(params.string("machine"));
    if (machine.job() != nullptr) {
        throw wire::makeError(wire::error::kMachineState,
                              "The machine is busy: " + machine.job()->data().name);
    }
    if (machine.driver().status().state != Printer::Idle)
        throw wire::makeError(wire::error::kMachineState, "The machine is not ready");
    return machine;
}

MakeRequest makeRequest(const Params& params)
{
    MakeRequest request;
    request.inputPath = params.string("input_path");
    request.configuration = params.slicerConfiguration("slicer_config");
    request.materials = params.strings("materials");
    return request;
}

class JobMethods
{
public:
    JobMethods(MachineList& machines, JobList& jobs, QThreadPool& pool, SliceQueue& slices)
        : m_machines(machines)
        , m_jobs(jobs)
        , m_pool(pool)
        , m_slices(slices)
    {}

    Json::Value getJobs() const
    {
        Json::Value list(Json::arrayValue);
        for (const trovek::Job::Data& job : m_jobs.jobs())
            list.append(wire::toJson(job));
        return list;
    }

    Json::Value print(const Params& params) const
    {
        MakeRequest request = makeRequest(params);
        request.addStartEndCode = !params.boolean("skip_start_end");
        Machine& machine = m_machines.openMachine(params.string("machine"));
        if (machine.job() != nullptr) {
            throw wire::makeError(wire::error::kPrintQueued,
                                  "The machine is busy: " + machine.job()->data().name);
        }
        // One that still connects prints as soon as it answers.
        if (machine.driver().status().state != Printer::Connecting)
            idleMachine(m_machines, params);
        request.input = openFile(openInput, request.inputPath);
        return idOf(
            m_jobs.add(std::make_unique<PrintJob>(machine, std::move(request), m_pool, m_slices)));
    }

    Json::Value printToFile(const Params& params) const
    {
        const std::string formatName = params.string("format");
        const std::optional<MachineFileFormat> format = machineFileFormatFromName(formatName);
        if (!format)
            throw invalidArgument("Member \"format\" is neither \"x3g\" nor \"s3g\"");
        MakeRequest request = makeRequest(params);
        request.addStartEndCode = !params.boolean("skip_start_end");
        return exportFile(params, std::move(request), format);
    }

    Json::Value slice(const Params& params) const
    {
        MakeRequest request = makeRequest(params);
        request.addStartEndCode = params.boolean("add_start_end");
        return exportFile(params, std::move(request), std::nullopt);
    }

    Json::Value jog(const Call& call) const
    {
        const Params& params = call.params;
        const auto axis = static_cast<Printer::Axis>(
            params.integer("axis", Printer::RightExtruderAxis, Printer::ZAxis));
        const int distance = params.integer("distance");
        const int limitMs = params.integer("limit_ms", 1, std::numeric_limits<int>::max());
        if (distance == 0)
            throw invalidArgument("Member \"distance\" must not be 0");
        Machine& machine = idleMachine(m_machines, params);
        checkExtruder(machine, axis);
        auto job =
            std::make_unique<MotionJob>(machine, wire::method::kJog, QStringLiteral("Jogging"),
                                        jogPlan(machine.definition(), axis, distance), limitMs);
        // Nobody is left who would stop it.
        QObject::connect(&call.client, &Client::gone, job.get(), &RunningJob::cancel);
        return idOf(m_jobs.add(std::move(job)));
    }

    Json::Value home(const Params& params) const
    {
        Machine& machine = idleMachine(m_machines, params);
        m_jobs.add(std::make_unique<MotionJob>(machine, wire::method::kHome,
                                               QStringLiteral("Homing"),
                                               homingPlan(machine.definition())));
        return Json::Value();
    }

    void calibrate(const Call& call) const
    {
        Machine& machine = idleMachine(m_machines, call.params);
        const Printer::Type type = machine.definition().type;
        if (type != Printer::CubioSingle && type != Printer::CubioDual) {
            throw wire::makeError(wire::error::kNotOffered,
                                  "This type of machine has no such calibration");
        }
        auto owned = std::make_unique<MotionJob>(machine, wire::method::kCboCalibration,
                                                 QStringLiteral("Calibrating"),
                                                 calibrationPlan(machine.definition()));
        const MotionJob* job = owned.get();
        QObject::connect(job, &RunningJob::concluded, job, [job, respond = call.respond] {
            if (job->data().conclusion == JobEnded) {
                respond.result(Json::Value());
                return;
            }
            const std::string text = job->data().conclusion == JobCanceled
                                         ? "The calibration was canceled"
                                         : job->data().failure;
            respond.error(wire::makeError(wire::error::kMachineState, text));
        });
        m_jobs.add(std::move(owned));
    }

    Json::Value setToolheadTemperature(const Params& params) const
    {
        Machine& machine = m_machines.openMachine(params.string("machine"));
        const MachineDefinition& definition = machine.definition();
        const int toolhead = params.integer("toolhead", 0, definition.extruders - 1);
        const int target = params.integer("target", 0, std::numeric_limits<int>::max());
        if (target > definition.toolhead.maxCelsius) {
            throw wire::makeError(wire::error::kTemperatureLimit,
                                  "The machine accepts at most " +
                                      std::to_string(definition.toolhead.maxCelsius) +
                                      " degrees Celsius");
        }
        // A print knows its own temperatures, and must not be spoilt by another hand.
        if (machine.job() != nullptr && machine.job()->data().kind == wire::method::kPrint)
            throw wire::makeError(wire::error::kMachineState, "The machine is printing");
        // While it takes its firmware there is nothing in it that watches a heater.
        if (machine.job() != nullptr &&
            machine.job()->data().kind == wire::method::kUploadFirmware) {
            throw wire::makeError(wire::error::kMachineState,
                                  "The machine is busy: " + machine.job()->data().name);
        }
        if (machine.driver().status().state == Printer::Connecting)
            throw wire::makeError(wire::error::kMachineState, "The machine is not ready");
        machine.driver().setToolTarget(toolhead, target);
        machine.update();
        return Json::Value();
    }

private:
    Json::Value exportFile(const Params& params, MakeRequest request,
                           std::optional<MachineFileFormat> format) const
    {
        const std::string outputPath = params.string("output_path");
        const MachineDefinition& machine = m_machines.definition(params.string("machine"));
        if (isSameFile(outputPath, request.inputPath))
            throw wire::makeError(wire::error::kFileAccess, "Input and output are the same file");
        request.input = openFile(openInput, request.inputPath);
        std::unique_ptr<QFile> output = openFile(openOutput, outputPath);
        return idOf(m_jobs.add(std::make_unique<ExportJob>(
            machine, std::move(request), std::move(output), format, m_pool, m_slices)));
    }

    static void checkExtruder(Machine& machine, Printer::Axis axis)
    {
        if (axis != Printer::RightExtruderAxis && axis != Printer::LeftExtruderAxis)
            return;
        const auto tool = static_cast<std::size_t>(axis);
        const MachineDriver::Status status = machine.driver().status();
        if (tool >= status.toolCelsius.size())
            throw invalidArgument(
                "Member \"axis\" names an extruder that the machine does not have");
        const int needed = machine.definition().minimumExtrusionCelsius;
        if (status.toolCelsius[tool] < needed) {
            throw wire::makeError(wire::error::kColdExtrusion, "The extruder must have at least " +
                                                                   std::to_string(needed) +
                                                                   " degrees Celsius");
        }
    }

    MachineList& m_machines;
    JobList& m_jobs;
    QThreadPool& m_pool;
    SliceQueue& m_slices;
};

} // namespace

void addJobMethods(MethodTable& table, MachineList& machines, JobList& jobs, QThreadPool& pool,
                   SliceQueue& slices)
{
    using namespace wire::method;
    const JobMethods methods(machines, jobs, pool, slices);
    JobList* list = &jobs;
    table.add(kGetJob, [list](const Call& call) {
        return wire::toJson(list->job(call.params.integer("id")));
    });
    table.add(kGetJobs, [methods](const Call&) { return methods.getJobs(); });
    table.add(kCancelJob, [list](const Call& call) {
        list->cancel(call.params.integer("id"));
        return Json::Value();
    });
    table.add(kPrint, [methods](const Call& call) { return methods.print(call.params); });
    table.add(kPrintToFile,
              [methods](const Call& call) { return methods.printToFile(call.params); });
    table.add(kSlice, [methods](const Call& call) { return methods.slice(call.params); });
    table.add(kJog, [methods](const Call& call) { return methods.jog(call); });
    table.add(kHome, [methods](const Call& call) { return methods.home(call.params); });
    table.add(kSetToolheadTemperature,
              [methods](const Call& call) { return methods.setToolheadTemperature(call.params); });
    table.addLate(kCboCalibration, [methods](const Call& call) { methods.calibrate(call); });
}

} // namespace trovek::service
