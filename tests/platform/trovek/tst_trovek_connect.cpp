#include "one_machine.h"
#include "recording_trovek.h"
#include "support/scripted_service.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

using namespace trovek;

/** Connecting: what is known afterwards, and what is refused. */
class tst_TrovekConnect : public QObject
{
    Q_OBJECT

private slots:
    void everythingIsKnownWhenConnectingReturns();
    void everythingIsAnnouncedFromTheEventLoop();
    void theGreetingSaysVersionAndProgram();
    void tcpNeedsTheToken();
    void aServiceThatIsNotThereIsAnError();
    void aHungServiceIsGivenUpInTime_data();
    void aHungServiceIsGivenUpInTime();
    void aMuteTcpServiceIsGivenUpInTime();
    void anotherMajorVersionIsRefused();
    void aServiceThatRefusesTheVersionTellsIts();
    void anotherMinorVersionIsTaken();
    void oddAnswersToTheGreetingAreRefused_data();
    void oddAnswersToTheGreetingAreRefused();
    void oddPartsOfTheSnapshotAreLeftOut();
    void aFolderThatOthersCanWriteIsRefused();
};

void tst_TrovekConnect::everythingIsKnownWhenConnectingReturns()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    service.addPrinter(ScriptedService::archetype(Printer::CubioDual));
    RecordingTrovek client;
    QVERIFY(!client.isConnected());
    QVERIFY(client.printers().empty());
    QVERIFY(client.ports().empty());
    QCOMPARE(client.serviceVersion(), std::string());

    client.connectToDaemon(service.address());

    QVERIFY(client.isConnected());
    QCOMPARE(client.serviceVersion(), std::string("1.0"));
    QCOMPARE(client.printers().size(), std::size_t(2));
    QCOMPARE(client.printers().front()->key().name(), std::string("left"));
    QCOMPARE(client.printers().back()->type(), Printer::CubioDual);
    QVERIFY(!client.printers().back()->canPrint());
    QVERIFY(client.printers().back()->canPrintToFile());
    QCOMPARE(client.printerFromKey(kLeft), client.printers().front());
    QVERIFY(!client.printerFromKey(MachineName("right")));
    QCOMPARE(client.ports().size(), std::size_t(1));
    QCOMPARE(client.portFromName("one").identity(), std::string("23c1:d314:one"));
    QCOMPARE(thrownText([&] { client.portFromName("two"); }), std::string("No such port: two"));
    QCOMPARE(client.printerFromPortName("one").name(), std::string("left"));
    QCOMPARE(client.printerFromPortName("two").name(), std::string());
}

void tst_TrovekConnect::everythingIsAnnouncedFromTheEventLoop()
{
    TestLog log;
    ScriptedService service;
    service.addPrinter(ScriptedService::machine("free", Printer::Fabrino2));
    addOneMachine(service);
    service.addPort(ScriptedService::port("two"));
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QCOMPARE(client.story(), std::string());
    QTRY_COMPARE(client.story(), std::string("portAttached one, portAttached two, "
                                             "printerAdded free, printerAdded left"));
    // Once is enough.
    service.changePrinter(leftOnPortOne());
    QTRY_COMPARE(client.events.size(), std::size_t(5));
    QCOMPARE(client.events.back(), std::string("printerChanged left"));
}

void tst_TrovekConnect::theGreetingSaysVersionAndProgram()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    const auto requests = service.requests();
    QCOMPARE(requests.size(), std::size_t(2));
    QCOMPARE(requests[0].method, std::string("hello"));
    QCOMPARE(requests[0].params["version"]["major"].asInt(), wire::kProtocolMajor);
    QCOMPARE(requests[0].params["version"]["minor"].asInt(), wire::kProtocolMinor);
    QVERIFY(requests[0].params["client"].isString());
    QVERIFY(!requests[0].params.isMember("token"));
    QCOMPARE(requests[1].method, std::string("subscribe"));
}

void tst_TrovekConnect::tcpNeedsTheToken()
{
    TestLog log;
    ScriptedService service(ScriptedService::Tcp);
    addOneMachine(service);
    RecordingTrovek client;
    const Address good = service.address();
    QCOMPARE(thrownText(
                 [&] { client.connectToDaemon(Address::tcp(good.host(), good.port(), "guess")); }),
             std::string("Wrong token"));
    QVERIFY(!client.isConnected());

    client.connectToDaemon(good);
    QVERIFY(client.isConnected());
    QTRY_COMPARE(client.story(), kArrival);
}

void tst_TrovekConnect::aServiceThatIsNotThereIsAnError()
{
    TestLog log;
    const QTemporaryDir folder;
    const std::string path = toStdString(folder.filePath(QStringLiteral("s")));
    RecordingTrovek client;
    const std::string text = thrownText([&] { client.connectToDaemon(Address::local(path)); });
    QVERIFY2(text.rfind("Cannot reach the service at local:" + path + ": ", 0) == 0, text.c_str());
    QVERIFY(!client.isConnected());
    // Nothing was ever connected, so nothing is lost.
    QCoreApplication::processEvents();
    QCOMPARE(client.story(), std::string());
}

void tst_TrovekConnect::aHungServiceIsGivenUpInTime_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::newRow("at the greeting") << QByteArray("hello");
    QTest::newRow("at the subscription") << QByteArray("subscribe");
}

void tst_TrovekConnect::aHungServiceIsGivenUpInTime()
{
    QFETCH(QByteArray, method);
    TestLog log;
    ScriptedService service;
    service.hangNext(method.toStdString());
    RecordingTrovek client;
    client.setDeadlineScale(0.1);
    QElapsedTimer timer;
    timer.start();
    const std::string text = thrownText([&] { client.connectToDaemon(service.address()); });
    QVERIFY2(text.rfind("No answer to \"" + method.toStdString() + '"', 0) == 0, text.c_str());
    // 5 s scaled; far below anything else that could have ended it.
    QVERIFY(timer.elapsed() < 4000);
    QVERIFY(!client.isConnected());
    client.setDeadlineScale(1);
    client.connectToDaemon(service.address());
    QVERIFY(client.isConnected());
}

void tst_TrovekConnect::aMuteTcpServiceIsGivenUpInTime()
{
    TestLog log;
    QTcpServer mute;
    QVERIFY(mute.listen(QHostAddress::LocalHost));
    RecordingTrovek client;
    client.setDeadlineScale(0.02);
    const std::string text = thrownText(
        [&] { client.connectToDaemon(Address::tcp("127.0.0.1", mute.serverPort(), "t")); });
    QVERIFY2(text.rfind("No answer to \"hello\"", 0) == 0, text.c_str());
}

void tst_TrovekConnect::anotherMajorVersionIsRefused()
{
    TestLog log;
    ScriptedService service;
    service.setProtocolVersion(2, 3);
    RecordingTrovek client;
    QCOMPARE(thrownText([&] { client.connectToDaemon(service.address()); }),
             std::string("The service speaks protocol version 2.3, this program 1.0"));
    QVERIFY(!client.isConnected());
    QCOMPARE(client.serviceVersion(), std::string());
    QVERIFY(service.requests("subscribe").empty());
}

void tst_TrovekConnect::aServiceThatRefusesTheVersionTellsIts()
{
    TestLog log;
    ScriptedService service;
    Json::Value data(Json::objectValue);
    data["name"] = wire::error::kProtocolVersion;
    data["message"] = "No";
    service.failNext("hello", JsonRpcException("No", data));
    data["version"]["major"] = 4;
    data["version"]["minor"] = 1;
    service.failNext("hello", JsonRpcException("No", data));
    RecordingTrovek client;
    QCOMPARE(thrownText([&] { client.connectToDaemon(service.address()); }), std::string("No"));
    QCOMPARE(thrownText([&] { client.connectToDaemon(service.address()); }),
             std::string("The service speaks protocol version 4.1, this program 1.0"));
}

void tst_TrovekConnect::anotherMinorVersionIsTaken()
{
    TestLog log;
    ScriptedService service;
    service.setProtocolVersion(1, 9);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QCOMPARE(client.serviceVersion(), std::string("1.9"));
}

void tst_TrovekConnect::oddAnswersToTheGreetingAreRefused_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("member");
    QTest::addColumn<QByteArray>("refusal");
    QTest::newRow("no version") << QByteArray("hello") << QByteArray("x")
                                << QByteArray("Odd answer to hello: no protocol version");
    QTest::newRow("odd version") << QByteArray("hello") << QByteArray("version")
                                 << QByteArray("Odd answer to hello: no protocol version");
    QTest::newRow("no ports") << QByteArray("subscribe") << QByteArray("printers")
                              << QByteArray("Odd answer to subscribe: no list of ports");
    QTest::newRow("no printers") << QByteArray("subscribe") << QByteArray("ports")
                                 << QByteArray("Odd answer to subscribe: no list of printers");
}

void tst_TrovekConnect::oddAnswersToTheGreetingAreRefused()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, member);
    QFETCH(QByteArray, refusal);
    TestLog log;
    ScriptedService service;
    Json::Value answer(Json::objectValue);
    answer[member.toStdString()] = Json::Value(Json::arrayValue);
    service.answerNext(method.toStdString(), answer);
    service.answerNext(method.toStdString(), Json::Value("text"));
    RecordingTrovek client;
    QCOMPARE(thrownText([&] { client.connectToDaemon(service.address()); }), refusal.toStdString());
    QVERIFY(thrownText([&] {
                client.connectToDaemon(service.address());
            }).rfind("Odd answer to " + method.toStdString(), 0) == 0);
    QVERIFY(!client.isConnected());
    QCoreApplication::processEvents();
    QCOMPARE(client.story(), std::string());
}

void tst_TrovekConnect::oddPartsOfTheSnapshotAreLeftOut()
{
    TestLog log;
    ScriptedService service;
    Json::Value snapshot(Json::objectValue);
    snapshot["ports"].append(5);
    snapshot["ports"].append(wire::toJson(ScriptedService::port("one")));
    snapshot["ports"].append(wire::toJson(ScriptedService::port("one")));
    snapshot["printers"].append(Json::Value(Json::objectValue));
    snapshot["printers"].append(wire::toJson(leftOnPortOne()));
    snapshot["printers"].append(wire::toJson(leftOnPortOne()));
    service.answerNext("subscribe", snapshot);
    log.expectError("Port left out: Not a JSON object: port");
    log.expectError("Printer left out: Missing member \"name\"");
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QCOMPARE(client.printers().size(), std::size_t(1));
    QTRY_COMPARE(client.story(), kArrival);
}

void tst_TrovekConnect::aFolderThatOthersCanWriteIsRefused()
{
    TestLog log;
    ScriptedService service;
    const std::string folder =
        service.address().name().substr(0, service.address().name().rfind('/'));
    const auto mode = QFile::permissions(toQString(folder));
    QVERIFY(QFile::setPermissions(toQString(folder), mode | QFile::WriteOther));
    RecordingTrovek client;
    QCOMPARE(thrownText([&] { client.connectToDaemon(service.address()); }),
             "Others can write the folder of the service's socket: " + folder);
    QVERIFY(service.requests().empty());
}

QTEST_GUILESS_MAIN(tst_TrovekConnect)
#include "tst_trovek_connect.moc"
