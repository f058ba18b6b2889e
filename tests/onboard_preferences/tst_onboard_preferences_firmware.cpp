#include "preferences_world.h"

#include <QLabel>

using namespace trovek;

namespace {

const QString kGone = QStringLiteral("The printer is not connected. Connect it again to go on.");

QString unsuitable(const char* firmware)
{
    return QStringLiteral("The printer has come back with other preferences (firmware %1). This "
                          "window cannot edit them: close it and open it again.")
        .arg(text(firmware));
}

Json::Value otherMap()
{
    Json::Value map = sampleMapWithHeater(205);
    map["eeprom_map"]["turbo"] = map["eeprom_map"]["sound"];
    return map;
}

Printer::Data machineWith(const char* firmware)
{
    Printer::Data data = PreferencesWorld::machine();
    data.firmwareVersion = FirmwareVersion(firmware);
    return data;
}

} // namespace

/** The dialog whose printer comes back as another one. */
class tst_OnboardPreferencesFirmware : public QObject
{
    Q_OBJECT

private slots:
    void cannotEditAPrinterWithAnotherMap();
    void keepsTheChangesWhenTheMapIsAnother();
    void cannotEditAPrinterOfAnotherType();
    void takesAnotherFirmwareWithTheSameMap();
    void canBeUsedAgainWhenTheOldFirmwareIsBack();
};

void tst_OnboardPreferencesFirmware::cannotEditAPrinterWithAnotherMap()
{
    TestLog log;
    log.allowErrors("Member size mismatch");
    PreferencesWorld world;
    world.open();
    world.unplug();
    world.service.setEeprom("left", otherMap());
    ModalDriver driver;
    driver.expectMessage(texts::kAddedError);
    world.plugIn(machineWith("7.5"));
    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QVERIFY(log.contains("Member size mismatch", Log::Error));
    QCOMPARE(world.enabled(), text("---"));
    QCOMPARE(world.notice(), unsuitable("7.5"));
    QCOMPARE(world.noticeButton(), QString());
    // Nothing was changed, so that nothing is asked.
    QTest::keyClick(world.dialog, Qt::Key_Escape);
    QVERIFY(!world.dialog->isVisible());
}

void tst_OnboardPreferencesFirmware::keepsTheChangesWhenTheMapIsAnother()
{
    TestLog log;
    log.allowErrors("Member name mismatch");
    PreferencesWorld world;
    world.open();
    PreferencesWorld::type(world.density(), text("1.3"));
    world.unplug();
    // The values before the name that differs are taken before the mismatch is found.
    Json::Value map = sampleMapWithHeater(205);
    entryOf(map, "filament/density")[0] = 2.5;
    map["eeprom_map"]["zound"] = map["eeprom_map"]["sound"];
    map["eeprom_map"].removeMember("sound");
    world.service.setEeprom("left", map);
    ModalDriver driver;
    driver.expectMessage(texts::kAddedError);
    world.plugIn(machineWith("7.5"));
    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QCOMPARE(world.density().value(), 1.3);
    QCOMPARE(world.heater().value(), 220.0);
    QVERIFY(world.grama().isModified());
    QCOMPARE(world.enabled(), text("---"));
}

void tst_OnboardPreferencesFirmware::cannotEditAPrinterOfAnotherType()
{
    TestLog log;
    log.expectError("The printer is of another type than before");
    PreferencesWorld world;
    world.open();
    world.unplug();
    ModalDriver driver;
    driver.expectMessage(texts::kAddedError);
    Printer::Data data = machineWith("4.1");
    data.type = Printer::CubioDual;
    world.plugIn(data);
    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(!QApplication::activeModalWidget());
    QCOMPARE(world.enabled(), text("---"));
    QCOMPARE(world.notice(), unsuitable("4.1"));
    QVERIFY(world.service.requests().empty());
}

void tst_OnboardPreferencesFirmware::takesAnotherFirmwareWithTheSameMap()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.unplug();
    world.service.setEeprom("left", sampleMapWithHeater(190));
    world.plugIn(machineWith("7.3"));
    QCOMPARE(world.enabled(), text("FRW"));
    QCOMPARE(world.heater().value(), 190.0);
    QCOMPARE(world.child<QLabel>("printer").text(), text("Left <b>one</b>, firmware 7.3"));
}

void tst_OnboardPreferencesFirmware::canBeUsedAgainWhenTheOldFirmwareIsBack()
{
    TestLog log;
    log.allowErrors("Member size mismatch");
    PreferencesWorld world;
    world.open();
    world.unplug();
    world.service.setEeprom("left", otherMap());
    ModalDriver driver;
    driver.expectMessage(texts::kAddedError);
    world.plugIn(machineWith("7.5"));
    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(!QApplication::activeModalWidget());
    world.unplug();
    QCOMPARE(world.notice(), kGone);
    world.service.setEeprom("left", sampleMapWithHeater(190));
    world.plugIn();
    QCOMPARE(world.enabled(), text("FRW"));
    QCOMPARE(world.heater().value(), 190.0);
    QCOMPARE(world.notice(), QString());
}

QTEST_MAIN(tst_OnboardPreferencesFirmware)
#include "tst_onboard_preferences_firmware.moc"
