#include "firmware_world.h"
#include "service/daemon.h"
#include "service/raw_client.h"
#include "support/test_log.h"

#include <trovek/wire.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

using namespace trovek;

using Story = std::vector<std::string>;
/** What a test does in the middle of an upload. */
using Break = std::function<void(FirmwareWorld&)>;
Q_DECLARE_METATYPE(Break)

/** Giving a machine other firmware. */
class tst_FirmwareUpload : public QObject
{
    Q_OBJECT

private slots:
    void theMachineLeavesAndComesBackWithIt();
    void everyTypeCanBeUpdated_data();
    void everyTypeCanBeUpdated();
    void theWayBackIsOpen();
    void aMachineComesBackOnItsPort();
    void nothingElseHappensOnTheMachineMeanwhile();
    void aMachineThatIsNotIdleIsLeftAlone_data();
    void aMachineThatIsNotIdleIsLeftAlone();
    void whatIsNoMachineTakesNone();
    void onlyDownloadsAreTaken_data();
    void onlyDownloadsAreTaken();
    void aDamagedDownloadIsRefused();
    void anotherTypesFirmwareIsRefused();
    void theOnboardMemoryIsBackedUpFirst();
    void aMemoryWithoutAMapIsBackedUpAsItIs();
    void thereIsNoUploadWithoutABackup();
    void aFailureLeavesTheEarlierFirmware_data();
    void aFailureLeavesTheEarlierFirmware();
    void aMachineThatDoesNotKeepItSaysSo();
    void whatTakesTheMachineAwayEndsIt_data();
    void whatTakesTheMachineAwayEndsIt();
    void itOutlivesItsClient();
    void theServiceEndsInTheMiddle();
    void theServiceEndsWhileTheImageIsRead();
    void theServiceIsKilledInTheMiddle();
};

namespace {

/** An upload that takes a second, under way. */
class RunningUpload
{
public:
    static constexpr double kTimeScale = 40;

    explicit RunningUpload(FirmwareWorld& world, const std::string& version = "7.6")
        : m_raw(world.service.address())
    {
        m_raw.greet();
        Json::Value params(Json::objectValue);
        params["machine"] = world.key.name();
        params["path"] = world.download(version);
        m_raw.call(1, wire::method::kUploadFirmware, params);
        QTRY_COMPARE(world.printer()->state(), Printer::Running);
    }

    /** "NAME: TEXT" of its error; "done" without one. */
    std::string outcome()
    {
        const Json::Value answer = m_raw.readLine();
        if (!answer.isMember("error"))
            return answer.isMember("result") ? "done" : "no answer";
        const Json::Value& error = answer["error"];
        return error["data"]["name"].asString() + ": " + error["message"].asString();
    }

private:
    RawClient m_raw;
};

QStringList backupsOf(const FirmwareWorld& world)
{
    return QDir(world.service.stateDir() + QStringLiteral("/machines/virtual_fabrino_2/backups"))
        .entryList(QDir::Files);
}

/** The name that the machine's own memory has. */
Json::Value& machineName(Json::Value& document)
{
    return document["eeprom_map"]["identity"]["sub_map"]["machine_name"]["value"][0];
}

void nameMachine(const FirmwareWorld& world, const char* name)
{
    Json::Value document = world.client->readEeprom(world.printer()).getEepromMap();
    machineName(document) = name;
    world.client->writeEeprom(world.printer(), EepromMap(document));
}

void waitUntilIdle(const FirmwareWorld& world)
{
    QTRY_VERIFY(world.printer() != nullptr && world.printer()->state() == Printer::Idle);
}

/** Without what is told of temperatures and states. */
Story comingsAndGoings(const RecordingTrovek& client)
{
    Story story;
    for (const std::string& event : client.events) {
        if (event.rfind("printerChanged", 0) != 0)
            story.push_back(event);
    }
    return story;
}

} // namespace

void tst_FirmwareUpload::theMachineLeavesAndComesBackWithIt()
{
    TestLog log;
    FirmwareWorld world;
    const std::string path = world.download();
    QTRY_VERIFY(!world.client->events.empty());
    world.client->events.clear();
    std::string versionAtReturn;
    world.client->onEvent = [&](const std::string& event) {
        if (event.rfind("printerAdded", 0) == 0)
            versionAtReturn = world.version();
    };

    world.client->uploadFirmware(world.key, path);

    // It is told like everything else, from the event loop.
    QCOMPARE(world.version(), std::string("7.5"));
    QTRY_COMPARE(versionAtReturn, std::string("7.6"));
    QCOMPARE(comingsAndGoings(*world.client),
             (Story{"printerRemoved virtual_fabrino_2", "portDetached virtual1",
                    "portAttached virtual1", "printerAdded virtual_fabrino_2"}));
    waitUntilIdle(world);
    world.restart();
    QCOMPARE(world.version(), std::string("7.6"));
}

void tst_FirmwareUpload::everyTypeCanBeUpdated_data()
{
    QTest::addColumn<QString>("machine");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("newest");

    const auto row = [](const char* machine, const char* port, const char* newest) {
        QTest::newRow(machine) << QString::fromLatin1(machine) << QString::fromLatin1(port)
                               << QString::fromLatin1(newest);
    };
    row("virtual_fabrino_2", "virtual1", "7.6");
    row("virtual_fabrino_2x", "virtual2", "7.6");
    row("virtual_fabrino_single", "virtual3", "6.3");
    row("virtual_fabrino_dual", "virtual4", "6.3");
    row("virtual_cubio_single", "virtual5", "4.2");
    row("virtual_cubio_dual", "virtual6", "4.2");
}

void tst_FirmwareUpload::everyTypeCanBeUpdated()
{
    QFETCH(QString, machine);
    QFETCH(QString, port);
    QFETCH(QString, newest);
    TestLog log;
    ServiceWorld service;
    service.start();
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    client.simulatePlugIn(toStdString(machine));
    QTRY_VERIFY(!eventsOf(client, "portAttached " + toStdString(port)).empty());
    ServiceWorld::openMachine(client, toStdString(port));
    Printer* const printer = client.printerFromKey(MachineName(toStdString(machine)));

    // As a client goes about it: the first name that is also the machine's.
    std::string name;
    for (const Json::Value& offered : client.getUploadableMachines()) {
        for (const std::string& own : printer->machineNames()) {
            if (name.empty() && offered.asString() == own)
                name = own;
        }
    }
    const std::set<FirmwareVersion> versions = client.getMachineVersions(name, printer->type());
    QCOMPARE(toQString(versions.rbegin()->str()), newest);
    for (const FirmwareVersion& version : versions) {
        const std::string path = client.downloadFirmware(name, printer->type(), version);
        client.uploadFirmware(printer->key(), path);
        QTRY_COMPARE(printer->firmwareVersion().str(), version.str());
        QTRY_COMPARE(printer->state(), Printer::Idle);
        QCOMPARE(client.readEeprom(printer).getEepromMap()["firmware_version"].asString(),
                 version.str());
    }
}

void tst_FirmwareUpload::theWayBackIsOpen()
{
    TestLog log;
    FirmwareWorld world;
    for (const char* const version : {"7.6", "7.5", "7.5"}) {
        world.client->uploadFirmware(world.key, world.download(version));
        QTRY_COMPARE(world.version(), std::string(version));
        waitUntilIdle(world);
    }
}

void tst_FirmwareUpload::aMachineComesBackOnItsPort()
{
    TestLog log;
    FirmwareWorld world;
    world.client->simulatePort(world.key.name(), "elsewhere");
    QTRY_VERIFY(!eventsOf(*world.client, "portAttached elsewhere").empty());
    ServiceWorld::openMachine(*world.client, "elsewhere");
    world.client->events.clear();
    world.client->uploadFirmware(world.key, world.download());
    QTRY_COMPARE(eventsOf(*world.client, "portAttached elsewhere").size(), std::size_t(1));
    QTRY_COMPARE(world.version(), std::string("7.6"));
}

void tst_FirmwareUpload::nothingElseHappensOnTheMachineMeanwhile()
{
    TestLog log;
    // Long enough for all that is asked meanwhile.
    FirmwareWorld world(10);
    const std::string path = world.download();
    const std::string file = world.service.writeFile(QStringLiteral("a.gcode"), squareGCode());
    RunningUpload upload(world);
    Trovek& client = *world.client;

    QCOMPARE(refusalOf([&] { client.uploadFirmware(world.key, path); }),
             std::string("PrinterThreadNotIdleError: The machine is busy: Firmware upload"));
    const std::string busy = "MachineStateException: The machine is busy: Firmware upload";
    QCOMPARE(refusalOf([&] { client.home(world.key); }), busy);
    QCOMPARE(refusalOf([&] { client.jog(world.key, Printer::XAxis, 1, 1000); }), busy);
    QCOMPARE(refusalOf([&] { client.readEeprom(world.printer()); }), busy);
    QCOMPARE(refusalOf([&] { client.resetEepromCompletely(world.key); }), busy);
    QCOMPARE(refusalOf([&] { client.simulateFirmware(world.key.name(), "7.5"); }), busy);
    QCOMPARE(refusalOf([&] { client.print(world.key, file, {}, {"pla"}, true); }),
             std::string("PrintQueuedException: The machine is busy: Firmware upload"));
    QCOMPARE(
        refusalOf([&] { client.setToolheadTemperature(world.key, Printer::RightToolhead, 200); }),
        std::string("MachineStateException: The machine is busy: Firmware upload"));
    // Clients see no job.
    QVERIFY(eventsOf(*world.client, "jobAdded").empty());
    QCOMPARE(upload.outcome(), std::string("done"));
    QTRY_COMPARE(world.version(), std::string("7.6"));
}

void tst_FirmwareUpload::aMachineThatIsNotIdleIsLeftAlone_data()
{
    QTest::addColumn<Break>("occupy");
    QTest::addColumn<QByteArray>("expected");

    QTest::newRow("jogging") << Break([](FirmwareWorld& world) {
        world.client->jog(world.key, Printer::ZAxis, 1, 1'000'000);
    }) << QByteArray("The machine is busy: Jogging");
    QTest::newRow("printing") << Break([](FirmwareWorld& world) {
        const std::string file = world.service.writeFile(QStringLiteral("a.gcode"), longGCode());
        world.client->print(world.key, file, {}, {"pla"}, true);
    }) << QByteArray("The machine is busy: a");
    QTest::newRow("connecting") << Break([](FirmwareWorld& world) {
        const Port port = world.client->portFromName(ServiceWorld::kPort);
        world.client->disconnectFromPort(port.name());
        world.client->connectToPort(port);
    }) << QByteArray("The machine is not ready");
}

void tst_FirmwareUpload::aMachineThatIsNotIdleIsLeftAlone()
{
    QFETCH(Break, occupy);
    QFETCH(QByteArray, expected);
    TestLog log;
    FirmwareWorld world(1);
    const std::string path = world.download();

    occupy(world);

    const JsonRpcException error = thrown([&] { world.client->uploadFirmware(world.key, path); });
    QCOMPARE(errorName(error), std::string("PrinterThreadNotIdleError"));
    QCOMPARE(error.message(), expected.toStdString());
    QVERIFY(backupsOf(world).isEmpty());
}

void tst_FirmwareUpload::whatIsNoMachineTakesNone()
{
    TestLog log;
    FirmwareWorld world;
    const std::string path = world.download();
    const auto refusal = [&](const char* machine) {
        return errorOf([&] { world.client->uploadFirmware(MachineName(machine), path); });
    };
    QCOMPARE(refusal("nobody"), std::string("UnknownMachineError"));
    QCOMPARE(refusal(ServiceWorld::kArchetype), std::string("ArchetypeError"));
    // Attached, but not connected.
    QCOMPARE(refusal(ServiceWorld::kOtherMachine), std::string("UnknownMachineError"));
}

void tst_FirmwareUpload::onlyDownloadsAreTaken_data()
{
    QTest::addColumn<QString>("path");

    QTest::newRow("nothing") << QString();
    QTest::newRow("a file of the catalogue") << QStringLiteral("CATALOGUE/fabrino_2-7.6.fw");
    QTest::newRow("a file that is not there") << QStringLiteral("CACHE/fabrino_2-7.6.fw");
    QTest::newRow("the folder") << QStringLiteral("CACHE");
    QTest::newRow("a relative path") << QStringLiteral("NAME");
    QTest::newRow("a copy elsewhere") << QStringLiteral("CATALOGUE/NAME");
    QTest::newRow("a link among them") << QStringLiteral("CACHE/fabrino_2-7.6-") +
                                              QString(64, QLatin1Char('0')) + QStringLiteral(".fw");
    QTest::newRow("a device") << QStringLiteral("/dev/zero");
    QTest::newRow("a zero inside") << QStringLiteral("CACHE/NAME") + QChar(0);
}

void tst_FirmwareUpload::onlyDownloadsAreTaken()
{
    QFETCH(QString, path);
    TestLog log;
    FirmwareWorld world;
    const QString download = toQString(world.download());
    const QString name = QFileInfo(download).fileName();
    QVERIFY(QFile::copy(download, world.catalogue.filePath(name)));
    QVERIFY(QFile::link(download, world.cacheFolder() + QStringLiteral("/fabrino_2-7.6-") +
                                      QString(64, QLatin1Char('0')) + QStringLiteral(".fw")));
    path.replace(QLatin1String("CATALOGUE"), world.catalogue.path())
        .replace(QLatin1String("CACHE"), world.cacheFolder())
        .replace(QLatin1String("NAME"), name);

    QCOMPARE(refusalOf([&] { world.client->uploadFirmware(world.key, toStdString(path)); }),
             "FirmwareUnavailableError: This is no firmware that the service has downloaded: " +
                 toStdString(path));
    QCOMPARE(world.printer()->state(), Printer::Idle);
    QVERIFY(backupsOf(world).isEmpty());
}

void tst_FirmwareUpload::aDamagedDownloadIsRefused()
{
    TestLog log;
    FirmwareWorld world;
    const std::string path = world.download();
    const QByteArray whole = ServiceWorld::read(path);
    for (const QByteArray& damaged :
         {whole.chopped(1), QByteArray(whole).replace(500, 1, "x"), whole + 'x', QByteArray()}) {
        QFile file(toQString(path));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(damaged);
        file.close();
        QCOMPARE(refusalOf([&] { world.client->uploadFirmware(world.key, path); }),
                 "FirmwareImageError: The downloaded file " + path + " is damaged");
    }
    QCOMPARE(world.version(), std::string("7.5"));
    world.client->uploadFirmware(world.key, world.download());
    QTRY_COMPARE(world.version(), std::string("7.6"));
}

void tst_FirmwareUpload::anotherTypesFirmwareIsRefused()
{
    TestLog log;
    FirmwareWorld world;
    const std::string path =
        world.client->downloadFirmware("fabrino_2x", Printer::Fabrino2X, FirmwareVersion("7.6"));
    QCOMPARE(refusalOf([&] { world.client->uploadFirmware(world.key, path); }),
             std::string("FirmwareTypeError: This firmware is for another type of machine: "
                         "fabrino_2x"));
    QCOMPARE(world.printer()->state(), Printer::Idle);
    QVERIFY(backupsOf(world).isEmpty());
    world.client->uploadFirmware(world.key, world.download());
}

void tst_FirmwareUpload::theOnboardMemoryIsBackedUpFirst()
{
    TestLog log;
    FirmwareWorld world;
    nameMachine(world, "mine");
    const int before = backupsOf(world).size();

    world.client->uploadFirmware(world.key, world.download());

    QCOMPARE(backupsOf(world).size(), before + 1);
    QTRY_COMPARE(world.version(), std::string("7.6"));
    waitUntilIdle(world);
    // What both firmwares know keeps its value.
    Json::Value document = world.client->readEeprom(world.printer()).getEepromMap();
    QCOMPARE(document["firmware_version"].asString(), std::string("7.6"));
    QCOMPARE(machineName(document).asString(), std::string("mine"));
    nameMachine(world, "renamed");
    world.client->uploadFirmware(world.key, world.download("7.5"));
    QTRY_COMPARE(world.version(), std::string("7.5"));
    waitUntilIdle(world);
    // The way back finds the memory as it was before the first upload.
    const std::vector<EepromBackup> backups = world.client->eepromBackups(world.printer());
    document = world.client->readEepromBackup(world.printer(), backups.front().name).getEepromMap();
    QCOMPARE(machineName(document).asString(), std::string("mine"));
}

void tst_FirmwareUpload::aMemoryWithoutAMapIsBackedUpAsItIs()
{
    TestLog log;
    FirmwareWorld world;
    const auto exchangeFirmware = [&] {
        world.client->events.clear();
        world.client->simulateFirmware(world.key.name(), "7.4");
        QTRY_VERIFY(!eventsOf(*world.client, "portAttached").empty());
        ServiceWorld::openMachine(*world.client);
    };
    exchangeFirmware();
    world.client->uploadFirmware(world.key, world.download());
    QVERIFY2(backupsOf(world).isEmpty(), "there is nothing in an erased memory to be kept");
    QTRY_COMPARE(world.version(), std::string("7.6"));
    waitUntilIdle(world);
    nameMachine(world, "mine");
    const int before = backupsOf(world).size();

    exchangeFirmware();
    world.client->uploadFirmware(world.key, world.download());

    QCOMPARE(backupsOf(world).size(), before + 1);
    QTRY_COMPARE(world.version(), std::string("7.6"));
    waitUntilIdle(world);
    Json::Value document = world.client->readEeprom(world.printer()).getEepromMap();
    QCOMPARE(machineName(document).asString(), std::string("mine"));
}

void tst_FirmwareUpload::thereIsNoUploadWithoutABackup()
{
    TestLog log;
    FirmwareWorld world;
    const std::string path = world.download();
    QFile file(world.service.stateDir() + QStringLiteral("/machines/virtual_fabrino_2/backups"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    for (int i = 0; i < 2; ++i) {
        const std::string refusal =
            refusalOf([&] { world.client->uploadFirmware(world.key, path); });
        QVERIFY2(refusal.rfind("FirmwareUploadError: ", 0) == 0, refusal.c_str());
        QCOMPARE(world.version(), std::string("7.5"));
    }
    QVERIFY(file.remove());
    world.client->uploadFirmware(world.key, path);
    QTRY_COMPARE(world.version(), std::string("7.6"));
}

void tst_FirmwareUpload::aFailureLeavesTheEarlierFirmware_data()
{
    QTest::addColumn<int>("percent");

    QTest::newRow("at once") << 0;
    QTest::newRow("in the middle") << 40;
    QTest::newRow("when all is written") << 100;
}

void tst_FirmwareUpload::aFailureLeavesTheEarlierFirmware()
{
    QFETCH(int, percent);
    TestLog log;
    FirmwareWorld world;
    const std::string path = world.download();
    for (int i = 0; i < 2; ++i) {
        world.client->simulateUploadFailure(world.key.name(), percent);
        world.client->events.clear();

        QCOMPARE(refusalOf([&] { world.client->uploadFirmware(world.key, path); }),
                 "FirmwareUploadError: The machine took no more of the firmware after " +
                     std::to_string(percent) + " percent");

        waitUntilIdle(world);
        QCOMPARE(world.version(), std::string("7.5"));
        QCOMPARE(comingsAndGoings(*world.client), Story());
    }
    // It is as good as before, for this and for everything else.
    world.client->home(world.key);
    QTRY_VERIFY(!eventsOf(*world.client, "jobConcluded").empty());
    world.client->uploadFirmware(world.key, path);
    QTRY_COMPARE(world.version(), std::string("7.6"));
}

void tst_FirmwareUpload::aMachineThatDoesNotKeepItSaysSo()
{
    TestLog log;
    FirmwareWorld world;
    const std::string path = world.download();
    nameMachine(world, "mine");
    // The file that a machine's state is written to before it gets its name.
    const QString folder = world.service.stateDir() + QStringLiteral("/machines/virtual_fabrino_2");
    QVERIFY(QDir(folder).mkdir(QStringLiteral("unfinished")));
    log.allowErrors("Cannot write ");

    QCOMPARE(refusalOf([&] { world.client->uploadFirmware(world.key, path); }),
             std::string("FirmwareUploadError: The machine did not keep the firmware"));

    QVERIFY(QDir(folder).rmdir(QStringLiteral("unfinished")));
    world.restart();
    QCOMPARE(world.version(), std::string("7.5"));
    world.client->uploadFirmware(world.key, path);
    QTRY_COMPARE(world.version(), std::string("7.6"));
}

void tst_FirmwareUpload::whatTakesTheMachineAwayEndsIt_data()
{
    QTest::addColumn<Break>("takeAway");
    QTest::addColumn<QByteArray>("expected");
    QTest::addColumn<Break>("bringBack");

    const Break nothing = [](FirmwareWorld&) {
    };
    QTest::newRow("the plug") << Break([](FirmwareWorld& world) {
        world.client->simulateUnplug(world.key.name());
    }) << QByteArray("The machine was unplugged")
                              << Break([](FirmwareWorld& world) {
                                     world.client->events.clear();
                                     world.client->simulatePlugIn(world.key.name());
                                     QTRY_VERIFY(!eventsOf(*world.client, "portAttached").empty());
                                 });
    QTest::newRow("another port") << Break([](FirmwareWorld& world) {
        world.client->simulatePort(world.key.name(), "elsewhere");
        QTRY_VERIFY(!eventsOf(*world.client, "portAttached elsewhere").empty());
        world.client->simulatePort(world.key.name(), ServiceWorld::kPort);
        QTRY_COMPARE(eventsOf(*world.client, "portAttached virtual1").size(), std::size_t(2));
    }) << QByteArray("The machine was unplugged")
                                  << nothing;
    QTest::newRow("a user who disconnects it") << Break([](FirmwareWorld& world) {
        world.client->disconnectFromPort(ServiceWorld::kPort);
    }) << QByteArray("The machine was disconnected")
                                               << nothing;
}

void tst_FirmwareUpload::whatTakesTheMachineAwayEndsIt()
{
    QFETCH(Break, takeAway);
    QFETCH(QByteArray, expected);
    QFETCH(Break, bringBack);
    TestLog log;
    FirmwareWorld world(RunningUpload::kTimeScale);
    RunningUpload upload(world);

    takeAway(world);

    QCOMPARE(upload.outcome(), "FirmwareUploadError: " + expected.toStdString());
    QTRY_VERIFY(world.printer() == nullptr);
    bringBack(world);
    ServiceWorld::openMachine(*world.client);
    QCOMPARE(world.version(), std::string("7.5"));
    RunningUpload again(world);
    QCOMPARE(again.outcome(), std::string("done"));
    QTRY_COMPARE(world.version(), std::string("7.6"));
}

void tst_FirmwareUpload::itOutlivesItsClient()
{
    TestLog log;
    FirmwareWorld world(RunningUpload::kTimeScale);
    {
        const RunningUpload upload(world);
    }
    QTRY_COMPARE(world.version(), std::string("7.6"));
    waitUntilIdle(world);
}

void tst_FirmwareUpload::theServiceEndsInTheMiddle()
{
    TestLog log;
    FirmwareWorld world(RunningUpload::kTimeScale);
    {
        const RunningUpload upload(world);
        world.restart();
    }
    QCOMPARE(world.version(), std::string("7.5"));
    RunningUpload again(world);
    QCOMPARE(again.outcome(), std::string("done"));
    QTRY_COMPARE(world.version(), std::string("7.6"));
}

/** Only a build that looks for leaks sees what would be left of the image. */
void tst_FirmwareUpload::theServiceEndsWhileTheImageIsRead()
{
    TestLog log;
    FirmwareWorld world;
    const QString name = QStringLiteral("large.fw");
    const QByteArray image = firmwareImage(Printer::Fabrino2, 9, 9, 16'000'000);
    world.catalogue.writeFile(name, image);
    Json::Value entry = CatalogueFolder::entryFor(name, image);
    entry["version"] = "9.9";
    world.catalogue.index["firmware"].append(entry);
    world.catalogue.writeIndex();
    const RunningUpload upload(world, "9.9");

    world.restart();

    QCOMPARE(world.version(), std::string("7.5"));
}

void tst_FirmwareUpload::theServiceIsKilledInTheMiddle()
{
    TestLog log;
    const QTemporaryDir folder;
    const MachineName key(ServiceWorld::kMachine);
    const auto startWith = [&](Daemon& daemon, RecordingTrovek& client, const char* timeScale) {
        QVERIFY(!daemon.start({QStringLiteral("--time-scale"), QString::fromLatin1(timeScale)})
                     .isEmpty());
        client.connectToDaemon(Address::local(toStdString(daemon.socket())));
        ServiceWorld::openMachine(client);
    };
    std::string path;
    {
        Daemon daemon(folder.path());
        RecordingTrovek client;
        startWith(daemon, client, "4");
        path = client.downloadFirmware("fabrino_2", Printer::Fabrino2, FirmwareVersion("7.6"));
        RawClient uploader(Address::local(toStdString(daemon.socket())));
        uploader.greet();
        Json::Value params(Json::objectValue);
        params["machine"] = key.name();
        params["path"] = path;
        uploader.call(1, wire::method::kUploadFirmware, params);
        QTRY_COMPARE(client.printerFromKey(key)->state(), Printer::Running);
        daemon.process().kill();
        QVERIFY(daemon.process().waitForFinished());
    }

    Daemon daemon(folder.path());
    RecordingTrovek client;
    startWith(daemon, client, "3000");
    QCOMPARE(client.printerFromKey(key)->firmwareVersion().str(), std::string("7.5"));
    const Printer* const printer = client.printerFromKey(key);
    // The downloaded file is still there and good.
    client.uploadFirmware(key, path);
    QTRY_COMPARE(printer->firmwareVersion().str(), std::string("7.6"));
}

QTEST_GUILESS_MAIN(tst_FirmwareUpload)
#include "tst_firmware_upload.moc"
