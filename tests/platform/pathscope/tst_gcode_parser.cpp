#include "moves_in_words.h"

#include <QtTest>

using namespace pathscope;

Q_DECLARE_METATYPE(std::string)

class tst_GcodeParser : public QObject
{
    Q_OBJECT

private slots:
    void turnsCodesIntoMoves_data();
    void turnsCodesIntoMoves();
    void takesLinesInAnyForm_data();
    void takesLinesInAnyForm();
    void skipsAndTells_data();
    void skipsAndTells();
    void letsPassWhatDoesNotConcernPaths_data();
    void letsPassWhatDoesNotConcernPaths();
    void countsLinesWhateverEndsThem_data();
    void countsLinesWhateverEndsThem();
    void keepsTheFirstExamples();
    void styleFollowsTheMachine_data();
    void styleFollowsTheMachine();
    void totalsAddUp();
    void timeIsLengthBySpeed();
    void filamentOfVolumetricFiles();
    void boundsAreOfExtrudingMoves();
    void startsEachSegmentWhereTheLastOneEnded();
};

void tst_GcodeParser::turnsCodesIntoMoves_data()
{
    QTest::addColumn<std::string>("program");
    QTest::addColumn<QString>("moves");

    const auto row = [](const char* name, const char* program, const char* moves) {
        QTest::newRow(name) << std::string(program) << QString::fromLatin1(moves);
    };
    row("travel", "G0 X1 Y2 Z3", "travel 1 2 3");
    row("G1 without filament", "G1 X1", "travel 1 0 0");
    row("extruding", "G1 X1 E1", "extrude 1 0 0");
    row("G0 extrudes as well", "G0 X1 E1", "extrude 1 0 0");
    row("extruding straight up", "G1 Z1 E1", "extrude 0 0 1");
    row("absolute filament that stays", "G1 X1 E1\nG1 X2 E1", "extrude 1 0 0, travel 2 0 0");
    row("wiping", "G1 X1 E1\nG1 X0 E0.5", "extrude 1 0 0, travel 0 0 0");
    row("retraction", "G1 E-1\nG1 X1\nG1 E0", "retract, travel 1 0 0, unretract");
    row("relative filament", "M83\nG1 X1 E1\nG1 X2 E1\nG1 E-1",
        "extrude 1 0 0, extrude 2 0 0, retract");
    row("back to absolute filament", "M83\nG1 X1 E1\nM82\nG92 E0\nG1 X2 E1\nG1 X3 E1",
        "extrude 1 0 0, extrude 2 0 0, travel 3 0 0");
    row("relative filament moves the absolute count", "G1 X1 E5\nM83\nG1 X2 E1\nM82\nG1 X3 E5.1",
        "extrude 1 0 0, extrude 2 0 0, travel 3 0 0");
    row("relative places", "G91\nG1 X1 Y1\nG1 X1", "travel 1 1 0, travel 2 1 0");
    row("relative places make the filament relative", "G91\nG1 X1 E1\nG1 X1 E1",
        "extrude 1 0 0, extrude 2 0 0");
    row("absolute again", "G91\nG1 X1\nG90\nG1 X5", "travel 1 0 0, travel 5 0 0");
    row("inches", "G20\nG1 X1 E1\nG21\nG1 X1", "extrude 25.4 0 0, travel 1 0 0");
    row("relative inches", "G20\nG91\nG1 X1\nG1 X1", "travel 25.4 0 0, travel 50.8 0 0");
    row("no motion", "G1 X0 Y0\nG1 F1200\nG1", "");
    row("filament at a named place", "G1 X0 Y0 E1", "unretract");
    row("home", "G1 X1 Y2 Z3\nG28", "travel 1 2 3, travel 0 0 0");
    row("home one axis", "G1 X1 Y2 Z3\nG28 X", "travel 1 2 3, travel 0 2 3");
    row("home with a number", "G1 X1 Y2 Z3\nG28 X0 Y0", "travel 1 2 3, travel 0 0 3");
    row("home takes a shift away", "G1 X5\nG92 X0\nG28\nG1 X1",
        "travel 5 0 0, travel 0 0 0, travel 1 0 0");
    row("shift", "G1 X5 Y5\nG92 X1\nG1 X2 Y6", "travel 5 5 0, travel 6 6 0");
    row("shift of everything", "G1 X5 Y5 E5\nG92\nG1 X1 E1", "extrude 5 5 0, extrude 6 5 0");
    row("shift in inches", "G1 X25.4\nG20\nG92 X0\nG1 X1", "travel 25.4 0 0, travel 50.8 0 0");
    row("shift taken away", "G1 X5\nG92 X0\nG92.1\nG1 X1", "travel 5 0 0, travel 1 0 0");
    row("filament set anew", "G1 X1 E5\nG92 E0\nG1 X2 E1", "extrude 1 0 0, extrude 2 0 0");
    row("filament set elsewhere", "G92 E10\nG1 X1 E9", "travel 1 0 0");
    row("firmware retraction", "G10\nG1 X1\nG11", "retract, travel 1 0 0, unretract");
    row("tool temperature by G10", "G10 P0 S200\nG10 L2 P1 X5\nG1 X1", "travel 1 0 0");
    row("tool change", "T1\nG1 X1\nT0", "tool 1, travel 1 0 0, tool 0");
    row("the tool it has", "T0\nT0", "");
    row("high tool", "T40", "tool 15");
    row("numbers that are no tools", "T255\nT1000\nT-1\nTx\nT?\nTc", "");
    row("two commands in a line", "G91 G1 X1", "travel 1 0 0");
    row("the last of a repeated word", "G1 X1 X2", "travel 2 0 0");
    row("arc codes with a leading zero", "G01 X1\nG00 X2", "travel 1 0 0, travel 2 0 0");
    row("a code that looks like a move", "G1.5 X1\nG10.1\nG12 X1\nG100 X5", "");
}

void tst_GcodeParser::turnsCodesIntoMoves()
{
    QFETCH(std::string, program);
    QFETCH(QString, moves);

    const auto paths = parseGCode(program);

    QCOMPARE(movesInWords(*paths), moves);
    QCOMPARE(paths->skipped.lines, std::uint64_t(0));
    QVERIFY(paths->complete);
    QCOMPARE(paths->bytes, std::uint64_t(program.size()));
    QCOMPARE(paths->extrudingCount + paths->travelCount + paths->retractionCount +
                 paths->toolChangeCount,
             paths->segmentCount);
}

void tst_GcodeParser::takesLinesInAnyForm_data()
{
    QTest::addColumn<std::string>("line");

    for (const char* const line : {"G1 X10 Y5 E.5",
                                   "G1X10Y5E.5",
                                   "g1 x10 y5 e.5",
                                   "G1 X10. Y5.0 E0.50",
                                   "G1 E.5 Y5 X10",
                                   "G1 X+10 Y+5 E+.5",
                                   "  G1 X10 Y5 E.5",
                                   "\tG1\tX10\tY5\tE.5",
                                   "G1  X10  Y5  E.5  ",
                                   "G1 X 10 Y 5 E .5",
                                   "N12 G1 X10 Y5 E.5*93",
                                   "N12G1X10Y5E.5 *93",
                                   "n1 g1x10y5e.5",
                                   "G1 X10 Y5 E.5 ; wall",
                                   "G1 X10 Y5 E.5;wall",
                                   "G1 X10 (far) Y5 E.5",
                                   "G1 X10 Y5 E.5 (",
                                   "(first) G1 X10 Y5 E.5",
                                   "G1 F1500 X10 Y5 E.5",
                                   "G1 X10 Y5 E.5 F1500.0",
                                   "G01 X10 Y5 E.5",
                                   "G1.0 X10 Y5 E.5",
                                   "G1 X10 Y5 E.5 S1",
                                   "G1 X10.0000000000000000000 Y5 E.5",
                                   "G1 X00000000000000010 Y5 E.5",
                                   "G1 X1E5 X10 Y5 E.5",
                                   "G1 X10 Y5 Z-0 E.5",
                                   "G1 X10 Y5 E.5\r",
                                   "G1 X10 Y5 E.5 \r"})
        QTest::newRow(line) << std::string(line);
}

void tst_GcodeParser::takesLinesInAnyForm()
{
    QFETCH(std::string, line);

    const auto paths = parseGCode(line + "\nG1 X0 Y0\n");

    QCOMPARE(movesInWords(*paths), QStringLiteral("extrude 10 5 0, travel 0 0 0"));
    QCOMPARE(paths->total.filament, 0.5);
    QCOMPARE(paths->skipped.lines, std::uint64_t(0));
}

void tst_GcodeParser::skipsAndTells_data()
{
    QTest::addColumn<std::string>("line");
    QTest::addColumn<int>("badNumbers");

    const auto row = [](const char* line, int badNumbers) {
        QTest::newRow(line) << std::string(line) << badNumbers;
    };
    row("G1 X", 1);
    row("G1 X1 Ynan", 1);
    row("G1 Xinf", 1);
    row("G1 X--5", 1);
    row("G1 X.", 1);
    row("G1 X1 ?", 1);
    row("G1 X1000001", 1);
    row("G1 X-1000001", 1);
    row("G1 Z99999999999999999999999999999999999999999999", 1);
    row("G1 X1 E1000000001", 1);
    row("G1 X1 F9e9 E", 1);
    row("G2 X5 I", 1);
    row("G91 G1 X1 G1 X1000000", 1);
    row("hello world", 0);
    row("X10 Y10", 0);
    row("G", 0);
    row("M", 0);
    row("%", 0);
    row("\xff\xfe\x01", 0);
    row("12 G1 X1", 0);
    row("{\"a\": 1}", 0);
}

void tst_GcodeParser::skipsAndTells()
{
    QFETCH(std::string, line);
    QFETCH(int, badNumbers);

    const auto paths = parseGCode("G1 X7\n" + line + "\nG90\nG1 X8\n");

    QCOMPARE(paths->skipped.lines, std::uint64_t(1));
    QCOMPARE(paths->skipped.badNumbers, std::uint64_t(badNumbers));
    QCOMPARE(paths->skipped.examples.size(), std::size_t(1));
    QCOMPARE(paths->skipped.examples.front().first, std::uint64_t(2));
    QCOMPARE(paths->skipped.examples.front().second, line);
    QVERIFY(movesInWords(*paths).endsWith(QStringLiteral("travel 8 0 0")));
}

void tst_GcodeParser::letsPassWhatDoesNotConcernPaths_data()
{
    QTest::addColumn<std::string>("line");

    for (const char* const line : {"",
                                   "   ",
                                   "; a comment",
                                   "(a comment)",
                                   ";",
                                   "M73 P50 R12",
                                   "M117 Hello, world!",
                                   "M201 X500 Y500",
                                   "G29",
                                   "G4 P500",
                                   "M900 K0.05",
                                   "START_PRINT BED=60 EXTRUDER=200",
                                   "EXCLUDE_OBJECT_DEFINE NAME=cube CENTER=1,2",
                                   "_HOME",
                                   "PAUSE",
                                   "print_end",
                                   "N5",
                                   "*12",
                                   "M118 ?!?",
                                   "G1",
                                   "G1 ;",
                                   "T?",
                                   "M106 P3 S255"})
        QTest::newRow(line) << std::string(line);
}

void tst_GcodeParser::letsPassWhatDoesNotConcernPaths()
{
    QFETCH(std::string, line);

    const auto paths = parseGCode(line + "\n" + line);

    QCOMPARE(paths->skipped.lines, std::uint64_t(0));
    QCOMPARE(paths->segmentCount, std::uint64_t(0));
    QVERIFY(paths->chunks.empty());
    QVERIFY(paths->layers.empty());
    QVERIFY(!paths->bounds.valid);
}

void tst_GcodeParser::countsLinesWhateverEndsThem_data()
{
    QTest::addColumn<std::string>("program");

    QTest::newRow("LF") << std::string("G1 X1\n\nG1 X2\n;\n?");
    QTest::newRow("CR") << std::string("G1 X1\r\rG1 X2\r;\r?");
    QTest::newRow("CR LF") << std::string("G1 X1\r\n\r\nG1 X2\r\n;\r\n?");
    QTest::newRow("mixed") << std::string("G1 X1\r\n\rG1 X2\n;\r?\r\n");
    QTest::newRow("last line with an end") << std::string("G1 X1\n\nG1 X2\n;\n?\n");
}

void tst_GcodeParser::countsLinesWhateverEndsThem()
{
    QFETCH(std::string, program);

    for (std::size_t block = 1; block < 20; ++block) {
        ParseOptions options;
        options.blockBytes = block;
        const auto paths = parseGCode(program, options);
        QCOMPARE(movesInWords(*paths), QStringLiteral("travel 1 0 0, travel 2 0 0"));
        QCOMPARE(paths->skipped.lines, std::uint64_t(1));
        QCOMPARE(paths->skipped.examples.front().first, std::uint64_t(5));
    }
}

void tst_GcodeParser::keepsTheFirstExamples()
{
    std::string program;
    for (int i = 0; i < 100; ++i)
        program += "?" + std::string(200, 'x') + "\n";

    const Skipped skipped = parseGCode(program)->skipped;

    QCOMPARE(skipped.lines, std::uint64_t(100));
    QCOMPARE(skipped.examples.size(), std::size_t(5));
    QCOMPARE(skipped.examples.back().first, std::uint64_t(5));
    QCOMPARE(skipped.examples.back().second, "?" + std::string(79, 'x'));
}

void tst_GcodeParser::styleFollowsTheMachine_data()
{
    QTest::addColumn<std::string>("program");
    QTest::addColumn<double>("speed");
    QTest::addColumn<double>("celsius");
    QTest::addColumn<double>("fan");
    QTest::addColumn<int>("tool");

    const auto row = [](const char* name, const char* program, double speed, double celsius,
                        double fan, int tool) {
        QTest::newRow(name) << std::string(program) << speed << celsius << fan << tool;
    };
    row("nothing set", "", 25, 0, 0, 0);
    row("feed", "G1 F1200\n", 20, 0, 0, 0);
    row("feed of an earlier travel", "G0 X5 F600\n", 10, 0, 0, 0);
    row("feed of none", "G1 F600\nG1 F0\nG1 F-5\n", 10, 0, 0, 0);
    row("feed too small to count",
        "G1 F600\nG1 F.00000000000000000000000000000000000000000000001\n", 10, 0, 0, 0);
    row("speed factor", "G1 F600\nM220 S50\n", 5, 0, 0, 0);
    row("speed factor before the feed", "M220 S50\nG1 F1200\n", 10, 0, 0, 0);
    row("speed factor without a feed", "M220 S200\n", 50, 0, 0, 0);
    row("speed factors do not add up", "G1 F600\nM220 S50\nM220 S50\n", 5, 0, 0, 0);
    row("speed factor kept and taken again", "G1 F600\nM220 S80\nM220 B\nM220 S10\nM220 R\n", 8, 0,
        0, 0);
    row("no speed factor", "G1 F600\nM220\nM220 S0\nM220 S-5\nM220 Snan\nM220 S1001\n", 10, 0, 0,
        0);
    row("flow factor", "G1 F600\nM221 S50\n", 10, 0, 0, 0);
    row("feed in inches", "G20\nG1 F60\nG21\n", 25.4, 0, 0, 0);
    row("temperature", "M104 S200\n", 25, 200, 0, 0);
    row("temperature waited for", "M109 R210\n", 25, 210, 0, 0);
    row("temperature of another tool", "M104 S200 T1\n", 25, 0, 0, 0);
    row("temperature of another tool, taken", "M104 S200 T1\nT1\n", 25, 200, 0, 1);
    row("temperature by G10", "G10 P0 S190\n", 25, 190, 0, 0);
    row("no temperature", "M104 S200\nM104 Snan\nM104 S1e\nM104 S99999\n", 25, 1, 0, 0);
    row("platform temperature", "M140 S60\n", 25, 0, 0, 0);
    row("fan", "M106 S51\n", 25, 0, 0.2, 0);
    row("fan without a value", "M106\n", 25, 0, 1, 0);
    row("fan as a part of one", "M106 S0.5\n", 25, 0, 0.5, 0);
    row("fan off", "M106 S255\nM107\n", 25, 0, 0, 0);
    row("chamber fan", "M106 P3 S255\n", 25, 0, 0, 0);
    row("fan beyond", "M106 S300\nM106 S-1\n", 25, 0, 0, 0);
}

void tst_GcodeParser::styleFollowsTheMachine()
{
    QFETCH(std::string, program);

    const auto paths = parseGCode(program + "G1 X1 E1");

    const PathPoint& last = paths->endOf(paths->segmentCount - 1);
    QCOMPARE(last.kind(), MoveKind::Extrude);
    const MoveStyle& style = paths->styles[last.style()];
    QFETCH(double, speed);
    QCOMPARE(style.speed, float(speed));
    QTEST(double(style.celsius), "celsius");
    QTEST(int(style.tool), "tool");
    QFETCH(double, fan);
    QVERIFY(std::abs(double(style.fan) - fan) < 1e-6);
}

void tst_GcodeParser::totalsAddUp()
{
    const auto paths = parseGCode("M83\nG1 F600\nG1 X30 Y40 E2\nG1 E-1\nG0 X0 Y0\nG1 E1\n"
                                  "G1 Z1\nG1 X10 E.5\nG1 F1200\nG1 X20 E.5\nT1\nG1 X20 Y3 E1\n");

    QCOMPARE(paths->extrudingCount, std::uint64_t(4));
    QCOMPARE(paths->travelCount, std::uint64_t(2));
    QCOMPARE(paths->retractionCount, std::uint64_t(2));
    QCOMPARE(paths->toolChangeCount, std::uint64_t(1));
    QCOMPARE(paths->total.millimetres, 50.0 + 10 + 10 + 3);
    QCOMPARE(paths->total.filament, 4.0);
    QCOMPARE(paths->toolAmounts[0].filament, 3.0);
    QCOMPARE(paths->toolAmounts[1].filament, 1.0);
    QCOMPARE(paths->styleAmounts.size(), paths->styles.size());
    Amount styles;
    for (const Amount& amount : paths->styleAmounts) {
        styles.seconds += amount.seconds;
        styles.millimetres += amount.millimetres;
        styles.filament += amount.filament;
    }
    Amount layers;
    for (const Layer& layer : paths->layers) {
        layers.seconds += layer.amount.seconds;
        layers.millimetres += layer.amount.millimetres;
        layers.filament += layer.amount.filament;
    }
    for (const Amount& sum : {styles, layers}) {
        QCOMPARE(sum.seconds, paths->total.seconds);
        QCOMPARE(sum.millimetres, paths->total.millimetres);
        QCOMPARE(sum.filament, paths->total.filament);
    }
}

void tst_GcodeParser::timeIsLengthBySpeed()
{
    const auto paths = parseGCode("G1 X10 F600\nG1 X20 E1 F1200\nG1 E0 F60\nG1 X20 Y8 Z6 F600\n");

    QCOMPARE(paths->total.seconds, 1.0 + 0.5 + 1.0 + 1.0);
}

void tst_GcodeParser::filamentOfVolumetricFiles()
{
    const auto paths = parseGCode("M200 D1.75\nG1 X10 E2.4052819\nM200 D0\nG92 E0\nG1 X20 E1\n");

    QVERIFY(std::abs(paths->total.filament - 2) < 1e-6);
}

void tst_GcodeParser::boundsAreOfExtrudingMoves()
{
    const Bounds bounds =
        parseGCode("G1 X-50 Y-50 Z9\nG1 X1 Y2 Z3\nG1 X4 Y1 E1\nG1 X100 Y100\nG1 E0\n")->bounds;

    QVERIFY(bounds.valid);
    QCOMPARE(bounds.min, (std::array<double, 3>{1, 1, 3}));
    QCOMPARE(bounds.max, (std::array<double, 3>{4, 2, 3}));
}

void tst_GcodeParser::startsEachSegmentWhereTheLastOneEnded()
{
    // More than two chunks.
    std::string program = "G91\n";
    for (std::uint64_t i = 0; i < 2 * kSegmentsAChunk + 100; ++i)
        program += i % 2 == 0 ? "G1 X1 E1\n" : "G1 Y1\n";

    const auto paths = parseGCode(program);

    QCOMPARE(paths->chunks.size(), std::size_t(3));
    QCOMPARE(paths->segmentCount, 2 * kSegmentsAChunk + 100);
    QCOMPARE(paths->chunks[0]->points.size(), PointChunk::kCapacity);
    QCOMPARE(paths->chunks[2]->points.size(), std::size_t(101));
    for (std::uint64_t i = 0; i < paths->segmentCount; ++i) {
        const PathPoint& start = paths->startOf(i);
        const PathPoint& end = paths->endOf(i);
        QCOMPARE(start.x, float((i + 1) / 2));
        QCOMPARE(start.y, float(i / 2));
        QCOMPARE(end.x, float(i / 2 + 1));
        QCOMPARE(end.kind(), i % 2 == 0 ? MoveKind::Extrude : MoveKind::Travel);
    }
}

QTEST_APPLESS_MAIN(tst_GcodeParser)
#include "tst_gcode_parser.moc"
