#pragma once

#include <QtGlobal>

#include <functional>
#include <string_view>

QT_BEGIN_NAMESPACE
class QIODevice;
class QLocalSocket;
class QObject;
class QTcpSocket;
QT_END_NAMESPACE

namespace rpcwire {

/** What QLocalSocket and QTcpSocket have in common, but no base class of theirs offers. */
class Socket
{
public:
    /** @throws std::invalid_argument as Peer's constructor does */
    explicit Socket(QIODevice* device);

    QIODevice* device() const { return m_device; }
    bool isConnected() const;
    /** False also while the last bytes are being written. */
    bool hasEnded() const;
    /** False also when what was read before the connection's end is read up. */
    bool hasBytes() const;
    /** False when the connection took nothing. */
    bool write(std::string_view bytes);
    void disconnectAfterWriting();
    void abort();

    /** The slot runs, in the context's thread, each time that the connection has ended. */
    void onDisconnected(QObject* context, const std::function<void()>& slot) const;

private:
    QIODevice* const m_device;
    QLocalSocket* const m_local;
    QTcpSocket* const m_tcp;
};

} // namespace rpcwire
