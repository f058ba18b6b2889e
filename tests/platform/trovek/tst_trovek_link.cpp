#include "recording_trovek.h"
#include "support/scripted_service.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <memory>

using namespace trovek;

namespace {

const MachineName kLeft("left");

const std::string kHello = "portAttached one, printerAdded left";
const std::string kGoodbye = "printerRemoved left, portDetached one, disconnected";

Printer::Data leftOnPortOne()
{
    Printer::Data data = ScriptedService::machine("left", Printer::Fabrino2);
    data.portName = "one";
    return data;
}

/** One machine, "left", on the port "one". */
void fill(ScriptedService& service)
{
    service.addPort(ScriptedService::port("one"));
    service.addPrinter(leftOnPortOne());
}

} // namespace

/** Connecting, being told, losing the link and connecting anew. */
class tst_TrovekLink : public QObject
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

    void noHookIsCalledInsideAnOperation();
    void eventsKeepTheirOrder();
    void stateChangesJustBeforeTheHook();
    void aSecondAnnouncementIsAChange();
    void aPrinterKeepsItsLastPortName();
    void aPrinterThatReturnsIsTheSameObject();
    void portsKnowTheirMachine();
    void portsOfOneNameAreToldApartByIdentity();
    void oddNotificationsAreDropped_data();
    void oddNotificationsAreDropped();

    void aLossIsAnnouncedInOrder_data();
    void aLossIsAnnouncedInOrder();
    void garbageEndsTheLink();
    void aLostLinkIsKnownAtTheFirstHook();
    void disconnectingIsAnnouncedLater();
    void disconnectingBeforeTheAnnouncementsSaysOnlyThat();
    void connectingTwiceClosesTheFirstLink();
    void connectingAnewWorks();
    void connectingAnewFromADisconnectedHookWorks();
    void connectingAnewFromAnyHookWorks();
    void aFailedConnectAfterALinkAnnouncesTheLoss();
    void whatGoesWhileTheLinkIsDownIsGoneAfterwards();

    void aHookThatThrowsHurtsNobody();
    void anEventLoopInsideAHookKeepsTheOrder();
    void noHookIsCalledAfterTheClient();
};

void tst_TrovekLink::everythingIsKnownWhenConnectingReturns()
{
    TestLog log;
    ScriptedService service;
    fill(service);
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

void tst_TrovekLink::everythingIsAnnouncedFromTheEventLoop()
{
    TestLog log;
    ScriptedService service;
    service.addPrinter(ScriptedService::machine("free", Printer::Fabrino2));
    fill(service);
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

void tst_TrovekLink::theGreetingSaysVersionAndProgram()
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

void tst_TrovekLink::tcpNeedsTheToken()
{
    TestLog log;
    ScriptedService service(ScriptedService::Tcp);
    fill(service);
    RecordingTrovek client;
    const Address good = service.address();
    QCOMPARE(thrownText([&] {
                 client.connectToDaemon(Address::tcp(good.host(), good.port(), "guess"));
             }),
             std::string("Wrong token"));
    QVERIFY(!client.isConnected());

    client.connectToDaemon(good);
    QVERIFY(client.isConnected());
    QTRY_COMPARE(client.story(), kHello);
}

void tst_TrovekLink::aServiceThatIsNotThereIsAnError()
{
    TestLog log;
    const QTemporaryDir folder;
    const std::string path = toStdString(folder.filePath(QStringLiteral("s")));
    RecordingTrovek client;
    const std::string text =
        thrownText([&] { client.connectToDaemon(Address::local(path)); });
    QVERIFY2(text.rfind("Cannot reach the service at local:" + path + ": ", 0) == 0, text.c_str());
    QVERIFY(!client.isConnected());
    // Nothing was ever connected, so nothing is lost.
    QCoreApplication::processEvents();
    QCOMPARE(client.story(), std::string());
}

void tst_TrovekLink::aHungServiceIsGivenUpInTime_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::newRow("at the greeting") << QByteArray("hello");
    QTest::newRow("at the subscription") << QByteArray("subscribe");
}

void tst_TrovekLink::aHungServiceIsGivenUpInTime()
{
    QFETCH(QByteArray, method);
    TestLog log;
    ScriptedService service;
    service.hangNext(method.toStdString());
    RecordingTrovek client;
    client.setDeadlineScale(0.02);
    QElapsedTimer timer;
    timer.start();
    const std::string text = thrownText([&] { client.connectToDaemon(service.address()); });
    QVERIFY2(text.rfind("No answer to \"" + method.toStdString() + '"', 0) == 0, text.c_str());
    // 5 s scaled; far below anything else that could have ended it.
    QVERIFY(timer.elapsed() < 3000);
    QVERIFY(!client.isConnected());
    client.setDeadlineScale(1);
    client.connectToDaemon(service.address());
    QVERIFY(client.isConnected());
}

void tst_TrovekLink::aMuteTcpServiceIsGivenUpInTime()
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

void tst_TrovekLink::anotherMajorVersionIsRefused()
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

void tst_TrovekLink::aServiceThatRefusesTheVersionTellsIts()
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

void tst_TrovekLink::anotherMinorVersionIsTaken()
{
    TestLog log;
    ScriptedService service;
    service.setProtocolVersion(1, 9);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QCOMPARE(client.serviceVersion(), std::string("1.9"));
}

void tst_TrovekLink::oddAnswersToTheGreetingAreRefused_data()
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

void tst_TrovekLink::oddAnswersToTheGreetingAreRefused()
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
    QVERIFY(thrownText([&] { client.connectToDaemon(service.address()); })
                .rfind("Odd answer to " + method.toStdString(), 0) == 0);
    QVERIFY(!client.isConnected());
    QCoreApplication::processEvents();
    QCOMPARE(client.story(), std::string());
}

void tst_TrovekLink::oddPartsOfTheSnapshotAreLeftOut()
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
    QTRY_COMPARE(client.story(), kHello);
}

void tst_TrovekLink::aFolderThatOthersCanWriteIsRefused()
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

void tst_TrovekLink::noHookIsCalledInsideAnOperation()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kHello);
    client.events.clear();

    service.removePrinter("left");
    service.notifyJobChanged(3);
    // The answer comes after both on the same stream, so they have arrived.
    client.home(kLeft);
    QCOMPARE(client.story(), std::string());
    QVERIFY(client.printerFromKey(kLeft));
    QVERIFY(client.printerFromKey(kLeft)->isConnected());
    QTRY_COMPARE(client.story(), std::string("printerRemoved left, jobChanged 3"));
    QVERIFY(!client.printerFromKey(kLeft));
}

void tst_TrovekLink::eventsKeepTheirOrder()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    fill(service);
    service.changePrinter(leftOnPortOne());
    service.notifyJobAdded(1);
    service.notifyJobChanged(1);
    service.notifyJobConcluded(1);
    Json::Value camera(Json::objectValue);
    camera["device_path"] = "/dev/video7";
    service.notify("camera_closed", camera);
    service.removePrinter("left");
    service.removePort("one");
    QTRY_COMPARE(client.story(),
                 kHello
                     + ", printerChanged left, jobAdded 1, jobChanged 1, jobConcluded 1, "
                       "cameraClosed /dev/video7, printerRemoved left, portDetached one");
}

void tst_TrovekLink::stateChangesJustBeforeTheHook()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    std::string seen;
    client.onEvent = [&](const std::string&) {
        seen += std::to_string(client.ports().size()) + '/'
                + std::to_string(client.printers().size()) + ' ';
    };
    fill(service);
    service.removePrinter("left");
    service.removePort("one");
    QTRY_COMPARE(client.events.size(), std::size_t(4));
    QCOMPARE(seen, std::string("1/0 1/1 1/0 0/0 "));
}

void tst_TrovekLink::aSecondAnnouncementIsAChange()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    // Before the event loop had a chance to announce anything.
    Printer::Data changed = leftOnPortOne();
    changed.displayName = "New name";
    service.notify("printer_added", wire::toJson(changed));
    Port::Data port = ScriptedService::port("one");
    port.displayName = "New port";
    service.notify("port_attached", wire::toJson(port));
    QTRY_COMPARE(client.story(), kHello + ", printerChanged left");
    QTRY_COMPARE(client.portFromName("one").displayName(), std::string("New port"));
    QCOMPARE(client.printerFromKey(kLeft)->displayName(), std::string("New name"));
    QCOMPARE(client.events.size(), std::size_t(3));
}

void tst_TrovekLink::aPrinterKeepsItsLastPortName()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Printer* const printer = client.printerFromKey(kLeft);
    Printer::Data changed = leftOnPortOne();
    changed.portName.clear();
    changed.state = Printer::ErrorState;
    service.changePrinter(changed);
    QTRY_COMPARE(printer->state(), Printer::ErrorState);
    QCOMPARE(printer->portName(), std::string("one"));

    std::string seen;
    client.onEvent = [&](const std::string& event) {
        if (event == "printerRemoved left")
            seen = printer->portName() + (printer->isConnected() ? " connected" : " gone")
                   + (printer->canPrint() ? " prints" : "");
    };
    service.removePrinter("left");
    QTRY_COMPARE(seen, std::string("one gone"));
}

void tst_TrovekLink::aPrinterThatReturnsIsTheSameObject()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Printer* const printer = client.printerFromKey(kLeft);
    service.removePrinter("left");
    QTRY_VERIFY(!client.printerFromKey(kLeft));
    QVERIFY(!printer->canPrint());
    service.addPrinter(leftOnPortOne());
    QTRY_COMPARE(client.printerFromKey(kLeft), printer);
    QVERIFY(printer->isConnected());
    QVERIFY(printer->canPrint());
}

void tst_TrovekLink::portsKnowTheirMachine()
{
    TestLog log;
    ScriptedService service;
    service.addPort(ScriptedService::port("one"));
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QCOMPARE(client.printerFromPortName("one").name(), std::string());
    std::string seen;
    client.onEvent = [&](const std::string& event) {
        seen += event + '=' + client.printerFromPortName("one").name() + ' ';
    };
    service.addPrinter(leftOnPortOne());
    service.removePrinter("left");
    QTRY_COMPARE(seen, std::string("portAttached one= printerAdded left=left printerRemoved left= "));
}

void tst_TrovekLink::portsOfOneNameAreToldApartByIdentity()
{
    TestLog log;
    ScriptedService service;
    Port::Data first = ScriptedService::port("one");
    Port::Data second = first;
    second.identity = "another";
    service.addPort(first);
    service.addPort(second);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QCOMPARE(client.ports().size(), std::size_t(2));
    QTRY_COMPARE(client.story(), std::string("portAttached one, portAttached one"));
    Json::Value params(Json::objectValue);
    params["name"] = "one";
    params["identity"] = "another";
    service.notify("port_detached", params);
    QTRY_COMPARE(client.ports().size(), std::size_t(1));
    QCOMPARE(client.ports().begin()->identity(), first.identity);
    QTRY_COMPARE(client.events.back(), std::string("portDetached one"));
}

void tst_TrovekLink::oddNotificationsAreDropped_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("reason");

    const auto row = [](const char* method, const char* params, const char* reason) {
        QTest::addRow("%s %s", method, params)
            << QByteArray(R"({"jsonrpc": "2.0", "method": ")") + method + R"(", "params": )" + params
                   + "}\n"
            << "Notification " + QByteArray(method) + " dropped: " + reason;
    };
    row("unheard_of", "{}", "unknown name");
    row("printer_added", "[]", "Not a JSON object: printer");
    row("printer_added", "{}", "Missing member \"name\"");
    row("printer_added", R"({"name": "x", "type": "y"})",
        "Member \"type\" is not an integer of 32 bits");
    row("printer_changed", R"({"name": "stranger"})", "unknown printer stranger");
    row("printer_changed", R"({"name": 5})", "Member \"name\" is not a string");
    row("printer_removed", R"({"name": "stranger"})", "unknown printer stranger");
    row("printer_removed", "{}", "Missing member \"name\"");
    row("port_attached", R"({"name": "x"})", "Missing member \"identity\"");
    row("port_changed", R"({"name": "x", "identity": "y"})", "unknown port x");
    row("port_detached", R"({"name": "x", "identity": "y"})", "unknown port x");
    row("port_detached", R"({"name": "one"})", "Missing member \"identity\"");
    row("job_added", R"({"id": "3"})", "Member \"id\" is not an integer of 32 bits");
    row("job_changed", "[3]", "No JSON object around member \"id\"");
    row("job_concluded", "{}", "Missing member \"id\"");
    row("camera_closed", R"({"device_path": null})", "Member \"device_path\" is not a string");
}

void tst_TrovekLink::oddNotificationsAreDropped()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, reason);
    TestLog log;
    log.expectError(reason.toStdString());
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.sendRaw(line);
    service.notifyJobChanged(1);
    QTRY_COMPARE(client.story(), kHello + ", jobChanged 1");
    QVERIFY(client.isConnected());
}

void tst_TrovekLink::aLossIsAnnouncedInOrder_data()
{
    QTest::addColumn<bool>("tcp");
    QTest::newRow("local socket") << false;
    QTest::newRow("TCP") << true;
}

void tst_TrovekLink::aLossIsAnnouncedInOrder()
{
    QFETCH(bool, tcp);
    TestLog log;
    ScriptedService service(tcp ? ScriptedService::Tcp : ScriptedService::Local);
    fill(service);
    service.addPort(ScriptedService::port("two"));
    service.addPrinter(ScriptedService::machine("free", Printer::CubioSingle));
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.events.size(), std::size_t(4));
    client.events.clear();
    service.stop();
    QTRY_COMPARE(client.story(),
                 std::string("printerRemoved left, printerRemoved free, portDetached one, "
                             "portDetached two, disconnected"));
    QVERIFY(client.printers().empty());
    QVERIFY(client.ports().empty());
    QVERIFY(log.contains("Link to the service closed: ", 1));
}

void tst_TrovekLink::garbageEndsTheLink()
{
    TestLog log;
    log.expectError("A frame is not JSON");
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kHello);
    service.notifyJobChanged(1);
    service.sendRaw("garbage\n");
    service.notifyJobChanged(2);
    QTRY_COMPARE(client.story(), kHello + ", jobChanged 1, " + kGoodbye);
}

void tst_TrovekLink::aLostLinkIsKnownAtTheFirstHook()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kHello);
    std::string seen;
    client.onEvent = [&](const std::string&) {
        seen += client.isConnected() ? "yes" : "no";
        seen += std::to_string(client.printers().size()) + std::to_string(client.ports().size());
        seen += ' ';
    };
    service.dropConnections();
    QTRY_COMPARE(seen, std::string("no01 no00 no00 "));
}

void tst_TrovekLink::disconnectingIsAnnouncedLater()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.disconnectFromDaemon();
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kHello);
    client.events.clear();
    client.disconnectFromDaemon();
    client.disconnectFromDaemon();
    QVERIFY(!client.isConnected());
    QCOMPARE(client.serviceVersion(), std::string());
    QCOMPARE(client.story(), std::string());
    QTRY_COMPARE(client.story(), kGoodbye);
    QTRY_COMPARE(service.clientCount(), 0);
    QCOMPARE(client.story(), kGoodbye);
}

void tst_TrovekLink::disconnectingBeforeTheAnnouncementsSaysOnlyThat()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Printer* const printer = client.printerFromKey(kLeft);
    client.disconnectFromDaemon();
    QTRY_COMPARE(client.story(), std::string("disconnected"));
    QVERIFY(client.printers().empty());
    QVERIFY(client.ports().empty());
    QVERIFY(!printer->isConnected());
}

void tst_TrovekLink::connectingTwiceClosesTheFirstLink()
{
    TestLog log;
    ScriptedService first;
    ScriptedService second;
    fill(first);
    second.addPrinter(ScriptedService::machine("right", Printer::Fabrino2));
    RecordingTrovek client;
    client.connectToDaemon(first.address());
    Printer* const left = client.printerFromKey(kLeft);
    QTRY_COMPARE(client.story(), kHello);
    client.events.clear();
    client.connectToDaemon(second.address());
    QVERIFY(client.isConnected());
    QVERIFY(!client.printerFromKey(kLeft));
    QVERIFY(!left->isConnected());
    QVERIFY(client.printerFromKey(MachineName("right")));
    QTRY_COMPARE(client.story(), kGoodbye + ", printerAdded right");
    QTRY_COMPARE(first.clientCount(), 0);
    QVERIFY(client.isConnected());
    QVERIFY(client.printerFromKey(MachineName("right"))->isConnected());
}

void tst_TrovekLink::connectingAnewWorks()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    for (int round = 0; round < 2; ++round) {
        client.connectToDaemon(service.address());
        Printer* const printer = client.printerFromKey(kLeft);
        QTRY_COMPARE(client.story(), kHello);
        service.stop();
        QTRY_COMPARE(client.story(), kHello + ", " + kGoodbye);
        QVERIFY(thrownText([&] { client.connectToDaemon(service.address()); })
                != "nothing thrown");
        service.start();
        client.events.clear();
        client.connectToDaemon(service.address());
        QCOMPARE(client.printerFromKey(kLeft), printer);
        QVERIFY(printer->isConnected());
        QTRY_COMPARE(client.story(), kHello);
        client.disconnectFromDaemon();
        QTRY_COMPARE(client.story(), kHello + ", " + kGoodbye);
        client.events.clear();
    }
}

void tst_TrovekLink::connectingAnewFromADisconnectedHookWorks()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kHello);
    client.events.clear();
    client.onEvent = [&](const std::string& event) {
        if (event == "disconnected")
            client.connectToDaemon(service.address());
    };
    service.dropConnections();
    QTRY_COMPARE(client.story(), kGoodbye + ", " + kHello);
    QVERIFY(client.isConnected());
    QVERIFY(client.printerFromKey(kLeft)->isConnected());
}

void tst_TrovekLink::connectingAnewFromAnyHookWorks()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kHello);
    client.events.clear();
    bool once = false;
    client.onEvent = [&](const std::string& event) {
        if (event == "printerRemoved left" && !std::exchange(once, true))
            client.connectToDaemon(service.address());
    };
    service.dropConnections();
    QTRY_COMPARE(client.story(), kGoodbye + ", " + kHello);
    QCOMPARE(client.ports().size(), std::size_t(1));
    QCOMPARE(client.printers().size(), std::size_t(1));
    QVERIFY(client.printerFromKey(kLeft)->isConnected());

    // While the announcements are under way: the rest of them belongs to the old link.
    client.events.clear();
    once = false;
    client.onEvent = [&](const std::string& event) {
        if (event == "portAttached one" && !std::exchange(once, true))
            client.connectToDaemon(service.address());
    };
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kGoodbye + ", portAttached one, portDetached one, disconnected, "
                                     + kHello);
}

void tst_TrovekLink::aFailedConnectAfterALinkAnnouncesTheLoss()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    const QTemporaryDir folder;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kHello);
    client.events.clear();
    const Address nowhere = Address::local(toStdString(folder.filePath(QStringLiteral("s"))));
    QVERIFY(thrownText([&] { client.connectToDaemon(nowhere); }) != "nothing thrown");
    QVERIFY(!client.isConnected());
    QTRY_COMPARE(client.story(), kGoodbye);
}

void tst_TrovekLink::whatGoesWhileTheLinkIsDownIsGoneAfterwards()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Printer* const printer = client.printerFromKey(kLeft);
    QTRY_COMPARE(client.story(), kHello);
    client.events.clear();
    service.dropConnections();
    service.removePrinter("left");
    client.connectToDaemon(service.address());
    QVERIFY(!client.printerFromKey(kLeft));
    QVERIFY(!printer->isConnected());
    QTRY_COMPARE(client.story(), kGoodbye + ", portAttached one");
    QVERIFY(!printer->canPrint());
}

void tst_TrovekLink::aHookThatThrowsHurtsNobody()
{
    TestLog log;
    log.expectError("Hook for portAttached threw: broken");
    log.expectError("Hook for printerAdded threw something");
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.onEvent = [](const std::string& event) {
        if (event == "portAttached one")
            throw std::runtime_error("broken");
        throw 5;
    };
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kHello);
    client.onEvent = nullptr;
    service.notifyJobAdded(1);
    QTRY_COMPARE(client.story(), kHello + ", jobAdded 1");
}

void tst_TrovekLink::anEventLoopInsideAHookKeepsTheOrder()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    RecordingTrovek client;
    client.onEvent = [&](const std::string& event) {
        if (event != "portAttached one")
            return;
        // As a message box does that a slot opens.
        service.notifyJobAdded(1);
        service.dropConnections();
        QEventLoop loop;
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, &loop, [&] {
            if (client.events.back() == "disconnected")
                loop.quit();
        });
        watch.start(1);
        QTimer::singleShot(5000, &loop, &QEventLoop::quit);
        loop.exec();
    };
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kHello + ", jobAdded 1, " + kGoodbye);
}

void tst_TrovekLink::noHookIsCalledAfterTheClient()
{
    TestLog log;
    ScriptedService service;
    fill(service);
    std::vector<std::string> events;
    {
        RecordingTrovek client;
        client.onEvent = [&](const std::string& event) { events.push_back(event); };
        client.connectToDaemon(service.address());
    }
    QTRY_COMPARE(service.clientCount(), 0);
    QCoreApplication::processEvents();
    QVERIFY(events.empty());
}

QTEST_GUILESS_MAIN(tst_TrovekLink)
#include "tst_trovek_link.moc"
