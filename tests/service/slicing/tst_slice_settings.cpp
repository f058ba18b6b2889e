#include "service/slicing/bare_slices.h"
#include "support/thrown_text.h"

#include <slicing/prusa_options.h>

#include <QTest>

#include <limits>
#include <optional>
#include <string>
#include <vector>

using namespace trovek;
using namespace trovek::service;

Q_DECLARE_METATYPE(std::string)
Q_DECLARE_METATYPE(std::vector<std::string>)

namespace {

using Slicer = SlicerConfiguration;

BareSlice slice(const std::string& machine = "fabrino_2x")
{
    BareSlice result;
    result.machineType = machine;
    result.request.materials = {"pla", "pla"};
    return result;
}

template <typename Change>
BareSlice changed(Change change, const std::string& machine = "fabrino_2x")
{
    BareSlice result = slice(machine);
    change(result.request.configuration);
    return result;
}

/** A profile as a user may have it: what a preset would be, in a file. */
StrandelConfig profile()
{
    StrandelConfig config;
    config.tools[0].material = "abs";
    config.tools[0].celsius = 231;
    config.tools[1].material = "dissolvable";
    config.tools[1].celsius = 249;
    config.heatPlatform = true;
    config.platformCelsius = 109;
    return config;
}

/** The value of an option; "none" when it is not set. */
std::string option(const BareSlice& of, const std::string& key)
{
    const std::string text = "\n" + prusaOptions(machineOfType(of.machineType), of.settings());
    const std::size_t begin = text.find("\n" + key + " = ");
    if (begin == std::string::npos)
        return "none";
    const std::size_t value = begin + key.size() + 4;
    return text.substr(value, text.find('\n', value) - value);
}

} // namespace

/** How requests and profiles become settings and options; what these do is tst_SliceFields'. */
class tst_SliceSettings : public QObject
{
    Q_OBJECT

private slots:
    void aProfileCountsInsteadOfTheFields();
    void theFilesExtruderCountsWithAProfileToo();
    void aProfileSuitsAMachineThatLacksThings();
    void aProfileIsCheckedAgainstTheMachine_data();
    void aProfileIsCheckedAgainstTheMachine();
    void aRequestIsCheckedAgainstTheMachine_data();
    void aRequestIsCheckedAgainstTheMachine();
    void whatIsNotUsedIsNotChecked();
    void oddNumbersAreRefused_data();
    void oddNumbersAreRefused();
    void extrudersAreChecked_data();
    void extrudersAreChecked();
    void colorMatchedIsTheOnlyDissolvableTool_data();
    void colorMatchedIsTheOnlyDissolvableTool();
    void unknownMaterialsPrintAsPla();
    void saysWhichToolsMayBeUsed_data();
    void saysWhichToolsMayBeUsed();
    void theBedIsTheBuildVolume_data();
    void theBedIsTheBuildVolume();
    void nothingElseRunsOrSpeaks();
    void nothingElseIsPrinted();
    void speedsFollowThePrintSpeed_data();
    void speedsFollowThePrintSpeed();
    void valuesStandForEachTool();
};

void tst_SliceSettings::aProfileCountsInsteadOfTheFields()
{
    BareSlice with = changed([](Slicer& c) {
        c.setLayerHeight(0.3);
        c.setExtruderTemperature(200);
        c.setRaft(true);
    });
    with.profile = profile();

    const SliceSettings settings = with.settings();

    QCOMPARE(settings.layerHeight, 0.2);
    QCOMPARE(settings.tools.at(0).celsius, 231);
    QCOMPARE(settings.tools.at(0).material, std::string("abs"));
    QCOMPARE(settings.tools.at(1).celsius, 249);
    QCOMPARE(settings.raft.isOn, false);
    QCOMPARE(settings.heatPlatform, true);
    QCOMPARE(settings.platformCelsius, 109);
}

void tst_SliceSettings::theFilesExtruderCountsWithAProfileToo()
{
    BareSlice with = changed([](Slicer& c) { c.setExtruder(Slicer::Left); });
    with.profile = profile();
    QCOMPARE(with.settings().modelTool, 1);
    with.request.configuration.setExtruder(Slicer::Both);
    QCOMPARE(with.settings().modelTool, -1);
    with.request.configuration.setExtruder(Slicer::Right);
    QCOMPARE(with.settings().modelTool, 0);
}

void tst_SliceSettings::aProfileSuitsAMachineThatLacksThings()
{
    BareSlice with = slice("fabrino_2");
    with.profile = profile();
    with.profile->raft = ExtraPartChoice::ColorMatched;
    with.profile->supports = ExtraPartChoice::Left;

    const SliceSettings settings = with.settings();

    QCOMPARE(settings.tools.size(), std::size_t(1));
    QCOMPARE(settings.heatPlatform, false);
    QCOMPARE(settings.raft.isOn, true);
    QCOMPARE(int(settings.raft.tool), int(ExtraPart::SameAsModel));
    QCOMPARE(settings.supports.isOn, true);
    QCOMPARE(int(settings.supports.tool), int(ExtraPart::SameAsModel));
}

void tst_SliceSettings::aProfileIsCheckedAgainstTheMachine_data()
{
    QTest::addColumn<int>("right");
    QTest::addColumn<int>("left");
    QTest::addColumn<int>("platform");
    QTest::addColumn<double>("height");
    QTest::addColumn<std::string>("problem");

    QTest::newRow("everything at its limit") << 280 << 280 << 130 << 0.4 << std::string();
    QTest::newRow("right extruder")
        << 281 << 200 << 60 << 0.2
        << std::string("The temperature of the right extruder, 281 °C, is above what the machine "
                       "can do: at most 280 °C");
    QTest::newRow("left extruder")
        << 200 << 300 << 60 << 0.2
        << std::string("The temperature of the left extruder, 300 °C, is above what the machine "
                       "can do: at most 280 °C");
    QTest::newRow("build plate")
        << 200 << 200 << 131 << 0.2
        << std::string("The temperature of the build plate, 131 °C, is above what the machine can "
                       "do: at most 130 °C");
    QTest::newRow("layer height")
        << 200 << 200 << 60 << 0.41
        << std::string("A layer height of 0.41 mm is more than a nozzle of 0.4 mm can print");
}

void tst_SliceSettings::aProfileIsCheckedAgainstTheMachine()
{
    QFETCH(int, right);
    QFETCH(int, left);
    QFETCH(int, platform);
    QFETCH(double, height);
    QFETCH(std::string, problem);
    BareSlice with = changed([](Slicer& c) { c.setExtruder(Slicer::Both); });
    with.profile = profile();
    with.profile->tools[0].celsius = right;
    with.profile->tools[1].celsius = left;
    with.profile->platformCelsius = platform;
    with.profile->layerHeight = height;

    QCOMPARE(thrownText([&] { with.settings(); }), problem.empty() ? "nothing thrown" : problem);
}

void tst_SliceSettings::aRequestIsCheckedAgainstTheMachine_data()
{
    QTest::addColumn<std::string>("machine");
    QTest::addColumn<int>("celsius");
    QTest::addColumn<int>("platform");
    QTest::addColumn<std::string>("problem");

    QTest::newRow("a Fabrino 2 at its limit")
        << std::string("fabrino_2") << 280 << 110 << std::string();
    QTest::newRow("a Fabrino 2 has one extruder")
        << std::string("fabrino_2") << 281 << 110
        << std::string("The temperature of the extruder, 281 °C, is above what the machine can do: "
                       "at most 280 °C");
    QTest::newRow("a Fabrino 2 has no heated build plate")
        << std::string("fabrino_2") << 280 << 399 << std::string();
    QTest::newRow("a Cubio") << std::string("cubio_dual") << 250 << 116
                             << std::string("The temperature of the build plate, 116 °C, is above "
                                            "what the machine can do: at most 115 °C");
    QTest::newRow("more than a number of degrees can be")
        << std::string("fabrino_2") << -1 << 110
        << std::string("The temperature of the extruder, 1000000 °C, is above what the machine can "
                       "do: at most 280 °C");
}

void tst_SliceSettings::aRequestIsCheckedAgainstTheMachine()
{
    QFETCH(std::string, machine);
    QFETCH(int, celsius);
    QFETCH(int, platform);
    QFETCH(std::string, problem);
    const BareSlice request = changed(
        [&](Slicer& c) {
            c.setExtruderTemperature(static_cast<std::uint32_t>(celsius));
            c.setPlatformTemperature(static_cast<std::uint32_t>(platform));
            c.setHeatPlatform(true);
        },
        machine);

    QCOMPARE(thrownText([&] { request.settings(); }), problem.empty() ? "nothing thrown" : problem);
}

void tst_SliceSettings::whatIsNotUsedIsNotChecked()
{
    BareSlice request = changed([](Slicer& c) {
        c.setLeftExtruderTemperature(300);
        c.setPlatformTemperature(300);
        c.setHeatPlatform(false);
    });
    QCOMPARE(thrownText([&] { request.settings(); }), std::string("nothing thrown"));

    request.request.configuration.setRaft(true);
    request.request.configuration.setDefaultRaftExtruder(1);
    QCOMPARE(thrownText([&] { request.settings(); }),
             std::string("The temperature of the left extruder, 300 °C, is above what the machine "
                         "can do: at most 280 °C"));
}

void tst_SliceSettings::oddNumbersAreRefused_data()
{
    QTest::addColumn<std::string>("field");
    QTest::addColumn<double>("value");
    QTest::addColumn<std::string>("problem");

    const double infinite = std::numeric_limits<double>::infinity();
    const double none = std::numeric_limits<double>::quiet_NaN();
    const std::string height = "Slicer settings: \"layer_height\" must be a number from 0.01 to 1";
    QTest::newRow("no layer height") << std::string("layer_height") << 0.0 << height;
    QTest::newRow("a negative layer height") << std::string("layer_height") << -0.2 << height;
    QTest::newRow("no number as layer height") << std::string("layer_height") << none << height;
    QTest::newRow("an endless layer height")
        << std::string("layer_height") << infinite
        << std::string("A layer height of inf mm is more than a nozzle of 0.4 mm can print");
    const std::string infill = "Slicer settings: \"infill\" must be a number from 0 to 1";
    QTest::newRow("infill in percent") << std::string("infill") << 10.0 << infill;
    QTest::newRow("negative infill") << std::string("infill") << -0.1 << infill;
    QTest::newRow("no number as infill") << std::string("infill") << none << infill;
    QTest::newRow("more shells than there can be")
        << std::string("shells") << 101.0
        << std::string("Slicer settings: \"shells\" must be a whole number from 0 to 100");
    QTest::newRow("no print speed")
        << std::string("print_speed") << 0.0
        << std::string("Slicer settings: \"print_speed\" must be a number from 1 to 500");
    QTest::newRow("no travel speed")
        << std::string("travel_speed") << 0.0
        << std::string("Slicer settings: \"travel_speed\" must be a number from 1 to 500");
    QTest::newRow("a speed of a rocket")
        << std::string("travel_speed") << 4294967295.0
        << std::string("Slicer settings: \"travel_speed\" must be a number from 1 to 500");
}

void tst_SliceSettings::oddNumbersAreRefused()
{
    QFETCH(std::string, field);
    QFETCH(double, value);
    QFETCH(std::string, problem);
    const BareSlice request = changed([&](Slicer& c) {
        if (field == "layer_height")
            c.setLayerHeight(value);
        else if (field == "infill")
            c.setInfill(value);
        else if (field == "shells")
            c.setShells(static_cast<std::uint32_t>(value));
        else if (field == "print_speed")
            c.setPrintSpeed(static_cast<std::uint32_t>(value));
        else
            c.setTravelSpeed(static_cast<std::uint32_t>(value));
    });

    QCOMPARE(thrownText([&] { request.settings(); }), problem);
}

void tst_SliceSettings::extrudersAreChecked_data()
{
    QTest::addColumn<std::string>("machine");
    QTest::addColumn<bool>("isOn");
    QTest::addColumn<bool>("isAutomatic");
    QTest::addColumn<int>("tool");
    QTest::addColumn<bool>("isGood");

    QTest::newRow("left of two") << std::string("fabrino_2x") << true << false << 1 << true;
    QTest::newRow("a third of two") << std::string("fabrino_2x") << true << false << 2 << false;
    QTest::newRow("a billionth") << std::string("fabrino_2x") << true << false << -1 << false;
    QTest::newRow("the only one") << std::string("fabrino_2") << true << false << 0 << true;
    QTest::newRow("left of one") << std::string("fabrino_2") << true << false << 1 << false;
    QTest::newRow("left of one, not wanted")
        << std::string("fabrino_2") << false << false << 1 << true;
    QTest::newRow("left of one, automatic")
        << std::string("fabrino_2") << true << true << 1 << true;
}

void tst_SliceSettings::extrudersAreChecked()
{
    QFETCH(std::string, machine);
    QFETCH(bool, isOn);
    QFETCH(bool, isAutomatic);
    QFETCH(int, tool);
    QFETCH(bool, isGood);
    const std::string problem =
        " cannot be printed with an extruder that the machine does not have";

    const BareSlice raft = changed(
        [&](Slicer& c) {
            c.setRaft(isOn);
            c.setDoAutoRaft(isAutomatic);
            c.setDefaultRaftExtruder(static_cast<std::uint32_t>(tool));
        },
        machine);
    QCOMPARE(thrownText([&] { raft.settings(); }),
             isGood ? "nothing thrown" : "The raft" + problem);

    const BareSlice supports = changed(
        [&](Slicer& c) {
            c.setSupports(isOn);
            c.setDoAutoSupport(isAutomatic);
            c.setDefaultSupportExtruder(static_cast<std::uint32_t>(tool));
        },
        machine);
    QCOMPARE(thrownText([&] { supports.settings(); }),
             isGood ? "nothing thrown" : "The supports" + problem);
}

void tst_SliceSettings::colorMatchedIsTheOnlyDissolvableTool_data()
{
    QTest::addColumn<std::string>("right");
    QTest::addColumn<std::string>("left");
    QTest::addColumn<int>("tool");

    const auto row = [](const char* right, const char* left, ExtraPart::Tool tool) {
        QTest::newRow((std::string(right) + ", " + left).c_str())
            << std::string(right) << std::string(left) << int(tool);
    };
    row("pla", "abs", ExtraPart::SameAsModel);
    row("abs", "dissolvable", ExtraPart::LeftTool);
    row("dissolvable", "flexible", ExtraPart::RightTool);
    row("dissolvable", "dissolvable", ExtraPart::SameAsModel);
}

void tst_SliceSettings::colorMatchedIsTheOnlyDissolvableTool()
{
    QFETCH(std::string, right);
    QFETCH(std::string, left);
    QFETCH(int, tool);
    for (const auto extruder : {Slicer::Left, Slicer::Right, Slicer::Both}) {
        BareSlice request = changed([&](Slicer& c) {
            c.setExtruder(extruder);
            c.setSupports(true);
            c.setDoAutoSupport(true);
        });
        request.request.materials = {right, left};
        QCOMPARE(int(request.settings().supports.tool), tool);

        request.profile = profile();
        request.profile->tools[0].material = right;
        request.profile->tools[1].material = left;
        request.profile->raft = ExtraPartChoice::ColorMatched;
        QCOMPARE(int(request.settings().raft.tool), tool);
    }
}

void tst_SliceSettings::unknownMaterialsPrintAsPla()
{
    const BareSlice pla = slice();
    for (const std::vector<std::string>& materials :
         {std::vector<std::string>{}, {"unknown", "nylon"}, {"pla"}, {"pla", "pla", "abs"}}) {
        BareSlice other = slice();
        other.request.materials = materials;
        QCOMPARE(prusaOptions(machineOfType("fabrino_2x"), other.settings()),
                 prusaOptions(machineOfType("fabrino_2x"), pla.settings()));
    }
}

void tst_SliceSettings::saysWhichToolsMayBeUsed_data()
{
    QTest::addColumn<int>("extruder");
    QTest::addColumn<int>("raft");
    QTest::addColumn<int>("supports");
    QTest::addColumn<bool>("right");
    QTest::addColumn<bool>("left");

    constexpr int kOff = -2;
    constexpr int kAutomatic = -1;
    QTest::newRow("right") << int(Slicer::Right) << kOff << kOff << true << false;
    QTest::newRow("left") << int(Slicer::Left) << kOff << kOff << false << true;
    QTest::newRow("both") << int(Slicer::Both) << kOff << kOff << true << true;
    QTest::newRow("raft left") << int(Slicer::Right) << 1 << kOff << true << true;
    QTest::newRow("supports right") << int(Slicer::Left) << kOff << 0 << true << true;
    QTest::newRow("raft right, as the model") << int(Slicer::Right) << 0 << kOff << true << false;
    QTest::newRow("automatic") << int(Slicer::Left) << kAutomatic << kAutomatic << false << true;
}

void tst_SliceSettings::saysWhichToolsMayBeUsed()
{
    QFETCH(int, extruder);
    QFETCH(int, raft);
    QFETCH(int, supports);
    QFETCH(bool, right);
    QFETCH(bool, left);
    const SliceSettings settings = changed([&](Slicer& c) {
                                       c.setExtruder(static_cast<Slicer::Extruder>(extruder));
                                       c.setRaft(raft >= -1);
                                       c.setDoAutoRaft(raft == -1);
                                       c.setDefaultRaftExtruder(raft == 1 ? 1 : 0);
                                       c.setSupports(supports >= -1);
                                       c.setDoAutoSupport(supports == -1);
                                       c.setDefaultSupportExtruder(supports == 1 ? 1 : 0);
                                   }).settings();

    QCOMPARE(mayUseTool(settings, 0), right);
    QCOMPARE(mayUseTool(settings, 1), left);
}

void tst_SliceSettings::theBedIsTheBuildVolume_data()
{
    QTest::addColumn<std::string>("machine");
    QTest::addColumn<std::string>("bed");
    QTest::addColumn<std::string>("height");

    const auto row = [](const char* machine, const char* bed, const char* height) {
        QTest::newRow(machine) << std::string(machine) << std::string(bed) << std::string(height);
    };
    row("fabrino_single", "0x0,220x0,220x145,0x145", "150");
    row("fabrino_dual", "0x0,220x0,220x145,0x145", "150");
    row("fabrino_2", "0x0,285x0,285x150,0x150", "155");
    row("fabrino_2x", "0x0,245x0,245x150,0x150", "155");
    row("cubio_single", "0x0,100x0,100x100,0x100", "120");
    row("cubio_dual", "0x0,100x0,100x100,0x100", "120");
}

void tst_SliceSettings::theBedIsTheBuildVolume()
{
    QFETCH(std::string, machine);
    QFETCH(std::string, bed);
    QFETCH(std::string, height);

    QCOMPARE(option(slice(machine), "bed_shape"), bed);
    QCOMPARE(option(slice(machine), "max_print_height"), height);
}

void tst_SliceSettings::nothingElseRunsOrSpeaks()
{
    for (const char* key : {"post_process", "start_gcode", "end_gcode", "before_layer_gcode",
                            "toolchange_gcode", "between_objects_gcode"})
        QCOMPARE(option(slice(), key), std::string());
    for (const char* key : {"start_filament_gcode", "end_filament_gcode"})
        QCOMPARE(option(slice(), key), std::string("\"\""));
    QCOMPARE(option(slice(), "layer_gcode"), std::string("G92 E0"));
    QCOMPARE(option(slice(), "gcode_flavor"), std::string("marlin"));
}

void tst_SliceSettings::nothingElseIsPrinted()
{
    for (const char* key : {"extra_perimeters", "solid_infill_below_area", "skirts", "brim_width",
                            "wipe_tower", "ooze_prevention", "support_material_with_sheath"})
        QCOMPARE(option(slice(), key), std::string("0"));
}

void tst_SliceSettings::speedsFollowThePrintSpeed_data()
{
    QTest::addColumn<std::string>("speed");
    QTest::addColumn<std::vector<std::string>>("keys");

    const auto row = [](const char* what, const char* speed, std::vector<std::string> keys) {
        QTest::newRow(what) << std::string(speed) << std::move(keys);
    };
    row("the highest", "80",
        {"perimeter_speed", "infill_speed", "solid_infill_speed", "support_material_speed",
         "max_print_speed"});
    row("half of it", "40", {"small_perimeter_speed", "gap_fill_speed"});
    row("what is seen", "48",
        {"external_perimeter_speed", "top_solid_infill_speed", "support_material_interface_speed"});
    row("over nothing", "50", {"bridge_speed"});
    row("on the platform", "30", {"first_layer_speed", "first_layer_speed_over_raft"});
}

void tst_SliceSettings::speedsFollowThePrintSpeed()
{
    QFETCH(std::string, speed);
    QFETCH(std::vector<std::string>, keys);
    const BareSlice fast = changed([](SlicerConfiguration& asked) { asked.setPrintSpeed(80); });
    const BareSlice slow = changed([](SlicerConfiguration& asked) { asked.setPrintSpeed(10); });

    for (const std::string& key : keys) {
        QCOMPARE(option(fast, key), speed);
        // Nothing is faster than what was asked for.
        QVERIFY(std::stod(option(slow, key)) <= 10);
    }
}

void tst_SliceSettings::valuesStandForEachTool()
{
    QCOMPARE(option(slice("fabrino_2"), "nozzle_diameter"), std::string("0.4"));
    QCOMPARE(option(slice("fabrino_2x"), "nozzle_diameter"), std::string("0.4,0.4"));
    QCOMPARE(option(slice("fabrino_2x"), "extruder_offset"), std::string("0x0,0x0"));
    BareSlice with = slice();
    with.profile = profile();
    with.profile->tools[1].filamentDiameter = 2.85;
    with.profile->tools[1].flow = 1.125;
    QCOMPARE(option(with, "temperature"), std::string("231,249"));
    QCOMPARE(option(with, "first_layer_temperature"), std::string("231,249"));
    QCOMPARE(option(with, "bed_temperature"), std::string("109,109"));
    QCOMPARE(option(with, "filament_diameter"), std::string("1.75,2.85"));
    QCOMPARE(option(with, "extrusion_multiplier"), std::string("1,1.125"));
    QCOMPARE(option(with, "filament_soluble"), std::string("0,1"));
}

QTEST_GUILESS_MAIN(tst_SliceSettings)
#include "tst_slice_settings.moc"
