#include "preferences_world.h"

#include <QDateTime>
#include <QListWidget>
#include <QLocale>

using namespace trovek;

namespace {

const QStringList kRefused = {QStringLiteral("Failed to load onboard preferences")};

EepromBackup backupAt(const char* name, int second)
{
    const QDateTime time(QDate(2026, 3, 14), QTime(9, 26, second));
    return {name, time.toMSecsSinceEpoch()};
}

QString timeText(int second)
{
    return QLocale().toString(QDate(2026, 3, 14), QLocale::ShortFormat) +
           QStringLiteral(", 09:26:%1").arg(second, 2, 10, QLatin1Char('0'));
}

} // namespace

/** Values from backups, which become changes. */
class tst_OnboardPreferencesBackups : public QObject
{
    Q_OBJECT

private slots:
    void listsTheBackupsByTheirTimes();
    void loadsABackupAsChanges();
    void loadsNothingWithoutAChoice();
    void saysThatThereAreNoBackups();
    void saysThatBackupsCannotBeRead();
    void refusesABackupOfAnotherFirmware();
    void loadsNoBackupWhenThePrinterHasGone();
};

void tst_OnboardPreferencesBackups::listsTheBackupsByTheirTimes()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.service.addEepromBackup("left", backupAt("10", 53), sampleMapWithHeater(201));
    world.service.addEepromBackup("left", backupAt("9", 5), sampleMapWithHeater(202));
    ModalDriver driver;
    driver.expect([](QDialog* dialog) {
        QCOMPARE(dialog->windowTitle(), text("Backups"));
        auto* const list = dialog->findChild<QListWidget*>(QStringLiteral("backups"));
        QStringList times;
        for (int row = 0; row < list->count(); ++row)
            times.append(list->item(row)->text());
        QCOMPARE(times, QStringList({timeText(53), timeText(5)}));
        QVERIFY(list->hasFocus());
        QCOMPARE(list->currentRow(), 0);
        list->clearSelection();
        for (const QPushButton* button : dialog->findChildren<QPushButton*>())
            QCOMPARE(button->isEnabled(), button->text() == text("&Cancel"));
        list->setCurrentRow(1);
        for (const QPushButton* button : dialog->findChildren<QPushButton*>())
            QVERIFY(button->isEnabled());
        pressButton(dialog, text("&Cancel"));
    });
    world.click("backupsButton");
    QCOMPARE(world.service.lastRequest("list_eeprom_backups")["machine"].asString(),
             std::string("left"));
}

void tst_OnboardPreferencesBackups::loadsABackupAsChanges()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.service.addEepromBackup("left", backupAt("10", 53), sampleMapWithHeater(201));
    world.service.addEepromBackup("left", backupAt("9", 5), sampleMapWithHeater(220));
    ModalDriver driver;
    driver.expect([](QDialog* dialog) { QTest::keyClick(dialog, Qt::Key_Return); });
    world.click("backupsButton");
    QCOMPARE(world.service.lastRequest("read_eeprom_backup")["backup"].asString(),
             std::string("10"));
    QCOMPARE(world.heater().value(), 201.0);
    QCOMPARE(world.enabled(), text("FRW"));
    QCOMPARE(world.notice(), text("The backup of %1 has been loaded. The printer keeps its own "
                                  "values until you write the changes.")
                                 .arg(timeText(53)));
    QVERIFY(world.service.requests("write_eeprom").empty());

    driver.expect([](QDialog* dialog) {
        auto* const list = dialog->findChild<QListWidget*>(QStringLiteral("backups"));
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                          list->visualItemRect(list->item(1)).center());
        pressButton(dialog, text("&Load"));
    });
    world.click("backupsButton");
    QCOMPARE(world.heater().value(), 220.0);
    QCOMPARE(world.notice(),
             text("The backup of %1 has been loaded. Its values are the same as the printer's.")
                 .arg(timeText(5)));
    QCOMPARE(world.enabled(), text("FR-"));
}

void tst_OnboardPreferencesBackups::loadsNothingWithoutAChoice()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.service.addEepromBackup("left", backupAt("10", 53), sampleMapWithHeater(201));
    ModalDriver driver;
    driver.expect([](QDialog* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    world.click("backupsButton");
    QVERIFY(world.service.requests("read_eeprom_backup").empty());
    QCOMPARE(world.heater().value(), 220.0);
    QCOMPARE(world.notice(), QString());
}

void tst_OnboardPreferencesBackups::saysThatThereAreNoBackups()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    ModalDriver driver;
    driver.expect([](QDialog* dialog) {
        QCOMPARE(messageTexts(dialog),
                 words({"There are no backups yet. The printer's preferences are backed up "
                        "whenever they are about to be written or reset."}));
        QVERIFY(!dialog->findChild<QListWidget*>()->isVisible());
        pressButton(dialog, text("&Close"));
    });
    world.click("backupsButton");
    QCOMPARE(world.enabled(), text("FR-"));
}

void tst_OnboardPreferencesBackups::saysThatBackupsCannotBeRead()
{
    TestLog log;
    log.expectError("It prints <b>");
    log.expectError("It is damaged");
    PreferencesWorld world;
    world.open();
    world.service.addEepromBackup("left", backupAt("10", 53), sampleMapWithHeater(201));
    world.service.failNext("list_eeprom_backups",
                           PreferencesWorld::error("MachineStateException", "It prints <b>"));
    ModalDriver driver;
    driver.expect([](QDialog* box) {
        QCOMPARE(messageTexts(box), words({"Failed to read the backups", "It prints <b>"}));
        for (const QLabel* label : box->findChildren<QLabel*>())
            QVERIFY(label->textFormat() == Qt::PlainText || !label->text().contains(text("<b>")));
        pressButton(box, text("&OK"));
    });
    world.click("backupsButton");
    QVERIFY(driver.isDone());

    world.service.failNext("read_eeprom_backup", PreferencesWorld::error("Any", "It is damaged"));
    driver.expect([](QDialog* dialog) { QTest::keyClick(dialog, Qt::Key_Return); });
    driver.expectMessage(words({"Failed to read the backups", "It is damaged"}));
    world.click("backupsButton");
    QCOMPARE(world.heater().value(), 220.0);
    QCOMPARE(world.enabled(), text("FR-"));
    QVERIFY(!QApplication::overrideCursor());
}

void tst_OnboardPreferencesBackups::refusesABackupOfAnotherFirmware()
{
    TestLog log;
    log.allowErrors("Member size mismatch");
    PreferencesWorld world;
    world.open();
    Json::Value other = sampleMapWithHeater(201);
    other["eeprom_map"].removeMember("sound");
    world.service.addEepromBackup("left", backupAt("10", 53), other);
    ModalDriver driver;
    driver.expect([](QDialog* dialog) { QTest::keyClick(dialog, Qt::Key_Return); });
    driver.expectMessage(
        kRefused + QStringList(text("The backup of %1 is of another printer or of another firmware "
                                    "version.")
                                   .arg(timeText(53))));
    world.click("backupsButton");
    QCOMPARE(world.heater().value(), 220.0);
    QCOMPARE(world.enabled(), text("FR-"));
}

void tst_OnboardPreferencesBackups::loadsNoBackupWhenThePrinterHasGone()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.service.addEepromBackup("left", backupAt("10", 53), sampleMapWithHeater(201));
    ModalDriver driver;
    driver.expect([&world](QDialog* dialog) {
        world.unplug();
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    world.click("backupsButton");
    QVERIFY(world.service.requests("read_eeprom_backup").empty());
    QCOMPARE(world.heater().value(), 220.0);
    QCOMPARE(world.enabled(), text("---"));
}

QTEST_MAIN(tst_OnboardPreferencesBackups)
#include "tst_onboard_preferences_backups.moc"
