#include "raw_client.h"
#include "service_world.h"
#include "support/environment.h"
#include "support/test_log.h"

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>
#include <QNetworkInterface>
#include <QTcpSocket>
#include <QTest>

using namespace trovek;

class tst_Server : public QObject
{
    Q_OBJECT

private slots:
    void onlyItsUserReachesTheSocket();
    void leavesNothingBehind();
    void refusesToStartTwiceOnOneSocket();
    void refusesASecondServiceInOneStateFolder();
    void removesTheSocketOfADeadService();
    void refusesAPathWithAnotherFile_data();
    void refusesAPathWithAnotherFile();
    void refusesAFolderThatOthersCanWrite();
    void refusesNames_data();
    void refusesNames();
    void plainNamesStandInTheRuntimeFolder();
    void plainNamesStandInTheStateFolderWithoutOne();
    void thereIsNoTcpUnlessAskedFor();
    void tcpNeedsTheToken_data();
    void tcpNeedsTheToken();
    void theTokenFileIsItsOwners();
    void theTokenIsAnotherOneEachTime();
    void tcpListensOnTheLoopbackInterfaceOnly();
    void refusesAMachinesFileWithAnError();
    void offersTheMachinesOfItsFile();
    void shutsDownInTheMiddleOfEverything();
};

namespace {

/** What starting the service throws; empty when it starts. */
std::string refusal(const service::EmbeddedService::Options& options)
{
    try {
        const service::EmbeddedService service(options);
    } catch (const std::exception& error) {
        return error.what();
    }
    return std::string();
}

constexpr QFile::Permissions kOthers = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                       QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;

bool isPrivate(const QString& path)
{
    return (QFileInfo(path).permissions() & kOthers) == QFile::Permissions();
}

} // namespace

void tst_Server::onlyItsUserReachesTheSocket()
{
    TestLog log;
    ServiceWorld world;
    world.start();

    const QString socket = toQString(world.address().name());
    QVERIFY(QFileInfo::exists(socket));
    QVERIFY(isPrivate(socket));
    QVERIFY(isPrivate(QFileInfo(socket).path()));
    QVERIFY(isPrivate(world.stateDir()));
}

void tst_Server::leavesNothingBehind()
{
    TestLog log;
    ServiceWorld world;
    world.options.tcpPort = 0;
    world.start();
    const QString folder = QFileInfo(toQString(world.address().name())).path();
    RecordingTrovek client;
    client.connectToDaemon(world.address());

    world.stop();

    QCOMPARE(QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot),
             QStringList());
    QVERIFY(!QFile::exists(world.stateDir() + QStringLiteral("/token")));
    QVERIFY(!QFile::exists(world.stateDir() + QStringLiteral("/lock")));
    QTRY_VERIFY(!client.isConnected());
}

void tst_Server::refusesToStartTwiceOnOneSocket()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    service::EmbeddedService::Options second = world.options;
    second.stateDir = world.path(QStringLiteral("otherstate"));

    QCOMPARE(refusal(second), "Another service listens on \"" + world.options.socketName + "\"");

    RecordingTrovek client;
    client.connectToDaemon(world.address());
    QCOMPARE(client.ports().size(), std::size_t(2));
}

void tst_Server::refusesASecondServiceInOneStateFolder()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    service::EmbeddedService::Options second = world.options;
    second.socketName += "2";

    QCOMPARE(refusal(second),
             "The state folder \"" + world.options.stateDir + "\" is in use by another service");

    world.stop();
    QCOMPARE(refusal(second), std::string());
}

void tst_Server::removesTheSocketOfADeadService()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    const QString socket = toQString(world.address().name());
    // As it stands when a service was killed: the file is there, and nobody listens.
    QVERIFY(QFile::rename(socket, socket + QStringLiteral("x")));
    world.stop();
    QVERIFY(QFile::rename(socket + QStringLiteral("x"), socket));

    world.start();

    RecordingTrovek client;
    client.connectToDaemon(world.address());
    QVERIFY(log.contains("Removing the socket that an earlier service left"));
}

void tst_Server::refusesAPathWithAnotherFile_data()
{
    QTest::addColumn<QString>("kind");

    QTest::newRow("a file") << QStringLiteral("file");
    QTest::newRow("a folder") << QStringLiteral("folder");
    QTest::newRow("a link") << QStringLiteral("link");
    QTest::newRow("a link to nothing") << QStringLiteral("broken");
}

void tst_Server::refusesAPathWithAnotherFile()
{
    QFETCH(QString, kind);
    TestLog log;
    ServiceWorld world;
    const std::string path = world.path(QStringLiteral("s"));
    if (kind == QLatin1String("file"))
        world.writeFile(QStringLiteral("s"), "kept");
    else if (kind == QLatin1String("folder"))
        QVERIFY(QDir().mkdir(toQString(path)));
    else if (kind == QLatin1String("link"))
        QVERIFY(
            QFile::link(toQString(world.writeFile(QStringLiteral("t"), "kept")), toQString(path)));
    else
        QVERIFY(QFile::link(QStringLiteral("/nowhere"), toQString(path)));
    world.options.socketName = path;
    QVERIFY(QFile::setPermissions(QFileInfo(toQString(path)).path(),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

    QCOMPARE(refusal(world.options), "\"" + path + "\" is there and is not a socket");

    QVERIFY(QFileInfo(toQString(path)).exists() || QFileInfo(toQString(path)).isSymLink());
}

void tst_Server::refusesAFolderThatOthersCanWrite()
{
    TestLog log;
    ServiceWorld world;
    const std::string folder = world.path(QStringLiteral("open"));
    QVERIFY(QDir().mkdir(toQString(folder)));
    QVERIFY(QFile::setPermissions(toQString(folder), QFile::ReadOwner | QFile::WriteOwner |
                                                         QFile::ExeOwner | QFile::WriteOther |
                                                         QFile::ExeOther));
    world.options.socketName = folder + "/s";

    QCOMPARE(refusal(world.options), "The folder \"" + folder + "\" can be written by other users");
}

void tst_Server::refusesNames_data()
{
    QTest::addColumn<QByteArray>("name");

    QTest::newRow("none") << QByteArray();
    QTest::newRow("out of the folder") << QByteArray("../s");
    QTest::newRow("the folder above") << QByteArray("..");
    QTest::newRow("a folder within") << QByteArray("a/s");
    QTest::newRow("of another system") << QByteArray("a\\s");
    QTest::newRow("longer than sockets may be") << QByteArray(200, 'x');
}

void tst_Server::refusesNames()
{
    QFETCH(QByteArray, name);
    TestLog log;
    ServiceWorld world;
    const Environment runtime("XDG_RUNTIME_DIR", QByteArray());
    world.options.socketName = name.toStdString();

    QVERIFY(!refusal(world.options).empty());
}

void tst_Server::plainNamesStandInTheRuntimeFolder()
{
    TestLog log;
    ServiceWorld world;
    const std::string runtimeDir = world.path(QStringLiteral("runtime"));
    QVERIFY(QDir().mkdir(toQString(runtimeDir)));
    const Environment runtime("XDG_RUNTIME_DIR", QByteArray::fromStdString(runtimeDir));
    world.options.socketName = "mine";
    world.start();

    QCOMPARE(world.address().name(), runtimeDir + "/trovek/mine");
    RecordingTrovek client;
    client.connectToDaemon(Address::local("mine"));
    QVERIFY(client.isConnected());
}

void tst_Server::plainNamesStandInTheStateFolderWithoutOne()
{
    TestLog log;
    ServiceWorld world;
    const Environment runtime("XDG_RUNTIME_DIR", QByteArray());
    world.options.socketName = "mine";
    world.start();

    QCOMPARE(world.address().name(), world.options.stateDir + "/mine");
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    QVERIFY(client.isConnected());
}

void tst_Server::thereIsNoTcpUnlessAskedFor()
{
    TestLog log;
    ServiceWorld world;
    world.start();

    QVERIFY(!world.service().tcpAddress());
    QVERIFY(!QFile::exists(world.stateDir() + QStringLiteral("/token")));
}

void tst_Server::tcpNeedsTheToken_data()
{
    QTest::addColumn<bool>("sendsToken");
    QTest::addColumn<QByteArray>("change");
    QTest::addColumn<bool>("expectedWelcome");

    QTest::newRow("the token") << true << QByteArray() << true;
    QTest::newRow("no token") << false << QByteArray() << false;
    QTest::newRow("one digit more") << true << QByteArray("0") << false;
    QTest::newRow("another first digit") << true << QByteArray("first") << false;
}

void tst_Server::tcpNeedsTheToken()
{
    QFETCH(bool, sendsToken);
    QFETCH(QByteArray, change);
    QFETCH(bool, expectedWelcome);
    TestLog log;
    ServiceWorld world;
    world.options.tcpPort = 0;
    world.start();
    const Address address = *world.service().tcpAddress();
    RawClient client(address);
    std::string token = address.token();
    if (change == "first")
        token[0] = token[0] == 'a' ? 'b' : 'a';
    else
        token += change.toStdString();
    Json::Value params = greeting();
    if (sendsToken)
        params["token"] = token;

    client.call(1, wire::method::kHello, params);

    const Json::Value answer = client.readLine();
    QCOMPARE(answer.isMember("result"), expectedWelcome);
    if (!expectedWelcome) {
        QCOMPARE(answer["error"]["data"]["name"].asString(), std::string("AccessDeniedError"));
        QVERIFY(client.waitForEnd());
    }
    QVERIFY2(!log.contains(address.token()), "a token is nobody's business");
}

void tst_Server::theTokenFileIsItsOwners()
{
    TestLog log;
    ServiceWorld world;
    world.options.tcpPort = 0;
    world.start();

    const QString file = world.stateDir() + QStringLiteral("/token");
    QVERIFY(isPrivate(file));
    QCOMPARE(ServiceWorld::read(toStdString(file)).toStdString(),
             world.service().tcpAddress()->token());
    QCOMPARE(world.service().tcpAddress()->token().size(), std::size_t(64));
    RecordingTrovek client;
    client.connectToDaemon(*world.service().tcpAddress());
    QCOMPARE(client.ports().size(), std::size_t(2));
}

void tst_Server::theTokenIsAnotherOneEachTime()
{
    TestLog log;
    ServiceWorld world;
    world.options.tcpPort = 0;
    world.start();
    const std::string first = world.service().tcpAddress()->token();
    world.stop();
    world.start();

    QVERIFY(world.service().tcpAddress()->token() != first);
}

void tst_Server::tcpListensOnTheLoopbackInterfaceOnly()
{
    TestLog log;
    ServiceWorld world;
    world.options.tcpPort = 0;
    world.start();
    QCOMPARE(world.service().tcpAddress()->host(), std::string("127.0.0.1"));

    for (const QHostAddress& address : QNetworkInterface::allAddresses()) {
        if (address.isLoopback() || address.protocol() != QAbstractSocket::IPv4Protocol)
            continue;
        QTcpSocket socket;
        socket.connectToHost(address, world.service().tcpAddress()->port());
        QVERIFY2(!socket.waitForConnected(2000), qPrintable(address.toString()));
    }
}

void tst_Server::refusesAMachinesFileWithAnError()
{
    TestLog log;
    ServiceWorld world;
    world.options.machinesFile = world.writeFile(QStringLiteral("m.json"), "{\"machines\": 1}");
    const std::string text = refusal(world.options);
    QVERIFY2(text.compare(0, 14, "Machines file:") == 0, text.c_str());

    world.options.machinesFile = world.path(QStringLiteral("missing.json"));
    QCOMPARE(refusal(world.options),
             "Cannot read the machines file \"" + world.options.machinesFile + "\"");
    QVERIFY2(!QFile::exists(world.stateDir() + QStringLiteral("/lock")),
             "a service that did not start holds nothing");
}

void tst_Server::offersTheMachinesOfItsFile()
{
    TestLog log;
    ServiceWorld world;
    world.options.machinesFile = world.writeFile(
        QStringLiteral("m.json"),
        "{\"machines\": [{\"key\": \"left/../one\", \"type\": \"cubio_single\", "
        "\"display_name\": \"Left\", \"port\": {\"name\": \"p\", \"identity\": \"i\", "
        "\"whitelisted\": false}, \"plugged_in\": true}]}");
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());

    QCOMPARE(client.ports().size(), std::size_t(1));
    QVERIFY(!portInConnectionWhitelist(*client.ports().begin()));
    QCOMPARE(client.printers().size(), std::size_t(6));
    ServiceWorld::openMachine(client, "p");
    QVERIFY(client.printerFromKey(MachineName("left/../one")) != nullptr);
    // Its folder stands where all of them do, whatever its name.
    QCOMPARE(QDir(world.stateDir() + QStringLiteral("/machines"))
                 .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
                 .size(),
             1);
}

void tst_Server::shutsDownInTheMiddleOfEverything()
{
    TestLog log;
    ServiceWorld world(10);
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    ServiceWorld::openMachine(client);
    ServiceWorld::openMachine(client, ServiceWorld::kOtherPort);
    const std::string file = world.writeFile(QStringLiteral("a.gcode"), longGCode());
    const std::string out = world.emptyFile(QStringLiteral("a.x3g"));
    client.print(MachineName(ServiceWorld::kMachine), file, {}, {"pla"}, true);
    client.jog(MachineName(ServiceWorld::kOtherMachine), Printer::XAxis, 1, 1000000);
    client.printToFile(MachineName(ServiceWorld::kMachine), file, out, {}, {"pla"}, true, "x3g");

    world.stop();

    QTRY_VERIFY(!client.isConnected());
    QCOMPARE(ServiceWorld::read(out), QByteArray());
}

QTEST_GUILESS_MAIN(tst_Server)
#include "tst_server.moc"
