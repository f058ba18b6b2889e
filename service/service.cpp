#include "service.h"

#include "firmware/firmware_methods.h"
#include "job_list.h"
#include "job_methods.h"
#include "machine.h"
#include "machine_list.h"
#include "machine_methods.h"
#include "onboard/onboard_methods.h"
#include "scanner/scanner_service.h"
#include "simulation/fault_injector.h"
#include "simulation/simulation_methods.h"
#include "slicing/prusa_engine.h"
#include "slicing/slice_queue.h"
#include "slicing/strandel_methods.h"
#include "system.h"

#include <trovek/log.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\service";

namespace {

constexpr int kLockWaitMs = 200;

MachineDefinitions readDefinitions(const QString& path)
{
    if (path.isEmpty())
        return defaultMachineDefinitions();
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        throw std::runtime_error(
            toStdString(QStringLiteral("Cannot read the machines file \"%1\"").arg(path)));
    }
    return loadMachineDefinitions(file.readAll().toStdString());
}

/** Holds the state folder for one service. */
std::unique_ptr<QLockFile> lockStateDir(const QString& stateDir)
{
    makePrivateFolder(stateDir);
    auto lock = std::make_unique<QLockFile>(QDir(stateDir).filePath(QStringLiteral("lock")));
    lock->setStaleLockTime(0);
    if (!lock->tryLock(kLockWaitMs)) {
        throw std::runtime_error(toStdString(
            QStringLiteral("The state folder \"%1\" is in use by another service").arg(stateDir)));
    }
    return lock;
}

QString firmwareCache(const ServiceOptions& options)
{
    return options.firmwareCache.isEmpty()
               ? QDir(options.stateDir).filePath(QStringLiteral("firmware"))
               : options.firmwareCache;
}

std::unique_ptr<SlicerEngine> slicerOf(const ServiceOptions& options)
{
    return options.slicer.isEmpty() ? std::make_unique<PrusaEngine>()
                                    : std::make_unique<PrusaEngine>(options.slicer);
}

Json::Value nameOf(const Machine& machine)
{
    Json::Value value(Json::objectValue);
    value["name"] = machine.definition().key;
    return value;
}

Json::Value idOf(int job)
{
    Json::Value value(Json::objectValue);
    value["id"] = job;
    return value;
}

} // namespace

class Service::Private
{
public:
    Private(Service& owner, const ServiceOptions& options);

    void followMachines();
    void followJobs();
    void followScanner();
    void addMethods();
    Json::Value subscribe(Client& client);
    void post(const char* method, Json::Value params);
    void flush();

    Service& q;
    // The order matters: jobs use the slices and the scanner, they machines and the pool, and
    // all the folder.
    const std::unique_ptr<QLockFile> lock;
    QThreadPool pool;
    MachineList machines;
    SliceQueue slices;
    ScannerService scanner;
    JobList jobs;
    MethodTable table;
    FaultInjector faults;
    std::vector<std::pair<const char*, Json::Value>> outbox;
    // These go first: a reset or upload that is given up lets go of its machine, which is posted.
    OnboardMethods onboard;
    FirmwareMethods firmware;
};

Service::Private::Private(Service& owner, const ServiceOptions& options)
    : q(owner)
    , lock(lockStateDir(options.stateDir))
    , machines(readDefinitions(options.machinesFile), options.stateDir, options.timeScale)
    , slices(slicerOf(options), QDir(options.stateDir).filePath(QStringLiteral("slices")),
             options.slicesAtOnce)
    , scanner(options.scannerFile,
              QDir(options.stateDir).filePath(QStringLiteral("scanner_memory.json")), pool)
    , jobs(QDir(options.stateDir).filePath(QStringLiteral("jobs.json")))
    , faults(table, machines)
    , onboard(machines)
    , firmware(machines, options.firmwareCatalogue, firmwareCache(options))
{
    pool.setMaxThreadCount(std::max(2, QThread::idealThreadCount()));
}

void Service::Private::followMachines()
{
    using namespace wire::notification;
    connect(&machines, &MachineList::attached, &q,
            [this](const Machine& machine) { post(kPortAttached, wire::toJson(machine.port())); });
    connect(&machines, &MachineList::detached, &q, [this](const Machine& machine) {
        Json::Value port(Json::objectValue);
        port["name"] = machine.portName();
        port["identity"] = machine.definition().portIdentity;
        post(kPortDetached, port);
    });
    // A port names its machine before that is announced, and as long as it is there.
    connect(&machines, &MachineList::opened, &q, [this](const Machine& machine) {
        post(kPortChanged, wire::toJson(machine.port()));
        post(kPrinterAdded, wire::toJson(machine.printer()));
    });
    connect(&machines, &MachineList::closed, &q, [this](const Machine& machine) {
        post(kPrinterRemoved, nameOf(machine));
        post(kPortChanged, wire::toJson(machine.port()));
    });
    connect(&machines, &MachineList::changed, &q, [this](const Machine& machine) {
        post(kPrinterChanged, wire::toJson(machine.printer()));
    });
}

void Service::Private::followJobs()
{
    using namespace wire::notification;
    connect(&jobs, &JobList::added, &q, [this](int id) { post(kJobAdded, idOf(id)); });
    connect(&jobs, &JobList::changed, &q, [this](int id) { post(kJobChanged, idOf(id)); });
    connect(&jobs, &JobList::concluded, &q, [this](int id) { post(kJobConcluded, idOf(id)); });
}

void Service::Private::followScanner()
{
    connect(&scanner, &ScannerService::cameraClosed, &q, [this](const std::string& devicePath) {
        Json::Value camera(Json::objectValue);
        camera["device_path"] = devicePath;
        post(wire::notification::kCameraClosed, camera);
    });
}

void Service::Private::addMethods()
{
    table.add(wire::method::kSubscribe,
              [this](const Call& call) { return subscribe(call.client); });
    addMachineMethods(table, machines);
    addSimulationMethods(table, machines, faults);
    addJobMethods(table, machines, jobs, pool, slices);
    onboard.addTo(table);
    addStrandelMethods(table);
    firmware.addTo(table);
    scanner.addTo(table, jobs);
}

Json::Value Service::Private::subscribe(Client& client)
{
    // A temperature that is in the result but was told to nobody would never be taken back.
    for (const auto& machine : machines.machines())
        machine->tell();
    // What has happened before is in the result, and must not be told a second time.
    flush();
    client.subscribe();
    Json::Value result(Json::objectValue);
    result["ports"] = Json::Value(Json::arrayValue);
    for (const Port::Data& port : machines.ports())
        result["ports"].append(wire::toJson(port));
    result["printers"] = Json::Value(Json::arrayValue);
    for (const Printer::Data& printer : machines.printers())
        result["printers"].append(wire::toJson(printer));
    return result;
}

void Service::Private::post(const char* method, Json::Value params)
{
    if (outbox.empty())
        QMetaObject::invokeMethod(
            &q, [this] { flush(); }, Qt::QueuedConnection);
    outbox.emplace_back(method, std::move(params));
}

void Service::Private::flush()
{
    const auto told = std::exchange(outbox, {});
    for (const auto& [method, params] : told)
        emit q.notification(method, params);
}

Service::Service(const ServiceOptions& options, QObject* parent)
    : QObject(parent)
    , d(new Private(*this, options))
{
    d->followMachines();
    d->followJobs();
    d->followScanner();
    d->addMethods();
    d->machines.start();
    TROVEK_LOG(1) << "Service ready, state in " << toStdString(options.stateDir) << std::endl;
}

Service::~Service()
{
    d->jobs.abortAll(QStringLiteral("The service was shut down"));
    d->flush();
}

void Service::handle(const std::string& method, const Json::Value& params, Client& client,
                     const Responder& respond)
{
    d->faults.handle(method, params, client, respond);
}

} // namespace trovek::service
