#include "make_dialog/thing_world.h"

#include <trovek-ui/trovekqt.h>

using namespace trovek;

/** What the make-thing dialog remembers from one time to the next. */
class tst_MakeThingSettings : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void storesWhatWasChosen();
    void storesTheNumbers();
    void storesAProfileByItsFolder();
    void storesTheCheckBoxesOfOneExtruder();
    void storesNothingWhenItIsCanceled();
    void restoresEverything_data();
    void restoresEverything();
    void restoresWhatTheListedKeysAloneHold();
    void ignoresOddValues_data();
    void ignoresOddValues();
    void ignoresAStaleProfile_data();
    void ignoresAStaleProfile();
    void restoresMaterialsThatFit();
    void restoresNumbersOnlyForWhatTheyWereMadeFor_data();
    void restoresNumbersOnlyForWhatTheyWereMadeFor();
    void marksRestoredNumbers();
    void survivesAFileOfGarbage();

private:
    TrovekQt m_facade;
};

namespace {

QString key(const char* name)
{
    return QStringLiteral("make_dialog/") + QString::fromLatin1(name);
}

/** As it stands in the file, where everything is text. */
QString stored(const ThingWorld& world, const char* name)
{
    return QSettings(world.settings.fileName(), QSettings::IniFormat).value(key(name)).toString();
}

/** Everything of the dialog that is remembered, in words. */
QStringList chosen(const OpenedThing& opened)
{
    const SlicerConfiguration numbers = opened.numbers().configuration();
    const auto number = [](const char* name, double value) {
        return QString::fromLatin1(name) + QLatin1Char(' ') + QString::number(value);
    };
    return {number("left", opened.extruders().leftMaterial()),
            number("right", opened.extruders().rightMaterial()),
            number("single", opened.extruders().singleMaterial()),
            number("preset", opened.numbers().preset()),
            number("raft", opened.extruders().raft()),
            number("supports", opened.extruders().supports()),
            number("advanced", opened.find<CollapseExpandHeader>("advancedHeader").isChecked()),
            number("preview", opened.previewWanted().isChecked()),
            QStringLiteral("profile ") + opened.profiles().currentText(),
            number("infill", numbers.infill()),
            number("height", numbers.layerHeight()),
            number("shells", numbers.shells()),
            number("right temperature", numbers.extruderTemperature()),
            number("left temperature", numbers.leftExtruderTemperature()),
            number("heat", numbers.heatPlatform()),
            number("platform", numbers.platformTemperature()),
            number("extruding", numbers.printSpeed()),
            number("traveling", numbers.travelSpeed())};
}

void changeNumbers(const OpenedThing& opened)
{
    opened.find<QSpinBox>("infill").setValue(37);
    opened.find<QSpinBox>("shells").setValue(4);
    opened.find<QDoubleSpinBox>("layerHeight").setValue(0.27);
    opened.find<QSpinBox>("rightTemperature").setValue(201);
    opened.find<QSpinBox>("leftTemperature").setValue(202);
    opened.find<QCheckBox>("heatPlatform").setChecked(false);
    opened.find<QSpinBox>("platformTemperature").setValue(61);
    opened.find<QSpinBox>("extrudingSpeed").setValue(71);
    opened.find<QSpinBox>("travelingSpeed").setValue(131);
}

} // namespace

void tst_MakeThingSettings::cleanup()
{
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void tst_MakeThingSettings::storesWhatWasChosen()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual");
    opened.material("leftMaterial").select(Orvane::Dissolvable);
    opened.material("rightMaterial").select(Orvane::PLA);
    opened.find<QComboBox>("raft").setCurrentIndex(2);
    opened.find<QComboBox>("supports").setCurrentIndex(3);
    opened.openAdvanced();
    opened.profiles().setCurrentIndex(2);

    opened.clickMain();
    world.settings.sync();

    QCOMPARE(stored(world, "printer"), QStringLiteral("dual"));
    QCOMPARE(stored(world, "left_material"), QStringLiteral("2"));
    QCOMPARE(stored(world, "right_material"), QStringLiteral("1"));
    QCOMPARE(stored(world, "single_material"), QStringLiteral("0"));
    QCOMPARE(stored(world, "raft"), QStringLiteral("2"));
    QCOMPARE(stored(world, "supports"), QStringLiteral("3"));
    QCOMPARE(stored(world, "advanced"), QStringLiteral("true"));
    QCOMPARE(stored(world, "preview"), QStringLiteral("false"));
    QCOMPARE(stored(world, "selectedProfile"), QStringLiteral("preset:2"));
}

void tst_MakeThingSettings::storesTheNumbers()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "dual");
    changeNumbers(opened);

    opened.clickMain();
    world.settings.sync();

    // The fraction, not the percents that the field shows.
    QCOMPARE(stored(world, "infill"), QStringLiteral("0.37"));
    QCOMPARE(stored(world, "layerHeight"), QStringLiteral("0.27"));
    QCOMPARE(stored(world, "shells"), QStringLiteral("4"));
    QCOMPARE(stored(world, "extruderTemperature"), QStringLiteral("201"));
    QCOMPARE(stored(world, "leftExtruderTemperature"), QStringLiteral("202"));
    QCOMPARE(stored(world, "heatPlatform"), QStringLiteral("false"));
    QCOMPARE(stored(world, "platformTemperature"), QStringLiteral("61"));
    QCOMPARE(stored(world, "extrudingSpeed"), QStringLiteral("71"));
    QCOMPARE(stored(world, "travelingSpeed"), QStringLiteral("131"));
    QCOMPARE(stored(world, "numbersFor"), QStringLiteral("1:0,0"));
}

void tst_MakeThingSettings::storesAProfileByItsFolder()
{
    TestLog log;
    ThingWorld world(m_facade);
    const char* const name = "my: vases, m\xc3\xbc";
    world.addProfile(name);
    const OpenedThing opened(world, "single");
    opened.select(name);

    opened.clickMain();
    world.settings.sync();

    QCOMPARE(stored(world, "selectedProfile"), QStringLiteral("folder:") + QString::fromUtf8(name));
}

void tst_MakeThingSettings::storesTheCheckBoxesOfOneExtruder()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    opened.find<QCheckBox>("raftCheckBox").setChecked(true);

    opened.clickMain();
    world.settings.sync();

    QCOMPARE(stored(world, "raft"), QStringLiteral("1"));
    QCOMPARE(stored(world, "supports"), QStringLiteral("0"));
    QCOMPARE(stored(world, "numbersFor"), QStringLiteral("1:1"));
}

void tst_MakeThingSettings::storesNothingWhenItIsCanceled()
{
    TestLog log;
    ThingWorld world(m_facade);
    const OpenedThing opened(world, "single");
    opened.openAdvanced();
    changeNumbers(opened);

    QTest::mouseClick(&opened.button("cancelButton"), Qt::LeftButton);

    QTRY_VERIFY(opened.dialog.isNull());
    QCOMPARE(world.settings.allKeys(), QStringList());
}

void tst_MakeThingSettings::restoresEverything_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QByteArray>("profile");
    QTest::newRow("dual, preset") << QByteArray("dual") << QByteArray("High");
    QTest::newRow("single, preset") << QByteArray("heated") << QByteArray("Low");
    QTest::newRow("dual, profile") << QByteArray("dual") << QByteArray("mine");
    // The numbers wait for the user to come back from the profile to the preset.
    QTest::newRow("dual, profile over a preset") << QByteArray("dual") << QByteArray("High mine");
}

void tst_MakeThingSettings::restoresEverything()
{
    TestLog log;
    QFETCH(QByteArray, key);
    QFETCH(QByteArray, profile);
    ThingWorld world(m_facade);
    world.addProfile("mine", R"("fabrino_2x")");
    QStringList before;
    {
        const OpenedThing opened(world, key);
        opened.material("leftMaterial").select(Orvane::PLA);
        opened.material("rightMaterial").select(Orvane::PLA);
        opened.material("singleMaterial").select(Orvane::PLA);
        opened.extruders().setRaft(1);
        opened.extruders().setSupports(key == "dual" ? 3 : 1);
        opened.openAdvanced();
        for (const QByteArray& name : profile.split(' '))
            opened.select(name);
        changeNumbers(opened);
        opened.find<QCheckBox>("heatPlatform").setChecked(true);
        before = chosen(opened);
        opened.clickMain();
    }

    const OpenedThing again(world);

    QCOMPARE(chosen(again), before);
    QCOMPARE(again.machines().machine(), world.printer(key));
    QVERIFY(again.mainButton().isEnabled());
}

void tst_MakeThingSettings::restoresWhatTheListedKeysAloneHold()
{
    TestLog log;
    ThingWorld world(m_facade);
    const std::pair<const char*, QVariant> values[] = {
        {"printer", QStringLiteral("dual")},
        {"left_material", 1},
        {"right_material", 2},
        {"single_material", 1},
        {"raft", 3},
        {"supports", 2},
        {"advanced", true},
        {"selectedProfile", QStringLiteral("preset:0")},
        {"infill", 0.5},
        {"layerHeight", 0.15},
        {"shells", 9},
        {"extruderTemperature", 199},
        {"heatPlatform", false},
        {"platformTemperature", 45},
        {"extrudingSpeed", 33},
        {"travelingSpeed", 44},
    };
    for (const auto& [name, value] : values)
        world.settings.setValue(key(name), value);

    const OpenedThing opened(world);

    QCOMPARE(chosen(opened),
             words({"left 1", "right 2", "single 1", "preset 0", "raft 3", "supports 2",
                    "advanced 1", "preview 0", "profile Low", "infill 0.5", "height 0.15",
                    "shells 9", "right temperature 199", "left temperature 230", "heat 0",
                    "platform 45", "extruding 33", "traveling 44"}));
    QVERIFY(opened.numbers().isVisible());
}

void tst_MakeThingSettings::ignoresOddValues_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QVariant>("value");
    const auto row = [](const char* name, const QVariant& value) {
        QTest::addRow("%s: %s", name, qPrintable(value.toString())) << QByteArray(name) << value;
    };
    for (const char* name : {"left_material", "right_material", "single_material"}) {
        row(name, 4);
        row(name, -1);
        row(name, QStringLiteral("pla"));
        row(name, QStringLiteral("1.5"));
        row(name, QStringList{QStringLiteral("0"), QStringLiteral("1")});
    }
    for (const char* name : {"raft", "supports"}) {
        row(name, 4);
        row(name, -1);
        row(name, QStringLiteral("true"));
        row(name, QStringLiteral("4294967297"));
    }
    for (const char* name : {"advanced", "preview", "heatPlatform"}) {
        row(name, QStringLiteral("maybe"));
        row(name, QStringLiteral("2"));
        row(name, QStringLiteral(""));
    }
    for (const char* value : {"preset:3", "preset:-1", "preset:", "preset:one", "preset:1x",
                              "folder:", "folder:nobody", "folder:..", "folder:.", "mine", "1"})
        row("selectedProfile", QString::fromLatin1(value));
    for (const char* value : {"nan", "inf", "-0.1", "1.01", "10", "10%", "1e300"})
        row("infill", QString::fromLatin1(value));
    for (const char* value : {"0", "0.009", "0.41", "nan", "thick"})
        row("layerHeight", QString::fromLatin1(value));
    for (const char* value : {"0", "101", "2.5", "4294967298", "two"})
        row("shells", QString::fromLatin1(value));
    for (const char* name : {"extruderTemperature", "leftExtruderTemperature"}) {
        row(name, 281);
        row(name, -1);
        row(name, QStringLiteral("hot"));
    }
    row("platformTemperature", 201);
    row("platformTemperature", -1);
    for (const char* name : {"extrudingSpeed", "travelingSpeed"}) {
        row(name, 9);
        row(name, 201);
        row(name, QStringLiteral("fast"));
    }
    row("printer", QStringLiteral("nobody's"));
}

void tst_MakeThingSettings::ignoresOddValues()
{
    TestLog log;
    QFETCH(QByteArray, name);
    QFETCH(QVariant, value);
    ThingWorld world(m_facade);
    QStringList fresh;
    {
        const OpenedThing opened(world);
        fresh = chosen(opened);
    }
    // Any message would fail the test.
    ModalDriver driver;
    world.settings.setValue(key(name), value);

    const OpenedThing opened(world);

    QCOMPARE(chosen(opened), fresh);
}

void tst_MakeThingSettings::ignoresAStaleProfile_data()
{
    QTest::addColumn<QByteArray>("machineTypes");
    QTest::newRow("for another machine") << QByteArray(R"("fabrino_2x")");
    QTest::newRow("cannot be read") << QByteArray(R"("bigbot")");
}

void tst_MakeThingSettings::ignoresAStaleProfile()
{
    TestLog log;
    QFETCH(QByteArray, machineTypes);
    ThingWorld world(m_facade);
    world.addProfile("mine", machineTypes);
    world.settings.setValue(key("selectedProfile"), QStringLiteral("folder:mine"));

    const OpenedThing opened(world, "single");

    QCOMPARE(opened.profiles().currentText(), QStringLiteral("Standard"));
    QCOMPARE(opened.extruders().quality(), SlicerConfiguration::Standard);
    QVERIFY(opened.mainButton().isEnabled());
}

void tst_MakeThingSettings::restoresMaterialsThatFit()
{
    TestLog log;
    ThingWorld world(m_facade);
    // Neither of them fits a Fabrino 2X, where flexible filament is greyed.
    world.settings.setValue(key("left_material"), int(Orvane::Flexible));
    world.settings.setValue(key("right_material"), int(Orvane::Flexible));
    world.settings.setValue(key("single_material"), int(Orvane::Flexible));

    const OpenedThing opened(world, "dual");

    QCOMPARE(opened.extruders().leftMaterial(), Orvane::ABS);
    QCOMPARE(opened.extruders().rightMaterial(), Orvane::ABS);
    opened.select(world.printer("single"));
    QCOMPARE(opened.extruders().singleMaterial(), Orvane::Flexible);
}

void tst_MakeThingSettings::restoresNumbersOnlyForWhatTheyWereMadeFor_data()
{
    QTest::addColumn<QByteArray>("context");
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<bool>("restored");

    QTest::newRow("the same") << QByteArray("1:0") << QByteArray("heated") << true;
    QTest::newRow("another preset") << QByteArray("2:0") << QByteArray("heated") << false;
    QTest::newRow("another material") << QByteArray("1:3") << QByteArray("heated") << false;
    QTest::newRow("two extruders before") << QByteArray("1:0,0") << QByteArray("heated") << false;
    QTest::newRow("two extruders now") << QByteArray("1:0") << QByteArray("dual") << false;
    QTest::newRow("garbage") << QByteArray("1;0") << QByteArray("heated") << false;
}

void tst_MakeThingSettings::restoresNumbersOnlyForWhatTheyWereMadeFor()
{
    TestLog log;
    QFETCH(QByteArray, context);
    QFETCH(QByteArray, key);
    QFETCH(bool, restored);
    ThingWorld world(m_facade);
    world.settings.setValue(::key("numbersFor"), QString::fromLatin1(context));
    world.settings.setValue(::key("extruderTemperature"), 100);

    const OpenedThing opened(world, key);

    QCOMPARE(opened.find<QSpinBox>("rightTemperature").value(), restored ? 100 : 230);
}

void tst_MakeThingSettings::marksRestoredNumbers()
{
    TestLog log;
    ThingWorld world(m_facade);
    {
        const OpenedThing fresh(world, "single");
        QCOMPARE(fresh.find<QRadioButton>("standard").text(), QStringLiteral("&Standard"));
    }
    world.settings.setValue(key("infill"), 0.5);

    const OpenedThing opened(world, "single");

    QCOMPARE(opened.find<QRadioButton>("standard").text(), QStringLiteral("&Standard *"));
}

void tst_MakeThingSettings::survivesAFileOfGarbage()
{
    TestLog log;
    ThingWorld world(m_facade);
    QByteArray garbage = "[make_dialog]\n";
    for (const char* name :
         {"left_material", "raft", "advanced", "selectedProfile", "infill", "shells", "printer"})
        garbage += QByteArray(name) + "=@Variant(\\0\\0\\0\\x7f\\xff\\xff)\n";
    MakeWorld::writeFile(world.settings.fileName(), garbage + QByteArray(3000, '\xff'));
    world.settings.sync();

    const OpenedThing opened(world, "single");

    QCOMPARE(opened.profiles().currentText(), QStringLiteral("Standard"));
    QVERIFY(opened.mainButton().isEnabled());
}

QTEST_MAIN(tst_MakeThingSettings)
#include "tst_make_thing_settings.moc"
