#pragma once

#include <trovek/address.h>
#include <trovek/eeprom_backup.h>
#include <trovek/job.h>
#include <trovek/port.h>
#include <trovek/printer.h>

#include <rpcwire/json_rpc_exception.h>

#include <json/value.h>

#include <QByteArray>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace trovek {

/**
 * The service's side of the wire for tests: real sockets, frames and notifications, scripted
 * answers.
 *
 * It runs in a thread of its own and listens when the constructor returns, so that a test's
 * thread may call the client's operations, which wait. Every function may be called from the
 * test's thread and from the functions given to onRequest(). What is there before a client connects
 * is the client's snapshot; what changes afterwards is notified.
 *
 * Without a script every method is answered as a well-behaved service does: print, print_to_file,
 * slice and jog make a job and notify it, cancel_job concludes it, and so on.
 */
class ScriptedService
{
public:
    enum Transport { Local, Tcp };

    struct Request
    {
        std::string method;
        Json::Value params;
    };

    enum class Drop {
        /** The link ends when the request arrives. */
        InsteadOfAnswering,
        AfterAnswering,
    };

    explicit ScriptedService(Transport transport = Local);
    ~ScriptedService();
    ScriptedService(const ScriptedService&) = delete;
    ScriptedService& operator=(const ScriptedService&) = delete;

    /** The same for the whole life, also after stop() and start(). */
    Address address() const;

    /** Closes every link and listens no more. Jobs, printers and ports are kept. */
    void stop();
    /** Listens again, at the same address. */
    void start();
    /** Closes every link and goes on listening. */
    void dropConnections();
    /** Clients that have sent their greeting and stand. */
    int clientCount() const;
    /** What the greeting answers. */
    void setProtocolVersion(int major, int minor);

    // ---- The world

    void addPort(const Port::Data& port);
    /** Of that name and identity. */
    void changePort(const Port::Data& port);
    /** Every port of that name. */
    void removePort(const std::string& name);
    /** A port of its portName, where there is one, is reported as opened first. */
    void addPrinter(const Printer::Data& printer);
    void changePrinter(const Printer::Data& printer);
    /** A port that it was on is reported as closed afterwards. */
    void removePrinter(const std::string& key);
    Printer::Data printer(const std::string& key) const;

    /** Stores the job without notifying; its ID is never given out by the service afterwards. */
    void setJob(const Job::Data& job);
    Job::Data job(int id) const;
    /** The one that was made last; Job::kInvalidID when there is none. */
    int lastJobID() const;
    void notifyJobAdded(int id);
    void notifyJobChanged(int id);
    void notifyJobConcluded(int id);
    /** Stores the conclusion, then notifies the change, then the conclusion. */
    void concludeJob(int id, JobConclusion conclusion, const std::string& failure = std::string());

    /** What read_eeprom answers for that machine until it is written or reset. */
    void setEeprom(const std::string& machine, const Json::Value& map);
    /** One more for that machine to offer; add the newest first. */
    void addEepromBackup(const std::string& machine, const EepromBackup& backup,
                         const Json::Value& map);

    // ---- Scripts: the "next" ones are used up one for each request of the method, in order

    void failNext(const std::string& method, const JsonRpcException& error);
    void failAlways(const std::string& method, const JsonRpcException& error);
    void answerNext(const std::string& method, const Json::Value& result);
    /**
     * Answers every request of the method from now on. Runs in the service's thread; a
     * JsonRpcException that it throws is the answer, as is any other std::exception.
     */
    void onRequest(const std::string& method,
                   std::function<Json::Value(const Json::Value& params)> handler);
    /** The next request is never answered. */
    void hangNext(const std::string& method);
    void dropConnectionOn(const std::string& method, Drop drop = Drop::InsteadOfAnswering);
    /** Forgets all scripts of the method. */
    void clearScripts(const std::string& method);

    /** Bytes as they are, to every client. */
    void sendRaw(const QByteArray& bytes);
    /** Any notification, to every client. */
    void notify(const std::string& method, const Json::Value& params);

    // ---- What was received

    /** All requests in their order of arrival, the greeting and the subscription included. */
    std::vector<Request> requests() const;
    /** The parameters of each request of that method. */
    std::vector<Json::Value> requests(const std::string& method) const;
    /** Parameters of the last one; null when there was none. */
    Json::Value lastRequest(const std::string& method) const;
    /** Waits, without an event loop; false when they have not come within `timeoutMs`. */
    bool waitForRequest(const std::string& method, int count = 1, int timeoutMs = 5000) const;
    void clearRequests();

    // ---- Plausible data

    /** A connected, idle machine of that name, on no port. */
    static Printer::Data machine(const std::string& name, Printer::Type type);
    /** Named "archetype " and the type's number: can be exported for and not printed on. */
    static Printer::Data archetype(Printer::Type type);
    /** A port with a USB identity made of its name, closed and not on the whitelist. */
    static Port::Data port(const std::string& name);

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek
