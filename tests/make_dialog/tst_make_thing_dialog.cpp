#include "make_dialog/thing_world.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QFormLayout>
#include <QGroupBox>
#include <QKeySequence>
#include <QWheelEvent>

using namespace trovek;

/** What the make-thing dialog shows, and how it follows the machine and the materials. */
class tst_MakeThingDialog : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void hasItsTexts();
    void hasItsSlotsInOrder();
    void startsWithThePlainChoices();
    void asksTheServiceNothingWhileItOpens();
    void opensWithoutALink();
    void showsWhatIsAdvanced();
    void keepsItsWidthWhenItOpens();
    void leavesNoGaps();
    void isReadyForTheKeyboard();
    void visitsItsWidgetsFromTopToBottom();
    void hasNoMnemonicTwice_data();
    void hasNoMnemonicTwice();
    void ignoresTheWheelOverWhatIsNotFocused();
    void tellsTheExtruderOfTheFile_data();
    void tellsTheExtruderOfTheFile();
    void followsTheMachine();
    void keepsEverythingWhileTheLinkIsDown();
    void keepsAHeatThatTheUserChose();
    void selectsTheUsualMaterialOfTheMachine_data();
    void selectsTheUsualMaterialOfTheMachine();
    void keepsTheMaterialForAMachineOfTheSameType();
    void keepsTheUsersMaterialWhereItFits();
    void fillsTheNumbersForTheMaterials();
    void keepsNumbersWhileTheMaterialsStay();
    void warnsOfFlexibleFilament_data();
    void warnsOfFlexibleFilament();
    void warnsOnlyOfWhatTheUserPicks();
    void marksAPresetThatWasChanged();
    void linksTheQualitiesAndTheProfiles();
    void logsWhatKeepsItFromBeingSane();

private:
    TrovekQt m_facade;
};

namespace {

/** As a user does, with the keyboard: the signals of a click come. */
void pick(QComboBox& box, int row)
{
    box.setFocus();
    while (box.currentIndex() != row)
        QTest::keyClick(&box, box.currentIndex() < row ? Qt::Key_Down : Qt::Key_Up);
}

/** What a user's next print is made with. */
SlicerConfiguration print(ThingWorld& world, OpenedThing& opened)
{
    opened.clickMain();
    return world.printed();
}

} // namespace

void tst_MakeThingDialog::cleanup()
{
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingDialog::hasItsTexts()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world);

    struct Text
    {
        const char* name;
        const char* text;
        const char* toolTip;
    };
    for (const Text& expected : {
             Text{"createButton", "&Create Profile...", "Create a new custom slicer profile"},
             Text{"deleteButton", "&Delete Profile...", "Delete this custom slicer profile"},
             Text{"editButton", "Ed&it Profile",
                  "Edit this custom slicer profile in an external editor"},
             Text{"advancedHeader", "Ad&vanced Options",
                  "Show additional settings for the toolpath generator and the bot"},
             Text{"previewWanted", "Preview before printing", ""},
         }) {
        const auto& widget = opened.find<QAbstractButton>(expected.name);
        QCOMPARE(widget.text(), QString::fromLatin1(expected.text));
        QCOMPARE(widget.toolTip(), QString::fromLatin1(expected.toolTip));
    }
    const auto& profileLabel = opened.find<QLabel>("profileLabel");
    QCOMPARE(profileLabel.text(), QStringLiteral("Pr&ofile:"));
    QCOMPARE(profileLabel.buddy(), &opened.profiles());
    QCOMPARE(opened.profiles().toolTip(), QStringLiteral("The base profile to use for slicing"));
    QCOMPARE(opened.find<QLabel>("slicerLabel").text(), QStringLiteral("Slicer:"));
    QCOMPARE(opened.find<QLabel>("slicer").text(), QStringLiteral("Orvane Slicer"));
    QCOMPARE(opened.find<QLabel>("slicer").toolTip(),
             QStringLiteral("The slicer this profile uses"));
}

void tst_MakeThingDialog::hasItsSlotsInOrder()
{
    QStringList slotNames;
    const QMetaObject& meta = MakeThingDialog::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        slotNames.append(QString::fromLatin1(meta.method(i).name()));
    QCOMPARE(slotNames, words({"machineSelected", "materialChanged", "leftMaterialChanged",
                               "lowQualityRadioButtonToggled", "mediumQualityRadioButtonToggled",
                               "highQualityRadioButtonToggled", "profileSelected", "createProfile",
                               "deleteProfile", "editProfile", "showPrintPreview"}));
}

void tst_MakeThingDialog::startsWithThePlainChoices()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");

    QCOMPARE(rowsOf(*opened.profiles().model()), words({"Low", "Standard", "High"}));
    QCOMPARE(opened.profiles().currentIndex(), 1);
    QCOMPARE(opened.extruders().quality(), SlicerConfiguration::Standard);
    QCOMPARE(opened.numbers().preset(), SlicerConfiguration::Standard);
    QCOMPARE(opened.extruders().raft(), 0);
    QCOMPARE(opened.extruders().supports(), 0);
    QVERIFY(!opened.find<CollapseExpandHeader>("advancedHeader").isChecked());
    QVERIFY(!opened.previewWanted().isChecked());
    QCOMPARE(opened.mainButton().text(), QStringLiteral("Make It!"));
    QCOMPARE(world.settings.allKeys(), QStringList());
}

void tst_MakeThingDialog::asksTheServiceNothingWhileItOpens()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const quint64 before = m_facade.callCount();
    const OpenedThing opened(world, "dual", SlicerConfiguration::Both);

    opened.openAdvanced();
    opened.select("mine");
    opened.select(world.printer("single"));

    QCOMPARE(m_facade.callCount(), before);
}

void tst_MakeThingDialog::opensWithoutALink()
{
    TestLog log;
    log.allowErrors("");
    ThingWorld world(m_facade);
    world.loseConnection();
    ModalDriver driver;
    const OpenedThing opened(world);

    QVERIFY(!opened.machines().isEnabled());
    QVERIFY(opened.find<QLabel>("value").isVisible());
    QCOMPARE(opened.find<QLabel>("value").text(), QStringLiteral("Invalid machine"));
    driver.expectMessage(kTrovekNotConnected);
    opened.clickMain();
    QVERIFY(opened.dialog->isVisible());

    world.service.start();
    world.connectFacade();
    QTRY_VERIFY(opened.machines().isEnabled());
    QTRY_VERIFY(!opened.find<QLabel>("value").isVisible());
}

void tst_MakeThingDialog::showsWhatIsAdvanced()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const OpenedThing opened(world, "single");
    const auto shown = [&opened] {
        QStringList names;
        for (const char* name :
             {"profiles", "slicer", "profileHelp", "profileButtons", "builtInProfile"}) {
            if (opened.find<QWidget>(name).isVisible())
                names.append(QString::fromLatin1(name));
        }
        return names;
    };
    QCOMPARE(shown(), QStringList());

    opened.openAdvanced();
    QCOMPARE(shown(), words({"profiles", "slicer", "builtInProfile"}));

    opened.select("mine");
    QCOMPARE(shown(), words({"profiles", "slicer", "profileHelp", "profileButtons"}));

    // Which profile is used stays in sight.
    QTest::mouseClick(&opened.find<QWidget>("advancedHeader"), Qt::LeftButton);
    QTRY_COMPARE(shown(), words({"profiles"}));

    opened.select("Low");
    QCOMPARE(shown(), QStringList());
}

void tst_MakeThingDialog::keepsItsWidthWhenItOpens()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    for (const char* key : {"single", "dual"}) {
        const OpenedThing opened(world, key);
        const int width = opened.dialog->width();
        opened.openAdvanced();
        QCOMPARE(opened.dialog->width(), width);
        opened.select("mine");
        QCOMPARE(opened.dialog->width(), width);
    }
}

void tst_MakeThingDialog::leavesNoGaps()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    const auto bottomOf = [](const QWidget& widget) {
        return widget.mapToGlobal(QPoint(0, widget.height())).y();
    };
    const auto topOf = [](const QWidget& widget) {
        return widget.mapToGlobal(QPoint(0, 0)).y();
    };
    const auto& frame = opened.find<QWidget>("frame");
    const auto& header = opened.find<QWidget>("advancedHeader");
    const QMargins margins = frame.layout()->contentsMargins();

    // Nothing is between the machine and the materials, nor below the header.
    const int spacing = qobject_cast<QFormLayout*>(frame.layout())->verticalSpacing();
    QVERIFY(topOf(opened.extruders()) - bottomOf(opened.machines()) <= spacing + 1);
    QVERIFY(bottomOf(frame) - bottomOf(header) <= margins.bottom() + 2);
}

void tst_MakeThingDialog::isReadyForTheKeyboard()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    QVERIFY(opened.mainButton().hasFocus());
    QVERIFY(opened.mainButton().isDefault());

    QTest::keyClick(opened.dialog, Qt::Key_V, Qt::AltModifier);
    QTRY_VERIFY(opened.numbers().isVisible());
    QTest::keyClick(opened.dialog, Qt::Key_O, Qt::AltModifier);
    QVERIFY(opened.profiles().hasFocus());
    QTest::keyClick(opened.dialog, Qt::Key_H, Qt::AltModifier);
    QTRY_COMPARE(opened.profiles().currentIndex(), 2);

    // Enter makes, wherever the focus is.
    QSignalSpy accepted(opened.dialog, &QDialog::accepted);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QCOMPARE(accepted.count(), 1);
    QCOMPARE(world.service.requests("print").size(), std::size_t(1));
}

void tst_MakeThingDialog::visitsItsWidgetsFromTopToBottom()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual");
    opened.openAdvanced();
    opened.mainButton().setFocus();

    QList<const QWidget*> visited;
    do {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        visited.append(QApplication::focusWidget());
        QVERIFY(visited.size() < 50);
    } while (visited.last() != &opened.mainButton());

    QStringList names;
    for (const QWidget* widget : visited)
        names.append(widget->objectName());
    // In a label the links are visited too.
    QCOMPARE(names, words({"makeRadio",
                           "machines",
                           "leftMaterial",
                           "rightMaterial",
                           "low",
                           "raft",
                           "supports",
                           "help",
                           "help",
                           "advancedHeader",
                           "profiles",
                           "infill",
                           "shells",
                           "layerHeight",
                           "rightTemperature",
                           "leftTemperature",
                           "heatPlatform",
                           "platformTemperature",
                           "extrudingSpeed",
                           "travelingSpeed",
                           "defaultsButton",
                           "createProfileButton",
                           "previewWanted",
                           "cancelButton",
                           "mainButton"}));
}

void tst_MakeThingDialog::hasNoMnemonicTwice_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("profile");

    QTest::newRow("single, preset") << QByteArray("single") << QByteArray("Standard");
    QTest::newRow("dual, preset") << QByteArray("dual") << QByteArray("Standard");
    QTest::newRow("custom profile") << QByteArray("single") << QByteArray("mine");
}

void tst_MakeThingDialog::hasNoMnemonicTwice()
{
    TestLog log;
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, profile);
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const OpenedThing opened(world, key);
    opened.openAdvanced();
    opened.select(profile);

    QStringList used;
    const auto note = [&used](const QWidget* widget, const QString& text) {
        const QKeySequence mnemonic = QKeySequence::mnemonic(text);
        if (widget->isVisible() && !mnemonic.isEmpty())
            used.append(mnemonic.toString());
    };
    for (const auto* widget : opened.dialog->findChildren<QAbstractButton*>())
        note(widget, widget->text());
    for (const auto* widget : opened.dialog->findChildren<QGroupBox*>())
        note(widget, widget->title());
    for (const auto* widget : opened.dialog->findChildren<QLabel*>()) {
        if (widget->buddy() != nullptr)
            note(widget, widget->text());
    }
    used.sort();
    // "u" stands in three labels of the numbers, among which it goes round.
    used.removeAll(QStringLiteral("Alt+U"));
    QStringList once = used;
    once.removeDuplicates();
    QCOMPARE(used, once);
    QVERIFY(used.size() >= 9);
}

void tst_MakeThingDialog::ignoresTheWheelOverWhatIsNotFocused()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual");
    opened.openAdvanced();

    for (const char* name : {"profiles", "leftMaterial", "rightMaterial", "raft", "infill"}) {
        auto& box = opened.find<QWidget>(name);
        const auto value = [&box] {
            auto* const comboBox = qobject_cast<QComboBox*>(&box);
            return comboBox != nullptr ? comboBox->currentText()
                                       : qobject_cast<QAbstractSpinBox*>(&box)->text();
        };
        const QString before = value();
        QWheelEvent event(QPointF(5, 5), box.mapToGlobal(QPoint(5, 5)), QPoint(), QPoint(0, -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&box, &event);
        QCOMPARE(value(), before);
    }
}

void tst_MakeThingDialog::tellsTheExtruderOfTheFile_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<int>("extruder");
    QTest::addColumn<QString>("shown");

    QTest::newRow("single, right") << QByteArray("single") << 1 << QString();
    QTest::newRow("single, left") << QByteArray("single") << 0 << QStringLiteral("Left");
    QTest::newRow("single, both") << QByteArray("single") << 2 << QStringLiteral("Dual");
    QTest::newRow("dual, right") << QByteArray("dual") << 1 << QStringLiteral("Right");
    QTest::newRow("dual, both") << QByteArray("dual") << 2 << QStringLiteral("Dual");
}

void tst_MakeThingDialog::tellsTheExtruderOfTheFile()
{
    TestLog log;
    QFETCH(QByteArray, key);
    QFETCH(int, extruder);
    QFETCH(QString, shown);
    ThingWorld world(m_facade);
    const OpenedThing opened(world, key, static_cast<SlicerConfiguration::Extruder>(extruder));

    const auto& value = opened.find<QLabel>("value");
    QCOMPARE(value.isVisible(), !shown.isEmpty());
    QCOMPARE(value.text(), shown);
}

void tst_MakeThingDialog::followsTheMachine()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    opened.openAdvanced();
    const auto& heat = opened.find<QCheckBox>("heatPlatform");
    QVERIFY(!heat.isEnabled());
    QVERIFY(!opened.material("leftMaterial").isVisible());
    QVERIFY(!opened.find<QWidget>("leftTemperature").isVisible());

    opened.select(world.printer("dual"));
    QVERIFY(opened.material("leftMaterial").isVisible());
    QVERIFY(opened.find<QWidget>("leftTemperature").isVisible());
    QVERIFY(heat.isEnabled());
    QVERIFY(heat.isChecked());
    QCOMPARE(opened.find<QLabel>("value").text(), QStringLiteral("Right"));

    opened.select(world.printer("heated"));
    QVERIFY(!opened.material("leftMaterial").isVisible());
    QVERIFY(heat.isEnabled());
    QVERIFY(!opened.find<QLabel>("value").isVisible());
}

void tst_MakeThingDialog::keepsEverythingWhileTheLinkIsDown()
{
    TestLog log;
    log.allowErrors("");
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual");
    opened.openAdvanced();
    opened.material("rightMaterial").select(Orvane::Dissolvable);
    opened.find<QSpinBox>("infill").setValue(34);
    opened.find<QCheckBox>("heatPlatform").click();

    world.loseConnection();
    QTRY_VERIFY(!opened.machines().isEnabled());
    QCoreApplication::processEvents();

    QVERIFY(opened.material("leftMaterial").isVisible());
    QCOMPARE(opened.extruders().rightMaterial(), Orvane::Dissolvable);
    QCOMPARE(opened.find<QSpinBox>("infill").value(), 34);
    QVERIFY(!opened.find<QCheckBox>("heatPlatform").isChecked());
    QVERIFY(opened.find<QCheckBox>("heatPlatform").isEnabled());
}

void tst_MakeThingDialog::keepsAHeatThatTheUserChose()
{
    TestLog log;
    ThingWorld world(m_facade);
    OpenedThing opened(world, "heated");
    opened.openAdvanced();
    auto& heat = opened.find<QCheckBox>("heatPlatform");
    QVERIFY(heat.isChecked());
    QTest::mouseClick(&heat, Qt::LeftButton, {}, QPoint(8, heat.height() / 2));
    QVERIFY(!heat.isChecked());

    opened.dialog->requestSanitize();
    world.service.addPrinter(ScriptedService::machine("another", Printer::Fabrino2));
    QTRY_VERIFY(world.printer("another") != nullptr);
    QCoreApplication::processEvents();

    QVERIFY(!heat.isChecked());
    QVERIFY(!print(world, opened).heatPlatform());
}

void tst_MakeThingDialog::selectsTheUsualMaterialOfTheMachine_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("usual");
    QTest::addColumn<QString>("usable");

    QTest::newRow("Fabrino") << 1 << int(Orvane::ABS) << QStringLiteral("01");
    QTest::newRow("Fabrino dual") << 2 << int(Orvane::ABS) << QStringLiteral("012");
    QTest::newRow("Fabrino 2") << 3 << int(Orvane::PLA) << QStringLiteral("13");
    QTest::newRow("Fabrino 2X") << 4 << int(Orvane::ABS) << QStringLiteral("012");
    QTest::newRow("Cubio") << 5 << int(Orvane::ABS) << QStringLiteral("01");
    QTest::newRow("Cubio dual") << 6 << int(Orvane::ABS) << QStringLiteral("01");
    QTest::newRow("unknown") << 0 << int(Orvane::ABS) << QStringLiteral("0123");
}

void tst_MakeThingDialog::selectsTheUsualMaterialOfTheMachine()
{
    TestLog log;
    QFETCH(int, type);
    QFETCH(int, usual);
    QFETCH(QString, usable);
    ThingWorld world(m_facade);
    world.service.addPrinter(ScriptedService::machine("it", static_cast<Printer::Type>(type)));
    QTRY_VERIFY(world.printer("it") != nullptr);
    const OpenedThing opened(world, "it");

    for (const char* name : {"leftMaterial", "rightMaterial", "singleMaterial"}) {
        const MaterialComboBox& box = opened.material(name);
        QCOMPARE(int(box.material()), usual);
        QString found;
        for (int material = 0; material < Orvane::kMaterialCount; ++material) {
            if (box.isUsable(static_cast<Orvane::Material>(material)))
                found.append(QString::number(material));
        }
        QCOMPARE(found, usable);
    }
}

void tst_MakeThingDialog::keepsTheMaterialForAMachineOfTheSameType()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual");
    opened.material("leftMaterial").select(Orvane::Dissolvable);
    opened.material("rightMaterial").select(Orvane::PLA);

    QTest::mouseClick(&opened.find<QRadioButton>("exportRadio"), Qt::LeftButton, {}, QPoint(8, 8));
    QTRY_COMPARE(opened.mainButton().text(), QStringLiteral("Export!"));

    QCOMPARE(opened.machines().machine(), world.printer("archetype 4"));
    QCOMPARE(opened.extruders().leftMaterial(), Orvane::Dissolvable);
    QCOMPARE(opened.extruders().rightMaterial(), Orvane::PLA);
}

void tst_MakeThingDialog::keepsTheUsersMaterialWhereItFits()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "heated");
    QCOMPARE(opened.extruders().singleMaterial(), Orvane::ABS);

    // Nothing was chosen: each machine shows what is usual for it.
    opened.select(world.printer("single"));
    QCOMPARE(opened.extruders().singleMaterial(), Orvane::PLA);
    opened.select(world.printer("heated"));
    QCOMPARE(opened.extruders().singleMaterial(), Orvane::ABS);

    pick(opened.material("singleMaterial"), Orvane::PLA);
    opened.select(world.printer("single"));
    opened.select(world.printer("heated"));
    QCOMPARE(opened.extruders().singleMaterial(), Orvane::PLA);

    pick(opened.material("singleMaterial"), Orvane::ABS);
    opened.select(world.printer("single"));
    QCOMPARE(opened.extruders().singleMaterial(), Orvane::PLA);
    opened.select(world.printer("heated"));
    QCOMPARE(opened.extruders().singleMaterial(), Orvane::ABS);
}

void tst_MakeThingDialog::fillsTheNumbersForTheMaterials()
{
    TestLog log;
    ThingWorld world(m_facade);
    OpenedThing opened(world, "dual");
    const auto& right = opened.find<QSpinBox>("rightTemperature");
    const auto& left = opened.find<QSpinBox>("leftTemperature");
    const auto& heat = opened.find<QCheckBox>("heatPlatform");
    QCOMPARE(right.value(), 230);

    opened.material("rightMaterial").select(Orvane::Dissolvable);
    QCOMPARE(right.value(), 250);
    QCOMPARE(left.value(), 230);
    opened.material("leftMaterial").select(Orvane::Dissolvable);
    QCOMPARE(left.value(), 250);
    opened.material("rightMaterial").select(Orvane::PLA);
    QCOMPARE(right.value(), 230);
    QVERIFY(heat.isChecked());
    opened.material("leftMaterial").select(Orvane::PLA);
    QVERIFY(!heat.isChecked());

    const SlicerConfiguration printed = print(world, opened);
    QCOMPARE(printed.extruderTemperature(), 230U);
    QCOMPARE(printed.leftExtruderTemperature(), 230U);
    QVERIFY(!printed.heatPlatform());
    QCOMPARE(textsOf(world.service.lastRequest("print")["materials"]), words({"pla", "pla"}));
}

void tst_MakeThingDialog::keepsNumbersWhileTheMaterialsStay()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.service.addPrinter(ScriptedService::machine("old dual", Printer::FabrinoDual));
    QTRY_VERIFY(world.printer("old dual") != nullptr);
    const OpenedThing opened(world, "dual");
    auto& infill = opened.find<QSpinBox>("infill");
    infill.setValue(55);

    opened.select(world.printer("old dual"));
    QCOMPARE(infill.value(), 55);

    // Another machine with another material has other numbers.
    opened.select(world.printer("single"));
    QCOMPARE(infill.value(), 10);
}

void tst_MakeThingDialog::warnsOfFlexibleFilament_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("box");
    QTest::addColumn<bool>("skipped");

    QTest::newRow("only box") << 3 << QByteArray("singleMaterial") << false;
    QTest::newRow("not again") << 3 << QByteArray("singleMaterial") << true;
    // A machine of a type that nobody knows takes everything.
    QTest::newRow("left box") << 0 << QByteArray("leftMaterial") << false;
    QTest::newRow("right box") << 0 << QByteArray("rightMaterial") << false;
}

void tst_MakeThingDialog::warnsOfFlexibleFilament()
{
    TestLog log;
    QFETCH(int, type);
    QFETCH(QByteArray, box);
    QFETCH(bool, skipped);
    ThingWorld world(m_facade);
    Printer::Data machine = ScriptedService::machine("it", static_cast<Printer::Type>(type));
    machine.numberOfExtruders = box == "singleMaterial" ? 1 : 2;
    world.service.addPrinter(machine);
    QTRY_VERIFY(world.printer("it") != nullptr);
    if (skipped)
        world.settings.setValue(QStringLiteral("MessageBox/skipPCLAlert"), true);
    const OpenedThing opened(world, "it");
    ModalDriver driver;
    if (!skipped) {
        driver.expect([](QDialog* message) {
            QCOMPARE(messageTexts(message).first(), QStringLiteral("Orvane Flexible Filament"));
            pressButton(message, QStringLiteral("&OK"));
        });
    }

    pick(opened.material(box), Orvane::Flexible);
    QTRY_VERIFY(driver.isDone());
    QCoreApplication::processEvents();

    QCOMPARE(opened.material(box).material(), Orvane::Flexible);
    QVERIFY(opened.dialog->isVisible());
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingDialog::warnsOnlyOfWhatTheUserPicks()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.settings.setValue(QStringLiteral("make_dialog/single_material"), int(Orvane::Flexible));
    // Any message would fail the test.
    ModalDriver driver;
    const OpenedThing opened(world, "single");
    QCOMPARE(opened.extruders().singleMaterial(), Orvane::Flexible);

    opened.select(world.printer("heated"));
    QCOMPARE(opened.extruders().singleMaterial(), Orvane::ABS);
    opened.select(world.printer("single"));
    QCOMPARE(opened.extruders().singleMaterial(), Orvane::Flexible);
    QCoreApplication::processEvents();
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingDialog::marksAPresetThatWasChanged()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    opened.openAdvanced();
    const auto& standard = opened.find<QRadioButton>("standard");
    const auto& low = opened.find<QRadioButton>("low");
    QCOMPARE(standard.text(), QStringLiteral("&Standard"));

    opened.find<QSpinBox>("shells").setValue(7);
    QCOMPARE(standard.text(), QStringLiteral("&Standard *"));

    // The numbers of the other preset are its own.
    opened.select("Low");
    QCOMPARE(standard.text(), QStringLiteral("&Standard"));
    QCOMPARE(low.text(), QStringLiteral("&Low (Faster)"));
    QCOMPARE(opened.find<QSpinBox>("shells").value(), 2);
}

void tst_MakeThingDialog::linksTheQualitiesAndTheProfiles()
{
    TestLog log;
    ThingWorld world(m_facade);
    world.addProfile("mine");
    const OpenedThing opened(world, "single");
    opened.openAdvanced();
    const char* const names[] = {"low", "standard", "high"};
    for (const int preset : {0, 2, 1}) {
        auto& radio = opened.find<QRadioButton>(names[preset]);
        QTest::mouseClick(&radio, Qt::LeftButton, {}, QPoint(8, radio.height() / 2));
        QCOMPARE(opened.profiles().currentIndex(), preset);
        QCOMPARE(int(opened.numbers().preset()), preset);
    }
    for (const int preset : {2, 0, 1}) {
        opened.profiles().setCurrentIndex(preset);
        QCOMPARE(int(opened.extruders().quality()), preset);
        QCOMPARE(int(opened.numbers().preset()), preset);
    }

    opened.select("mine");
    QCOMPARE(opened.extruders().quality(), SlicerConfiguration::Custom);
    QTest::mouseClick(&opened.find<QRadioButton>("standard"), Qt::LeftButton, {}, QPoint(8, 8));
    QCOMPARE(opened.profiles().currentIndex(), 1);
}

void tst_MakeThingDialog::logsWhatKeepsItFromBeingSane()
{
    TestLog log;
    log.expectError("Dialog must be in either make or export mode");
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    auto& make = opened.find<QRadioButton>("makeRadio");
    make.setAutoExclusive(false);
    make.group()->setExclusive(false);
    make.setChecked(false);

    QCoreApplication::processEvents();

    for (const LogEntry& entry : log.sink().entries()) {
        if (entry.severity == Log::Error) {
            QCOMPARE(entry.file, std::string(kThingUnit));
            QVERIFY(entry.function.find("sanitize") != std::string::npos);
        }
    }
    make.setChecked(true);
    QCoreApplication::processEvents();
}

QTEST_MAIN(tst_MakeThingDialog)
#include "tst_make_thing_dialog.moc"
