#include "make_dialog/thing_world.h"

#include <json/reader.h>

#include <optional>

using namespace trovek;

/** The check of a user's profile before it is made, and the upgrade of an old one. */
class tst_MakeThingStrandel : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void asksNobodyAboutAPreset();
    void passesWhatIsUpToDate();
    void refusesWhatIsTooNew();
    void upgradesWhatIsOld();
    void upgradesWhatTheUserJustEdited();
    void leavesWhatIsOldWhenTheUserSaysSo_data();
    void leavesWhatIsOldWhenTheUserSaysSo();
    void tellsOfWhatCannotBeChecked_data();
    void tellsOfWhatCannotBeChecked();
    void tellsOfAnOddAnswer_data();
    void tellsOfAnOddAnswer();
    void keepsTheOldFileWhenItCannotWrite_data();
    void keepsTheOldFileWhenItCannotWrite();
    void keepsTheOldFileWhenTheServiceFails_data();
    void keepsTheOldFileWhenTheServiceFails();
    void survivesItsEndInAMessage_data();
    void survivesItsEndInAMessage();
    void survivesTheEndOfTheProfileInTheQuestion();

private:
    TrovekQt m_facade;
};

namespace {

constexpr char kCheck[] = "strandel_config_version_check";
constexpr char kUpgrade[] = "upgrade_strandel_config";
constexpr char kOld[] = "{\n    // mine\n    \"version\" : 1,\n    \"layerHeight\" : 0.2\n}\n";

const QStringList kTooNew =
    words({"Error in custom profile",
           "This custom profile is for a newer version of Orvane Slicer than the actual installed "
           "version of Orvane Slicer."});
const QStringList kNeedsUpgrade =
    words({"Custom profile requires upgrade",
           "This profile was created for an older version of Orvane Slicer and is not compatible "
           "with this version of Orvane Slicer. Upgrade this profile to work with the latest "
           "version?"});

/** With a profile that is selected. */
struct Opened : OpenedThing
{
    explicit Opened(ThingWorld& world)
        : OpenedThing(world, "single")
    {
        select("mine");
    }
};

void addOldProfile(ThingWorld& world)
{
    world.addProfile("mine");
    writeFile(world.profilePath("mine/strandel.json"), kOld);
    world.service.onRequest(kCheck, [](const Json::Value& params) {
        return Json::Value(params["config"]["version"].asInt() >= 2 ? 1 : 0);
    });
    world.service.onRequest(kUpgrade, [](const Json::Value& params) {
        Json::Value config = params["config"];
        config["version"] = 2;
        return config;
    });
}

std::size_t prints(const ThingWorld& world)
{
    return world.service.requests("print").size();
}

QStringList unitLog(const TestLog& log)
{
    return MakeWorld::logOf(log, kThingUnit);
}

} // namespace

void tst_MakeThingStrandel::cleanup()
{
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingStrandel::asksNobodyAboutAPreset()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");

    opened.clickMain();

    QCOMPARE(world.service.requests(kCheck).size(), std::size_t(0));
    QCOMPARE(prints(world), std::size_t(1));
}

void tst_MakeThingStrandel::passesWhatIsUpToDate()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    world.service.answerNext(kCheck, 1);
    const Opened opened(world);
    const QByteArray before = readFile(world.profilePath("mine/strandel.json"));

    opened.clickMain();

    QCOMPARE(world.service.lastRequest(kCheck)["config"]["layerHeight"].asDouble(), 0.2);
    QCOMPARE(unitLog(log), words({"Up-to-date"}));
    QCOMPARE(prints(world), std::size_t(1));
    QCOMPARE(readFile(world.profilePath("mine/strandel.json")), before);
}

void tst_MakeThingStrandel::refusesWhatIsTooNew()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    world.service.answerNext(kCheck, 2);
    const Opened opened(world);
    ModalDriver driver;
    driver.expectMessage(kTooNew);

    opened.clickMain();

    QCOMPARE(prints(world), std::size_t(0));
    QVERIFY(opened.dialog->isVisible());
    QVERIFY(log.contains("finalMakeOrExportCheck didn't pass"));
    QCOMPARE(unitLog(log), QStringList());
    QVERIFY(!opened.find<QLabel>("previewNotice").isVisible());
}

void tst_MakeThingStrandel::upgradesWhatIsOld()
{
    TestLog log;
    ThingWorld world(m_facade);
    addOldProfile(world);
    const Opened opened(world);
    ModalDriver driver;
    driver.expectMessage(kNeedsUpgrade, QStringLiteral("&Upgrade"));

    opened.clickMain();

    QCOMPARE(unitLog(log), words({"Upgrading config"}));
    QCOMPARE(world.service.lastRequest(kUpgrade)["config"]["version"].asInt(), 1);
    QCOMPARE(prints(world), std::size_t(1));
    Json::Value written;
    QVERIFY(Json::Reader().parse(readFile(world.profilePath("mine/strandel.json")).toStdString(),
                                 written));
    QCOMPARE(written["version"].asInt(), 2);
    QCOMPARE(written["layerHeight"].asDouble(), 0.2);
    // Styled, a member a line.
    QVERIFY(readFile(world.profilePath("mine/strandel.json")).count('\n') >= 4);
    QCOMPARE(tree(world.profilePath("mine")),
             words({"end.gcode", "profile.json", "start.gcode", "strandel.json"}));
}

void tst_MakeThingStrandel::upgradesWhatTheUserJustEdited()
{
    TestLog log;
    ThingWorld world(m_facade);
    addOldProfile(world);
    const Opened opened(world);
    ModalDriver driver;
    driver.expect([&world](QDialog* box) {
        writeFile(world.profilePath("mine/strandel.json"),
                  R"({"version": 1, "layerHeight": 0.125})");
        pressButton(box, QStringLiteral("&Upgrade"));
    });

    opened.clickMain();

    Json::Value written;
    QVERIFY(Json::Reader().parse(readFile(world.profilePath("mine/strandel.json")).toStdString(),
                                 written));
    QCOMPARE(written["layerHeight"].asDouble(), 0.125);
    QCOMPARE(written["version"].asInt(), 2);
}

void tst_MakeThingStrandel::leavesWhatIsOldWhenTheUserSaysSo_data()
{
    QTest::addColumn<bool>("escape");
    QTest::newRow("cancel") << false;
    QTest::newRow("escape") << true;
}

void tst_MakeThingStrandel::leavesWhatIsOldWhenTheUserSaysSo()
{
    TestLog log;
    QFETCH(bool, escape);
    ThingWorld world(m_facade);
    addOldProfile(world);
    const Opened opened(world);
    ModalDriver driver;
    driver.expect([escape](QDialog* box) {
        QCOMPARE(messageTexts(box), kNeedsUpgrade);
        if (escape)
            QTest::keyClick(box, Qt::Key_Escape);
        else
            pressButton(box, QStringLiteral("&Cancel"));
    });

    opened.clickMain();

    QCOMPARE(prints(world), std::size_t(0));
    QCOMPARE(world.service.requests(kUpgrade).size(), std::size_t(0));
    QCOMPARE(readFile(world.profilePath("mine/strandel.json")), QByteArray(kOld));
    QVERIFY(opened.dialog->isVisible());
}

void tst_MakeThingStrandel::tellsOfWhatCannotBeChecked_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("logged");
    const auto row = [](const char* name, const char* file, const char* content,
                        const char* logged) {
        QTest::newRow(name) << QByteArray(file) << QByteArray(content)
                            << QString::fromLatin1(logged);
    };
    row("no settings", "strandel.json", "", "Failed to open strandel.json");
    row("no JSON", "strandel.json", "{\"version\": 2", "Failed to parse strandel.json");
    row("two values", "strandel.json", "{} {}", "Failed to parse strandel.json");
    row("no description", "profile.json", "", "profile.json is missing");
    row("another slicer", "profile.json", R"({"slicer": "other", "machine_type": ["fabrino_2"]})",
        "Invalid slicer identifier");
}

void tst_MakeThingStrandel::tellsOfWhatCannotBeChecked()
{
    TestLog log;
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, content);
    QFETCH(QString, logged);
    log.expectError(logged);
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const Opened opened(world);
    const QString path = world.profilePath("mine/") + QString::fromLatin1(file);
    if (content.isEmpty())
        QVERIFY(QFile::remove(path));
    else
        writeFile(path, content);
    ModalDriver driver;
    driver.expectMessage(kFailedToStartPrint);

    // At once, before the list of profiles has looked again.
    opened.clickMain();

    QCOMPARE(prints(world), std::size_t(0));
    QVERIFY(opened.dialog->isVisible());
    // The message leaves it open what is wrong.
    const auto& notice = opened.find<QLabel>("previewNotice");
    QVERIFY(notice.isVisible());
    QVERIFY2(notice.text().contains(logged), qPrintable(notice.text()));
}

void tst_MakeThingStrandel::tellsOfAnOddAnswer_data()
{
    QTest::addColumn<QByteArray>("answer");
    for (const char* answer : {"3", "-1", "null", "\"1\"", "1.5", "{}", "true"})
        QTest::newRow(answer) << QByteArray(answer);
}

void tst_MakeThingStrandel::tellsOfAnOddAnswer()
{
    TestLog log;
    log.expectError("");
    QFETCH(QByteArray, answer);
    ThingWorld world(m_facade);
    world.addProfile("mine");
    Json::Value value;
    QVERIFY(Json::Reader().parse("[" + answer.toStdString() + "]", value));
    world.service.answerNext(kCheck, value[0]);
    const Opened opened(world);
    ModalDriver driver;
    driver.expectMessage(kFailedToStartPrint);

    opened.clickMain();

    QCOMPARE(prints(world), std::size_t(0));
}

void tst_MakeThingStrandel::keepsTheOldFileWhenItCannotWrite_data()
{
    QTest::addColumn<bool>("full");
    QTest::addColumn<QString>("logged");
#ifdef Q_OS_UNIX
    QTest::newRow("disk full") << true << QStringLiteral("Failed to write strandel.json");
    QTest::newRow("not allowed") << false
                                 << QStringLiteral("Failed to open strandel.json for write");
#endif
}

void tst_MakeThingStrandel::keepsTheOldFileWhenItCannotWrite()
{
#ifdef Q_OS_UNIX
    TestLog log;
    QFETCH(bool, full);
    QFETCH(QString, logged);
    log.expectError(logged);
    ThingWorld world(m_facade);
    addOldProfile(world);
    const Opened opened(world);
    ModalDriver driver;
    std::optional<FileSizeLimit> limit;
    std::optional<OrdinaryUser> user;
    driver.expect([&](QDialog* box) {
        if (full) {
            limit.emplace(8);
        } else {
            QVERIFY(QFile::setPermissions(world.base(), QFileDevice::Permissions(0x7755)));
            QVERIFY(QFile::setPermissions(world.profilePath("mine/strandel.json"),
                                          QFileDevice::Permissions(0x4444)));
            user.emplace();
        }
        pressButton(box, QStringLiteral("&Upgrade"));
    });
    driver.expectMessage(kFailedToStartPrint);

    opened.clickMain();
    limit.reset();
    user.reset();
    QVERIFY(QFile::setPermissions(world.base(), QFileDevice::Permissions(0x7700)));

    QCOMPARE(prints(world), std::size_t(0));
    QCOMPARE(readFile(world.profilePath("mine/strandel.json")), QByteArray(kOld));
    QCOMPARE(tree(world.profilePath("mine")),
             words({"end.gcode", "profile.json", "start.gcode", "strandel.json"}));
#endif
}

void tst_MakeThingStrandel::keepsTheOldFileWhenTheServiceFails_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<bool>("drops");
    QTest::newRow("check refused") << QByteArray(kCheck) << false;
    QTest::newRow("link lost in the check") << QByteArray(kCheck) << true;
    QTest::newRow("upgrade refused") << QByteArray(kUpgrade) << false;
    QTest::newRow("link lost in the upgrade") << QByteArray(kUpgrade) << true;
}

void tst_MakeThingStrandel::keepsTheOldFileWhenTheServiceFails()
{
    TestLog log;
    log.allowErrors("");
    QFETCH(QByteArray, request);
    QFETCH(bool, drops);
    ThingWorld world(m_facade);
    addOldProfile(world);
    if (drops)
        world.service.dropConnectionOn(request.toStdString());
    else
        world.service.failNext(request.toStdString(), JsonRpcException("no"));
    const Opened opened(world);
    ModalDriver driver;
    if (request == kUpgrade)
        driver.expectMessage(kNeedsUpgrade, QStringLiteral("&Upgrade"));
    driver.expectMessage(kFailedToStartPrint);

    opened.clickMain();

    QCOMPARE(prints(world), std::size_t(0));
    QCOMPARE(readFile(world.profilePath("mine/strandel.json")), QByteArray(kOld));
    QVERIFY(opened.dialog->isVisible());
}

void tst_MakeThingStrandel::survivesItsEndInAMessage_data()
{
    QTest::addColumn<int>("answer");
    QTest::newRow("needs upgrade") << 0;
    QTest::newRow("too new") << 2;
    QTest::newRow("error") << 3;
}

void tst_MakeThingStrandel::survivesItsEndInAMessage()
{
    TestLog log;
    log.allowErrors("");
    QFETCH(int, answer);
    ThingWorld world(m_facade);
    addOldProfile(world);
    world.service.answerNext(kCheck, answer);
    const Opened opened(world);
    ModalDriver driver;
    driver.expect([&opened](QDialog*) { delete opened.dialog.data(); });

    opened.clickMain();

    QVERIFY(opened.dialog.isNull());
    QCOMPARE(prints(world), std::size_t(0));
    QCOMPARE(readFile(world.profilePath("mine/strandel.json")), QByteArray(kOld));
}

void tst_MakeThingStrandel::survivesTheEndOfTheProfileInTheQuestion()
{
    TestLog log;
    log.expectError("Failed to open strandel.json");
    ThingWorld world(m_facade);
    addOldProfile(world);
    const Opened opened(world);
    ModalDriver driver;
    driver.expect([&](QDialog* box) {
        QVERIFY(QDir(world.profilePath("mine")).removeRecursively());
        QTRY_COMPARE(opened.profiles().currentText(), QStringLiteral("Standard"));
        pressButton(box, QStringLiteral("&Upgrade"));
    });
    driver.expectMessage(kFailedToStartPrint);

    opened.clickMain();

    QCOMPARE(prints(world), std::size_t(0));
    QVERIFY(!QDir(world.profilePath("mine")).exists());
    QVERIFY(opened.dialog->isVisible());
}

QTEST_MAIN(tst_MakeThingStrandel)
#include "tst_make_thing_strandel.moc"
