#include "raw_client.h"
#include "service_world.h"
#include "support/test_log.h"

#include <service/server.h>

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QTcpSocket>
#include <QTest>

using namespace trovek;

class tst_Session : public QObject
{
    Q_OBJECT

private slots:
    void greetsWithItsVersion();
    void anythingBeforeTheGreetingEndsTheConnection_data();
    void anythingBeforeTheGreetingEndsTheConnection();
    void refusesGreetings_data();
    void refusesGreetings();
    void acceptsAnotherMinorVersion();
    void refusesAnotherMajorVersionWithBothVersions();
    void theClientLibraryTellsBothVersions();
    void garbageEndsItsOwnConnectionOnly_data();
    void garbageEndsItsOwnConnectionOnly();
    void refusesParametersByName_data();
    void refusesParametersByName();
    void unknownMethodsAreAnError();
    void onlySubscribersAreTold();
    void theAnswerComesBeforeTheEvents();
    void aJobsAnswersComeBeforeItsEvents();
    void aClientThatDoesNotReadIsDropped();
    void thereIsALimitOfClients();
    void requestsInPiecesAreUnderstood();
};

void tst_Session::greetsWithItsVersion()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient client(world.address());

    client.call(1, wire::method::kHello, greeting());

    const Json::Value answer = client.readLine();
    QCOMPARE(answer["id"].asInt(), 1);
    QCOMPARE(answer["result"]["version"]["major"].asInt(), 1);
    QCOMPARE(answer["result"]["version"]["minor"].asInt(), 0);
    QCOMPARE(answer["result"]["service"].asString(), std::string("trovekd"));
}

void tst_Session::anythingBeforeTheGreetingEndsTheConnection_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("another method")
        << QByteArray("{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"subscribe\",\"params\":{}}\n");
    QTest::newRow("an unknown method")
        << QByteArray("{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"x\",\"params\":{}}\n");
    QTest::newRow("a notification")
        << QByteArray("{\"jsonrpc\":\"2.0\",\"method\":\"hello\",\"params\":{}}\n");
    QTest::newRow("no JSON") << QByteArray("GET / HTTP/1.1\r\n\r\n");
}

void tst_Session::anythingBeforeTheGreetingEndsTheConnection()
{
    QFETCH(QByteArray, bytes);
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient client(world.address());

    client.write(bytes);

    QVERIFY(client.waitForEnd());
}

void tst_Session::refusesGreetings_data()
{
    QTest::addColumn<QByteArray>("params");

    QTest::newRow("nothing") << QByteArray("{}");
    QTest::newRow("a list") << QByteArray("[1,0]");
    QTest::newRow("a version as text") << QByteArray("{\"version\":\"1.0\"}");
    QTest::newRow("no minor version") << QByteArray("{\"version\":{\"major\":1}}");
    QTest::newRow("a broken number") << QByteArray("{\"version\":{\"major\":1.5,\"minor\":0}}");
    QTest::newRow("a number of a client")
        << QByteArray("{\"version\":{\"major\":1,\"minor\":0},\"client\":7}");
}

void tst_Session::refusesGreetings()
{
    QFETCH(QByteArray, params);
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient client(world.address());

    client.write("{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"hello\",\"params\":" + params + "}\n");

    const Json::Value answer = client.readLine();
    QCOMPARE(answer["error"]["data"]["name"].asString(), std::string("InvalidArgumentError"));
    QVERIFY(client.waitForEnd());
}

void tst_Session::acceptsAnotherMinorVersion()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient client(world.address());

    client.call(1, wire::method::kHello, greeting(1, 99));

    QVERIFY(client.readLine().isMember("result"));
}

void tst_Session::refusesAnotherMajorVersionWithBothVersions()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient client(world.address());

    client.call(1, wire::method::kHello, greeting(2, 3));

    const Json::Value error = client.readLine()["error"];
    QCOMPARE(error["message"].asString(),
             std::string("The service speaks protocol version 1.0, the client 2.3"));
    QCOMPARE(error["data"]["name"].asString(), std::string("ProtocolVersionError"));
    QCOMPARE(error["data"]["version"]["major"].asInt(), 1);
    QVERIFY(client.waitForEnd());
}

void tst_Session::theClientLibraryTellsBothVersions()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());

    QCOMPARE(client.serviceVersion(), std::string("1.0"));
}

void tst_Session::garbageEndsItsOwnConnectionOnly_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("no JSON") << QByteArray("garbage\n");
    QTest::newRow("zeros") << QByteArray(100, '\0') + "\n";
    QTest::newRow("half a text") << QByteArray("{\"jsonrpc\":\n");
    QTest::newRow("deep nesting") << QByteArray(5000, '[') + "\n";
    QTest::newRow("a text after the text") << QByteArray("{} {}\n");
}

void tst_Session::garbageEndsItsOwnConnectionOnly()
{
    QFETCH(QByteArray, bytes);
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient other(world.address());
    other.greet();
    RawClient client(world.address());
    client.greet();

    client.write(bytes);

    QVERIFY(client.waitForEnd());
    other.call(2, wire::method::kGetJobs);
    QVERIFY(other.readLine()["result"].isArray());
}

void tst_Session::refusesParametersByName_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QByteArray>("expectedName");

    const QByteArray print = "\"input_path\":\"/x\",\"slicer_config\":{},\"materials\":[],"
                             "\"machine\":\"virtual_fabrino_2\"";
    QTest::newRow("no port") << QByteArray("connect_to_port") << QByteArray("{}")
                             << QByteArray("port");
    QTest::newRow("a number for a port")
        << QByteArray("connect_to_port") << QByteArray("{\"port\":1}") << QByteArray("port");
    QTest::newRow("a list for an identity")
        << QByteArray("connect_to_port") << QByteArray("{\"port\":\"virtual1\",\"identity\":[]}")
        << QByteArray("identity");
    QTest::newRow("a text for a job")
        << QByteArray("get_job") << QByteArray("{\"id\":\"1\"}") << QByteArray("id");
    QTest::newRow("too large a job")
        << QByteArray("cancel_job") << QByteArray("{\"id\":1e12}") << QByteArray("id");
    QTest::newRow("a number for a path")
        << QByteArray("print") << QByteArray("{\"input_path\":1}") << QByteArray("input_path");
    QTest::newRow("no configuration")
        << QByteArray("print") << QByteArray("{\"input_path\":\"/x\"}")
        << QByteArray("slicer_config");
    QTest::newRow("a list for a configuration")
        << QByteArray("print") << QByteArray("{\"input_path\":\"/x\",\"slicer_config\":[]}")
        << QByteArray("slicer_config");
    QTest::newRow("a text within a configuration")
        << QByteArray("print")
        << QByteArray("{\"input_path\":\"/x\",\"slicer_config\":{\"shells\":\"2\"}}")
        << QByteArray("shells");
    QTest::newRow("numbers for materials")
        << QByteArray("print")
        << QByteArray("{\"input_path\":\"/x\",\"slicer_config\":{},\"materials\":[1]}")
        << QByteArray("materials");
    QTest::newRow("no flag") << QByteArray("print") << "{" + print + "}"
                             << QByteArray("skip_start_end");
    QTest::newRow("a number for a flag")
        << QByteArray("slice") << "{" + print + ",\"add_start_end\":1}"
        << QByteArray("add_start_end");
    QTest::newRow("no output") << QByteArray("slice") << "{" + print + ",\"add_start_end\":true}"
                               << QByteArray("output_path");
    QTest::newRow("no format") << QByteArray("print_to_file") << "{" + print + "}"
                               << QByteArray("format");
    QTest::newRow("a text for an axis")
        << QByteArray("jog") << QByteArray("{\"axis\":\"x\"}") << QByteArray("axis");
    QTest::newRow("a machine that is null")
        << QByteArray("home") << QByteArray("{\"machine\":null}") << QByteArray("machine");
    QTest::newRow("a machine for a plug")
        << QByteArray("simulate_plug_in") << QByteArray("{\"machine\":\"x\"}")
        << QByteArray("name");
    QTest::newRow("a list for parameters")
        << QByteArray("get_job") << QByteArray("[1]") << QByteArray("Parameters");
}

void tst_Session::refusesParametersByName()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, params);
    QFETCH(QByteArray, expectedName);
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient client(world.address());
    client.greet();

    client.write("{\"jsonrpc\":\"2.0\",\"id\":5,\"method\":\"" + method +
                 "\",\"params\":" + params + "}\n");

    const Json::Value answer = client.readLine();
    QCOMPARE(answer["id"].asInt(), 5);
    QCOMPARE(answer["error"]["data"]["name"].asString(), std::string("InvalidArgumentError"));
    const std::string message = answer["error"]["message"].asString();
    QVERIFY2(message.find(expectedName.toStdString()) != std::string::npos, message.c_str());
    QCOMPARE(answer["error"]["data"]["message"].asString(), message);
}

void tst_Session::unknownMethodsAreAnError()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient client(world.address());
    client.greet();

    client.call(7, "no_such_method");
    const Json::Value error = client.readLine()["error"];
    QCOMPARE(error["code"].asInt(), -32601);
    QCOMPARE(error["data"]["name"].asString(), std::string("MethodNotFound"));

    client.call(8, wire::method::kHello, greeting());
    QCOMPARE(client.readLine()["error"]["code"].asInt(), -32601);
}

void tst_Session::onlySubscribersAreTold()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient silent(world.address());
    silent.greet();
    RawClient told(world.address());
    told.greet();
    told.call(1, wire::method::kSubscribe);
    QVERIFY(told.readLine()["result"]["ports"].isArray());
    Json::Value name(Json::objectValue);
    name["name"] = "virtual_cubio_single";

    silent.call(1, wire::method::kSimulatePlugIn, name);
    QCOMPARE(silent.readLine()["id"].asInt(), 1);
    QCOMPARE(told.readLine()["method"].asString(), std::string("port_attached"));

    // What was told of the plugging would come before this answer.
    silent.call(2, wire::method::kGetJobs);
    QCOMPARE(silent.readLine()["id"].asInt(), 2);
}

void tst_Session::theAnswerComesBeforeTheEvents()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient client(world.address());
    client.greet();
    client.call(1, wire::method::kSubscribe);
    QCOMPARE(client.readLine()["id"].asInt(), 1);
    Json::Value port(Json::objectValue);
    port["port"] = ServiceWorld::kPort;

    client.call(2, wire::method::kConnectToPort, port);

    QCOMPARE(client.readLine()["result"]["name"].asString(), std::string(ServiceWorld::kMachine));
    const Json::Value changed = client.readLine();
    QCOMPARE(changed["method"].asString(), std::string("port_changed"));
    QCOMPARE(changed["params"]["machine"].asString(), std::string(ServiceWorld::kMachine));
    const Json::Value added = client.readLine();
    QCOMPARE(added["method"].asString(), std::string("printer_added"));
    QCOMPARE(added["params"]["state"].asInt(), int(Printer::Connecting));
    QCOMPARE(client.readLine()["params"]["state"].asInt(), int(Printer::Idle));
}

void tst_Session::aJobsAnswersComeBeforeItsEvents()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient client(world.address());
    client.greet();
    client.call(1, wire::method::kSubscribe);
    QCOMPARE(client.readLine()["id"].asInt(), 1);
    Json::Value params(Json::objectValue);
    params["machine"] = ServiceWorld::kArchetype;
    params["input_path"] = world.writeFile(QStringLiteral("a.stl"), "solid");
    params["output_path"] = world.emptyFile(QStringLiteral("a.gcode"));
    params["slicer_config"] = Json::Value(Json::objectValue);
    params["materials"] = Json::Value(Json::arrayValue);
    params["add_start_end"] = false;

    // It starts at once, and fails soon: there is no model in the file.
    client.call(2, wire::method::kSlice, params);

    const Json::Value answer = client.readLine();
    QCOMPARE(answer["id"].asInt(), 2);
    QStringList events;
    while (events.isEmpty() || events.last() != QLatin1String("job_concluded")) {
        const Json::Value notification = client.readLine();
        QVERIFY(notification["method"].isString());
        QCOMPARE(notification["params"]["id"], answer["result"]["id"]);
        events.append(QString::fromStdString(notification["method"].asString()));
    }
    QCOMPARE(events.takeFirst(), QStringLiteral("job_added"));
    QCOMPARE(events.takeLast(), QStringLiteral("job_concluded"));
    QVERIFY(events.removeAll(QStringLiteral("job_changed")) > 0);
    QVERIFY2(events.isEmpty(), qPrintable(events.join(QLatin1Char(' '))));
}

void tst_Session::aClientThatDoesNotReadIsDropped()
{
    TestLog log;
    ServiceWorld world;
    world.options.tcpPort = 0;
    world.start();
    RecordingTrovek other;
    other.connectToDaemon(world.address());
    // A job's entry makes the answers long.
    ServiceWorld::openMachine(other);
    for (int i = 0; i < 400; ++i)
        other.cancelJob(other.jog(MachineName(ServiceWorld::kMachine), Printer::XAxis, 1, 1000));
    const Address address = *world.service().tcpAddress();
    QTcpSocket socket;
    socket.setReadBufferSize(1);
    socket.connectToHost(toQString(address.host()), address.port());
    QVERIFY(socket.waitForConnected(5000));
    socket.write(R"({"jsonrpc":"2.0","id":1,"method":"hello","params":{"token":")" +
                 QByteArray::fromStdString(address.token()) +
                 R"(","version":{"major":1,"minor":0}}})" + '\n');

    for (int i = 0; i < 600; ++i)
        socket.write("{\"jsonrpc\":\"2.0\",\"id\":2,\"method\":\"get_jobs\",\"params\":{}}\n");

    QTRY_VERIFY_WITH_TIMEOUT(log.contains("Client left: The other side does not read"), 60000);
    QVERIFY(other.isConnected());
    QCOMPARE(other.simulatedMachines().size(), 6U);
}

void tst_Session::thereIsALimitOfClients()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < service::Server::kClientsAtMost; ++i) {
        clients.push_back(std::make_unique<RawClient>(world.address()));
        clients.back()->greet();
    }

    RawClient tooMany(world.address());
    QVERIFY(tooMany.waitForEnd());
    clients.pop_back();
    // Kept once it is in, since the condition is asked again then and the place would be taken.
    std::unique_ptr<RawClient> next;
    const auto isIn = [&] {
        if (next)
            return true;
        try {
            auto client = std::make_unique<RawClient>(world.address());
            client->greet();
            next = std::move(client);
        } catch (const std::exception&) {
            return false;
        }
        return true;
    };
    QTRY_VERIFY(isIn());
}

void tst_Session::requestsInPiecesAreUnderstood()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RawClient client(world.address());
    client.greet();
    const QByteArray request = "{\"jsonrpc\":\"2.0\",\"id\":3,\"method\":\"get_jobs\"}\n";

    for (const char byte : request)
        client.write(QByteArray(1, byte));

    QVERIFY(client.readLine()["result"].isArray());
}

QTEST_GUILESS_MAIN(tst_Session)
#include "tst_session.moc"
