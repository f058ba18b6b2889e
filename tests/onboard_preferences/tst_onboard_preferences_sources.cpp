#include "preferences_world.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QLabel>

using namespace trovek;

namespace {

const QStringList kRefused = {QStringLiteral("Failed to load onboard preferences")};

void chooseFile(ModalDriver& driver, const QString& path)
{
    driver.expect<QFileDialog>([path](QFileDialog* dialog) {
        auto* const edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        edit->setText(QString());
        QTest::keyClicks(edit, path);
        pressButton(dialog, QStringLiteral("&Open"));
    });
}

} // namespace

/** Values in files, what is remembered of them, and the form's filter. */
class tst_OnboardPreferencesSources : public QObject
{
    Q_OBJECT

private slots:
    void savesAllValuesToAFile();
    void saysThatAFileCannotBeWritten();
    void loadsAFileAsChanges();
    void takesAFileOfATextEditor();
    void refusesAFile_data();
    void refusesAFile();
    void namesTheValueThatAFileHasWrong_data();
    void namesTheValueThatAFileHasWrong();
    void takesWhatAPrinterMayHold_data();
    void takesWhatAPrinterMayHold();
    void remembersTheFolderAndTheWindow();
    void remembersNothingWithoutSettings();
    void goesToTheFilter();
    void showsOnlyWhatIsChanged();
};

void tst_OnboardPreferencesSources::savesAllValuesToAFile()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    const QString path = world.folder.filePath(text("mine.json"));
    ModalDriver driver;
    driver.expect<QFileDialog>([&](QFileDialog* dialog) {
        auto* const edit = dialog->findChild<QLineEdit*>(text("fileNameEdit"));
        // The name of the printer, without what no file name may have.
        QCOMPARE(edit->text(), text("Left _b_one__b_ preferences.json"));
        QCOMPARE(dialog->windowTitle(), text("Save to File"));
        QCOMPARE(dialog->nameFilters(), words({"Onboard preferences (*.json)"}));
        edit->setText(QString());
        QTest::keyClicks(edit, world.folder.filePath(text("mine")));
        pressButton(dialog, text("&Save"));
    });
    world.click("saveToFileButton");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    QCOMPARE(parse(bytes.toStdString()).toStyledString(),
             sampleMapWithHeater(230).toStyledString());
    // For people, too; and nothing is left beside it.
    QVERIFY(bytes.contains("\n    \"axis_inversion\""));
    QCOMPARE(QDir(world.folder.path()).entryList(QDir::Files), words({"mine.json"}));
    QVERIFY(world.grama().isModified());
    QVERIFY(world.service.requests().empty());

    driver.expectSaveDialogToBeCanceled();
    world.click("saveToFileButton");
}

void tst_OnboardPreferencesSources::saysThatAFileCannotBeWritten()
{
    TestLog log;
    log.allowErrors("cannot be written");
    PreferencesWorld world;
    world.open();
    const QString folder = world.folder.filePath(text("gone"));
    QVERIFY(QDir().mkpath(folder));
    ModalDriver driver;
    driver.expect<QFileDialog>([&](QFileDialog* dialog) {
        auto* const edit = dialog->findChild<QLineEdit*>(text("fileNameEdit"));
        edit->setText(QString());
        QTest::keyClicks(edit, folder + text("/mine.json"));
        // The folder goes when the dialog has looked at it.
        connect(dialog, &QDialog::accepted, dialog, [&folder] { QDir().rmdir(folder); });
        pressButton(dialog, text("&Save"));
    });
    driver.expect([&](QDialog* box) {
        const QStringList texts = messageTexts(box);
        QCOMPARE(texts.value(0), text("Failed to save the file"));
        QVERIFY2(texts.value(1).contains(text(" cannot be written: ")),
                 qPrintable(texts.join(QLatin1Char(' '))));
        pressButton(box, text("&OK"));
    });
    world.click("saveToFileButton");
    QVERIFY(world.dialog->isVisible());
}

void tst_OnboardPreferencesSources::loadsAFileAsChanges()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    Json::Value map = sampleMapWithHeater(201);
    // Without a point, as a person or another program may write it.
    entryOf(map, "filament/density")[0] = 2;
    const QString path = world.folder.filePath(text("his <b>.json"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromStdString(map.toStyledString()));
    file.close();
    ModalDriver driver;
    chooseFile(driver, path);
    world.click("loadFromFileButton");
    QCOMPARE(world.heater().value(), 201.0);
    QCOMPARE(world.notice(), text("his <b>.json has been loaded. The printer keeps its own values "
                                  "until you write the changes."));
    QCOMPARE(world.child<QLabel>("changedCount").text(), text("Changed: 2"));
    QVERIFY(world.service.requests().empty());
    driver.expectMessage(texts::kWritten);
    world.click("writeButton");
    QCOMPARE(world.notice(), QString());
    entryOf(map, "filament/density")[0] = 2.0;
    QCOMPARE(world.service.lastRequest("write_eeprom")["map"].toStyledString(),
             map.toStyledString());
}

void tst_OnboardPreferencesSources::takesAFileOfATextEditor()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    const QString path = world.folder.filePath(text("mark.json"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        "\xef\xbb\xbf" +
        QByteArray::fromStdString(sampleMapWithHeater(201).toStyledString()).replace("\n", "\r\n"));
    file.close();
    ModalDriver driver;
    chooseFile(driver, path);
    world.click("loadFromFileButton");
    QCOMPARE(world.heater().value(), 201.0);
}

void tst_OnboardPreferencesSources::refusesAFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("end");

    const QString none = text(" is not a file of onboard preferences.");
    const QString other = text(" is of another printer or of another firmware version.");
    QTest::newRow("another map") << QByteArray("{\"schema\":{\"version\":3},\"eeprom_map\":{}}")
                                 << other;
    QTest::newRow("no schema") << QByteArray("{\"eeprom_map\":{}}") << other;
    QTest::newRow("no map") << QByteArray("{\"a\": 1}") << none;
    QTest::newRow("the map is a list") << QByteArray("{\"eeprom_map\": []}") << none;
    QTest::newRow("a list") << QByteArray("[1, 2]") << none;
    QTest::newRow("empty") << QByteArray("") << QString();
    QTest::newRow("no JSON") << QByteArray("G28\n") << QString();
    QTest::newRow("cut off") << QByteArray("{\"eeprom_map\": {") << QString();
    QTest::newRow("bytes") << QByteArray("\0\xff\xfe\x80", 4) << QString();
    QTest::newRow("too deep") << QByteArray(100000, '[') << QString();
}

void tst_OnboardPreferencesSources::refusesAFile()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, end);
    TestLog log;
    log.allowErrors("");
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    const QString path = world.folder.filePath(text("odd.json"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    ModalDriver driver;
    chooseFile(driver, path);
    driver.expect([&](QDialog* box) {
        const QStringList texts = messageTexts(box);
        QCOMPARE(texts.size(), 2);
        QCOMPARE(texts[0], kRefused[0]);
        QVERIFY2(texts[1].contains(text("odd.json")), qPrintable(texts[1]));
        if (end.isEmpty())
            QVERIFY2(texts[1].contains(text(" is not a file of onboard preferences: ")),
                     qPrintable(texts[1]));
        else
            QVERIFY2(texts[1].endsWith(end), qPrintable(texts[1]));
        pressButton(box, text("&OK"));
    });
    world.click("loadFromFileButton");
    QCOMPARE(world.grama().map().toStyledString(), sampleMapWithHeater(230).toStyledString());
    QCOMPARE(world.notice(), QString());
}

void tst_OnboardPreferencesSources::namesTheValueThatAFileHasWrong_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("message");

    const auto row = [](const char* name, const char* entry, const char* value,
                        const char* message) {
        QTest::newRow(name) << text(entry) << text(value) << text(message);
    };
    row("a text for a number", "heater_temperature", "\"hot\"",
        "odd.json has a value of the wrong type for \"Heater Temperature\".");
    row("a number for a text", "machine_name", "5",
        "odd.json has a value of the wrong type for \"Machine Name\".");
    row("above the type", "heater_temperature", "70000",
        "odd.json has a value for \"Heater Temperature\" that the printer does not take.");
    row("not in the list", "filament/material", "7",
        "odd.json has a value for \"Material\" that the printer does not take.");
}

void tst_OnboardPreferencesSources::namesTheValueThatAFileHasWrong()
{
    QFETCH(QString, entry);
    QFETCH(QString, value);
    QFETCH(QString, message);
    TestLog log;
    log.allowErrors("Wrong type of value: ");
    log.allowErrors("Value out of range: ");
    PreferencesWorld world;
    world.open();
    // A good value beside the bad one is not taken either.
    Json::Value map = sampleMap();
    entryOf(map, "sound")[0] = 0;
    entryOf(map, entry.toStdString())[0] = parse("[" + value.toStdString() + "]")[0];
    const QString path = world.folder.filePath(text("odd.json"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromStdString(map.toStyledString()));
    file.close();
    ModalDriver driver;
    chooseFile(driver, path);
    driver.expectMessage(kRefused + QStringList(message));
    world.click("loadFromFileButton");
    QVERIFY(!world.grama().isModified());
    QCOMPARE(world.grama().map().toStyledString(), sampleMap().toStyledString());
}

void tst_OnboardPreferencesSources::takesWhatAPrinterMayHold_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("value");

    QTest::newRow("the largest fixed-point number")
        << text("nozzle_diameter") << text("127.99609375");
    QTest::newRow("the least fixed-point number") << text("nozzle_diameter") << text("-128.0");
    QTest::newRow("the largest single, as it is told")
        << text("filament/density") << text("3.4028235e+38");
    QTest::newRow("the least short") << text("heater_temperature") << text("-32768");
}

// The boxes offer less; a backup or a file brings it along.
void tst_OnboardPreferencesSources::takesWhatAPrinterMayHold()
{
    QFETCH(QString, entry);
    QFETCH(QString, value);
    TestLog log;
    Json::Value map = sampleMap();
    map["eeprom_map"]["heater_temperature"]["type"] = "h";
    PreferencesWorld world(map);
    world.open();
    entryOf(map, entry.toStdString())[0] = parse("[" + value.toStdString() + "]")[0];
    const QString path = world.folder.filePath(text("far.json"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray::fromStdString(map.toStyledString()));
    file.close();

    ModalDriver driver;
    chooseFile(driver, path);
    world.click("loadFromFileButton");

    QVERIFY(driver.isDone());
    QVERIFY(world.grama().isModified());
    QCOMPARE(world.grama().map().toStyledString(), map.toStyledString());
}

void tst_OnboardPreferencesSources::remembersTheFolderAndTheWindow()
{
    TestLog log;
    PreferencesWorld world;
    world.useSettings();
    world.open();
    const QString folder = world.folder.filePath(text("mine"));
    QVERIFY(QDir().mkpath(folder));
    ModalDriver driver;
    driver.expectSaveDialog(folder + text("/a.json"));
    world.click("saveToFileButton");
    QCOMPARE(world.settings->value(text("onboard_preferences/lastDir")).toString(), folder);
    world.dialog->resize(901, 603);
    world.click("cancelButton");
    PreferencesWorld::settle();

    world.open();
    QCOMPARE(world.dialog->size(), QSize(901, 603));
    driver.expect<QFileDialog>([folder](QFileDialog* dialog) {
        QCOMPARE(dialog->directory().absolutePath(), folder);
        dialog->reject();
    });
    world.click("loadFromFileButton");
    // Settings that go first are not missed.
    world.settings.reset();
    world.click("cancelButton");
    QVERIFY(!world.dialog->isVisible());
}

void tst_OnboardPreferencesSources::remembersNothingWithoutSettings()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.dialog->setSettings(nullptr);
    const QSize size = world.dialog->size();
    world.dialog->resize(901, 603);
    world.click("cancelButton");
    PreferencesWorld::settle();
    world.open();
    QCOMPARE(world.dialog->size(), size);
}

void tst_OnboardPreferencesSources::goesToTheFilter()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    auto& filter = world.child<QLineEdit>("filterEdit");
    QTest::keyClicks(&filter, text("right nozzle"));
    QVERIFY(world.heater().isVisible());
    QVERIFY(!world.density().isVisible());
    world.heater().setFocus();
    QVERIFY(!filter.hasFocus());

    QTest::keyClick(&world.heater(), Qt::Key_F, Qt::ControlModifier);

    QVERIFY(filter.hasFocus());
    QCOMPARE(filter.selectedText(), text("right nozzle"));
    QTest::keyClicks(&filter, text("density"));
    QVERIFY(world.density().isVisible());
    QVERIFY(!world.heater().isVisible());
    // Enter there does nothing.
    QTest::keyClick(&filter, Qt::Key_Return);
    QVERIFY(world.dialog->isVisible());
    QVERIFY(world.service.requests().empty());
}

void tst_OnboardPreferencesSources::showsOnlyWhatIsChanged()
{
    TestLog log;
    PreferencesWorld world;
    world.open();
    world.setHeater(230);
    auto& box = world.child<QCheckBox>("showChangedOnly");
    QTest::mouseClick(&box, Qt::LeftButton, Qt::NoModifier, QPoint(6, box.height() / 2));
    QVERIFY(world.heater().isVisible());
    QVERIFY(!world.density().isVisible());
    QTest::mouseClick(&box, Qt::LeftButton, Qt::NoModifier, QPoint(6, box.height() / 2));
    QVERIFY(world.density().isVisible());
}

QTEST_MAIN(tst_OnboardPreferencesSources)
#include "tst_onboard_preferences_sources.moc"
