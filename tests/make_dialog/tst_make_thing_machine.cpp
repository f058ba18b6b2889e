#include "make_dialog/thing_world.h"

#include <QApplication>

using namespace trovek;

/** How the make-thing dialog follows the machine, the materials and the file's extruder. */
class tst_MakeThingMachine : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void tellsTheExtruderOfTheFile_data();
    void tellsTheExtruderOfTheFile();
    void followsTheMachine();
    void keepsEverythingWhileTheLinkIsDown();
    void keepsAHeatThatTheUserChose();
    void selectsTheUsualMaterialOfTheMachine_data();
    void selectsTheUsualMaterialOfTheMachine();
    void keepsWhatTheUserChoseForAMachineOfTheSameType();
    void keepsTheUsersMaterialWhereItFits();
    void fillsTheNumbersForTheMaterials();
    void keepsNumbersWhileTheMaterialsStay();
    void warnsOfFlexibleFilament_data();
    void warnsOfFlexibleFilament();
    void warnsOnlyOfWhatTheUserPicks();

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

void tst_MakeThingMachine::cleanup()
{
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingMachine::tellsTheExtruderOfTheFile_data()
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

void tst_MakeThingMachine::tellsTheExtruderOfTheFile()
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

void tst_MakeThingMachine::followsTheMachine()
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

void tst_MakeThingMachine::keepsEverythingWhileTheLinkIsDown()
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

void tst_MakeThingMachine::keepsAHeatThatTheUserChose()
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

void tst_MakeThingMachine::selectsTheUsualMaterialOfTheMachine_data()
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

void tst_MakeThingMachine::selectsTheUsualMaterialOfTheMachine()
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

void tst_MakeThingMachine::keepsWhatTheUserChoseForAMachineOfTheSameType()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual");
    opened.material("leftMaterial").select(Orvane::Dissolvable);
    opened.material("rightMaterial").select(Orvane::PLA);
    opened.find<QSpinBox>("infill").setValue(55);

    QTest::mouseClick(&opened.find<QRadioButton>("exportRadio"), Qt::LeftButton, {}, QPoint(8, 8));
    QTRY_COMPARE(opened.mainButton().text(), QStringLiteral("Export!"));

    QCOMPARE(opened.machines().machine(), world.printer("archetype 4"));
    QCOMPARE(opened.extruders().leftMaterial(), Orvane::Dissolvable);
    QCOMPARE(opened.extruders().rightMaterial(), Orvane::PLA);
    QCOMPARE(opened.find<QSpinBox>("infill").value(), 55);

    // A box that is filled anew would close the list that the user has open.
    QSignalSpy filledAnew(&opened.material("leftMaterial"), &MaterialComboBox::materialChanged);
    opened.openAdvanced();
    QVERIFY(opened.numbers().isVisible());
    QCOMPARE(filledAnew.count(), 0);
}

void tst_MakeThingMachine::keepsTheUsersMaterialWhereItFits()
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

void tst_MakeThingMachine::fillsTheNumbersForTheMaterials()
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

void tst_MakeThingMachine::keepsNumbersWhileTheMaterialsStay()
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

void tst_MakeThingMachine::warnsOfFlexibleFilament_data()
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

void tst_MakeThingMachine::warnsOfFlexibleFilament()
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

void tst_MakeThingMachine::warnsOnlyOfWhatTheUserPicks()
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

QTEST_MAIN(tst_MakeThingMachine)
#include "tst_make_thing_machine.moc"
