#include "connection.h"

#include "trovek/peer_credentials.h"
#include "trovek/text.h"

#include <QLocalSocket>
#include <QNetworkProxy>
#include <QTcpSocket>

#include <algorithm>
#include <stdexcept>

namespace trovek {

namespace {

[[noreturn]] void throwNotReached(const Address& address, const QIODevice& socket)
{
    throw std::runtime_error("Cannot reach the service at " + address.toText() + ": " +
                             toStdString(socket.errorString()));
}

std::unique_ptr<QIODevice> openLocal(const Address& address, const QDeadlineTimer& deadline)
{
    const std::string path = localSocketPath(address.name(), defaultStateDir());
    checkSocketFolder(path);
    auto socket = std::make_unique<QLocalSocket>();
    socket->connectToServer(toQString(path));
    if (!socket->waitForConnected(remainingMs(deadline)))
        throwNotReached(address, *socket);
    if (!peerIsSameUser(socket->socketDescriptor()))
        throw std::runtime_error("The service at " + address.toText() + " is another user's");
    return socket;
}

std::unique_ptr<QIODevice> openTcp(const Address& address, const QDeadlineTimer& deadline)
{
    auto socket = std::make_unique<QTcpSocket>();
    socket->setProxy(QNetworkProxy::NoProxy);
    socket->connectToHost(toQString(address.host()), address.port());
    if (!socket->waitForConnected(remainingMs(deadline)))
        throwNotReached(address, *socket);
    // Requests are small and waited for.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    return socket;
}

} // namespace

int remainingMs(const QDeadlineTimer& deadline)
{
    return static_cast<int>(std::max<qint64>(1, deadline.remainingTime()));
}

std::unique_ptr<rpcwire::Peer> openConnection(const Address& address,
                                              const QDeadlineTimer& deadline)
{
    std::unique_ptr<QIODevice> socket = address.kind() == Address::Local
                                            ? openLocal(address, deadline)
                                            : openTcp(address, deadline);
    return std::make_unique<rpcwire::Peer>(socket.release());
}

} // namespace trovek
