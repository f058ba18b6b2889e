#include "fault_world.h"
#include "support/test_log.h"

#include <QTest>

using namespace trovek;

using Events = std::vector<std::string>;

/** Machines whose cables are put into other ports. */
class tst_SimulatedPorts : public QObject
{
    Q_OBJECT

private slots:
    void aMachineComesBackOnAnotherPort();
    void itsJobFailsWithItsPlug();
    void oneThatIsNotPluggedInStaysSo();
    void anotherMachineMayUseThePortThatIsFree();
    void takenNamesAreRefused_data();
    void takenNamesAreRefused();
    void aNewStartBringsItsOwnPortBack();
};

void tst_SimulatedPorts::aMachineComesBackOnAnotherPort()
{
    TestLog log;
    FaultWorld world;
    QTRY_VERIFY(!eventsOf(*world.client, "printerChanged").empty());
    const std::string identity = world.client->portFromName(ServiceWorld::kPort).identity();
    world.client->events.clear();

    world.client->simulatePort(world.key.name(), "usb7");

    QTRY_COMPARE(world.client->events, (Events{"printerRemoved virtual_fabrino_2",
                                               "portDetached virtual1", "portAttached usb7"}));
    // The device is the same.
    QCOMPARE(world.client->portFromName("usb7").identity(), identity);
    ServiceWorld::openMachine(*world.client, "usb7");
    QCOMPARE(world.printer()->portName(), std::string("usb7"));
    QCOMPARE(world.client->printerFromPortName("usb7"), world.key);
    QCOMPARE(world.client->simulatedMachines()[0]["port"].asString(), std::string("usb7"));
    QCOMPARE(errorOf([&] { world.client->disconnectFromPort(ServiceWorld::kPort); }),
             std::string("UnknownPortError"));
    world.client->disconnectFromPort("usb7");
    QTRY_VERIFY(world.printer() == nullptr);
}

void tst_SimulatedPorts::itsJobFailsWithItsPlug()
{
    TestLog log;
    FaultWorld world;
    const int job = world.client->jog(world.key, Printer::ZAxis, 1, 1'000'000);
    world.client->simulatePort(world.key.name(), "usb7");
    QCOMPARE(world.client->jobFromID(job).conclusion(), JobFailed);
    QCOMPARE(world.client->jobFromID(job).failure(), std::string("The machine was unplugged"));
}

void tst_SimulatedPorts::oneThatIsNotPluggedInStaysSo()
{
    TestLog log;
    FaultWorld world;
    world.client->simulatePort("virtual_cubio_dual", "usb7");
    QCOMPARE(world.client->simulatedMachines()[5]["plugged_in"].asBool(), false);
    world.client->simulatePlugIn("virtual_cubio_dual");
    QTRY_VERIFY(!eventsOf(*world.client, "portAttached usb7").empty());
}

void tst_SimulatedPorts::anotherMachineMayUseThePortThatIsFree()
{
    TestLog log;
    FaultWorld world;
    world.client->simulatePort(world.key.name(), "usb7");
    world.client->simulatePort(world.key.name(), "usb8");
    world.client->simulatePort(ServiceWorld::kOtherMachine, "usb7");
    QTRY_COMPARE(world.client->ports().size(), std::size_t(2));
    // The first is of the machine that moved on.
    QTRY_COMPARE(int(eventsOf(*world.client, "portAttached usb7").size()), 2);
    ServiceWorld::openMachine(*world.client, "usb7");
    QCOMPARE(world.client->printerFromPortName("usb7"), MachineName(ServiceWorld::kOtherMachine));
    // Its own one is always free for it; so is the one that it is on.
    world.client->simulatePort(world.key.name(), "usb8");
    world.client->simulatePort(world.key.name(), ServiceWorld::kPort);
    QTRY_VERIFY(!eventsOf(*world.client, "portAttached virtual1").empty());
}

void tst_SimulatedPorts::takenNamesAreRefused_data()
{
    QTest::addColumn<QString>("machine");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QByteArray>("expected");

    const QString machine = QString::fromLatin1(ServiceWorld::kMachine);
    const QByteArray invalid("InvalidArgumentError");
    QTest::newRow("another's") << machine << QStringLiteral("virtual2") << invalid;
    QTest::newRow("that of one that is not plugged in")
        << machine << QStringLiteral("virtual6") << invalid;
    QTest::newRow("where another was moved to") << machine << QStringLiteral("usb9") << invalid;
    QTest::newRow("where another was moved from")
        << machine << QStringLiteral("virtual5") << invalid;
    QTest::newRow("none") << machine << QString() << invalid;
    QTest::newRow("of nobody") << QStringLiteral("nobody") << QStringLiteral("usb7")
                               << QByteArray("UnknownMachineError");
}

void tst_SimulatedPorts::takenNamesAreRefused()
{
    QFETCH(QString, machine);
    QFETCH(QString, port);
    QFETCH(QByteArray, expected);
    TestLog log;
    FaultWorld world;
    world.client->simulatePort("virtual_cubio_single", "usb9");
    world.client->events.clear();

    QCOMPARE(
        errorOf([&] { world.client->simulatePort(machine.toStdString(), port.toStdString()); }),
        expected.toStdString());

    QVERIFY(world.printer() != nullptr);
    QCOMPARE(world.printer()->portName(), std::string(ServiceWorld::kPort));
    QVERIFY(eventsOf(*world.client, "port").empty());
}

void tst_SimulatedPorts::aNewStartBringsItsOwnPortBack()
{
    TestLog log;
    FaultWorld world;
    world.client->simulatePort(world.key.name(), "usb7");
    world.client.reset();
    world.service.stop();
    world.service.start();
    world.connect();
    ServiceWorld::openMachine(*world.client);
    QCOMPARE(world.printer()->portName(), std::string(ServiceWorld::kPort));
}

QTEST_GUILESS_MAIN(tst_SimulatedPorts)
#include "tst_simulated_ports.moc"
