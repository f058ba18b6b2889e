#include "session.h"

#include "service.h"

#include <trovek/log.h>
#include <trovek/wire.h>

#include <QPointer>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\session";

namespace {

rpcwire::Limits limits()
{
    rpcwire::Limits limits;
    // Answers and notifications are small; whoever lets that many of them wait does not read.
    limits.pendingWriteBytes = 4 * 1024 * 1024;
    return limits;
}

/** The time it takes says nothing about where the texts differ. */
bool equalInConstantTime(const QByteArray& left, const QByteArray& right)
{
    if (left.size() != right.size())
        return false;
    unsigned difference = 0;
    for (int i = 0; i < left.size(); ++i)
        difference |= static_cast<unsigned char>(left[i]) ^ static_cast<unsigned char>(right[i]);
    return difference == 0;
}

Json::Value protocolVersion()
{
    Json::Value version(Json::objectValue);
    version["major"] = wire::kProtocolMajor;
    version["minor"] = wire::kProtocolMinor;
    return version;
}

/** Its data also has the service's version, for clients with texts of their own. */
JsonRpcException otherVersion(int major, int minor)
{
    const std::string text = "The service speaks protocol version " +
                             std::to_string(wire::kProtocolMajor) + "." +
                             std::to_string(wire::kProtocolMinor) + ", the client " +
                             std::to_string(major) + "." + std::to_string(minor);
    Json::Value data = wire::makeError(wire::error::kProtocolVersion, text).data();
    data["version"] = protocolVersion();
    return JsonRpcException(text, data);
}

} // namespace

Session::Session(Service& service, QIODevice* socket, const QByteArray& token, QObject* parent)
    : Client(parent)
    , m_service(service)
    , m_token(token)
    , m_peer(new rpcwire::Peer(socket, limits()))
{
    m_peer->setLogFunction([](int severity, const std::string& text) {
        // What a client does wrong is no error of the service.
        TROVEK_LOG(severity == 0 ? 1 : severity) << "Connection: " << text << std::endl;
    });
    connect(m_peer.get(), &rpcwire::Peer::requestReceived, this, &Session::take);
    connect(m_peer.get(), &rpcwire::Peer::notificationReceived, this, [this] {
        if (!m_greeted)
            m_peer->close("No greeting came first");
    });
    connect(m_peer.get(), &rpcwire::Peer::closed, this, [this](const std::string& reason) {
        TROVEK_LOG(1) << "Client left: " << reason << std::endl;
        emit gone();
    });
    connect(&service, &Service::notification, this,
            [this](const std::string& method, const Json::Value& params) {
                if (isSubscribed())
                    m_peer->notify(method, params);
            });
    m_greetingTimer.setSingleShot(true);
    connect(&m_greetingTimer, &QTimer::timeout, this,
            [this] { m_peer->close("No greeting came in time"); });
    m_greetingTimer.start(kGreetingTimeoutMs);
}

Session::~Session() = default;

void Session::close()
{
    m_peer->closeAfterWriting("The service was told to");
}

void Session::take(const rpcwire::Peer::Request& request)
{
    if (m_greeted)
        m_service.handle(request.method, request.params, *this, responderFor(request));
    else if (request.method == wire::method::kHello)
        greet(request);
    else
        m_peer->close("No greeting came first");
}

void Session::greet(const rpcwire::Peer::Request& request)
{
    try {
        checkGreeting(Params(request.params));
    } catch (const JsonRpcException& error) {
        refuse(request, error);
        return;
    } catch (const std::exception& error) {
        refuse(request, wire::makeError(wire::error::kInvalidArgument, error.what()));
        return;
    }
    m_greeted = true;
    m_greetingTimer.stop();
    Json::Value result(Json::objectValue);
    result["version"] = protocolVersion();
    result["service"] = "trovekd";
    m_peer->answer(request, result);
}

void Session::checkGreeting(const Params& params) const
{
    const Params version(params.object("version"));
    const int major = version.integer("major");
    const int minor = version.integer("minor");
    const std::string name = params.optionalString("client");
    if (major != wire::kProtocolMajor)
        throw otherVersion(major, minor);
    const std::string token = params.optionalString("token");
    if (!m_token.isEmpty() && !equalInConstantTime(m_token, QByteArray::fromStdString(token)))
        throw wire::makeError(wire::error::kAccessDenied, "The token is not the service's");
    TROVEK_LOG(1) << "Client greets: " << name << std::endl;
}

void Session::refuse(const rpcwire::Peer::Request& request, const JsonRpcException& error)
{
    m_peer->answerError(request, error);
    m_peer->closeAfterWriting(error.message());
}

Responder Session::responderFor(const rpcwire::Peer::Request& request)
{
    // An answer may come when the client has gone.
    const QPointer<rpcwire::Peer> peer(m_peer.get());
    return {[peer, request](const Json::Value& result) {
                if (peer)
                    peer->answer(request, result);
            },
            [peer, request](const JsonRpcException& error) {
                if (peer)
                    peer->answerError(request, error);
            }};
}

} // namespace trovek::service
