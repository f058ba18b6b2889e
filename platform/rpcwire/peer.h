#pragma once

#include "rpcwire/export.h"
#include "rpcwire/json_rpc_exception.h"

#include <json/value.h>

#include <QObject>

#include <functional>
#include <memory>
#include <string>

QT_BEGIN_NAMESPACE
class QIODevice;
QT_END_NAMESPACE

namespace rpcwire {

/** What a peer does not let the other side exceed. */
struct Limits {
    /** Bytes of one frame, its line break not counted, in both directions. */
    qint64 frameBytes = 64 * 1024 * 1024;
    /** Bytes that may wait to be written; past it the other side counts as not reading. */
    qint64 pendingWriteBytes = 128 * 1024 * 1024;
    /** Requests of the other side that may wait for their answer. */
    int openRequests = 256;
};

/**
 * One end of a JSON-RPC 2.0 conversation over a socket: one UTF-8 JSON text a line.
 *
 * Either side may call, notify and answer. Whatever arrives is queued and delivered from the
 * event loop in its order of arrival, one message for each turn, so nothing is ever delivered
 * inside call(); only the answer that call() waits for overtakes the queue.
 *
 * A frame that is too long or no JSON, and an answer of odd shape, break the stream's trust: the
 * peer logs it and closes. An answer to an unknown id is logged and dropped. When the connection
 * ends, for whatever reason, every waiting call and every pending request ends with an error
 * first, then closed() is emitted, once.
 *
 * One thread: the one that made it.
 */
class RPCWIRE_EXPORT Peer : public QObject
{
    Q_OBJECT

public:
    /** Receives an answer: `error` is null when `result` counts. */
    using AnswerHandler =
        std::function<void(const Json::Value& result, const std::exception* error)>;

    /** A request of the other side. Answered once, at any later time, from the peer's thread. */
    struct Request {
        std::string method;
        Json::Value params;
        Json::Value id;
    };

    /** Where the peer says what it dropped or why it closed; severity 0 error, 1 progress. */
    using LogFunction = std::function<void(int severity, const std::string& text)>;

    /**
     * @param socket an open QLocalSocket or QTcpSocket; the peer takes it over
     * @throws std::invalid_argument "Peer needs a connected QLocalSocket or QTcpSocket"
     */
    explicit Peer(QIODevice* socket, const Limits& limits = Limits(), QObject* parent = nullptr);
    ~Peer() override;

    void setLogFunction(LogFunction log);
    bool isOpen() const;
    /** Why the connection ended; empty while it stands. */
    std::string closeReason() const;
    /** Times that call() was entered: dialogs are measured by it. */
    quint64 callCount() const;

    /**
     * Sends a request and waits for its answer without running the event loop.
     * @param timeoutMs milliseconds; after it the connection is closed, since its state is unknown
     * @throws JsonRpcException an error answer
     * @throws ConnectionError the link is closed, is lost meanwhile, or the deadline passed
     */
    Json::Value call(const std::string& method, const Json::Value& params, int timeoutMs);

    /**
     * Sends a request; the handler runs once, from the event loop, never inside this call,
     * also when the link is lost or already closed (with a ConnectionError).
     * @return a number for forget()
     */
    int request(const std::string& method, const Json::Value& params, AnswerHandler handler);

    /** The handler of that request will not run; its answer is dropped without a word. */
    void forget(int request);

    /** Sends a notification; nothing happens on a closed link. */
    void notify(const std::string& method, const Json::Value& params);

    void answer(const Request& request, const Json::Value& result);
    void answerError(const Request& request, const JsonRpcException& error);

    /** Stops reading; what was already queued for writing is written, then closed() comes. */
    void closeAfterWriting(const std::string& reason);
    /** Ends the connection at once. closed() comes from the event loop. */
    void close(const std::string& reason);

signals:
    void notificationReceived(const std::string& method, const Json::Value& params);
    void requestReceived(const rpcwire::Peer::Request& request);
    /** Emitted once, from the event loop, after everything that arrived before was delivered. */
    void closed(const std::string& reason);

private:
    class RPCWIRE_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
};

} // namespace rpcwire

Q_DECLARE_METATYPE(Json::Value)
Q_DECLARE_METATYPE(rpcwire::Peer::Request)
