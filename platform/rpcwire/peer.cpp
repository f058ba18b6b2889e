#include "rpcwire/peer.h"

#include "rpcwire/delivery_queue.h"
#include "rpcwire/frame_splitter.h"
#include "rpcwire/json_text.h"
#include "rpcwire/message.h"
#include "rpcwire/pending_requests.h"
#include "rpcwire/socket.h"

#include <QDeadlineTimer>
#include <QIODevice>
#include <QScopedValueRollback>
#include <QTimer>

#include <limits>
#include <optional>
#include <set>
#include <utility>

namespace rpcwire {

namespace {

constexpr qint64 kReadChunkBytes = 64 * 1024;
/** Undelivered messages from which on nothing further is read. */
constexpr std::size_t kMaxBacklog = 1000;

constexpr char kTooLarge[] = "Message is too large";
constexpr char kTooManyRequests[] = "TooManyRequests";

JsonRpcException tooManyRequests()
{
    const std::string message = "Too many requests wait for their answer";
    Json::Value data(Json::objectValue);
    data["name"] = kTooManyRequests;
    data["message"] = message;
    return JsonRpcException(message, data);
}

} // namespace

class Peer::Private
{
public:
    enum class State { Open, Closing, Closed };

    /** The one call that waits. */
    struct WaitingCall
    {
        const int id;
        std::optional<Message> answer;
    };

    Private(Peer* peer, QIODevice* device, const Limits& peerLimits);

    void log(int severity, const std::string& text) const;
    int takeId();

    void readAvailable();
    void handleFrame(std::string_view frame);
    void handleRequest(Message message);
    void handleAnswer(Message message);
    void refuseStream(ErrorCode code, const std::string& message, const std::string& reason);
    void distrustStream(const std::string& reason);

    bool isTooLarge(const std::string& line) const;
    void write(std::string line);
    void conclude(const Request& request, std::string line);

    void deliverOutcome(int id, Json::Value result, std::shared_ptr<std::exception> error);
    void deliverFailure(int id, const std::string& text);
    void runHandler(int id, const Json::Value& result, const std::exception* error);

    void close(const std::string& reason);

    Peer* const q;
    const Limits limits;
    Socket socket;
    FrameSplitter splitter;
    std::shared_ptr<const LogFunction> logFunction;

    State state = State::Open;
    std::string closeReason;
    bool reading = false;

    int lastId = 0;
    quint64 callCount = 0;
    WaitingCall* waiting = nullptr;
    PendingRequests pending;
    /** Ids of the other side's requests; nothing keeps it from using one twice. */
    std::multiset<Json::Value> unanswered;

    DeliveryQueue deliveries;
};

Peer::Private::Private(Peer* peer, QIODevice* device, const Limits& peerLimits)
    : q(peer)
    , limits(peerLimits)
    , socket(device)
    , splitter(static_cast<std::size_t>(peerLimits.frameBytes))
    , deliveries(peer, [this] { readAvailable(); })
{}

void Peer::Private::log(int severity, const std::string& text) const
{
    if (logFunction && *logFunction)
        (*logFunction)(severity, text);
}

/** Above zero; starts over in the unlikely case that they run out. */
int Peer::Private::takeId()
{
    lastId = lastId == std::numeric_limits<int>::max() ? 1 : lastId + 1;
    return lastId;
}

/** The only place that reads, and that notices the end of the connection. */
void Peer::Private::readAvailable()
{
    if (reading)
        return;
    const QScopedValueRollback<bool> guard(reading, true);
    while (state == State::Open && socket.hasBytes()) {
        // A call needs its answer, wherever in the stream that stands.
        if (!waiting && deliveries.size() > kMaxBacklog)
            return;
        const QByteArray bytes = socket.device()->read(kReadChunkBytes);
        splitter.append(std::string_view(bytes.data(), static_cast<std::size_t>(bytes.size())));
        std::string_view frame;
        auto result = FrameSplitter::Result::Incomplete;
        while (state == State::Open &&
               (result = splitter.next(&frame)) == FrameSplitter::Result::Frame)
            handleFrame(frame);
        if (state == State::Open && result == FrameSplitter::Result::TooLong)
            distrustStream("A frame exceeds the limit of " + std::to_string(limits.frameBytes) +
                           " bytes");
    }
    const bool ended = state == State::Open ? !socket.isConnected() : socket.hasEnded();
    if (state == State::Closed || !ended)
        return;
    if (state == State::Open && splitter.unfinishedBytes() > 0)
        log(1, "The connection ended within a frame");
    close("Connection closed by the other side");
}

void Peer::Private::handleFrame(std::string_view frame)
{
    Json::Value document;
    std::string reason;
    if (!parseJson(frame, &document, &reason)) {
        refuseStream(ParseError, "Parse error", "A frame is not JSON: " + reason);
        return;
    }
    if (!document.isObject()) {
        refuseStream(InvalidRequest, "Invalid request", "A frame is not a JSON object");
        return;
    }
    Message message = readMessage(std::move(document));
    switch (message.kind) {
    case Message::Kind::Request:
        handleRequest(std::move(message));
        break;
    case Message::Kind::Notification:
        deliveries.append(
            [this, method = std::move(message.method), params = std::move(message.params)] {
                emit q->notificationReceived(method, params);
            });
        break;
    case Message::Kind::Answer:
        handleAnswer(std::move(message));
        break;
    case Message::Kind::BadRequest:
        log(0, "Dropped the bad request " + quoted(message.method) + ": " + message.defect);
        if (message.hasId)
            write(errorLine(message.id, JsonRpcException("Invalid request: " + message.defect,
                                                         Json::Value(), InvalidRequest)));
        break;
    case Message::Kind::BadAnswer:
        distrustStream("An answer is odd: " + message.defect);
        break;
    }
}

void Peer::Private::handleRequest(Message message)
{
    if (unanswered.size() >= static_cast<std::size_t>(limits.openRequests)) {
        log(0, "Dropped the request " + quoted(message.method) + ": too many wait");
        write(errorLine(message.id, tooManyRequests()));
        return;
    }
    unanswered.insert(message.id);
    deliveries.append(
        [this, request = Request{std::move(message.method), std::move(message.params),
                                 std::move(message.id)}] { emit q->requestReceived(request); });
}

void Peer::Private::handleAnswer(Message message)
{
    const int id = message.id.isInt() ? message.id.asInt() : 0;
    if (waiting && waiting->id == id && !waiting->answer) {
        waiting->answer = std::move(message);
        return;
    }
    switch (pending.conclude(id)) {
    case PendingRequests::Conclusion::Wanted: {
        std::shared_ptr<std::exception> error;
        if (message.error)
            error = std::make_shared<JsonRpcException>(*message.error);
        deliverOutcome(id, std::move(message.result), std::move(error));
        break;
    }
    case PendingRequests::Conclusion::Forgotten:
        break;
    case PendingRequests::Conclusion::Unknown:
        log(0, "Dropped the answer to the unknown request " + toJsonLine(message.id));
        break;
    }
}

/** Says so to the other side, which may be a program in the making, and closes. */
void Peer::Private::refuseStream(ErrorCode code, const std::string& message,
                                 const std::string& reason)
{
    log(0, reason);
    write(errorLine(Json::Value(), JsonRpcException(message, Json::Value(), code)));
    q->closeAfterWriting(reason);
}

void Peer::Private::distrustStream(const std::string& reason)
{
    log(0, reason);
    close(reason);
}

bool Peer::Private::isTooLarge(const std::string& line) const
{
    return line.size() > static_cast<std::size_t>(limits.frameBytes);
}

void Peer::Private::write(std::string line)
{
    if (state != State::Open)
        return;
    line += '\n';
    // A connection that takes nothing has ended; readAvailable() comes to know it.
    if (!socket.write(line))
        return;
    if (socket.device()->bytesToWrite() > limits.pendingWriteBytes)
        distrustStream("The other side does not read");
}

void Peer::Private::conclude(const Request& request, std::string line)
{
    if (state != State::Open)
        return;
    const auto id = unanswered.find(request.id);
    if (id == unanswered.end()) {
        log(0, "Dropped a second answer to the request " + quoted(request.method));
        return;
    }
    unanswered.erase(id);
    if (isTooLarge(line)) {
        log(0, "The answer to " + quoted(request.method) + " is too large");
        line = errorLine(request.id, JsonRpcException(kTooLarge, Json::Value(), InternalError));
    }
    write(std::move(line));
}

void Peer::Private::deliverOutcome(int id, Json::Value result,
                                   std::shared_ptr<std::exception> error)
{
    deliveries.append([this, id, result = std::move(result), error = std::move(error)] {
        runHandler(id, result, error.get());
    });
}

void Peer::Private::deliverFailure(int id, const std::string& text)
{
    deliverOutcome(id, Json::Value(), std::make_shared<ConnectionError>(text));
}

void Peer::Private::runHandler(int id, const Json::Value& result, const std::exception* error)
{
    const AnswerHandler handler = pending.takeHandler(id);
    if (!handler)
        return;
    // The handler may delete the peer.
    const std::shared_ptr<const LogFunction> logAfterwards = logFunction;
    try {
        handler(result, error);
    } catch (const std::exception& exception) {
        if (logAfterwards && *logAfterwards)
            (*logAfterwards)(0, std::string("A handler of an answer failed: ") + exception.what());
    }
}

void Peer::Private::close(const std::string& reason)
{
    if (state == State::Closed)
        return;
    if (closeReason.empty())
        closeReason = reason;
    state = State::Closed;
    for (const int id : pending.concludeAll())
        deliverFailure(id, closeReason);
    deliveries.append([this, text = closeReason] { emit q->closed(text); });
    socket.abort();
}

Peer::Peer(QIODevice* socket, const Limits& limits, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>(this, socket, limits))
{
    socket->setParent(this);
    // While a call waits it reads on its own: closing the socket is not for slots that run inside
    // the socket's waiting.
    const auto readUnlessWaiting = [this] {
        if (!d->waiting)
            d->readAvailable();
    };
    connect(socket, &QIODevice::readyRead, this, readUnlessWaiting);
    d->socket.onDisconnected(this, readUnlessWaiting);
    // What came before is not announced again.
    QMetaObject::invokeMethod(this, readUnlessWaiting, Qt::QueuedConnection);
}

Peer::~Peer()
{
    d->socket.device()->disconnect(this);
}

void Peer::setLogFunction(LogFunction log)
{
    d->logFunction = std::make_shared<const LogFunction>(std::move(log));
}

bool Peer::isOpen() const
{
    return d->state == Private::State::Open;
}

std::string Peer::closeReason() const
{
    return d->closeReason;
}

quint64 Peer::callCount() const
{
    return d->callCount;
}

Json::Value Peer::call(const std::string& method, const Json::Value& params, int timeoutMs)
{
    ++d->callCount;
    const QDeadlineTimer deadline(qMax(0, timeoutMs));
    Private::WaitingCall waiting{d->takeId(), std::nullopt};
    std::string line = requestLine(waiting.id, method, params);
    if (d->isTooLarge(line))
        throw ConnectionError(kTooLarge);

    const QScopedValueRollback<Private::WaitingCall*> guard(d->waiting, &waiting);
    d->write(std::move(line));
    for (;;) {
        d->readAvailable();
        if (waiting.answer)
            break;
        if (!isOpen())
            throw ConnectionError(d->closeReason);
        if (deadline.hasExpired()) {
            d->close("No answer to " + quoted(method) + " within " + std::to_string(timeoutMs) +
                     " ms");
            throw ConnectionError(d->closeReason);
        }
        d->socket.device()->waitForReadyRead(static_cast<int>(deadline.remainingTime()));
    }
    if (waiting.answer->error)
        throw JsonRpcException(*waiting.answer->error);
    return std::move(waiting.answer->result);
}

int Peer::request(const std::string& method, const Json::Value& params, AnswerHandler handler)
{
    const int id = d->takeId();
    std::string line = requestLine(id, method, params);
    const bool sendable = isOpen() && !d->isTooLarge(line);
    d->pending.add(id, std::move(handler));
    if (sendable) {
        d->write(std::move(line));
    } else {
        d->pending.conclude(id);
        d->deliverFailure(id, isOpen() ? kTooLarge : d->closeReason);
    }
    return id;
}

void Peer::forget(int request)
{
    d->pending.forget(request);
}

void Peer::notify(const std::string& method, const Json::Value& params)
{
    std::string line = notificationLine(method, params);
    if (d->isTooLarge(line))
        d->log(0, "Dropped the notification " + quoted(method) + ": " + kTooLarge);
    else
        d->write(std::move(line));
}

void Peer::answer(const Request& request, const Json::Value& result)
{
    d->conclude(request, resultLine(request.id, result));
}

void Peer::answerError(const Request& request, const JsonRpcException& error)
{
    d->conclude(request, errorLine(request.id, error));
}

void Peer::closeAfterWriting(const std::string& reason)
{
    if (!isOpen())
        return;
    d->state = Private::State::Closing;
    d->closeReason = reason;
    QTimer::singleShot(d->limits.closingMs, this, [this, reason] { d->close(reason); });
    d->socket.disconnectAfterWriting();
    d->readAvailable();
}

void Peer::close(const std::string& reason)
{
    d->close(reason);
}

} // namespace rpcwire
