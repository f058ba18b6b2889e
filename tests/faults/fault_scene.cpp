#include "fault_scene.h"

#include "window_operation.h"

#include <service/state_file.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <QDir>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <future>
#include <set>
#include <stdexcept>
#include <thread>

#ifdef Q_OS_UNIX
#include <csignal>
#endif

namespace trovek {

namespace {

/** Machine seconds a second. */
constexpr double kFast = 3000;
/** Where the machine must still be at work after some milliseconds. */
constexpr double kSlower = 200;
constexpr int kPatienceMs = 20000;
constexpr int kLateMs = 40;
/** So long does a window wait for what never comes; everything else is answered by then. */
constexpr int kNeverMs = 250;
constexpr char kOtherPort[] = "virtual_elsewhere";
constexpr char kOtherFirmware[] = "5.9";

/** The process's export mover keeps the numbers of jobs whose end it has not heard of. */
int nextJob()
{
    static int next = 1;
    next += 10000;
    return next;
}

bool hasPort(const Trovek& client, const std::string& name)
{
    const std::set<Port> ports = client.ports();
    return std::any_of(ports.begin(), ports.end(),
                       [&name](const Port& port) { return port.name() == name; });
}

template <typename Condition>
void waitUntil(const char* what, Condition condition)
{
    if (!QTest::qWaitFor(condition, kPatienceMs))
        throw std::runtime_error(std::string("It did not happen: ") + what);
}

} // namespace

FaultScene::FaultScene(TrovekQt& client, const WindowOperation& operation, FaultKind kind)
    : facade(client)
    , key(operation.machine)
    , m_operation(operation)
    , m_ownProcess(kind == FaultKind::KillDuring)
    , m_timeScale(kind == FaultKind::UnplugDuring ? kSlower : kFast)
    , m_slicer("while [ -e \"$test/wait\" ]; do sleep 0.01; done\nfinish")
{
    writeFiles();
    startService();
    connectClients();
    plugIn();
}

FaultScene::~FaultScene()
{
    joinBreaker();
    facade.setDeadlineScale(1);
    facade.disconnectFromDaemon();
    witness.disconnectFromDaemon();
    settle();
}

void FaultScene::settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void FaultScene::writeFiles()
{
    QDir(m_folder.path()).mkdir(QStringLiteral("state"));
    QDir(m_folder.path()).mkdir(QStringLiteral("exports"));
    Json::Value jobs(Json::objectValue);
    jobs["next_job"] = nextJob();
    service::writeStateFile(path("state/jobs.json"), jobs);
    writeFile(gcode(), "G28\nG1 X10 F3000\n");
    writeFile(model(), "solid part\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 9 0 0\n"
                       "vertex 0 9 0\nendloop\nendfacet\nendsolid part\n");
}

void FaultScene::startService()
{
    if (m_ownProcess) {
        m_daemon = std::make_unique<Daemon>(m_folder.path());
        const QByteArray line =
            m_daemon->start({QStringLiteral("--time-scale"), QString::number(m_timeScale),
                             QStringLiteral("--slicer"), m_slicer.program()});
        if (line.isEmpty())
            throw std::runtime_error("The service does not start");
        m_address = Address::local(toStdString(m_daemon->socket()));
        return;
    }
    service::EmbeddedService::Options options;
    options.socketName = toStdString(path("run/s"));
    options.stateDir = toStdString(path("state"));
    options.timeScale = m_timeScale;
    options.slicer = toStdString(m_slicer.program());
    m_embedded = std::make_unique<service::EmbeddedService>(options);
    m_address = m_embedded->address();
}

void FaultScene::stopService()
{
    m_embedded.reset();
    m_daemon.reset();
}

void FaultScene::connectClients()
{
    if (!witness.isConnected())
        witness.connectToDaemon(m_address);
    if (!facade.isConnected())
        facade.connectToDaemon(m_address);
    settle();
}

/** The machine is there, and its port is as the window expects it to be. */
void FaultScene::plugIn()
{
    witness.simulatePlugIn(key.name());
    const std::string port = portName();
    waitUntil("the port is there", [&] { return hasPort(facade, port) && hasPort(witness, port); });
    if (m_operation.isOpen)
        openMachine();
    else if (witness.printerFromKey(key) != nullptr)
        witness.disconnectFromPort(port);
    waitUntilSeen(m_operation.isOpen);
}

void FaultScene::unplug()
{
    witness.simulateUnplug(key.name());
    waitUntilUnplugged();
}

void FaultScene::waitUntilUnplugged()
{
    const std::string port = portName();
    waitUntil("the port has gone",
              [&] { return !hasPort(facade, port) && !hasPort(witness, port); });
    settle();
}

void FaultScene::openMachine()
{
    witness.connectToPort(witness.portFromName(portName()));
    waitUntil("the machine is idle", [this] { return isIdle(); });
}

void FaultScene::waitUntilSeen(bool present)
{
    waitUntil("the client hears of the machine", [&] {
        return (facade.printerFromKey(key) != nullptr) == present &&
               (witness.printerFromKey(key) != nullptr) == present;
    });
    settle();
}

bool FaultScene::isIdle() const
{
    const auto seesIdle = [this](const Trovek& client) {
        const Printer* const printer = client.printerFromKey(key);
        return printer != nullptr && printer->state() == Printer::Idle;
    };
    return seesIdle(facade) && seesIdle(witness);
}

std::string FaultScene::portName()
{
    for (const Json::Value& machine : witness.simulatedMachines()) {
        if (machine["name"] == key.name())
            return machine["port"].asString();
    }
    throw std::runtime_error("There is no machine " + key.name());
}

std::set<int> FaultScene::jobs() const
{
    static const std::string added = "jobAdded ";
    std::set<int> numbers;
    for (const std::string& event : witness.events) {
        if (event.rfind(added, 0) == 0)
            numbers.insert(std::stoi(event.substr(added.size())));
    }
    return numbers;
}

int FaultScene::jobsOf(const std::string& kind)
{
    QCoreApplication::processEvents();
    int count = 0;
    for (const int number : jobs()) {
        try {
            count += witness.jobFromID(number).kind() == kind ? 1 : 0;
        } catch (const std::exception&) {
            // Of an earlier run of the service.
        }
    }
    return count;
}

void FaultScene::cancelJobs()
{
    QCoreApplication::processEvents();
    for (const int number : jobs()) {
        try {
            witness.cancelJob(number);
        } catch (const std::exception&) {
            // Of an earlier run of the service.
        }
    }
}

// ---- What goes wrong

void FaultScene::breakIt(const SimulatedFault& fault)
{
    witness.simulateFault(fault);
}

void FaultScene::breakIt(FaultKind kind)
{
    const std::string method = m_operation.method;
    m_pullsCable = kind == FaultKind::UnplugAtOnce || kind == FaultKind::UnplugDuring;
    m_endsLink = kind == FaultKind::DropBefore || kind == FaultKind::DropAfter;
    switch (kind) {
    case FaultKind::Late:
        breakIt(SimulatedFault::late(method, kLateMs));
        break;
    case FaultKind::Never:
        breakIt(SimulatedFault::never(method));
        facade.setDeadlineScale(double(kNeverMs) / m_operation.deadlineMs);
        break;
    case FaultKind::NamedError:
        breakIt(SimulatedFault::error(method, wire::makeError("SomeError", "It went wrong")));
        break;
    case FaultKind::BareError:
        breakIt(SimulatedFault::error(method, JsonRpcException("It went wrong")));
        break;
    case FaultKind::OddNull:
    case FaultKind::OddText:
    case FaultKind::OddList:
    case FaultKind::OddObject:
        breakIt(SimulatedFault::answer(method, oddAnswer(kind)));
        break;
    case FaultKind::DropBefore:
        breakIt(SimulatedFault::dropBefore(method));
        break;
    case FaultKind::DropAfter:
        breakIt(SimulatedFault::dropAfter(method));
        break;
    case FaultKind::StopBefore:
        stopService();
        waitUntil("the client hears of the end", [this] { return !facade.isConnected(); });
        settle();
        break;
    case FaultKind::StopUnseen:
        stopService();
        break;
    case FaultKind::StopDuring:
    case FaultKind::KillDuring:
        endServiceInTheMiddle(kind == FaultKind::KillDuring);
        break;
    case FaultKind::UnplugBefore:
        unplug();
        break;
    case FaultKind::UnplugAtOnce:
        breakIt(SimulatedFault::unplug(method, key.name()));
        break;
    case FaultKind::UnplugDuring:
        breakIt(SimulatedFault::unplug(method, key.name(), kLateMs));
        break;
    case FaultKind::OtherPort:
        unplug();
        witness.simulatePort(key.name(), kOtherPort);
        plugIn();
        break;
    case FaultKind::OtherFirmware:
        unplug();
        witness.simulateFirmware(key.name(), kOtherFirmware);
        plugIn();
        break;
    case FaultKind::UploadFailsAt0:
        witness.simulateUploadFailure(key.name(), 0);
        break;
    case FaultKind::UploadFailsAt50:
        witness.simulateUploadFailure(key.name(), 50);
        break;
    case FaultKind::UploadFailsAt99:
        witness.simulateUploadFailure(key.name(), 99);
        break;
    }
}

/** The windows wait for the service without an event loop, so that a thread looks on. */
void FaultScene::endServiceInTheMiddle(bool kill)
{
    breakIt(SimulatedFault::never(m_operation.method));
    const auto end = [this, kill] {
#ifdef Q_OS_UNIX
        if (kill)
            ::kill(static_cast<pid_t>(m_daemon->process().processId()), SIGKILL);
        else
            m_embedded.reset();
#endif
    };
    m_isOver = false;
    std::promise<void> ready;
    m_breaker.reset(QThread::create([this, end, &ready] {
        try {
            Trovek watcher;
            watcher.connectToDaemon(m_address);
            ready.set_value();
            while (!m_isOver && !watcher.simulatedFaults().empty())
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            end();
        } catch (const std::exception& error) {
            qWarning("The thread that ends the service: %s", error.what());
        }
    }));
    m_breaker->start();
    ready.get_future().wait();
}

bool FaultScene::hasFailed()
{
    try {
        return witness.simulatedFaults().empty();
    } catch (const std::exception&) {
        return true;
    }
}

void FaultScene::joinBreaker()
{
    if (!m_breaker)
        return;
    m_isOver = true;
    m_breaker->wait();
    m_breaker.reset();
}

void FaultScene::repair()
{
    joinBreaker();
    facade.setDeadlineScale(1);
    settle();
    if (!isServiceThere()) {
        stopService();
        waitUntil("the clients hear of the end",
                  [this] { return !facade.isConnected() && !witness.isConnected(); });
        startService();
    }
    if (!witness.isConnected())
        witness.connectToDaemon(m_address);
    // The news of it come after the answer of the request.
    if (m_pullsCable && hasFailed())
        waitUntilUnplugged();
    if (m_endsLink && hasFailed())
        waitUntil("the client hears of the end", [this] { return !facade.isConnected(); });
    witness.clearSimulatedFaults();
    cancelJobs();
    // What was begun is over before a window looks again.
    waitUntil("the machine has nothing to do", [this] {
        const Printer* const printer = witness.printerFromKey(key);
        return printer == nullptr || printer->state() == Printer::Idle;
    });
    connectClients();
    plugIn();
}

bool FaultScene::isServiceThere() const
{
    try {
        Trovek visitor;
        visitor.connectToDaemon(m_address);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

} // namespace trovek
