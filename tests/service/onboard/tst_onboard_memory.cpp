#include "onboard_world.h"

#include "support/test_log.h"
#include "support/thrown_text.h"

#include <service/gcode/machine_definition.h>
#include <service/onboard/onboard_memory.h>
#include <service/virtual_machine.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

using namespace trovek;
using namespace trovek::service;

namespace {

constexpr char kWriteForever[] = "--write-forever";
constexpr OnboardLayout kShipped{Printer::Fabrino2X, 7, 5};
constexpr char kName[] = "identity.machine_name";

/** A memory with the small map, its backups in a folder. */
struct Fixture
{
    OnboardMemory memory() { return OnboardMemory(driver, maps, map, folderPath()); }
    QString folderPath() const { return folder.filePath(QStringLiteral("backups")); }
    OnboardBackups backups() const { return OnboardBackups(folderPath()); }

    TestLog log;
    QTemporaryDir folder;
    MemoryDriver driver;
    OnboardMaps maps;
    OnboardMap map = OnboardMap(smallMapSource());
};

MachineDefinition definition()
{
    return defaultMachineDefinitions().archetypes.at(std::size_t(Printer::Fabrino2X) - 1);
}

/** The child that is killed: two sets of values in turn, until the end. */
int writeForever(const QString& folder)
{
    const MachineDefinition machine = definition();
    VirtualMachine driver(machine, folder, 1);
    const OnboardMaps maps;
    const OnboardMap* const map = maps.find(kShipped);
    OnboardMemory memory(driver, maps, *map, folder + QStringLiteral("/backups"));
    Json::Value document = memory.read();
    for (int round = 0;; ++round) {
        const bool even = round % 2 == 0;
        setValue(document, kName, even ? R"(["even"])" : R"(["odd"])");
        setValue(document, "build_stats.builds_started", even ? "[0]" : "[4294967295]");
        memory.write(document);
        if (round == 1) {
            std::puts("ready");
            std::fflush(stdout);
        }
    }
}

} // namespace

class tst_OnboardMemory : public QObject
{
    Q_OBJECT

private slots:
    void anUnusableMemoryGetsFactoryValues_data();
    void anUnusableMemoryGetsFactoryValues();
    void aMemoryOfAnotherFirmwareIsConverted();
    void aMemoryOfAnotherTypeIsNot();
    void nothingIsTouchedWhenADocumentIsRefused();
    void aFaultBeforeWritingLeavesTheEarlierSettings();
    void whatIsNotKeptIsSaid_data();
    void whatIsNotKeptIsSaid();
    void backupsOfOneMillisecondAreTwo();
    void backupsOutliveAClockThatGoesBack();
    void theOldestBackupsGo();
    void otherFilesAreNoBackups();
    void damagedBackupsAreNotOffered();
    void aResetThatFailsIsSaid();
    void aKilledServiceLeavesTheOldOrTheNew();
};

void tst_OnboardMemory::anUnusableMemoryGetsFactoryValues_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<bool>("isDamage");

    const QByteArray factory = OnboardMap(smallMapSource()).factoryImage();
    QByteArray flipped = factory;
    flipped[0x20] = 1;
    QTest::newRow("erased") << QByteArray(kOnboardBytes, kErasedByte) << false;
    QTest::newRow("nothing") << QByteArray() << false;
    QTest::newRow("zeros") << QByteArray(kOnboardBytes, '\0') << true;
    QTest::newRow("short") << factory.left(100) << true;
    QTest::newRow("short, the rest erased")
        << factory.left(0x20).leftJustified(kOnboardBytes, kErasedByte) << true;
    QTest::newRow("one wrong byte") << flipped << true;
}

void tst_OnboardMemory::anUnusableMemoryGetsFactoryValues()
{
    QFETCH(QByteArray, image);
    QFETCH(bool, isDamage);
    Fixture f;
    if (isDamage)
        f.log.expectError("The onboard memory is damaged and gets factory values");
    f.driver.memory = image;

    const Json::Value document = f.memory().read();

    QVERIFY(document == f.map.read(f.map.factoryImage()));
    QCOMPARE(f.driver.memory.left(kOnboardBytes), f.map.factoryImage());
    QVERIFY(f.backups().list().empty());
    // The second time there is nothing to do.
    f.memory().read();
    QCOMPARE(f.driver.writes, 1);
}

void tst_OnboardMemory::aMemoryOfAnotherFirmwareIsConverted()
{
    Fixture f;
    const OnboardMap* const older = f.maps.find({Printer::Fabrino2X, 7, 5});
    const OnboardMap* const newer = f.maps.find({Printer::Fabrino2X, 7, 6});
    Json::Value document = older->read(older->factoryImage());
    setValue(document, kName, R"(["mine"])");
    f.driver.memory = older->write(document, older->factoryImage());
    const QByteArray before = f.driver.memory;

    OnboardMemory memory(f.driver, f.maps, *newer, f.folderPath());
    const Json::Value read = memory.read();

    QCOMPARE(valueOf(read, kName)[0].asString(), std::string("mine"));
    QVERIFY(layoutOfImage(f.driver.memory) == newer->layout());
    QCOMPARE(f.backups().list().size(), std::size_t(1));
    QCOMPARE(f.backups().image(f.backups().list()[0].name), before);
    QVERIFY(memory.backups().empty());
}

void tst_OnboardMemory::aMemoryOfAnotherTypeIsNot()
{
    Fixture f;
    const OnboardMap* const other = f.maps.find({Printer::FabrinoDual, 6, 2});
    Json::Value document = other->read(other->factoryImage());
    setValue(document, kName, R"(["mine"])");
    f.driver.memory = other->write(document, other->factoryImage());

    const OnboardMap* const map = f.maps.find(kShipped);
    const Json::Value read = OnboardMemory(f.driver, f.maps, *map, f.folderPath()).read();

    QCOMPARE(valueOf(read, kName)[0].asString(), std::string("Orvane"));
    QCOMPARE(f.backups().list().size(), std::size_t(1));
}

void tst_OnboardMemory::nothingIsTouchedWhenADocumentIsRefused()
{
    Fixture f;
    Json::Value document = f.memory().read();
    const QByteArray before = f.driver.memory;
    f.driver.writes = 0;
    setValue(document, "name", R"(["new"])");
    setValue(document, "count", "[5]");

    QVERIFY_EXCEPTION_THROWN(f.memory().write(document), OnboardValueError);

    QCOMPARE(f.driver.memory, before);
    QCOMPARE(f.driver.writes, 0);
    QVERIFY(f.backups().list().empty());
}

void tst_OnboardMemory::aFaultBeforeWritingLeavesTheEarlierSettings()
{
    Fixture f;
    Json::Value document = f.memory().read();
    const QByteArray before = f.driver.memory;
    f.driver.writes = 0;
    setValue(document, "name", R"(["new"])");
    // A file stands where the folder of the backups belongs.
    QFile file(f.folderPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();

    QVERIFY_EXCEPTION_THROWN(f.memory().write(document), std::runtime_error);
    QVERIFY_EXCEPTION_THROWN(f.memory().startReset(), std::runtime_error);

    QCOMPARE(f.driver.memory, before);
    QCOMPARE(f.driver.writes, 0);
    // Once it is out of the way all is well.
    QVERIFY(file.remove());
    f.memory().write(document);
    QCOMPARE(f.backups().image(f.backups().list().at(0).name), before);
    QVERIFY(f.memory().read() == document);
}

void tst_OnboardMemory::whatIsNotKeptIsSaid_data()
{
    QTest::addColumn<bool>("result");
    QTest::addColumn<int>("damagedByte");
    QTest::newRow("the machine refuses") << false << -1;
    QTest::newRow("the machine keeps nothing, and says that it did") << true << -1;
    QTest::newRow("one byte is another") << true << 0x31;
    QTest::newRow("one byte behind all settings is another") << true << kOnboardBytes - 1;
}

void tst_OnboardMemory::whatIsNotKeptIsSaid()
{
    QFETCH(bool, result);
    QFETCH(int, damagedByte);
    Fixture f;
    Json::Value document = f.memory().read();
    const QByteArray before = f.driver.memory;
    setValue(document, "name", R"(["new"])");
    f.driver.onWrite = [&](int, const QByteArray& bytes) {
        if (damagedByte >= 0) {
            f.driver.memory = bytes;
            f.driver.memory[damagedByte] = static_cast<char>(bytes.at(damagedByte) ^ 4);
        }
        return result;
    };

    QCOMPARE(thrownText([&] { f.memory().write(document); }),
             std::string("The machine did not keep its settings"));

    // What there was is in the backup.
    QCOMPARE(f.backups().image(f.backups().list().at(0).name), before);
}

void tst_OnboardMemory::backupsOfOneMillisecondAreTwo()
{
    Fixture f;
    const QByteArray image(kOnboardBytes, 'a');
    const std::int64_t time = 1700000000123;
    f.backups().add(image, time);
    f.backups().add(QByteArray(kOnboardBytes, 'b'), time);

    const std::vector<EepromBackup> list = f.backups().list();

    QCOMPARE(list.size(), std::size_t(2));
    QVERIFY(list[0].name != list[1].name);
    QCOMPARE(list[0].time, time);
    QCOMPARE(list[1].time, time);
    QCOMPARE(f.backups().image(list[0].name).at(0), 'b');
    QCOMPARE(f.backups().image(list[1].name), image);
}

void tst_OnboardMemory::backupsOutliveAClockThatGoesBack()
{
    Fixture f;
    const std::int64_t times[] = {4102444800000, 1700000000000, 0, 1700000000999};
    for (const std::int64_t time : times)
        f.backups().add(QByteArray(kOnboardBytes, 'a'), time);
    const std::vector<EepromBackup> list = f.backups().list();
    QCOMPARE(list.size(), std::size_t(4));
    for (std::size_t i = 0; i < list.size(); ++i)
        QCOMPARE(list[i].time, times[3 - i]);
}

void tst_OnboardMemory::theOldestBackupsGo()
{
    Fixture f;
    for (int i = 0; i < 25; ++i)
        f.backups().add(QByteArray(kOnboardBytes, static_cast<char>(i)), 1000 - i);

    const std::vector<EepromBackup> list = f.backups().list();

    QCOMPARE(list.size(), std::size_t(OnboardBackups::kKept));
    QCOMPARE(f.backups().image(list.front().name).at(0), char(24));
    QCOMPARE(f.backups().image(list.back().name).at(0), char(15));
    QCOMPARE(QDir(f.folderPath()).entryList(QDir::Files | QDir::Hidden).size(), 10);
}

void tst_OnboardMemory::otherFilesAreNoBackups()
{
    Fixture f;
    f.backups().add(QByteArray(kOnboardBytes, 'a'), 0);
    const QString good = QDir(f.folderPath()).entryList(QDir::Files).first();
    QCOMPARE(good, QStringLiteral("000001-19700101T000000000Z.bin"));
    for (const char* const name :
         {"notes.txt", "000002-19700101T000000000Z.bin~", "000002-19701301T000000000Z.bin",
          "000002-19700101T250000000Z.bin", "000000-19700101T000000000Z.bin",
          "000002-19700101T000000000Z", "9999999999-19700101T000000000Z.bin"}) {
        QFile file(QDir(f.folderPath()).filePath(QString::fromLatin1(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QVERIFY(QDir(f.folderPath()).mkdir(QStringLiteral("000003-19700101T000000000Z.bin")));
#ifdef Q_OS_UNIX
    QVERIFY(QFile::link(
        QStringLiteral("/etc/passwd"),
        QDir(f.folderPath()).filePath(QStringLiteral("000004-19700101T000000000Z.bin"))));
#endif

    QCOMPARE(f.backups().list().size(), std::size_t(1));
    QVERIFY(f.backups().image("notes.txt").isEmpty());
    QVERIFY(f.backups().image("000004-19700101T000000000Z").isEmpty());
    QVERIFY(f.backups().image("../backups/000001-19700101T000000000Z").isEmpty());
    QCOMPARE(f.backups().image("000001-19700101T000000000Z").size(), kOnboardBytes);
}

void tst_OnboardMemory::damagedBackupsAreNotOffered()
{
    Fixture f;
    f.backups().add(f.map.factoryImage(), 1);
    f.backups().add(f.map.factoryImage().left(100), 2);
    f.backups().add(f.map.factoryImage() + 'x', 3);
    f.backups().add(QByteArray(), 4);
    const std::vector<EepromBackup> all = f.backups().list();
    QCOMPARE(all.size(), std::size_t(4));

    const std::vector<EepromBackup> offered = f.memory().backups();

    QCOMPARE(offered.size(), std::size_t(1));
    QCOMPARE(offered[0].time, std::int64_t(1));
    QVERIFY(f.memory().readBackup(offered[0].name) == f.map.read(f.map.factoryImage()));
    QCOMPARE(thrownText([&] { f.memory().readBackup(all[2].name); }),
             "The backup is damaged: " + all[2].name);
    QVERIFY_EXCEPTION_THROWN(f.memory().readBackup(all[0].name), UnknownBackupError);
    QVERIFY_EXCEPTION_THROWN(f.memory().readBackup("../memory"), UnknownBackupError);
}

void tst_OnboardMemory::aResetThatFailsIsSaid()
{
    Fixture f;
    f.memory().read();
    f.memory().startReset();
    f.memory().checkReset();
    f.driver.memory[0x30] = 'x';
    QCOMPARE(thrownText([&] { f.memory().checkReset(); }),
             std::string("The machine did not take its factory settings"));
}

void tst_OnboardMemory::aKilledServiceLeavesTheOldOrTheNew()
{
    TestLog log;
    const QTemporaryDir folder;
    const OnboardMaps maps;
    const OnboardMap* const map = maps.find(kShipped);
    for (int round = 0; round < 20; ++round) {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(),
                    {QString::fromLatin1(kWriteForever), folder.path()});
        QVERIFY(child.waitForReadyRead(60000));
        // Anywhere within a write.
        child.waitForFinished(QRandomGenerator::global()->bounded(25));
        child.kill();
        QVERIFY(child.waitForFinished(60000));
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);

        const MachineDefinition machine = definition();
        VirtualMachine driver(machine, folder.path(), 1);
        const QByteArray image = driver.readMemory(0, kOnboardBytes);
        QVERIFY(layoutOfImage(image) == map->layout());
        const Json::Value read = map->read(image);
        const bool even = valueOf(read, kName)[0].asString() == "even";
        QVERIFY(even || valueOf(read, kName)[0].asString() == "odd");
        QCOMPARE(valueOf(read, "build_stats.builds_started")[0].asUInt(), even ? 0U : 4294967295U);
        const OnboardMemory memory(driver, maps, *map, folder.filePath(QStringLiteral("backups")));
        const std::size_t kept = memory.backups().size();
        QVERIFY2(kept >= 1 && kept <= std::size_t(OnboardBackups::kKept) + 1,
                 qPrintable(QString::number(kept)));
        for (const EepromBackup& backup : memory.backups())
            memory.readBackup(backup.name);
    }
    // However often it was killed, nothing has piled up.
    const QDir state(folder.path());
    const QStringList known = {QStringLiteral("backups"), QStringLiteral("memory.bin"),
                               QStringLiteral("state.json"), QStringLiteral("unfinished")};
    for (const QString& name : state.entryList(QDir::AllEntries | QDir::NoDotAndDotDot))
        QVERIFY2(known.contains(name), qPrintable(name));
    const int files = QDir(state.filePath(QStringLiteral("backups"))).entryList(QDir::Files).size();
    QVERIFY2(files <= OnboardBackups::kKept + 2, qPrintable(QString::number(files)));
}

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 3 && QByteArray(argv[1]) == kWriteForever)
        return writeForever(QString::fromLocal8Bit(argv[2]));
    tst_OnboardMemory test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_onboard_memory.moc"
