#include "service/slicing/bare_slices.h"
#include "support/thrown_text.h"

#include <slicing/profile_code.h>
#include <slicing/slice_code.h>
#include <slicing/slice_profile.h>

#include <QTest>

using namespace trovek;
using namespace trovek::service;

Q_DECLARE_METATYPE(std::string)

namespace {

const ProfileCodeValues kValues{
    {"x_max", "245"}, {"right_temperature", "230"}, {"nothing", ""}, {"two_lines", "G1 X1\nG1 X2"}};

SliceProfile profileOf(const std::string& start, const std::string& end = {})
{
    SliceProfile profile;
    profile.startCode = start;
    profile.endCode = end;
    return profile;
}

/** Both tools warm, the platform too. */
SliceSettings settingsOf(const std::string& machine)
{
    BareSlice slice;
    slice.machineType = machine;
    slice.request.configuration.setExtruderTemperature(215);
    slice.request.configuration.setLeftExtruderTemperature(225);
    slice.request.configuration.setHeatPlatform(true);
    slice.request.configuration.setPlatformTemperature(60);
    return slice.settings();
}

std::string startOf(const std::string& machine, const std::array<bool, 2>& usesTool,
                    const std::string& code)
{
    const SliceProfile profile = profileOf(code);
    return sliceCode(machineOfType(machine), settingsOf(machine), usesTool, &profile).start;
}

} // namespace

class tst_ProfileCode : public QObject
{
    Q_OBJECT

private slots:
    void putsValuesInPlaceOfNames_data();
    void putsValuesInPlaceOfNames();
    void refusesWhatItDoesNotKnow_data();
    void refusesWhatItDoesNotKnow();
    void onlyWhatPrintsIsHeated_data();
    void onlyWhatPrintsIsHeated();
    void knowsTheMachine();
    void primesWhatIsWarm();
    void leavesTheFirstToolInUse();
    void namesTheFileOfAMistake();
    void withoutAProfileItIsTheCodeOfEveryPrint();
};

void tst_ProfileCode::putsValuesInPlaceOfNames_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<std::string>("expected");

    const auto row = [](const char* name, const std::string& text, const std::string& expected) {
        QTest::newRow(name) << text << expected;
    };
    row("nothing", "", "");
    row("no names", "G28\nG1 X10\n", "G28\nG1 X10\n");
    row("one name", "G1 X{x_max} F900\n", "G1 X245 F900\n");
    row("two names", "M104 S{right_temperature}\nG1 X{x_max}Y{x_max}\n",
        "M104 S230\nG1 X245Y245\n");
    row("no line break at the end", "G1 X{x_max}", "G1 X245\n");
    row("line breaks of another system", "G28\r\nG1 X{x_max}\r\nG1", "G28\r\nG1 X245\r\nG1\n");
    row("old line breaks", "G28\rG1 X{x_max}\r", "G28\rG1 X245\r");
    row("a comment is left alone", "G1 X{x_max} ; to {x_max} or {what}\n; {\n",
        "G1 X245 ; to {x_max} or {what}\n; {\n");
    row("so is one in parentheses", "G1 (to {x_max}; {) X{x_max} (}) ; {\n",
        "G1 (to {x_max}; {) X245 (}) ; {\n");
    row("one that does not end", "G1 X{x_max} (to {x_max}\r\nG1\n", "G1 X245 (to {x_max}\r\nG1\n");
    row("a line about nothing goes", "G28\nM104 T1 S{nothing} ; left\nG1\n", "G28\n\nG1\n");
    row("whatever else it has", "M104 T1 S{nothing} X{x_max}\r\nG1 X{x_max}", "\r\nG1 X245\n");
    row("several lines", "{two_lines}\nG28\n", "G1 X1\nG1 X2\nG28\n");
}

void tst_ProfileCode::putsValuesInPlaceOfNames()
{
    QFETCH(std::string, text);
    QFETCH(std::string, expected);

    QCOMPARE(expandProfileCode(text, "start.gcode", kValues), expected);
}

void tst_ProfileCode::refusesWhatItDoesNotKnow_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<std::string>("problem");

    const auto row = [](const char* text, const char* problem) {
        QTest::newRow(text) << std::string(text) << std::string("start.gcode, ") + problem;
    };
    const std::string braces = ": braces must stand around a name, as in {x_max}";
    row("G1 X{X_MAX}", "line 1: {X_MAX} is not known");
    row("G28\nG28\r\nG1 X{ x_max }", "line 3: { x_max } is not known");
    row("G28\rG1 X{}", "line 2: {} is not known");
    row("G1 X{x_max", ("line 1" + braces).c_str());
    row("G1 X{x_max ; }", ("line 1" + braces).c_str());
    row("G1 X{x_max(})", ("line 1" + braces).c_str());
    row("G1 X}", ("line 1" + braces).c_str());
    row("G1 X{x_max}}", ("line 1" + braces).c_str());
    row("G1 X{{x_max}", ("line 1" + braces).c_str());
    row("G1 X{x_\nmax}", ("line 1" + braces).c_str());
    row("G1 X{other} Y{nothing}", "line 1: {other} is not known");
}

void tst_ProfileCode::refusesWhatItDoesNotKnow()
{
    QFETCH(std::string, text);
    QFETCH(std::string, problem);

    QCOMPARE(thrownText([&] { expandProfileCode(text, "start.gcode", kValues); }), problem);
}

void tst_ProfileCode::onlyWhatPrintsIsHeated_data()
{
    QTest::addColumn<std::string>("machine");
    QTest::addColumn<bool>("right");
    QTest::addColumn<bool>("left");
    QTest::addColumn<std::string>("expected");

    QTest::newRow("both") << std::string("fabrino_2x") << true << true
                          << std::string("R215\nL225\nP60\nr0\nl0\np0\n");
    QTest::newRow("right") << std::string("fabrino_2x") << true << false
                           << std::string("R215\n\nP60\nr0\nl0\np0\nT0\n");
    QTest::newRow("left") << std::string("fabrino_2x") << false << true
                          << std::string("\nL225\nP60\nr0\nl0\np0\n");
    QTest::newRow("the only one") << std::string("cubio_single") << true << false
                                  << std::string("R215\n\nP60\nr0\n\np0\n");
    QTest::newRow("without a heated platform")
        << std::string("fabrino_2") << true << false << std::string("R215\n\n\nr0\n\n\n");
}

void tst_ProfileCode::onlyWhatPrintsIsHeated()
{
    QFETCH(std::string, machine);
    QFETCH(bool, right);
    QFETCH(bool, left);
    QFETCH(std::string, expected);

    QCOMPARE(startOf(machine, {right, left},
                     "R{right_temperature}\nL{left_temperature}\nP{platform_temperature}\n"
                     "r{right_off}\nl{left_off}\np{platform_off}\n"),
             expected);
}

void tst_ProfileCode::knowsTheMachine()
{
    QCOMPARE(startOf("cubio_single", {true, false},
                     "{x_min} {x_max} {y_min} {y_max} {z_min} {z_max} {heating_height}"),
             std::string("0 100 0 100 0 120 10\n"));
    QCOMPARE(startOf("fabrino_2", {true, false}, "{x_max} {y_max} {z_max}"),
             std::string("285 150 155\n"));
}

void tst_ProfileCode::primesWhatIsWarm()
{
    const std::string both = startOf("fabrino_2x", {true, true}, "{prime_left}\n{prime_right}\n");
    QCOMPARE(both,
             primeLine(machineOfType("fabrino_2x"), 1) + primeLine(machineOfType("fabrino_2x"), 0));
    QCOMPARE(startOf("fabrino_2x", {false, true}, "{prime_left}\n{prime_right}\n"),
             primeLine(machineOfType("fabrino_2x"), 1) + "\n");
}

void tst_ProfileCode::leavesTheFirstToolInUse()
{
    // What is sliced for the first tool alone begins without naming it.
    QCOMPARE(startOf("fabrino_2x", {true, false}, "T1\n"), std::string("T1\nT0\n"));
    QCOMPARE(startOf("fabrino_2x", {true, true}, "T1\n"), std::string("T1\n"));
    QCOMPARE(startOf("fabrino_2", {true, false}, "G28\n"), std::string("G28\n"));
}

void tst_ProfileCode::namesTheFileOfAMistake()
{
    const MachineDefinition machine = machineOfType("fabrino_2x");
    const SliceSettings settings = settingsOf("fabrino_2x");
    const SliceProfile start = profileOf("G28\n{x}\n");
    QCOMPARE(thrownText([&] {
                 sliceCode(machine, settings, {true, false}, &start);
             }),
             std::string("start.gcode, line 2: {x} is not known"));
    const SliceProfile end = profileOf("", "{y}\n");
    QCOMPARE(thrownText([&] {
                 sliceCode(machine, settings, {true, false}, &end);
             }),
             std::string("end.gcode, line 1: {y} is not known"));
}

void tst_ProfileCode::withoutAProfileItIsTheCodeOfEveryPrint()
{
    const auto code = [](const std::array<bool, 2>& usesTool) {
        return SlicedGCode::read(QByteArray::fromStdString(
            sliceCode(machineOfType("fabrino_2x"), settingsOf("fabrino_2x"), usesTool, nullptr)
                .start));
    };
    using Celsius = std::map<int, std::vector<double>>;
    QCOMPARE(code({true, false}).toolCelsius, (Celsius{{0, {215}}}));
    QCOMPARE(code({false, true}).toolCelsius, (Celsius{{1, {225}}}));
    QCOMPARE(code({true, true}).toolCelsius, (Celsius{{0, {215}}, {1, {225}}}));
    QCOMPARE(code({true, true}).platformCelsius, std::vector<double>{60});
    QVERIFY(code({true, true}).hasStartCode);
}

QTEST_GUILESS_MAIN(tst_ProfileCode)
#include "tst_profile_code.moc"
