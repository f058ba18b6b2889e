#include "raw_client.h"

#include <rpcwire/json_text.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <QLocalSocket>
#include <QTcpSocket>
#include <QTest>

#include <stdexcept>

namespace trovek {

namespace {

constexpr int kTimeoutMs = 5000;

} // namespace

RawClient::RawClient(const Address& address)
{
    bool connected = false;
    if (address.kind() == Address::Tcp) {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(toQString(address.host()), address.port());
        connected = socket->waitForConnected(kTimeoutMs);
        m_socket = std::move(socket);
    } else {
        auto socket = std::make_unique<QLocalSocket>();
        socket->connectToServer(toQString(address.name()));
        connected = socket->waitForConnected(kTimeoutMs);
        m_socket = std::move(socket);
    }
    if (!connected)
        throw std::runtime_error("The test cannot connect to " + address.toText());
}

void RawClient::write(const QByteArray& bytes)
{
    m_socket->write(bytes);
    while (m_socket->bytesToWrite() > 0 && m_socket->waitForBytesWritten(kTimeoutMs)) {
    }
}

void RawClient::call(int id, const char* method, const Json::Value& params)
{
    Json::Value request(Json::objectValue);
    request["jsonrpc"] = "2.0";
    request["id"] = id;
    request["method"] = method;
    request["params"] = params.isNull() ? Json::Value(Json::objectValue) : params;
    write(QByteArray::fromStdString(rpcwire::toJsonLine(request)) + '\n');
}

void RawClient::greet()
{
    call(0, wire::method::kHello, greeting());
    if (!readLine().isMember("result"))
        throw std::runtime_error("The greeting was refused");
}

Json::Value RawClient::readLine()
{
    while (!m_socket->canReadLine()) {
        if (!m_socket->waitForReadyRead(kTimeoutMs))
            return Json::Value();
    }
    const QByteArray line = m_socket->readLine();
    Json::Value value;
    rpcwire::parseJson({line.constData(), static_cast<std::size_t>(line.size())}, &value, nullptr);
    return value;
}

bool RawClient::waitForEnd()
{
    return QTest::qWaitFor(
        [this] {
            m_socket->readAll();
            return !isConnected();
        },
        kTimeoutMs);
}

bool RawClient::isConnected() const
{
    if (const auto* socket = qobject_cast<const QLocalSocket*>(m_socket.get()))
        return socket->state() == QLocalSocket::ConnectedState;
    return qobject_cast<const QTcpSocket*>(m_socket.get())->state() ==
           QAbstractSocket::ConnectedState;
}

Json::Value greeting(int major, int minor)
{
    Json::Value params(Json::objectValue);
    params["version"]["major"] = major;
    params["version"]["minor"] = minor;
    params["client"] = "test";
    return params;
}

} // namespace trovek
