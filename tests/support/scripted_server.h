#pragma once

#include "support/scripted_service.h"

#include <rpcwire/peer.h>

#include <QLocalServer>
#include <QObject>
#include <QTcpServer>

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>

namespace trovek {

/** What arrived, written by the service's thread and read by the test's. */
class RequestLog
{
public:
    void add(const ScriptedService::Request& request);
    std::vector<ScriptedService::Request> all() const;
    bool waitFor(const std::string& method, int count, int timeoutMs) const;
    void clear();

private:
    int count(const std::string& method) const;

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_arrived;
    std::vector<ScriptedService::Request> m_requests;
};

/** The part of ScriptedService that lives in its thread. */
class ScriptedServer : public QObject
{
    Q_OBJECT

public:
    /** What becomes of one request. */
    struct Script
    {
        enum Kind { Answer, Fail, Hang, DropInstead, DropAfter };
        Kind kind;
        Json::Value result;
        std::optional<JsonRpcException> error;
    };
    using Handler = std::function<Json::Value(const Json::Value& params)>;

    /** @param socketPath empty for TCP */
    ScriptedServer(const std::string& socketPath, RequestLog* log);
    ~ScriptedServer() override;

    void listen();
    void stop();
    void dropConnections();
    int clientCount() const;
    void notify(const std::string& method, const Json::Value& params);
    void sendRaw(const QByteArray& bytes);
    void concludeJob(int id, JobConclusion conclusion, const std::string& failure);

    quint16 tcpPort = 0;
    std::string token;
    int versionMajor = 0;
    int versionMinor = 0;
    std::vector<Port::Data> ports;
    std::vector<Printer::Data> printers;
    std::map<int, Job::Data> jobs;
    int lastJobID = Job::kInvalidID;
    std::map<std::string, Json::Value> eeproms;
    std::map<std::string, std::vector<std::pair<EepromBackup, Json::Value>>> eepromBackups;
    std::map<std::string, std::deque<Script>> scripts;
    std::map<std::string, Handler> handlers;

private:
    struct Client
    {
        rpcwire::Peer* peer;
        QIODevice* socket;
        bool greeted = false;
        bool subscribed = false;
    };

    void accept(QIODevice* socket);
    void forget(rpcwire::Peer* peer);
    Client* clientOf(const rpcwire::Peer* peer);
    void handle(rpcwire::Peer* peer, const rpcwire::Peer::Request& request);
    void answerByDefault(rpcwire::Peer* peer, const rpcwire::Peer::Request& request);
    Json::Value result(rpcwire::Peer* peer, const std::string& method, const Json::Value& params);
    Json::Value greet(rpcwire::Peer* peer, const Json::Value& params);
    Json::Value snapshot() const;
    Json::Value makeJob(const std::string& method, const Json::Value& params);
    Job::Data& findJob(const Json::Value& params);

    const std::string m_socketPath;
    RequestLog* const m_log;
    QLocalServer m_localServer;
    QTcpServer m_tcpServer;
    std::vector<std::unique_ptr<Client>> m_clients;
    /** What happens because of a request comes after its answer. */
    std::deque<std::function<void()>> m_afterAnswer;
};

} // namespace trovek
