#include "peer_world.h"

using rpcwire::Peer;
using rpcwire::toJsonLine;

PeerWorld::PeerWorld(const rpcwire::Limits& limits, Transport transport)
    : m_link(transport)
{
    far = std::move(m_link.far);
    peer = std::make_unique<Peer>(m_link.near.release(), limits);
    peer->setLogFunction([this](int severity, const std::string& text) {
        logLines += QStringLiteral("%1 %2").arg(severity).arg(QString::fromStdString(text));
    });
    const auto note = [this](const std::string& event) {
        events += QString::fromStdString(event);
    };
    QObject::connect(peer.get(), &Peer::notificationReceived, peer.get(),
                     [note](const std::string& method, const Json::Value& params) {
                         note("notification " + method + ' ' + toJsonLine(params));
                     });
    QObject::connect(peer.get(), &Peer::requestReceived, peer.get(),
                     [this, note](const Peer::Request& request) {
                         requests.push_back(request);
                         note("request " + request.method + ' ' + toJsonLine(request.params) + ' ' +
                              toJsonLine(request.id));
                     });
    QObject::connect(peer.get(), &Peer::closed, peer.get(),
                     [note](const std::string& reason) { note("closed " + reason); });
}

void PeerWorld::send(const QByteArray& bytes)
{
    writeNow(*far, bytes);
}

void PeerWorld::sendAndRead(const QByteArray& bytes)
{
    send(bytes);
    auto* const socket = peer->findChild<QIODevice*>();
    QVERIFY(socket->waitForReadyRead(10000));
}

QStringList PeerWorld::received()
{
    m_received += far->readAll();
    const int end = m_received.lastIndexOf('\n');
    return end < 0 ? QStringList()
                   : QString::fromUtf8(m_received.left(end)).split(QLatin1Char('\n'));
}

int PeerWorld::request(const std::string& method)
{
    const auto number = std::make_shared<int>(0);
    *number = peer->request(
        method, Json::Value(),
        [this, number](const Json::Value& result, const std::exception* error) {
            const QString id = QString::number(*number);
            if (error)
                events += QStringLiteral("error %1 %2").arg(id, QString::fromUtf8(error->what()));
            else
                events += QStringLiteral("answer %1 %2")
                              .arg(id, QString::fromStdString(toJsonLine(result)));
        });
    return *number;
}

bool PeerWorld::hasClosed() const
{
    return !events.isEmpty() && events.last().startsWith(QLatin1String("closed "));
}

QByteArray notificationBytes(int number)
{
    return R"({"jsonrpc":"2.0","method":"n","params":[)" + QByteArray::number(number) + "]}\n";
}

QString notificationEvent(int number)
{
    return QStringLiteral("notification n [%1]").arg(number);
}

QStringList notificationEvents(int count)
{
    QStringList events;
    for (int number = 0; number < count; ++number)
        events += notificationEvent(number);
    return events;
}
