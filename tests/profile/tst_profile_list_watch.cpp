// How the list follows what others do in the profile directory.

#include "profile/profile_world.h"
#include "support/test_log.h"

#include <trovek-ui/profile_list_model.h>

#include <QFileSystemWatcher>
#include <QSaveFile>
#include <QSignalSpy>
#include <QTest>

using namespace trovek;

class tst_ProfileListWatch : public QObject
{
    Q_OBJECT

private slots:
    void watchesItsDirectoryAndTheFolderAbove();
    void followsFoldersThatComeAndGo();
    void announcesAFolderBeforeItsFilesAreThere();
    void followsTheFileOfAProfile();
    void followsAFileThatIsReplacedTwice();
    void noticesAChangeOfTheSameSizeInTheSameMoment();
    void noticesSuchAChangeWhereNothingIsWatched();
    void followsARenamedFolder();
    void followsADirectoryThatIsRemovedAndMadeAgain();
    void followsADirectoryThatComesLater();
    void followsADirectoryThatIsExchanged();
    void forgetsTheWatchesOfWhatIsGone();
    void watchesNoMoreThanItMay();
    void bearsManyChangesInARow();

private:
    static bool isListed(const ProfileListModel& model, const char* name)
    {
        return itemOf(model, text(name)) != nullptr;
    }
    static bool isEnabled(const ProfileListModel& model, const char* name)
    {
        const QStandardItem* const item = itemOf(model, text(name));
        return item != nullptr && item->isEnabled();
    }
    static QFileSystemWatcher& watcherOf(const ProfileListModel& model)
    {
        return *model.findChild<QFileSystemWatcher*>();
    }
};

namespace {

void replaceAtOnce(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    QVERIFY(file.commit());
}

} // namespace

void tst_ProfileListWatch::watchesItsDirectoryAndTheFolderAbove()
{
    const ProfileWorld world;
    const ProfileListModel model(false, false);

    QStringList watched = watcherOf(model).directories();
    watched.sort();
    QCOMPARE(watched, QStringList({world.base(), world.directory()}));
}

void tst_ProfileListWatch::followsFoldersThatComeAndGo()
{
    const ProfileWorld world;
    world.addProfile("a");
    const ProfileListModel model(true, false);

    world.addProfile("b");
    QTRY_COMPARE(rowsOf(model).mid(3), QStringList({text("a"), text("b")}));
    QTRY_VERIFY(isEnabled(model, "b"));

    QVERIFY(QDir(world.path("a")).removeRecursively());
    QTRY_COMPARE(rowsOf(model).mid(3), QStringList{text("b")});

    world.addProfile("a");
    QTRY_COMPARE(rowsOf(model).mid(3), QStringList({text("b"), text("a")}));
    QTRY_VERIFY(isEnabled(model, "a"));
}

void tst_ProfileListWatch::announcesAFolderBeforeItsFilesAreThere()
{
    const ProfileWorld world;
    const ProfileListModel model(false, false);

    QVERIFY(QDir().mkpath(world.path("a")));
    QTRY_VERIFY(isListed(model, "a"));
    QVERIFY(!isEnabled(model, "a"));
    QCOMPARE(itemOf(model, text("a"))->toolTip(), text("Invalid profile: profile.json is missing"));

    writeFile(world.path("a/strandel.json"), "{}");
    QTest::qWait(0);
    QVERIFY(!isEnabled(model, "a"));
    writeFile(world.path("a/profile.json"), profileJson(R"("fabrino_2")"));
    QTRY_VERIFY(isEnabled(model, "a"));
    QCOMPARE(model.rowCount(), 1);
}

void tst_ProfileListWatch::followsTheFileOfAProfile()
{
    const ProfileWorld world;
    world.addProfile("a");
    ProfileListModel model(false, false);
    model.setSelectedMachineType(Printer::Fabrino2);
    QVERIFY(isEnabled(model, "a"));

    writeFile(world.path("a/profile.json"), "{");
    QTRY_VERIFY(!isEnabled(model, "a"));
    writeFile(world.path("a/profile.json"), profileJson(R"("fabrino_2", "cubio_dual")"));
    QTRY_VERIFY(isEnabled(model, "a"));
    writeFile(world.path("a/profile.json"), profileJson(R"("cubio_dual")"));
    QTRY_VERIFY(!isEnabled(model, "a"));
    QVERIFY(QFile::remove(world.path("a/profile.json")));
    QTRY_COMPARE(itemOf(model, text("a"))->toolTip(),
                 text("Invalid profile: profile.json is missing"));
    writeFile(world.path("a/profile.json"), profileJson(R"("fabrino_2")"));
    QTRY_VERIFY(isEnabled(model, "a"));
}

void tst_ProfileListWatch::followsAFileThatIsReplacedTwice()
{
    const ProfileWorld world;
    world.addProfile("a");
    const ProfileListModel model(false, false);

    for (int round = 0; round < 3; ++round) {
        replaceAtOnce(world.path("a/profile.json"), "{");
        QTRY_VERIFY(!isEnabled(model, "a"));
        replaceAtOnce(world.path("a/profile.json"), profileJson(""));
        QTRY_VERIFY(isEnabled(model, "a"));
        // And the file that replaced the other is written in place.
        writeFile(world.path("a/profile.json"), "{");
        QTRY_VERIFY(!isEnabled(model, "a"));
        writeFile(world.path("a/profile.json"), profileJson(""));
        QTRY_VERIFY(isEnabled(model, "a"));
    }
}

void tst_ProfileListWatch::noticesAChangeOfTheSameSizeInTheSameMoment()
{
    const ProfileWorld world;
    world.addProfile("a", R"("fabrino_2")");
    const ProfileListModel model(false, false);

    // Often within one tick of the clock that files are stamped by.
    for (int round = 0; round < 20; ++round) {
        writeFile(world.path("a/profile.json"), profileJson(R"("fabrino_9")"));
        QTRY_VERIFY(!isEnabled(model, "a"));
        writeFile(world.path("a/profile.json"), profileJson(R"("fabrino_2")"));
        QTRY_VERIFY(isEnabled(model, "a"));
    }
}

void tst_ProfileListWatch::noticesSuchAChangeWhereNothingIsWatched()
{
    const ProfileWorld world;
    world.addProfile("a", R"("fabrino_2")");
    ProfileListModel model(false, false);
    watcherOf(model).blockSignals(true);

    for (int round = 0; round < 50; ++round) {
        writeFile(world.path("a/profile.json"), profileJson(R"("fabrino_9")"));
        model.update();
        QVERIFY(!isEnabled(model, "a"));
        writeFile(world.path("a/profile.json"), profileJson(R"("fabrino_2")"));
        model.update();
        QVERIFY(isEnabled(model, "a"));
    }
}

void tst_ProfileListWatch::followsARenamedFolder()
{
    const ProfileWorld world;
    world.addProfile("a");
    const ProfileListModel model(false, false);

    QVERIFY(QDir().rename(world.path("a"), world.path("b")));
    QTRY_COMPARE(rowsOf(model), QStringList{text("b")});
    writeFile(world.path("b/profile.json"), "{");
    QTRY_VERIFY(!isEnabled(model, "b"));

    // Another one of the same name.
    world.addProfile("c");
    QTRY_VERIFY(isListed(model, "c"));
    QVERIFY(QDir().rename(world.path("b"), world.base() + text("/away")));
    QVERIFY(QDir().rename(world.path("c"), world.path("b")));
    QTRY_VERIFY(isEnabled(model, "b"));
    QTRY_COMPARE(rowsOf(model), QStringList{text("b")});
    writeFile(world.path("b/profile.json"), "{");
    QTRY_VERIFY(!isEnabled(model, "b"));
}

void tst_ProfileListWatch::followsADirectoryThatIsRemovedAndMadeAgain()
{
    const ProfileWorld world;
    world.addProfile("a");
    const ProfileListModel model(true, false);

    for (int round = 0; round < 3; ++round) {
        QVERIFY(QDir(world.directory()).removeRecursively());
        QTRY_COMPARE(model.rowCount(), 3);
        QVERIFY(QDir().mkpath(world.directory()));
        world.addProfile("a");
        QTRY_VERIFY(isEnabled(model, "a"));
        world.addProfile("b");
        QTRY_VERIFY(isEnabled(model, "b"));
        writeFile(world.path("b/profile.json"), "{");
        QTRY_VERIFY(!isEnabled(model, "b"));
    }
}

void tst_ProfileListWatch::followsADirectoryThatComesLater()
{
    const ProfileWorld world;
    // The folder above goes too, as if nothing had been installed yet.
    QVERIFY(QDir(world.base()).removeRecursively());
    const ProfileListModel model(true, false);
    QCOMPARE(model.rowCount(), 3);

    QVERIFY(QDir().mkpath(world.base()));
    QTRY_VERIFY(watcherOf(model).directories().contains(world.base()));
    QVERIFY(QDir().mkpath(world.directory()));
    QTRY_VERIFY(watcherOf(model).directories().contains(world.directory()));
    world.addProfile("a");
    QTRY_VERIFY(isEnabled(model, "a"));
}

void tst_ProfileListWatch::followsADirectoryThatIsExchanged()
{
    const ProfileWorld world;
    world.addProfile("a");
    world.addProfile("b");
    const ProfileListModel model(false, false);
    writeProfile(world.base() + text("/other/b"), "3");
    writeProfile(world.base() + text("/other/c"));

    QVERIFY(QDir().rename(world.directory(), world.base() + text("/away")));
    QVERIFY(QDir().rename(world.base() + text("/other"), world.directory()));

    QTRY_COMPARE(userRows(model), QStringList({text("b"), text("c")}));
    QTRY_VERIFY(!isEnabled(model, "b"));
    world.addProfile("d");
    QTRY_VERIFY(isListed(model, "d"));
    writeFile(world.path("b/profile.json"), profileJson(""));
    QTRY_VERIFY(isEnabled(model, "b"));
}

void tst_ProfileListWatch::forgetsTheWatchesOfWhatIsGone()
{
    const ProfileWorld world;
    ProfileListModel model(false, false);
    const int atFirst = watcherOf(model).directories().size();
    for (int i = 0; i < 20; ++i)
        world.addProfile("a" + QByteArray::number(i));
    model.update();
    QCOMPARE(watcherOf(model).directories().size(), atFirst + 20);
    QCOMPARE(watcherOf(model).files().size(), 20);

    for (int i = 0; i < 20; ++i)
        QVERIFY(QDir(world.path("a" + QByteArray::number(i))).removeRecursively());
    model.update();
    QCOMPARE(watcherOf(model).directories().size(), atFirst);
    QCOMPARE(watcherOf(model).files().size(), 0);
}

void tst_ProfileListWatch::watchesNoMoreThanItMay()
{
    const ProfileWorld world;
    constexpr int kProfiles = 300;
    const auto fileOf = [&](int i) {
        return world.path(QString::number(i)) + text("/profile.json");
    };
    for (int i = 0; i < kProfiles; ++i)
        writeFile(fileOf(i), profileJson(""));
    ProfileListModel model(false, false);
    QCOMPARE(watcherOf(model).files().size(), 250);
    QVERIFY(watcherOf(model).directories().size() <= 252);
    QVERIFY(watcherOf(model).directories().contains(world.directory()));

    // The others are seen when somebody looks, or when something else happens.
    for (int i = 0; i < kProfiles; ++i)
        writeFile(fileOf(i), "{");
    model.update();
    for (int row = 0; row < kProfiles; ++row)
        QVERIFY(!model.item(row)->isEnabled());

    // What goes makes room.
    for (int i = 0; i < 100; ++i) {
        QVERIFY(QFile::remove(fileOf(i)));
        QVERIFY(QDir().rmdir(world.path(QString::number(i))));
    }
    model.update();
    for (int i = 100; i < kProfiles; ++i)
        writeFile(fileOf(i), profileJson(""));
    model.update();
    QCOMPARE(watcherOf(model).files().size(), 200);
    QVERIFY(model.item(0)->isEnabled());
}

void tst_ProfileListWatch::bearsManyChangesInARow()
{
    const ProfileWorld world;
    ProfileListModel model(false, false);
    constexpr int kRounds = 40;
    for (int round = 0; round < kRounds; ++round) {
        for (int i = 0; i < 10; ++i) {
            const QString name = QString::number(round * 10 + i);
            writeFile(world.path(name) + text("/profile.json"), i % 2 ? profileJson("") : "{");
        }
        QCoreApplication::processEvents();
    }
    QTRY_COMPARE(model.rowCount(), kRounds * 10);
    for (int i = 0; i < kRounds * 10; ++i) {
        const QString name = QString::number(i);
        QTRY_COMPARE(itemOf(model, name)->isEnabled(), i % 2 == 1);
    }
}

QTEST_MAIN(tst_ProfileListWatch)
#include "tst_profile_list_watch.moc"
