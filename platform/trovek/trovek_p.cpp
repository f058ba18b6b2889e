#include "trovek_p.h"

#include "connection.h"
#include "trovek/log.h"
#include "trovek/wire.h"

#include <QPointer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "platform\\trovek\\trovek";
constexpr int kConnectTimeoutMs = 5000;

std::string versionText(int major, int minor)
{
    return std::to_string(major) + '.' + std::to_string(minor);
}

/** The member "version" of a greeting's answer or refusal. */
bool readVersion(const Json::Value& object, int* major, int* minor)
{
    if (!object.isObject() || !object["version"].isObject())
        return false;
    const Json::Value& version = object["version"];
    if (!version["major"].isInt() || !version["minor"].isInt())
        return false;
    *major = version["major"].asInt();
    *minor = version["minor"].asInt();
    return true;
}

[[noreturn]] void throwVersionRefused(int major, int minor)
{
    throw std::runtime_error("The service speaks protocol version " + versionText(major, minor) +
                             ", this program " +
                             versionText(wire::kProtocolMajor, wire::kProtocolMinor));
}

const Json::Value& listMember(const Json::Value& object, const char* name)
{
    if (!object.isObject() || !object[name].isArray())
        throw std::runtime_error(std::string("Odd answer to subscribe: no list of ") + name);
    return object[name];
}

} // namespace

Trovek::Private::Private(Trovek& trovek)
    : m_trovek(trovek)
{}

// Peer and context go with it, and with them every request, event and hook that was to come.
Trovek::Private::~Private() = default;

// ---- The link

void Trovek::Private::connectTo(const Address& address)
{
    endLink();
    const QDeadlineTimer deadline(scaled(kConnectTimeoutMs));
    std::unique_ptr<rpcwire::Peer> peer = openConnection(address, deadline);
    peer->setLogFunction(
        [](int severity, const std::string& text) { TROVEK_LOG(severity) << text << std::endl; });
    greet(*peer, address, deadline);
    ++m_callCount;
    adoptSnapshot(peer->call(wire::method::kSubscribe, Json::Value(Json::objectValue),
                             remainingMs(deadline)));

    m_linkStands = true;
    m_closeWasReported = false;
    m_peer = std::move(peer);
    QObject::connect(m_peer.get(), &rpcwire::Peer::notificationReceived, &m_context,
                     [this, link = m_link](const std::string& name, const Json::Value& params) {
                         enqueue(link, [this, name, params] { handleNotification(name, params); });
                         workOff();
                     });
    QObject::connect(m_peer.get(), &rpcwire::Peer::closed, &m_context,
                     [this](const std::string& reason) { linkClosed(reason); });
    workOffLater();
}

void Trovek::Private::greet(rpcwire::Peer& peer, const Address& address,
                            const QDeadlineTimer& deadline)
{
    Json::Value greeting(Json::objectValue);
    greeting["version"]["major"] = wire::kProtocolMajor;
    greeting["version"]["minor"] = wire::kProtocolMinor;
    greeting["client"] = "trovek-ui";
    if (address.kind() == Address::Tcp)
        greeting["token"] = address.token();

    int major = 0;
    int minor = 0;
    try {
        ++m_callCount;
        const Json::Value answer = peer.call(wire::method::kHello, greeting, remainingMs(deadline));
        if (!readVersion(answer, &major, &minor))
            throw std::runtime_error("Odd answer to hello: no protocol version");
    } catch (const JsonRpcException& e) {
        // A service that refuses says its version as well; what else it refuses is told as it is.
        if (readVersion(e.data(), &major, &minor) && major != wire::kProtocolMajor)
            throwVersionRefused(major, minor);
        throw;
    }
    if (major != wire::kProtocolMajor)
        throwVersionRefused(major, minor);
    m_serviceVersion = versionText(major, minor);
}

void Trovek::Private::adoptSnapshot(const Json::Value& snapshot)
{
    const Json::Value& ports = listMember(snapshot, "ports");
    const Json::Value& printers = listMember(snapshot, "printers");
    ++m_link;
    PresentPrinters gone = std::exchange(m_printers, {});
    m_ports.clear();

    for (const Json::Value& value : ports) {
        try {
            const Port port(wire::portFromJson(value));
            if (m_ports.insert(port).second)
                enqueue(m_link, [this, port] { announce(port); });
        } catch (const std::exception& e) {
            TROVEK_LOG(0) << "Port left out: " << e.what() << std::endl;
        }
    }
    for (const Json::Value& value : printers) {
        try {
            Printer* const printer = update(wire::printerFromJson(value));
            gone.remove(printer);
            if (findPresent(printer->key()))
                continue;
            m_printers.add(printer);
            enqueue(m_link, [this, printer] { announce(printer); });
        } catch (const std::exception& e) {
            TROVEK_LOG(0) << "Printer left out: " << e.what() << std::endl;
        }
    }
    for (Printer* const printer : gone.list())
        markGone(printer);
}

void Trovek::Private::linkClosed(const std::string& reason)
{
    TROVEK_LOG(1) << "Link to the service closed: " << reason << std::endl;
    m_closeWasReported = true;
    enqueue(m_link, [this] { endLink(); });
    workOff();
}

void Trovek::Private::endLink()
{
    if (!m_linkStands)
        return;
    m_linkStands = false;

    retirePeer();

    const auto fromThisLink = [this](const Event& event) {
        return event.link == m_link;
    };
    m_events.erase(std::remove_if(m_events.begin(), m_events.end(), fromThisLink), m_events.end());
    const PresentPrinters announced = std::exchange(m_announcedPrinters, {});
    for (Printer* const printer : announced.list()) {
        enqueue(0, [this, printer, link = m_link] {
            if (link == m_link) {
                m_printers.remove(printer);
                markGone(printer);
            }
            withdraw(printer);
        });
    }
    for (const Port& port : std::exchange(m_announcedPorts, {})) {
        enqueue(0, [this, port, link = m_link] {
            if (link == m_link)
                m_ports.erase(port);
            withdraw(port);
        });
    }
    enqueue(0, [this, link = m_link] {
        if (link == m_link) {
            // What was never announced goes without a word.
            for (Printer* const printer : m_printers.list())
                markGone(printer);
            m_printers.clear();
            m_ports.clear();
        }
        callHook("disconnected", [this] { m_trovek.emitDisconnected(); });
    });
    workOffLater();
}

void Trovek::Private::retirePeer()
{
    m_peer->disconnect(&m_context);
    rpcwire::Peer* const peer = m_peer.release();
    if (m_closeWasReported) {
        peer->deleteLater();
        return;
    }
    // Requests that wait for their answer still get their error, from the event loop.
    peer->setParent(&m_context);
    QObject::connect(peer, &rpcwire::Peer::closed, peer, &QObject::deleteLater);
    peer->close("Disconnected");
}

Json::Value Trovek::Private::call(const char* method, const Json::Value& params, int timeoutMs)
{
    if (!isOpen())
        throw rpcwire::ConnectionError("Not connected to the service");
    ++m_callCount;
    return m_peer->call(method, params, scaled(timeoutMs));
}

int Trovek::Private::scaled(int timeoutMs) const
{
    const double product = std::ceil(timeoutMs * m_deadlineScale);
    return static_cast<int>(
        std::min(std::max(product, 1.0), double(std::numeric_limits<int>::max())));
}

void Trovek::Private::request(const std::string& method, const Json::Value& params,
                              rpcwire::Peer::AnswerHandler handler)
{
    if (m_peer) {
        m_peer->request(method, params, std::move(handler));
        return;
    }
    const auto fail = [handler = std::move(handler)] {
        const rpcwire::ConnectionError error("Not connected to the service");
        handler(Json::Value(), &error);
    };
    QMetaObject::invokeMethod(&m_context, fail, Qt::QueuedConnection);
}

// ---- Events

void Trovek::Private::enqueue(int link, std::function<void()> action)
{
    m_events.push_back({link, std::move(action)});
}

void Trovek::Private::workOffLater()
{
    QMetaObject::invokeMethod(
        &m_context, [this] { workOff(); }, Qt::QueuedConnection);
}

void Trovek::Private::workOff()
{
    const QPointer<QObject> alive(&m_context);
    while (alive && !m_events.empty()) {
        const Event event = std::move(m_events.front());
        m_events.pop_front();
        event.action();
    }
}

void Trovek::Private::callHook(const char* name, const std::function<void()>& hook)
{
    try {
        hook();
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << "Hook for " << name << " threw: " << e.what() << std::endl;
    } catch (...) {
        TROVEK_LOG(0) << "Hook for " << name << " threw something" << std::endl;
    }
}

} // namespace trovek
