#include "profile/profile_world.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <trovek-ui/profile_list_model.h>

#include <QSignalSpy>
#include <QTest>

using namespace trovek;

class tst_ProfileListModel : public QObject
{
    Q_OBJECT

private slots:
    void listsWhatIsAskedFor_data();
    void listsWhatIsAskedFor();
    void rowsOwnTheirProfiles();
    void listsFoldersOnly();
    void keepsTheOrderOfItsRows();
    void saysNothingWhenNothingChanged();
    void keepsWhatCannotBeReadWithTheReason_data();
    void keepsWhatCannotBeReadWithTheReason();
    void showsMarkupInAReasonAsText();
    void showsTheBeginningOfALongReason_data();
    void showsTheBeginningOfALongReason();
    void keepsWhatDoesNotFitTheMachineWithTheReason_data();
    void keepsWhatDoesNotFitTheMachineWithTheReason();
    void enablesAgainWhatFitsTheNextMachine();
    void filterLeavesOutWhatDoesNotFit();
    void removesAProfile();
    void removesWhatWasNeverListed();
    void removesNoOtherNameOfAFolder_data();
    void removesNoOtherNameOfAFolder();
    void removesNothingElse_data();
    void removesNothingElse();
    void tellsWhatIsAlreadyGone();
    void keepsARowThatCannotBeRemoved();
    void tellsAtOnceWhatIsHalfRemoved();
    void bearsReceiversThatLookAgain();
    void bearsReceiversThatRemoveMore();
    void listsAThousandProfilesQuickly();
};

namespace {

QString reasonOf(const ProfileListModel& model, const char* name)
{
    const QStandardItem* const item = itemOf(model, text(name));
    return item == nullptr ? text("not listed") : item->toolTip();
}

bool isEnabled(const ProfileListModel& model, const char* name)
{
    const QStandardItem* const item = itemOf(model, text(name));
    return item != nullptr && item->isEnabled();
}

} // namespace

void tst_ProfileListModel::listsWhatIsAskedFor_data()
{
    QTest::addColumn<bool>("withPresets");
    QTest::addColumn<bool>("withBuiltIns");

    QTest::newRow("user's only") << false << false;
    QTest::newRow("presets") << true << false;
    QTest::newRow("built-ins") << false << true;
    QTest::newRow("all") << true << true;
}

void tst_ProfileListModel::listsWhatIsAskedFor()
{
    QFETCH(bool, withPresets);
    QFETCH(bool, withBuiltIns);
    TestLog log;
    const ProfileWorld world;
    world.addProfile("Mine");
    QStringList expected;
    if (withPresets)
        expected = QStringList{text("Low"), text("Standard"), text("High")};
    if (withBuiltIns) {
        expected += QStringList{text("Orvane ABS High"),
                                text("Orvane ABS Low"),
                                text("Orvane ABS Standard"),
                                text("Orvane ABS Standard with Dissolvable Filament Support"),
                                text("Orvane Dissolvable Filament High"),
                                text("Orvane Dissolvable Filament Low"),
                                text("Orvane Dissolvable Filament Standard"),
                                text("Orvane Flexible Filament High"),
                                text("Orvane Flexible Filament Low"),
                                text("Orvane Flexible Filament Standard"),
                                text("Orvane PLA High"),
                                text("Orvane PLA Low"),
                                text("Orvane PLA Standard")};
    }
    expected += text("Mine");

    const ProfileListModel model(withPresets, withBuiltIns);

    QCOMPARE(rowsOf(model), expected);
    for (int row = 0; row < model.rowCount(); ++row) {
        QVERIFY(model.item(row)->isEnabled());
        QVERIFY(!model.item(row)->isEditable());
        QCOMPARE(model.item(row)->toolTip(), QString());
        QCOMPARE(model.profileAt(row)->name(), expected.at(row));
        QCOMPARE(model.profileAt(row)->isOnDisk(), row == model.rowCount() - 1);
        const bool isPreset = withPresets && row < 3;
        QCOMPARE(int(model.profileAt(row)->preset()), isPreset ? row : 3);
    }
}

void tst_ProfileListModel::rowsOwnTheirProfiles()
{
    const ProfileWorld world;
    ProfileListModel model(true, false);

    QVERIFY(model.profileAt(0)->isSameAs(FakeProfile(SlicerConfiguration::Low)));
    QVERIFY(model.profileAt(-1) == nullptr);
    QVERIFY(model.profileAt(3) == nullptr);
    model.appendRow(new QStandardItem(text("somebody else's")));
    QVERIFY(model.profileAt(3) == nullptr);
    model.setSelectedMachineType(Printer::Fabrino2);
    model.update();
    QCOMPARE(model.rowCount(), 4);
}

void tst_ProfileListModel::listsFoldersOnly()
{
    const ProfileWorld world;
    writeProfile(world.base() + text("/elsewhere"));
    world.addProfile("folder");
    world.addProfile(".hidden");
    world.addProfile("50% #1? <b>\xc3\xbc");
    writeFile(world.path("file"), "file");
    QVERIFY(QFile::link(world.base() + text("/elsewhere"), world.path("link")));
    QVERIFY(QFile::link(text("nowhere"), world.path("broken link")));
    QVERIFY(QFile::link(text("file"), world.path("link to a file")));

    const ProfileListModel model(false, false);

    QCOMPARE(userRows(model),
             QStringList({text("50% #1? <b>\xc3\xbc"), text("folder"), text("link")}));
}

void tst_ProfileListModel::keepsTheOrderOfItsRows()
{
    const ProfileWorld world;
    world.addProfile("m");
    ProfileListModel model(true, false);
    const Profile* const first = model.profileAt(3);

    for (const char* name : {"z", "a", "k"}) {
        world.addProfile(name);
        model.update();
    }
    QCOMPARE(rowsOf(model).mid(3), QStringList({text("m"), text("z"), text("a"), text("k")}));
    QDir(world.path("z")).removeRecursively();
    model.update();
    world.addProfile("b");
    model.update();

    QCOMPARE(rowsOf(model), QStringList({text("Low"), text("Standard"), text("High"), text("m"),
                                         text("a"), text("k"), text("b")}));
    QVERIFY(model.profileAt(3) == first);
}

void tst_ProfileListModel::saysNothingWhenNothingChanged()
{
    TestLog log;
    const ProfileWorld world;
    world.addProfile("good");
    writeFile(world.path("bad/strandel.json"), "{}");
    ProfileListModel model(true, true);
    model.setSelectedMachineType(Printer::CubioDual);
    const QSignalSpy changed(&model, &ProfileListModel::dataChanged);
    const QSignalSpy inserted(&model, &ProfileListModel::rowsInserted);
    const QSignalSpy removed(&model, &ProfileListModel::rowsRemoved);
    const QSignalSpy reset(&model, &ProfileListModel::modelReset);

    model.update();
    model.setSelectedMachineType(Printer::CubioDual);
    model.setMachineTypeFilter(Printer::UnknownType);

    QCOMPARE(changed.count() + inserted.count() + removed.count() + reset.count(), 0);
    QStringList logged;
    for (const LogEntry& entry : log.sink().entries()) {
        if (entry.file == "src\\profile\\profile_list_item")
            logged.append(QString::fromStdString(entry.message));
    }
    QCOMPARE(logged, QStringList{text("bad: profile.json is missing")});
}

void tst_ProfileListModel::keepsWhatCannotBeReadWithTheReason_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("reason");

    QTest::newRow("no JSON") << QByteArray("{") << text("profile.json does not contain valid JSON");
    QTest::newRow("no types") << QByteArray(R"({"slicer": "strandel"})")
                              << text("profile.json is missing the machine_type field");
    QTest::newRow("one type as text")
        << QByteArray(R"({"slicer": "strandel", "machine_type": "fabrino_2"})")
        << text("profile.json machine_type field not an array");
    QTest::newRow("unknown type") << profileJson(R"("fabrino_9")")
                                  << text("machine_type contains invalid name fabrino_9");
    QTest::newRow("no slicer") << QByteArray(R"({"machine_type": []})")
                               << text("profile.json is missing the slicer field");
    QTest::newRow("no text as slicer") << QByteArray(R"({"slicer": 1, "machine_type": []})")
                                       << text("profile.json slicer field not a string");
    QTest::newRow("other slicer") << QByteArray(R"({"slicer": "x", "machine_type": []})")
                                  << text("Invalid slicer identifier\nx");
    QTest::newRow("array") << QByteArray("[]") << text("profile.json is missing the slicer field");
}

void tst_ProfileListModel::keepsWhatCannotBeReadWithTheReason()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, reason);
    TestLog log;
    const ProfileWorld world;
    world.addProfile("a");
    writeFile(world.path("a/profile.json"), json);

    ProfileListModel model(false, false);

    QCOMPARE(rowsOf(model), QStringList{text("a")});
    QVERIFY(!isEnabled(model, "a"));
    QCOMPARE(reasonOf(model, "a"), text("Invalid profile: ") + reason);
    QCOMPARE(model.item(0)->accessibleDescription(), text("Invalid profile: ") + reason);
    QVERIFY(log.contains("a: " + reason.toStdString(), 1));

    // For whatever machine.
    model.setSelectedMachineType(Printer::Fabrino2);
    QCOMPARE(reasonOf(model, "a"), text("Invalid profile: ") + reason);

    writeFile(world.path("a/profile.json"), profileJson(R"("fabrino_2")"));
    model.update();
    QVERIFY(isEnabled(model, "a"));
    QCOMPARE(reasonOf(model, "a"), QString());
    QCOMPARE(model.item(0)->accessibleDescription(), QString());

    QVERIFY(QFile::remove(world.path("a/profile.json")));
    model.update();
    QVERIFY(!isEnabled(model, "a"));
    QCOMPARE(reasonOf(model, "a"), text("Invalid profile: profile.json is missing"));
}

void tst_ProfileListModel::showsMarkupInAReasonAsText()
{
    const ProfileWorld world;
    world.addProfile("a", R"("<b>bold</b>")");

    const ProfileListModel model(false, false);

    QVERIFY2(reasonOf(model, "a").contains(text("&lt;b&gt;bold&lt;/b&gt;")),
             qPrintable(reasonOf(model, "a")));
    QCOMPARE(model.item(0)->accessibleDescription(),
             text("Invalid profile: machine_type contains invalid name <b>bold</b>"));
}

void tst_ProfileListModel::showsTheBeginningOfALongReason_data()
{
    QTest::addColumn<QByteArray>("types");
    QTest::addColumn<QString>("beginning");

    QTest::newRow("a long name") << "\"" + QByteArray(100000, 'm') + "\""
                                 << text(
                                        "Invalid profile: machine_type contains invalid name mmmm");
    QTest::newRow("many names") << QByteArray("\"cubio_dual\",").repeated(10000) + "\"cubio_dual\""
                                << text("This profile is not for the Orvane Fabrino 2.\n"
                                        "It is for: Orvane Cubio (Dual), Orvane Cubio (Dual), ");
}

void tst_ProfileListModel::showsTheBeginningOfALongReason()
{
    QFETCH(QByteArray, types);
    QFETCH(QString, beginning);
    const ProfileWorld world;
    world.addProfile("a", types);
    ProfileListModel model(false, false);

    model.setSelectedMachineType(Printer::Fabrino2);

    for (const QString& reason : {reasonOf(model, "a"), model.item(0)->accessibleDescription()}) {
        QVERIFY2(reason.startsWith(beginning), qPrintable(reason.left(300)));
        QVERIFY(reason.endsWith(QChar(0x2026)));
        QCOMPARE(reason.size(), 250);
    }
}

void tst_ProfileListModel::keepsWhatDoesNotFitTheMachineWithTheReason_data()
{
    QTest::addColumn<QByteArray>("types");
    QTest::addColumn<QString>("reason");

    QTest::newRow("for it") << QByteArray(R"("fabrino_2")") << QString();
    QTest::newRow("for it too") << QByteArray(R"("cubio_dual", "fabrino_2")") << QString();
    QTest::newRow("for another")
        << QByteArray(R"("cubio_single")")
        << text("This profile is not for the Orvane Fabrino 2.\nIt is for: Orvane Cubio");
    QTest::newRow("for others") << QByteArray(R"("cubio_dual", "fabrino_2x")")
                                << text("This profile is not for the Orvane Fabrino 2.\n"
                                        "It is for: Orvane Cubio (Dual), Orvane Fabrino 2X");
    QTest::newRow("for none") << QByteArray()
                              << text("This profile is not for the Orvane Fabrino 2.");
}

void tst_ProfileListModel::keepsWhatDoesNotFitTheMachineWithTheReason()
{
    QFETCH(QByteArray, types);
    QFETCH(QString, reason);
    const ProfileWorld world;
    world.addProfile("a", types);
    ProfileListModel model(true, true);
    QVERIFY(isEnabled(model, "a"));

    model.setSelectedMachineType(Printer::Fabrino2);

    QCOMPARE(model.rowCount(), 3 + 13 + 1);
    QCOMPARE(isEnabled(model, "a"), reason.isEmpty());
    QCOMPARE(reasonOf(model, "a"), reason);
    for (int row = 0; row < 3 + 13; ++row)
        QVERIFY(model.item(row)->isEnabled());

    // One that comes later is judged by the same machine.
    world.addProfile("b", types);
    model.update();
    QCOMPARE(isEnabled(model, "b"), reason.isEmpty());
    QCOMPARE(reasonOf(model, "b"), reason);
}

void tst_ProfileListModel::enablesAgainWhatFitsTheNextMachine()
{
    const ProfileWorld world;
    world.addProfile("a", R"("cubio_dual")");
    ProfileListModel model(false, false);
    model.setSelectedMachineType(Printer::Fabrino2);
    QVERIFY(!isEnabled(model, "a"));

    // The reason is there already when the row is told to be disabled, and gone when enabled.
    QStringList reasons;
    connect(&model, &ProfileListModel::dataChanged, this, [&](const QModelIndex& index) {
        if (model.itemFromIndex(index)->isEnabled())
            reasons.append(model.itemFromIndex(index)->toolTip());
    });
    model.setSelectedMachineType(Printer::CubioDual);
    QVERIFY(isEnabled(model, "a"));
    QCOMPARE(reasonOf(model, "a"), QString());
    QCOMPARE(reasons, QStringList{QString()});

    model.setSelectedMachineType(Printer::Fabrino2);
    QVERIFY(!isEnabled(model, "a"));
    model.setSelectedMachineType(Printer::UnknownType);
    QVERIFY(isEnabled(model, "a"));

    // The profile changes instead of the machine.
    model.setSelectedMachineType(Printer::Fabrino2);
    writeFile(world.path("a/profile.json"), profileJson(R"("cubio_dual", "fabrino_2")"));
    model.update();
    QVERIFY(isEnabled(model, "a"));
}

void tst_ProfileListModel::filterLeavesOutWhatDoesNotFit()
{
    const ProfileWorld world;
    world.addProfile("fits");
    world.addProfile("does not", R"("cubio_dual")");
    world.addProfile("broken", "3");
    ProfileListModel model(true, false);
    QCOMPARE(userRows(model, 3), QStringList({text("broken"), text("does not"), text("fits")}));

    model.setMachineTypeFilter(Printer::Fabrino2);
    QCOMPARE(userRows(model, 3), QStringList({text("broken"), text("fits")}));

    world.addProfile("later", R"("cubio_dual")");
    world.addProfile("later and fits", R"("fabrino_2", "cubio_dual")");
    model.update();
    QCOMPARE(userRows(model, 3),
             QStringList({text("broken"), text("fits"), text("later and fits")}));

    writeFile(world.path("fits/profile.json"), profileJson(R"("cubio_dual")"));
    model.update();
    QCOMPARE(userRows(model, 3), QStringList({text("broken"), text("later and fits")}));

    model.setMachineTypeFilter(Printer::UnknownType);
    QCOMPARE(userRows(model, 3), QStringList({text("broken"), text("does not"), text("fits"),
                                              text("later"), text("later and fits")}));
}

void tst_ProfileListModel::removesAProfile()
{
    TestLog log;
    const ProfileWorld world;
    world.addProfile("a");
    world.addProfile("b");
    ProfileListModel model(true, false);

    model.removeProfile(QDir(world.path("a")));

    QVERIFY(!QFileInfo::exists(world.path("a")));
    QVERIFY(QFileInfo::exists(world.path("b/profile.json")));
    QCOMPARE(rowsOf(model).mid(3), QStringList{text("b")});
}

void tst_ProfileListModel::removesWhatWasNeverListed()
{
    const ProfileWorld world;
    ProfileListModel model(false, false);
    world.addProfile("a");

    model.removeProfile(QDir(world.directory() + text("/a/../a/")));

    QVERIFY(!QFileInfo::exists(world.path("a")));
    QCOMPARE(model.rowCount(), 0);
}

void tst_ProfileListModel::removesNoOtherNameOfAFolder_data()
{
    QTest::addColumn<QString>("removed");

    for (const char* name : {"folder", "link", "other link"})
        QTest::newRow(name) << text(name);
}

void tst_ProfileListModel::removesNoOtherNameOfAFolder()
{
    QFETCH(QString, removed);
    const ProfileWorld world;
    world.addProfile("folder");
    QVERIFY(QFile::link(world.path("folder"), world.path("link")));
    QVERIFY(QFile::link(world.path("folder"), world.path("other link")));
    ProfileListModel model(false, false);

    model.removeProfile(QDir(world.path(removed)));

    for (const char* name : {"folder", "link", "other link"}) {
        const QFileInfo entry(world.path(name));
        QCOMPARE(entry.isSymLink() || entry.exists(), text(name) != removed);
    }
    QCOMPARE(QFileInfo::exists(world.path("folder/strandel.json")), removed != text("folder"));
}

void tst_ProfileListModel::removesNothingElse_data()
{
    QTest::addColumn<QString>("path");

    QTest::newRow("the directory itself") << text(".");
    QTest::newRow("the folder above") << text("..");
    QTest::newRow("a folder beside") << text("../elsewhere");
    QTest::newRow("a folder inside") << text("a/notes");
    QTest::newRow("a file") << text("file");
    QTest::newRow("a hidden folder") << text(".hidden");
}

void tst_ProfileListModel::removesNothingElse()
{
    QFETCH(QString, path);
    const ProfileWorld world;
    world.addProfile("a");
    world.addProfile(".hidden");
    writeFile(world.path("a/notes/notes.txt"), "notes");
    writeFile(world.path("file"), "file");
    writeProfile(world.base() + text("/elsewhere"));
    ProfileListModel model(true, true);
    const QStringList before = tree(world.base());

    QCOMPARE(thrownText([&] { model.removeProfile(QDir(world.path(path))); }),
             std::string("Not in the profile directory"));
    QCOMPARE(tree(world.base()), before);
    QCOMPARE(model.rowCount(), 3 + 13 + 1);
}

void tst_ProfileListModel::tellsWhatIsAlreadyGone()
{
    const ProfileWorld world;
    world.addProfile("a");
    ProfileListModel model(true, false);
    QVERIFY(QDir(world.path("a")).removeRecursively());

    QCOMPARE(thrownText([&] { model.removeProfile(QDir(world.path("a"))); }),
             std::string("Profile already deleted"));
    QCOMPARE(model.rowCount(), 3);
    QCOMPARE(thrownText([&] { model.removeProfile(QDir(world.path("never"))); }),
             std::string("Profile already deleted"));
}

void tst_ProfileListModel::keepsARowThatCannotBeRemoved()
{
#ifdef Q_OS_UNIX
    const ProfileWorld world;
    world.addProfile("a");
    ProfileListModel model(true, false);
    QCOMPARE(::chmod(qPrintable(world.base()), 0755), 0);

    {
        const OrdinaryUser user;
        const std::string error = thrownText([&] { model.removeProfile(QDir(world.path("a"))); });
        QVERIFY2(error.find("Unable to delete ") == 0, error.c_str());
    }
    QCOMPARE(rowsOf(model).mid(3), QStringList{text("a")});
    QVERIFY(isEnabled(model, "a"));
#else
    QSKIP("Files are protected in another way here");
#endif
}

void tst_ProfileListModel::tellsAtOnceWhatIsHalfRemoved()
{
#ifdef Q_OS_UNIX
    const ProfileWorld world;
    world.addProfile("a");
    writeFile(world.path("a/zzz/protected"), "x");
    ProfileListModel model(false, false);
    QCOMPARE(::chmod(qPrintable(world.base()), 0755), 0);
    QCOMPARE(::chmod(qPrintable(world.path("a")), 0777), 0);

    {
        const OrdinaryUser user;
        QCOMPARE(thrownText([&] { model.removeProfile(QDir(world.path("a"))); }),
                 "Unable to delete file " + world.path("a/zzz/protected").toStdString());
    }
    QVERIFY(!QFileInfo::exists(world.path("a/profile.json")));
    QVERIFY(!isEnabled(model, "a"));
    QCOMPARE(reasonOf(model, "a"), text("Invalid profile: profile.json is missing"));
#else
    QSKIP("Files are protected in another way here");
#endif
}

void tst_ProfileListModel::bearsReceiversThatLookAgain()
{
    const ProfileWorld world;
    world.addProfile("a");
    world.addProfile("b");
    ProfileListModel model(true, false);
    int calls = 0;
    const auto lookAgain = [&] {
        if (++calls == 1)
            world.addProfile("c");
        model.update();
        model.setSelectedMachineType(calls % 2 ? Printer::CubioDual : Printer::Fabrino2);
    };
    connect(&model, &ProfileListModel::rowsAboutToBeRemoved, this, lookAgain);
    connect(&model, &ProfileListModel::rowsRemoved, this, lookAgain);
    connect(&model, &ProfileListModel::rowsInserted, this, lookAgain);
    QVERIFY(QDir(world.path("a")).removeRecursively());
    QVERIFY(QDir(world.path("b")).removeRecursively());

    model.update();

    QCOMPARE(rowsOf(model).mid(3), QStringList{text("c")});
    QVERIFY(calls >= 5);
}

void tst_ProfileListModel::bearsReceiversThatRemoveMore()
{
    const ProfileWorld world;
    for (const char* name : {"a", "b", "c", "d"})
        world.addProfile(name);
    ProfileListModel model(false, false);
    bool isFirst = true;
    connect(&model, &ProfileListModel::rowsAboutToBeRemoved, this, [&] {
        if (!isFirst)
            return;
        isFirst = false;
        for (const char* name : {"b", "c"})
            model.removeProfile(QDir(world.path(name)));
    });

    model.removeProfile(QDir(world.path("a")));

    QCOMPARE(rowsOf(model), QStringList{text("d")});
    QCOMPARE(QDir(world.directory()).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
             QStringList{text("d")});
}

void tst_ProfileListModel::listsAThousandProfilesQuickly()
{
    const ProfileWorld world;
    constexpr int kProfiles = 1000;
    for (int i = 0; i < kProfiles; ++i)
        writeFile(world.path(QString::number(i)) + text("/profile.json"),
                  profileJson("\"fabrino_2\""));
    QElapsedTimer timer;
    timer.start();

    ProfileListModel model(true, true);
    QCOMPARE(model.rowCount(), 3 + 13 + kProfiles);
    const qint64 opening = timer.restart();
    for (int i = 0; i < 10; ++i)
        model.update();
    const qint64 looking = timer.restart() / 10;
    model.setSelectedMachineType(Printer::CubioDual);
    model.setSelectedMachineType(Printer::Fabrino2);
    const qint64 judging = timer.restart();
    for (int i = 0; i < kProfiles; ++i)
        QVERIFY(QFile::remove(world.path(QString::number(i)) + text("/profile.json")) &&
                QDir().rmdir(world.path(QString::number(i))));
    timer.restart();
    model.update();
    const qint64 removing = timer.restart();
    QCOMPARE(model.rowCount(), 3 + 13);

    const QString times = text("opening %1, looking again %2, judging %3, removing %4 ms")
                              .arg(opening)
                              .arg(looking)
                              .arg(judging)
                              .arg(removing);
    qInfo().noquote() << times;
    // Many times what it takes, and little beside anything quadratic that reads files.
    QVERIFY2(opening < 5000 && looking < 1000 && judging < 1000 && removing < 2000,
             qPrintable(times));
}

QTEST_MAIN(tst_ProfileListModel)
#include "tst_profile_list_model.moc"
