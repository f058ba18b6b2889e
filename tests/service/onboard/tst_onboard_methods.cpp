#include "onboard_world.h"

#include "service/raw_client.h"
#include "service/service_world.h"
#include "support/test_log.h"

#include <service/onboard/onboard_backups.h>

#include <rpcwire/json_text.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTest>

using namespace trovek;

namespace {

const MachineName kKey(ServiceWorld::kMachine);
constexpr char kName[] = "identity.machine_name";
constexpr char kRates[] = "acceleration.axis_rates";

/** "NAME NAME" of the error that a call throws: where clients look, and where all errors say it. */
template <typename Call>
std::string exceptionOf(Call call)
{
    try {
        call();
    } catch (const JsonRpcException& error) {
        const Json::Value& data = error.data();
        if (data["exception"]["message"].asString() != error.message())
            return "another message";
        return data["exception"]["name"].asString() + " " + errorName(error);
    }
    return "nothing";
}

template <typename Call>
JsonRpcException thrown(Call call)
{
    try {
        call();
    } catch (const JsonRpcException& error) {
        return error;
    }
    return JsonRpcException("nothing thrown", Json::Value(Json::objectValue));
}

/** A service with one machine open and idle, and its client. */
struct World
{
    explicit World(double timeScale = ServiceWorld::kFast)
        : service(timeScale)
    {
        service.start();
        connect();
    }

    void connect()
    {
        client = std::make_unique<RecordingTrovek>();
        client->connectToDaemon(service.address());
        ServiceWorld::openMachine(*client);
    }

    void restart()
    {
        client.reset();
        service.stop();
        service.start();
        connect();
    }

    void exchangeFirmware(const char* version)
    {
        client->events.clear();
        client->simulateFirmware(kKey.name(), version);
        QTRY_VERIFY(!eventsOf(*client, "portAttached").empty());
        ServiceWorld::openMachine(*client);
    }

    Printer* printer() const { return client->printerFromKey(kKey); }
    Json::Value read() const { return client->readEeprom(printer()).getEepromMap(); }
    void write(const Json::Value& document) const
    {
        client->writeEeprom(printer(), EepromMap(document));
    }
    QString folder() const
    {
        return service.stateDir() + QStringLiteral("/machines/virtual_fabrino_2");
    }

    ServiceWorld service;
    std::unique_ptr<RecordingTrovek> client;
};

} // namespace

class tst_OnboardMethods : public QObject
{
    Q_OBJECT

private slots:
    void aNewMachineHasFactoryValues();
    void whatIsWrittenSurvivesARestart();
    void oneWrongValueRefusesAll();
    void everyWriteMakesABackup();
    void tenBackupsAreKept();
    void aBackupIsReadAndWrittenBack();
    void backupsAreNamedNotFound_data();
    void backupsAreNamedNotFound();
    void aResetGivesFactoryValues();
    void aResetOccupiesItsMachineOnly();
    void aResetOutlivesItsClient();
    void aResetEndsWithThePlug();
    void theServiceEndsInAReset();
    void aBusyMachineIsLeftAlone();
    void aConnectingMachineIsNotAsked();
    void aFirmwareWithoutAMapIsSaid();
    void anotherFirmwareHasAnotherMap();
    void whatIsNoMachineHasNoMemory();
    void theDocumentMustBeAnObject();
    void realsTravelWithAPoint();
    void aFolderThatCannotBeWrittenIsSaid();
};

void tst_OnboardMethods::aNewMachineHasFactoryValues()
{
    TestLog log;
    World world;

    const Json::Value document = world.read();

    QCOMPARE(document["machine_type"].asString(), std::string("fabrino_2"));
    QCOMPARE(document["firmware_version"].asString(), std::string("7.5"));
    QCOMPARE(valueOf(document, kName)[0].asString(), std::string("Orvane"));
    QVERIFY(valueOf(document, kRates) == json("[1000, 1000, 150, 2000, 2000]"));
    QVERIFY(log.contains("The onboard memory is erased and gets factory values"));
    QVERIFY(world.client->eepromBackups(world.printer()).empty());
}

void tst_OnboardMethods::whatIsWrittenSurvivesARestart()
{
    TestLog log;
    World world;
    Json::Value document = world.read();
    setValue(document, kName, R"(["Lab 7"])");
    setValue(document, kRates, "[1, 2, 3, 4, 10000]");
    setValue(document, "toolheads.right.pid.p", "[-2.25]");
    setValue(document, "build_stats.motor_steps", "[-9223372036854775808]");
    // What a client adds for itself is not looked at.
    document["comment"] = "mine";
    entryOf(document, kName)["comment"] = "mine";
    entryOf(document, kName)["tooltip"] = 5;

    world.write(document);
    world.restart();

    const Json::Value read = world.read();
    for (const char* const name :
         {kName, kRates, "toolheads.right.pid.p", "build_stats.motor_steps"})
        QVERIFY2(valueOf(read, name) == valueOf(document, name), name);
    QVERIFY(!read.isMember("comment"));
    QVERIFY(entryOf(document, kName)["tooltip"] !=
            read["eeprom_map"]["identity"]["sub_map"]["machine_name"]["tooltip"]);
}

void tst_OnboardMethods::oneWrongValueRefusesAll()
{
    TestLog log;
    World world;
    const Json::Value before = world.read();
    Json::Value document = before;
    setValue(document, kName, R"(["another"])");
    setValue(document, kRates, "[1000, 1000, 20000, 2000, 2000]");
    setValue(document, "identity.toolhead_count", "[3]");

    const JsonRpcException error = thrown([&] { world.write(document); });

    QCOMPARE(errorName(error), std::string("EepromValueError"));
    QCOMPARE(error.message(),
             std::string("These settings cannot be written: acceleration.axis_rates must be from 1 "
                         "to 10000; identity.toolhead_count must be one of 1, 2"));
    QVERIFY(error.data()["entries"] == json(R"([
        {"name": "acceleration.axis_rates", "reason": "must be from 1 to 10000"},
        {"name": "identity.toolhead_count", "reason": "must be one of 1, 2"}])"));
    QCOMPARE(exceptionOf([&] { world.write(document); }),
             std::string("EepromValueError EepromValueError"));
    QVERIFY(world.read() == before);
    QVERIFY(world.client->eepromBackups(world.printer()).empty());
}

void tst_OnboardMethods::everyWriteMakesABackup()
{
    TestLog log;
    World world;
    Json::Value document = world.read();
    const qint64 begin = QDateTime::currentMSecsSinceEpoch();
    for (const char* const name : {R"(["one"])", R"(["two"])", R"(["three"])"}) {
        setValue(document, kName, name);
        world.write(document);
    }
    const qint64 end = QDateTime::currentMSecsSinceEpoch();

    const std::vector<EepromBackup> backups = world.client->eepromBackups(world.printer());

    QCOMPARE(backups.size(), std::size_t(3));
    const char* const expected[] = {"two", "one", "Orvane"};
    for (std::size_t i = 0; i < backups.size(); ++i) {
        const Json::Value map =
            world.client->readEepromBackup(world.printer(), backups[i].name).getEepromMap();
        QCOMPARE(valueOf(map, kName)[0].asString(), std::string(expected[i]));
        QVERIFY(backups[i].time >= begin && backups[i].time <= end);
    }
    QCOMPARE(valueOf(world.read(), kName)[0].asString(), std::string("three"));
}

void tst_OnboardMethods::tenBackupsAreKept()
{
    TestLog log;
    World world;
    Json::Value document = world.read();
    for (int i = 0; i < 13; ++i) {
        setValue(document, kName, "[\"" + QByteArray::number(i) + "\"]");
        world.write(document);
    }

    const std::vector<EepromBackup> backups = world.client->eepromBackups(world.printer());

    QCOMPARE(backups.size(), std::size_t(10));
    const auto nameIn = [&](const EepromBackup& backup) {
        return valueOf(world.client->readEepromBackup(world.printer(), backup.name).getEepromMap(),
                       kName)[0]
            .asString();
    };
    QCOMPARE(nameIn(backups.front()), std::string("11"));
    QCOMPARE(nameIn(backups.back()), std::string("2"));
}

void tst_OnboardMethods::aBackupIsReadAndWrittenBack()
{
    TestLog log;
    World world;
    const Json::Value before = world.read();
    Json::Value document = before;
    setValue(document, kName, R"(["changed"])");
    world.write(document);
    const std::string name = world.client->eepromBackups(world.printer()).at(0).name;

    world.write(world.client->readEepromBackup(world.printer(), name).getEepromMap());

    QVERIFY(world.read() == before);
}

void tst_OnboardMethods::backupsAreNamedNotFound_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char* const name :
         {"", "x", "..", "../memory", "../memory.bin", "/etc/passwd", "000001", "*"})
        QTest::newRow(*name ? name : "empty") << QByteArray(name);
    QTest::newRow("with a zero in it") << QByteArray("a\0b", 3);
}

void tst_OnboardMethods::backupsAreNamedNotFound()
{
    QFETCH(QByteArray, name);
    TestLog log;
    World world;
    world.write(world.read());
    QFile copy(world.folder() + QStringLiteral("/memory.bin"));
    QVERIFY(copy.exists());

    QCOMPARE(
        exceptionOf([&] { world.client->readEepromBackup(world.printer(), name.toStdString()); }),
        std::string("UnknownEepromBackupError UnknownEepromBackupError"));
}

void tst_OnboardMethods::aResetGivesFactoryValues()
{
    TestLog log;
    World world;
    const Json::Value factory = world.read();
    Json::Value document = factory;
    setValue(document, kName, R"(["mine"])");
    world.write(document);

    world.client->resetEepromCompletely(kKey);

    QVERIFY(world.read() == factory);
    const std::vector<EepromBackup> backups = world.client->eepromBackups(world.printer());
    QCOMPARE(backups.size(), std::size_t(2));
    const Json::Value last =
        world.client->readEepromBackup(world.printer(), backups.front().name).getEepromMap();
    QCOMPARE(valueOf(last, kName)[0].asString(), std::string("mine"));
    // And once more.
    world.client->resetEepromCompletely(kKey);
    QVERIFY(world.read() == factory);
}

void tst_OnboardMethods::aResetOccupiesItsMachineOnly()
{
    TestLog log;
    World world(1);
    ServiceWorld::openMachine(*world.client, ServiceWorld::kOtherPort);
    RawClient raw(world.service.address());
    raw.greet();
    Json::Value params(Json::objectValue);
    params["machine"] = kKey.name();
    raw.call(7, wire::method::kResetEepromCompletely, params);

    // The reset needs seconds, and all that is meanwhile.
    QTRY_COMPARE(world.printer()->state(), Printer::Running);
    const MachineName other(ServiceWorld::kOtherMachine);
    world.client->readEeprom(world.client->printerFromKey(other));
    QCOMPARE(exceptionOf([&] { world.read(); }),
             std::string("MachineStateException MachineStateException"));
    QCOMPARE(exceptionOf([&] { world.client->resetEepromCompletely(kKey); }),
             std::string("MachineStateException MachineStateException"));
    QCOMPARE(errorOf([&] { world.client->home(kKey); }), std::string("MachineStateException"));
    QCOMPARE(thrown([&] { world.read(); }).message(),
             std::string("The machine is busy: Factory reset"));
    QVERIFY(eventsOf(*world.client, "jobAdded").empty());

    Json::Value answer;
    for (int i = 0; i < 12 && answer.isNull(); ++i)
        answer = raw.readLine();
    QCOMPARE(answer["id"].asInt(), 7);
    QVERIFY(answer.isMember("result") && answer["result"].isNull());
    QTRY_COMPARE(world.printer()->state(), Printer::Idle);
    world.read();
}

void tst_OnboardMethods::aResetOutlivesItsClient()
{
    TestLog log;
    World world(4);
    const Json::Value factory = world.read();
    Json::Value document = factory;
    setValue(document, kName, R"(["mine"])");
    world.write(document);
    {
        RawClient raw(world.service.address());
        raw.greet();
        Json::Value params(Json::objectValue);
        params["machine"] = kKey.name();
        raw.call(7, wire::method::kResetEepromCompletely, params);
        QTRY_COMPARE(world.printer()->state(), Printer::Running);
    }

    QTRY_COMPARE_WITH_TIMEOUT(world.printer()->state(), Printer::Idle, 60000);

    QVERIFY(world.read() == factory);
    QCOMPARE(world.client->eepromBackups(world.printer()).size(), std::size_t(2));
}

void tst_OnboardMethods::aResetEndsWithThePlug()
{
    TestLog log;
    World world(0.5);
    Json::Value document = world.read();
    setValue(document, kName, R"(["mine"])");
    world.write(document);
    RawClient raw(world.service.address());
    raw.greet();
    Json::Value params(Json::objectValue);
    params["machine"] = kKey.name();
    raw.call(7, wire::method::kResetEepromCompletely, params);
    QTRY_COMPARE(world.printer()->state(), Printer::Running);

    world.client->simulateUnplug(kKey.name());

    const Json::Value error = raw.readLine()["error"];
    QCOMPARE(error["message"].asString(), std::string("The machine was unplugged"));
    QCOMPARE(error["data"]["exception"]["name"].asString(), std::string("EepromWriteError"));
    QFile memory(world.folder() + QStringLiteral("/memory.bin"));
    QVERIFY(memory.open(QIODevice::ReadOnly));
    QVERIFY(memory.readAll().contains("mine"));
}

void tst_OnboardMethods::theServiceEndsInAReset()
{
    TestLog log;
    World world(1);
    Json::Value document = world.read();
    setValue(document, kName, R"(["mine"])");
    world.write(document);
    RawClient raw(world.service.address());
    raw.greet();
    Json::Value params(Json::objectValue);
    params["machine"] = kKey.name();
    raw.call(7, wire::method::kResetEepromCompletely, params);
    QTRY_COMPARE(world.printer()->state(), Printer::Running);

    world.restart();

    QCOMPARE(valueOf(world.read(), kName)[0].asString(), std::string("mine"));
}

void tst_OnboardMethods::aBusyMachineIsLeftAlone()
{
    TestLog log;
    World world;
    const Json::Value document = world.read();
    world.write(document);
    const std::string backup = world.client->eepromBackups(world.printer()).at(0).name;
    const std::string busy = "MachineStateException MachineStateException";
    const auto refusesAll = [&] {
        QCOMPARE(exceptionOf([&] { world.read(); }), busy);
        QCOMPARE(exceptionOf([&] { world.write(document); }), busy);
        QCOMPARE(exceptionOf([&] { world.client->resetEepromCompletely(kKey); }), busy);
        // The machine is not asked for these.
        QCOMPARE(world.client->eepromBackups(world.printer()).size(), std::size_t(1));
        world.client->readEepromBackup(world.printer(), backup);
    };

    const int jog = world.client->jog(kKey, Printer::ZAxis, 1, 100000);
    refusesAll();
    world.client->cancelJob(jog);
    const std::string file = world.service.writeFile(QStringLiteral("long.gcode"), longGCode());
    const int print = world.client->print(kKey, file, SlicerConfiguration(), {}, true);
    refusesAll();
    world.client->cancelJob(print);
    QVERIFY(world.read() == document);
}

void tst_OnboardMethods::aConnectingMachineIsNotAsked()
{
    TestLog log;
    ServiceWorld world(0.0001);
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    client.connectToPort(client.portFromName(ServiceWorld::kPort));
    QTRY_VERIFY(client.printerFromKey(kKey) != nullptr);

    const JsonRpcException error = thrown([&] { client.readEeprom(client.printerFromKey(kKey)); });

    QCOMPARE(errorName(error), std::string("MachineStateException"));
    QCOMPARE(error.message(), std::string("The machine is not ready"));
}

void tst_OnboardMethods::aFirmwareWithoutAMapIsSaid()
{
    TestLog log;
    World world;
    world.exchangeFirmware("7.4");
    const std::string missing = "MissingEepromMapError MissingEepromMapError";

    QCOMPARE(exceptionOf([&] { world.read(); }), missing);
    QCOMPARE(exceptionOf([&] { world.write(json(R"({"eeprom_map": {}})")); }), missing);
    QCOMPARE(exceptionOf([&] { world.client->resetEepromCompletely(kKey); }), missing);
    QCOMPARE(exceptionOf([&] { world.client->eepromBackups(world.printer()); }), missing);
    QCOMPARE(exceptionOf([&] { world.client->readEepromBackup(world.printer(), "1"); }), missing);
    QCOMPARE(thrown([&] { world.read(); }).message(),
             std::string("There is no map of the onboard memory for firmware 7.4"));
    // A machine that is busy says that first.
    world.client->jog(kKey, Printer::ZAxis, 1, 100000);
    QCOMPARE(exceptionOf([&] { world.read(); }),
             std::string("MachineStateException MachineStateException"));
}

void tst_OnboardMethods::anotherFirmwareHasAnotherMap()
{
    TestLog log;
    World world;
    Json::Value document = world.read();
    setValue(document, kName, R"(["mine"])");
    world.write(document);
    world.write(document);
    const std::string older = world.client->eepromBackups(world.printer()).front().name;

    world.exchangeFirmware("7.6");

    const Json::Value read = world.read();
    QCOMPARE(read["firmware_version"].asString(), std::string("7.6"));
    QVERIFY(read["eeprom_map"].isMember("network"));
    QCOMPARE(valueOf(read, kName)[0].asString(), std::string("mine"));
    QVERIFY(world.client->eepromBackups(world.printer()).empty());
    const JsonRpcException error =
        thrown([&] { world.client->readEepromBackup(world.printer(), older); });
    QCOMPARE(error.message(), "The backup was made with firmware 7.5: " + older);
    QCOMPARE(thrown([&] { world.write(document); }).message(),
             std::string("These settings cannot be written: they are of another firmware than "
                         "fabrino_2 7.6"));
    // The way back finds the backups that were made there, and the one made at the exchange.
    world.exchangeFirmware("7.5");
    QVERIFY(world.read() == document);
    QCOMPARE(world.client->eepromBackups(world.printer()).size(), std::size_t(3));
}

void tst_OnboardMethods::whatIsNoMachineHasNoMemory()
{
    TestLog log;
    World world;
    Printer* const archetype = world.client->printerFromKey(MachineName(ServiceWorld::kArchetype));
    QVERIFY(archetype != nullptr);
    QCOMPARE(errorOf([&] { world.client->readEeprom(archetype); }), std::string("ArchetypeError"));
    QCOMPARE(errorOf([&] { world.client->eepromBackups(archetype); }),
             std::string("ArchetypeError"));
    Printer* const machine = world.printer();
    world.client->simulateUnplug(kKey.name());
    QCOMPARE(errorOf([&] { world.client->readEeprom(machine); }),
             std::string("UnknownMachineError"));
    QCOMPARE(errorOf([&] { world.client->resetEepromCompletely(MachineName("nobody")); }),
             std::string("UnknownMachineError"));
}

void tst_OnboardMethods::theDocumentMustBeAnObject()
{
    TestLog log;
    World world;
    QCOMPARE(errorOf([&] { world.write(json("[]")); }), std::string("InvalidArgumentError"));
    QCOMPARE(exceptionOf([&] { world.write(json("{}")); }),
             std::string("EepromValueError EepromValueError"));
}

void tst_OnboardMethods::realsTravelWithAPoint()
{
    TestLog log;
    World world;
    Json::Value document = world.read();
    setValue(document, "filament.right.spool_left", "[5.0]");
    world.write(document);
    RawClient raw(world.service.address());
    raw.greet();
    Json::Value params(Json::objectValue);
    params["machine"] = kKey.name();

    raw.call(7, wire::method::kReadEeprom, params);

    const Json::Value read = raw.readLine()["result"];
    QCOMPARE(valueOf(read, "filament.right.spool_left")[0].type(), Json::realValue);
    QCOMPARE(rpcwire::toJsonLine(valueOf(read, "filament.right.spool_left")), std::string("[5.0]"));
    QVERIFY(world.read() == EepromMap::fromService(read).getEepromMap());
}

void tst_OnboardMethods::aFolderThatCannotBeWrittenIsSaid()
{
    TestLog log;
    World world;
    const Json::Value document = world.read();
    // A file stands where the folder belongs.
    QFile file(world.folder() + QStringLiteral("/backups"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    QCOMPARE(exceptionOf([&] { world.write(document); }),
             std::string("EepromWriteError EepromWriteError"));
    QCOMPARE(exceptionOf([&] { world.client->resetEepromCompletely(kKey); }),
             std::string("EepromWriteError EepromWriteError"));
    // The machine is free again.
    QVERIFY(world.read() == document);
}

QTEST_GUILESS_MAIN(tst_OnboardMethods)
#include "tst_onboard_methods.moc"
