#include "profile/profile_world.h"
#include "support/test_log.h"

#include <trovek-ui/profile_combo_box.h>

#include <QAbstractItemView>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

using namespace trovek;

class tst_ProfileComboBox : public QObject
{
    Q_OBJECT

private slots:
    void startsOnTheSecondRow_data();
    void startsOnTheSecondRow();
    void hasAProfileWithoutARow();
    void tellsTheProfileThatAUserChooses();
    void tellsTheCurrentProfileOfAnyIndex();
    void knowsThePointerOfItsSignal();
    void selectsByFolder();
    void selectsAFolderThatIsNew();
    void selectsNoFolderThatIsNotThere_data();
    void selectsNoFolderThatIsNotThere();
    void selectsByName();
    void goesToTheDefaultWhenTheSelectedOneGoes();
    void goesToAnotherRowWithoutADefault_data();
    void goesToAnotherRowWithoutADefault();
    void keepsTheSelectedOneWhenAnotherGoes();
    void isWithoutARowWhenTheLastOneGoes();
    void tellsWhenTheCurrentProfileCanBeUsedOrNot();
    void skipsDisabledRowsByKeyboard();
    void looksAgainWhenItIsOpened();
    void looksAgainWhenItsWindowBecomesActive();
    void staysNarrowWithLongNames();
    void isReachedByALabelsMnemonic();
    void bearsThatItsProfilesGoDuringItsSignal();
};

namespace {

/** The names that a box has told. */
class Told : public QObject
{
public:
    explicit Told(ProfileComboBox& box)
    {
        connect(&box, &ProfileComboBox::currentProfileChanged, this,
                [this](Profile* profile) { names.append(profile->name()); });
    }
    QStringList names;
};

} // namespace

void tst_ProfileComboBox::startsOnTheSecondRow_data()
{
    QTest::addColumn<bool>("withPresets");
    QTest::addColumn<bool>("withBuiltIns");
    QTest::addColumn<QByteArray>("userProfiles");
    QTest::addColumn<QString>("current");

    QTest::newRow("presets") << true << false << QByteArray() << text("Standard");
    QTest::newRow("all") << true << true << QByteArray("a") << text("Standard");
    QTest::newRow("built-ins") << false << true << QByteArray("a") << text("Orvane ABS Low");
    QTest::newRow("two of the user's") << false << false << QByteArray("aa") << text("a1");
    QTest::newRow("one of the user's") << false << false << QByteArray("a") << QString();
    QTest::newRow("nothing") << false << false << QByteArray() << QString();
}

void tst_ProfileComboBox::startsOnTheSecondRow()
{
    QFETCH(bool, withPresets);
    QFETCH(bool, withBuiltIns);
    QFETCH(QByteArray, userProfiles);
    QFETCH(QString, current);
    TestLog log;
    const ProfileWorld world;
    for (int i = 0; i < userProfiles.size(); ++i)
        world.addProfile("a" + QByteArray::number(i));
    // The file system has an order of its own.
    if (userProfiles.size() == 2)
        current = rowsOf(ProfileListModel(false, false)).at(1);

    const ProfileComboBox box(withPresets, withBuiltIns);

    QCOMPARE(box.currentText(), current);
    QCOMPARE(box.currentIndex(), current.isEmpty() ? -1 : 1);
    QCOMPARE(box.isCurrentEnabled(), !current.isEmpty());
    QCOMPARE(box.model(), &box.profileModel());
    QVERIFY(!box.isEditable());
}

void tst_ProfileComboBox::hasAProfileWithoutARow()
{
    const ProfileWorld world;
    const ProfileComboBox box(false, false);

    QVERIFY(box.currentProfile() != nullptr);
    QCOMPARE(int(box.currentProfile()->preset()), 3);
    QCOMPARE(box.currentProfile()->name(), text("Invalid Fake Profile"));
    QVERIFY(box.currentProfile() == box.currentProfile());
    QVERIFY(!box.isCurrentEnabled());
}

void tst_ProfileComboBox::tellsTheProfileThatAUserChooses()
{
    const ProfileWorld world;
    world.addProfile("Mine");
    ProfileComboBox box(true, false);
    const Told told(box);
    Profile* last = nullptr;
    connect(&box, &ProfileComboBox::currentProfileChanged, &box, [&](Profile* profile) {
        last = profile;
        // Already during the signal.
        QVERIFY(box.currentProfile() == profile);
    });
    box.show();

    QTest::keyClick(&box, Qt::Key_Down);
    QTest::keyClick(&box, Qt::Key_Down);
    QCOMPARE(told.names, QStringList({text("High"), text("Mine")}));
    QVERIFY(last == box.profileModel().profileAt(3));
    QTest::keyClick(&box, Qt::Key_Down);
    box.setCurrentIndex(3);
    QCOMPARE(told.names.size(), 2);

    box.setCurrentIndex(-1);
    QCOMPARE(told.names.last(), text("Invalid Fake Profile"));
}

void tst_ProfileComboBox::tellsTheCurrentProfileOfAnyIndex()
{
    const ProfileWorld world;
    ProfileComboBox box(true, false);
    const Told told(box);

    QVERIFY(QMetaObject::invokeMethod(&box, "indexChanged", Q_ARG(int, 0)));

    QCOMPARE(told.names, QStringList{text("Standard")});
}

void tst_ProfileComboBox::knowsThePointerOfItsSignal()
{
    const ProfileWorld world;
    ProfileComboBox box(true, false);
    const QMetaObject& meta = *box.metaObject();
    QVERIFY(meta.indexOfSignal("currentProfileChanged(Profile*)") >= 0);
    QVERIFY(meta.indexOfSlot("selectProfile(QDir)") >= 0);
    QVERIFY(meta.indexOfSlot("selectProfile(QString)") >= 0);
    QVERIFY(meta.indexOfSlot("indexChanged(int)") >= 0);

    const QSignalSpy spy(&box, &ProfileComboBox::currentProfileChanged);
    box.setCurrentIndex(0);
    QCOMPARE(spy.count(), 1);
    QVERIFY(spy.first().first().value<Profile*>() == box.currentProfile());
}

void tst_ProfileComboBox::selectsByFolder()
{
    const ProfileWorld world;
    // Named as a preset and as a built-in profile.
    world.addProfile("Low");
    world.addProfile("Orvane PLA Low");
    ProfileComboBox box(true, true);
    const Told told(box);

    box.selectProfile(QDir(world.path("Low")));
    QCOMPARE(told.names, QStringList{text("Low")});
    QVERIFY(box.currentIndex() >= 3 + 13);
    QCOMPARE(box.currentProfile()->path(), world.path("Low"));

    box.selectProfile(QDir(world.path("Orvane PLA Low/")));
    QCOMPARE(box.currentProfile()->path(), world.path("Orvane PLA Low"));

    box.selectProfile(QDir(world.path("Low/.")));
    QCOMPARE(box.currentProfile()->path(), world.path("Low"));

    // By its name, wherever it is.
    box.selectProfile(text("Standard"));
    box.selectProfile(QDir(text("/elsewhere/Low")));
    QCOMPARE(box.currentProfile()->path(), world.path("Low"));
}

void tst_ProfileComboBox::selectsAFolderThatIsNew()
{
    const ProfileWorld world;
    ProfileComboBox box(true, false);
    const Told told(box);
    // Nobody has told the box yet, and there is no profile.json.
    QVERIFY(QDir().mkpath(world.path("new")));

    box.selectProfile(QDir(world.path("new")));

    QCOMPARE(told.names, QStringList{text("new")});
    QCOMPARE(box.currentIndex(), 3);
    QVERIFY(!box.isCurrentEnabled());
}

void tst_ProfileComboBox::selectsNoFolderThatIsNotThere_data()
{
    QTest::addColumn<QString>("path");

    QTest::newRow("nothing of that name") << text("/elsewhere/none");
    QTest::newRow("a preset") << text("/elsewhere/Low");
    QTest::newRow("a built-in profile") << text(":/profiles/Orvane PLA Low");
    QTest::newRow("other letters") << text("/elsewhere/MINE");
    QTest::newRow("the root") << text("/");
}

void tst_ProfileComboBox::selectsNoFolderThatIsNotThere()
{
    QFETCH(QString, path);
    const ProfileWorld world;
    world.addProfile("Mine");
    ProfileComboBox box(true, true);
    const Told told(box);

    box.selectProfile(QDir(path));

    QCOMPARE(box.currentText(), text("Standard"));
    QCOMPARE(told.names, QStringList());
}

void tst_ProfileComboBox::selectsByName()
{
    const ProfileWorld world;
    ProfileComboBox box(true, true);
    const Told told(box);
    // Not told to the box yet.
    world.addProfile("Low");
    world.addProfile("Mine");

    box.selectProfile(text("Mine"));
    QCOMPARE(box.currentProfile()->path(), world.path("Mine"));
    box.selectProfile(text("Low"));
    QCOMPARE(box.currentIndex(), 0);
    box.selectProfile(text("Orvane PLA High"));
    QCOMPARE(box.currentText(), text("Orvane PLA High"));
    box.selectProfile(text("none"));
    box.selectProfile(QString());
    QCOMPARE(told.names, QStringList({text("Mine"), text("Low"), text("Orvane PLA High")}));
}

void tst_ProfileComboBox::goesToTheDefaultWhenTheSelectedOneGoes()
{
    const ProfileWorld world;
    for (const char* name : {"a", "b", "c"})
        world.addProfile(name);
    ProfileComboBox box(true, false);
    box.selectProfile(text("b"));
    const Told told(box);

    box.profileModel().removeProfile(QDir(world.path("b")));

    QCOMPARE(box.currentText(), text("Standard"));
    QCOMPARE(told.names, QStringList{text("Standard")});
    QCOMPARE(box.count(), 5);
}

void tst_ProfileComboBox::goesToAnotherRowWithoutADefault_data()
{
    QTest::addColumn<int>("removed");
    QTest::addColumn<int>("nextOfThree");

    QTest::newRow("first") << 0 << 1;
    QTest::newRow("second") << 1 << 0;
    QTest::newRow("third") << 2 << 1;
}

void tst_ProfileComboBox::goesToAnotherRowWithoutADefault()
{
    QFETCH(int, removed);
    QFETCH(int, nextOfThree);
    const ProfileWorld world;
    for (const char* name : {"a", "b", "c"})
        world.addProfile(name);
    ProfileComboBox box(false, false);
    box.setCurrentIndex(removed);
    const QString next = box.itemText(nextOfThree);
    const Told told(box);

    box.profileModel().removeProfile(QDir(box.currentProfile()->path()));

    QCOMPARE(box.currentText(), next);
    QCOMPARE(box.currentProfile()->name(), next);
    QVERIFY(!told.names.isEmpty());
    QVERIFY(told.names.count(next) == told.names.size());
}

void tst_ProfileComboBox::keepsTheSelectedOneWhenAnotherGoes()
{
    const ProfileWorld world;
    for (const char* name : {"a", "b", "c"})
        world.addProfile(name);
    ProfileComboBox box(true, false);
    box.setCurrentIndex(5);
    const QString selected = box.currentText();
    const Profile* const profile = box.currentProfile();

    box.profileModel().removeProfile(QDir(box.profileModel().profileAt(3)->path()));
    QCOMPARE(box.currentText(), selected);
    QVERIFY(box.currentProfile() == profile);
    QCOMPARE(box.currentIndex(), 4);

    box.selectProfile(text("High"));
    const Told told(box);
    box.profileModel().removeProfile(QDir(world.path(selected)));
    QCOMPARE(box.currentText(), text("High"));
    QCOMPARE(told.names, QStringList());
}

void tst_ProfileComboBox::isWithoutARowWhenTheLastOneGoes()
{
    const ProfileWorld world;
    world.addProfile("a");
    ProfileComboBox box(false, false);
    box.setCurrentIndex(0);
    const Told told(box);

    box.profileModel().removeProfile(QDir(world.path("a")));

    QCOMPARE(box.currentIndex(), -1);
    QCOMPARE(told.names, QStringList{text("Invalid Fake Profile")});
}

void tst_ProfileComboBox::tellsWhenTheCurrentProfileCanBeUsedOrNot()
{
    const ProfileWorld world;
    world.addProfile("a", R"("cubio_dual")");
    world.addProfile("b");
    ProfileComboBox box(true, false);
    const QSignalSpy enabled(&box, &ProfileComboBox::currentEnabledChanged);
    const auto last = [&] {
        return enabled.last().first().toBool();
    };

    box.selectProfile(text("a"));
    QCOMPARE(enabled.count(), 0);
    box.profileModel().setSelectedMachineType(Printer::Fabrino2);
    QCOMPARE(enabled.count(), 1);
    QVERIFY(!last() && !box.isCurrentEnabled());
    box.profileModel().setSelectedMachineType(Printer::Fabrino2X);
    QCOMPARE(enabled.count(), 1);
    box.selectProfile(text("Standard"));
    QCOMPARE(enabled.count(), 2);
    QVERIFY(last() && box.isCurrentEnabled());
    box.selectProfile(text("a"));
    QCOMPARE(enabled.count(), 3);
    box.profileModel().setSelectedMachineType(Printer::CubioDual);
    QCOMPARE(enabled.count(), 4);
    QVERIFY(last());

    writeFile(world.path("a/profile.json"), "{");
    QTRY_COMPARE(enabled.count(), 5);
    QVERIFY(!last());
    writeFile(world.path("a/profile.json"), profileJson(R"("cubio_dual")"));
    QTRY_COMPARE(enabled.count() % 2, 0);
    QVERIFY(last());
}

void tst_ProfileComboBox::skipsDisabledRowsByKeyboard()
{
    const ProfileWorld world;
    world.addProfile("a", "3");
    ProfileComboBox box(true, false);
    world.addProfile("b");
    box.profileModel().update();
    box.show();
    box.setCurrentIndex(2);

    QTest::keyClick(&box, Qt::Key_Down);

    QCOMPARE(box.currentText(), text("b"));
}

void tst_ProfileComboBox::looksAgainWhenItIsOpened()
{
    const ProfileWorld world;
    QDialog dialog;
    auto* const box = new ProfileComboBox(true, false, &dialog);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    world.addProfile("new");

    // In one go with the change, so that nothing else can have told of it.
    box->showPopup();

    QCOMPARE(box->count(), 4);
    QVERIFY(box->view()->isVisible());
    box->hidePopup();
}

void tst_ProfileComboBox::looksAgainWhenItsWindowBecomesActive()
{
    const ProfileWorld world;
    QDialog dialog;
    QDialog other;
    auto* const box = new ProfileComboBox(true, false, &dialog);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    // As on a drive that tells nothing.
    box->profileModel().findChild<QObject*>()->blockSignals(true);
    world.addProfile("new");
    QCOMPARE(box->count(), 3);

    dialog.activateWindow();

    QTRY_COMPARE(box->count(), 4);
}

void tst_ProfileComboBox::staysNarrowWithLongNames()
{
    const ProfileWorld world;
    ProfileComboBox shortNames(true, false);
    world.addProfile(QByteArray(200, 'm'));
    ProfileComboBox longNames(true, false);
    longNames.setCurrentIndex(3);
    longNames.show();

    QCOMPARE(longNames.sizeHint().width(), shortNames.sizeHint().width());
    longNames.showPopup();
    QVERIFY(longNames.view()->width() > longNames.width());
    QVERIFY(longNames.view()->width() < 2 * longNames.width());
    longNames.hidePopup();
}

void tst_ProfileComboBox::isReachedByALabelsMnemonic()
{
    const ProfileWorld world;
    QDialog dialog;
    auto* const form = new QFormLayout(&dialog);
    auto* const box = new ProfileComboBox(true, false, &dialog);
    form->addRow(text("&Profile:"), box);
    dialog.show();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    dialog.setFocus();

    QTest::keyClick(&dialog, Qt::Key_P, Qt::AltModifier);

    QVERIFY(box->hasFocus());
}

void tst_ProfileComboBox::bearsThatItsProfilesGoDuringItsSignal()
{
    const ProfileWorld world;
    for (const char* name : {"a", "b", "c"})
        world.addProfile(name);
    ProfileComboBox box(true, false);
    box.selectProfile(text("a"));
    QStringList names;
    connect(&box, &ProfileComboBox::currentProfileChanged, &box, [&](Profile* profile) {
        names.append(profile->name());
        for (const char* name : {"b", "c"}) {
            if (QFileInfo::exists(world.path(name)))
                box.profileModel().removeProfile(QDir(world.path(name)));
        }
    });

    box.profileModel().removeProfile(QDir(world.path("a")));

    QCOMPARE(box.count(), 3);
    QCOMPARE(box.currentText(), text("Standard"));
    QCOMPARE(names, QStringList{text("Standard")});
}

QTEST_MAIN(tst_ProfileComboBox)
#include "tst_profile_combo_box.moc"
