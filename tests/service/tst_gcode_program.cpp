#include "gcode_test_text.h"

#include <gcode/gcode_estimate.h>

#include <cmath>
#include <random>

using namespace gcode_test;

class tst_GCodeProgram : public QObject
{
    Q_OBJECT

private slots:
    void interpretsCodes_data();
    void interpretsCodes();
    void shiftsByG92_data();
    void shiftsByG92();
    void countsWhatItLeavesOut_data();
    void countsWhatItLeavesOut();
    void skipsLinesThatCannotBeUnderstood_data();
    void skipsLinesThatCannotBeUnderstood();
    void changesNothingWithASkippedLine();
    void refusesWhatTheMachineCannotDo_data();
    void refusesWhatTheMachineCannotDo();
    void limitsFeedByEveryMotor_data();
    void limitsFeedByEveryMotor();
    void usesToolsWithTheirOffsets();
    void homesWithTheOffsetOfTheToolInUse();
    void splitsArcsIntoChords_data();
    void splitsArcsIntoChords();
    void keepsTimeOfAnArc();
    void refusesAnArcThatLeavesTheVolume();
    void refusesColdExtrusionOnlyWhenAsked();
    void namesSectionAndLineInErrors();
    void readsSectionsAsOneText();
    void tellsTheLineOfEachCommand();
    void keepsFewCodesInTheRemarks();
    void estimatesMovesDwellsAndHeating();
    void estimatesFilamentOfEachTool();
    void estimatesARealFile();
    void cancelsAnEstimate();
    void survivesRandomLines();
};

void tst_GCodeProgram::interpretsCodes_data()
{
    QTest::addColumn<QByteArray>("gcode");
    QTest::addColumn<QString>("commands");

    const auto row = [](const char* name, const QByteArray& gcode, const char* commands) {
        QTest::newRow(name) << gcode << QString::fromUtf8(commands);
    };
    row("nothing", "", "");
    row("absolute moves", "G1 X10 Y20 F1200\nG0 X5\n",
        "move 10 20 0 0 0 at 20\nmove 5 20 0 0 0 at 20");
    row("feed without a move", "F600\nG1 F600\nG1 X1\n",
        "move 1 0 0 0 0 at 10\nlines not understood: 1, line 1");
    row("first feed", "G1 X1\n", "move 1 0 0 0 0 at 25");
    row("a move to where it is", "G1 X0 Y0\n", "");
    row("relative moves", "G91\nG1 X10\nG1 X10\nG90\nG1 X5\n",
        "move 10 0 0 0 0 at 25\nmove 20 0 0 0 0 at 25\nmove 5 0 0 0 0 at 25");
    row("inches", "G20\nG1 X1 F60\nG21\nG1 X1\n",
        "move 25.4 0 0 0 0 at 25.4\nmove 1 0 0 0 0 at 25.4");
    row("absolute extruder", "M104 S200\nG1 E1 F60\nG1 E3\nG1 E2\n",
        "heat 0 to 200\nmove 0 0 0 1 0 at 1 pushing\nmove 0 0 0 3 0 at 1 pushing\n"
        "move 0 0 0 2 0 at 1");
    row("relative extruder", "M104 S200\nM83\nG1 E1 F60\nG1 E1\nM82\nG1 E1\n",
        "heat 0 to 200\nmove 0 0 0 1 0 at 1 pushing\nmove 0 0 0 2 0 at 1 pushing\n"
        "move 0 0 0 1 0 at 1");
    row("relative positions make the extruder relative", "M104 S200\nG91\nG1 E1 F60\nG1 E1\n",
        "heat 0 to 200\nmove 0 0 0 1 0 at 1 pushing\nmove 0 0 0 2 0 at 1 pushing");
    row("absolute positions leave a relative extruder", "M104 S200\nM83\nG90\nG1 E1 F60\nG1 E1\n",
        "heat 0 to 200\nmove 0 0 0 1 0 at 1 pushing\nmove 0 0 0 2 0 at 1 pushing");
    row("dwell", "G4 P1500\nG4 S2\nG4\nG4 P0\n", "dwell 1500\ndwell 2000");
    row("home all", "G28\n", "home XYZ to 245 150 0 0 0");
    row("home some", "G28 X0 Z\n", "home XZ to 245 0 0 0 0");
    row("home with another letter", "G28 W\n", "home XYZ to 245 150 0 0 0");
    row("tools", "T1\nT0\n", "tool 1\ntool 0");
    row("temperature of the tool in use", "T1\nM104 S210\nM109 S220\n",
        "tool 1\nheat 1 to 210\nheat 1 to 220 and wait");
    row("temperature of a named tool", "M104 S210 T1\nM109 T0 S220\n",
        "heat 1 to 210\nheat 0 to 220 and wait");
    row("heater off", "M104 S0\n", "heat 0 to 0");
    row("fraction of a degree", "M104 S209.6\n", "heat 0 to 210");
    row("wait for cooling", "M109 R180\nM190 R60\n",
        "heat 0 to 180 and wait\nplatform to 60 and wait");
    row("platform", "M140 S60\nM190 S110\n", "platform to 60\nplatform to 110 and wait");
    row("fan", "M106 S255\nM106\nM106 S0\nM107\nT1\nM106 P0 S1\n",
        "fan 0 on\nfan 0 on\nfan 0 off\nfan 0 off\ntool 1\nfan 1 on");
    row("motors", "M17\nM18 X Y\nM84 E\nM84\n",
        "motors XYZAB on\nmotors XY off\nmotors AB off\nmotors XYZAB off");
    row("progress and message", "M73 P50 R12\nM73 P99.6\nM117 Almost (done)\nM117\n",
        "progress 50\nprogress 100\nmessage \"Almost (done)\"\nmessage \"\"");
    row("leading zeros and lower case", "g01 x1\nm0104 s200\nt01\n",
        "move 1 0 0 0 0 at 25\nheat 0 to 200\ntool 1");
}

void tst_GCodeProgram::interpretsCodes()
{
    QFETCH(QByteArray, gcode);
    QFETCH(QString, commands);

    QCOMPARE(programText(machineOfType(Printer::Fabrino2X), gcode.toStdString()), commands);
}

void tst_GCodeProgram::shiftsByG92_data()
{
    QTest::addColumn<QByteArray>("gcode");
    QTest::addColumn<QString>("commands");

    const auto row = [](const char* name, const QByteArray& gcode, const char* commands) {
        QTest::newRow(name) << gcode << QString::fromUtf8(commands);
    };
    row("extruder", "M104 S200\nG1 E5 F60\nG92 E0\nG1 E1\n",
        "heat 0 to 200\nmove 0 0 0 5 0 at 1 pushing\nset 0 0 0 0 0\nmove 0 0 0 1 0 at 1 pushing");
    row("an axis", "G1 X50\nG92 X0\nG1 X10\n",
        "move 50 0 0 0 0 at 25\nset 0 0 0 0 0\nmove 10 0 0 0 0 at 25");
    row("all without letters", "G1 X5 Y6 Z7\nG92\n", "move 5 6 7 0 0 at 25\nset 0 0 0 0 0");
    row("in inches", "G20\nG92 X1\n", "set 25.4 0 0 0 0");
    row("the volume stays where it is", "G1 X200\nG92 X0\nG1 X46\n",
        "move 200 0 0 0 0 at 25\nset 0 0 0 0 0\n"
        "error 0: Line 3: X 246 mm is outside the machine's build volume (0 to 245 mm)");
    row("below zero, but inside", "G1 X200\nG92 X0\nG1 X-200\n",
        "move 200 0 0 0 0 at 25\nset 0 0 0 0 0\nmove -200 0 0 0 0 at 25");
    row("taken away", "G1 X200\nG92 X0\nG92.1\nG1 X210\n",
        "move 200 0 0 0 0 at 25\nset 0 0 0 0 0\nset 200 0 0 0 0\nmove 210 0 0 0 0 at 25");
    row("taken away by homing, for the homed axis", "G92 X-5 Y-5\nG28 X\nG1 X1\nG1 Y140\n",
        "set -5 -5 0 0 0\nhome X to 245 -5 0 0 0\nmove 1 -5 0 0 0 at 25\nmove 1 140 0 0 0 at 25");
    row("another tool's filament stays", "M104 S200\nM104 S200 T1\nG1 E5 F60\nT1\nG92 E0\nG1 E1\n",
        "heat 0 to 200\nheat 1 to 200\nmove 0 0 0 5 0 at 1 pushing\ntool 1\nset 0 0 0 5 0\n"
        "move 0 0 0 5 1 at 1 pushing");
}

void tst_GCodeProgram::shiftsByG92()
{
    QFETCH(QByteArray, gcode);
    QFETCH(QString, commands);

    QCOMPARE(programText(machineOfType(Printer::Fabrino2X), gcode.toStdString()), commands);
}

void tst_GCodeProgram::countsWhatItLeavesOut_data()
{
    QTest::addColumn<QByteArray>("gcode");
    QTest::addColumn<QString>("remarks");

    const auto row = [](const char* name, const QByteArray& gcode, const char* remarks) {
        QTest::newRow(name) << gcode << QString::fromUtf8(remarks);
    };
    row("unknown codes", "G29\nM201 X500\nM900 K0\nM201 Y500\n",
        "left out: G29 (1), M201 (2), M900 (1)");
    row("subcodes", "G92.2\nM104.1 S200\n", "left out: G92.2 (1), M104.1 (1)");
    row("platform of a machine without one", "M140 S60\nM190 S500\n",
        "left out: M140 (1), M190 (1)");
    row("other planes and their arcs", "G18\nG2 X1 Y1 I1\nG17\n", "left out: G18 (1), G2 (1)");
    row("another fan", "M106 P1 S255\n", "left out: M106 (1)");
    row("time-out of the motors", "M84 S60\n", "left out: M84 (1)");
    row("progress of another kind", "M73 Q10 S5\n", "left out: M73 (1)");
    row("with lines not understood", "G29\nG1 Xnan\nhello\n",
        "left out: G29 (1); lines not understood: 2, first in line 2");
    row("cold filament", "G1 E1\n",
        "move 0 0 0 1 0 at 25 pushing\nmoves that push cold filament: 1, line 1");
    row("motors of one extruder", "M84 E\nM17\n", "motors A off\nmotors XYZA on");
    row("silent ones", "G21\nG90\nG17\nM82\nG4\n; comment\n\n", "");
}

void tst_GCodeProgram::countsWhatItLeavesOut()
{
    QFETCH(QByteArray, gcode);
    QFETCH(QString, remarks);

    QCOMPARE(programText(machineOfType(Printer::Fabrino2), gcode.toStdString()), remarks);
}

void tst_GCodeProgram::skipsLinesThatCannotBeUnderstood_data()
{
    QTest::addColumn<QByteArray>("line");

    for (const char* line : {"G1 Xnan",
                             "G1 Xinf",
                             "G1 X",
                             "G1 X1 Q2",
                             "G1 X1 A5",
                             "G1 X1e5e5",
                             "G1 X1,5",
                             "G1 X1 F0",
                             "G1 X1 F-100",
                             "G1 X1 F",
                             "G1 E23000000",
                             "G92 E23000000",
                             "G92 X1000000000",
                             "G92 X",
                             "G92 Q1",
                             "G4 P-1",
                             "G4 S100000",
                             "G4 P1 S1",
                             "G4 X1",
                             "G2 X10",
                             "G2 X10 I0 J0",
                             "G2 X10 I5 R5",
                             "G2 X10 R4",
                             "G2 R5",
                             "G2 X10 Y0 I7",
                             "G2 X10 I5 P2",
                             "G3 Xnan I5",
                             "M104",
                             "M104 R200",
                             "M104 S-1",
                             "M104 S",
                             "M104 Snan",
                             "M109 T0",
                             "M104 S200 T0.5",
                             "M104 S200 T-1",
                             "M140 S-5",
                             "M190",
                             "M106 S-1",
                             "M106 S",
                             "M73 P101",
                             "M73 P-1",
                             "M73 P",
                             "T",
                             "Tx",
                             "X10",
                             "\x01\x02",
                             "G",
                             "hello"})
        QTest::newRow(line) << QByteArray(line);
}

void tst_GCodeProgram::skipsLinesThatCannotBeUnderstood()
{
    QFETCH(QByteArray, line);
    const QByteArray gcode = line + "\nG1 X1\n";

    QCOMPARE(programText(machineOfType(Printer::Fabrino2X), gcode.toStdString()),
             QStringLiteral("move 1 0 0 0 0 at 25\nlines not understood: 1, line 1"));
}

void tst_GCodeProgram::changesNothingWithASkippedLine()
{
    QCOMPARE(programText(machineOfType(Printer::Fabrino2X),
                         "G1 X10 Y10 F600\nG1 X20 Ynan F60\nG92 X0 Ynan\nG2 X20 I7 F60\nG1 Y11\n"),
             QStringLiteral("move 10 10 0 0 0 at 10\nmove 10 11 0 0 0 at 10\n"
                            "lines not understood: 3, first in line 2"));
}

void tst_GCodeProgram::refusesWhatTheMachineCannotDo_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("gcode");
    QTest::addColumn<QString>("last");

    const auto row = [](const char* name, int type, const QByteArray& gcode, const char* last) {
        QTest::newRow(name) << type << gcode << QString::fromUtf8(last);
    };
    row("right of the volume", 3, "G1 X285.02\n",
        "error 0: Line 1: X 285.02 mm is outside the machine's build volume (0 to 285 mm)");
    row("on its edge", 3, "G1 X285\n", "move 285 0 0 0 0 at 25");
    row("rounded over its edge", 3, "G1 X285.005\n", "move 285.005 0 0 0 0 at 25");
    row("in front of it", 3, "G28\nG1 Y-3\n",
        "error 0: Line 2: Y -3 mm is outside the machine's build volume (0 to 150 mm)");
    row("above it", 3, "G1 Z156\n",
        "error 0: Line 1: Z 156 mm is outside the machine's build volume (0 to 155 mm)");
    row("by relative moves", 3, "G91\nG1 Z100\nG1 Z100\n",
        "error 0: Line 3: Z 200 mm is outside the machine's build volume (0 to 155 mm)");
    row("far away", 3, "G1 X999999999\n",
        "error 0: Line 1: X 999999999 mm is outside the machine's build volume (0 to 285 mm)");
    row("too hot", 3, "M104 S281\n",
        "error 1: Line 1: 281 °C is above the machine's limit of 280 °C for an extruder");
    row("as hot as can be", 3, "M104 S280\n", "heat 0 to 280");
    row("very hot", 3, "M109 S1000000000\n",
        "error 1: Line 1: 1000000000 °C is above the machine's limit of 280 °C for an extruder");
    row("platform too hot", 4, "M190 S131\n",
        "error 1: Line 1: 131 °C is above the machine's limit of 130 °C for the platform");
    row("second tool of a single machine", 3, "T1\n",
        "error 2: Line 1: the machine has no tool T1");
    row("heating a second tool of a single machine", 3, "M104 T1 S200\n",
        "error 2: Line 1: the machine has no tool T1");
    row("third tool of a dual machine", 4, "T2\n", "error 2: Line 1: the machine has no tool T2");
    row("heating a tool far away", 4, "M104 S200 T1000000000\n",
        "error 2: Line 1: the machine has no tool T1000000000");
}

void tst_GCodeProgram::refusesWhatTheMachineCannotDo()
{
    QFETCH(int, type);
    QFETCH(QByteArray, gcode);
    QFETCH(QString, last);

    const QString text =
        programText(machineOfType(static_cast<Printer::Type>(type)), gcode.toStdString());

    QCOMPARE(text.section(QLatin1Char('\n'), -1), last);
}

void tst_GCodeProgram::limitsFeedByEveryMotor_data()
{
    QTest::addColumn<QByteArray>("gcode");
    QTest::addColumn<double>("feed");
    QTest::addColumn<double>("seconds");

    // Of the Fabrino 2: 300 mm/s for X and Y, 20 for Z, 45 for its extruder.
    QTest::newRow("as asked") << QByteArray("G1 X30 Y40 F3000") << 50.0 << 1.0;
    QTest::newRow("X") << QByteArray("G1 X30 F60000") << 300.0 << 0.1;
    QTest::newRow("X and Y share") << QByteArray("G1 X30 Y40 F60000") << 375.0 << 50 / 375.0;
    QTest::newRow("Z") << QByteArray("G1 Z10 F6000") << 20.0 << 0.5;
    QTest::newRow("Z slows the others") << QByteArray("G1 X30 Z40 F6000") << 25.0 << 2.0;
    QTest::newRow("extruder alone") << QByteArray("G1 E90 F6000") << 45.0 << 2.0;
    QTest::newRow("extruder slows the others") << QByteArray("G1 X1 E90 F6000") << 0.5 << 2.0;
    QTest::newRow("pulling back") << QByteArray("G1 E-90 F6000") << 45.0 << 2.0;
    QTest::newRow("slowest") << QByteArray("G1 X1 F0.001") << 0.1 << 10.0;
}

void tst_GCodeProgram::limitsFeedByEveryMotor()
{
    QFETCH(QByteArray, gcode);
    QFETCH(double, feed);
    QFETCH(double, seconds);
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    GCodeProgram program(machine, sectionsOf(gcode.toStdString()));
    MachineCommand command;

    QVERIFY(program.next(command));

    const auto& move = std::get<MoveCommand>(command.action);
    QCOMPARE(move.feed, feed);
    QCOMPARE(move.seconds, seconds);
}

void tst_GCodeProgram::usesToolsWithTheirOffsets()
{
    // The left nozzle of the 2X is 35 mm to the left, so its carriage stands 35 mm to the right.
    QCOMPARE(programText(machineOfType(Printer::Fabrino2X),
                         "G1 X100 Y10 F1500\nT1\nG1 E-1\nG1 Y20\nG1 X101\nT0\nG1 X101\n"),
             QStringLiteral("move 100 10 0 0 0 at 25\n"
                            "tool 1\n"
                            "move 100 10 0 0 -1 at 25\n"
                            "move 135 20 0 0 -1 at 25\n"
                            "move 136 20 0 0 -1 at 25\n"
                            "tool 0\n"
                            "move 101 20 0 0 -1 at 25"));
}

void tst_GCodeProgram::homesWithTheOffsetOfTheToolInUse()
{
    QCOMPARE(programText(machineOfType(Printer::Fabrino2X), "T1\nG1 X10\nG28 X\nG91\nG1 X-1\n"),
             QStringLiteral("tool 1\nmove 45 0 0 0 0 at 25\nhome X to 245 0 0 0 0\n"
                            "move 244 0 0 0 0 at 25"));
}

void tst_GCodeProgram::splitsArcsIntoChords_data()
{
    QTest::addColumn<QByteArray>("gcode");
    QTest::addColumn<double>("centerX");
    QTest::addColumn<double>("centerY");
    QTest::addColumn<double>("radius");
    QTest::addColumn<double>("degrees");
    QTest::addColumn<double>("endX");
    QTest::addColumn<double>("endY");

    // All begin at X 100, Y 50; counter-clockwise is positive.
    const auto row = [](const char* name, const QByteArray& gcode, double centerX, double centerY,
                        double radius, double degrees, double endX, double endY) {
        QTest::newRow(name) << gcode << centerX << centerY << radius << degrees << endX << endY;
    };
    row("quarter, counter-clockwise", "G3 X90 Y60 I-10", 90, 50, 10, 90, 90, 60);
    row("three quarters, clockwise", "G2 X90 Y60 I-10", 90, 50, 10, -270, 90, 60);
    row("full circle", "G2 I-10", 90, 50, 10, -360, 100, 50);
    row("full circle with its end", "G3 X100 Y50 J20", 100, 70, 20, 360, 100, 50);
    row("by radius, short way clockwise", "G2 X110 Y40 R10", 100, 40, 10, -90, 110, 40);
    row("by radius, short way counter-clockwise", "G3 X110 Y40 R10", 110, 50, 10, 90, 110, 40);
    row("by radius, long way clockwise", "G2 X110 Y40 R-10", 110, 50, 10, -270, 110, 40);
    row("by radius, long way counter-clockwise", "G3 X110 Y40 R-10", 100, 40, 10, 270, 110, 40);
    row("half circle by radius", "G3 X120 Y50 R10", 110, 50, 10, 180, 120, 50);
    row("relative", "G91\nG3 X-10 Y10 I-10", 90, 50, 10, 90, 90, 60);
    row("large", "G3 X100 Y80 R5000", 100 - std::sqrt(5000.0 * 5000 - 15 * 15), 65, 5000,
        2 * std::asin(15 / 5000.0) * 180 / std::acos(-1.0), 100, 80);
    row("smaller than the tolerance", "G2 I0.004", 100.004, 50, 0.004, -360, 100, 50);
}

void tst_GCodeProgram::splitsArcsIntoChords()
{
    QFETCH(QByteArray, gcode);
    QFETCH(double, centerX);
    QFETCH(double, centerY);
    QFETCH(double, radius);
    QFETCH(double, degrees);
    QFETCH(double, endX);
    QFETCH(double, endY);
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    GCodeProgram program(machine, sectionsOf("G1 X100 Y50\n" + gcode.toStdString() + " F600\n"));
    MachineCommand command;
    QVERIFY(program.next(command));
    double x = 100;
    double y = 50;
    double turned = 0;
    int chords = 0;

    while (program.next(command)) {
        const auto& move = std::get<MoveCommand>(command.action);
        const double toX = move.target[0];
        const double toY = move.target[1];
        const double cross = (x - centerX) * (toY - centerY) - (y - centerY) * (toX - centerX);
        const double dot = (x - centerX) * (toX - centerX) + (y - centerY) * (toY - centerY);
        turned += std::atan2(cross, dot);
        const double middle = std::hypot((x + toX) / 2 - centerX, (y + toY) / 2 - centerY);
        QVERIFY2(std::abs(std::hypot(toX - centerX, toY - centerY) - radius) < 1e-6,
                 "off the circle");
        QVERIFY2(radius - middle < 0.0101, "chord too long");
        x = toX;
        y = toY;
        ++chords;
    }

    QVERIFY(std::abs(turned * 180 / std::acos(-1.0) - degrees) < 1e-3);
    QVERIFY(std::abs(x - endX) < 1e-9);
    QVERIFY(std::abs(y - endY) < 1e-9);
    QVERIFY2(chords >= 1 && chords < 200, qPrintable(QString::number(chords)));
    QCOMPARE(program.remarks().unreadableLines, std::uint64_t(0));
}

void tst_GCodeProgram::keepsTimeOfAnArc()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);

    const GCodeEstimate estimate =
        estimateGCode(machine, sectionsOf("G1 X100 Y50 Z0 F60000\nG92 X100 Y50\n"
                                          "M104 S200\nM83\nG3 X90 Y60 Z5 E2 I-10 F600\n"));

    const double travel = 100 / 300.0;
    const double arc = std::hypot(std::acos(-1.0) * 5, 5.0) / 10;
    QVERIFY(std::abs(estimate.seconds - travel - arc) < 0.01);
    QVERIFY(std::abs(estimate.filamentMm[0] - 2) < 1e-9);
}

void tst_GCodeProgram::refusesAnArcThatLeavesTheVolume()
{
    const QString text =
        programText(machineOfType(Printer::Fabrino2), "G1 X100 Y4\nG3 X110 Y4 I5 F600\n");

    QVERIFY2(text.contains(QLatin1String("\nerror 0: Line 2: Y -")), qPrintable(text));
}

void tst_GCodeProgram::refusesColdExtrusionOnlyWhenAsked()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    const std::string gcode = "G1 E-1 F60\nM104 S89\nG1 E0\nM104 S90\nG1 E1\n";

    QCOMPARE(programText(machine, gcode),
             QStringLiteral("move 0 0 0 -1 0 at 1\nheat 0 to 89\nmove 0 0 0 0 0 at 1 pushing\n"
                            "heat 0 to 90\nmove 0 0 0 1 0 at 1 pushing\n"
                            "moves that push cold filament: 1, line 3"));
    QCOMPARE(programText(machine, gcode, GCodeProgram::RefuseCold),
             QString::fromUtf8("move 0 0 0 -1 0 at 1\nheat 0 to 89\n"
                               "error 3: Line 3: the extruder would push filament with a target of "
                               "89 °C; the machine needs 90 °C"));
}

void tst_GCodeProgram::namesSectionAndLineInErrors()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    std::vector<GCodeSection> sections;
    sections.push_back({"Start code", byteSourceOf("G28\nG1 Z1\n")});
    sections.push_back({"", byteSourceOf("G1 X1\n")});
    sections.push_back({"End code", byteSourceOf("; end\nG1 X-1\n")});
    GCodeProgram program(machine, std::move(sections));
    MachineCommand command;
    QString thrown;

    try {
        while (program.next(command)) {
        }
    } catch (const GCodeError& error) {
        thrown = QString::fromUtf8(error.what());
    }

    QCOMPARE(thrown, QStringLiteral("End code, line 2: X -1 mm is outside the machine's build "
                                    "volume (0 to 285 mm)"));
}

void tst_GCodeProgram::readsSectionsAsOneText()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    std::vector<GCodeSection> sections;
    sections.push_back({"Start code", byteSourceOf("G91\nG1 X10")});
    sections.push_back({"", byteSourceOf("")});
    sections.push_back({"", byteSourceOf("G1 X10")});
    GCodeProgram program(machine, std::move(sections));
    MachineCommand command;

    QVERIFY(program.next(command));
    QCOMPARE(command.section, std::size_t(0));
    QCOMPARE(command.line, std::uint64_t(2));
    QVERIFY(program.next(command));
    QCOMPARE(command.section, std::size_t(2));
    QCOMPARE(command.line, std::uint64_t(1));
    QCOMPARE(std::get<MoveCommand>(command.action).target[0], 20.0);
    QVERIFY(!program.next(command));
    QVERIFY(!program.next(command));
    QCOMPARE(program.linesRead(), std::uint64_t(3));
    QCOMPARE(program.bytesRead(), std::uint64_t(16));
}

void tst_GCodeProgram::tellsTheLineOfEachCommand()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    GCodeProgram program(machine, sectionsOf("\n; comment\nG28\nG1 X100 Y50\n\nG2 I-10\nM84\n"));
    MachineCommand command;
    QVector<int> lines;

    while (program.next(command)) {
        if (lines.isEmpty() || lines.last() != static_cast<int>(command.line))
            lines += static_cast<int>(command.line);
    }

    QCOMPARE(lines, (QVector<int>{3, 4, 6, 7}));
}

void tst_GCodeProgram::keepsFewCodesInTheRemarks()
{
    std::string gcode;
    for (int code = 1000; code < 1300; ++code)
        gcode += "M" + std::to_string(code) + "\n";
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);

    const GCodeEstimate estimate = estimateGCode(machine, sectionsOf(gcode));

    QCOMPARE(estimate.remarks.leftOut.size(), std::size_t(201));
    QCOMPARE(estimate.remarks.leftOut.at("others"), std::uint64_t(100));
}

void tst_GCodeProgram::estimatesMovesDwellsAndHeating()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2X);
    const double heatSeconds = machine.toolhead.secondsToHeat(23, 220);
    QVERIFY(heatSeconds > 30 && heatSeconds < 600);

    const auto seconds = [&](const char* gcode) {
        return estimateGCode(machine, sectionsOf(gcode)).seconds;
    };

    QCOMPARE(seconds(""), 0.0);
    QCOMPARE(seconds("G1 X100 F6000\nG4 S2\n"), 3.0);
    QCOMPARE(seconds("M109 S220\n"), heatSeconds);
    QCOMPARE(seconds("M104 S220\n"), 0.0);
    QCOMPARE(seconds("M104 S220\nM109 S220\n"), heatSeconds);
    QCOMPARE(seconds("M109 S220\nM109 S220\n"), heatSeconds);
    QVERIFY(std::abs(seconds("M104 S220\nG4 S20\nM109 S220\n") - heatSeconds) < 1e-6);
    QVERIFY(std::abs(seconds("M104 S220\nG4 S3600\nM109 S220\n") - 3600) < 1e-6);
    // Both tools are warm when the slower one is.
    QVERIFY(std::abs(seconds("M104 S220 T1\nM109 S220\nM109 S220 T1\n") - heatSeconds) < 1e-6);
    QCOMPARE(seconds("M190 S110\n"), machine.platform.secondsToHeat(23, 110));
    // From the middle of the axes, X and Y together, then Z.
    QCOMPARE(seconds("G28\n"), 122.5 / 50 + 77.5 / 10);
    QCOMPARE(seconds("G28 Z\nG1 Z20 F600\nG28 Z\n"), 77.5 / 10 + 2 + 2);
}

void tst_GCodeProgram::estimatesFilamentOfEachTool()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2X);

    const GCodeEstimate estimate = estimateGCode(
        machine, sectionsOf("G1 E10\nG92 E0\nG1 E5\nG1 E4\nT1\nG92 E0\nG1 E-2\nG1 X1\nM84\n"));

    QCOMPARE(estimate.filamentMm[0], 14.0);
    QCOMPARE(estimate.filamentMm[1], -2.0);
    QVERIFY(estimate.usesTool[0]);
    QVERIFY(!estimate.usesTool[1]);
    QCOMPARE(estimate.lines, std::uint64_t(9));
    QCOMPARE(estimate.commands, std::uint64_t(9));
    QCOMPARE(estimate.remarks.coldMoves, std::uint64_t(2));
}

void tst_GCodeProgram::estimatesARealFile()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    const std::string gcode = fileBytes("cube_single.gcode");

    const GCodeEstimate estimate =
        estimateGCode(machine, sectionsOf(gcode), GCodeProgram::RefuseCold);

    // The slicer says so in its own comments.
    QVERIFY(gcode.find("; filament used [mm] = ") != std::string::npos);
    const double filament = std::stod(gcode.substr(gcode.find("; filament used [mm] = ") + 23));
    QVERIFY2(std::abs(estimate.filamentMm[0] - filament) < 3,
             qPrintable(QString::number(filament)));
    QVERIFY(estimate.seconds > 120 && estimate.seconds < 1200);
    QCOMPARE(estimate.remarks.toString(), std::string());
    QCOMPARE(estimate.lines,
             static_cast<std::uint64_t>(std::count(gcode.begin(), gcode.end(), '\n')));
}

void tst_GCodeProgram::cancelsAnEstimate()
{
    std::string gcode;
    for (int i = 0; i < 20000; ++i)
        gcode += i % 2 ? "G1 X1\n" : "G1 X2\n";
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    std::vector<std::uint64_t> reports;
    const auto estimate = [&](std::size_t stopAfter) {
        reports.clear();
        estimateGCode(machine, sectionsOf(gcode), GCodeProgram::CountCold,
                      [&](std::uint64_t bytes) {
                          reports.push_back(bytes);
                          return reports.size() < stopAfter;
                      });
    };

    QVERIFY_EXCEPTION_THROWN(estimate(2), GCodeCanceled);
    QCOMPARE(reports.size(), std::size_t(2));
    estimate(100);
    QCOMPARE(reports.size(), std::size_t(20000 / kCommandsPerProgress));
    QVERIFY(std::is_sorted(reports.begin(), reports.end()));
}

void tst_GCodeProgram::survivesRandomLines()
{
    std::mt19937 random(4711);
    const std::vector<std::string> words = {
        "G0",    "G1",  "G2",   "G3",   "G4",         "G20",  "G21", "G28", "G90", "G91", "G92",
        "G92.1", "M82", "M83",  "M104", "M109",       "M106", "M84", "T0",  "T1",  " X",  " Y",
        " Z",    " E",  " F",   " I",   " J",         " R",   " S",  " P",  " T",  "1",   "-1",
        "0",     "10",  "99.5", "1e9",  "1000000000", "nan",  ".",   "-",   ";",   "(",   "*"};
    const MachineDefinition machine = machineOfType(Printer::Fabrino2X);
    for (int round = 0; round < 400; ++round) {
        std::string gcode;
        for (int i = 0; i < 200; ++i)
            gcode += words[random() % words.size()] + (random() % 4 == 0 ? "\n" : "");
        GCodeProgram program(machine, sectionsOf(gcode));
        ProgramClock clock(machine);
        MachineCommand command;
        int commands = 0;
        try {
            // A full circle of the largest radius leaves the volume long before this many chords.
            while (program.next(command) && ++commands < 100000) {
                clock.advance(command);
                if (const auto* move = std::get_if<MoveCommand>(&command.action)) {
                    for (double value : move->target)
                        QVERIFY(std::isfinite(value));
                    QVERIFY(move->feed > 0 && std::isfinite(move->seconds));
                }
            }
        } catch (const GCodeError&) {
            // What a machine cannot do is one good end.
        }
        QVERIFY(commands < 100000);
        QVERIFY(std::isfinite(clock.seconds()));
    }
}

QTEST_GUILESS_MAIN(tst_GCodeProgram)
#include "tst_gcode_program.moc"
