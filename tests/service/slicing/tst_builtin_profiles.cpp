#include "service/slicing/bare_slices.h"
#include "service/slicing/small_models.h"

#include <gcode/gcode_program.h>
#include <slicing/prusa_options.h>
#include <slicing/slice_code.h>
#include <slicing/slice_profile.h>

#include <QDir>
#include <QTest>

#include <cmath>

using namespace trovek;
using namespace trovek::service;

namespace {

using Celsius = std::map<int, std::vector<double>>;

/** What a user of the filament expects. */
struct Expected
{
    const char* name;
    double layerHeight;
    double celsius;
    /** 0: not heated. */
    double platform;
    double fastest;
    bool fan;
    double retraction;
};

constexpr Expected kProfiles[] = {
    {"Orvane ABS Low", 0.3, 235, 110, 90, false, 1.2},
    {"Orvane ABS Standard", 0.2, 230, 110, 80, false, 1.2},
    {"Orvane ABS High", 0.1, 225, 110, 60, false, 1.2},
    {"Orvane ABS Standard with Dissolvable Filament Support", 0.2, 230, 110, 70, false, 1.2},
    {"Orvane Dissolvable Filament Low", 0.3, 250, 110, 80, false, 1.4},
    {"Orvane Dissolvable Filament Standard", 0.2, 250, 110, 70, false, 1.4},
    {"Orvane Dissolvable Filament High", 0.1, 245, 110, 50, false, 1.4},
    {"Orvane Flexible Filament Low", 0.3, 100, 0, 45, true, 0.5},
    {"Orvane Flexible Filament Standard", 0.2, 100, 0, 35, true, 0.5},
    {"Orvane Flexible Filament High", 0.15, 100, 0, 25, true, 0.5},
    {"Orvane PLA Low", 0.3, 230, 0, 90, true, 1},
    {"Orvane PLA Standard", 0.2, 225, 0, 80, true, 1},
    {"Orvane PLA High", 0.1, 215, 0, 60, true, 1},
};
constexpr char kTwoFilaments[] = "Orvane ABS Standard with Dissolvable Filament Support";

constexpr const char* kTypes[] = {"fabrino_single", "fabrino_dual", "fabrino_2",
                                  "fabrino_2x",     "cubio_single", "cubio_dual"};
/**
 * Where a profile is sliced: on one with two tools, and on one without a heated platform or a small
 * and slow one.
 */
std::array<const char*, 2> slicedTypes(std::size_t profile)
{
    return {"fabrino_2x", profile % 2 == 0 ? "cubio_single" : "fabrino_2"};
}

QString folderOf(const char* name)
{
    return QStringLiteral(TROVEK_PROFILES "/") + QLatin1String(name);
}

SliceProfile profileOf(const char* name)
{
    return loadSliceProfile(folderOf(name).toStdString());
}

/** The name of a slice. */
std::string on(const char* profile, const char* type)
{
    return std::string(profile) + " on " + type;
}

void addRows()
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < std::size(kProfiles); ++i)
        QTest::newRow(kProfiles[i].name) << static_cast<int>(i);
}

} // namespace

class tst_BuiltinProfiles : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void areThirteenAndAllDifferent();
    void fitEveryMachine_data();
    void fitEveryMachine();
    void printAsTheFilamentNeeds_data();
    void printAsTheFilamentNeeds();
    void wholePrintsRunOnTheMachine_data();
    void wholePrintsRunOnTheMachine();
    void dissolvableSupportsComeFromTheOtherTool();

private:
    static BareSlice sliceOf(const char* profile, const char* type);
    QByteArray wholePrint(const char* profile, const char* type) const;

    BareSlices m_slices;
};

BareSlice tst_BuiltinProfiles::sliceOf(const char* profile, const char* type)
{
    BareSlice slice;
    slice.machineType = type;
    slice.profile = profileOf(profile).config;
    // Wide enough that not every layer is slowed down to cool, with a part that hangs over.
    slice.model = stlOf({{{12, 12, 0}, {48, 48, 3}}, {{4, 4, 3}, {56, 56, 4.2}}});
    return slice;
}

void tst_BuiltinProfiles::initTestCase()
{
    for (std::size_t i = 0; i < std::size(kProfiles); ++i) {
        for (const char* type : slicedTypes(i))
            m_slices.add(on(kProfiles[i].name, type), sliceOf(kProfiles[i].name, type));
    }
    m_slices.run();
}

void tst_BuiltinProfiles::areThirteenAndAllDifferent()
{
    const QStringList folders =
        QDir(QStringLiteral(TROVEK_PROFILES)).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(folders.size(), 13);
    std::set<std::string> different;
    for (const Expected& profile : kProfiles) {
        QVERIFY2(folders.contains(QLatin1String(profile.name)), profile.name);
        different.insert(prusaOptions(machineOfType("fabrino_2x"),
                                      sliceOf(profile.name, "fabrino_2x").settings()));
        const QStringList files = QDir(folderOf(profile.name)).entryList(QDir::Files);
        QCOMPARE(files,
                 (QStringList{QStringLiteral("end.gcode"), QStringLiteral("profile.json"),
                              QStringLiteral("start.gcode"), QStringLiteral("strandel.json")}));
    }
    QCOMPARE(different.size(), std::size_t(13));
}

void tst_BuiltinProfiles::fitEveryMachine_data()
{
    addRows();
}

void tst_BuiltinProfiles::fitEveryMachine()
{
    QFETCH(int, index);
    const Expected& expected = kProfiles[index];
    const SliceProfile profile = profileOf(expected.name);
    for (const char* type : kTypes) {
        BareSlice slice = sliceOf(expected.name, type);
        const MachineDefinition machine = machineOfType(type);
        for (const auto extruder :
             {SlicerConfiguration::Left, SlicerConfiguration::Right, SlicerConfiguration::Both}) {
            slice.request.configuration.setExtruder(extruder);
            const SliceSettings settings = slice.settings();
            const std::array<bool, 2> tools{mayUseTool(settings, 0), mayUseTool(settings, 1)};
            const SlicedGCode start = SlicedGCode::read(
                QByteArray::fromStdString(sliceCode(machine, settings, tools, &profile).start));
            QVERIFY(start.hasStartCode);
            QCOMPARE(start.toolCelsius.count(0) > 0, tools[0]);
            QCOMPARE(start.toolCelsius.count(1) > 0, tools[1]);
            for (const auto& [tool, celsius] : start.toolCelsius)
                QCOMPARE(celsius, std::vector<double>{
                                      double(profile.config.tools.at(std::size_t(tool)).celsius)});
        }
    }
}

void tst_BuiltinProfiles::printAsTheFilamentNeeds_data()
{
    addRows();
}

void tst_BuiltinProfiles::printAsTheFilamentNeeds()
{
    QFETCH(int, index);
    const Expected& expected = kProfiles[index];
    for (const char* type : slicedTypes(static_cast<std::size_t>(index))) {
        const SlicedGCode& file = m_slices[on(expected.name, type)];
        const MachineDefinition machine = machineOfType(type);

        const std::vector<double> heights = file.modelHeights();
        for (std::size_t i = 1; i < heights.size(); ++i)
            QVERIFY(std::abs(heights[i] - heights[i - 1] - expected.layerHeight) < 1e-3);
        QCOMPARE(file.toolCelsius.at(0), std::vector<double>{expected.celsius});
        const bool isHeated = machine.hasHeatedPlatform && expected.platform > 0;
        QCOMPARE(file.platformCelsius,
                 isHeated ? std::vector<double>{expected.platform} : std::vector<double>());
        QVERIFY(file.extruding.fastest <= expected.fastest + 0.1);
        QVERIFY(file.extruding.fastest > 0.7 * expected.fastest);
        QCOMPARE(*std::max_element(file.fan.begin(), file.fan.end()), expected.fan ? 255.0 : 0.0);
        if (file.tools().size() == 1)
            QVERIFY(std::abs(file.retraction.at(0) - expected.retraction) < 1e-4);
    }
}

QByteArray tst_BuiltinProfiles::wholePrint(const char* profile, const char* type) const
{
    const SliceProfile files = profileOf(profile);
    const SlicedGCode& body = m_slices[on(profile, type)];
    const std::array<bool, 2> tools{body.tools().count(0) > 0, body.tools().count(1) > 0};
    const StartEndCode code =
        sliceCode(machineOfType(type), sliceOf(profile, type).settings(), tools, &files);
    return QByteArray::fromStdString(code.start) + m_slices.text(on(profile, type)) +
           QByteArray::fromStdString(code.end);
}

void tst_BuiltinProfiles::wholePrintsRunOnTheMachine_data()
{
    addRows();
}

void tst_BuiltinProfiles::wholePrintsRunOnTheMachine()
{
    QFETCH(int, index);
    const Expected& expected = kProfiles[index];
    for (const char* type : slicedTypes(static_cast<std::size_t>(index))) {
        const QByteArray text = wholePrint(expected.name, type);
        const MachineDefinition machine = machineOfType(type);

        const SlicedGCode file = SlicedGCode::read(text);
        QVERIFY(file.hasStartCode);
        QVERIFY(file.hasEndCode);
        // Heated once and off at the end, without another word in between.
        QCOMPARE(file.toolCelsius.at(0), (std::vector<double>{expected.celsius, 0}));
        if (machine.hasHeatedPlatform && expected.platform > 0)
            QCOMPARE(file.platformCelsius, (std::vector<double>{expected.platform, 0}));
        else
            QCOMPARE(file.platformCelsius,
                     machine.hasHeatedPlatform ? std::vector<double>{0} : std::vector<double>());

        std::vector<GCodeSection> sections;
        sections.push_back({std::string(), byteSourceOf(text.toStdString())});
        GCodeProgram program(machine, std::move(sections));
        MachineCommand command;
        while (program.next(command)) {
        }
        QCOMPARE(program.remarks().unreadableLines, std::uint64_t(0));
        QCOMPARE(program.remarks().leftOut.size(), std::size_t(0));
    }
}

void tst_BuiltinProfiles::dissolvableSupportsComeFromTheOtherTool()
{
    const SlicedGCode& file = m_slices[on(kTwoFilaments, "fabrino_2x")];

    QVERIFY(file.paths("Support material", 1).length > 100);
    QCOMPARE(file.paths("Support material", 0).length, 0.0);
    QVERIFY(file.paths("External perimeter", 0).length > 100);
    QCOMPARE(file.paths("External perimeter", 1).length, 0.0);
    QCOMPARE(file.toolCelsius, (Celsius{{0, {230}}, {1, {250}}}));
    // The raft holds the supports as well as the model.
    QCOMPARE(file.layers.front().tools(), std::set<int>{1});
    // A machine with one tool has nothing else for them.
    QCOMPARE(m_slices[on(kTwoFilaments, "fabrino_2")].tools(), std::set<int>{0});
}

QTEST_GUILESS_MAIN(tst_BuiltinProfiles)
#include "tst_builtin_profiles.moc"
