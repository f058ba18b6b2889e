#pragma once

#include <trovek/address.h>

#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <string>

namespace trovek::service {

class Service;

struct ServerOptions
{
    /** A plain name for a socket in the user's runtime folder, or an absolute path. */
    std::string socketName;
    /** Where the TCP token stands, and the socket when there is no runtime folder. */
    QString stateDir;
    /** A port on the loopback interface, 0 for any free one; no TCP without a value. */
    std::optional<quint16> tcpPort;
};

/**
 * Lets clients in: over a local socket that only its own user reaches, and over TCP when asked for.
 *
 * A TCP client proves by a token that it can read the service's state folder. When the server goes,
 * so do its connections and the socket's file.
 */
class Server : public QObject
{
    Q_OBJECT

public:
    static constexpr int kClientsAtMost = 64;

    /**
     * @param service not owned; must outlive the server
     * @throws std::runtime_error for a user: another service is there, the folder is not safe, ...
     */
    Server(Service& service, const ServerOptions& options, QObject* parent = nullptr);
    ~Server() override;

    /** With the socket's full path. */
    Address localAddress() const;
    /** With the token; nothing without TCP. */
    std::optional<Address> tcpAddress() const;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service
