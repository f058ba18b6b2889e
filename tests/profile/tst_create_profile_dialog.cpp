#include "profile/profile_world.h"
#include "support/modal_driver.h"
#include "support/test_log.h"

#include <trovek-ui/create_profile_dialog.h>
#include <trovek-ui/profile_combo_box.h>

#include <QFormLayout>
#include <QHBoxLayout>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

using namespace trovek;

class tst_CreateProfileDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void hasItsRowsInOrder();
    void offersBuiltInsAndUserProfiles();
    void startsOnTheFirstTemplateThatCanBeRead();
    void showsTheTemplatesSlicer();
    void keepsTheSlicerOfATemplateThatCannotBeRead();
    void createsOnlyWithAName();
    void createsFromABuiltIn();
    void createsFromAUserProfileForItsMachines();
    void tellsTheFolderAfterItHasAccepted();
    void selectsTheNewProfileInAnotherBox();
    void refusesSlashes_data();
    void refusesSlashes();
    void refusesNamesThatAreThere_data();
    void refusesNamesThatAreThere();
    void refusesNamesThatLeadElsewhere_data();
    void refusesNamesThatLeadElsewhere();
    void refusesNamesThatNobodyWouldSee_data();
    void refusesNamesThatNobodyWouldSee();
    void takesOddNames_data();
    void takesOddNames();
    void makesTheProfileDirectoryWhenItIsGone();
    void tellsWhenTheProfileDirectoryCannotBeMade();
    void tellsWhenTheNameIsTooLong();
    void tellsWhenItIsNotAllowed();
    void tellsWhenTheDiskIsFull();
    void tellsWhenTheTemplateIsGone();
    void keepsTheErrorWhenTheListChanges();
    void forgetsTheErrorWithTheNextEdit();
    void bearsReceiversThatThrow();
    void mayBeDestroyedUnderItsMessage();
    void mayBeDestroyedByItsReceiver();
    void mayBeDestroyedAsItFinishes();
    void closesByKeyAndButton();
    void worksByKeyboard();
};

namespace {

struct Dialog : CreateProfileDialog
{
    Dialog()
    {
        show();
        [this] {
            QVERIFY(QTest::qWaitForWindowActive(this));
        }();
    }

    ProfileComboBox& box() const { return *findChild<ProfileComboBox*>(); }
    QLabel& slicer() const { return *findChild<QLabel*>(text("slicer")); }
    QLabel& error() const { return *findChild<QLabel*>(text("error")); }
    QLineEdit& name() const { return *findChild<QLineEdit*>(text("name")); }
    QPushButton& create() const { return *findChild<QPushButton*>(text("create")); }
    QPushButton& close_() const { return *findChild<QPushButton*>(text("close")); }
    /** Without the places to wrap at. */
    QString errorText() const { return error().text().remove(QChar(0x200b)); }

    void press(const QString& newName) const
    {
        name().setText(newName);
        QTest::mouseClick(&create(), Qt::LeftButton);
    }
};

QStringList foldersIn(const ProfileWorld& world)
{
    return QDir(world.directory())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

const LogEntry& lastError(const TestLog& log)
{
    static LogEntry found;
    found = LogEntry();
    found.severity = -1;
    for (const LogEntry& entry : log.sink().entries()) {
        if (entry.severity == 0)
            found = entry;
    }
    return found;
}

QString alreadyExists(const QString& name)
{
    return text("A profile named %1 already exists").arg(name);
}

const QString kChooseAnother = QStringLiteral("Choose a different name for the profile.");

} // namespace

void tst_CreateProfileDialog::initTestCase()
{
    Q_CLEANUP_RESOURCE(broken_built_in);
}

void tst_CreateProfileDialog::hasItsRowsInOrder()
{
    TestLog log;
    const ProfileWorld world;
    const Dialog dialog;

    QCOMPARE(dialog.windowTitle(), text("Create Profile"));
    auto* const form = dialog.findChild<QFormLayout*>();
    const QList<QWidget*> fields = {&dialog.box(), &dialog.slicer(), &dialog.name()};
    const QStringList labels = {text("&Template:"), text("&Slicer:"), text("&Name:")};
    for (int row = 0; row < 3; ++row) {
        QCOMPARE(form->itemAt(row, QFormLayout::FieldRole)->widget(), fields.at(row));
        auto* const label =
            qobject_cast<QLabel*>(form->itemAt(row, QFormLayout::LabelRole)->widget());
        QCOMPARE(label->text(), labels.at(row));
        QCOMPARE(label->buddy(), fields.at(row));
    }
    QCOMPARE(form->itemAt(3, QFormLayout::FieldRole)->widget(), &dialog.error());
    QVERIFY(dialog.error().isHidden());
    QCOMPARE(dialog.name().text(), QString());
    QVERIFY(dialog.name().hasFocus());

    QHBoxLayout* buttons = nullptr;
    for (QHBoxLayout* row : dialog.findChildren<QHBoxLayout*>()) {
        if (row->indexOf(&dialog.create()) >= 0)
            buttons = row;
    }
    QVERIFY(buttons != nullptr);
    QCOMPARE(buttons->contentsMargins(), QMargins());
    QCOMPARE(dialog.close_().text(), text("&Close"));
    QCOMPARE(dialog.create().text(), text("C&reate"));
    QVERIFY(buttons->indexOf(&dialog.close_()) < buttons->indexOf(&dialog.create()));
    QVERIFY(dialog.create().isDefault());
    QVERIFY(dialog.create().autoDefault());
    QVERIFY(!dialog.close_().autoDefault());
    QVERIFY(dialog.close_().y() > dialog.name().y());
}

void tst_CreateProfileDialog::offersBuiltInsAndUserProfiles()
{
    TestLog log;
    const ProfileWorld world;
    world.addProfile("Mine");
    const Dialog dialog;

    QCOMPARE(dialog.box().count(), 13 + 1);
    QCOMPARE(dialog.box().itemText(0), text("Orvane ABS High"));
    QCOMPARE(dialog.box().itemText(13), text("Mine"));
}

void tst_CreateProfileDialog::startsOnTheFirstTemplateThatCanBeRead()
{
    TestLog log;
    const ProfileWorld world;
    {
        const Dialog dialog;
        QCOMPARE(dialog.box().currentIndex(), 0);
        QCOMPARE(dialog.box().currentText(), text("Orvane ABS High"));
    }
    Q_INIT_RESOURCE(broken_built_in);
    {
        const Dialog dialog;
        QCOMPARE(dialog.box().itemText(0), text("A broken one"));
        QCOMPARE(dialog.box().currentText(), text("Orvane ABS High"));
        QCOMPARE(dialog.slicer().text(), text("Orvane Slicer"));
    }
    Q_CLEANUP_RESOURCE(broken_built_in);
}

void tst_CreateProfileDialog::showsTheTemplatesSlicer()
{
    TestLog log;
    const ProfileWorld world;
    world.addProfile("Mine");
    const Dialog dialog;
    dialog.slicer().clear();

    dialog.box().selectProfile(text("Mine"));

    QCOMPARE(dialog.slicer().text(), text("Orvane Slicer"));
}

void tst_CreateProfileDialog::keepsTheSlicerOfATemplateThatCannotBeRead()
{
    TestLog log;
    const ProfileWorld world;
    writeFile(world.path("Mine/profile.json"), R"({"slicer": "other"})");
    const Dialog dialog;
    dialog.slicer().setText(text("as it was"));

    dialog.box().selectProfile(text("Mine"));

    QCOMPARE(dialog.slicer().text(), text("as it was"));
    const LogEntry entry = log.sink().entries().back();
    QCOMPARE(entry.message, std::string("Invalid slicer identifier\nother"));
    QCOMPARE(entry.severity, 1);
    QCOMPARE(entry.file, std::string("src\\profile\\create_profile_dialog"));
}

void tst_CreateProfileDialog::createsOnlyWithAName()
{
    TestLog log;
    const ProfileWorld world;
    const Dialog dialog;

    QVERIFY(!dialog.create().isEnabled());
    QTest::keyClicks(&dialog.name(), text("x"));
    QVERIFY(dialog.create().isEnabled());
    QTest::keyClick(&dialog.name(), Qt::Key_Backspace);
    QVERIFY(!dialog.create().isEnabled());
    QTest::keyClicks(&dialog.name(), text(" "));
    QVERIFY(dialog.create().isEnabled());
    dialog.name().clear();
    dialog.box().setCurrentIndex(5);
    QVERIFY(!dialog.create().isEnabled());
    QTest::keyClick(&dialog.name(), Qt::Key_Return);
    QVERIFY(dialog.isVisible());
    QCOMPARE(foldersIn(world), QStringList());
}

void tst_CreateProfileDialog::createsFromABuiltIn()
{
    TestLog log;
    const ProfileWorld world;
    const Dialog dialog;
    dialog.box().selectProfile(text("Orvane PLA Low"));

    dialog.press(text("My own"));

    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    const DirectoryProfile profile(QDir(world.path("My own")));
    QCOMPARE(identifiers(profile.machineTypes()), identifiers(allMachineTypes()));
    for (const char* file : {"/strandel.json", "/start.gcode", "/end.gcode"})
        QCOMPARE(readFile(world.path("My own") + text(file)),
                 readFile(text(":/profiles/Orvane PLA Low") + text(file)));
}

void tst_CreateProfileDialog::createsFromAUserProfileForItsMachines()
{
    TestLog log;
    const ProfileWorld world;
    world.addProfile("Mine", R"("cubio_dual", "fabrino_single")");
    writeFile(world.path("Mine/start.gcode"), "my start");
    const Dialog dialog;
    dialog.box().selectProfile(text("Mine"));

    dialog.press(text("Mine too"));

    const DirectoryProfile profile(QDir(world.path("Mine too")));
    QCOMPARE(identifiers(profile.machineTypes()),
             QStringList({text("cubio_dual"), text("fabrino_single")}));
    QCOMPARE(readFile(world.path("Mine too/start.gcode")), QByteArray("my start"));
}

void tst_CreateProfileDialog::tellsTheFolderAfterItHasAccepted()
{
    TestLog log;
    const ProfileWorld world;
    const Dialog dialog;
    QStringList told;
    connect(&dialog, &QDialog::accepted, this, [&] { told.append(text("accepted")); });
    connect(&dialog, &CreateProfileDialog::profileCreated, this, [&](const QDir& folder) {
        told.append(folder.absolutePath());
        QVERIFY(!dialog.isVisible());
        QVERIFY(QFileInfo::exists(folder.filePath(text("profile.json"))));
    });

    dialog.press(text("new"));

    QCOMPARE(told, QStringList({text("accepted"), world.path("new")}));
}

void tst_CreateProfileDialog::selectsTheNewProfileInAnotherBox()
{
    TestLog log;
    const ProfileWorld world;
    ProfileComboBox box(true, false);
    const Dialog dialog;
    QVERIFY(connect(&dialog, SIGNAL(profileCreated(QDir)), &box, SLOT(selectProfile(QDir))));

    dialog.press(text("new"));

    QCOMPARE(box.currentText(), text("new"));
    QVERIFY(box.isCurrentEnabled());
}

void tst_CreateProfileDialog::refusesSlashes_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("slash") << text("a/b");
    QTest::newRow("backslash") << text("a\\b");
    QTest::newRow("at the start") << text("/a");
    QTest::newRow("at the end") << text("a\\");
    QTest::newRow("slash only") << text("/");
    QTest::newRow("folder above") << text("../a");
    QTest::newRow("existing, too") << text("Mine/");
}

void tst_CreateProfileDialog::refusesSlashes()
{
    QFETCH(QString, name);
    TestLog log;
    const ProfileWorld world;
    world.addProfile("Mine");
    const QStringList before = tree(world.base());
    const Dialog dialog;
    const QSignalSpy finished(&dialog, &QDialog::finished);
    // Twice in a row.
    for (int round = 0; round < 2; ++round) {
        ModalDriver driver;
        driver.expectMessage(
            {text("Invalid profile name"), text("Profile name cannot contain slashes.")});
        dialog.press(name);
    }

    QVERIFY(dialog.isVisible());
    QCOMPARE(finished.count(), 0);
    QCOMPARE(tree(world.base()), before);
    // Ready to be typed over.
    QCOMPARE(dialog.name().selectedText(), name);
    QCOMPARE(dialog.focusWidget(), &dialog.name());
}

void tst_CreateProfileDialog::refusesNamesThatAreThere_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("profile") << text("Mine");
    QTest::newRow("folder without a profile") << text("plain folder");
    QTest::newRow("file") << text("file");
    QTest::newRow("link to nowhere") << text("link");
    QTest::newRow("hidden folder") << text(".hidden");
}

void tst_CreateProfileDialog::refusesNamesThatAreThere()
{
    QFETCH(QString, name);
    TestLog log;
    const ProfileWorld world;
    world.addProfile("Mine");
    writeFile(world.path("plain folder/notes.txt"), "notes");
    writeFile(world.path(".hidden/notes.txt"), "notes");
    writeFile(world.path("file"), "file");
    QVERIFY(QFile::link(text("nowhere"), world.path("link")));
    const QStringList before = tree(world.base());
    const Dialog dialog;
    ModalDriver driver;
    driver.expectMessage({alreadyExists(name), kChooseAnother});

    dialog.press(name);

    QVERIFY(dialog.isVisible());
    QCOMPARE(tree(world.base()), before);
    QCOMPARE(dialog.name().selectedText(), name);
}

void tst_CreateProfileDialog::refusesNamesThatLeadElsewhere_data()
{
    QTest::addColumn<QString>("name");

    for (const char* name : {".", "..", ":x", ":", "C:", "c:new"})
        QTest::newRow(name) << text(name);
}

void tst_CreateProfileDialog::refusesNamesThatLeadElsewhere()
{
    QFETCH(QString, name);
    TestLog log;
    const ProfileWorld world;
    const QStringList before = tree(world.base());
    const Dialog dialog;
    ModalDriver driver;
    driver.expectMessage({alreadyExists(name), kChooseAnother});

    dialog.press(name);

    QVERIFY(dialog.isVisible());
    QCOMPARE(tree(world.base()), before);
}

void tst_CreateProfileDialog::refusesNamesThatNobodyWouldSee_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("error");

    const QString blank = text("A name of nothing but blanks cannot be read.");
    QTest::newRow("blank") << text(" ") << blank;
    QTest::newRow("no-break space") << text("\xc2\xa0") << blank;
    QTest::newRow("hidden") << text(".new")
                            << text("A folder whose name begins with a dot is hidden.");
}

void tst_CreateProfileDialog::refusesNamesThatNobodyWouldSee()
{
    QFETCH(QString, name);
    QFETCH(QString, error);
    TestLog log;
    const ProfileWorld world;
    const Dialog dialog;

    dialog.press(name);

    QVERIFY(dialog.isVisible());
    QVERIFY(dialog.error().isVisible());
    QCOMPARE(dialog.errorText(), error);
    QCOMPARE(foldersIn(world), QStringList());
}

void tst_CreateProfileDialog::takesOddNames_data()
{
    QTest::addColumn<QString>("name");

    for (const char* name :
         {"50% #1?", "\xc3\xbc\xf0\x9f\x96\xa8", "%1 %2", "<b>bold<b>", "x...y...", "-rf", "con",
          "$HOME", "a'b\"c", "1", " x ", "Low", "Orvane PLA Low"})
        QTest::newRow(name) << text(name);
}

void tst_CreateProfileDialog::takesOddNames()
{
    QFETCH(QString, name);
#ifdef Q_OS_WIN
    QSKIP("Another system allows other names");
#endif
    TestLog log;
    const ProfileWorld world;
    const Dialog dialog;

    dialog.press(name);

    QVERIFY(!dialog.isVisible());
    QCOMPARE(foldersIn(world), QStringList{name});
    QCOMPARE(rowsOf(ProfileListModel(false, false)), QStringList{name});
}

void tst_CreateProfileDialog::makesTheProfileDirectoryWhenItIsGone()
{
    TestLog log;
    const ProfileWorld world;
    const Dialog dialog;
    QVERIFY(QDir(world.directory()).removeRecursively());

    dialog.press(text("new"));

    QVERIFY(!dialog.isVisible());
    QVERIFY(QFileInfo::exists(world.path("new/profile.json")));
}

void tst_CreateProfileDialog::tellsWhenTheProfileDirectoryCannotBeMade()
{
    TestLog log;
    const ProfileWorld world;
    QVERIFY(QDir(world.directory()).removeRecursively());
    writeFile(world.directory(), "a file in its place");
    log.expectError("Failed to create QResource copy directory");
    const Dialog dialog;

    dialog.press(text("new"));

    QVERIFY(dialog.isVisible());
    QCOMPARE(dialog.errorText(),
             text("The profile could not be created: There is no folder %1, and it cannot be made.")
                 .arg(QDir::toNativeSeparators(world.directory())));
    QCOMPARE(readFile(world.directory()), QByteArray("a file in its place"));
}

void tst_CreateProfileDialog::tellsWhenTheNameIsTooLong()
{
    TestLog log;
    const ProfileWorld world;
    world.addProfile("Mine");
    const Dialog dialog;
    const QString tooLong(256, QLatin1Char('x'));

    log.expectError("Failed to create QResource copy directory");
    dialog.press(tooLong);
    QCOMPARE(dialog.errorText(), text("The profile could not be created: The name is too long."));
    QCOMPARE(lastError(log).file, std::string("src\\profile\\create_profile_dialog"));
    QVERIFY(lastError(log).function.find("CreateProfileDialog::createProfile()") !=
            std::string::npos);
    QVERIFY(dialog.isVisible());
    QVERIFY(dialog.create().isEnabled());

    log.expectError("Copy failed: couldn't create directory ");
    dialog.box().selectProfile(text("Mine"));
    dialog.press(QString(128, QChar(0xfc)));
    QCOMPARE(dialog.errorText(), text("The profile could not be created: The name is too long."));
    QCOMPARE(foldersIn(world), QStringList{text("Mine")});

    dialog.press(QString(255, QLatin1Char('x')));
    QVERIFY(!dialog.isVisible());
}

void tst_CreateProfileDialog::tellsWhenItIsNotAllowed()
{
#ifdef Q_OS_UNIX
    TestLog log;
    const ProfileWorld world;
    QCOMPARE(::chmod(qPrintable(world.base()), 0755), 0);
    const Dialog dialog;
    log.expectError("Failed to create QResource copy directory");

    {
        const OrdinaryUser user;
        dialog.press(text("new"));
    }
    QVERIFY(dialog.isVisible());
    QCOMPARE(dialog.errorText(),
             text("The profile could not be created: You are not allowed to write to %1.")
                 .arg(world.directory()));
    QCOMPARE(foldersIn(world), QStringList());
#else
    QSKIP("Folders are protected in another way here");
#endif
}

void tst_CreateProfileDialog::tellsWhenTheDiskIsFull()
{
#ifdef Q_OS_UNIX
    TestLog log;
    const ProfileWorld world;
    const Dialog dialog;

    // Twice in a row, and then there is room again.
    for (int round = 0; round < 2; ++round) {
        log.expectError("Failed to write QResource copy");
        const FileSizeLimit limit(100);
        dialog.press(text("new"));
        QVERIFY(dialog.isVisible());
        QVERIFY(dialog.error().isVisible());
        QCOMPARE(dialog.errorText(),
                 text("The profile could not be created: Failed to write QResource copy"));
        QCOMPARE(foldersIn(world), QStringList());
    }
    dialog.press(text("new"));
    QVERIFY(!dialog.isVisible());
    QCOMPARE(foldersIn(world), QStringList{text("new")});
#else
    QSKIP("No limit of file sizes here");
#endif
}

void tst_CreateProfileDialog::tellsWhenTheTemplateIsGone()
{
    TestLog log;
    const ProfileWorld world;
    world.addProfile("Mine");
    const Dialog dialog;
    dialog.box().selectProfile(text("Mine"));
    QVERIFY(QFile::remove(world.path("Mine/profile.json")));
    log.expectError("profile.json is missing");

    dialog.press(text("new"));

    QVERIFY(dialog.isVisible());
    QCOMPARE(dialog.errorText(), text("The profile could not be created: profile.json is missing"));
    QCOMPARE(foldersIn(world), QStringList{text("Mine")});
}

void tst_CreateProfileDialog::keepsTheErrorWhenTheListChanges()
{
    TestLog log;
    const ProfileWorld world;
    world.addProfile("Mine");
    const Dialog dialog;
    dialog.box().selectProfile(text("Mine"));
    QVERIFY(QDir(world.path("Mine")).removeRecursively());
    log.expectError("profile.json is missing");

    dialog.press(text("new"));

    // The list hears of it later, and selects another template.
    QTRY_COMPARE(dialog.box().currentText(), text("Orvane ABS Low"));
    QVERIFY(dialog.error().isVisible());
    QCOMPARE(dialog.errorText(), text("The profile could not be created: profile.json is missing"));
}

void tst_CreateProfileDialog::forgetsTheErrorWithTheNextEdit()
{
    TestLog log;
    const ProfileWorld world;
    const Dialog dialog;
    const QSize before = dialog.size();

    dialog.press(text(" "));
    QVERIFY(dialog.error().isVisible());
    QCOMPARE(dialog.name().accessibleDescription(), dialog.errorText());
    // All of it can be read.
    QTRY_VERIFY(dialog.error().height() >= dialog.error().heightForWidth(dialog.error().width()));
    QVERIFY(dialog.error().y() > dialog.name().y());
    QCOMPARE(dialog.width(), before.width());

    QTest::keyClicks(&dialog.name(), text("x"));
    QVERIFY(dialog.error().isHidden());
    QCOMPARE(dialog.name().accessibleDescription(), QString());

    dialog.press(text(" "));
    QTest::keyClick(&dialog.box(), Qt::Key_Down);
    QVERIFY(dialog.error().isHidden());
}

void tst_CreateProfileDialog::bearsReceiversThatThrow()
{
    TestLog log;
    const ProfileWorld world;
    const Dialog dialog;
    connect(&dialog, &CreateProfileDialog::profileCreated, this,
            [] { throw std::runtime_error("receiver"); });
    log.expectError("receiver");

    dialog.press(text("new"));

    QVERIFY(!dialog.isVisible());
    QVERIFY(QFileInfo::exists(world.path("new/profile.json")));
}

void tst_CreateProfileDialog::mayBeDestroyedUnderItsMessage()
{
    TestLog log;
    const ProfileWorld world;
    for (const char* name : {"a/b", ".."}) {
        const QPointer<Dialog> dialog = new Dialog;
        ModalDriver driver;
        driver.expect([&](QDialog*) { delete dialog; });

        dialog->name().setText(text(name));
        QTest::keyClick(&dialog->name(), Qt::Key_Return);

        QTRY_VERIFY(dialog.isNull());
    }
}

void tst_CreateProfileDialog::mayBeDestroyedByItsReceiver()
{
    TestLog log;
    const ProfileWorld world;
    const QPointer<Dialog> dialog = new Dialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog.data(), &CreateProfileDialog::profileCreated, this,
            [&] { dialog->deleteLater(); });

    dialog->press(text("new"));

    QTRY_VERIFY(dialog.isNull());
    QVERIFY(QFileInfo::exists(world.path("new/profile.json")));
}

void tst_CreateProfileDialog::mayBeDestroyedAsItFinishes()
{
    TestLog log;
    const ProfileWorld world;
    const QPointer<Dialog> dialog = new Dialog;
    connect(dialog.data(), &QDialog::finished, this, [&] { delete dialog; });

    dialog->name().setText(text("new"));
    QTest::keyClick(&dialog->name(), Qt::Key_Return);

    QVERIFY(dialog.isNull());
    QVERIFY(QFileInfo::exists(world.path("new/profile.json")));
}

void tst_CreateProfileDialog::closesByKeyAndButton()
{
    TestLog log;
    const ProfileWorld world;
    {
        const Dialog dialog;
        const QSignalSpy rejected(&dialog, &QDialog::rejected);
        QTest::mouseClick(&dialog.close_(), Qt::LeftButton);
        QCOMPARE(rejected.count(), 1);
        QVERIFY(!dialog.isVisible());
    }
    {
        const Dialog dialog;
        const QSignalSpy rejected(&dialog, &QDialog::rejected);
        QTest::keyClick(&dialog.name(), Qt::Key_Escape);
        QCOMPARE(rejected.count(), 1);
    }
    QCOMPARE(foldersIn(world), QStringList());
}

void tst_CreateProfileDialog::worksByKeyboard()
{
    TestLog log;
    const ProfileWorld world;
    Dialog dialog;

    QTest::keyClick(&dialog, Qt::Key_T, Qt::AltModifier);
    QVERIFY(dialog.box().hasFocus());
    QTest::keyClick(&dialog.box(), Qt::Key_Tab);
    QVERIFY(dialog.name().hasFocus());
    QTest::keyClick(&dialog.name(), Qt::Key_Tab);
    QVERIFY(dialog.close_().hasFocus());
    QTest::keyClick(&dialog.close_(), Qt::Key_N, Qt::AltModifier);
    QVERIFY(dialog.name().hasFocus());
    QTest::keyClicks(&dialog.name(), text("new"));
    QTest::keyClick(&dialog.name(), Qt::Key_Return);

    QVERIFY(!dialog.isVisible());
    QCOMPARE(foldersIn(world), QStringList{text("new")});
}

QTEST_MAIN(tst_CreateProfileDialog)
#include "tst_create_profile_dialog.moc"
