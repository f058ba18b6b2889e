#include "server.h"

#include "session.h"
#include "state_file.h"
#include "system.h"

#include <trovek/log.h>
#include <trovek/peer_credentials.h>
#include <trovek/text.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QTcpSocket>

#include <array>
#include <stdexcept>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\server";

namespace {

constexpr int kLockWaitMs = 200;
constexpr int kTestConnectMs = 500;

std::runtime_error failure(const QString& text)
{
    return std::runtime_error(toStdString(text));
}

QString socketPath(const ServerOptions& options)
{
    const QString name = toQString(options.socketName);
    const bool plain = !name.contains(QLatin1Char('/')) && !name.contains(QLatin1Char('\\')) &&
                       name != QLatin1String(".") && name != QLatin1String("..");
    if (name.isEmpty() || (!plain && !QDir::isAbsolutePath(name)))
        throw failure(QStringLiteral("Not a socket's name: \"%1\"").arg(name));
    const QString path = toQString(
        localSocketPath(options.socketName, toStdString(QDir(options.stateDir).absolutePath())));
    return QDir::cleanPath(path);
}

/** As long as random bytes are worth guessing at: 256 bits, in hexadecimal digits. */
QByteArray makeToken()
{
    std::array<quint32, 8> words = {};
    QRandomGenerator::system()->fillRange(words.data(), static_cast<int>(words.size()));
    return QByteArray(reinterpret_cast<const char*>(words.data()), sizeof words).toHex();
}

} // namespace

class Server::Private
{
public:
    Private(Server& owner, Service& service_)
        : q(owner)
        , service(service_)
    {}

    void listenLocally(const ServerOptions& options);
    void removeStaleSocket() const;
    void listenOnTcp(const ServerOptions& options);
    void acceptLocal();
    void acceptTcp();
    void accept(QIODevice* socket, const QByteArray& requiredToken);

    Server& q;
    Service& service;
    QString path;
    std::unique_ptr<QLockFile> lock;
    QLocalServer localServer;
    QTcpServer tcpServer;
    QByteArray token;
    QString tokenFile;
    int clients = 0;
};

void Server::Private::listenLocally(const ServerOptions& options)
{
    path = socketPath(options);
    makePrivateFolder(QFileInfo(path).path());
    lock = std::make_unique<QLockFile>(path + QStringLiteral(".lock"));
    lock->setStaleLockTime(0);
    if (!lock->tryLock(kLockWaitMs))
        throw failure(QStringLiteral("Another service listens on \"%1\"").arg(path));
    removeStaleSocket();
    localServer.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&localServer, &QLocalServer::newConnection, &q, [this] { acceptLocal(); });
    if (!localServer.listen(path)) {
        throw failure(
            QStringLiteral("Cannot listen on \"%1\": %2").arg(path, localServer.errorString()));
    }
}

void Server::Private::removeStaleSocket() const
{
    if (!QFileInfo::exists(path) && !QFileInfo(path).isSymLink())
        return;
    if (!isSocketFile(path))
        throw failure(QStringLiteral("\"%1\" is there and is not a socket").arg(path));
    QLocalSocket probe;
    probe.connectToServer(path);
    if (probe.waitForConnected(kTestConnectMs))
        throw failure(QStringLiteral("Another service listens on \"%1\"").arg(path));
    TROVEK_LOG(1) << "Removing the socket that an earlier service left: " << toStdString(path)
                  << std::endl;
    QFile::remove(path);
}

void Server::Private::listenOnTcp(const ServerOptions& options)
{
    token = makeToken();
    tokenFile = QDir(options.stateDir).filePath(QStringLiteral("token"));
    if (!writePrivateFile(tokenFile, token))
        throw failure(QStringLiteral("Cannot write the token file \"%1\"").arg(tokenFile));
    connect(&tcpServer, &QTcpServer::newConnection, &q, [this] { acceptTcp(); });
    if (!tcpServer.listen(QHostAddress::LocalHost, *options.tcpPort)) {
        throw failure(QStringLiteral("Cannot listen on TCP port %1: %2")
                          .arg(*options.tcpPort)
                          .arg(tcpServer.errorString()));
    }
}

void Server::Private::acceptLocal()
{
    while (QLocalSocket* socket = localServer.nextPendingConnection()) {
        if (peerIsSameUser(socket->socketDescriptor())) {
            accept(socket, QByteArray());
            continue;
        }
        TROVEK_LOG(0) << "Refused a connection of another user" << std::endl;
        delete socket;
    }
}

void Server::Private::acceptTcp()
{
    while (QTcpSocket* socket = tcpServer.nextPendingConnection())
        accept(socket, token);
}

void Server::Private::accept(QIODevice* socket, const QByteArray& requiredToken)
{
    if (clients >= kClientsAtMost) {
        TROVEK_LOG(1) << "Refused a connection: there are " << clients << " already" << std::endl;
        delete socket;
        return;
    }
    try {
        auto* session = new Session(service, socket, requiredToken, &q);
        ++clients;
        connect(session, &Client::gone, &q, [this, session] {
            --clients;
            session->deleteLater();
        });
    } catch (const std::exception& error) {
        // It was closed again before it could be served.
        TROVEK_LOG(1) << "Lost a connection: " << error.what() << std::endl;
        delete socket;
    }
}

Server::Server(Service& service, const ServerOptions& options, QObject* parent)
    : QObject(parent)
    , d(new Private(*this, service))
{
    d->listenLocally(options);
    if (options.tcpPort)
        d->listenOnTcp(options);
    TROVEK_LOG(1) << "Listening on " << localAddress().toText() << std::endl;
    if (const auto address = tcpAddress())
        TROVEK_LOG(1) << "Listening on " << address->toText() << std::endl;
}

Server::~Server()
{
    // Nobody new while the others are sent away.
    d->tcpServer.close();
    d->localServer.close();
    qDeleteAll(findChildren<Session*>(QString(), Qt::FindDirectChildrenOnly));
    if (!d->tokenFile.isEmpty())
        QFile::remove(d->tokenFile);
}

Address Server::localAddress() const
{
    return Address::local(toStdString(d->path));
}

std::optional<Address> Server::tcpAddress() const
{
    if (!d->tcpServer.isListening())
        return std::nullopt;
    return Address::tcp("127.0.0.1", d->tcpServer.serverPort(), d->token.toStdString());
}

} // namespace trovek::service
