#include "rpcwire/socket.h"

#include <QLocalSocket>
#include <QTcpSocket>

#include <stdexcept>

namespace rpcwire {

namespace {

/** Qt leaves the rest in the system's buffers, so that a flood makes the sender wait. */
constexpr qint64 kReadBufferBytes = 1024 * 1024;

} // namespace

Socket::Socket(QIODevice* device)
    : m_device(device)
    , m_local(qobject_cast<QLocalSocket*>(device))
    , m_tcp(qobject_cast<QTcpSocket*>(device))
{
    if ((!m_local && !m_tcp) || !isConnected())
        throw std::invalid_argument("Peer needs a connected QLocalSocket or QTcpSocket");
    if (m_local) {
        m_local->setReadBufferSize(kReadBufferBytes);
    } else {
        m_tcp->setReadBufferSize(kReadBufferBytes);
        // Messages are small and someone waits for each.
        m_tcp->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    }
}

bool Socket::isConnected() const
{
    return m_local ? m_local->state() == QLocalSocket::ConnectedState
                   : m_tcp->state() == QAbstractSocket::ConnectedState;
}

bool Socket::hasEnded() const
{
    return m_local ? m_local->state() == QLocalSocket::UnconnectedState
                   : m_tcp->state() == QAbstractSocket::UnconnectedState;
}

bool Socket::hasBytes() const
{
    return m_device->isReadable() && m_device->bytesAvailable() > 0;
}

bool Socket::write(std::string_view bytes)
{
    const auto size = static_cast<qint64>(bytes.size());
    if (!isConnected() || m_device->write(bytes.data(), size) != size)
        return false;
    // Without it the bytes would wait for the event loop.
    if (m_local)
        m_local->flush();
    else
        m_tcp->flush();
    return true;
}

void Socket::disconnectAfterWriting()
{
    if (m_local)
        m_local->disconnectFromServer();
    else
        m_tcp->disconnectFromHost();
}

void Socket::abort()
{
    if (m_local)
        m_local->abort();
    else
        m_tcp->abort();
}

void Socket::onDisconnected(QObject* context, const std::function<void()>& slot) const
{
    if (m_local)
        QObject::connect(m_local, &QLocalSocket::disconnected, context, slot);
    else
        QObject::connect(m_tcp, &QAbstractSocket::disconnected, context, slot);
}

} // namespace rpcwire
