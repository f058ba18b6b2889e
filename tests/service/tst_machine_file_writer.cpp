#include "gcode_test_text.h"
#include "machine_file_reader.h"

#include <gcode/machine_file_writer.h>
#include <gcode/start_end_code.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <sstream>

using namespace gcode_test;

namespace {

struct Written
{
    QByteArray bytes;
    MachineFileResult result;
    std::vector<MachineFileCommand> commands;

    /** Codes in order, those of progress left out. */
    std::vector<int> codes() const
    {
        std::vector<int> all;
        for (const MachineFileCommand& command : commands) {
            if (command.code != 150)
                all.push_back(command.code);
        }
        return all;
    }
    const MachineFileCommand& first(int code) const
    {
        for (const MachineFileCommand& command : commands) {
            if (command.code == code)
                return command;
        }
        throw std::runtime_error("no command " + std::to_string(code));
    }
};

Written written(const MachineDefinition& machine, MachineFileFormat format,
                const std::string& gcode, const std::string& name = "cube")
{
    Written file;
    file.result = writeMachineFile(
        machine, format, name, [&] { return sectionsOf(gcode); },
        [&](const char* bytes, std::size_t size) {
            file.bytes.append(bytes, static_cast<int>(size));
        });
    file.commands = readMachineFile(file.bytes);
    return file;
}

/** Where a sliced file says that the nozzle and the filament of the tool in use go, line by line.
 */
struct SlicedMove
{
    double x, y, z, e;
    int tool;
    /** Whose offset the carriage stands by: a new tool comes to its place with the first move that
     * names one. */
    int placedTool;
};

/** Knows no more of G-code than slicers write into the two files of tests/data. */
std::vector<SlicedMove> slicedMoves(const std::string& gcode, const std::array<double, 3>& home)
{
    std::vector<SlicedMove> moves;
    SlicedMove at{0, 0, 0, 0, 0, 0};
    std::array<double, 2> filament{};
    bool relative = false;
    std::istringstream lines(gcode);
    for (std::string line; std::getline(lines, line);) {
        line = line.substr(0, line.find(';'));
        std::istringstream words(line);
        std::string code;
        words >> code;
        if (code == "M83")
            relative = true;
        if (code == "T0" || code == "T1") {
            filament[static_cast<std::size_t>(at.tool)] = at.e;
            at.tool = code[1] - '0';
            at.e = filament[static_cast<std::size_t>(at.tool)];
        }
        if (code == "G28") {
            const bool all = line.find('X') == std::string::npos;
            at.x = home[0];
            if (all) {
                at.y = home[1];
                at.z = home[2];
            }
        }
        if (code == "G92")
            at.e = 0;
        if (code != "G1")
            continue;
        for (std::string word; words >> word;) {
            const double value = std::stod(word.substr(1));
            if (word[0] == 'X' || word[0] == 'Y' || word[0] == 'Z')
                at.placedTool = at.tool;
            switch (word[0]) {
            case 'X':
                at.x = value;
                break;
            case 'Y':
                at.y = value;
                break;
            case 'Z':
                at.z = value;
                break;
            case 'E':
                at.e = relative ? at.e + value : value;
                break;
            default:
                break;
            }
        }
        moves.push_back(at);
    }
    return moves;
}

/** Empty when the stops are where the sliced file's moves lead, in order and within a step. */
QString difference(const MachineDefinition& machine, const std::string& gcode,
                   const std::vector<MachineFileReplay::Stop>& stops)
{
    std::size_t next = 0;
    std::size_t matched = 0;
    for (const SlicedMove& move : slicedMoves(gcode, machine.homePosition)) {
        const auto fits = [&](const MachineFileReplay::Stop& stop) {
            const auto& offset = machine.toolOffsets[static_cast<std::size_t>(move.placedTool)];
            const double wanted[] = {move.x - offset[0], move.y - offset[1], move.z - offset[2]};
            for (std::size_t i = 0; i < 3; ++i) {
                if (std::abs(wanted[i] * machine.stepsPerMm[i] - stop.steps[i]) > 1)
                    return false;
            }
            const auto motor = static_cast<std::size_t>(MotorA + move.tool);
            return stop.tool == move.tool &&
                   std::abs(move.e * machine.stepsPerMm[motor] - stop.steps[motor]) <= 1;
        };
        if (next < stops.size() && fits(stops[next])) {
            ++next;
            ++matched;
        } else if (next > 0 && !fits(stops[next - 1])) {
            return QStringLiteral("at stop %1: X%2 Y%3 Z%4 E%5 T%6")
                .arg(next)
                .arg(move.x)
                .arg(move.y)
                .arg(move.z)
                .arg(move.e)
                .arg(move.tool);
        }
    }
    if (next != stops.size())
        return QStringLiteral("%1 of %2 stops").arg(next).arg(stops.size());
    return matched > 500 ? QString() : QStringLiteral("only %1 moves").arg(matched);
}

std::string joined(const std::vector<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts)
        all += (all.empty() ? "" : "\n") + text;
    return all;
}

} // namespace

Q_DECLARE_METATYPE(trovek::service::MachineFileFormat)

class tst_MachineFileWriter : public QObject
{
    Q_OBJECT

private slots:
    void writesTheFrameOfAnX3g();
    void writesTheFrameOfAnS3g();
    void writesAMoveOfAnX3gByteForByte();
    void writesAMoveOfAnS3gByteForByte();
    void writesEachCommand_data();
    void writesEachCommand();
    void homesByTheMachinesDirections_data();
    void homesByTheMachinesDirections();
    void replaysARealFile_data();
    void replaysARealFile();
    void keepsTemperaturesToolsAndOrderOfARealFile();
    void takesAsLongAsEstimated_data();
    void takesAsLongAsEstimated();
    void doesNotDriftOverRelativeMoves();
    void doesNotDriftOverResetsOfTheExtruder();
    void staysWithinAStepAfterAnySetPosition();
    void beginsAnewAtTheEndStops();
    void movesEachToolsOwnMotor();
    void givesEachPercentOnce_data();
    void givesEachPercentOnce();
    void givesProgressByTime();
    void leavesOutMovesOfLessThanHalfAStep();
    void keepsWhatDoesNotFitWithinItsFields();
    void cutsNamesAndMessages_data();
    void cutsNamesAndMessages();
    void writesNothingWhenTheProgramIsRefused_data();
    void writesNothingWhenTheProgramIsRefused();
    void writesColdExtrusionAndCountsIt();
    void countsWhatItWrote();
    void passesOnAnErrorOfTheSink();
    void canBeCanceledInBothPasses();
    void survivesRandomPrograms();
    void knowsFormatsByName();
};

void tst_MachineFileWriter::writesTheFrameOfAnX3g()
{
    MachineDefinition machine = machineOfType(Printer::Fabrino2);
    machine.x3gMachineId = 0x0203;

    const Written file = written(machine, MachineFileFormat::X3g, "G4 P1\n", "cube");

    QCOMPARE(file.bytes.left(21).toHex(), QByteArray("9d01000000000000"
                                                     "0302"
                                                     "0000000000000000000000"));
    QCOMPARE(file.bytes.mid(21, 13).toHex(), QByteArray("9900000000"
                                                        "6375626500"
                                                        "960000"));
    QCOMPARE(file.bytes.right(5).toHex(), QByteArray("966400"
                                                     "9a00"));
    QCOMPARE(file.codes(), (std::vector<int>{157, 153, 133, 154}));
    QCOMPARE(file.commands.front().machineId, 0x0203);
}

void tst_MachineFileWriter::writesTheFrameOfAnS3g()
{
    const Written file =
        written(machineOfType(Printer::Fabrino2), MachineFileFormat::S3g, "G4 P1\n", "cube");

    QCOMPARE(file.bytes.left(13).toHex(), QByteArray("9900000000"
                                                     "6375626500"
                                                     "960000"));
    QCOMPARE(file.codes(), (std::vector<int>{153, 133, 154}));
}

void tst_MachineFileWriter::writesAMoveOfAnX3gByteForByte()
{
    MachineDefinition machine = machineOfType(Printer::Fabrino2);
    machine.stepsPerMm = {100, 100, 400, 96, 96};

    const Written file =
        written(machine, MachineFileFormat::X3g, "M104 S200\nG1 X30 Y40 E-1 F3000\n");

    const MachineFileCommand& move = file.first(155);
    QCOMPARE(move.steps, (std::array<std::int32_t, 5>{3000, 4000, 0, -96, 0}));
    // 50 mm at 50 mm/s is a second.
    QCOMPARE(move.value, 4000u);
    QCOMPARE(move.distance, 50.0f);
    QCOMPARE(move.speed, 50 * 64);
    QVERIFY(file.bytes.contains(QByteArray::fromHex("9b"
                                                    "b80b0000"
                                                    "a00f0000"
                                                    "00000000"
                                                    "a0ffffff"
                                                    "00000000"
                                                    "a00f0000"
                                                    "00"
                                                    "00004842"
                                                    "800c")));
}

void tst_MachineFileWriter::writesAMoveOfAnS3gByteForByte()
{
    MachineDefinition machine = machineOfType(Printer::Fabrino2);
    machine.stepsPerMm = {100, 100, 400, 96, 96};

    const Written file = written(machine, MachineFileFormat::S3g, "G1 X30 Y40 E-1 F3000\n");

    QVERIFY(file.bytes.contains(QByteArray::fromHex("8e"
                                                    "b80b0000"
                                                    "a00f0000"
                                                    "00000000"
                                                    "a0ffffff"
                                                    "00000000"
                                                    "40420f00"
                                                    "00")));
    QCOMPARE(file.codes(), (std::vector<int>{153, 142, 154}));
}

void tst_MachineFileWriter::writesEachCommand_data()
{
    QTest::addColumn<QByteArray>("gcode");
    QTest::addColumn<QByteArray>("hex");

    const auto row = [](const char* name, const char* gcode, const char* hex) {
        QTest::newRow(name) << QByteArray(gcode) << QByteArray(hex);
    };
    row("delay", "G4 S2", "85d0070000");
    row("tool", "T1", "8601");
    row("tool target", "M104 S220 T1", "88010302dc00");
    row("tool target and wait", "M109 S220",
        "88000302dc00"
        "8700"
        "6400"
        "0807");
    row("tool off does not wait", "M109 S0",
        "880003020000"
        "85");
    row("platform target", "M140 S110", "88001f026e00");
    row("platform target and wait", "M190 S110",
        "88001f026e00"
        "8d00"
        "6400"
        "0807");
    row("fan on", "T1\nM106", "88010c0101");
    row("fan off", "M107", "88000c0100");
    row("motors off", "M84", "891f");
    row("motors on", "M17 X Z", "8985");
    row("message", "M117 Hi there",
        "9502000000"
        "486920746865726500");
    row("set position", "G92 Y2 E1",
        "8c"
        "00000000"
        "c8000000"
        "00000000"
        "60000000"
        "00000000");
    row("recall of the stored home", "G28 Y", "9002");
}

void tst_MachineFileWriter::writesEachCommand()
{
    QFETCH(QByteArray, gcode);
    QFETCH(QByteArray, hex);
    MachineDefinition machine = machineOfType(Printer::Fabrino2X);
    machine.stepsPerMm = {100, 100, 400, 96, 96};

    for (MachineFileFormat format : {MachineFileFormat::X3g, MachineFileFormat::S3g}) {
        const Written file = written(machine, format, gcode.toStdString() + "\nG4 P1\n");
        QVERIFY2(file.bytes.toHex().contains(hex), file.bytes.toHex().constData());
    }
}

void tst_MachineFileWriter::homesByTheMachinesDirections_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("gcode");
    QTest::addColumn<QByteArray>("events");

    QTest::newRow("the nozzle's platform last")
        << 3 << QByteArray("G28") << QByteArray("home 3 up\nhome 4 down");
    QTest::newRow("a sinking platform first")
        << 5 << QByteArray("G28") << QByteArray("home 4 up\nhome 3 down");
    QTest::newRow("one axis") << 3 << QByteArray("G28 Y") << QByteArray("home 2 up");
    QTest::newRow("Z alone") << 3 << QByteArray("G28 Z") << QByteArray("home 4 down");
    QTest::newRow("X and Z") << 5 << QByteArray("G28 Z X") << QByteArray("home 4 up\nhome 1 down");
}

void tst_MachineFileWriter::homesByTheMachinesDirections()
{
    QFETCH(int, type);
    QFETCH(QByteArray, gcode);
    QFETCH(QByteArray, events);
    const MachineDefinition machine = machineOfType(static_cast<Printer::Type>(type));

    const Written file = written(machine, MachineFileFormat::X3g, gcode.toStdString() + "\n");

    QCOMPARE(joined(MachineFileReplay(file.commands).events()), events.toStdString());
    const MachineFileCommand& set = file.first(140);
    const MachineFileCommand& recall = file.first(144);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (recall.axes & (1 << axis))
            QCOMPARE(set.steps[axis], static_cast<std::int32_t>(std::lround(
                                          machine.homePosition[axis] * machine.stepsPerMm[axis])));
    }
    for (const MachineFileCommand& command : file.commands) {
        if (command.code != 131 && command.code != 132)
            continue;
        const std::size_t axis = command.axes & 4 ? 2 : 0;
        const double microseconds = 1e6 / (machine.homingFeed[axis] * machine.stepsPerMm[axis]);
        QCOMPARE(command.value, static_cast<std::uint32_t>(std::lround(microseconds)));
        QVERIFY(command.timeout > machine.buildVolume[axis].length() / machine.homingFeed[axis]);
    }
}

void tst_MachineFileWriter::replaysARealFile_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("type");
    QTest::addColumn<MachineFileFormat>("format");
    QTest::addColumn<int>("moveCode");

    QTest::newRow("single, x3g") << QByteArray("cube_single.gcode") << 3 << MachineFileFormat::X3g
                                 << 155;
    QTest::newRow("single, s3g") << QByteArray("cube_single.gcode") << 3 << MachineFileFormat::S3g
                                 << 142;
    QTest::newRow("dual, x3g") << QByteArray("cube_dual.gcode") << 4 << MachineFileFormat::X3g
                               << 155;
    QTest::newRow("dual, s3g") << QByteArray("cube_dual.gcode") << 4 << MachineFileFormat::S3g
                               << 142;
}

void tst_MachineFileWriter::replaysARealFile()
{
    QFETCH(QByteArray, name);
    QFETCH(int, type);
    QFETCH(MachineFileFormat, format);
    QFETCH(int, moveCode);
    const MachineDefinition machine = machineOfType(static_cast<Printer::Type>(type));
    const std::string gcode = fileBytes(name.constData());

    const Written file = written(machine, format, gcode);

    QCOMPARE(difference(machine, gcode, MachineFileReplay(file.commands).stops()), QString());
    QCOMPARE(file.result.estimate.remarks.toString(), std::string());
    for (const MachineFileCommand& command : file.commands) {
        QVERIFY(command.code == moveCode ||
                (command.code != 139 && command.code != 142 && command.code != 155));
    }
}

void tst_MachineFileWriter::keepsTemperaturesToolsAndOrderOfARealFile()
{
    const std::string gcode = fileBytes("cube_dual.gcode");

    const Written file = written(machineOfType(Printer::Fabrino2X), MachineFileFormat::X3g, gcode);

    const std::vector<std::string> events = MachineFileReplay(file.commands).events();
    std::vector<std::string> start(events.begin(), events.begin() + 13);
    QCOMPARE(joined(start),
             std::string("fan 0 off\nplatform 110\nwait platform\nheat 0 to 230\nheat 1 to 240\n"
                         "home 3 up\nhome 4 down\nheat 0 to 230\nwait 0\nheat 1 to 240\nwait 1\n"
                         "tool 0\nfan 0 off"));
    const std::vector<std::string> end(events.end() - 4, events.end());
    QCOMPARE(joined(end), std::string("fan 1 off\nheat 1 to 0\nhome 1 up\nmotors 31 off"));
    QCOMPARE(std::count(events.begin(), events.end(), "tool 1"), std::ptrdiff_t(17));
    QCOMPARE(std::count(events.begin(), events.end(), "heat 1 to 235"), std::ptrdiff_t(1));
}

void tst_MachineFileWriter::takesAsLongAsEstimated_data()
{
    QTest::addColumn<MachineFileFormat>("format");

    QTest::newRow("x3g") << MachineFileFormat::X3g;
    QTest::newRow("s3g") << MachineFileFormat::S3g;
}

void tst_MachineFileWriter::takesAsLongAsEstimated()
{
    QFETCH(MachineFileFormat, format);
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    const std::string gcode = fileBytes("cube_single.gcode");

    const Written file = written(machine, format, gcode);

    double moves = 0;
    const MachineFileReplay replay(file.commands);
    for (const MachineFileReplay::Stop& stop : replay.stops())
        moves += stop.seconds;
    // The file heats while it homes and lifts the nozzle by 5 mm, and homes X once more at its end.
    const double lift = 5 / machine.maxFeed[MotorZ];
    const double heat = machine.toolhead.secondsToHeat(23, 220);
    const double lastHoming = file.result.estimate.seconds - heat - (moves - lift);
    QVERIFY2(lastHoming > 0 && lastHoming < 6, qPrintable(QString::number(lastHoming)));
}

void tst_MachineFileWriter::doesNotDriftOverRelativeMoves()
{
    MachineDefinition machine = machineOfType(Printer::Fabrino2);
    machine.stepsPerMm = {88.8889, 88.8889, 400, 96.39, 96.39};
    std::string gcode = "M104 S200\nG91\n";
    for (int i = 0; i < 1000; ++i)
        gcode += "G1 X0.1234 E0.0321 F600\n";

    const Written file = written(machine, MachineFileFormat::X3g, gcode);

    const MachineFileReplay::Stop last = MachineFileReplay(file.commands).stops().back();
    QCOMPARE(last.steps[0], static_cast<std::int32_t>(std::lround(123.4 * 88.8889)));
    QCOMPARE(last.steps[3], static_cast<std::int32_t>(std::lround(32.1 * 96.39)));
}

void tst_MachineFileWriter::doesNotDriftOverResetsOfTheExtruder()
{
    MachineDefinition machine = machineOfType(Printer::Fabrino2);
    machine.stepsPerMm[MotorA] = 96.39;
    std::string gcode = "M104 S200\n";
    // 3.004 steps... of 3.4: the rest would be lost a thousand times.
    for (int i = 0; i < 1000; ++i)
        gcode += "G1 E0.03527 F60\nG92 E0\n";

    const Written file = written(machine, MachineFileFormat::X3g, gcode);

    std::int64_t pushed = 0;
    std::int32_t at = 0;
    for (const MachineFileCommand& command : file.commands) {
        if (command.code == 140) {
            QVERIFY(std::abs(command.steps[3]) <= 1);
            at = command.steps[3];
        } else if (command.code == 155) {
            pushed += command.steps[3] - at;
            at = command.steps[3];
        }
    }
    QCOMPARE(pushed, static_cast<std::int64_t>(std::lround(35.27 * 96.39)));
}

void tst_MachineFileWriter::staysWithinAStepAfterAnySetPosition()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    std::mt19937 random(7);
    std::string gcode = "M104 S200\n";
    std::vector<double> extruded;
    for (int i = 0; i < 500; ++i) {
        const double from = random() % 1000 / 1000.0;
        extruded.push_back(from + 1 + random() % 1000 / 1000.0);
        gcode += "G92 E" + numberText(from) + "\nG1 E" + numberText(extruded.back()) + "\n";
    }

    const Written file = written(machine, MachineFileFormat::X3g, gcode);

    const MachineFileReplay replay(file.commands);
    QCOMPARE(replay.stops().size(), extruded.size());
    for (std::size_t i = 0; i < extruded.size(); ++i) {
        const double steps = extruded[i] * machine.stepsPerMm[MotorA];
        QVERIFY(std::abs(replay.stops()[i].steps[MotorA] - steps) <= 1);
    }
}

void tst_MachineFileWriter::beginsAnewAtTheEndStops()
{
    MachineDefinition machine = machineOfType(Printer::Fabrino2);
    machine.stepsPerMm[MotorX] = 10;

    // A third of a step is carried over from G92, but not over the end stop.
    const Written file =
        written(machine, MachineFileFormat::X3g, "G1 X1.033\nG92 X0\nG28\nG1 X1.03\n");

    const MachineFileReplay replay(file.commands);
    QCOMPARE(replay.stops().back().steps[MotorX], 10);
}

void tst_MachineFileWriter::movesEachToolsOwnMotor()
{
    MachineDefinition machine = machineOfType(Printer::Fabrino2X);
    machine.stepsPerMm = {100, 100, 400, 96, 48};

    const Written file = written(machine, MachineFileFormat::X3g,
                                 "M104 S200\nM104 S200 T1\nG1 E1\nT1\nG92 E0\nG1 E2\nG1 X10 E3\n");

    const auto stops = MachineFileReplay(file.commands).stops();
    QCOMPARE(stops.size(), std::size_t(3));
    QCOMPARE(stops[0].steps, (std::array<std::int32_t, 5>{0, 0, 0, 96, 0}));
    QCOMPARE(stops[1].steps, (std::array<std::int32_t, 5>{0, 0, 0, 96, 96}));
    QCOMPARE(stops[2].steps, (std::array<std::int32_t, 5>{4500, 0, 0, 96, 144}));
    QCOMPARE(stops[2].tool, 1);
}

void tst_MachineFileWriter::givesEachPercentOnce_data()
{
    QTest::addColumn<QByteArray>("gcode");

    QTest::newRow("nothing") << QByteArray("");
    QTest::newRow("no time") << QByteArray("M107\nM106\n");
    QTest::newRow("one command") << QByteArray("G4 S100\n");
    QTest::newRow("many") << QByteArray("G4 S1\n").repeated(777);
    QTest::newRow("with the file's own progress") << QByteArray("M73 P10\nG4 S1\nM73 P90\nG4 S9\n");
    QTest::newRow("a real file") << QByteArray::fromStdString(fileBytes("cube_single.gcode"));
}

void tst_MachineFileWriter::givesEachPercentOnce()
{
    QFETCH(QByteArray, gcode);

    const Written file =
        written(machineOfType(Printer::Fabrino2), MachineFileFormat::X3g, gcode.toStdString());

    std::vector<int> all(101);
    std::iota(all.begin(), all.end(), 0);
    QCOMPARE(MachineFileReplay(file.commands).percents(), all);
}

void tst_MachineFileWriter::givesProgressByTime()
{
    const Written file = written(machineOfType(Printer::Fabrino2), MachineFileFormat::S3g,
                                 "G4 S10\nG4 S40\nG4 S50\n");

    std::vector<int> percents;
    int last = 0;
    for (const MachineFileCommand& command : file.commands) {
        if (command.code == 150)
            last = static_cast<int>(command.value);
        if (command.code == 133 || command.code == 154)
            percents.push_back(last);
    }
    QCOMPARE(percents, (std::vector<int>{0, 10, 50, 100}));
}

void tst_MachineFileWriter::leavesOutMovesOfLessThanHalfAStep()
{
    MachineDefinition machine = machineOfType(Printer::Fabrino2);
    machine.stepsPerMm[0] = 10;

    const Written file =
        written(machine, MachineFileFormat::X3g, "G91\nG1 X0.04\nG1 X0.04\nG1 X0.04\n");

    const auto stops = MachineFileReplay(file.commands).stops();
    QCOMPARE(stops.size(), std::size_t(1));
    QCOMPARE(stops[0].steps[0], 1);
}

void tst_MachineFileWriter::keepsWhatDoesNotFitWithinItsFields()
{
    MachineDefinition machine = machineOfType(Printer::Fabrino2);
    machine.maxFeed.fill(5000);

    // 1023.98 mm/s is the fastest that the field holds, and 4294 s the longest.
    const Written fast = written(machine, MachineFileFormat::X3g, "G1 X100 F300000\n");
    const Written slow = written(machine, MachineFileFormat::S3g, "M104 S200\nG1 E1000 F0.001\n");

    QCOMPARE(fast.first(155).speed, 65535);
    QCOMPARE(slow.first(142).value, 4294967295u);
}

void tst_MachineFileWriter::cutsNamesAndMessages_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("kept");

    QTest::newRow("empty") << QByteArray("") << QByteArray("");
    QTest::newRow("as long as can be") << QByteArray(30, 'a') << QByteArray(30, 'a');
    QTest::newRow("too long") << QByteArray(31, 'a') << QByteArray(30, 'a');
    QTest::newRow("cut before a character of two bytes")
        << QByteArray(29, 'a') + "\xc3\xa9" << QByteArray(29, 'a');
    QTest::newRow("nothing but later bytes") << QByteArray(40, '\x80') << QByteArray("");
    QTest::newRow("control characters") << QByteArray("a\tb\0c\x7f", 6) << QByteArray("a b c ");
}

void tst_MachineFileWriter::cutsNamesAndMessages()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, kept);

    const Written file = written(machineOfType(Printer::Fabrino2), MachineFileFormat::X3g,
                                 "M117 " + std::string(100, 'm') + "\n", name.toStdString());

    QCOMPARE(file.first(153).text, kept.toStdString());
    QCOMPARE(file.first(149).text, std::string(80, 'm'));
}

void tst_MachineFileWriter::writesNothingWhenTheProgramIsRefused_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("error");

    QTest::newRow("outside the volume")
        << QByteArray("G1 X300")
        << QStringLiteral(
               "Line 1002: X 300 mm is outside the machine's build volume (0 to 285 mm)");
    QTest::newRow("too hot")
        << QByteArray("M109 S300")
        << QString::fromUtf8(
               "Line 1002: 300 °C is above the machine's limit of 280 °C for an extruder");
    QTest::newRow("no such tool") << QByteArray("T1")
                                  << QStringLiteral("Line 1002: the machine has no tool T1");
}

void tst_MachineFileWriter::writesNothingWhenTheProgramIsRefused()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, error);
    std::string gcode = "G28\n";
    for (int i = 0; i < 1000; ++i)
        gcode += "G1 X" + std::to_string(i % 100) + "\n";
    gcode += line.toStdString() + "\n";
    bool sinkCalled = false;
    QString thrown;

    try {
        writeMachineFile(
            machineOfType(Printer::Fabrino2), MachineFileFormat::X3g, "cube",
            [&] { return sectionsOf(gcode); },
            [&](const char*, std::size_t) { sinkCalled = true; });
    } catch (const GCodeError& caught) {
        thrown = QString::fromUtf8(caught.what());
    }

    QCOMPARE(thrown, error);
    QVERIFY(!sinkCalled);
}

void tst_MachineFileWriter::writesColdExtrusionAndCountsIt()
{
    const Written file =
        written(machineOfType(Printer::Fabrino2), MachineFileFormat::X3g, "G28\nG1 E1\nG1 E2\n");

    QCOMPARE(MachineFileReplay(file.commands).stops().size(), std::size_t(2));
    QCOMPARE(file.result.estimate.remarks.toString(),
             std::string("moves that push cold filament: 2, first in line 2"));
}

void tst_MachineFileWriter::countsWhatItWrote()
{
    const Written file = written(machineOfType(Printer::Fabrino2), MachineFileFormat::X3g,
                                 fileBytes("cube_single.gcode"));

    QCOMPARE(file.result.commands, static_cast<std::uint64_t>(file.commands.size()));
    QCOMPARE(file.result.bytes, static_cast<std::uint64_t>(file.bytes.size()));
}

void tst_MachineFileWriter::passesOnAnErrorOfTheSink()
{
    const auto write = [] {
        writeMachineFile(
            machineOfType(Printer::Fabrino2), MachineFileFormat::X3g, "cube",
            [] { return sectionsOf("G28\n"); },
            [](const char*, std::size_t) { throw std::runtime_error("No space left on device"); });
    };

    QVERIFY_EXCEPTION_THROWN(write(), std::runtime_error);
}

void tst_MachineFileWriter::canBeCanceledInBothPasses()
{
    std::string gcode;
    for (int i = 0; i < 10000; ++i)
        gcode += i % 2 ? "G1 X1 ; there\n" : "G1 X2 ; and back\n";
    for (int stopAfter : {1, 2, 3, 4}) {
        int calls = 0;
        std::uint64_t last = 0;
        bool ascending = true;
        const auto write = [&] {
            writeMachineFile(
                machineOfType(Printer::Fabrino2), MachineFileFormat::X3g, "cube",
                [&] { return sectionsOf(gcode); }, [](const char*, std::size_t) {},
                [&](std::uint64_t bytes) {
                    ascending = ascending && bytes >= last;
                    last = bytes;
                    return ++calls < stopAfter;
                });
        };
        QVERIFY_EXCEPTION_THROWN(write(), GCodeCanceled);
        QCOMPARE(calls, stopAfter);
        QVERIFY(ascending);
    }
}

void tst_MachineFileWriter::survivesRandomPrograms()
{
    std::mt19937 random(99);
    const std::vector<std::string> lines = {"G1 X10 Y10",
                                            "G1 X99.99 E1",
                                            "G91",
                                            "G90",
                                            "G1 X0.01",
                                            "G92 E0",
                                            "G92",
                                            "G92 X-9",
                                            "G92.1",
                                            "G28",
                                            "G28 Z",
                                            "T0",
                                            "T1",
                                            "M104 S200",
                                            "M109 S210 T1",
                                            "M190 S60",
                                            "G2 X20 Y20 R30",
                                            "G3 I1",
                                            "M106",
                                            "M84",
                                            "M117 \x01\x02\xff",
                                            "G4 P10",
                                            "G20",
                                            "G21",
                                            "M83",
                                            "M82",
                                            "G1 E5 F1",
                                            "G1 Z5 F99999",
                                            "M73 P5",
                                            "nonsense",
                                            "G1 E-1000",
                                            "G1 E1000000"};
    const MachineDefinition machine = machineOfType(Printer::Fabrino2X);
    int complete = 0;
    for (int round = 0; round < 300; ++round) {
        std::string gcode;
        for (unsigned count = random() % 60; count > 0; --count)
            gcode += lines[random() % lines.size()] + "\n";
        const auto format = round % 2 ? MachineFileFormat::X3g : MachineFileFormat::S3g;
        try {
            const Written file = written(machine, format, gcode);
            QCOMPARE(MachineFileReplay(file.commands).percents().size(), std::size_t(101));
            ++complete;
        } catch (const GCodeError&) {
            // What a machine cannot do is one good end.
        }
    }
    QVERIFY(complete > 100);
}

void tst_MachineFileWriter::knowsFormatsByName()
{
    QVERIFY(machineFileFormatFromName("x3g") == MachineFileFormat::X3g);
    QVERIFY(machineFileFormatFromName("s3g") == MachineFileFormat::S3g);
    for (const char* other : {"", "X3G", "gcode", "x3g ", "3g"})
        QVERIFY(!machineFileFormatFromName(other));
}

QTEST_GUILESS_MAIN(tst_MachineFileWriter)
#include "tst_machine_file_writer.moc"
