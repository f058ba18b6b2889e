#include "link.h"

#include <QLocalServer>
#include <QLocalSocket>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

namespace {

constexpr int kConnectMs = 10000;

void require(bool condition, const char* what)
{
    if (!condition)
        qFatal("The test's link failed: %s", what);
}

} // namespace

void addTransportRows()
{
    QTest::addColumn<Transport>("transport");
    QTest::newRow("local socket") << Transport::Local;
    QTest::newRow("TCP socket") << Transport::Tcp;
}

Link::Link(Transport transport)
{
    if (transport == Transport::Local) {
        QLocalServer server;
        require(server.listen(m_folder.filePath(QStringLiteral("socket"))), "listen");
        auto socket = std::make_unique<QLocalSocket>();
        socket->connectToServer(server.fullServerName());
        require(socket->waitForConnected(kConnectMs), "connect");
        require(server.hasPendingConnections() || server.waitForNewConnection(kConnectMs),
                "accept");
        near = std::move(socket);
        far.reset(server.nextPendingConnection());
        far->setParent(nullptr);
    } else {
        QTcpServer server;
        require(server.listen(QHostAddress::LocalHost), "listen");
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QHostAddress::LocalHost, server.serverPort());
        require(socket->waitForConnected(kConnectMs), "connect");
        require(server.hasPendingConnections() || server.waitForNewConnection(kConnectMs),
                "accept");
        near = std::move(socket);
        far.reset(server.nextPendingConnection());
        far->setParent(nullptr);
    }
}

FarEnd::FarEnd(Answer answer, Transport transport)
    : m_link(transport)
{
    QIODevice* const socket = m_link.far.release();
    QObject::connect(socket, &QIODevice::readyRead, socket, [socket, answer] {
        while (socket->isOpen() && socket->canReadLine())
            answer(*socket, socket->readLine().chopped(1));
    });
    QObject::connect(&m_thread, &QThread::finished, socket, &QObject::deleteLater);
    socket->moveToThread(&m_thread);
    m_thread.start();
}

FarEnd::~FarEnd()
{
    m_thread.quit();
    m_thread.wait();
}

QByteArray object(const QByteArray& members)
{
    return R"({"jsonrpc":"2.0",)" + members + "}\n";
}

void writeNow(QIODevice& socket, const QByteArray& bytes)
{
    socket.write(bytes);
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(kConnectMs)) {
    }
}

void vanish(QIODevice& socket)
{
    if (auto* const local = qobject_cast<QLocalSocket*>(&socket))
        local->abort();
    else if (auto* const tcp = qobject_cast<QTcpSocket*>(&socket))
        tcp->abort();
}

bool hasEnded(const QIODevice& socket)
{
    if (const auto* const local = qobject_cast<const QLocalSocket*>(&socket))
        return local->state() == QLocalSocket::UnconnectedState;
    const auto* const tcp = qobject_cast<const QTcpSocket*>(&socket);
    return tcp && tcp->state() == QAbstractSocket::UnconnectedState;
}
