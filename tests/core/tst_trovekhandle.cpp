#include "support/scripted_service.h"
#include "support/test_log.h"

#include <trovek-ui/trovekhandle.h>

#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <memory>
#include <stdexcept>

using namespace trovek;
using trovek::ui::TrovekHandle;

namespace {

/** A service, and a host's settings in a file of their own. */
struct World
{
    ScriptedService service;
    QTemporaryDir folder;
    QSettings settings{folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat};

    static QString keyOf(const Port::Data& port)
    {
        return QStringLiteral("KnownMachineTypes/") +
               QString::fromLatin1(QUrl::toPercentEncoding(QString::fromStdString(port.identity)));
    }

    QStringList openedPorts() const
    {
        QStringList ports;
        for (const Json::Value& request : service.requests("connect_to_port"))
            ports.append(QString::fromStdString(request["port"].asString()));
        return ports;
    }
};

Printer::Data machineOn(const std::string& port, Printer::Type type)
{
    Printer::Data data = ScriptedService::machine("machine on " + port, type);
    data.portName = port;
    return data;
}

} // namespace

class tst_TrovekHandle : public QObject
{
    Q_OBJECT

private slots:
    void refusesNullSettings();
    void givesAccessToItsFacade();
    void isDestroyedThroughItsBase();
    void opensAPortOnTheWhitelist();
    void opensAnotherPortOnlyWhenItsMachineIsKnown_data();
    void opensAnotherPortOnlyWhenItsMachineIsKnown();
    void logsThePortThatIsAttached();
    void survivesAPortThatIsGone();
    void survivesAServiceThatRefuses();
    void remembersTheTypeOfAMachine_data();
    void remembersTheTypeOfAMachine();
    void remembersNothingForAnotherPort();
    void remembersNothingOfAnUnknownType();
    void remembersItForEveryPortOfTheName();
    void survivesANullPrinter();
    void encodesAnIdentityWithSlashes();
    void opensADeviceThatItHasSeenBefore();
};

void tst_TrovekHandle::refusesNullSettings()
{
    TestLog log;
    try {
        TrovekHandle handle(nullptr);
        QFAIL("No exception");
    } catch (const std::logic_error& error) {
        QCOMPARE(std::string(error.what()), std::string("null settings"));
    }
}

void tst_TrovekHandle::givesAccessToItsFacade()
{
    TestLog log;
    World world;
    TrovekHandle handle(&world.settings);

    QVERIFY(!handle->isConnected());
    handle->connectToDaemon(world.service.address());

    QVERIFY(handle->isConnected());
    QCOMPARE(&*handle, handle.operator->());
}

void tst_TrovekHandle::isDestroyedThroughItsBase()
{
    TestLog log;
    World world;
    std::unique_ptr<QObject> handle = std::make_unique<TrovekHandle>(&world.settings);
    QSignalSpy destroyed(&**static_cast<TrovekHandle*>(handle.get()), &QObject::destroyed);

    handle.reset();

    QCOMPARE(destroyed.count(), 1);
}

void tst_TrovekHandle::opensAPortOnTheWhitelist()
{
    TestLog log;
    World world;
    Port::Data port = ScriptedService::port("usb1");
    port.inConnectionWhitelist = true;
    // What would be an error if anybody looked.
    world.settings.setValue(World::keyOf(port), QStringLiteral("no such type"));
    TrovekHandle handle(&world.settings);
    handle->connectToDaemon(world.service.address());

    world.service.addPort(port);

    QTRY_COMPARE(world.openedPorts(), QStringList{QStringLiteral("usb1")});
    QCOMPARE(world.service.lastRequest("connect_to_port")["identity"].asString(), port.identity);
}

void tst_TrovekHandle::opensAnotherPortOnlyWhenItsMachineIsKnown_data()
{
    QTest::addColumn<QString>("known");
    QTest::addColumn<bool>("opened");
    QTest::addColumn<QString>("error");

    QTest::newRow("never seen") << QString() << false << QString();
    QTest::newRow("seen") << QStringLiteral("fabrino_2") << true << QString();
    QTest::newRow("not an identifier")
        << QStringLiteral("fabrino_3") << false
        << QStringLiteral("Invalid machine type identifier:\nfabrino_3");
    QTest::newRow("upper case") << QStringLiteral("Fabrino_2") << false
                                << QStringLiteral("Invalid machine type identifier:\nFabrino_2");
}

void tst_TrovekHandle::opensAnotherPortOnlyWhenItsMachineIsKnown()
{
    TestLog log;
    QFETCH(QString, known);
    QFETCH(bool, opened);
    QFETCH(QString, error);
    World world;
    const Port::Data port = ScriptedService::port("usb1");
    if (!known.isEmpty())
        world.settings.setValue(World::keyOf(port), known);
    if (!error.isEmpty())
        log.expectError(error);
    TrovekHandle handle(&world.settings);
    QSignalSpy attached(&*handle, &TrovekQt::portAttached);
    handle->connectToDaemon(world.service.address());

    world.service.addPort(port);

    QTRY_COMPARE(attached.count(), 1);
    QCOMPARE(world.openedPorts().size(), opened ? 1 : 0);
}

void tst_TrovekHandle::logsThePortThatIsAttached()
{
    TestLog log;
    World world;
    const Port::Data port = ScriptedService::port("usb1");
    TrovekHandle handle(&world.settings);
    handle->connectToDaemon(world.service.address());

    world.service.addPort(port);

    QTRY_VERIFY(log.contains(to_string(Port(port)), Log::Info));
    for (const LogEntry& entry : log.sink().entries()) {
        if (entry.message == to_string(Port(port))) {
            QCOMPARE(entry.file, std::string("src\\core\\trovekhandle"));
            return;
        }
    }
    QFAIL("The port's text is no entry of its own");
}

void tst_TrovekHandle::survivesAPortThatIsGone()
{
    TestLog log;
    log.expectError("No such port: usb9");
    World world;
    TrovekHandle handle(&world.settings);
    handle->connectToDaemon(world.service.address());

    emit handle->portAttached("usb9");

    QVERIFY(world.openedPorts().isEmpty());
}

void tst_TrovekHandle::survivesAServiceThatRefuses()
{
    TestLog log;
    log.expectError("the cable is loose");
    World world;
    world.service.failNext("connect_to_port", JsonRpcException("the cable is loose"));
    Port::Data port = ScriptedService::port("usb1");
    port.inConnectionWhitelist = true;
    TrovekHandle handle(&world.settings);
    handle->connectToDaemon(world.service.address());

    world.service.addPort(port);

    QTRY_COMPARE(world.openedPorts().size(), 1);
    QTRY_VERIFY(log.contains("the cable is loose", Log::Error));
    QVERIFY(handle->isConnected());
}

void tst_TrovekHandle::remembersTheTypeOfAMachine_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("identifier");

    QTest::newRow("first type") << 1 << QStringLiteral("fabrino_single");
    QTest::newRow("last type") << 6 << QStringLiteral("cubio_dual");
}

void tst_TrovekHandle::remembersTheTypeOfAMachine()
{
    TestLog log;
    QFETCH(int, type);
    QFETCH(QString, identifier);
    World world;
    const Port::Data port = ScriptedService::port("usb1");
    world.service.addPort(port);
    TrovekHandle handle(&world.settings);
    handle->connectToDaemon(world.service.address());

    world.service.addPrinter(machineOn("usb1", static_cast<Printer::Type>(type)));

    QTRY_COMPARE(world.settings.value(World::keyOf(port)).toString(), identifier);
    QCOMPARE(world.settings.allKeys().size(), 1);
}

void tst_TrovekHandle::remembersNothingForAnotherPort()
{
    TestLog log;
    World world;
    world.service.addPort(ScriptedService::port("usb1"));
    TrovekHandle handle(&world.settings);
    QSignalSpy added(&*handle, &TrovekQt::printerAdded);
    handle->connectToDaemon(world.service.address());

    world.service.addPrinter(machineOn("usb2", Printer::Fabrino2));
    world.service.addPrinter(machineOn("USB1", Printer::Fabrino2));
    world.service.addPrinter(ScriptedService::archetype(Printer::Fabrino2));

    QTRY_COMPARE(added.count(), 3);
    QCOMPARE(world.settings.allKeys(), QStringList());
}

void tst_TrovekHandle::remembersNothingOfAnUnknownType()
{
    TestLog log;
    log.expectError("Invalid machine type");
    World world;
    world.service.addPort(ScriptedService::port("usb1"));
    TrovekHandle handle(&world.settings);
    QSignalSpy added(&*handle, &TrovekQt::printerAdded);
    handle->connectToDaemon(world.service.address());

    world.service.addPrinter(machineOn("usb1", Printer::UnknownType));

    QTRY_COMPARE(added.count(), 1);
    QCOMPARE(world.settings.allKeys(), QStringList());
}

void tst_TrovekHandle::remembersItForEveryPortOfTheName()
{
    TestLog log;
    World world;
    Port::Data first = ScriptedService::port("usb1");
    Port::Data second = first;
    first.identity = "23c1:d314:1";
    second.identity = "23c1:d314:2";
    world.service.addPort(first);
    world.service.addPort(second);
    TrovekHandle handle(&world.settings);
    handle->connectToDaemon(world.service.address());

    world.service.addPrinter(machineOn("usb1", Printer::CubioSingle));

    QTRY_COMPARE(world.settings.allKeys().size(), 2);
    QCOMPARE(world.settings.value(World::keyOf(first)).toString(), QStringLiteral("cubio_single"));
    QCOMPARE(world.settings.value(World::keyOf(second)).toString(), QStringLiteral("cubio_single"));
}

void tst_TrovekHandle::survivesANullPrinter()
{
    TestLog log;
    log.expectError("null printer");
    World world;
    TrovekHandle handle(&world.settings);

    emit handle->printerAdded(nullptr);

    QCOMPARE(log.messages(Log::Error), std::vector<std::string>{"null printer"});
    QCOMPARE(world.settings.allKeys(), QStringList());
}

void tst_TrovekHandle::encodesAnIdentityWithSlashes()
{
    TestLog log;
    World world;
    Port::Data port = ScriptedService::port("usb1");
    port.identity = "pci-0/usb:1 \xc3\xbc";
    world.service.addPort(port);
    TrovekHandle handle(&world.settings);
    handle->connectToDaemon(world.service.address());

    world.service.addPrinter(machineOn("usb1", Printer::Fabrino2X));

    QTRY_COMPARE(world.settings.allKeys(),
                 QStringList{QStringLiteral("KnownMachineTypes/pci-0%2Fusb%3A1%20%C3%BC")});
}

void tst_TrovekHandle::opensADeviceThatItHasSeenBefore()
{
    TestLog log;
    World world;
    Port::Data port = ScriptedService::port("usb1");
    world.service.addPort(port);
    TrovekHandle handle(&world.settings);
    handle->connectToDaemon(world.service.address());
    world.service.addPrinter(machineOn("usb1", Printer::Fabrino2));
    QTRY_COMPARE(world.settings.allKeys().size(), 1);
    QVERIFY(world.openedPorts().isEmpty());

    // The same device on another port.
    world.service.removePrinter("machine on usb1");
    world.service.removePort("usb1");
    port.name = "usb2";
    world.service.addPort(port);

    QTRY_COMPARE(world.openedPorts(), QStringList{QStringLiteral("usb2")});
}

QTEST_MAIN(tst_TrovekHandle)
#include "tst_trovekhandle.moc"
