#include "preferences_world.h"

#include <QCheckBox>
#include <QLabel>

using namespace trovek;

/** How the dialog is made, and why not. */
class tst_OnboardPreferencesCreate : public QObject
{
    Q_OBJECT

private slots:
    void refusesNoPrinter();
    void refusesAnArchetypeAndAPrinterThatHasGone();
    void tellsWhyThePrinterCannotBeRead_data();
    void tellsWhyThePrinterCannotBeRead();
    void takesAnErrorOfAnyShape_data();
    void takesAnErrorOfAnyShape();
    void opensWithAnOddDocument_data();
    void opensWithAnOddDocument();
    void hasItsButtonsWithTheirTextsAndToolTips();
    void namesThePrinterWithoutMarkup();
    void fitsOnASmallScreen();
    void goesFromTheFilterToTheFormAndToTheButtonsAsTheyStand();
};

void tst_OnboardPreferencesCreate::refusesNoPrinter()
{
    TestLog log;
    log.expectError("Null machine");
    PreferencesWorld world;
    ModalDriver driver;
    driver.expectMessage(texts::kNotConnected);
    QVERIFY(!ui::OnboardPreferences::create(world.facade, nullptr, nullptr));
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void tst_OnboardPreferencesCreate::refusesAnArchetypeAndAPrinterThatHasGone()
{
    TestLog log;
    log.expectError("Archetype machine");
    log.expectError("Archetype machine");
    PreferencesWorld world;
    Printer* const gone = world.printer();
    world.service.addPrinter(ScriptedService::archetype(Printer::Fabrino2));
    world.unplug();
    QTRY_COMPARE(int(world.facade.printers().size()), 1);
    ModalDriver driver;
    driver.expectMessage(texts::kNotConnected);
    driver.expectMessage(texts::kNotConnected);
    QVERIFY(
        !ui::OnboardPreferences::create(world.facade, world.facade.printers().front(), nullptr));
    QVERIFY(!ui::OnboardPreferences::create(world.facade, gone, nullptr));
    QVERIFY(world.service.requests("read_eeprom").empty());
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void tst_OnboardPreferencesCreate::tellsWhyThePrinterCannotBeRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("message");
    QTest::addColumn<QString>("logged");

    QTest::newRow("it prints") << text("MachineStateException") << texts::kBusy << QString();
    QTest::newRow("no map") << text("MissingEepromMapError") << texts::kMissingMap << QString();
    QTest::newRow("another one") << text("EepromWriteError") << texts::kGeneric
                                 << text("Trovek exception: EepromWriteError");
    QTest::newRow("another case") << text("machineStateException") << texts::kGeneric
                                  << text("Trovek exception: machineStateException");
}

void tst_OnboardPreferencesCreate::tellsWhyThePrinterCannotBeRead()
{
    QFETCH(QString, name);
    QFETCH(QStringList, message);
    QFETCH(QString, logged);
    TestLog log;
    log.expectError("It said no");
    if (!logged.isEmpty())
        log.expectError(logged);
    PreferencesWorld world;
    world.service.failNext("read_eeprom", PreferencesWorld::error(qPrintable(name), "It said no"));
    ModalDriver driver;
    driver.expectMessage(message);
    QVERIFY(!world.create());
    QCOMPARE(log.messages(Log::Error).front(), std::string("It said no"));
    for (const LogEntry& entry : log.sink().entries()) {
        if (entry.severity == Log::Error)
            QCOMPARE(entry.file, std::string(kPreferencesUnit));
    }
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
    QVERIFY(!QApplication::overrideCursor());
}

void tst_OnboardPreferencesCreate::takesAnErrorOfAnyShape_data()
{
    QTest::addColumn<QString>("data");

    QTest::newRow("null") << text("null");
    QTest::newRow("a text") << text("\"MachineStateException\"");
    QTest::newRow("a list") << text("[{\"exception\": {\"name\": \"MachineStateException\"}}]");
    QTest::newRow("name beside the exception") << text("{\"name\": \"MachineStateException\"}");
    QTest::newRow("the exception is a text") << text("{\"exception\": \"MachineStateException\"}");
    QTest::newRow("the exception is a list") << text("{\"exception\": [\"name\"]}");
    QTest::newRow("no name") << text("{\"exception\": {\"kind\": \"MachineStateException\"}}");
    QTest::newRow("the name is a number") << text("{\"exception\": {\"name\": 3}}");
    QTest::newRow("the name is an object") << text("{\"exception\": {\"name\": {}}}");
}

void tst_OnboardPreferencesCreate::takesAnErrorOfAnyShape()
{
    QFETCH(QString, data);
    TestLog log;
    log.expectError("Odd");
    PreferencesWorld world;
    world.service.failNext("read_eeprom",
                           JsonRpcException("Odd", parse("[" + data.toStdString() + "]")[0]));
    ModalDriver driver;
    driver.expectMessage(texts::kGeneric);
    QVERIFY(!world.create());
    QCOMPARE(int(log.messages(Log::Error).size()), 1);
}

void tst_OnboardPreferencesCreate::opensWithAnOddDocument_data()
{
    QTest::addColumn<QString>("document");

    QTest::newRow("no map") << text("{}");
    QTest::newRow("the map is a list") << text("{\"eeprom_map\": [1, 2]}");
    QTest::newRow("entries that are none") << text("{\"eeprom_map\": {\"a\": 1, \"b\": null}}");
}

void tst_OnboardPreferencesCreate::opensWithAnOddDocument()
{
    QFETCH(QString, document);
    TestLog log;
    PreferencesWorld world(parse(document.toStdString()));
    world.open();
    QCOMPARE(world.enabled(), text("FR-"));
}

void tst_OnboardPreferencesCreate::hasItsButtonsWithTheirTextsAndToolTips()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    QCOMPARE(world.dialog->windowTitle(), text("Onboard Preferences"));
    QStringList buttons;
    for (const QPushButton* button : world.dialog->findChildren<QPushButton*>()) {
        // Enter in a field presses none of them.
        QVERIFY2(!button->autoDefault() && !button->isDefault(), qPrintable(button->text()));
        if (button->isVisible())
            buttons.append(button->text() + QLatin1Char('|') + button->toolTip());
    }
    QCOMPARE(buttons,
             words({"&Factory Reset|Reset the Orvane's onboard preferences to factory defaults",
                    "Backups...|Load the values of a backup as changes",
                    "Load from File...|Load the values of a file as changes",
                    "Save to File...|Save all values shown here, with the changes",
                    "&Cancel|Close the dialog without saving any changes",
                    "&Write Changes|Save changes to the onboard preferences to the printer"}));
    QCOMPARE(world.enabled(), text("FR-"));
    QCOMPARE(world.notice(), QString());
    QCOMPARE(world.child<QCheckBox>("showChangedOnly").text(), text("Show changed only"));
    QVERIFY(!world.child<QCheckBox>("showChangedOnly").isChecked());
    QVERIFY(world.child<QLineEdit>("filterEdit").hasFocus());
}

void tst_OnboardPreferencesCreate::namesThePrinterWithoutMarkup()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    QCOMPARE(world.child<QLabel>("printer").text(), text("Left <b>one</b>, firmware 7.2"));
    QCOMPARE(world.child<QLabel>("printer").textFormat(), Qt::PlainText);
}

void tst_OnboardPreferencesCreate::fitsOnASmallScreen()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    const QSize least = world.dialog->minimumSizeHint();
    QVERIFY2(least.width() <= 640, qPrintable(QString::number(least.width())));
    QVERIFY2(least.height() <= 480, qPrintable(QString::number(least.height())));
    // Nothing is cut off then.
    world.dialog->resize(least);
    for (const QPushButton* button : world.dialog->findChildren<QPushButton*>()) {
        if (button->isVisible())
            QVERIFY2(button->width() >= button->minimumSizeHint().width(),
                     qPrintable(button->text()));
    }
}

void tst_OnboardPreferencesCreate::goesFromTheFilterToTheFormAndToTheButtonsAsTheyStand()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    QWidget& first = world.child<QWidget>("axis0");
    world.child<QWidget>("filterEdit").setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget()->objectName(), text("showChangedOnly"));
    while (QApplication::focusWidget() != &first) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QVERIFY(world.grama().isAncestorOf(QApplication::focusWidget()));
    }
    while (world.grama().isAncestorOf(QApplication::focusWidget()))
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget()->objectName(), text("backupsButton"));
    for (const char* next : {"loadFromFileButton", "saveToFileButton", "factoryResetButton",
                             "cancelButton", "writeButton", "filterEdit"}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget()->objectName(), text(next));
    }
}

QTEST_MAIN(tst_OnboardPreferencesCreate)
#include "tst_onboard_preferences_create.moc"
