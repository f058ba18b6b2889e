#include "http_site.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>

#include <atomic>
#include <map>
#include <mutex>

namespace trovek {

class HttpSite::Private
{
public:
    void accept();
    void answer(QTcpSocket* socket);

    std::mutex mutex;
    /** Empty for a path that hangs. */
    std::map<QByteArray, QByteArray> responses;
    std::atomic<int> requests{0};
    QThread thread;
    /** Lives in the thread. */
    QTcpServer server;
};

void HttpSite::Private::accept()
{
    while (QTcpSocket* socket = server.nextPendingConnection()) {
        QObject::connect(socket, &QTcpSocket::readyRead, socket,
                         [this, socket] { answer(socket); });
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
}

void HttpSite::Private::answer(QTcpSocket* socket)
{
    // A request of a browser comes in one piece here.
    const QByteArray head = socket->readAll();
    const QByteArray path = head.mid(4).split(' ').first();
    if (!head.startsWith("GET "))
        return;
    ++requests;
    QByteArray response = "HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n";
    {
        const std::lock_guard<std::mutex> lock(mutex);
        const auto found = responses.find(path);
        if (found != responses.end())
            response = found->second;
    }
    if (response.isEmpty())
        return;
    socket->write(response);
    socket->disconnectFromHost();
}

HttpSite::HttpSite()
    : d(new Private)
{
    if (!d->server.listen(QHostAddress::LocalHost))
        qFatal("The test cannot listen");
    QObject::connect(&d->server, &QTcpServer::newConnection, &d->server, [this] { d->accept(); });
    d->server.moveToThread(&d->thread);
    d->thread.start();
}

HttpSite::~HttpSite()
{
    QThread* const home = QThread::currentThread();
    QMetaObject::invokeMethod(
        &d->server,
        [this, home] {
            qDeleteAll(d->server.findChildren<QTcpSocket*>());
            d->server.close();
            d->server.moveToThread(home);
        },
        Qt::BlockingQueuedConnection);
    d->thread.quit();
    d->thread.wait();
}

QString HttpSite::address() const
{
    return QStringLiteral("http://127.0.0.1:%1/firmware").arg(d->server.serverPort());
}

void HttpSite::serve(const QByteArray& path, const QByteArray& body)
{
    serveRaw(path, "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(body.size()) +
                       "\r\n\r\n" + body);
}

void HttpSite::serveRaw(const QByteArray& path, const QByteArray& response)
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->responses[path] = response;
}

void HttpSite::hang(const QByteArray& path)
{
    serveRaw(path, QByteArray());
}

int HttpSite::requests() const
{
    return d->requests;
}

} // namespace trovek
