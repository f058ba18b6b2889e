#include "profile/profile_world.h"
#include "support/environment.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/file_system.h>
#include <trovek-ui/profile.h>

#include <QDesktopServices>
#include <QTest>
#include <QUrl>

#include <memory>

using namespace trovek;

class tst_DirectoryProfile : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void isNamedAsItsFolder();
    void isTheSameForTheSameFolderOnly();
    void copiesItsFolderForOtherMachines();
    void copiesWhatAUserWriteProtected();
    void writesNothingButWhatItKnowsToTheCopy();
    void copyKeepsTheOrderOfMachines_data();
    void copyKeepsTheOrderOfMachines();
    void copyRefusesWhatIsThere_data();
    void copyRefusesWhatIsThere();
    void copyRefusesNamesThatLeadOutside_data();
    void copyRefusesNamesThatLeadOutside();
    void copyOfABrokenProfileMakesNothing_data();
    void copyOfABrokenProfileMakesNothing();
    void copyThatFailsHalfWayLeavesNothing();
    void copyWithoutItsFileLeavesNothing();
    void copiesNothingThatWouldNeverEnd_data();
    void copiesNothingThatWouldNeverEnd();
    void copiesFilesOfASaneSizeOnly_data();
    void copiesFilesOfASaneSizeOnly();
    void copyNeedsItsTarget();
    void givesTheSlicerACopy();
    void givesTheSlicerNothingBroken();
    void removesItsFolder();
    void removingALinkedFolderLeavesTheFolder();
    void tellsWhatCannotBeRemoved();
    void opensItsSettingsInTheDesktopsEditor();
    void opensItsSettingsInATextEditorWhereTheDesktopHasNone();
    void editsOnlyWhatIsThere_data();
    void editsOnlyWhatIsThere();

private:
    QString path(const char* name) const { return m_folder->filePath(text(name)); }
    DirectoryProfile profile(const char* name) const { return DirectoryProfile(QDir(path(name))); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

/** Stands for the desktop's program for files. */
class Desktop : public QObject
{
    Q_OBJECT

public:
    Desktop() { QDesktopServices::setUrlHandler(text("file"), this, "open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler(text("file")); }

    QList<QUrl> opened;

public slots:
    void open(const QUrl& url) { opened.append(url); }
};

const std::vector<Printer::Type> kOneType = {Printer::Fabrino2};

} // namespace

void tst_DirectoryProfile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(QDir(m_folder->path()).mkdir(text("target")));
}

void tst_DirectoryProfile::cleanup()
{
    TemporaryDir::cleanManagedDirectories();
    m_folder.reset();
}

void tst_DirectoryProfile::isNamedAsItsFolder()
{
    const DirectoryProfile fine(QDir(path("My profile, \xc3\xbc")));

    QCOMPARE(fine.name(), text("My profile, \xc3\xbc"));
    QCOMPARE(fine.path(), path("My profile, \xc3\xbc"));
    QCOMPARE(int(fine.preset()), 3);
    QVERIFY(fine.isOnDisk());
    QCOMPARE(profile("a/").name(), text("a"));
    QCOMPARE(profile("a/").path(), path("a"));
    QCOMPARE(profile("a/../b").name(), text("b"));
    QCOMPARE(DirectoryProfile(QDir(text("relative"))).path(),
             QDir().absoluteFilePath(text("relative")));
}

void tst_DirectoryProfile::isTheSameForTheSameFolderOnly()
{
    writeProfile(path("a"));
    writeProfile(path("b"));
    QVERIFY(QFile::link(path("a"), path("link")));
    QDir filtered(path("a"));
    filtered.setFilter(QDir::Files);
    filtered.setSorting(QDir::Size);

    QVERIFY(profile("a").isSameAs(profile("a")));
    QVERIFY(profile("a").isSameAs(profile("a/")));
    QVERIFY(profile("a").isSameAs(profile("b/../a")));
    QVERIFY(profile("a").isSameAs(profile("link")));
    QVERIFY(profile("a").isSameAs(DirectoryProfile(filtered)));
    QVERIFY(!profile("a").isSameAs(profile("b")));
    QVERIFY(!profile("a").isSameAs(profile("missing")));
    QVERIFY(profile("missing").isSameAs(profile("missing")));
    QVERIFY(!profile("a").isSameAs(ResourceProfile(path("a"))));
    QVERIFY(!profile("a").isSameAs(ResourceProfile(text(":/profiles/a"))));
    QVERIFY(!profile("a").isSameAs(FakeProfile(SlicerConfiguration::Custom)));
}

void tst_DirectoryProfile::copiesItsFolderForOtherMachines()
{
    writeProfile(path("a"));
    writeFile(path("a/notes/deep.txt"), "deep");
    writeFile(path("a/.hidden"), "hidden");

    const QDir copy = profile("a").copyToDisk(QDir(path("target")), text("new"),
                                              {Printer::CubioDual, Printer::FabrinoSingle});

    QCOMPARE(copy.absolutePath(), path("target/new"));
    QCOMPARE(tree(path("target")),
             QStringList({text("new"), text("new/end.gcode"), text("new/notes"),
                          text("new/notes/deep.txt"), text("new/profile.json"),
                          text("new/start.gcode"), text("new/strandel.json")}));
    QCOMPARE(readFile(path("target/new/strandel.json")), readFile(path("a/strandel.json")));
    QCOMPARE(readFile(path("target/new/start.gcode")), QByteArray("G28\n"));
    QCOMPARE(readFile(path("target/new/end.gcode")), QByteArray("M18\n"));
    QCOMPARE(readFile(path("target/new/notes/deep.txt")), QByteArray("deep"));
    QCOMPARE(identifiers(DirectoryProfile(copy).machineTypes()),
             QStringList({text("cubio_dual"), text("fabrino_single")}));
    QCOMPARE(int(DirectoryProfile(copy).slicer()), 0);
    QCOMPARE(identifiers(profile("a").machineTypes()), QStringList{text("fabrino_2")});
}

void tst_DirectoryProfile::copiesWhatAUserWriteProtected()
{
    writeProfile(path("a"));
    writeFile(path("a/notes/deep.txt"), "deep");
    const QStringList files = {text("profile.json"), text("strandel.json"), text("notes/deep.txt")};
    for (const QString& file : files)
        QVERIFY(QFile::setPermissions(m_folder->filePath(text("a/") + file), QFile::ReadOwner));
#ifdef Q_OS_UNIX
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0755), 0);
    for (const QString& file : files)
        QCOMPARE(::chmod(qPrintable(m_folder->filePath(text("a/") + file)), 0444), 0);
    QCOMPARE(::chmod(qPrintable(path("target")), 0777), 0);
    const OrdinaryUser user;
#endif

    const QDir copy = profile("a").copyToDisk(QDir(path("target")), text("new"), kOneType);

    QCOMPARE(identifiers(DirectoryProfile(copy).machineTypes()), QStringList{text("fabrino_2")});
    for (const QString& file : files)
        QVERIFY2(QFileInfo(copy.filePath(file)).isWritable(), qPrintable(file));
    QVERIFY(!QFileInfo(path("a/strandel.json")).permission(QFile::WriteOwner));
    DirectoryProfile(copy).remove();
}

void tst_DirectoryProfile::writesNothingButWhatItKnowsToTheCopy()
{
    writeProfile(path("a"));
    writeFile(path("a/profile.json"),
              R"({"slicer": "strandel", "author": "me", "machine_type": ["fabrino_2"]})");

    profile("a").copyToDisk(QDir(path("target")), text("new"),
                            {Printer::Fabrino2, Printer::Fabrino2X});

    QCOMPARE(readFile(path("target/new/profile.json")),
             QByteArray("{\n"
                        "   \"machine_type\" : [ \"fabrino_2\", \"fabrino_2x\" ],\n"
                        "   \"slicer\" : \"strandel\"\n"
                        "}\n"));
}

void tst_DirectoryProfile::copyKeepsTheOrderOfMachines_data()
{
    QTest::addColumn<std::vector<Printer::Type>>("types");

    QTest::newRow("none") << std::vector<Printer::Type>();
    QTest::newRow("all") << allMachineTypes();
    QTest::newRow("backwards") << std::vector<Printer::Type>(allMachineTypes().rbegin(),
                                                             allMachineTypes().rend());
    QTest::newRow("twice") << std::vector<Printer::Type>{Printer::Fabrino2, Printer::Fabrino2};
}

void tst_DirectoryProfile::copyKeepsTheOrderOfMachines()
{
    QFETCH(std::vector<Printer::Type>, types);
    writeProfile(path("a"));

    const QDir copy = profile("a").copyToDisk(QDir(path("target")), text("new"), types);

    QCOMPARE(identifiers(DirectoryProfile(copy).machineTypes()), identifiers(types));
}

void tst_DirectoryProfile::copyRefusesWhatIsThere_data()
{
    QTest::addColumn<QByteArray>("kind");

    for (const char* kind : {"folder", "file", "link to nowhere"})
        QTest::newRow(kind) << QByteArray(kind);
}

void tst_DirectoryProfile::copyRefusesWhatIsThere()
{
    QFETCH(QByteArray, kind);
    writeProfile(path("a"));
    if (kind == "folder")
        writeFile(path("target/new/mine.txt"), "mine");
    else if (kind == "file")
        writeFile(path("target/new"), "mine");
    else
        QVERIFY(QFile::link(path("nowhere"), path("target/new")));
    const QStringList before = tree(path("target"));

    QCOMPARE(
        thrownText([&] { profile("a").copyToDisk(QDir(path("target")), text("new"), kOneType); }),
        "Copy failed: couldn't create directory " + path("target/new").toStdString());
    QCOMPARE(tree(path("target")), before);
}

void tst_DirectoryProfile::copyRefusesNamesThatLeadOutside_data()
{
    QTest::addColumn<QString>("name");

    for (const char* name : {"", ".", "..", "../new", "sub/new", ":x", "C:", "a\\b"})
        QTest::newRow(name) << text(name);
}

void tst_DirectoryProfile::copyRefusesNamesThatLeadOutside()
{
    QFETCH(QString, name);
    writeProfile(path("a"));
    const QStringList before = tree(m_folder->path());

    const std::string error =
        thrownText([&] { profile("a").copyToDisk(QDir(path("target")), name, kOneType); });

    QVERIFY2(error.find("Copy failed: couldn't create directory ") == 0, error.c_str());
    QCOMPARE(tree(m_folder->path()), before);
}

void tst_DirectoryProfile::copyOfABrokenProfileMakesNothing_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("error");

    QTest::newRow("no JSON") << QByteArray("{") << 3
                             << QByteArray("profile.json does not contain valid JSON");
    QTest::newRow("no slicer") << QByteArray("{}") << 3
                               << QByteArray("profile.json is missing the slicer field");
    QTest::newRow("other slicer") << QByteArray(R"({"slicer": "other"})") << 3
                                  << QByteArray("Invalid slicer identifier\nother");
    QTest::newRow("no machine type") << profileJson("") << 0 << QByteArray("Invalid machine type");
}

void tst_DirectoryProfile::copyOfABrokenProfileMakesNothing()
{
    QFETCH(QByteArray, json);
    QFETCH(int, type);
    QFETCH(QByteArray, error);
    writeProfile(path("a"));
    writeFile(path("a/profile.json"), json);

    QCOMPARE(thrownText([&] {
                 profile("a").copyToDisk(QDir(path("target")), text("new"),
                                         {static_cast<Printer::Type>(type)});
             }),
             error.toStdString());
    QCOMPARE(tree(path("target")), QStringList());
}

void tst_DirectoryProfile::copyThatFailsHalfWayLeavesNothing()
{
#ifdef Q_OS_UNIX
    writeProfile(path("a"));
    writeFile(path("a/notes/large.txt"), QByteArray(100000, 'x'));

    std::string error;
    {
        const FileSizeLimit limit(4096);
        error = thrownText(
            [&] { profile("a").copyToDisk(QDir(path("target")), text("new"), kOneType); });
    }
    QCOMPARE(error, "Copy failed: couldn't copy " + path("a/notes/large.txt").toStdString() +
                        " to " + path("target/new/notes/large.txt").toStdString());
    QCOMPARE(tree(path("target")), QStringList());
#else
    QSKIP("No limit of file sizes here");
#endif
}

void tst_DirectoryProfile::copyWithoutItsFileLeavesNothing()
{
#ifdef Q_OS_UNIX
    writeProfile(path("a"), "");
    writeFile(path("a/strandel.json"), "{}");

    std::string error;
    {
        // The copies fit, the new profile.json does not.
        const FileSizeLimit limit(60);
        error = thrownText(
            [&] { profile("a").copyToDisk(QDir(path("target")), text("new"), allMachineTypes()); });
    }
    QCOMPARE(error, std::string("Cannot write profile.json"));
    QCOMPARE(tree(path("target")), QStringList());
#else
    QSKIP("No limit of file sizes here");
#endif
}

void tst_DirectoryProfile::copiesNothingThatWouldNeverEnd_data()
{
    QTest::addColumn<QString>("linkTarget");

#ifdef Q_OS_UNIX
    QTest::newRow("pipe") << text("../pipe");
    QTest::newRow("device without end") << text("/dev/zero");
    QTest::newRow("device that waits") << text("/dev/tty");
#endif
}

void tst_DirectoryProfile::copiesNothingThatWouldNeverEnd()
{
#ifdef Q_OS_UNIX
    QFETCH(QString, linkTarget);
    QCOMPARE(::mkfifo(qPrintable(path("pipe")), 0600), 0);
    writeProfile(path("a"));
    QVERIFY(QFile::link(linkTarget, path("a/notes.txt")));
    const std::string error = "Copy failed: couldn't copy " + path("a/notes.txt").toStdString();

    QCOMPARE(
        thrownText([&] { profile("a").copyToDisk(QDir(path("target")), text("new"), kOneType); }),
        error + " to " + path("target/new/notes.txt").toStdString());
    QCOMPARE(tree(path("target")), QStringList());
    QCOMPARE(thrownText([&] { profile("a").slicerConfigPath(); }).substr(0, error.size()), error);
#else
    QSKIP("Pipes and devices are no files here");
#endif
}

void tst_DirectoryProfile::copiesFilesOfASaneSizeOnly_data()
{
    QTest::addColumn<QString>("name");

    for (const char* name : {"strandel.json", "start.gcode", "end.gcode"})
        QTest::newRow(name) << text(name);
}

void tst_DirectoryProfile::copiesFilesOfASaneSizeOnly()
{
    QFETCH(QString, name);
    constexpr int kMost = 1024 * 1024;
    writeProfile(path("a"));
    writeFile(path("a/picture.png"), QByteArray(kMost + 1, 'x'));
    const QString file = path("a/") + name;
    const auto copy = [&] {
        profile("a").copyToDisk(QDir(path("target")), text("new"), kOneType);
    };
    writeFile(file, QByteArray(kMost + 1, ' '));
    const std::string error = name.toStdString() + " is larger than 1 MiB";

    QCOMPARE(thrownText(copy), error);
    QCOMPARE(tree(path("target")), QStringList());
    QCOMPARE(thrownText([&] { profile("a").slicerConfigPath(); }), error);

    writeFile(file, QByteArray(kMost, ' '));
    QCOMPARE(thrownText(copy), std::string("nothing thrown"));
    QCOMPARE(QFileInfo(path("target/new/") + name).size(), qint64(kMost));
    QCOMPARE(QFileInfo(path("target/new/picture.png")).size(), qint64(kMost + 1));
}

void tst_DirectoryProfile::copyNeedsItsTarget()
{
    writeProfile(path("a"));

    QCOMPARE(
        thrownText([&] { profile("a").copyToDisk(QDir(path("missing")), text("new"), kOneType); }),
        "Copy failed: " + path("missing").toStdString() + " doesn't exist");
    QVERIFY(!QFileInfo::exists(path("missing")));
}

void tst_DirectoryProfile::givesTheSlicerACopy()
{
    writeProfile(path("a"));
    const QStringList before = tree(m_folder->path());

    const QString config = profile("a").slicerConfigPath();
    const QString second = profile("a").slicerConfigPath();

    QVERIFY(QDir::isAbsolutePath(config));
    QCOMPARE(QFileInfo(config).fileName(), text("strandel.json"));
    QCOMPARE(readFile(config), readFile(path("a/strandel.json")));
    QCOMPARE(readFile(QFileInfo(config).dir().filePath(text("start.gcode"))), QByteArray("G28\n"));
    QVERIFY(config != second);
    QVERIFY(!config.startsWith(m_folder->path()));

    writeFile(config, "changed by the slicer");
    QCOMPARE(readFile(path("a/strandel.json")), QByteArray(R"({"layerHeight": 0.2})"));
    QCOMPARE(tree(m_folder->path()), before);

    TemporaryDir::cleanManagedDirectories();
    QVERIFY(!QFileInfo::exists(config));
}

void tst_DirectoryProfile::givesTheSlicerNothingBroken()
{
    writeProfile(path("a"));
    writeFile(path("a/profile.json"), R"({"slicer": "other"})");

    QCOMPARE(thrownText([&] { profile("a").slicerConfigPath(); }),
             std::string("Invalid slicer identifier\nother"));
    QCOMPARE(thrownText([&] { profile("missing").slicerConfigPath(); }),
             std::string("profile.json is missing"));
}

void tst_DirectoryProfile::removesItsFolder()
{
    writeProfile(path("a"));
    writeFile(path("a/.hidden/deep.txt"), "deep");

    profile("a").remove();

    QCOMPARE(tree(m_folder->path()), QStringList{text("target")});
    QCOMPARE(thrownText([&] { profile("a").remove(); }), std::string("nothing thrown"));
}

void tst_DirectoryProfile::removingALinkedFolderLeavesTheFolder()
{
    writeProfile(path("a"));
    QVERIFY(QFile::link(path("a"), path("link")));

    profile("link").remove();

    QVERIFY(!QFileInfo(path("link")).isSymLink());
    QVERIFY(QFileInfo::exists(path("a/strandel.json")));
}

void tst_DirectoryProfile::tellsWhatCannotBeRemoved()
{
#ifdef Q_OS_UNIX
    writeFile(path("a/profile.json"), profileJson(""));
    QCOMPARE(::chmod(qPrintable(m_folder->path()), 0755), 0);

    const OrdinaryUser user;
    QCOMPARE(thrownText([&] { profile("a").remove(); }),
             "Unable to delete file " + path("a/profile.json").toStdString());
#else
    QSKIP("Files are protected in another way here");
#endif
}

void tst_DirectoryProfile::opensItsSettingsInTheDesktopsEditor()
{
    TestLog log;
    const Desktop desktop;
    writeProfile(path("50% #1? \xc3\xbc"));

    profile("50% #1? \xc3\xbc").edit();

    QCOMPARE(desktop.opened,
             QList<QUrl>{QUrl::fromLocalFile(path("50% #1? \xc3\xbc/strandel.json"))});
    QCOMPARE(desktop.opened.first().toLocalFile(), path("50% #1? \xc3\xbc/strandel.json"));
}

void tst_DirectoryProfile::opensItsSettingsInATextEditorWhereTheDesktopHasNone()
{
#ifdef Q_OS_UNIX
    TestLog log;
    // There is none here either, which is told with the file's name.
    const Environment path_("PATH", "");
    const Environment visual("VISUAL", QByteArray());
    const Environment editor("EDITOR", QByteArray());
    writeProfile(path("a"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(text("openDocument")));
    log.expectError("There is no text editor to open " + path("a/strandel.json").toStdString());

    profile("a").edit();
#else
    QSKIP("An editor would open");
#endif
}

void tst_DirectoryProfile::editsOnlyWhatIsThere_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("strandel");
    QTest::addColumn<QByteArray>("error");

    QTest::newRow("other slicer") << QByteArray(R"({"slicer": "other"})") << QString()
                                  << QByteArray("Invalid slicer identifier\nother");
    QTest::newRow("no JSON") << QByteArray("{") << QString()
                             << QByteArray("profile.json does not contain valid JSON");
    QTest::newRow("no settings") << profileJson("") << QString()
                                 << QByteArray("strandel.json not found");
    QTest::newRow("a folder instead")
        << profileJson("") << text(".") << QByteArray("strandel.json not found");
    QTest::newRow("a link to nowhere")
        << profileJson("") << text("nowhere") << QByteArray("strandel.json not found");
}

void tst_DirectoryProfile::editsOnlyWhatIsThere()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, strandel);
    QFETCH(QByteArray, error);
    TestLog log;
    const Desktop desktop;
    writeFile(path("a/profile.json"), json);
    if (!strandel.isEmpty())
        QVERIFY(QFile::link(strandel, path("a/strandel.json")));

    QCOMPARE(thrownText([&] { profile("a").edit(); }), error.toStdString());
    QCOMPARE(desktop.opened, QList<QUrl>());
}

QTEST_MAIN(tst_DirectoryProfile)
#include "tst_directory_profile.moc"
