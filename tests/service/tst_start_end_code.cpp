#include "gcode_test_text.h"

#include <gcode/gcode_estimate.h>
#include <gcode/start_end_code.h>

using namespace gcode_test;

namespace {

SlicerConfiguration configurationFor(SlicerConfiguration::Extruder extruder)
{
    SlicerConfiguration configuration;
    configuration.setExtruder(extruder);
    configuration.setExtruderTemperature(220);
    configuration.setLeftExtruderTemperature(240);
    configuration.setPlatformTemperature(105);
    return configuration;
}

/** The commands that match, joined by "; ". */
QString commandsOf(const MachineDefinition& machine, const std::string& gcode, const char* pattern)
{
    const QRegularExpression expression(QString::fromLatin1(pattern));
    QStringList matching;
    for (const QString& text : programText(machine, gcode).split(QLatin1Char('\n'))) {
        if (expression.match(text).hasMatch())
            matching += text;
    }
    return matching.join(QLatin1String("; "));
}

constexpr char kHeating[] = "^(heat|platform) ";

} // namespace

class tst_StartEndCode : public QObject
{
    Q_OBJECT

private slots:
    void heatsWhatTheExtruderNames_data();
    void heatsWhatTheExtruderNames();
    void heatsThePlatformForAbs_data();
    void heatsThePlatformForAbs();
    void heatsThePlatformAsConfigured();
    void homesFirstAndHeatsBeforeItPushes_data();
    void homesFirstAndHeatsBeforeItPushes();
    void fitsAroundAFile_data();
    void fitsAroundAFile();
    void endsWithEverythingOff();
    void parksBelowAPrintOfAnyHeight();
    void undoesUnitsAndShiftsOfTheFile();
    void isWrittenForASmallSingleMachine();
};

void tst_StartEndCode::heatsWhatTheExtruderNames_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("extruder");
    QTest::addColumn<QString>("heating");

    const QString right = QStringLiteral("heat 0 to 220; heat 0 to 220 and wait");
    QTest::newRow("single, left") << 3 << 0 << right;
    QTest::newRow("single, right") << 3 << 1 << right;
    QTest::newRow("single, both") << 3 << 2 << right;
    QTest::newRow("dual, left") << 4 << 0
                                << QStringLiteral("heat 1 to 240; heat 1 to 240 and wait");
    QTest::newRow("dual, right") << 4 << 1 << right;
    QTest::newRow("dual, both") << 4 << 2
                                << QStringLiteral("heat 0 to 220; heat 1 to 240; "
                                                  "heat 0 to 220 and wait; heat 1 to 240 and wait");
}

void tst_StartEndCode::heatsWhatTheExtruderNames()
{
    QFETCH(int, type);
    QFETCH(int, extruder);
    QFETCH(QString, heating);
    const MachineDefinition machine = machineOfType(static_cast<Printer::Type>(type));

    const StartEndCode code =
        startEndCode(machine, {"pla", "pla"},
                     configurationFor(static_cast<SlicerConfiguration::Extruder>(extruder)));

    QCOMPARE(commandsOf(machine, code.start, kHeating), heating);
}

void tst_StartEndCode::heatsThePlatformForAbs_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("extruder");
    QTest::addColumn<QStringList>("materials");
    QTest::addColumn<bool>("heated");

    const auto row = [](const char* name, int type, int extruder, const QStringList& materials,
                        bool heated) {
        QTest::newRow(name) << type << extruder << materials << heated;
    };
    const QString abs = QStringLiteral("abs");
    const QString pla = QStringLiteral("pla");
    row("abs", 1, 1, {abs}, true);
    row("pla", 1, 1, {pla}, false);
    row("unknown material", 1, 1, {QStringLiteral("ABS")}, false);
    row("no material", 1, 1, {}, false);
    row("abs without a heated platform", 3, 1, {abs}, false);
    row("dual, abs in the tool in use", 4, 0, {pla, abs}, true);
    row("dual, abs in the other tool", 4, 1, {pla, abs}, false);
    row("dual, abs in one of both", 4, 2, {pla, abs}, true);
    row("dual with one material given", 4, 0, {abs}, false);
}

void tst_StartEndCode::heatsThePlatformForAbs()
{
    QFETCH(int, type);
    QFETCH(int, extruder);
    QFETCH(QStringList, materials);
    QFETCH(bool, heated);
    const MachineDefinition machine = machineOfType(static_cast<Printer::Type>(type));
    std::vector<std::string> identifiers;
    for (const QString& material : materials)
        identifiers.push_back(material.toStdString());

    const StartEndCode code =
        startEndCode(machine, identifiers,
                     configurationFor(static_cast<SlicerConfiguration::Extruder>(extruder)));

    QCOMPARE(commandsOf(machine, code.start, "^platform "),
             heated ? QStringLiteral("platform to 105; platform to 105 and wait") : QString());
}

void tst_StartEndCode::heatsThePlatformAsConfigured()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2X);
    SlicerConfiguration configuration = configurationFor(SlicerConfiguration::Right);
    const auto platform = [&](bool heat, const char* material) {
        configuration.setHeatPlatform(heat);
        return commandsOf(
            machine,
            startEndCode(machine, {material}, configuration, PlatformHeat::ByConfiguration).start,
            "^platform ");
    };

    QCOMPARE(platform(true, "pla"), QStringLiteral("platform to 105; platform to 105 and wait"));
    QCOMPARE(platform(false, "abs"), QString());
}

void tst_StartEndCode::homesFirstAndHeatsBeforeItPushes_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("extruder");

    for (int type = 1; type <= 6; ++type) {
        for (int extruder = 0; extruder <= 2; ++extruder) {
            QTest::addRow("type %d, extruder %d", type, extruder) << type << extruder;
        }
    }
}

void tst_StartEndCode::homesFirstAndHeatsBeforeItPushes()
{
    QFETCH(int, type);
    QFETCH(int, extruder);
    const MachineDefinition machine = machineOfType(static_cast<Printer::Type>(type));
    const StartEndCode code =
        startEndCode(machine, {"abs", "abs"},
                     configurationFor(static_cast<SlicerConfiguration::Extruder>(extruder)));

    const QStringList texts =
        programText(machine, code.start, GCodeProgram::RefuseCold).split(QLatin1Char('\n'));

    QVERIFY2(texts.first().startsWith(QLatin1String("home XYZ")), qPrintable(texts.first()));
    const bool both = machine.extruders == 2 && extruder == 2;
    QCOMPARE(texts.filter(QStringLiteral(" pushing")).size(), both ? 2 : 1);
    QVERIFY(texts.filter(QStringLiteral("error")).isEmpty());
    QVERIFY(texts.filter(QStringLiteral("not understood")).isEmpty());
    // Ends with the tool that the file's first lines mean, when both are warm.
    const bool left = machine.extruders == 2 && extruder == 0;
    QCOMPARE(texts.filter(QStringLiteral("tool ")).last(),
             left ? QStringLiteral("tool 1") : QStringLiteral("tool 0"));
}

void tst_StartEndCode::fitsAroundAFile_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("extruder");

    QTest::newRow("single") << QByteArray("cube_single.gcode") << 3 << 1;
    QTest::newRow("dual") << QByteArray("cube_dual.gcode") << 4 << 2;
}

void tst_StartEndCode::fitsAroundAFile()
{
    QFETCH(QByteArray, name);
    QFETCH(int, type);
    QFETCH(int, extruder);
    const MachineDefinition machine = machineOfType(static_cast<Printer::Type>(type));
    const StartEndCode code =
        startEndCode(machine, {"abs", "abs"},
                     configurationFor(static_cast<SlicerConfiguration::Extruder>(extruder)));
    const std::string file = fileBytes(name.constData());
    std::vector<GCodeSection> sections;
    sections.push_back({"Start code", byteSourceOf(code.start)});
    sections.push_back({"", byteSourceOf(file)});
    sections.push_back({"End code", byteSourceOf(code.end)});

    const GCodeEstimate alone = estimateGCode(machine, sectionsOf(file));
    const GCodeEstimate around =
        estimateGCode(machine, std::move(sections), GCodeProgram::RefuseCold);

    for (std::size_t tool = 0; tool < 2; ++tool)
        QCOMPARE(around.filamentMm[tool] - alone.filamentMm[tool] > 10, alone.usesTool[tool]);
    QCOMPARE(around.remarks.toString(), std::string());
}

void tst_StartEndCode::endsWithEverythingOff()
{
    const MachineDefinition dual = machineOfType(Printer::Fabrino2X);
    const MachineDefinition single = machineOfType(Printer::Fabrino2);
    const SlicerConfiguration configuration = configurationFor(SlicerConfiguration::Right);

    QCOMPARE(programText(dual, startEndCode(dual, {"abs", "abs"}, configuration).end),
             QStringLiteral("set 0 0 0 0 0\nheat 0 to 0\nheat 1 to 0\nplatform to 0\nfan 0 off\n"
                            "move 0 0 155 0 0 at 15\nhome XY to 245 150 155 0 0\n"
                            "motors XYZAB off"));
    QCOMPARE(programText(single, startEndCode(single, {"pla"}, configuration).end),
             QStringLiteral("set 0 0 0 0 0\nheat 0 to 0\nfan 0 off\n"
                            "move 0 0 155 0 0 at 15\nhome XY to 285 150 155 0 0\n"
                            "motors XYZA off"));
}

void tst_StartEndCode::parksBelowAPrintOfAnyHeight()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    const std::string end =
        startEndCode(machine, {"pla"}, configurationFor(SlicerConfiguration::Right)).end;

    const QString text = programText(machine, "G1 Z155\n" + end);

    QVERIFY2(!text.contains(QLatin1String("error")), qPrintable(text));
}

void tst_StartEndCode::undoesUnitsAndShiftsOfTheFile()
{
    const MachineDefinition machine = machineOfType(Printer::Fabrino2);
    const std::string end =
        startEndCode(machine, {"pla"}, configurationFor(SlicerConfiguration::Right)).end;

    const QString text = programText(machine, "G1 X50 Z100\nG92 X0 Z-20\nG20\nG91\nG1 X1\n" + end);

    QVERIFY2(text.contains(QLatin1String("move 75.4 0 155 0 0 at 15")), qPrintable(text));
}

void tst_StartEndCode::isWrittenForASmallSingleMachine()
{
    const MachineDefinition machine = machineOfType(Printer::CubioSingle);

    const StartEndCode code =
        startEndCode(machine, {"abs"}, configurationFor(SlicerConfiguration::Right));

    QCOMPARE(code.start, std::string("; start code\n"
                                     "G21\n"
                                     "G90\n"
                                     "M82\n"
                                     "G28\n"
                                     "G1 Z10 F900\n"
                                     "M140 S105\n"
                                     "M104 T0 S220\n"
                                     "M190 S105\n"
                                     "M109 T0 S220\n"
                                     "T0\n"
                                     "G92 E0\n"
                                     "G1 X5 Y5 F6000\n"
                                     "G1 Z0.3 F900\n"
                                     "G1 X85 E12 F900\n"
                                     "G92 E0\n"
                                     "G1 Z10 F900\n"
                                     "; end of start code\n"));
    QCOMPARE(code.end, std::string("; end code\n"
                                   "G21\n"
                                   "G90\n"
                                   "G92.1\n"
                                   "M104 T0 S0\n"
                                   "M140 S0\n"
                                   "M107\n"
                                   "G1 Z120 F900\n"
                                   "G28 X Y\n"
                                   "M84\n"
                                   "; end of end code\n"));
}

QTEST_GUILESS_MAIN(tst_StartEndCode)
#include "tst_start_end_code.moc"
