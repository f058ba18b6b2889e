#include "preferences_world.h"

#include <QCheckBox>
#include <QLabel>

using namespace trovek;

class tst_OnboardPreferences : public QObject
{
    Q_OBJECT

private slots:
    void enablesWritingWhileSomethingIsChanged();
    void writesTheDocumentReadAndTheEdits();
    void staysModifiedWhenWritingFails();
    void saysWhatThePrinterAnswered();
    void logsThatThereIsNoForm();
    void resetsToFactoryValues();
    void doesNotResetWithoutTheAnswer();
    void saysThatResettingFailed();
    void offersToReadAgainAfterAResetThatCouldNotBeRead();
    void showsThatItResetsBeforeItWaits();
    void closesAtOnceWithoutChanges();
    void asksBeforeItClosesWithChanges_data();
    void asksBeforeItClosesWithChanges();
    void closesThoughSavingFailed();
    void deletesItselfWhenClosed();
};

void tst_OnboardPreferences::enablesWritingWhileSomethingIsChanged()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    const QLabel& count = world.child<QLabel>("changedCount");
    world.setHeater(230);
    QCOMPARE(world.enabled(), text("FRW"));
    QCOMPARE(count.text(), text("Changed: 1"));
    QTest::mouseClick(world.grama().findChild<JsonCheckBox*>(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(6, 8));
    QCOMPARE(count.text(), text("Changed: 2"));
    world.setHeater(220);
    QTest::keyClick(world.grama().findChild<JsonCheckBox*>(), Qt::Key_Space);
    QCOMPARE(world.enabled(), text("FR-"));
    QCOMPARE(count.text(), QString());
    QVERIFY(world.service.requests().empty());
}

void tst_OnboardPreferences::writesTheDocumentReadAndTheEdits()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    PreferencesWorld::type(world.density(), text("1.3"));
    PreferencesWorld::type(world.nozzle(), text("0.5"));
    QTest::keyClick(world.grama().findChild<JsonCheckBox*>(), Qt::Key_Space);
    QTest::keyClick(world.grama().findChild<EepromAxisBitfield*>()->findChildren<QCheckBox*>()[1],
                    Qt::Key_Space);
    QTest::keyClick(world.grama().findChild<EepromComboBox*>(), Qt::Key_Down);
    PreferencesWorld::type(*world.grama().findChild<JsonLineEdit*>(), text("Two"));
    ModalDriver driver;
    driver.expectMessage(texts::kWritten);

    world.click("writeButton");

    Json::Value expected = sampleMap();
    entryOf(expected, "heater_temperature")[0] = 230;
    entryOf(expected, "filament/density")[0] = 1.3;
    entryOf(expected, "nozzle_diameter")[0] = 0.5;
    entryOf(expected, "sound")[0] = 0;
    entryOf(expected, "axis_inversion")[0] = 7;
    entryOf(expected, "filament/material")[0] = 2;
    entryOf(expected, "machine_name")[0] = "Two";
    QCOMPARE(int(world.service.requests().size()), 1);
    const Json::Value sent = world.service.lastRequest("write_eeprom");
    QCOMPARE(sent["machine"].asString(), std::string("left"));
    QCOMPARE(sent["map"].toStyledString(), expected.toStyledString());
    QVERIFY(!world.grama().isModified());
    QCOMPARE(world.enabled(), text("FR-"));
    QVERIFY(!QApplication::overrideCursor());
}

void tst_OnboardPreferences::staysModifiedWhenWritingFails()
{
    TestLog log;
    log.expectError("No room");
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.service.failNext("write_eeprom", PreferencesWorld::error("EepromWriteError", "No room"));
    ModalDriver driver;
    driver.expectMessage(texts::kFailedWrite);
    world.click("writeButton");
    QVERIFY(driver.isDone());
    QVERIFY(world.grama().isModified());
    QCOMPARE(world.enabled(), text("FRW"));
    QVERIFY(world.dialog->isVisible());

    driver.expectMessage(texts::kWritten);
    world.click("writeButton");
    QCOMPARE(world.enabled(), text("FR-"));
    QCOMPARE(world.notice(), QString());
}

void tst_OnboardPreferences::saysWhatThePrinterAnswered()
{
    TestLog log;
    log.expectError("Heater <i> must be from 0 to 280");
    PreferencesWorld world;
    world.open();
    world.setHeater(300);
    world.service.failNext(
        "write_eeprom",
        PreferencesWorld::error("EepromValueError", "Heater <i> must be from 0 to 280"));
    ModalDriver driver;
    driver.expectMessage(texts::kFailedWrite);
    world.click("writeButton");
    QCOMPARE(world.notice(), text("The printer answered: Heater <i> must be from 0 to 280"));
    QCOMPARE(world.child<QLabel>("noticeText").textFormat(), Qt::PlainText);
}

void tst_OnboardPreferences::logsThatThereIsNoForm()
{
    TestLog log;
    log.expectError("Grama is null");
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    delete &world.grama();
    QVERIFY(QMetaObject::invokeMethod(world.dialog, "eepromGramaUpdated"));
    QVERIFY(!world.button("writeButton").isEnabled());
    QVERIFY(QMetaObject::invokeMethod(world.dialog, "writeChanges"));
    QVERIFY(world.service.requests().empty());
    // Nothing else needs it.
    ModalDriver driver;
    driver.expectMessage(texts::kConfirmReset, text("&Reset"));
    driver.expectMessage(texts::kReset);
    world.click("factoryResetButton");
    QCOMPARE(int(world.service.requests().size()), 1);
    world.service.removePrinter("left");
    QTRY_VERIFY(!world.printer());
    world.plugIn();
    QTest::keyClick(world.dialog, Qt::Key_Escape);
    PreferencesWorld::settle();
    QVERIFY(!world.dialog);
}

void tst_OnboardPreferences::resetsToFactoryValues()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.service.onRequest("reset_eeprom_completely", [&world](const Json::Value&) {
        world.service.setEeprom("left", sampleMapWithHeater(200));
        return Json::Value();
    });
    ModalDriver driver;
    driver.expectMessage(texts::kConfirmReset, text("&Reset"));
    driver.expectMessage(texts::kReset);
    world.click("factoryResetButton");
    QStringList methods;
    for (const ScriptedService::Request& request : world.service.requests())
        methods.append(QString::fromStdString(request.method));
    QCOMPARE(methods, words({"reset_eeprom_completely", "read_eeprom"}));
    QCOMPARE(world.service.lastRequest("reset_eeprom_completely")["machine"].asString(),
             std::string("left"));
    QCOMPARE(world.heater().value(), 200.0);
    QCOMPARE(world.enabled(), text("FR-"));
    QCOMPARE(world.notice(), QString());
    QVERIFY(!QApplication::overrideCursor());
}

void tst_OnboardPreferences::doesNotResetWithoutTheAnswer()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    ModalDriver driver;
    driver.expectMessage(texts::kConfirmReset, text("&Cancel"));
    world.click("factoryResetButton");
    // Enter means no, too.
    driver.expect([](QDialog* box) { QTest::keyClick(box, Qt::Key_Return); });
    world.click("factoryResetButton");
    driver.expect([](QDialog* box) { QTest::keyClick(box, Qt::Key_Escape); });
    world.click("factoryResetButton");
    QVERIFY(world.service.requests().empty());
    QCOMPARE(world.notice(), QString());
}

void tst_OnboardPreferences::saysThatResettingFailed()
{
    TestLog log;
    log.expectError("The machine is busy");
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.service.failNext("reset_eeprom_completely",
                           PreferencesWorld::error("MachineStateException", "The machine is busy"));
    ModalDriver driver;
    driver.expectMessage(texts::kConfirmReset, text("&Reset"));
    driver.expectMessage(texts::kFailedReset);
    world.click("factoryResetButton");
    QVERIFY(world.service.requests("read_eeprom").empty());
    QCOMPARE(world.enabled(), text("FRW"));
    QCOMPARE(world.notice(), text("The printer answered: The machine is busy"));
    QCOMPARE(world.heater().value(), 230.0);
}

void tst_OnboardPreferences::offersToReadAgainAfterAResetThatCouldNotBeRead()
{
    TestLog log;
    log.expectError("Not now");
    PreferencesWorld world;
    world.open();
    world.service.onRequest("reset_eeprom_completely", [&world](const Json::Value&) {
        world.service.setEeprom("left", sampleMapWithHeater(200));
        return Json::Value();
    });
    world.service.failNext("read_eeprom", PreferencesWorld::error("Other", "Not now"));
    ModalDriver driver;
    driver.expectMessage(texts::kConfirmReset, text("&Reset"));
    driver.expectMessage(texts::kFailedReset);
    world.click("factoryResetButton");
    QCOMPARE(world.heater().value(), 220.0);
    QCOMPARE(world.notice(), text("The printer's preferences may not be those shown here."));
    QCOMPARE(world.noticeButton(), text("Read Again"));

    world.click("noticeButton");
    QCOMPARE(world.heater().value(), 200.0);
    QCOMPARE(world.notice(), QString());
}

void tst_OnboardPreferences::showsThatItResetsBeforeItWaits()
{
    /** Sees what is painted of the notice. */
    class Painted : public QObject
    {
    public:
        bool eventFilter(QObject* watched, QEvent* event) override
        {
            if (event->type() == QEvent::Paint)
                seen.append(static_cast<QLabel*>(watched)->text());
            return false;
        }
        QStringList seen;
    };

    TestLog log;
    PreferencesWorld world;
    world.open();
    Painted painted;
    world.child<QLabel>("noticeText").installEventFilter(&painted);
    QStringList seenAtRequest;
    Qt::CursorShape cursor = Qt::ArrowCursor;
    // The dialog's thread waits while this runs.
    world.service.onRequest("reset_eeprom_completely", [&](const Json::Value&) {
        seenAtRequest = painted.seen;
        if (QApplication::overrideCursor())
            cursor = QApplication::overrideCursor()->shape();
        return Json::Value();
    });
    world.service.answerNext("read_eeprom", sampleMap());
    ModalDriver driver;
    driver.expectMessage(texts::kConfirmReset, text("&Reset"));
    driver.expect([](QDialog* box) {
        QCOMPARE(messageTexts(box), texts::kReset);
        QVERIFY(!QApplication::overrideCursor());
        box->reject();
    });
    world.click("factoryResetButton");
    QCOMPARE(seenAtRequest, words({"Resetting..."}));
    QCOMPARE(cursor, Qt::WaitCursor);
}

void tst_OnboardPreferences::closesAtOnceWithoutChanges()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.click("cancelButton");
    QVERIFY(!world.dialog->isVisible());
    QCOMPARE(world.dialog->result(), int(QDialog::Rejected));
}

void tst_OnboardPreferences::asksBeforeItClosesWithChanges_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("closes");
    QTest::addColumn<int>("writes");

    QTest::newRow("save") << text("&Save") << true << 1;
    QTest::newRow("without saving") << text("Close &without Saving") << true << 0;
    QTest::newRow("cancel") << text("&Cancel") << false << 0;
    QTest::newRow("escape") << QString() << false << 0;
}

void tst_OnboardPreferences::asksBeforeItClosesWithChanges()
{
    QFETCH(QString, answer);
    QFETCH(bool, closes);
    QFETCH(int, writes);
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    ModalDriver driver;
    driver.expect([answer](QDialog* box) {
        QCOMPARE(messageTexts(box), texts::kDiscard);
        if (answer.isEmpty())
            QTest::keyClick(box, Qt::Key_Escape);
        else
            pressButton(box, answer);
    });
    if (writes > 0)
        driver.expectMessage(texts::kWritten);

    // By the window's own close button.
    world.dialog->close();

    QVERIFY(driver.isDone());
    QCOMPARE(!world.dialog->isVisible(), closes);
    QCOMPARE(int(world.service.requests("write_eeprom").size()), writes);
    PreferencesWorld::settle();
    QCOMPARE(world.dialog.isNull(), closes);
    if (!closes)
        QCOMPARE(world.heater().value(), 230.0);
}

void tst_OnboardPreferences::closesThoughSavingFailed()
{
    TestLog log;
    log.expectError("No room");
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.service.failNext("write_eeprom", PreferencesWorld::error("EepromWriteError", "No room"));
    ModalDriver driver;
    driver.expectMessage(texts::kDiscard, text("&Save"));
    driver.expect([&world](QDialog* box) {
        QCOMPARE(messageTexts(box), texts::kFailedWrite);
        QVERIFY(world.dialog->isVisible());
        pressButton(box, text("&OK"));
    });
    QTest::keyClick(world.dialog, Qt::Key_Escape);
    QVERIFY(!world.dialog->isVisible());
}

void tst_OnboardPreferences::deletesItselfWhenClosed()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.click("cancelButton");
    PreferencesWorld::settle();
    QVERIFY(!world.dialog);
    // What the service tells afterwards meets nobody.
    world.unplug();
    world.plugIn();
    QVERIFY(world.service.requests("read_eeprom").empty());
}

QTEST_MAIN(tst_OnboardPreferences)
#include "tst_onboard_preferences.moc"
