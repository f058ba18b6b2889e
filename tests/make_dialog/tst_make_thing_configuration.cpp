#include "make_dialog/thing_world.h"

using namespace trovek;

/** What the make-thing dialog asks the service to slice with. */
class tst_MakeThingConfiguration : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void passesThePreset_data();
    void passesThePreset();
    void passesTheNumbers();
    void passesRaftAndSupportsOfTwoExtruders_data();
    void passesRaftAndSupportsOfTwoExtruders();
    void passesRaftAndSupportsOfOneExtruder_data();
    void passesRaftAndSupportsOfOneExtruder();
    void passesTheExtruder_data();
    void passesTheExtruder();
    void passesOnlyThePathOfAProfile_data();
    void passesOnlyThePathOfAProfile();
    void passesTheMaterials_data();
    void passesTheMaterials();
    void passesAnEmptyMaterialAsPla();
    void neverSkipsStartAndEndCode();
    void exportsWithTheSame();

private:
    TrovekQt m_facade;
};

namespace {

SlicerConfiguration defaultsOf(int preset)
{
    const std::unique_ptr<SlicerConfiguration> defaults(SlicerConfiguration::defaultConfiguration(
        static_cast<SlicerConfiguration::Preset>(preset)));
    return *defaults;
}

/** For a QCOMPARE that shows all fields. */
std::string text(const SlicerConfiguration& configuration)
{
    return wire::toJson(configuration).toStyledString();
}

} // namespace

void tst_MakeThingConfiguration::cleanup()
{
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingConfiguration::passesThePreset_data()
{
    QTest::addColumn<int>("preset");
    QTest::newRow("low") << 0;
    QTest::newRow("standard") << 1;
    QTest::newRow("high") << 2;
}

void tst_MakeThingConfiguration::passesThePreset()
{
    TestLog log;
    QFETCH(int, preset);
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "heated");
    opened.profiles().setCurrentIndex(preset);

    opened.clickMain();

    SlicerConfiguration expected = defaultsOf(preset);
    expected.setHeatPlatform(true);
    QCOMPARE(text(world.printed()), text(expected));
}

void tst_MakeThingConfiguration::passesTheNumbers()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual", SlicerConfiguration::Both);
    opened.find<QSpinBox>("infill").setValue(37);
    opened.find<QSpinBox>("shells").setValue(4);
    opened.find<QDoubleSpinBox>("layerHeight").setValue(0.27);
    opened.find<QSpinBox>("rightTemperature").setValue(201);
    opened.find<QSpinBox>("leftTemperature").setValue(202);
    opened.find<QCheckBox>("heatPlatform").setChecked(false);
    opened.find<QSpinBox>("platformTemperature").setValue(61);
    opened.find<QSpinBox>("extrudingSpeed").setValue(71);
    opened.find<QSpinBox>("travelingSpeed").setValue(131);

    opened.clickMain();

    const SlicerConfiguration printed = world.printed();
    QCOMPARE(printed.infill(), 0.37);
    QCOMPARE(printed.shells(), 4U);
    QCOMPARE(printed.layerHeight(), 0.27);
    QCOMPARE(printed.extruderTemperature(), 201U);
    QCOMPARE(printed.leftExtruderTemperature(), 202U);
    QVERIFY(!printed.heatPlatform());
    QCOMPARE(printed.platformTemperature(), 61U);
    QCOMPARE(printed.printSpeed(), 71U);
    QCOMPARE(printed.travelSpeed(), 131U);
    QCOMPARE(printed.profilePath(), std::string());
}

void tst_MakeThingConfiguration::passesRaftAndSupportsOfTwoExtruders_data()
{
    QTest::addColumn<QByteArray>("box");
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("on");
    QTest::addColumn<bool>("automatic");
    QTest::addColumn<uint>("tool");

    for (const char* box : {"raft", "supports"}) {
        const auto row = [box](const char* name) -> QTestData& {
            return QTest::addRow("%s: %s", box, name) << QByteArray(box);
        };
        row("off") << 0 << false << false << 0U;
        row("color-matched") << 1 << true << true << 0U;
        row("left, which is tool 1") << 2 << true << false << 1U;
        row("right, which is tool 0") << 3 << true << false << 0U;
    }
}

void tst_MakeThingConfiguration::passesRaftAndSupportsOfTwoExtruders()
{
    TestLog log;
    QFETCH(QByteArray, box);
    QFETCH(int, index);
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual");
    opened.find<QComboBox>(box).setCurrentIndex(index);

    opened.clickMain();

    const SlicerConfiguration printed = world.printed();
    const bool isRaft = box == "raft";
    QTEST(isRaft ? printed.raft() : printed.supports(), "on");
    QTEST(isRaft ? printed.doAutoRaft() : printed.doAutoSupport(), "automatic");
    QTEST(isRaft ? printed.defaultRaftExtruder() : printed.defaultSupportExtruder(), "tool");
    // The other one stays off.
    QVERIFY(!(isRaft ? printed.supports() : printed.raft()));
    QVERIFY(!(isRaft ? printed.doAutoSupport() : printed.doAutoRaft()));
    QCOMPARE(isRaft ? printed.defaultSupportExtruder() : printed.defaultRaftExtruder(), 0U);
}

void tst_MakeThingConfiguration::passesRaftAndSupportsOfOneExtruder_data()
{
    QTest::addColumn<bool>("raft");
    QTest::addColumn<bool>("supports");
    QTest::newRow("none") << false << false;
    QTest::newRow("raft") << true << false;
    QTest::newRow("supports") << false << true;
    QTest::newRow("both") << true << true;
}

void tst_MakeThingConfiguration::passesRaftAndSupportsOfOneExtruder()
{
    TestLog log;
    QFETCH(bool, raft);
    QFETCH(bool, supports);
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    opened.find<QCheckBox>("raftCheckBox").setChecked(raft);
    opened.find<QCheckBox>("supportsCheckBox").setChecked(supports);

    opened.clickMain();

    const SlicerConfiguration printed = world.printed();
    QCOMPARE(printed.raft(), raft);
    QCOMPARE(printed.supports(), supports);
    // There is no other extruder that could be chosen.
    QVERIFY(!printed.doAutoRaft());
    QVERIFY(!printed.doAutoSupport());
    QCOMPARE(printed.defaultRaftExtruder(), 0U);
    QCOMPARE(printed.defaultSupportExtruder(), 0U);
}

void tst_MakeThingConfiguration::passesTheExtruder_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("profile");
    QTest::addColumn<int>("file");
    QTest::addColumn<int>("expected");

    for (const char* profile : {"Standard", "mine"}) {
        const auto row = [profile](const char* name, const char* key) -> QTestData& {
            return QTest::addRow("%s, %s", profile, name) << QByteArray(key) << QByteArray(profile);
        };
        row("dual, left", "dual") << 0 << 0;
        row("dual, right", "dual") << 1 << 1;
        row("dual, both", "dual") << 2 << 2;
        row("dual, odd", "dual") << 3 << int(SlicerConfiguration().extruder());
        row("single, left", "single") << 0 << 1;
        row("single, right", "single") << 1 << 1;
        row("single, both", "single") << 2 << 1;
        row("single, odd", "single") << -1 << 1;
    }
}

void tst_MakeThingConfiguration::passesTheExtruder()
{
    TestLog log;
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, profile);
    QFETCH(int, file);
    ThingWorld world(m_facade);
    world.addProfile("mine", R"("fabrino_2", "fabrino_2x")");
    const OpenedThing opened(world, key, static_cast<SlicerConfiguration::Extruder>(file));
    opened.select(profile);

    opened.clickMain();

    QTEST(int(world.printed().extruder()), "expected");
}

void tst_MakeThingConfiguration::passesOnlyThePathOfAProfile_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::newRow("single") << QByteArray("single");
    QTest::newRow("dual") << QByteArray("dual");
}

void tst_MakeThingConfiguration::passesOnlyThePathOfAProfile()
{
    TestLog log;
    QFETCH(QByteArray, key);
    ThingWorld world(m_facade);
    const char* const name = "m\xc3\xbc#1 of 'mine'";
    world.addProfile(name, R"("fabrino_2", "fabrino_2x")");
    const OpenedThing opened(world, key);
    opened.find<QSpinBox>("infill").setValue(99);
    opened.extruders().setRaft(ExtruderSettingsWidget::ColorMatched);
    opened.extruders().setSupports(ExtruderSettingsWidget::LeftExtruder);
    opened.select(name);

    opened.clickMain();

    SlicerConfiguration expected;
    expected.setSlicer(SlicerConfiguration::Strandel);
    expected.setProfilePath(world.profilePath(name).toStdString());
    expected.setExtruder(SlicerConfiguration::Right);
    QCOMPARE(text(world.printed()), text(expected));
}

void tst_MakeThingConfiguration::passesTheMaterials_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QStringList>("materials");
    QTest::newRow("single") << QByteArray("single") << words({"flexible"});
    QTest::newRow("dual, the right one first")
        << QByteArray("dual") << words({"pla", "dissolvable"});
}

void tst_MakeThingConfiguration::passesTheMaterials()
{
    TestLog log;
    QFETCH(QByteArray, key);
    ThingWorld world(m_facade);
    // As remembered, so that no message comes.
    world.settings.setValue(QStringLiteral("make_dialog/left_material"), 2);
    world.settings.setValue(QStringLiteral("make_dialog/right_material"), 1);
    world.settings.setValue(QStringLiteral("make_dialog/single_material"), 3);
    const OpenedThing opened(world, key);

    opened.clickMain();

    QTEST(textsOf(world.service.lastRequest("print")["materials"]), "materials");
}

void tst_MakeThingConfiguration::passesAnEmptyMaterialAsPla()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual");
    opened.material("leftMaterial").setCurrentIndex(-1);

    opened.clickMain();

    QCOMPARE(textsOf(world.service.lastRequest("print")["materials"]), words({"abs", "pla"}));
    QVERIFY(!world.settings.contains(QStringLiteral("make_dialog/left_material")));
    QCOMPARE(world.settings.value(QStringLiteral("make_dialog/right_material")).toInt(), 0);
}

void tst_MakeThingConfiguration::neverSkipsStartAndEndCode()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");

    opened.clickMain();

    QCOMPARE(world.service.lastRequest("print")["skip_start_end"].asBool(), false);
}

void tst_MakeThingConfiguration::exportsWithTheSame()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "archetype 4", SlicerConfiguration::Both);
    opened.extruders().setSupports(ExtruderSettingsWidget::LeftExtruder);
    ModalDriver driver;
    driver.expectSaveDialog(world.path("out.gcode"), QStringLiteral("GCode, slice only (*.gcode)"));

    opened.clickMain();

    const SlicerConfiguration exported = world.configurationOf("slice");
    QVERIFY(exported.supports());
    QCOMPARE(exported.defaultSupportExtruder(), 1U);
    QCOMPARE(exported.extruder(), SlicerConfiguration::Both);
    QCOMPARE(world.service.lastRequest("slice")["add_start_end"].asBool(), true);
    world.endExport();
}

QTEST_MAIN(tst_MakeThingConfiguration)
#include "tst_make_thing_configuration.moc"
