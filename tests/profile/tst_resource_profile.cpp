#include "profile/profile_world.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/profile.h>

#include <QResource>
#include <QTest>

#include <memory>

using namespace trovek;

class tst_ResourceProfile : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void isNamedAsItsFolder_data();
    void isNamedAsItsFolder();
    void isTheSameForTheSamePathOnly();
    void tellsWhatCannotBeRead_data();
    void tellsWhatCannotBeRead();
    void refusesWhatNeedsAFolder();
    void thereAreThirteen();
    void everyBuiltInIsForAllMachines_data();
    void everyBuiltInIsForAllMachines();
    void copiesABuiltInForOneMachine_data();
    void copiesABuiltInForOneMachine();
    void copiesByteForByteWhateverIsPacked();
    void copyRefusesWhatIsThere();
    void copyThatFailsHalfWayLeavesNothing();
    void copyOfNothingMakesNothing();

private:
    QString path(const char* name) const { return m_folder->filePath(text(name)); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

const char* const kBuiltIns[] = {
    "Orvane ABS High",
    "Orvane ABS Low",
    "Orvane ABS Standard",
    "Orvane ABS Standard with Dissolvable Filament Support",
    "Orvane Dissolvable Filament High",
    "Orvane Dissolvable Filament Low",
    "Orvane Dissolvable Filament Standard",
    "Orvane Flexible Filament High",
    "Orvane Flexible Filament Low",
    "Orvane Flexible Filament Standard",
    "Orvane PLA High",
    "Orvane PLA Low",
    "Orvane PLA Standard",
};

QString pathOf(const char* builtIn)
{
    return text(":/profiles/") + text(builtIn);
}

void addBuiltIns()
{
    QTest::addColumn<QString>("path");

    for (const char* name : kBuiltIns)
        QTest::newRow(name) << pathOf(name);
}

const std::vector<Printer::Type> kOneType = {Printer::Fabrino2};

} // namespace

void tst_ResourceProfile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_ResourceProfile::isNamedAsItsFolder_data()
{
    QTest::addColumn<QString>("path");

    QTest::newRow("as listed") << text(":/profiles/Orvane PLA High");
    QTest::newRow("with a slash") << text(":/profiles/Orvane PLA High/");
}

void tst_ResourceProfile::isNamedAsItsFolder()
{
    QFETCH(QString, path);
    const ResourceProfile profile(path);

    QCOMPARE(profile.name(), text("Orvane PLA High"));
    QCOMPARE(profile.path(), QString());
    QCOMPARE(int(profile.preset()), 3);
    QVERIFY(!profile.isOnDisk());
}

void tst_ResourceProfile::isTheSameForTheSamePathOnly()
{
    const ResourceProfile high(pathOf("Orvane PLA High"));

    QVERIFY(high.isSameAs(ResourceProfile(pathOf("Orvane PLA High"))));
    QVERIFY(high.isSameAs(ResourceProfile(pathOf("Orvane PLA High/"))));
    QVERIFY(!high.isSameAs(ResourceProfile(pathOf("Orvane PLA Low"))));
    QVERIFY(!high.isSameAs(DirectoryProfile(QDir(pathOf("Orvane PLA High")))));
    QVERIFY(!high.isSameAs(DirectoryProfile(QDir(path("Orvane PLA High")))));
    QVERIFY(!high.isSameAs(FakeProfile(SlicerConfiguration::High)));
}

void tst_ResourceProfile::tellsWhatCannotBeRead_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("error");

    QTest::newRow("nothing there")
        << text(":/profiles/None") << QByteArray("Invalid resource path :/profiles/None");
    QTest::newRow("no profile.json")
        << text(":/profile_test/empty") << QByteArray("Invalid resource path :/profile_test/empty");
    QTest::newRow("broken") << text(":/profile_test/broken")
                            << QByteArray("profile.json does not contain valid JSON");
}

void tst_ResourceProfile::tellsWhatCannotBeRead()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, error);
    const ResourceProfile profile(path);

    QCOMPARE(thrownText([&] { profile.json(); }), error.toStdString());
    QCOMPARE(thrownText([&] { profile.machineTypes(); }), error.toStdString());
    QCOMPARE(thrownText([&] { profile.slicer(); }), error.toStdString());
}

void tst_ResourceProfile::refusesWhatNeedsAFolder()
{
    ResourceProfile profile(pathOf("Orvane PLA High"));

    QCOMPARE(thrownText([&] { profile.slicerConfigPath(); }),
             std::string("Cannot pass a resource profile to Trovek"));
    QCOMPARE(thrownText([&] { profile.remove(); }),
             std::string("Cannot delete a resource profile"));
    QCOMPARE(thrownText([&] { profile.edit(); }), std::string("Cannot edit a resource profile"));
}

void tst_ResourceProfile::thereAreThirteen()
{
    QStringList expected;
    for (const char* name : kBuiltIns)
        expected.append(text(name));

    QCOMPARE(QDir(text(":/profiles")).entryList(QDir::AllEntries, QDir::Name), expected);
}

void tst_ResourceProfile::everyBuiltInIsForAllMachines_data()
{
    addBuiltIns();
}

void tst_ResourceProfile::everyBuiltInIsForAllMachines()
{
    QFETCH(QString, path);
    const ResourceProfile profile(path);

    QCOMPARE(identifiers(profile.machineTypes()), identifiers(allMachineTypes()));
    QCOMPARE(int(profile.slicer()), 0);
    QCOMPARE(QDir(path).entryList(QDir::AllEntries, QDir::Name),
             QStringList({text("end.gcode"), text("profile.json"), text("start.gcode"),
                          text("strandel.json")}));
}

void tst_ResourceProfile::copiesABuiltInForOneMachine_data()
{
    addBuiltIns();
}

void tst_ResourceProfile::copiesABuiltInForOneMachine()
{
    QFETCH(QString, path);
    TestLog log;

    const QDir copy = ResourceProfile(path).copyToDisk(QDir(m_folder->path()), text("Mine"),
                                                       {Printer::CubioSingle, Printer::Fabrino2});

    QCOMPARE(copy.absolutePath(), m_folder->filePath(text("Mine")));
    const DirectoryProfile profile(copy);
    QCOMPARE(profile.name(), text("Mine"));
    QCOMPARE(identifiers(profile.machineTypes()),
             QStringList({text("cubio_single"), text("fabrino_2")}));
    QCOMPARE(int(profile.slicer()), 0);
    QCOMPARE(copy.entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name).size(), 4);
    for (const char* file : {"/strandel.json", "/start.gcode", "/end.gcode"}) {
        const QByteArray bytes = readFile(copy.absolutePath() + text(file));
        QCOMPARE(bytes, readFile(path + text(file)));
        QVERIFY2(!bytes.isEmpty(), file);
        QVERIFY2(QFileInfo(copy.absolutePath() + text(file)).isWritable(), file);
    }
}

void tst_ResourceProfile::copiesByteForByteWhateverIsPacked()
{
    const QString source = text(":/profile_test/sizes");
    QCOMPARE(QResource(source + text("/plain.gcode")).compressionAlgorithm(),
             QResource::NoCompression);
    QCOMPARE(QResource(source + text("/inner/packed.gcode")).compressionAlgorithm(),
             QResource::ZlibCompression);

    ResourceProfile(source).copyToDisk(QDir(m_folder->path()), text("new"), {});

    QCOMPARE(tree(path("new")), QStringList({text("inner"), text("inner/packed.gcode"),
                                             text("plain.gcode"), text("profile.json")}));
    const QByteArray bytes = readFile(source + text("/plain.gcode"));
    QVERIFY(bytes.size() > 40000);
    QCOMPARE(readFile(path("new/plain.gcode")), bytes);
    QCOMPARE(readFile(path("new/inner/packed.gcode")), bytes);
    QCOMPARE(readFile(path("new/profile.json")),
             QByteArray("{\n   \"machine_type\" : [],\n   \"slicer\" : \"strandel\"\n}\n"));
}

void tst_ResourceProfile::copyRefusesWhatIsThere()
{
    writeFile(path("new/mine.txt"), "mine");
    QCOMPARE(thrownText([&] {
                 ResourceProfile(pathOf("Orvane PLA High"))
                     .copyToDisk(QDir(m_folder->path()), text("new"), kOneType);
             }),
             std::string("Failed to create QResource copy directory"));
    QCOMPARE(tree(m_folder->path()), QStringList({text("new"), text("new/mine.txt")}));
}

void tst_ResourceProfile::copyThatFailsHalfWayLeavesNothing()
{
#ifdef Q_OS_UNIX
    std::string error;
    {
        const FileSizeLimit limit(4096);
        error = thrownText([&] {
            ResourceProfile(text(":/profile_test/sizes"))
                .copyToDisk(QDir(m_folder->path()), text("new"), kOneType);
        });
    }
    QCOMPARE(error, std::string("Failed to write QResource copy"));
    QCOMPARE(tree(m_folder->path()), QStringList());
#else
    QSKIP("No limit of file sizes here");
#endif
}

void tst_ResourceProfile::copyOfNothingMakesNothing()
{
    QCOMPARE(thrownText([&] {
                 ResourceProfile(text(":/profiles/None"))
                     .copyToDisk(QDir(m_folder->path()), text("new"), kOneType);
             }),
             std::string("Invalid resource path :/profiles/None"));
    QCOMPARE(tree(m_folder->path()), QStringList());
}

QTEST_MAIN(tst_ResourceProfile)
#include "tst_resource_profile.moc"
