#include "preferences_world.h"

#include <QLabel>

using namespace trovek;

namespace {

const QString kGone = QStringLiteral("The printer is not connected. Connect it again to go on.");
const QString kBackWithChanges =
    QStringLiteral("The printer is back, and its preferences were read anew. Your changes have not "
                   "been written.");
const QString kUnread = QStringLiteral("The printer's preferences could not be read.");

} // namespace

/** The dialog while its printer goes away, comes back and is another one. */
class tst_OnboardPreferencesPrinter : public QObject
{
    Q_OBJECT

private slots:
    void waitsWhileThePrinterIsAway();
    void readsThePrinterAnewWhenItIsBack();
    void enablesWritingWhenThePrinterIsBack();
    void offersTheChangesOfBeforeAgain();
    void restoresTheChangesAndNothingElse();
    void forgetsTheChangesOfBeforeOnceWritten();
    void keepsTheChangesOfBeforeOverAnotherLoss();
    void mindsOnlyItsOwnPrinter();
    void saysThatAnotherPrinterIsInItsPlace();
    void waitsUntilThePrinterIsReady();
    void readsNothingWhenThePrinterGoesBeforeItIsReady();
    void saysThatThePrinterCannotBeRead();
    void readsAgainOnRequest();
    void changesNothingUnderAQuestion();
    void stacksNoMessages();
    void outlivesTheLossOfTheLink();
    void savesToAFileWhileThePrinterIsAway();
};

void tst_OnboardPreferencesPrinter::waitsWhileThePrinterIsAway()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    QCOMPARE(world.enabled(), text("FRW"));

    world.unplug();

    QCOMPARE(world.enabled(), text("---"));
    QCOMPARE(world.notice(), kGone);
    QCOMPARE(world.noticeButton(), QString());
    QCOMPARE(world.heater().value(), 230.0);
    QVERIFY(world.button("saveToFileButton").isEnabled());
    QVERIFY(world.button("cancelButton").isEnabled());
    QVERIFY(world.service.requests().empty());
}

void tst_OnboardPreferencesPrinter::readsThePrinterAnewWhenItIsBack()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.unplug();
    world.service.setEeprom("left", sampleMapWithHeater(190));

    world.plugIn();

    QCOMPARE(int(world.service.requests("read_eeprom").size()), 1);
    QCOMPARE(world.service.lastRequest("read_eeprom")["machine"].asString(), std::string("left"));
    QCOMPARE(world.heater().value(), 190.0);
    QVERIFY(!world.grama().isModified());
    QCOMPARE(world.notice(), QString());
}

// What was read may be written back: a machine that was exchanged behind its name has then what
// is shown.
void tst_OnboardPreferencesPrinter::enablesWritingWhenThePrinterIsBack()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.unplug();
    world.plugIn();
    QCOMPARE(world.enabled(), text("FRW"));
    ModalDriver driver;
    driver.expectMessage(texts::kWritten);
    world.click("writeButton");
    QCOMPARE(world.service.lastRequest("write_eeprom")["map"].toStyledString(),
             sampleMap().toStyledString());
    QCOMPARE(world.enabled(), text("FR-"));
}

void tst_OnboardPreferencesPrinter::offersTheChangesOfBeforeAgain()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.unplug();
    world.plugIn();
    QCOMPARE(world.heater().value(), 220.0);
    QCOMPARE(world.notice(), kBackWithChanges);
    QCOMPARE(world.noticeButton(), text("Restore Changes"));

    world.click("noticeButton");

    QCOMPARE(world.heater().value(), 230.0);
    QVERIFY(world.grama().isModified());
    QCOMPARE(world.notice(), QString());
    QCOMPARE(world.enabled(), text("FRW"));
}

void tst_OnboardPreferencesPrinter::restoresTheChangesAndNothingElse()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    PreferencesWorld::type(world.density(), text("1.3"));
    world.unplug();
    // Somebody else has changed settings meanwhile, one that is changed here and one that is not.
    Json::Value map = sampleMapWithHeater(190);
    entryOf(map, "nozzle_diameter")[0] = 0.8;
    world.service.setEeprom("left", map);
    world.plugIn();
    QTRY_COMPARE(world.noticeButton(), text("Restore Changes"));
    // And the user goes on meanwhile.
    auto& material = *world.grama().findChild<QComboBox*>();
    material.setFocus();
    QTest::keyClick(&material, Qt::Key_Down);

    world.click("noticeButton");

    entryOf(map, "heater_temperature")[0] = 230;
    entryOf(map, "filament/density")[0] = 1.3;
    entryOf(map, "filament/material")[0] = 2;
    QCOMPARE(world.grama().map().toStyledString(), map.toStyledString());
    QCOMPARE(world.grama().changedCount(), 3);
}

void tst_OnboardPreferencesPrinter::forgetsTheChangesOfBeforeOnceWritten()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.unplug();
    world.plugIn();
    ModalDriver driver;
    driver.expectMessage(texts::kWritten);
    world.click("writeButton");
    QCOMPARE(world.notice(), QString());
    world.unplug();
    world.plugIn();
    QCOMPARE(world.notice(), QString());
}

void tst_OnboardPreferencesPrinter::keepsTheChangesOfBeforeOverAnotherLoss()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.unplug();
    world.plugIn();
    world.unplug();
    QCOMPARE(world.notice(), kGone);
    world.plugIn();
    QCOMPARE(world.notice(), kBackWithChanges);
    world.click("noticeButton");
    QCOMPARE(world.heater().value(), 230.0);
}

void tst_OnboardPreferencesPrinter::mindsOnlyItsOwnPrinter()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    Printer::Data right = ScriptedService::machine("right", Printer::Fabrino2X);
    right.portName = "usb1";
    world.plugIn(right);
    world.service.changePrinter(right);
    world.service.removePrinter("right");
    QTRY_VERIFY(!world.printer("right"));
    PreferencesWorld::settle();
    QCOMPARE(world.enabled(), text("FR-"));
    QCOMPARE(world.notice(), QString());
    QVERIFY(world.service.requests().empty());
}

void tst_OnboardPreferencesPrinter::saysThatAnotherPrinterIsInItsPlace()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.unplug();
    Printer::Data elsewhere = ScriptedService::machine("elsewhere", Printer::Fabrino2X);
    elsewhere.portName = "usb2";
    world.plugIn(elsewhere);
    QCOMPARE(world.notice(), kGone);

    Printer::Data right = ScriptedService::machine("right", Printer::Fabrino2);
    right.displayName = "The <i>right</i> one";
    right.portName = "usb1";
    world.plugIn(right);

    QCOMPARE(world.notice(), text("Another printer, The <i>right</i> one, is connected in place of "
                                  "this one. Connect this one again to go on."));
    QCOMPARE(world.enabled(), text("---"));
    QVERIFY(world.service.requests().empty());
    // That one unplugged somewhere else changes nothing here.
    world.service.removePrinter("elsewhere");
    QTRY_VERIFY(!world.printer("elsewhere"));
    QVERIFY(world.notice().startsWith(text("Another printer, ")));
    world.service.removePrinter("right");
    QTRY_COMPARE(world.notice(), kGone);
    world.plugIn();
    QCOMPARE(world.notice(), QString());
    QCOMPARE(world.enabled(), text("FRW"));
}

void tst_OnboardPreferencesPrinter::waitsUntilThePrinterIsReady()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.unplug();
    world.service.setEeprom("left", sampleMapWithHeater(190));
    Printer::Data data = PreferencesWorld::machine();
    data.state = Printer::Connecting;
    world.plugIn(data);
    QCOMPARE(world.notice(), text("The printer is getting ready."));
    QCOMPARE(world.enabled(), text("---"));
    QVERIFY(world.service.requests().empty());

    data.state = Printer::Idle;
    world.service.changePrinter(data);

    QTRY_COMPARE(world.enabled(), text("FRW"));
    QCOMPARE(world.heater().value(), 190.0);
    QCOMPARE(world.notice(), QString());
    // Later changes are none of its business.
    data.platformTargetTemperature = 60;
    world.service.changePrinter(data);
    QTRY_COMPARE(world.printer()->platformTargetTemperature(), 60);
    QCOMPARE(int(world.service.requests("read_eeprom").size()), 1);
}

void tst_OnboardPreferencesPrinter::readsNothingWhenThePrinterGoesBeforeItIsReady()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.unplug();
    Printer::Data data = PreferencesWorld::machine();
    data.state = Printer::Connecting;
    world.plugIn(data);
    world.unplug();
    QCOMPARE(world.notice(), kGone);
    QVERIFY(world.service.requests().empty());
}

void tst_OnboardPreferencesPrinter::saysThatThePrinterCannotBeRead()
{
    TestLog log;
    log.expectError("It prints");
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.unplug();
    world.service.failNext("read_eeprom",
                           PreferencesWorld::error("MachineStateException", "It prints"));
    ModalDriver driver;
    driver.expectMessage(texts::kAddedError);
    world.plugIn();
    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QCOMPARE(world.enabled(), text("---"));
    QCOMPARE(world.notice(), kUnread);
    QCOMPARE(world.noticeButton(), text("Read Again"));
    QCOMPARE(world.heater().value(), 230.0);
}

void tst_OnboardPreferencesPrinter::readsAgainOnRequest()
{
    TestLog log;
    log.expectError("It prints");
    log.expectError("It prints");
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.unplug();
    for (int i = 0; i < 2; ++i)
        world.service.failNext("read_eeprom",
                               PreferencesWorld::error("MachineStateException", "It prints"));
    ModalDriver driver;
    driver.expectMessage(texts::kAddedError);
    driver.expectMessage(texts::kAddedError);
    world.plugIn();
    QTRY_COMPARE(world.noticeButton(), text("Read Again"));
    QTRY_VERIFY(!QApplication::activeModalWidget());
    world.click("noticeButton");
    QCOMPARE(world.notice(), kUnread);
    world.click("noticeButton");
    QCOMPARE(world.enabled(), text("FRW"));
    QCOMPARE(world.heater().value(), 220.0);
    QCOMPARE(world.notice(), kBackWithChanges);
}

void tst_OnboardPreferencesPrinter::changesNothingUnderAQuestion()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    ModalDriver driver;
    driver.expect([&world](QDialog* box) {
        world.unplug();
        world.plugIn();
        QCOMPARE(world.heater().value(), 230.0);
        QVERIFY(world.service.requests("read_eeprom").empty());
        pressButton(box, text("&Cancel"));
    });
    QTest::keyClick(world.dialog, Qt::Key_Escape);
    // Read as soon as the question is answered.
    QTRY_COMPARE(world.notice(), kBackWithChanges);
    QCOMPARE(int(world.service.requests("read_eeprom").size()), 1);
    QCOMPARE(world.heater().value(), 220.0);

    world.click("noticeButton");
    QCOMPARE(world.heater().value(), 230.0);
    // Saved is what the user saw when the question was asked.
    driver.expect([&world](QDialog* box) {
        world.unplug();
        world.plugIn();
        pressButton(box, text("&Save"));
    });
    driver.expectMessage(texts::kWritten);
    world.service.clearRequests();
    QTest::keyClick(world.dialog, Qt::Key_Escape);
    QCOMPARE(world.service.lastRequest("write_eeprom")["map"].toStyledString(),
             sampleMapWithHeater(230).toStyledString());
    PreferencesWorld::settle();
    QVERIFY(!world.dialog);
}

void tst_OnboardPreferencesPrinter::stacksNoMessages()
{
    TestLog log;
    log.expectError("It prints");
    PreferencesWorld world;
    world.open();
    world.unplug();
    world.service.failNext("read_eeprom",
                           PreferencesWorld::error("MachineStateException", "It prints"));
    ModalDriver driver;
    driver.expect([&world](QDialog* box) {
        QCOMPARE(messageTexts(box), texts::kAddedError);
        // A loose plug.
        for (int i = 0; i < 3; ++i) {
            world.unplug();
            world.plugIn();
        }
        QCOMPARE(QApplication::activeModalWidget(), box);
        pressButton(box, text("&OK"));
    });
    world.service.addPrinter(PreferencesWorld::machine());
    QTRY_COMPARE_WITH_TIMEOUT(world.enabled(), text("FRW"), 20000);
    QCOMPARE(int(world.service.requests("read_eeprom").size()), 2);
}

void tst_OnboardPreferencesPrinter::outlivesTheLossOfTheLink()
{
    TestLog log;
    log.allowErrors("connection");
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.service.stop();
    QTRY_COMPARE(world.notice(), kGone);
    QCOMPARE(world.enabled(), text("---"));
    world.service.start();
    world.connectFacade();
    QCOMPARE(world.enabled(), text("FRW"));
    QCOMPARE(world.notice(), kBackWithChanges);
}

void tst_OnboardPreferencesPrinter::savesToAFileWhileThePrinterIsAway()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    world.unplug();
    const QString path = world.folder.filePath(text("mine.json"));
    ModalDriver driver;
    driver.expectSaveDialog(path);
    world.click("saveToFileButton");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(parse(file.readAll().toStdString()).toStyledString(),
             sampleMapWithHeater(230).toStyledString());
}

QTEST_MAIN(tst_OnboardPreferencesPrinter)
#include "tst_onboard_preferences_printer.moc"
