#include "support/scripted_server.h"

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QFileInfo>
#include <QLocalSocket>
#include <QTcpSocket>

#include <algorithm>
#include <chrono>
#include <set>
#include <stdexcept>
#include <utility>

namespace trovek {

namespace method = wire::method;
namespace notification = wire::notification;

void RequestLog::add(const ScriptedService::Request& request)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_requests.push_back(request);
    }
    m_arrived.notify_all();
}

std::vector<ScriptedService::Request> RequestLog::all() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests;
}

bool RequestLog::waitFor(const std::string& name, int wanted, int timeoutMs) const
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_arrived.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                              [&] { return count(name) >= wanted; });
}

void RequestLog::clear()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_requests.clear();
}

int RequestLog::count(const std::string& name) const
{
    return static_cast<int>(
        std::count_if(m_requests.begin(), m_requests.end(),
                      [&](const auto& request) { return request.method == name; }));
}

ScriptedServer::ScriptedServer(const std::string& socketPath, RequestLog* log)
    : versionMajor(wire::kProtocolMajor)
    , versionMinor(wire::kProtocolMinor)
    , m_socketPath(socketPath)
    , m_log(log)
{
    connect(&m_localServer, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* const socket = m_localServer.nextPendingConnection())
            accept(socket);
    });
    connect(&m_tcpServer, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* const socket = m_tcpServer.nextPendingConnection())
            accept(socket);
    });
    listen();
}

ScriptedServer::~ScriptedServer()
{
    dropConnections();
}

void ScriptedServer::listen()
{
    const bool listens = m_socketPath.empty() ? m_tcpServer.listen(QHostAddress::LocalHost, tcpPort)
                                              : m_localServer.listen(toQString(m_socketPath));
    if (!listens)
        qFatal("The scripted service cannot listen");
    tcpPort = m_tcpServer.serverPort();
}

void ScriptedServer::stop()
{
    m_localServer.close();
    m_tcpServer.close();
    dropConnections();
}

void ScriptedServer::dropConnections()
{
    const auto clients = std::exchange(m_clients, {});
    for (const auto& client : clients) {
        client->peer->disconnect(this);
        client->peer->close("Dropped by the test");
        client->peer->deleteLater();
    }
}

int ScriptedServer::clientCount() const
{
    return static_cast<int>(std::count_if(m_clients.begin(), m_clients.end(),
                                          [](const auto& client) { return client->greeted; }));
}

void ScriptedServer::notify(const std::string& name, const Json::Value& params)
{
    for (const auto& client : m_clients) {
        if (client->subscribed)
            client->peer->notify(name, params);
    }
}

void ScriptedServer::sendRaw(const QByteArray& bytes)
{
    for (const auto& client : m_clients)
        client->socket->write(bytes);
}

void ScriptedServer::concludeJob(int id, JobConclusion conclusion, const std::string& failure)
{
    Job::Data& job = jobs[id];
    job.id = id;
    job.conclusion = conclusion;
    job.failure = failure;
    if (conclusion == JobEnded)
        job.progress = 100;
    Json::Value params(Json::objectValue);
    params["id"] = id;
    notify(notification::kJobChanged, params);
    notify(notification::kJobConcluded, params);
}

void ScriptedServer::accept(QIODevice* socket)
{
    auto* const peer = new rpcwire::Peer(socket, rpcwire::Limits(), this);
    m_clients.push_back(std::make_unique<Client>(Client{peer, socket}));
    connect(peer, &rpcwire::Peer::requestReceived, this,
            [this, peer](const rpcwire::Peer::Request& request) { handle(peer, request); });
    connect(peer, &rpcwire::Peer::closed, this, [this, peer] { forget(peer); });
}

void ScriptedServer::forget(rpcwire::Peer* peer)
{
    m_clients.erase(std::remove_if(m_clients.begin(), m_clients.end(),
                                   [peer](const auto& client) { return client->peer == peer; }),
                    m_clients.end());
    peer->deleteLater();
}

ScriptedServer::Client* ScriptedServer::clientOf(const rpcwire::Peer* peer)
{
    for (const auto& client : m_clients) {
        if (client->peer == peer)
            return client.get();
    }
    throw std::logic_error("Unknown client");
}

void ScriptedServer::handle(rpcwire::Peer* peer, const rpcwire::Peer::Request& request)
{
    m_log->add({request.method, request.params});

    const auto queue = scripts.find(request.method);
    if (queue == scripts.end() || queue->second.empty()) {
        answerByDefault(peer, request);
        return;
    }
    const Script script = queue->second.front();
    queue->second.pop_front();
    switch (script.kind) {
    case Script::Answer:
        peer->answer(request, script.result);
        break;
    case Script::Fail:
        peer->answerError(request, *script.error);
        break;
    case Script::Hang:
        break;
    case Script::DropInstead:
        peer->close("Dropped by the test");
        break;
    case Script::DropAfter:
        answerByDefault(peer, request);
        peer->closeAfterWriting("Dropped by the test");
        break;
    }
}

void ScriptedServer::answerByDefault(rpcwire::Peer* peer, const rpcwire::Peer::Request& request)
{
    try {
        const auto handler = handlers.find(request.method);
        peer->answer(request, handler != handlers.end()
                                  ? handler->second(request.params)
                                  : result(peer, request.method, request.params));
    } catch (const JsonRpcException& e) {
        peer->answerError(request, e);
    } catch (const std::exception& e) {
        peer->answerError(request,
                          JsonRpcException(e.what(), Json::Value(), rpcwire::InvalidParams));
    }
    for (const auto& action : std::exchange(m_afterAnswer, {}))
        action();
}

Json::Value ScriptedServer::result(rpcwire::Peer* peer, const std::string& name,
                                   const Json::Value& params)
{
    static const std::set<std::string> makesJob = {method::kPrint, method::kPrintToFile,
                                                   method::kSlice, method::kJog};
    static const std::set<std::string> doesNothing = {
        method::kDisconnectFromPort,     method::kHome,
        method::kSetToolheadTemperature, method::kCboCalibration,
        method::kUploadFirmware,         method::kSimulatePlugIn,
        method::kSimulateUnplug,         method::kSimulateFirmware,
        method::kSimulatePort,           method::kSimulateUploadFailure,
        method::kSimulateFault,          method::kSimulateNoFaults,
        method::kSimulatedScanner,       method::kSimulateScannerPlugIn,
        method::kSimulateScannerUnplug,  method::kSimulateScannedModel};

    if (name == method::kHello)
        return greet(peer, params);
    if (name == method::kSubscribe) {
        // Right behind its answer, so that nothing is notified that the snapshot has already.
        m_afterAnswer.push_back([this, peer] { clientOf(peer)->subscribed = true; });
        return snapshot();
    }
    if (makesJob.count(name) > 0)
        return makeJob(name, params);
    if (doesNothing.count(name) > 0)
        return Json::Value();
    if (name == method::kGetJob)
        return wire::toJson(findJob(params));
    if (name == method::kGetJobs) {
        Json::Value list(Json::arrayValue);
        for (const auto& [id, job] : jobs)
            list.append(wire::toJson(job));
        return list;
    }
    if (name == method::kCancelJob) {
        const Job::Data& job = findJob(params);
        if (job.conclusion == JobNotConcluded)
            m_afterAnswer.push_back(
                [this, id = job.id] { concludeJob(id, JobCanceled, std::string()); });
        return Json::Value();
    }
    if (name == method::kConnectToPort) {
        const std::string portName = wire::stringMember(params, "port");
        for (const Port::Data& port : ports) {
            if (port.name != portName)
                continue;
            Json::Value answer(Json::objectValue);
            answer["name"] = port.machineName;
            return answer;
        }
        throw wire::makeError(wire::error::kUnknownPort, "No such port: " + portName);
    }
    if (name == method::kReadEeprom) {
        const auto it = eeproms.find(wire::stringMember(params, "machine"));
        if (it != eeproms.end())
            return it->second;
        Json::Value empty(Json::objectValue);
        empty["eeprom_map"] = Json::Value(Json::objectValue);
        return empty;
    }
    if (name == method::kWriteEeprom) {
        eeproms[wire::stringMember(params, "machine")] = params["map"];
        return Json::Value();
    }
    if (name == method::kResetEepromCompletely) {
        eeproms.erase(wire::stringMember(params, "machine"));
        return Json::Value();
    }
    if (name == method::kListEepromBackups) {
        Json::Value list(Json::arrayValue);
        for (const auto& [backup, map] : eepromBackups[wire::stringMember(params, "machine")])
            list.append(wire::toJson(backup));
        return list;
    }
    if (name == method::kReadEepromBackup) {
        const std::string wanted = wire::stringMember(params, "backup");
        for (const auto& [backup, map] : eepromBackups[wire::stringMember(params, "machine")]) {
            if (backup.name == wanted)
                return map;
        }
        throw wire::makeError(wire::error::kUnknownEepromBackup, "No such backup: " + wanted);
    }
    if (name == method::kGetUploadableMachines) {
        std::set<std::string> names;
        for (const Printer::Data& printer : printers)
            names.insert(printer.machineNames.begin(), printer.machineNames.end());
        return wire::toJson(std::vector<std::string>(names.begin(), names.end()));
    }
    if (name == method::kGetMachineVersions) {
        Json::Value versions(Json::arrayValue);
        versions.append(wire::toJson(std::vector<std::string>{"7.2", "Steadier heating."}));
        return versions;
    }
    if (name == method::kDownloadFirmware)
        return "firmware-" + wire::stringMember(params, "version") + ".hex";
    if (name == method::kStrandelConfigVersionCheck)
        return 1;
    if (name == method::kUpgradeStrandelConfig)
        return params["config"];
    if (name == method::kSimulatedMachines || name == method::kSimulatedFaults)
        return Json::Value(Json::arrayValue);
    throw wire::makeError(wire::error::kNotOffered, "Not offered: " + name);
}

Json::Value ScriptedServer::greet(rpcwire::Peer* peer, const Json::Value& params)
{
    if (!token.empty() && wire::stringMember(params, "token") != token) {
        m_afterAnswer.push_back([peer] { peer->closeAfterWriting("Wrong token"); });
        throw wire::makeError(wire::error::kAccessDenied, "Wrong token");
    }
    clientOf(peer)->greeted = true;
    Json::Value answer(Json::objectValue);
    answer["version"]["major"] = versionMajor;
    answer["version"]["minor"] = versionMinor;
    answer["service"] = "scripted";
    return answer;
}

Json::Value ScriptedServer::snapshot() const
{
    Json::Value snapshot(Json::objectValue);
    snapshot["ports"] = Json::Value(Json::arrayValue);
    snapshot["printers"] = Json::Value(Json::arrayValue);
    for (const Port::Data& port : ports)
        snapshot["ports"].append(wire::toJson(port));
    for (const Printer::Data& printer : printers)
        snapshot["printers"].append(wire::toJson(printer));
    return snapshot;
}

Json::Value ScriptedServer::makeJob(const std::string& name, const Json::Value& params)
{
    Job::Data job;
    job.id = jobs.empty() ? 1 : jobs.rbegin()->first + 1;
    job.kind = name;
    job.machine = MachineName(wire::stringMember(params, "machine"));
    job.stage = "Preparing";
    job.name = name;
    if (params.isMember("input_path"))
        job.name = toStdString(
            QFileInfo(toQString(wire::stringMember(params, "input_path"))).completeBaseName());
    jobs[job.id] = job;
    lastJobID = job.id;

    Json::Value answer(Json::objectValue);
    answer["id"] = job.id;
    m_afterAnswer.push_back([this, answer] { notify(notification::kJobAdded, answer); });
    return answer;
}

Job::Data& ScriptedServer::findJob(const Json::Value& params)
{
    const auto it = jobs.find(wire::intMember(params, "id"));
    if (it == jobs.end())
        throw wire::makeError(wire::error::kUnknownJob, "No such job");
    return it->second;
}

} // namespace trovek
