#include "service_world.h"
#include "support/test_log.h"

#include <rpcwire/peer.h>
#include <trovek/text.h>

#include <QTest>

#include <algorithm>
#include <array>

using namespace trovek;

using Events = std::vector<std::string>;

class tst_ServiceMachines : public QObject
{
    Q_OBJECT

private slots:
    void offersTwoPortsAndSixArchetypesAtTheStart();
    void anArchetypeCanBeExportedForOnly();
    void opensAMachineThatConnectsAndBecomesIdle();
    void openingTwiceGivesTheSameMachine();
    void anotherIdentityOrAnUnknownPortIsRefused();
    void closesAMachineButKeepsItsPort();
    void plugsInAndOut();
    void unpluggingAPrintingMachineFailsItsJob();
    void disconnectingAPrintingMachineFailsItsJob();
    void anIdleMachineAtRoomTemperatureSaysNothing();
    void heatsAndCoolsWithFewNotifications();
    void refusesTemperatures_data();
    void refusesTemperatures();
    void temperaturesAndJobNumbersSurviveARestart();
    void anotherFirmwareComesWithAnotherPlugging();
    void firmwareCannotBeExchangedWhileItRuns();
    void twoClientsSeeTheSame();
    void aClientThatComesBetweenTwoChangesSeesTheSame();
};

namespace {

Printer* printer(Trovek& client, const char* key)
{
    return client.printerFromKey(MachineName(key));
}

/** What a simulated machine can be given, with blanks between. */
std::string firmwaresOf(const Json::Value& machine)
{
    std::string text;
    for (const Json::Value& version : machine["firmware_versions"])
        text += (text.empty() ? "" : " ") + version.asString();
    return text;
}

} // namespace

void tst_ServiceMachines::offersTwoPortsAndSixArchetypesAtTheStart()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());

    const std::set<Port> ports = client.ports();
    QCOMPARE(ports.size(), std::size_t(2));
    QCOMPARE(ports.begin()->name(), std::string("virtual1"));
    QCOMPARE(ports.begin()->identity(), std::string("virtual:0001"));
    QCOMPARE(ports.begin()->machineName(), std::string());
    QVERIFY(portInConnectionWhitelist(*ports.begin()));
    std::vector<int> types;
    for (const Printer* archetype : client.printers())
        types.push_back(archetype->type());
    QCOMPARE(types, (std::vector<int>{1, 2, 3, 4, 5, 6}));
    QTRY_COMPARE(client.events.size(), std::size_t(8));
    QCOMPARE(client.events[0], std::string("portAttached virtual1"));
    QCOMPARE(client.events[1], std::string("portAttached virtual2"));
}

void tst_ServiceMachines::anArchetypeCanBeExportedForOnly()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());

    const Printer* archetype = client.printers().front();
    QVERIFY(!archetype->canPrint());
    QVERIFY(archetype->canPrintToFile());
    QVERIFY(!archetype->isConnected());
    QCOMPARE(archetype->firmwareVersion().str(), std::string());
    QCOMPARE(archetype->portName(), std::string());
    const std::string file = world.writeFile(QStringLiteral("a.gcode"), squareGCode());
    QCOMPARE(errorOf([&] { client.print(archetype->key(), file, {}, {"pla"}, false); }),
             std::string("ArchetypeError"));
    QCOMPARE(errorOf([&] { client.home(archetype->key()); }), std::string("ArchetypeError"));
}

void tst_ServiceMachines::opensAMachineThatConnectsAndBecomesIdle()
{
    TestLog log;
    ServiceWorld world(50);
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    std::vector<int> states;
    client.onEvent = [&](const std::string&) {
        if (const Printer* machine = printer(client, ServiceWorld::kMachine))
            states.push_back(machine->state());
    };
    QTRY_COMPARE(client.events.size(), std::size_t(8));
    client.events.clear();

    client.connectToPort(client.portFromName(ServiceWorld::kPort));

    QTRY_COMPARE(client.events,
                 (Events{"printerAdded virtual_fabrino_2", "printerChanged virtual_fabrino_2"}));
    QCOMPARE(states, (std::vector<int>{Printer::Connecting, Printer::Idle}));
    const Printer* machine = printer(client, ServiceWorld::kMachine);
    QVERIFY(machine->isConnected() && machine->canPrint() && machine->canPrintToFile());
    QCOMPARE(machine->portName(), std::string("virtual1"));
    QCOMPARE(machine->displayName(), std::string("Virtual Fabrino 2"));
    QCOMPARE(machine->type(), Printer::Fabrino2);
    QCOMPARE(machine->firmwareVersion().str(), std::string("7.5"));
    QCOMPARE(machine->toolTemperature().toolheads, (std::vector<int>{23}));
    QCOMPARE(machine->buildVolumeXmax(), 285.0F);
    QCOMPARE(client.printerFromPortName("virtual1"), MachineName(ServiceWorld::kMachine));
}

void tst_ServiceMachines::openingTwiceGivesTheSameMachine()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    ServiceWorld::openMachine(client);

    client.connectToPort(client.portFromName(ServiceWorld::kPort));
    ServiceWorld::openMachine(client, ServiceWorld::kOtherPort);

    QCOMPARE(eventsOf(client, "printerAdded virtual_fabrino_2").size(), std::size_t(2));
    QCOMPARE(eventsOf(client, "printerAdded virtual_fabrino_2x").size(), std::size_t(1));
}

void tst_ServiceMachines::anotherIdentityOrAnUnknownPortIsRefused()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    const auto portOf = [](const char* name, const char* identity) {
        Port::Data data;
        data.name = name;
        data.identity = identity;
        return Port(data);
    };

    QCOMPARE(errorOf([&] { client.connectToPort(portOf("virtual1", "virtual:0009")); }),
             std::string("UnknownPortError"));
    QCOMPARE(errorOf([&] { client.connectToPort(portOf("virtual3", "virtual:0003")); }),
             std::string("UnknownPortError"));
    QCOMPARE(errorOf([&] { client.connectToPort(portOf("nothing", "x")); }),
             std::string("UnknownPortError"));
    QCOMPARE(errorOf([&] { client.disconnectFromPort("nothing"); }),
             std::string("UnknownPortError"));
    QCOMPARE(errorOf([&] { client.home(MachineName("nobody")); }),
             std::string("UnknownMachineError"));
    QCOMPARE(errorOf([&] { client.home(MachineName(ServiceWorld::kMachine)); }),
             std::string("UnknownMachineError"));
}

void tst_ServiceMachines::closesAMachineButKeepsItsPort()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    ServiceWorld::openMachine(client);
    client.events.clear();

    client.disconnectFromPort(ServiceWorld::kPort);
    client.disconnectFromPort(ServiceWorld::kPort);

    QTRY_COMPARE(client.events, (Events{"printerRemoved virtual_fabrino_2"}));
    QCOMPARE(client.ports().size(), std::size_t(2));
    QTRY_COMPARE(client.portFromName(ServiceWorld::kPort).machineName(), std::string());
    ServiceWorld::openMachine(client);
    QCOMPARE(eventsOf(client, "printerAdded").size(), std::size_t(1));
}

void tst_ServiceMachines::plugsInAndOut()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    QTRY_COMPARE(client.events.size(), std::size_t(8));
    client.events.clear();

    client.simulatePlugIn("virtual_cubio_dual");
    client.simulatePlugIn("virtual_cubio_dual");
    QTRY_COMPARE(client.events, (Events{"portAttached virtual6"}));
    ServiceWorld::openMachine(client, "virtual6");
    QCOMPARE(printer(client, "virtual_cubio_dual")->numberOfExtruders(), 2);
    client.events.clear();
    client.simulateUnplug("virtual_cubio_dual");
    client.simulateUnplug("virtual_cubio_dual");

    QTRY_COMPARE(client.events,
                 (Events{"printerRemoved virtual_cubio_dual", "portDetached virtual6"}));
    QCOMPARE(errorOf([&] { client.simulatePlugIn("nobody"); }), std::string("UnknownMachineError"));
    const Json::Value list = client.simulatedMachines();
    QCOMPARE(list.size(), 6U);
    QCOMPARE(list[0]["name"].asString(), std::string("virtual_fabrino_2"));
    QCOMPARE(list[0]["type"].asInt(), 3);
    QCOMPARE(list[0]["type_name"].asString(), std::string("fabrino_2"));
    QCOMPARE(list[0]["plugged_in"].asBool(), true);
    QCOMPARE(list[5]["plugged_in"].asBool(), false);
    QCOMPARE(list[0]["firmware_version"].asString(), std::string("7.5"));
    QCOMPARE(firmwaresOf(list[0]), std::string("5.9 7.5 7.6"));
    QCOMPARE(firmwaresOf(list[5]), std::string("3.9 4.1 4.2"));
    // One that no map is known of is told as well.
    client.simulateFirmware("virtual_cubio_dual", "3.8");
    const Json::Value older = client.simulatedMachines()[5];
    QCOMPARE(older["firmware_version"].asString(), std::string("3.8"));
    QCOMPARE(firmwaresOf(older), std::string("3.8 3.9 4.1 4.2"));
}

void tst_ServiceMachines::unpluggingAPrintingMachineFailsItsJob()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    ServiceWorld::openMachine(client);
    const std::string file = world.writeFile(QStringLiteral("a.gcode"), longGCode());
    const int job = client.print(MachineName(ServiceWorld::kMachine), file, {}, {"pla"}, true);
    QTRY_COMPARE(client.jobFromID(job).stage(), std::string("Printing"));
    client.events.clear();

    client.simulateUnplug(ServiceWorld::kMachine);

    QTRY_VERIFY(!client.events.empty() && client.events.back() == "portDetached virtual1");
    const std::string number = std::to_string(job);
    const Events end(client.events.end() - 4, client.events.end());
    QCOMPARE(end, (Events{"jobChanged " + number, "jobConcluded " + number,
                          "printerRemoved virtual_fabrino_2", "portDetached virtual1"}));
    QCOMPARE(client.jobFromID(job).conclusion(), JobFailed);
    QCOMPARE(client.jobFromID(job).failure(), std::string("The machine was unplugged"));
    QVERIFY(printer(client, ServiceWorld::kMachine) == nullptr);
}

void tst_ServiceMachines::disconnectingAPrintingMachineFailsItsJob()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    ServiceWorld::openMachine(client);
    const std::string file = world.writeFile(QStringLiteral("a.gcode"), longGCode());
    const int job = client.print(MachineName(ServiceWorld::kMachine), file, {}, {"pla"}, true);

    client.disconnectFromPort(ServiceWorld::kPort);

    QCOMPARE(client.jobFromID(job).conclusion(), JobFailed);
    QCOMPARE(client.jobFromID(job).failure(), std::string("The machine was disconnected"));
}

void tst_ServiceMachines::anIdleMachineAtRoomTemperatureSaysNothing()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    ServiceWorld::openMachine(client);
    client.events.clear();

    // Whatever the machine had to say would come before what the other one says now.
    ServiceWorld::openMachine(client, ServiceWorld::kOtherPort);
    client.setToolheadTemperature(MachineName(ServiceWorld::kOtherMachine), Printer::LeftToolhead,
                                  60);
    QTRY_COMPARE(printer(client, ServiceWorld::kOtherMachine)->toolTemperature().at(1), 60);

    const Events all = eventsOf(client, "printerChanged");
    QCOMPARE(std::count(all.begin(), all.end(), "printerChanged virtual_fabrino_2"), 0);
}

void tst_ServiceMachines::heatsAndCoolsWithFewNotifications()
{
    TestLog log;
    ServiceWorld world(60);
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    ServiceWorld::openMachine(client);
    const MachineName key(ServiceWorld::kMachine);
    std::vector<int> seen;
    client.onEvent = [&](const std::string&) {
        seen.push_back(printer(client, ServiceWorld::kMachine)->toolTemperature().at(0));
    };
    QElapsedTimer clock;
    clock.start();

    client.setToolheadTemperature(key, Printer::RightToolhead, 220);
    QTRY_COMPARE(printer(client, ServiceWorld::kMachine)->toolTemperature().at(0), 220);
    QCOMPARE(printer(client, ServiceWorld::kMachine)->toolheadTargetTemperature().at(0), 220);
    const qint64 elapsed = clock.elapsed();

    QVERIFY(std::is_sorted(seen.begin(), seen.end()));
    QVERIFY2(seen.size() > 2, "the temperature rises in steps that a user can see");
    QVERIFY2(static_cast<qint64>(seen.size()) <= 2 + elapsed / 250, "at most four in a second");
    seen.clear();
    client.setToolheadTemperature(key, Printer::RightToolhead, 0);
    QTRY_VERIFY(printer(client, ServiceWorld::kMachine)->toolTemperature().at(0) < 150);
    QVERIFY(std::is_sorted(seen.rbegin(), seen.rend()));
}

void tst_ServiceMachines::refusesTemperatures_data()
{
    QTest::addColumn<int>("toolhead");
    QTest::addColumn<int>("target");
    QTest::addColumn<QString>("expectedError");

    QTest::newRow("the limit itself") << 0 << 280 << QString();
    QTest::newRow("a degree above the limit")
        << 0 << 281 << QStringLiteral("TemperatureLimitError");
    QTest::newRow("far above") << 0 << 2147483647 << QStringLiteral("TemperatureLimitError");
    QTest::newRow("off") << 0 << 0 << QString();
    QTest::newRow("below zero") << 0 << -1 << QStringLiteral("InvalidArgumentError");
    QTest::newRow("a toolhead that it does not have")
        << 1 << 200 << QStringLiteral("InvalidArgumentError");
    QTest::newRow("a negative toolhead") << -1 << 200 << QStringLiteral("InvalidArgumentError");
}

void tst_ServiceMachines::refusesTemperatures()
{
    QFETCH(int, toolhead);
    QFETCH(int, target);
    QFETCH(QString, expectedError);
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    ServiceWorld::openMachine(client);

    const std::string error = errorOf([&] {
        client.setToolheadTemperature(MachineName(ServiceWorld::kMachine),
                                      static_cast<Printer::Toolhead>(toolhead), target);
    });

    QCOMPARE(toQString(error), expectedError);
}

void tst_ServiceMachines::temperaturesAndJobNumbersSurviveARestart()
{
    TestLog log;
    ServiceWorld world(50);
    world.start();
    int before = 0;
    {
        RecordingTrovek client;
        client.connectToDaemon(world.address());
        ServiceWorld::openMachine(client);
        client.setToolheadTemperature(MachineName(ServiceWorld::kMachine), Printer::RightToolhead,
                                      250);
        client.home(MachineName(ServiceWorld::kMachine));
        QTRY_COMPARE(printer(client, ServiceWorld::kMachine)->toolTemperature().at(0), 250);
        before = client.jog(MachineName(ServiceWorld::kMachine), Printer::XAxis, 1, 100000);
    }
    world.stop();
    world.options.timeScale = 1;
    world.start();

    RecordingTrovek client;
    client.connectToDaemon(world.address());
    ServiceWorld::openMachine(client);
    const int after = client.jog(MachineName(ServiceWorld::kMachine), Printer::XAxis, 1, 100000);

    QVERIFY2(after > before, "job numbers never repeat");
    const int celsius = printer(client, ServiceWorld::kMachine)->toolTemperature().at(0);
    QVERIFY2(celsius > 150, "the extruder is still warm");
    QCOMPARE(printer(client, ServiceWorld::kMachine)->toolheadTargetTemperature().at(0), 0);
    QCOMPARE(errorOf([&] { client.jobFromID(before); }), std::string("UnknownJobError"));
}

void tst_ServiceMachines::anotherFirmwareComesWithAnotherPlugging()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    ServiceWorld::openMachine(client);
    QCOMPARE(printer(client, ServiceWorld::kMachine)->firmwareVersion().str(), std::string("7.5"));
    client.events.clear();

    client.simulateFirmware(ServiceWorld::kMachine, "7.6");

    QTRY_COMPARE(eventsOf(client, "portAttached").size(), std::size_t(1));
    QCOMPARE(eventsOf(client, "printerRemoved virtual_fabrino_2").size(), std::size_t(1));
    QCOMPARE(eventsOf(client, "portDetached").size(), std::size_t(1));
    ServiceWorld::openMachine(client);
    QCOMPARE(printer(client, ServiceWorld::kMachine)->firmwareVersion().str(), std::string("7.6"));

    world.stop();
    world.start();
    RecordingTrovek later;
    later.connectToDaemon(world.address());
    ServiceWorld::openMachine(later);
    QCOMPARE(printer(later, ServiceWorld::kMachine)->firmwareVersion().str(), std::string("7.6"));
    // One that is not plugged in stays so.
    later.simulateFirmware("virtual_cubio_dual", "4.2");
    QCOMPARE(later.ports().size(), std::size_t(2));
}

void tst_ServiceMachines::firmwareCannotBeExchangedWhileItRuns()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    ServiceWorld::openMachine(client);
    const auto exchange = [&](const char* machine, const char* version) {
        return errorOf([&] { client.simulateFirmware(machine, version); });
    };

    for (const char* const version : {"", "7", "new", "7.6.1"})
        QCOMPARE(exchange(ServiceWorld::kMachine, version), std::string("InvalidArgumentError"));
    QCOMPARE(exchange("nobody", "7.6"), std::string("UnknownMachineError"));
    QCOMPARE(exchange(ServiceWorld::kArchetype, "7.6"), std::string("UnknownMachineError"));
    client.jog(MachineName(ServiceWorld::kMachine), Printer::ZAxis, 1, 100000);
    QCOMPARE(exchange(ServiceWorld::kMachine, "7.6"), std::string("MachineStateException"));
    QCOMPARE(printer(client, ServiceWorld::kMachine)->firmwareVersion().str(), std::string("7.5"));
}

void tst_ServiceMachines::twoClientsSeeTheSame()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek first;
    RecordingTrovek second;
    first.connectToDaemon(world.address());
    second.connectToDaemon(world.address());

    ServiceWorld::openMachine(first);

    QTRY_COMPARE(eventsOf(second, "printerAdded virtual_fabrino_2").size(), std::size_t(1));
    RecordingTrovek third;
    third.connectToDaemon(world.address());
    QVERIFY(printer(third, ServiceWorld::kMachine) != nullptr);
    QCOMPARE(third.printers().front()->key().name(), std::string(ServiceWorld::kMachine));
    QTRY_COMPARE(eventsOf(third, "").size(), std::size_t(9));
}

void tst_ServiceMachines::aClientThatComesBetweenTwoChangesSeesTheSame()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek first;
    first.connectToDaemon(world.address());
    ServiceWorld::openMachine(first);
    const MachineName key(ServiceWorld::kMachine);
    const auto targetSeenBy = [&key](const Trovek& client) {
        return client.printerFromKey(key)->toolheadTargetTemperature().at(0);
    };
    // Below room temperature, so that nothing else changes: told, held back, and taken back.
    first.setToolheadTemperature(key, Printer::RightToolhead, 1);
    QTRY_COMPARE(targetSeenBy(first), 1);
    first.setToolheadTemperature(key, Printer::RightToolhead, 2);
    RecordingTrovek second;
    second.connectToDaemon(world.address());
    QCOMPARE(targetSeenBy(second), 2);

    first.setToolheadTemperature(key, Printer::RightToolhead, 1);

    QTRY_COMPARE(targetSeenBy(second), 1);
    QTRY_COMPARE(targetSeenBy(first), 1);
}

QTEST_GUILESS_MAIN(tst_ServiceMachines)
#include "tst_service_machines.moc"
