#pragma once

#include "method_table.h"

#include <rpcwire/peer.h>

#include <QByteArray>
#include <QTimer>

#include <memory>

QT_BEGIN_NAMESPACE
class QIODevice;
QT_END_NAMESPACE

namespace trovek::service {

class Service;

/**
 * One connection: greets, then hands requests to the service and notifications to the client.
 *
 * It ends itself, by gone(), when the other side does not greet properly, does not read, or leaves.
 */
class Session : public Client
{
    Q_OBJECT

public:
    static constexpr int kGreetingTimeoutMs = 10000;

    /**
     * @param socket connected; the session takes it over
     * @param token  what the greeting must hold; empty when the link itself is proof enough
     */
    Session(Service& service, QIODevice* socket, const QByteArray& token,
            QObject* parent = nullptr);
    ~Session() override;

    void close() override;

private:
    void take(const rpcwire::Peer::Request& request);
    void greet(const rpcwire::Peer::Request& request);
    void checkGreeting(const Params& params) const;
    void refuse(const rpcwire::Peer::Request& request, const JsonRpcException& error);
    Responder responderFor(const rpcwire::Peer::Request& request);

    Service& m_service;
    const QByteArray m_token;
    const std::unique_ptr<rpcwire::Peer> m_peer;
    QTimer m_greetingTimer;
    bool m_greeted = false;
};

} // namespace trovek::service
