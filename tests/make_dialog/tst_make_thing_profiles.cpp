#include "make_dialog/thing_world.h"

#include <trovek-ui/create_profile_dialog.h>
#include <trovek-ui/profile_list_model.h>

#include <QDesktopServices>
#include <QDir>
#include <QLineEdit>

#include <optional>

using namespace trovek;

/** The user's own profiles in the make-thing dialog. */
class tst_MakeThingProfiles : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void listsPresetsAndUserProfiles();
    void helpsWithAProfile();
    void tellsWhyAProfileCannotBeUsed_data();
    void tellsWhyAProfileCannotBeUsed();
    void showsErrorsAsTheyAre();
    void comesAliveWhenTheReasonGoes();
    void keepsTheReasonInSight();
    void disablesRaftAndSupports();
    void createsAProfile();
    void deletesAProfile();
    void keepsAProfile();
    void tellsThatAProfileCannotBeDeleted_data();
    void tellsThatAProfileCannotBeDeleted();
    void editsAProfile();
    void tellsThatAProfileCannotBeEdited();
    void fallsBackWhenTheProfileGoes();
    void keepsNumbersWhenProfilesComeAndGo();
    void survivesItsEndInAQuestion();

public slots:
    void openUrl(const QUrl& url) { m_opened.append(url); }

private:
    TrovekQt m_facade;
    QList<QUrl> m_opened;
};

namespace {

const QStringList kDeleteFailed =
    words({"Failed to delete custom profile",
           "The profile may have already been deleted, or you might not have permissions to delete "
           "it."});
const QStringList kEditFailed = words({"Custom profile could not be opened for editing"});

constexpr char kHelp[] =
    "<p>You are using a custom profile.</p><p>Clicking 'Edit Profile' below will open this "
    "profile's<br/>configuration file in your text editor.</p><p><a "
    "href=\"" TROVEK_PROFILE_DOCUMENTATION_URL
    "\">See documentation for custom Orvane Slicer profiles.</a></p>";
constexpr char kNotValid[] = "This custom slicer profile is not valid for<br/>the selected bot.";

struct Opened : OpenedThing
{
    explicit Opened(ThingWorld& world, const char* profile = "mine")
        : OpenedThing(world, "single")
    {
        openAdvanced();
        select(profile);
    }
};

/** Asked with the folder's path, and answered by this button. */
ModalDriver::Step confirm(const ThingWorld& world, const char* name, const QString& button)
{
    const QString path = world.profilePath(name);
    return [path, button](QDialog* box) {
        QStringList texts = messageTexts(box);
        // The box may break a long path anywhere.
        texts.replaceInStrings(QString(QChar(0x200b)), QString());
        QCOMPARE(texts,
                 (QStringList{QStringLiteral("Are you sure you want to delete \"%1\"?").arg(path),
                              QStringLiteral("This action cannot be undone.")}));
        pressButton(box, button);
    };
}

} // namespace

void tst_MakeThingProfiles::cleanup()
{
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingProfiles::listsPresetsAndUserProfiles()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    world.addProfile("for dual", R"("fabrino_2x")");
    world.addProfile("broken", R"("bigbot")");
    const OpenedThing opened(world, "single");

    const auto& model = opened.profiles().profileModel();
    QCOMPARE(rowsOf(model).mid(0, 3), words({"Low", "Standard", "High"}));
    QCOMPARE(userRows(model, 3), words({"broken", "for dual", "mine"}));
    QVERIFY(itemOf(model, QStringLiteral("mine"))->isEnabled());
    for (const char* name : {"for dual", "broken"}) {
        const QStandardItem* const item = itemOf(model, QString::fromLatin1(name));
        QVERIFY(!item->isEnabled());
        QVERIFY(!item->toolTip().isEmpty());
    }

    opened.select(world.printer("dual"));
    QVERIFY(itemOf(model, QStringLiteral("for dual"))->isEnabled());
    QVERIFY(!itemOf(model, QStringLiteral("mine"))->isEnabled());
}

void tst_MakeThingProfiles::helpsWithAProfile()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const Opened opened(world);

    QCOMPARE(opened.help().text(), QString::fromLatin1(kHelp));
    QVERIFY(opened.help().openExternalLinks());
    QCOMPARE(opened.find<QLabel>("slicer").text(), QStringLiteral("Orvane Slicer"));
    QVERIFY(opened.mainButton().isEnabled());
}

void tst_MakeThingProfiles::tellsWhyAProfileCannotBeUsed_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("help");
    QTest::addColumn<bool>("canMake");

    const auto error = [](const char* text) {
        return QStringLiteral(
                   "This custom slicer profile has an error:<br/><br/>Invalid profile: ") +
               QString::fromLatin1(text);
    };
    QTest::newRow("no strandel.json")
        << QByteArray("strandel.json") << QByteArray() << error("strandel.json not found") << true;
    QTest::newRow("no profile.json")
        << QByteArray("profile.json") << QByteArray() << error("profile.json is missing") << false;
    QTest::newRow("no JSON") << QByteArray("profile.json") << QByteArray("{")
                             << error("profile.json does not contain valid JSON") << false;
    QTest::newRow("no slicer") << QByteArray("profile.json")
                               << QByteArray(R"({"machine_type": ["fabrino_2"]})")
                               << error("profile.json is missing the slicer field") << false;
    QTest::newRow("no machines") << QByteArray("profile.json")
                                 << QByteArray(R"({"slicer": "strandel"})")
                                 << error("profile.json is missing the machine_type field")
                                 << false;
    QTest::newRow("another machine") << QByteArray("profile.json") << profileJson(R"("fabrino_2x")")
                                     << QString::fromLatin1(kNotValid) << false;
    QTest::newRow("no machine at all") << QByteArray("profile.json") << profileJson(QByteArray())
                                       << QString::fromLatin1(kNotValid) << false;
}

void tst_MakeThingProfiles::tellsWhyAProfileCannotBeUsed()
{
    TestLog log;
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, content);
    QFETCH(QString, help);
    QFETCH(bool, canMake);
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const Opened opened(world);
    const QString path = world.profilePath("mine/") + QString::fromLatin1(file);

    if (content.isEmpty())
        QVERIFY(QFile::remove(path));
    else
        writeFile(path, content);
    opened.profiles().profileModel().update();
    opened.dialog->requestSanitize();

    QTRY_COMPARE(opened.help().text(), help);
    QVERIFY(opened.help().isVisible());
    // What the user chose stays chosen.
    QCOMPARE(opened.profiles().currentText(), QStringLiteral("mine"));
    QTRY_COMPARE(opened.mainButton().isEnabled(), canMake);
}

void tst_MakeThingProfiles::showsErrorsAsTheyAre()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine", R"("<b>fabrino</b>")");

    const Opened opened(world);

    QCOMPARE(opened.help().text(),
             QStringLiteral("This custom slicer profile has an error:<br/><br/>Invalid profile: "
                            "machine_type contains invalid name &lt;b&gt;fabrino&lt;/b&gt;"));
}

void tst_MakeThingProfiles::comesAliveWhenTheReasonGoes()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine", R"("fabrino_2x")");
    const Opened opened(world);
    QVERIFY(!opened.mainButton().isEnabled());
    QCOMPARE(opened.help().text(), QString::fromLatin1(kNotValid));

    opened.select(world.printer("dual"));
    QTRY_VERIFY(opened.mainButton().isEnabled());
    QCOMPARE(opened.help().text(), QString::fromLatin1(kHelp));

    opened.select(world.printer("single"));
    QTRY_VERIFY(!opened.mainButton().isEnabled());
    // The watcher tells of the file.
    writeFile(world.profilePath("mine/profile.json"), profileJson(R"("fabrino_2")"));
    QTRY_VERIFY(opened.mainButton().isEnabled());
    QCOMPARE(opened.help().text(), QString::fromLatin1(kHelp));
}

void tst_MakeThingProfiles::keepsTheReasonInSight()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine", R"("fabrino_2x")");
    const OpenedThing opened(world, "single");

    opened.select("mine");

    // Also with the advanced options closed.
    QVERIFY(opened.help().isVisible());
    QVERIFY(opened.profiles().isVisible());
    QVERIFY(!opened.button("editButton").isVisible());
    QVERIFY(!opened.mainButton().isEnabled());
}

void tst_MakeThingProfiles::disablesRaftAndSupports()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const Opened opened(world);
    QVERIFY(!opened.find<QWidget>("raftCheckBox").isEnabled());
    QVERIFY(!opened.find<QWidget>("supportsCheckBox").isEnabled());

    opened.select("Standard");
    QVERIFY(opened.find<QWidget>("raftCheckBox").isEnabled());
    QVERIFY(opened.find<QWidget>("supportsCheckBox").isEnabled());
}

void tst_MakeThingProfiles::createsAProfile()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const OpenedThing opened(world, "single");
    opened.openAdvanced();
    int made = 0;
    for (const char* button : {"createProfileButton", "createButton"}) {
        const QString name = QStringLiteral("new %1").arg(++made);
        ModalDriver driver;
        driver.expect<CreateProfileDialog>([&name](CreateProfileDialog* dialog) {
            QTest::keyClicks(dialog->findChild<QLineEdit*>(), name);
            pressButton(dialog, QStringLiteral("C&reate"));
        });

        QTest::mouseClick(&opened.button(button), Qt::LeftButton);

        QTRY_VERIFY(driver.isDone());
        QTRY_COMPARE(opened.profiles().currentText(), name);
        QVERIFY(QFile::exists(world.directory() + QLatin1Char('/') + name +
                              QLatin1String("/strandel.json")));
        QTRY_VERIFY(opened.dialog->findChild<CreateProfileDialog*>() == nullptr);
        QTRY_VERIFY(opened.button("createButton").isVisible());
    }
}

void tst_MakeThingProfiles::deletesAProfile()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const Opened opened(world);
    ModalDriver driver;
    driver.expect(confirm(world, "mine", QStringLiteral("&Delete Profile")));

    QTest::mouseClick(&opened.button("deleteButton"), Qt::LeftButton);

    QVERIFY(!QDir(world.profilePath("mine")).exists());
    QCOMPARE(rowsOf(*opened.profiles().model()), words({"Low", "Standard", "High"}));
    QCOMPARE(opened.profiles().currentText(), QStringLiteral("Standard"));
    QTRY_VERIFY(opened.numbers().isVisible());
    QVERIFY(opened.mainButton().isEnabled());
}

void tst_MakeThingProfiles::keepsAProfile()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const Opened opened(world);
    ModalDriver driver;
    driver.expect(confirm(world, "mine", QStringLiteral("&Keep Profile")));
    driver.expect([](QDialog* box) { QTest::keyClick(box, Qt::Key_Escape); });

    QTest::mouseClick(&opened.button("deleteButton"), Qt::LeftButton);
    QTest::mouseClick(&opened.button("deleteButton"), Qt::LeftButton);

    QVERIFY(QFile::exists(world.profilePath("mine/profile.json")));
    QCOMPARE(opened.profiles().currentText(), QStringLiteral("mine"));
}

void tst_MakeThingProfiles::tellsThatAProfileCannotBeDeleted_data()
{
    QTest::addColumn<bool>("isGone");
    QTest::newRow("gone") << true;
#ifdef Q_OS_UNIX
    QTest::newRow("not allowed") << false;
#endif
}

void tst_MakeThingProfiles::tellsThatAProfileCannotBeDeleted()
{
    QFETCH(bool, isGone);
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const Opened opened(world);
    const QString path = world.profilePath("mine");
    log.expectError(isGone ? "Profile already deleted" : "Unable to delete");
    ModalDriver driver;
    driver.expect([&](QDialog* box) {
        if (isGone)
            QVERIFY(QDir(path).removeRecursively());
        pressButton(box, QStringLiteral("&Delete Profile"));
    });
    driver.expectMessage(kDeleteFailed);

    {
#ifdef Q_OS_UNIX
        std::optional<OrdinaryUser> user;
        if (!isGone) {
            QVERIFY(QFile::setPermissions(path, QFileDevice::Permissions(0x5555)));
            QVERIFY(QFile::setPermissions(world.base(), QFileDevice::Permissions(0x7755)));
            user.emplace();
        }
#endif
        QTest::mouseClick(&opened.button("deleteButton"), Qt::LeftButton);
    }
    QVERIFY(QFile::setPermissions(world.base(), QFileDevice::Permissions(0x7700)));
    if (!isGone)
        QVERIFY(QFile::setPermissions(path, QFileDevice::Permissions(0x7755)));

    QVERIFY(opened.dialog->isVisible());
    QCOMPARE(opened.profiles().currentText(),
             isGone ? QStringLiteral("Standard") : QStringLiteral("mine"));
}

void tst_MakeThingProfiles::editsAProfile()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine #1");
    const Opened opened(world, "mine #1");
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openUrl");
    m_opened.clear();

    QTest::mouseClick(&opened.button("editButton"), Qt::LeftButton);
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));

    QCOMPARE(m_opened, {QUrl::fromLocalFile(world.profilePath("mine #1/strandel.json"))});
}

void tst_MakeThingProfiles::tellsThatAProfileCannotBeEdited()
{
    TestLog log;
    log.expectError("profile.json is missing");
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const Opened opened(world);
    QVERIFY(QFile::remove(world.profilePath("mine/profile.json")));
    ModalDriver driver;
    driver.expectMessage(kEditFailed);

    QTest::mouseClick(&opened.button("editButton"), Qt::LeftButton);

    bool isNamed = false;
    for (const LogEntry& entry : log.sink().entries()) {
        isNamed = isNamed || (entry.file == kThingUnit &&
                              entry.function.find("editProfile") != std::string::npos);
    }
    QVERIFY(isNamed);
}

void tst_MakeThingProfiles::fallsBackWhenTheProfileGoes()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    world.addProfile("other");
    const Opened opened(world);

    QVERIFY(QDir(world.profilePath("mine")).removeRecursively());

    // Not to a neighbour, which nobody has chosen.
    QTRY_COMPARE(opened.profiles().currentText(), QStringLiteral("Standard"));
    QCOMPARE(opened.extruders().quality(), SlicerConfiguration::Standard);
    QTRY_VERIFY(opened.numbers().isVisible());
}

void tst_MakeThingProfiles::keepsNumbersWhenProfilesComeAndGo()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    opened.openAdvanced();
    opened.find<QSpinBox>("infill").setValue(77);

    world.addProfile("mine");
    QTRY_COMPARE(opened.profiles().count(), 4);
    QVERIFY(QDir(world.profilePath("mine")).removeRecursively());
    QTRY_COMPARE(opened.profiles().count(), 3);

    QCOMPARE(opened.find<QSpinBox>("infill").value(), 77);
    QCOMPARE(opened.profiles().currentText(), QStringLiteral("Standard"));
}

void tst_MakeThingProfiles::survivesItsEndInAQuestion()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const Opened opened(world);
    ModalDriver driver;
    driver.expect([&opened](QDialog*) { delete opened.dialog.data(); });

    QTest::mouseClick(&opened.button("deleteButton"), Qt::LeftButton);

    QVERIFY(opened.dialog.isNull());
    QVERIFY(QFile::exists(world.profilePath("mine/profile.json")));
}

QTEST_MAIN(tst_MakeThingProfiles)
#include "tst_make_thing_profiles.moc"
