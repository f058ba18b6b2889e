#include "support/environment.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/file_system.h>
#include <util/plain_name.h>
#include <util/resource_copy.h>
#include <util/unused_name.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif

using trovek::recursiveCopyRename;
using trovek::recursiveDelete;
using trovek::TemporaryDir;
using trovek::TestLog;

namespace {

QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

void write(const QString& path, const QByteArray& data = "data")
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(data);
}

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
}

/** All that is in the folder, hidden or not, as relative paths in order. */
QStringList tree(const QString& folder, const QString& prefix = QString())
{
    QStringList names;
    const QFileInfoList entries = QDir(folder).entryInfoList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo& entry : entries) {
        names += prefix + entry.fileName();
        if (entry.isDir() && !entry.isSymLink())
            names += tree(entry.filePath(), prefix + entry.fileName() + text("/"));
    }
    return names;
}

bool exists(const QString& path)
{
    return QFileInfo(path).isSymLink() || QFileInfo::exists(path);
}

#ifdef Q_OS_UNIX
/** Root reads and removes everything; here it is somebody else for a while. */
class OrdinaryUser
{
public:
    OrdinaryUser()
        : m_wasRoot(::geteuid() == 0 && ::seteuid(65534) == 0)
    {}
    ~OrdinaryUser()
    {
        if (m_wasRoot && ::seteuid(0) != 0)
            qFatal("Cannot become root again");
    }

private:
    const bool m_wasRoot;
};
#endif

} // namespace

class tst_FileSystem : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void copiesATreeUnderANewName();
    void copyLogsEveryFolder();
    void copyNeedsItsDestination();
    void copyRefusesAnExistingNameAndCopiesNothing();
    void copyLeavesHiddenEntriesThatDeleteRemoves();
    void copyReportsAFileThatCannotBeRead();
    void copyRefusesNamesThatLeadOutside_data();
    void copyRefusesNamesThatLeadOutside();
    void copyTakesNamesThatOnlyLookOdd();
    void copyRefusesADestinationInsideItsSource_data();
    void copyRefusesADestinationInsideItsSource();
    void copyRefusesAFolderThatContainsItselfThroughALink();
    void copyRefusesALinkToWhatContainsTheDestination();
    void copyFollowsAHarmlessLink();
    void deleteRemovesEverything();
    void deleteLogsInItsOwnWords();
    void deleteOfAMissingFolderOnlyLogs();
    void deleteNeverEntersLinks();
    void deleteOfALinkRemovesOnlyTheLink();
    void deleteReportsWhatItCannotRemove();
    void resourceDataIsTheFile_data();
    void resourceDataIsTheFile();
    void resourceDataRefusesFoldersAndNothing();
    void copiesAResourceFile();
    void copiesAResourceFolder();
    void resourceCopyReportsFailures();
    void temporaryDirCleansUpWithItsLastCopy();
    void temporaryDirIsNamedByAUuid();
    void temporaryDirLeavesWhatItsLinksPointTo();
    void temporaryDirIsPrivate();
    void temporaryDirIsEnterableForAServiceOfAnotherAccount();
    void temporaryDirSurvivesACopyOntoItself();
    void temporaryDirReportsThatItCannotBeMade();
    void managedDirsLiveUntilTheyAreCleaned();
    void namesAreTriedThreeTimes();

private:
    QString path(const char* name) const { return m_folder->filePath(text(name)); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<TestLog> m_log;
};

void tst_FileSystem::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_log = std::make_unique<TestLog>();
}

void tst_FileSystem::cleanup()
{
    m_log.reset();
}

void tst_FileSystem::copiesATreeUnderANewName()
{
    write(path("source/a.txt"), "A");
    write(path("source/sub/b.txt"), "B");
    QVERIFY(QDir().mkpath(path("source/empty")));
    QVERIFY(QDir().mkpath(path("target")));

    const QDir copy = recursiveCopyRename(QDir(path("target")), QDir(path("source")), text("copy"));

    QCOMPARE(copy.absolutePath(), path("target/copy"));
    const QStringList expected{text("copy"), text("copy/a.txt"), text("copy/empty"),
                               text("copy/sub"), text("copy/sub/b.txt")};
    QCOMPARE(tree(path("target")), expected);
    QCOMPARE(read(path("target/copy/sub/b.txt")), QByteArray("B"));
}

void tst_FileSystem::copyLogsEveryFolder()
{
    write(path("source/sub/b.txt"));
    QVERIFY(QDir().mkpath(path("target")));
    recursiveCopyRename(QDir(path("target")), QDir(path("source")), text("copy"));

    const std::vector<std::string> expected{
        "dstDir=" + path("target").toStdString() + ", srcDir=" + path("source").toStdString() +
            ", dstName=copy",
        "dstDir=" + path("target/copy").toStdString() +
            ", srcDir=" + path("source/sub").toStdString() + ", dstName=sub"};
    QCOMPARE(m_log->messages(), expected);
    QCOMPARE(m_log->messages(2), expected);
    QCOMPARE(m_log->sink().entries().front().file, std::string("src/util/file_system"));
}

void tst_FileSystem::copyNeedsItsDestination()
{
    write(path("source/a.txt"));
    QCOMPARE(thrownText([&] {
                 recursiveCopyRename(QDir(path("no")), QDir(path("source")), text("copy"));
             }),
             "Copy failed: " + path("no").toStdString() + " doesn't exist");
    QCOMPARE(m_log->messages(2).size(), std::size_t(1));
}

void tst_FileSystem::copyRefusesAnExistingNameAndCopiesNothing()
{
    write(path("source/a.txt"));
    QVERIFY(QDir().mkpath(path("target/copy")));
    QCOMPARE(thrownText([&] {
                 recursiveCopyRename(QDir(path("target")), QDir(path("source")), text("copy"));
             }),
             "Copy failed: couldn't create directory " + path("target/copy").toStdString());
    QCOMPARE(tree(path("target")), QStringList(text("copy")));
}

void tst_FileSystem::copyLeavesHiddenEntriesThatDeleteRemoves()
{
    write(path("source/a.txt"));
    write(path("source/.hidden"));
    write(path("source/.hidden_folder/b.txt"));
    QVERIFY(QDir().mkpath(path("target")));
    recursiveCopyRename(QDir(path("target")), QDir(path("source")), text("copy"));
    QCOMPARE(tree(path("target/copy")), QStringList(text("a.txt")));

    recursiveDelete(QDir(path("source")));
    QVERIFY(!exists(path("source")));
}

void tst_FileSystem::copyReportsAFileThatCannotBeRead()
{
#ifdef Q_OS_UNIX
    write(path("source/a.txt"));
    QFile::setPermissions(path("source/a.txt"), {});
    QVERIFY(QDir().mkpath(path("target")));
    ::chmod(qPrintable(m_folder->path()), 0755);
    ::chmod(qPrintable(path("target")), 0777);
    std::string thrown;
    {
        const OrdinaryUser user;
        thrown = thrownText(
            [&] { recursiveCopyRename(QDir(path("target")), QDir(path("source")), text("copy")); });
    }
    QCOMPARE(thrown, "Copy failed: couldn't copy " + path("source/a.txt").toStdString() + " to " +
                         path("target/copy/a.txt").toStdString());
#endif
}

void tst_FileSystem::copyRefusesNamesThatLeadOutside_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("empty") << QString();
    QTest::newRow("this folder") << text(".");
    QTest::newRow("the folder above") << text("..");
    QTest::newRow("a path") << text("../outside");
    QTest::newRow("a path below") << text("target2/below");
    QTest::newRow("an absolute path") << text("/tmp/trovek-outside");
    QTest::newRow("a path of Windows") << text("..\\outside");
    QTest::newRow("a resource") << text(":outside");
    QTest::newRow("a drive") << text("C:outside");
    QTest::newRow("a small drive") << text("c:");
    QTest::newRow("a zero character") << QString(text("..") + QChar(0));
}

void tst_FileSystem::copyRefusesNamesThatLeadOutside()
{
    QFETCH(QString, name);
    write(path("source/a.txt"));
    write(path("resource"));
    QVERIFY(QDir().mkpath(path("target/target2")));
    const QDir target(path("target"));
    const QStringList before = tree(m_folder->path());
    QCOMPARE(thrownText([&] { recursiveCopyRename(target, QDir(path("source")), name); }),
             "Copy failed: couldn't create directory " +
                 target.absoluteFilePath(name).remove(QChar(0)).toStdString());
    QCOMPARE(tree(m_folder->path()), before);
    QVERIFY(!trovek::isPlainName(name));
}

void tst_FileSystem::copyTakesNamesThatOnlyLookOdd()
{
    for (const char* name : {"...", "..a", "a b", "ä:b", "PLA: fine", "~", "%1"})
        QVERIFY2(trovek::isPlainName(text(name)), name);
}

void tst_FileSystem::copyRefusesADestinationInsideItsSource_data()
{
    QTest::addColumn<QString>("target");

    QTest::newRow("the source itself") << text("source");
    QTest::newRow("deep in the source") << text("source/sub/deep");
    QTest::newRow("by a link") << text("link");
}

void tst_FileSystem::copyRefusesADestinationInsideItsSource()
{
    QFETCH(QString, target);
    write(path("source/sub/deep/a.txt"));
    QVERIFY(QFile::link(path("source/sub"), path("link")));
    const QString targetPath = m_folder->filePath(target);
    const QStringList before = tree(m_folder->path());
    QCOMPARE(thrownText([&] {
                 recursiveCopyRename(QDir(targetPath), QDir(path("source")), text("copy"));
             }),
             "Copy failed: couldn't copy " + path("source").toStdString() + " to " +
                 (targetPath + text("/copy")).toStdString());
    QCOMPARE(tree(m_folder->path()), before);

    // A name that only begins alike is another folder.
    QVERIFY(QDir().mkpath(path("source2")));
    recursiveCopyRename(QDir(path("source2")), QDir(path("source")), text("copy"));
    QVERIFY(exists(path("source2/copy/sub/deep/a.txt")));
}

void tst_FileSystem::copyRefusesAFolderThatContainsItselfThroughALink()
{
    write(path("source/a.txt"));
    write(path("source/sub/b.txt"));
    QVERIFY(QFile::link(path("source"), path("source/sub/loop")));
    QVERIFY(QDir().mkpath(path("target")));
    QCOMPARE(thrownText([&] {
                 recursiveCopyRename(QDir(path("target")), QDir(path("source")), text("copy"));
             }),
             "Copy failed: couldn't copy " + path("source/sub/loop").toStdString() + " to " +
                 path("target/copy/sub/loop").toStdString());
    QVERIFY(tree(path("target")).isEmpty());
}

void tst_FileSystem::copyRefusesALinkToWhatContainsTheDestination()
{
    write(path("source/a.txt"));
    QVERIFY(QDir().mkpath(path("around/target")));
    QVERIFY(QFile::link(path("around"), path("source/link")));
    QCOMPARE(thrownText([&] {
                 recursiveCopyRename(QDir(path("around/target")), QDir(path("source")),
                                     text("copy"));
             }),
             "Copy failed: couldn't copy " + path("source/link").toStdString() + " to " +
                 path("around/target/copy/link").toStdString());
    QVERIFY(tree(path("around/target")).isEmpty());
}

void tst_FileSystem::copyFollowsAHarmlessLink()
{
    write(path("elsewhere/b.txt"), "B");
    write(path("source/a.txt"));
    QVERIFY(QFile::link(path("elsewhere"), path("source/one")));
    QVERIFY(QFile::link(path("elsewhere"), path("source/two")));
    QVERIFY(QDir().mkpath(path("target")));
    recursiveCopyRename(QDir(path("target")), QDir(path("source")), text("copy"));
    QCOMPARE(read(path("target/copy/one/b.txt")), QByteArray("B"));
    QVERIFY(!QFileInfo(path("target/copy/two")).isSymLink());
}

void tst_FileSystem::deleteRemovesEverything()
{
    write(path("folder/a.txt"));
    write(path("folder/.hidden"));
    write(path("folder/sub/deep/b.txt"));
    write(path("folder/.hidden_folder/c.txt"));
    write(path("stays.txt"));
    QVERIFY(QFile::link(path("nowhere"), path("folder/dangling")));
    recursiveDelete(QDir(path("folder")));
    QCOMPARE(tree(m_folder->path()), QStringList(text("stays.txt")));
}

void tst_FileSystem::deleteLogsInItsOwnWords()
{
    write(path("folder/a.txt"));
    recursiveDelete(QDir(path("folder")));
    const std::vector<std::string> expected{
        "recursiveDelete(\"" + path("folder").toStdString() + "\")",
        "QFile(\"" + path("folder/a.txt").toStdString() + "\").remove()"};
    QCOMPARE(m_log->messages(), expected);
    QCOMPARE(m_log->messages(1).size(), std::size_t(1));
    QCOMPARE(m_log->messages(2).size(), std::size_t(1));
}

void tst_FileSystem::deleteOfAMissingFolderOnlyLogs()
{
    recursiveDelete(QDir(path("missing")));
    const std::vector<std::string> expected{"recursiveDelete(\"" + path("missing").toStdString() +
                                            "\")"};
    QCOMPARE(m_log->messages(), expected);
}

void tst_FileSystem::deleteNeverEntersLinks()
{
    write(path("precious/a.txt"));
    write(path("precious.txt"));
    QVERIFY(QDir().mkpath(path("folder/sub")));
    QVERIFY(QFile::link(path("precious"), path("folder/sub/link")));
    QVERIFY(QFile::link(path("precious.txt"), path("folder/file_link")));
    QVERIFY(QFile::link(path("folder"), path("folder/loop")));
    recursiveDelete(QDir(path("folder")));
    const std::vector<std::string> entered{
        "recursiveDelete(\"" + path("folder").toStdString() + "\")",
        "recursiveDelete(\"" + path("folder/sub").toStdString() + "\")"};
    QCOMPARE(m_log->messages(1), entered);
    QVERIFY(!exists(path("folder")));
    const QStringList expected{text("precious"), text("precious/a.txt"), text("precious.txt")};
    QCOMPARE(tree(m_folder->path()), expected);
}

void tst_FileSystem::deleteOfALinkRemovesOnlyTheLink()
{
    write(path("precious/a.txt"));
    QVERIFY(QFile::link(path("precious"), path("link")));
    recursiveDelete(QDir(path("link")));
    QVERIFY(!exists(path("link")));
    QVERIFY(exists(path("precious/a.txt")));
}

void tst_FileSystem::deleteReportsWhatItCannotRemove()
{
#ifdef Q_OS_UNIX
    write(path("folder/sub/a.txt"));
    ::chmod(qPrintable(m_folder->path()), 0755);
    ::chmod(qPrintable(path("folder/sub")), 0555);
    const auto deleteFolder = [this] {
        const OrdinaryUser user;
        return thrownText([this] { recursiveDelete(QDir(path("folder"))); });
    };
    const std::string file = deleteFolder();
    ::chmod(qPrintable(path("folder/sub")), 0755);
    QCOMPARE(file, "Unable to delete file " + path("folder/sub/a.txt").toStdString());

    QVERIFY(QFile::remove(path("folder/sub/a.txt")));
    ::chmod(qPrintable(path("folder")), 0555);
    const std::string folder = deleteFolder();
    ::chmod(qPrintable(path("folder")), 0755);
    QCOMPARE(folder, "Unable to delete directory " + path("folder/sub").toStdString());
#endif
}

void tst_FileSystem::resourceDataIsTheFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("compression");
    QTest::addColumn<QString>("source");

    QTest::newRow("not compressed") << text(":/file_system/resource_tree/short.txt")
                                    << int(QResource::NoCompression) << text("short.txt");
    QTest::newRow("compressed") << text(":/file_system/zlib.txt") << int(QResource::ZlibCompression)
                                << text("inner/long.txt");
    QTest::newRow("as the compiler likes")
        << text(":/file_system/resource_tree/inner/long.txt") << -1 << text("inner/long.txt");
}

void tst_FileSystem::resourceDataIsTheFile()
{
    QFETCH(QString, name);
    QFETCH(int, compression);
    QFETCH(QString, source);
    const QResource resource(name);
    if (compression >= 0)
        QCOMPARE(int(resource.compressionAlgorithm()), compression);
    const QByteArray expected = read(QFINDTESTDATA("resource_tree") + text("/") + source);
    QVERIFY(expected.size() > 5);
    QCOMPARE(trovek::qResourceData(resource), expected);
}

void tst_FileSystem::resourceDataRefusesFoldersAndNothing()
{
    QCOMPARE(thrownText([] { trovek::qResourceData(QResource(text(":/missing"))); }),
             std::string("Failed to get data for invalid QResource"));
    QCOMPARE(thrownText([] { trovek::qResourceData(QResource(text(":/file_system"))); }),
             std::string("Failed to get data for non-file QResource"));
}

void tst_FileSystem::copiesAResourceFile()
{
    trovek::copyQResource(QResource(text(":/file_system/resource_tree/short.txt")),
                          QDir(m_folder->path()), text("copy.txt"));
    QCOMPARE(read(path("copy.txt")), QByteArray("short\n"));
}

void tst_FileSystem::copiesAResourceFolder()
{
    trovek::copyQResource(QResource(text(":/file_system")), QDir(m_folder->path()), text("copy"));
    const QStringList expected{text("copy"),
                               text("copy/resource_tree"),
                               text("copy/resource_tree/inner"),
                               text("copy/resource_tree/inner/long.txt"),
                               text("copy/resource_tree/short.txt"),
                               text("copy/zlib.txt")};
    QCOMPARE(tree(m_folder->path()), expected);
    QCOMPARE(read(path("copy/resource_tree/inner/long.txt")),
             read(QFINDTESTDATA("resource_tree") + text("/inner/long.txt")));
}

void tst_FileSystem::resourceCopyReportsFailures()
{
    const QResource file(text(":/file_system/zlib.txt"));
    const QResource folder(text(":/file_system"));
    const QDir here(m_folder->path());
    QVERIFY(here.mkdir(text("taken")));
    const auto copy = [](const QResource& resource, const QDir& dir, const char* name) {
        return thrownText([&] { trovek::copyQResource(resource, dir, text(name)); });
    };
    QCOMPARE(copy(QResource(text(":/missing")), here, "x"),
             std::string("Failed to copy invalid QResource"));
    QCOMPARE(copy(file, here, "taken"), std::string("Failed to open QResource copy for writing"));
    QCOMPARE(copy(file, QDir(path("missing")), "x"),
             std::string("Failed to open QResource copy for writing"));
    QCOMPARE(copy(file, here, "../x"), std::string("Failed to open QResource copy for writing"));
    QCOMPARE(copy(folder, here, "taken"), std::string("Failed to create QResource copy directory"));
    QCOMPARE(copy(folder, here, ".."), std::string("Failed to create QResource copy directory"));
#ifdef Q_OS_LINUX
    // A device that is always full.
    QVERIFY(QFile::link(text("/dev/full"), path("full")));
    QCOMPARE(copy(file, here, "full"), std::string("Failed to write QResource copy"));
#endif
}

void tst_FileSystem::temporaryDirCleansUpWithItsLastCopy()
{
    QString folder;
    {
        auto first = std::make_unique<TemporaryDir>();
        folder = first->absolutePath();
        write(folder + text("/sub/a.txt"));
        const TemporaryDir copy(*first);
        TemporaryDir assigned;
        const QString replaced = assigned.absolutePath();
        QVERIFY(replaced != folder);
        assigned = copy;
        QVERIFY(!exists(replaced));
        QCOMPARE(assigned.absolutePath(), folder);
        first.reset();
        QVERIFY(exists(folder + text("/sub/a.txt")));
    }
    QVERIFY(!exists(folder));
}

void tst_FileSystem::temporaryDirIsNamedByAUuid()
{
    const TemporaryDir folder;
    const QRegularExpression pattern(
        text("^trovek-ui-\\{[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}\\}$"));
    QVERIFY2(pattern.match(folder.dirName()).hasMatch(), qPrintable(folder.dirName()));
    QCOMPARE(QFileInfo(folder.absolutePath()).absolutePath(), QDir::temp().absolutePath());
    QVERIFY(folder.exists());
}

void tst_FileSystem::temporaryDirLeavesWhatItsLinksPointTo()
{
    write(path("precious/a.txt"));
    QString folder;
    {
        const TemporaryDir temporary;
        folder = temporary.absolutePath();
        QVERIFY(QFile::link(path("precious"), temporary.filePath(text("link"))));
        QVERIFY(temporary.mkdir(text("sub")));
        QVERIFY(QFile::link(path("precious/a.txt"), temporary.filePath(text("sub/link"))));
    }
    QVERIFY(!exists(folder));
    QVERIFY(exists(path("precious/a.txt")));
}

void tst_FileSystem::temporaryDirIsPrivate()
{
#ifdef Q_OS_UNIX
    const mode_t before = ::umask(0);
    const TemporaryDir folder;
    const mode_t during = ::umask(before);
    QCOMPARE(during, mode_t(0));
    struct stat status;
    QCOMPARE(::stat(qPrintable(folder.absolutePath()), &status), 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0700));
#endif
}

void tst_FileSystem::temporaryDirIsEnterableForAServiceOfAnotherAccount()
{
#ifdef Q_OS_UNIX
    TemporaryDir::setServiceRunsUnderAnotherAccount(true);
    const mode_t before = ::umask(0077);
    const TemporaryDir folder;
    ::umask(before);
    TemporaryDir::setServiceRunsUnderAnotherAccount(false);
    struct stat status;
    QCOMPARE(::stat(qPrintable(folder.absolutePath()), &status), 0);
    QCOMPARE(status.st_mode & 07777, mode_t(0711));
#endif
}

void tst_FileSystem::temporaryDirSurvivesACopyOntoItself()
{
    TemporaryDir folder;
    const TemporaryDir& same = folder;
    folder = same;
    QVERIFY(folder.exists());
    // Wherever the object is moved to, its own folder is the one that is cleaned up.
    const QString own = folder.absolutePath();
    {
        TemporaryDir moved(folder);
        folder = TemporaryDir();
        QVERIFY(moved.cd(m_folder->path()));
        write(path("a.txt"));
    }
    QVERIFY(!exists(own));
    QVERIFY(exists(path("a.txt")));
}

void tst_FileSystem::temporaryDirReportsThatItCannotBeMade()
{
    write(path("file"));
    const trovek::Environment noFolder("TMPDIR", QFile::encodeName(path("file")));
    const std::string expected = "Failed to create temporary directory";
    QCOMPARE(thrownText([] { TemporaryDir(); }), expected);
    QCOMPARE(thrownText([] { TemporaryDir::managedDir(); }), expected);
    TemporaryDir::cleanManagedDirectories();
    QCOMPARE(tree(m_folder->path()), QStringList(text("file")));
}

void tst_FileSystem::managedDirsLiveUntilTheyAreCleaned()
{
    const trovek::Environment own("TMPDIR", QFile::encodeName(m_folder->path()));
    const QDir first = TemporaryDir::managedDir();
    const QDir second = TemporaryDir::managedDir();
    QVERIFY(first.absolutePath() != second.absolutePath());
    write(first.filePath(text("a.txt")));
    QVERIFY(second.exists());

    TemporaryDir::cleanManagedDirectories();
    QVERIFY(!exists(first.absolutePath()));
    QVERIFY(!exists(second.absolutePath()));

    // The list is empty now: what has the same name later is somebody else's.
    QVERIFY(QDir().mkpath(first.absolutePath()));
    TemporaryDir::cleanManagedDirectories();
    QVERIFY(exists(first.absolutePath()));
    QVERIFY(QDir().rmdir(first.absolutePath()));
    QVERIFY(tree(m_folder->path()).isEmpty());
}

void tst_FileSystem::namesAreTriedThreeTimes()
{
    const QDir here(m_folder->path());
    QVERIFY(here.mkdir(text("1")) && here.mkdir(text("2")));
    int calls = 0;
    const auto next = [&calls] {
        return QString::number(++calls);
    };
    QCOMPARE(trovek::unusedName(here, next), text("3"));
    QVERIFY(here.mkdir(text("3")));
    calls = 0;
    QCOMPARE(thrownText([&] { trovek::unusedName(here, next); }),
             std::string("UUID generation spectacularly wrong."));
    QCOMPARE(calls, 3);
}

QTEST_MAIN(tst_FileSystem)
#include "tst_file_system.moc"
