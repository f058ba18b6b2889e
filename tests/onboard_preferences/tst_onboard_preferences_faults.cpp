#include "preferences_world.h"

using namespace trovek;

namespace {

struct Operation
{
    const char* name;
    const char* method;
    /** Buttons of the windows before the request. */
    QStringList answers;
    const char* button;
    /** The message's texts; empty for those of backups. */
    QStringList failure;
};

const QList<Operation>& operations()
{
    static const QList<Operation> list = {
        {"write", "write_eeprom", {}, "writeButton", texts::kFailedWrite},
        {"reset",
         "reset_eeprom_completely",
         {text("&Reset")},
         "factoryResetButton",
         texts::kFailedReset},
        {"read after a reset",
         "read_eeprom",
         {text("&Reset")},
         "factoryResetButton",
         texts::kFailedReset},
        {"list of backups", "list_eeprom_backups", {}, "backupsButton", {}},
        {"backup", "read_eeprom_backup", {text("&Load")}, "backupsButton", {}},
    };
    return list;
}

void arrange(PreferencesWorld& world, const Operation& operation, const QString& fault)
{
    if (fault == text("killed"))
        world.service.dropConnectionOn(operation.method);
    else if (fault == text("hung"))
        world.service.hangNext(operation.method);
    else
        world.service.answerNext(operation.method,
                                 parse("{\"answer\":" + fault.toStdString() + "}")["answer"]);
    if (fault == text("hung"))
        world.facade.setDeadlineScale(0.001);
}

} // namespace

/** The dialog while its service fails, and while it is deleted under its own windows. */
class tst_OnboardPreferencesFaults : public QObject
{
    Q_OBJECT

private slots:
    void survivesAFailingService_data();
    void survivesAFailingService();
    void survivesOddAnswers_data();
    void survivesOddAnswers();
    void tellsThatItCannotBeOpened_data();
    void tellsThatItCannotBeOpened();
    void mayBeDeletedUnderEveryWindow_data();
    void mayBeDeletedUnderEveryWindow();
    void mayLoseItsParentWhileItIsRefused();
    void ignoresBeingClosedUnderAQuestion();
};

void tst_OnboardPreferencesFaults::survivesAFailingService_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<QString>("fault");
    for (int i = 0; i < operations().size(); ++i) {
        for (const char* fault : {"killed", "hung"})
            QTest::addRow("%s: %s", operations()[i].name, fault) << i << text(fault);
    }
}

void tst_OnboardPreferencesFaults::survivesAFailingService()
{
    QFETCH(int, operation);
    QFETCH(QString, fault);
    const Operation& what = operations()[operation];
    TestLog log;
    log.allowErrors("");
    PreferencesWorld world;
    world.open();
    world.service.addEepromBackup("left", {"1", 1000}, sampleMapWithHeater(201));
    world.setHeater(230);
    world.service.onRequest("reset_eeprom_completely",
                            [](const Json::Value&) { return Json::Value(); });
    // Twice: the second failure finds what the first one left.
    for (int round = 0; round < 2; ++round) {
        arrange(world, what, fault);
        ModalDriver driver;
        for (const QString& answer : what.answers)
            driver.expect([answer](QDialog* box) { pressButton(box, answer); });
        driver.expect([&what](QDialog* box) {
            if (!what.failure.isEmpty())
                QCOMPARE(messageTexts(box), what.failure);
            else
                QCOMPARE(messageTexts(box).value(0), text("Failed to read the backups"));
            pressButton(box, text("&OK"));
        });
        world.click(what.button);
        QVERIFY(driver.isDone());
        QVERIFY(!QApplication::overrideCursor());
        QVERIFY(world.dialog->isVisible());
        QTRY_COMPARE(world.enabled(), text("---"));
        QTRY_COMPARE(world.notice(), text("The printer is not connected. Connect it again to go "
                                          "on."));
        world.facade.setDeadlineScale(1);
        world.connectFacade();
        QTRY_COMPARE(world.enabled(), text("FRW"));
        if (world.noticeButton() == text("Restore Changes"))
            world.click("noticeButton");
        QCOMPARE(world.heater().value(), 230.0);
    }
    // And then it works.
    ModalDriver driver;
    driver.expectMessage(texts::kWritten);
    world.click("writeButton");
    QCOMPARE(world.enabled(), text("FR-"));
}

void tst_OnboardPreferencesFaults::survivesOddAnswers_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<QString>("answer");

    for (int i = 2; i < operations().size(); ++i) {
        for (const char* answer :
             {"null", "5", "[3]", "{}", "{\"eeprom_map\": 4}", "{\"eeprom_map\": {\"sound\": {}}}",
              "[{\"name\": 4, \"time\": \"now\"}]"}) {
            QTest::addRow("%s: %s", operations()[i].name, answer) << i << text(answer);
        }
    }
}

void tst_OnboardPreferencesFaults::survivesOddAnswers()
{
    QFETCH(int, operation);
    QFETCH(QString, answer);
    const Operation& what = operations()[operation];
    TestLog log;
    log.allowErrors("");
    PreferencesWorld world;
    world.open();
    world.service.addEepromBackup("left", {"1", 1000}, sampleMapWithHeater(201));
    arrange(world, what, answer);
    ModalDriver driver;
    for (const QString& button : what.answers)
        driver.expect([button](QDialog* box) { pressButton(box, button); });
    QString told;
    driver.expect([&told](QDialog* box) {
        told = messageTexts(box).value(0);
        pressButton(box, text("&OK"));
    });
    world.click(what.button);
    QVERIFY(driver.isDone());
    QVERIFY2(told == texts::kFailedReset[0] || told == text("Failed to read the backups") ||
                 told == text("Failed to load onboard preferences"),
             qPrintable(told));
    QVERIFY(world.grama().isEnabled());
    QCOMPARE(world.heater().value(), 220.0);
}

void tst_OnboardPreferencesFaults::tellsThatItCannotBeOpened_data()
{
    QTest::addColumn<QString>("fault");
    for (const char* fault : {"killed", "hung", "null", "5", "\"map\"", "[]"})
        QTest::newRow(fault) << text(fault);
}

void tst_OnboardPreferencesFaults::tellsThatItCannotBeOpened()
{
    QFETCH(QString, fault);
    TestLog log;
    log.allowErrors("");
    PreferencesWorld world;
    arrange(world, {"", "read_eeprom", {}, "", {}}, fault);
    ModalDriver driver;
    driver.expectMessage(texts::kGeneric);
    QVERIFY(!world.create());
    QVERIFY(!log.messages(Log::Error).empty());
    QVERIFY(!QApplication::overrideCursor());
}

void tst_OnboardPreferencesFaults::mayBeDeletedUnderEveryWindow_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QStringList>("answers");
    QTest::addColumn<QString>("failing");

    const QString none;
    QTest::newRow("written") << text("writeButton") << QStringList() << none;
    QTest::newRow("write failed") << text("writeButton") << QStringList() << text("write_eeprom");
    QTest::newRow("reset question") << text("factoryResetButton") << QStringList() << none;
    QTest::newRow("reset failed") << text("factoryResetButton") << words({"&Reset"})
                                  << text("reset_eeprom_completely");
    QTest::newRow("discard question") << text("cancelButton") << QStringList() << none;
    QTest::newRow("saved on closing") << text("cancelButton") << words({"&Save"}) << none;
    QTest::newRow("save on closing failed")
        << text("cancelButton") << words({"&Save"}) << text("write_eeprom");
    QTest::newRow("backups") << text("backupsButton") << QStringList() << none;
    QTest::newRow("no backups to be had")
        << text("backupsButton") << QStringList() << text("list_eeprom_backups");
    QTest::newRow("backup that cannot be read")
        << text("backupsButton") << words({"&Load"}) << text("read_eeprom_backup");
    QTest::newRow("saving to a file") << text("saveToFileButton") << QStringList() << none;
    QTest::newRow("loading from a file") << text("loadFromFileButton") << QStringList() << none;
}

void tst_OnboardPreferencesFaults::mayBeDeletedUnderEveryWindow()
{
    QFETCH(QString, button);
    QFETCH(QStringList, answers);
    QFETCH(QString, failing);
    TestLog log;
    log.allowErrors("Told to");
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.service.addEepromBackup("left", {"1", 1000}, sampleMapWithHeater(201));
    if (!failing.isEmpty())
        world.service.failNext(failing.toStdString(), PreferencesWorld::error("Any", "Told to"));
    ModalDriver driver;
    for (const QString& answer : answers)
        driver.expect([answer](QDialog* box) { pressButton(box, answer); });
    driver.expect([&world](QDialog*) { delete world.dialog; });

    // By its signal: a click's own events would meet the button that is gone.
    QMetaObject::invokeMethod(&world.button(qPrintable(button)), "click", Qt::QueuedConnection);

    QTRY_VERIFY_WITH_TIMEOUT(driver.isDone(), 20000);
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QVERIFY(!world.dialog);
    QVERIFY(!QApplication::overrideCursor());
    PreferencesWorld::settle();
}

void tst_OnboardPreferencesFaults::mayLoseItsParentWhileItIsRefused()
{
    TestLog log;
    log.expectError("Told to");
    PreferencesWorld world;
    auto* const parent = new QWidget;
    parent->show();
    world.service.failNext("read_eeprom",
                           PreferencesWorld::error("MachineStateException", "Told to"));
    ModalDriver driver;
    driver.expect([parent](QDialog* box) {
        QCOMPARE(box->parentWidget(), parent);
        delete parent;
    });
    QVERIFY(!ui::OnboardPreferences::create(world.facade, world.printer(), parent));
}

void tst_OnboardPreferencesFaults::ignoresBeingClosedUnderAQuestion()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    ModalDriver driver;
    driver.expect([&world](QDialog* box) {
        world.dialog->reject();
        QVERIFY(!world.dialog->close());
        QCOMPARE(QApplication::activeModalWidget(), box);
        pressButton(box, text("&Cancel"));
    });
    world.click("cancelButton");
    QVERIFY(world.dialog->isVisible());
}

QTEST_MAIN(tst_OnboardPreferencesFaults)
#include "tst_onboard_preferences_faults.moc"
