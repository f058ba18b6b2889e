#include "support/scripted_service.h"

#include "support/scripted_server.h"

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace trovek {

namespace {

using Script = ScriptedServer::Script;

constexpr char kToken[] = "scripted-token";

Json::Value jobParams(int id)
{
    Json::Value params(Json::objectValue);
    params["id"] = id;
    return params;
}

Json::Value portParams(const Port::Data& port)
{
    Json::Value params(Json::objectValue);
    params["name"] = port.name;
    params["identity"] = port.identity;
    return params;
}

struct TypeInfo
{
    const char* name;
    int extruders;
    bool heatedPlatform;
    /** Half of the platform's width and depth, and the height, in millimetres. */
    float volume[3];
};

const TypeInfo& infoOf(Printer::Type type)
{
    static const TypeInfo infos[] = {
        {"Unknown machine", 1, false, {50, 50, 100}},
        {"Orvane Fabrino", 1, true, {112, 72, 150}},
        {"Orvane Fabrino (Dual)", 2, true, {112, 72, 150}},
        {"Orvane Fabrino 2", 1, false, {142, 76, 155}},
        {"Orvane Fabrino 2X", 2, true, {123, 76, 155}},
        {"Orvane Cubio", 1, true, {50, 50, 120}},
        {"Orvane Cubio (Dual)", 2, true, {50, 50, 120}},
    };
    const bool known = type >= Printer::FabrinoSingle && type <= Printer::CubioDual;
    return infos[known ? type : 0];
}

Printer::Data plainData(const std::string& key, Printer::Type type)
{
    const TypeInfo& info = infoOf(type);
    Printer::Data data;
    data.key = MachineName(key);
    data.displayName = info.name;
    data.type = type;
    data.machineNames = {info.name};
    data.numberOfExtruders = info.extruders;
    data.hasHeatedPlatform = info.heatedPlatform;
    data.canPrintToFile = true;
    for (int axis = 0; axis < 3; ++axis) {
        data.buildVolume[axis] = axis == 2 ? 0.0F : -info.volume[axis];
        data.buildVolume[axis + 3] = info.volume[axis];
    }
    return data;
}

} // namespace

class ScriptedService::Private
{
public:
    explicit Private(Transport transport)
        : m_transport(transport)
    {
        m_thread.setObjectName(QStringLiteral("scripted service"));
        m_thread.start();
        m_context.moveToThread(&m_thread);
        run([&] {
            m_server = std::make_unique<ScriptedServer>(
                transport == Local ? socketPath() : std::string(), &log);
            if (transport == Tcp)
                m_server->token = kToken;
            tcpPort = m_server->tcpPort;
        });
    }

    ~Private()
    {
        run([this] {
            m_server.reset();
            m_context.moveToThread(nullptr);
        });
        m_thread.quit();
        m_thread.wait();
    }

    std::string socketPath() const
    {
        return toStdString(m_folder.filePath(QStringLiteral("service.sock")));
    }

    Transport transport() const { return m_transport; }

    /** In the service's thread, done when this returns. */
    template <typename Function>
    void run(Function function)
    {
        if (QThread::currentThread() == &m_thread)
            function();
        else
            QMetaObject::invokeMethod(&m_context, function, Qt::BlockingQueuedConnection);
    }

    ScriptedServer& server() { return *m_server; }

    void script(const std::string& method, Script script)
    {
        run([&] { m_server->scripts[method].push_back(std::move(script)); });
    }

    void notify(const std::string& method, const Json::Value& params)
    {
        run([&] { m_server->notify(method, params); });
    }

    /** Tells clients that the machine on the port is now another; empty for none. */
    void setMachineOfPort(const std::string& portName, const std::string& machine)
    {
        for (Port::Data& port : m_server->ports) {
            if (portName.empty() || port.name != portName || port.machineName == machine)
                continue;
            port.machineName = machine;
            m_server->notify(wire::notification::kPortChanged, wire::toJson(port));
        }
    }

    std::vector<Printer::Data>::iterator findPrinter(const std::string& key)
    {
        std::vector<Printer::Data>& printers = m_server->printers;
        return std::find_if(printers.begin(), printers.end(),
                            [&key](const Printer::Data& data) { return data.key.name() == key; });
    }

    RequestLog log;
    quint16 tcpPort = 0;

private:
    const Transport m_transport;
    const QTemporaryDir m_folder;
    QThread m_thread;
    QObject m_context;
    std::unique_ptr<ScriptedServer> m_server;
};

ScriptedService::ScriptedService(Transport transport)
    : d(std::make_unique<Private>(transport))
{}

ScriptedService::~ScriptedService() = default;

Address ScriptedService::address() const
{
    return d->transport() == Local ? Address::local(d->socketPath())
                                   : Address::tcp("127.0.0.1", d->tcpPort, kToken);
}

void ScriptedService::stop()
{
    d->run([this] { d->server().stop(); });
}

void ScriptedService::start()
{
    d->run([this] { d->server().listen(); });
}

void ScriptedService::dropConnections()
{
    d->run([this] { d->server().dropConnections(); });
}

int ScriptedService::clientCount() const
{
    int count = 0;
    d->run([&] { count = d->server().clientCount(); });
    return count;
}

void ScriptedService::setProtocolVersion(int major, int minor)
{
    d->run([&] {
        d->server().versionMajor = major;
        d->server().versionMinor = minor;
    });
}

void ScriptedService::addPort(const Port::Data& port)
{
    d->run([&] {
        d->server().ports.push_back(port);
        d->server().notify(wire::notification::kPortAttached, wire::toJson(port));
    });
}

void ScriptedService::changePort(const Port::Data& port)
{
    d->run([&] {
        for (Port::Data& known : d->server().ports) {
            if (known.name == port.name && known.identity == port.identity)
                known = port;
        }
        d->server().notify(wire::notification::kPortChanged, wire::toJson(port));
    });
}

void ScriptedService::removePort(const std::string& name)
{
    d->run([&] {
        const std::vector<Port::Data> ports = std::exchange(d->server().ports, {});
        for (const Port::Data& port : ports) {
            if (port.name == name)
                d->server().notify(wire::notification::kPortDetached, portParams(port));
            else
                d->server().ports.push_back(port);
        }
    });
}

void ScriptedService::addPrinter(const Printer::Data& printer)
{
    d->run([&] {
        d->setMachineOfPort(printer.portName, printer.key.name());
        d->server().printers.push_back(printer);
        d->server().notify(wire::notification::kPrinterAdded, wire::toJson(printer));
    });
}

void ScriptedService::changePrinter(const Printer::Data& printer)
{
    d->run([&] {
        const auto it = d->findPrinter(printer.key.name());
        if (it != d->server().printers.end())
            *it = printer;
        d->server().notify(wire::notification::kPrinterChanged, wire::toJson(printer));
    });
}

void ScriptedService::removePrinter(const std::string& key)
{
    d->run([&] {
        const auto it = d->findPrinter(key);
        if (it == d->server().printers.end())
            return;
        const std::string portName = it->portName;
        d->server().printers.erase(it);
        Json::Value params(Json::objectValue);
        params["name"] = key;
        d->server().notify(wire::notification::kPrinterRemoved, params);
        d->setMachineOfPort(portName, std::string());
    });
}

Printer::Data ScriptedService::printer(const std::string& key) const
{
    Printer::Data data;
    d->run([&] {
        const auto it = d->findPrinter(key);
        if (it != d->server().printers.end())
            data = *it;
    });
    return data;
}

void ScriptedService::setJob(const Job::Data& job)
{
    d->run([&] {
        d->server().jobs[job.id] = job;
        d->server().lastJobID = job.id;
    });
}

Job::Data ScriptedService::job(int id) const
{
    Job::Data job;
    d->run([&] { job = d->server().jobs[id]; });
    return job;
}

int ScriptedService::lastJobID() const
{
    int id = Job::kInvalidID;
    d->run([&] { id = d->server().lastJobID; });
    return id;
}

void ScriptedService::notifyJobAdded(int id)
{
    d->notify(wire::notification::kJobAdded, jobParams(id));
}

void ScriptedService::notifyJobChanged(int id)
{
    d->notify(wire::notification::kJobChanged, jobParams(id));
}

void ScriptedService::notifyJobConcluded(int id)
{
    d->notify(wire::notification::kJobConcluded, jobParams(id));
}

void ScriptedService::concludeJob(int id, JobConclusion conclusion, const std::string& failure)
{
    d->run([&] { d->server().concludeJob(id, conclusion, failure); });
}

void ScriptedService::setEeprom(const std::string& machine, const Json::Value& map)
{
    d->run([&] { d->server().eeproms[machine] = map; });
}

void ScriptedService::addEepromBackup(const std::string& machine, const EepromBackup& backup,
                                      const Json::Value& map)
{
    d->run([&] { d->server().eepromBackups[machine].emplace_back(backup, map); });
}

void ScriptedService::failNext(const std::string& method, const JsonRpcException& error)
{
    d->script(method, {Script::Fail, Json::Value(), error});
}

void ScriptedService::failAlways(const std::string& method, const JsonRpcException& error)
{
    onRequest(method, [error](const Json::Value&) -> Json::Value { throw error; });
}

void ScriptedService::answerNext(const std::string& method, const Json::Value& result)
{
    d->script(method, {Script::Answer, result, std::nullopt});
}

void ScriptedService::onRequest(const std::string& method,
                                std::function<Json::Value(const Json::Value&)> handler)
{
    d->run([&] { d->server().handlers[method] = std::move(handler); });
}

void ScriptedService::hangNext(const std::string& method)
{
    d->script(method, {Script::Hang, Json::Value(), std::nullopt});
}

void ScriptedService::dropConnectionOn(const std::string& method, Drop drop)
{
    const auto kind = drop == Drop::AfterAnswering ? Script::DropAfter : Script::DropInstead;
    d->script(method, {kind, Json::Value(), std::nullopt});
}

void ScriptedService::clearScripts(const std::string& method)
{
    d->run([&] {
        d->server().scripts.erase(method);
        d->server().handlers.erase(method);
    });
}

void ScriptedService::sendRaw(const QByteArray& bytes)
{
    d->run([&] { d->server().sendRaw(bytes); });
}

void ScriptedService::notify(const std::string& method, const Json::Value& params)
{
    d->notify(method, params);
}

std::vector<ScriptedService::Request> ScriptedService::requests() const
{
    return d->log.all();
}

std::vector<Json::Value> ScriptedService::requests(const std::string& method) const
{
    std::vector<Json::Value> params;
    for (const Request& request : d->log.all()) {
        if (request.method == method)
            params.push_back(request.params);
    }
    return params;
}

Json::Value ScriptedService::lastRequest(const std::string& method) const
{
    const std::vector<Json::Value> all = requests(method);
    return all.empty() ? Json::Value() : all.back();
}

bool ScriptedService::waitForRequest(const std::string& method, int count, int timeoutMs) const
{
    return d->log.waitFor(method, count, timeoutMs);
}

void ScriptedService::clearRequests()
{
    d->log.clear();
}

Printer::Data ScriptedService::machine(const std::string& name, Printer::Type type)
{
    constexpr int kRoomCelsius = 21;
    Printer::Data data = plainData(name, type);
    data.state = Printer::Idle;
    data.connected = true;
    data.canPrint = true;
    data.firmwareVersion = FirmwareVersion("7.2", std::string());
    const auto toolheads = static_cast<std::size_t>(data.numberOfExtruders);
    data.toolTemperature.toolheads.assign(toolheads, kRoomCelsius);
    data.toolTemperature.platform = data.hasHeatedPlatform ? kRoomCelsius : 0;
    data.toolheadTargetTemperature.assign(toolheads, 0);
    return data;
}

Printer::Data ScriptedService::archetype(Printer::Type type)
{
    return plainData("archetype " + std::to_string(int(type)), type);
}

Port::Data ScriptedService::port(const std::string& name)
{
    Port::Data port;
    port.name = name;
    port.identity = "23c1:d314:" + name;
    port.displayName = "Port " + name;
    return port;
}

} // namespace trovek
