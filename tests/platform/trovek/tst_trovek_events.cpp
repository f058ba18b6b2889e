#include "one_machine.h"
#include "recording_trovek.h"
#include "support/scripted_service.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek/text.h>
#include <trovek/wire.h>

#include <QEventLoop>
#include <QTest>
#include <QTimer>

using namespace trovek;

/** What the service tells, and the order in which hooks hear it. */
class tst_TrovekEvents : public QObject
{
    Q_OBJECT

private slots:
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
    void aHookThatThrowsHurtsNobody();
    void anEventLoopInsideAHookKeepsTheOrder();
    void noHookIsCalledAfterTheClient();
};

void tst_TrovekEvents::noHookIsCalledInsideAnOperation()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kArrival);
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

void tst_TrovekEvents::eventsKeepTheirOrder()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    addOneMachine(service);
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
                 kArrival + ", printerChanged left, jobAdded 1, jobChanged 1, jobConcluded 1, "
                            "cameraClosed /dev/video7, printerRemoved left, portDetached one");
}

void tst_TrovekEvents::stateChangesJustBeforeTheHook()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    std::string seen;
    client.onEvent = [&](const std::string&) {
        seen += std::to_string(client.ports().size()) + '/' +
                std::to_string(client.printers().size()) + ' ';
    };
    addOneMachine(service);
    service.removePrinter("left");
    service.removePort("one");
    QTRY_COMPARE(client.events.size(), std::size_t(4));
    QCOMPARE(seen, std::string("1/0 1/1 1/0 0/0 "));
}

void tst_TrovekEvents::aSecondAnnouncementIsAChange()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    // Before the event loop had a chance to announce anything.
    Printer::Data changed = leftOnPortOne();
    changed.displayName = "New name";
    service.notify("printer_added", wire::toJson(changed));
    Port::Data port = ScriptedService::port("one");
    port.displayName = "New port";
    service.notify("port_attached", wire::toJson(port));
    QTRY_COMPARE(client.story(), kArrival + ", printerChanged left");
    QTRY_COMPARE(client.portFromName("one").displayName(), std::string("New port"));
    QCOMPARE(client.printerFromKey(kLeft)->displayName(), std::string("New name"));
    QCOMPARE(client.events.size(), std::size_t(3));
}

void tst_TrovekEvents::aPrinterKeepsItsLastPortName()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
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
            seen = printer->portName() + (printer->isConnected() ? " connected" : " gone") +
                   (printer->canPrint() ? " prints" : "");
    };
    service.removePrinter("left");
    QTRY_COMPARE(seen, std::string("one gone"));
}

void tst_TrovekEvents::aPrinterThatReturnsIsTheSameObject()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
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

void tst_TrovekEvents::portsKnowTheirMachine()
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
    service.notifyJobAdded(1);
    QTRY_COMPARE(seen, std::string("portAttached one= printerAdded left=left "
                                   "printerRemoved left=left jobAdded 1= "));
}

void tst_TrovekEvents::portsOfOneNameAreToldApartByIdentity()
{
    TestLog log;
    ScriptedService service;
    Port::Data first = ScriptedService::port("one");
    Port::Data second = first;
    second.identity = "another";
    second.machineName = "left";
    service.addPort(first);
    service.addPort(second);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QCOMPARE(client.ports().size(), std::size_t(2));
    QCOMPARE(client.printerFromPortName("one").name(), std::string("left"));
    QTRY_COMPARE(client.story(), std::string("portAttached one, portAttached one"));
    Json::Value params(Json::objectValue);
    params["name"] = "one";
    params["identity"] = "another";
    service.notify("port_detached", params);
    QTRY_COMPARE(client.ports().size(), std::size_t(1));
    QCOMPARE(client.ports().begin()->identity(), first.identity);
    QTRY_COMPARE(client.events.back(), std::string("portDetached one"));
}

void tst_TrovekEvents::oddNotificationsAreDropped_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("reason");

    const auto row = [](const char* method, const char* params, const char* reason) {
        QTest::addRow("%s %s", method, params)
            << QByteArray(R"({"jsonrpc": "2.0", "method": ")") + method + R"(", "params": )" +
                   params + "}\n"
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

void tst_TrovekEvents::oddNotificationsAreDropped()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, reason);
    TestLog log;
    log.expectError(reason.toStdString());
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.sendRaw(line);
    service.notifyJobChanged(1);
    QTRY_COMPARE(client.story(), kArrival + ", jobChanged 1");
    QVERIFY(client.isConnected());
}

void tst_TrovekEvents::aHookThatThrowsHurtsNobody()
{
    TestLog log;
    log.expectError("Hook for portAttached threw: broken");
    log.expectError("Hook for printerAdded threw something");
    ScriptedService service;
    addOneMachine(service);
    RecordingTrovek client;
    client.onEvent = [](const std::string& event) {
        if (event == "portAttached one")
            throw std::runtime_error("broken");
        throw 5;
    };
    client.connectToDaemon(service.address());
    QTRY_COMPARE(client.story(), kArrival);
    client.onEvent = nullptr;
    service.notifyJobAdded(1);
    QTRY_COMPARE(client.story(), kArrival + ", jobAdded 1");
}

void tst_TrovekEvents::anEventLoopInsideAHookKeepsTheOrder()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
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
    QTRY_COMPARE(client.story(), kArrival + ", jobAdded 1, " + kDeparture);
}

void tst_TrovekEvents::noHookIsCalledAfterTheClient()
{
    TestLog log;
    ScriptedService service;
    addOneMachine(service);
    std::vector<std::string> events;
    {
        RecordingTrovek client;
        client.onEvent = [&](const std::string& event) {
            events.push_back(event);
        };
        client.connectToDaemon(service.address());
    }
    QTRY_COMPARE(service.clientCount(), 0);
    QCoreApplication::processEvents();
    QVERIFY(events.empty());
}

QTEST_GUILESS_MAIN(tst_TrovekEvents)
#include "tst_trovek_events.moc"
