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
struct Limits
{
    /** Bytes of one frame, its line break not counted, in both directions. */
    qint64 frameBytes = 64 * 1024 * 1024;
    /** Bytes that may wait to be written; past it the other side counts as not reading. */
    qint64 pendingWriteBytes = 128 * 1024 * 1024;
    /** Requests of the other side that may wait for their answer; more get "TooManyRequests". */
    int openRequests = 4096;
    /** Milliseconds that closeAfterWriting() gives the other side to read what was written. */
    int closingMs = 5000;
};

/**
 * One end of a JSON-RPC 2.0 conversation over a socket: one UTF-8 JSON text a line.
 *
 * Either side may call, notify and answer. Whatever arrives is queued and delivered from the
 * event loop in its order of arrival, one message for each turn, so nothing is ever delivered
 * inside call(); only the answer that call() waits for overtakes the queue.
 *
 * A frame that is too long or no JSON object, and an answer of odd shape, break the stream's trust:
 * the peer logs it and closes. An answer to an unknown id is logged and dropped. When the
 * connection ends, for whatever reason, every waiting call and every pending request ends with an
 * error first, then closed() is emitted, once.
 *
 * A frame of our own that exceeds the limit is never sent: a call or request fails with the
 * ConnectionError "Message is too large" and an answer becomes an error with that message, while
 * the connection stands; a notification is logged and dropped.
 *
 * A peer may be deleted in any handler and any receiver of its signals, with pending requests too:
 * their handlers do not run then. A handler that throws is logged. While more than a thousand
 * messages wait for their delivery, nothing further is read, except by call().
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
    struct Request
    {
        std::string method;
        /** An object or an array; null when the other side sent none. */
        Json::Value params;
        Json::Value id;
    };

    /**
     * Where the peer says what it dropped or why it closed; severity 0 error, 1 progress.
     *
     * Called at once, even from within call(): it must not touch the peer.
     */
    using LogFunction = std::function<void(int severity, const std::string& text)>;

    /**
     * @param socket a connected QLocalSocket or QTcpSocket; the peer takes it over
     * @throws std::invalid_argument "Peer needs a connected QLocalSocket or QTcpSocket"
     */
    explicit Peer(QIODevice* socket, const Limits& limits = Limits(), QObject* parent = nullptr);
    ~Peer() override;

    /** Without one nothing is logged. */
    void setLogFunction(LogFunction log);
    /** False from the moment that the end is known or asked for, so before closed(). */
    bool isOpen() const;
    /** Why the connection ended; empty while it is open. */
    std::string closeReason() const;
    /** Times that call() was entered: dialogs are measured by it. */
    quint64 callCount() const;

    /**
     * Sends a request and waits for its answer without running the event loop.
     * @param params    an object or an array; null sends none
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

    /** Nothing happens on a closed link; a second answer to a request is logged and dropped. */
    void answer(const Request& request, const Json::Value& result);
    void answerError(const Request& request, const JsonRpcException& error);

    /** Stops reading at once; what waits to be written is written, then closed() comes. */
    void closeAfterWriting(const std::string& reason);
    /** Ends the connection at once. closed() comes from the event loop. */
    void close(const std::string& reason);

signals:
    /** Null params: the other side sent none. */
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
