#pragma once

#include "server.h"
#include "service.h"

#include <trovek/address.h>

#include <memory>
#include <optional>
#include <string>

namespace trovek::service {

/**
 * The whole service in a thread of its host, reached like one in a process of its own.
 *
 * It is ready when the constructor returns, and has shut down in order when the destructor does.
 * Any thread may make it, in a program that has a QCoreApplication.
 */
class EmbeddedService
{
public:
    struct Options
    {
        /** See ServerOptions; plain names meet other programs' clients in the runtime folder. */
        std::string socketName = "trovekd";
        /** UTF-8; one service at a time may use it. The user's own when empty. */
        std::string stateDir;
        /** UTF-8; the compiled-in machines when empty. */
        std::string machinesFile;
        double timeScale = 1.0;
        std::optional<quint16> tcpPort;
        /** UTF-8; see ServiceOptions. */
        std::string firmwareCatalogue;
        std::string firmwareCache;
        std::string slicer;
        int slicesAtOnce = 0;
        std::string scannerFile;
    };

    /** @throws std::runtime_error for a user: why the service cannot start */
    explicit EmbeddedService(const Options& options);
    ~EmbeddedService();
    EmbeddedService(const EmbeddedService&) = delete;
    EmbeddedService& operator=(const EmbeddedService&) = delete;

    /** What a client connects to. */
    const Address& address() const;
    /** The same over TCP, with the token; nothing when it was not asked for. */
    const std::optional<Address>& tcpAddress() const;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service
