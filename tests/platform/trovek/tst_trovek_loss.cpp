#include "one_machine.h"
#include "recording_trovek.h"
#include "support/scripted_service.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek/text.h>

#include <QTemporaryDir>
#include <QTest>

#include <utility>

using namespace trovek;

/** Losing the link, disconnecting, and connecting anew. */
class tst_TrovekLoss : public QObject
{
    Q_OBJECT

private slots:
    void aLossIsAnnouncedInOrder_data();
    void aLossIsAnnouncedInOrder();
    void whatHasGoneBeforeIsNotSaidAgain();
    void garbageEndsTheLink();
    void aLostLinkIsKnownAtTheFirstHook();
    void disconnectingIsAnnouncedLater();
    void disconnectingBeforeTheAnnouncementsSaysOnlyThat();
    void connectingTwiceClosesTheFirstLink();
    void connectingTwiceToOneServiceKeepsWhatIsThere();
    void connectingAnewWorks();
    void connectingAnewFromADisconnectedHookWorks();
    void connectingAnewFromAnyHookWorks();
    void aFailedConnectAfterALinkAnnouncesTheLoss();
    void whatGoesWhileTheLinkIsDownIsGoneAfterwards();
};

void tst_TrovekLoss::aLossIsAnnouncedInOrder_data()
{
    QTest::addColumn<bool>("tcp");
    QTest::newRow("local socket") << false;
    QTest::newRow("TCP") << true;
}

void tst_TrovekLoss::aLossIsAnnouncedInOrder()
{
    QFETCH(bool, tcp);
    TestLog log;
    ScriptedService service(tcp ? ScriptedService::Tcp : ScriptedService::Local);
    addOneMachine(service);
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

void tst_TrovekLoss::whatHasGoneBeforeIsNotSaidAgain()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.removePrinter("left");
    service.removePort("one");
    QTRY_COMPARE(client.story(), kArrival + ", printerRemoved left, portDetached one");
    service.dropConnections();
    QTRY_COMPARE(client.story(), kArrival + ", " + kDeparture);
}

void tst_TrovekLoss::garbageEndsTheLink()
{
    TestLog log;
    log.expectError("A frame is not JSON");
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kArrival);
    service.notifyJobChanged(1);
    service.sendRaw("garbage\n");
    service.notifyJobChanged(2);
    QTRY_COMPARE(client.story(), kArrival + ", jobChanged 1, " + kDeparture);
}

void tst_TrovekLoss::aLostLinkIsKnownAtTheFirstHook()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kArrival);
    std::string seen;
    client.onEvent = [&](const std::string&) {
        seen += client.isConnected() ? "yes" : "no";
        seen += std::to_string(client.printers().size()) + std::to_string(client.ports().size());
        seen += ' ';
    };
    service.dropConnections();
    QTRY_COMPARE(seen, std::string("no01 no00 no00 "));
}

void tst_TrovekLoss::disconnectingIsAnnouncedLater()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.disconnectFromDaemon();
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kArrival);
    client.events.clear();
    client.disconnectFromDaemon();
    client.disconnectFromDaemon();
    QVERIFY(!client.isConnected());
    QCOMPARE(client.serviceVersion(), std::string());
    QCOMPARE(client.story(), std::string());
    QTRY_COMPARE(client.story(), kDeparture);
    QTRY_COMPARE(service.clientCount(), 0);
    QCOMPARE(client.story(), kDeparture);
}

void tst_TrovekLoss::disconnectingBeforeTheAnnouncementsSaysOnlyThat()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Printer* const printer = client.printerFromKey(kLeft);
    client.disconnectFromDaemon();
    QTRY_COMPARE(client.story(), std::string("disconnected"));
    QVERIFY(client.printers().empty());
    QVERIFY(client.ports().empty());
    QVERIFY(!printer->isConnected());
}

void tst_TrovekLoss::connectingTwiceClosesTheFirstLink()
{
    TestLog log;
    ScriptedService first;
    ScriptedService second;
    addOneMachine(first);
    second.addPrinter(ScriptedService::machine("right", Printer::Fabrino2));
    RecordingTrovek client;
    client.connectToDaemon(first.address());
    Printer* const left = client.printerFromKey(kLeft);
    QTRY_COMPARE(client.story(), kArrival);
    client.events.clear();
    client.connectToDaemon(second.address());
    QVERIFY(client.isConnected());
    QVERIFY(!client.printerFromKey(kLeft));
    QVERIFY(!left->isConnected());
    QVERIFY(client.printerFromKey(MachineName("right")));
    QTRY_COMPARE(client.story(), kDeparture + ", printerAdded right");
    QTRY_COMPARE(first.clientCount(), 0);
    QVERIFY(client.isConnected());
    QVERIFY(client.printerFromKey(MachineName("right"))->isConnected());
}

void tst_TrovekLoss::connectingTwiceToOneServiceKeepsWhatIsThere()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kArrival);
    client.events.clear();
    std::string seen;
    client.onEvent = [&](const std::string&) {
        seen += std::to_string(client.printers().size()) + std::to_string(client.ports().size());
        seen += client.printerFromKey(kLeft)->isConnected() ? " " : "gone ";
    };
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kDeparture + ", " + kArrival);
    // The farewell is the old link's; what the new one brought is there all the time.
    QCOMPARE(seen, std::string("11 11 11 11 11 "));
}

void tst_TrovekLoss::connectingAnewWorks()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    for (int round = 0; round < 2; ++round) {
        client.connectToDaemon(service.address());
        Printer* const printer = client.printerFromKey(kLeft);
        QTRY_COMPARE(client.story(), kArrival);
        service.stop();
        QTRY_COMPARE(client.story(), kArrival + ", " + kDeparture);
        QVERIFY(thrownText([&] { client.connectToDaemon(service.address()); }) != "nothing thrown");
        service.start();
        client.events.clear();
        client.connectToDaemon(service.address());
        QCOMPARE(client.printerFromKey(kLeft), printer);
        QVERIFY(printer->isConnected());
        QTRY_COMPARE(client.story(), kArrival);
        client.disconnectFromDaemon();
        QTRY_COMPARE(client.story(), kArrival + ", " + kDeparture);
        client.events.clear();
    }
}

void tst_TrovekLoss::connectingAnewFromADisconnectedHookWorks()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kArrival);
    client.events.clear();
    client.onEvent = [&](const std::string& event) {
        if (event == "disconnected")
            client.connectToDaemon(service.address());
    };
    service.dropConnections();
    QTRY_COMPARE(client.story(), kDeparture + ", " + kArrival);
    QVERIFY(client.isConnected());
    QVERIFY(client.printerFromKey(kLeft)->isConnected());
}

void tst_TrovekLoss::connectingAnewFromAnyHookWorks()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kArrival);
    client.events.clear();
    bool once = false;
    client.onEvent = [&](const std::string& event) {
        if (event == "printerRemoved left" && !std::exchange(once, true))
            client.connectToDaemon(service.address());
    };
    service.dropConnections();
    QTRY_COMPARE(client.story(), kDeparture + ", " + kArrival);
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
    QTRY_COMPARE(client.story(),
                 kDeparture + ", portAttached one, portDetached one, disconnected, " + kArrival);
}

void tst_TrovekLoss::aFailedConnectAfterALinkAnnouncesTheLoss()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    const QTemporaryDir folder;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kArrival);
    client.events.clear();
    const Address nowhere = Address::local(toStdString(folder.filePath(QStringLiteral("s"))));
    QVERIFY(thrownText([&] { client.connectToDaemon(nowhere); }) != "nothing thrown");
    QVERIFY(!client.isConnected());
    QTRY_COMPARE(client.story(), kDeparture);
}

void tst_TrovekLoss::whatGoesWhileTheLinkIsDownIsGoneAfterwards()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Printer* const printer = client.printerFromKey(kLeft);
    QTRY_COMPARE(client.story(), kArrival);
    client.events.clear();
    service.dropConnections();
    service.removePrinter("left");
    client.connectToDaemon(service.address());
    QVERIFY(!client.printerFromKey(kLeft));
    QVERIFY(!printer->isConnected());
    QTRY_COMPARE(client.story(), kDeparture + ", portAttached one");
    QVERIFY(!printer->canPrint());
}

QTEST_GUILESS_MAIN(tst_TrovekLoss)
#include "tst_trovek_loss.moc"
