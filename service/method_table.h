#pragma once

#include <rpcwire/json_rpc_exception.h>
#include <trovek/slicer_configuration.h>

#include <json/value.h>

#include <QObject>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace trovek::service {

/** The service failed on its own. */
JsonRpcException internalError(const std::string& text);

/** The other end of a connection, as methods see it. */
class Client : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    bool isSubscribed() const { return m_subscribed; }
    /** From now on it receives notifications. */
    void subscribe() { m_subscribed = true; }
    /** Ends the connection when what was answered has been written; gone() comes later. */
    virtual void close() = 0;

signals:
    /** Emitted once, when the connection has ended. */
    void gone();

private:
    bool m_subscribed = false;
};

/**
 * The parameters of a request. What is missing or of a wrong kind throws JsonRpcException
 * InvalidArgumentError, with the member's name in its text.
 */
class Params
{
public:
    /** @throws JsonRpcException InvalidArgumentError unless it is an object, or null for an empty
     * one */
    explicit Params(Json::Value value);

    std::string string(const char* name) const;
    /** Empty when it is missing or null. */
    std::string optionalString(const char* name) const;
    int integer(const char* name) const;
    /** An integer within both bounds. */
    int integer(const char* name, int least, int most) const;
    bool boolean(const char* name) const;
    /** A finite number. */
    double number(const char* name) const;
    const Json::Value& array(const char* name) const;
    /** False for one that is null, too. */
    bool has(const char* name) const { return !m_value[name].isNull(); }
    std::vector<std::string> strings(const char* name) const;
    SlicerConfiguration slicerConfiguration(const char* name) const;
    const Json::Value& object(const char* name) const;
    const Json::Value& all() const { return m_value; }

private:
    Json::Value m_value;
};

/** Where the answer to one request goes; once, at any later time. */
struct Responder
{
    std::function<void(const Json::Value& result)> result;
    std::function<void(const JsonRpcException& error)> error;
};

struct Call
{
    const Params& params;
    Client& client;
    const Responder& respond;
};

/** What the service can be asked, by name. */
class MethodTable
{
public:
    /** Gives the result, or throws. */
    using Method = std::function<Json::Value(const Call& call)>;
    /** Keeps a copy of call.respond and answers later, or throws. */
    using LateMethod = std::function<void(const Call& call)>;

    void add(const char* name, Method method);
    void addLate(const char* name, LateMethod method);
    bool contains(const std::string& name) const { return m_methods.count(name) > 0; }

    /** Runs the method and answers; nothing is ever thrown. */
    void handle(const std::string& name, const Json::Value& params, Client& client,
                const Responder& respond) const;

private:
    std::map<std::string, LateMethod> m_methods;
};

} // namespace trovek::service
