#include "service/slicing/bare_slices.h"
#include "service/slicing/small_models.h"

#include <gcode/gcode_program.h>
#include <slicing/slice_code.h>

#include <QTest>

#include <cmath>

using namespace trovek;
using namespace trovek::service;

namespace {

using Slicer = SlicerConfiguration;
using Tools = std::set<int>;

constexpr int kRight = 0;
constexpr int kLeft = 1;

const std::vector<ModelBox> kSlab{{{0, 0, 0}, {30, 30, 4}}};
/** Wide enough that no layer is slowed down to cool. */
const std::vector<ModelBox> kPlate{{{0, 0, 0}, {90, 90, 1.8}}};
const std::vector<ModelBox> kWafer{{{0, 0, 0}, {12, 12, 0.5}}};
/** A plate on a foot, which needs supports around the foot. */
const std::vector<ModelBox> kTable{{{8, 8, 0}, {16, 16, 4}}, {{0, 0, 4}, {24, 24, 6}}};
/** Two cubes that touch, each a part of its own. */
const std::vector<ModelBox> kPair{{{0, 0, 0}, {10, 10, 5}}, {{10, 0, 0}, {20, 10, 5}}};

/** A dual machine, PLA in both tools, a slab printed with the right one. */
BareSlice plain()
{
    BareSlice slice;
    slice.request.materials = {"pla", "pla"};
    slice.request.configuration.setHeatPlatform(false);
    slice.request.configuration.setExtruderTemperature(215);
    slice.request.configuration.setLeftExtruderTemperature(225);
    slice.model = stlOf(kSlab);
    return slice;
}

template <typename Change>
BareSlice changed(Change change, const std::vector<ModelBox>& model = kSlab)
{
    BareSlice slice = plain();
    slice.model = stlOf(model);
    change(slice.request.configuration);
    return slice;
}

bool isNear(double value, double expected, double tolerance)
{
    if (std::abs(value - expected) <= tolerance)
        return true;
    qWarning() << value << "is not near" << expected;
    return false;
}

/** The height of each layer that holds a part of the model, from the second one on. */
bool hasLayersOf(const SlicedGCode& file, double height)
{
    const std::vector<double> tops = file.modelHeights();
    for (std::size_t i = 1; i < tops.size(); ++i) {
        if (!isNear(tops[i] - tops[i - 1], height, 1e-3))
            return false;
    }
    return tops.size() > 1;
}

Tools toolsOf(const SlicedGCode& file, const std::string& feature)
{
    Tools tools;
    for (const int tool : {kRight, kLeft}) {
        if (file.paths(feature, tool).moves > 0)
            tools.insert(tool);
    }
    return tools;
}

/** Below the model's first layer. */
Tools toolsOfRaft(const SlicedGCode& file)
{
    Tools tools;
    for (const SlicedLayer& layer : file.layers) {
        if (layer.hasModel())
            break;
        const Tools used = layer.tools();
        tools.insert(used.begin(), used.end());
    }
    return tools;
}

/** Beside and above the model's first layer. */
Tools toolsOfSupports(const SlicedGCode& file)
{
    Tools tools;
    bool isAboveRaft = false;
    for (const SlicedLayer& layer : file.layers) {
        isAboveRaft |= layer.hasModel();
        for (const auto& [feature, byTool] : layer.features) {
            if (!isAboveRaft || feature.rfind("Support material", 0) != 0)
                continue;
            for (const auto& [tool, paths] : byTool)
                tools.insert(tool);
        }
    }
    return tools;
}

} // namespace

/** Each field of a request changes what is sliced as its name says. */
class tst_SliceFields : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void theModelLiesInTheMiddleOfThePlatform();
    void layerHeight_data();
    void layerHeight();
    void infill();
    void shells();
    void solidLayersAreAsThickAtAnyHeight();
    void extruderTemperatures();
    void platformTemperatureAndHeating();
    void aMachineWithoutAHeatedPlatformHeatsNone();
    void printSpeed_data();
    void printSpeed();
    void travelSpeed_data();
    void travelSpeed();
    void speedsEndWhereTheMachinesDo();
    void raft();
    void supports();
    void raftAndSupportsByExtruder_data();
    void raftAndSupportsByExtruder();
    void colorMatchedIsTheDissolvableTool_data();
    void colorMatchedIsTheDissolvableTool();
    void dissolvableSupportsTouchTheModel();
    void extruder();
    void partsKeepTheirToolsWithBothExtruders();
    void aMachineWithOneExtruderPrintsEverythingWithIt();
    void materialsDecideCoolingAndRetraction();
    void eachToolIsTheRightOneForItsFilament();
    void machinesRunWhatWasSliced_data();
    void machinesRunWhatWasSliced();

private:
    void addExtraParts();

    BareSlices m_slices;
};

void tst_SliceFields::addExtraParts()
{
    for (const int raftTool : {kRight, kLeft}) {
        for (const int supportTool : {kRight, kLeft}) {
            for (const auto model : {Slicer::Right, Slicer::Left}) {
                const std::string name = "raft " + std::to_string(raftTool) + " supports " +
                                         std::to_string(supportTool) + " model " +
                                         std::to_string(model);
                m_slices.add(name, changed(
                                       [&](Slicer& c) {
                                           c.setExtruder(model);
                                           c.setRaft(true);
                                           c.setSupports(true);
                                           c.setDefaultRaftExtruder(raftTool);
                                           c.setDefaultSupportExtruder(supportTool);
                                       },
                                       kTable));
            }
        }
    }
    const auto automatic = [](Slicer& c) {
        c.setRaft(true);
        c.setSupports(true);
        c.setDoAutoRaft(true);
        c.setDoAutoSupport(true);
        // What is automatic does not look at these.
        c.setDefaultRaftExtruder(kLeft);
        c.setDefaultSupportExtruder(kLeft);
    };
    BareSlice slice = changed(automatic, kTable);
    m_slices.add("automatic pla pla", slice);
    slice.request.materials = {"abs", "dissolvable"};
    m_slices.add("automatic abs dissolvable", slice);
    slice.request.materials = {"dissolvable", "abs"};
    m_slices.add("automatic dissolvable abs", slice);
    slice.request.configuration.setExtruder(Slicer::Left);
    m_slices.add("automatic dissolvable abs, model left", slice);
}

void tst_SliceFields::initTestCase()
{
    m_slices.add("plain", plain());
    for (const double height : {0.01, 0.1, 0.2, 0.3, 0.4}) {
        m_slices.add(
            "layers " + std::to_string(height),
            changed([&](Slicer& c) { c.setLayerHeight(height); }, height < 0.1 ? kWafer : kSlab));
    }
    for (const int percent : {0, 10, 50, 100}) {
        m_slices.add("infill " + std::to_string(percent),
                     changed([&](Slicer& c) { c.setInfill(percent / 100.0); }));
    }
    for (const std::uint32_t shells : {1, 2, 5})
        m_slices.add("shells " + std::to_string(shells),
                     changed([&](Slicer& c) { c.setShells(shells); }));
    m_slices.add("heated", changed([](Slicer& c) {
                     c.setHeatPlatform(true);
                     c.setPlatformTemperature(105);
                 }));
    BareSlice slice = changed([](Slicer& c) { c.setHeatPlatform(true); });
    slice.machineType = "fabrino_2";
    m_slices.add("nothing to heat", slice);
    for (const std::uint32_t speed : {10, 40, 80, 200}) {
        m_slices.add("print speed " + std::to_string(speed),
                     changed([&](Slicer& c) { c.setPrintSpeed(speed); }, kPlate));
        m_slices.add("travel speed " + std::to_string(speed),
                     changed([&](Slicer& c) { c.setTravelSpeed(speed); }, kPlate));
    }
    slice = changed(
        [](Slicer& c) {
            c.setPrintSpeed(200);
            c.setTravelSpeed(200);
        },
        kPlate);
    slice.machineType = "cubio_dual";
    m_slices.add("slow machine", slice);
    m_slices.add("table", changed([](Slicer&) {}, kTable));
    m_slices.add("raft", changed([](Slicer& c) { c.setRaft(true); }, kTable));
    m_slices.add("supports", changed([](Slicer& c) { c.setSupports(true); }, kTable));
    m_slices.add("raft left", changed([](Slicer& c) {
                     c.setRaft(true);
                     c.setDefaultRaftExtruder(kLeft);
                 }));
    addExtraParts();

    m_slices.add("left", changed([](Slicer& c) { c.setExtruder(Slicer::Left); }));
    m_slices.add("both", changed([](Slicer& c) { c.setExtruder(Slicer::Both); }));
    slice = changed([](Slicer& c) { c.setExtruder(Slicer::Both); });
    slice.model = amfOf(kPair);
    slice.suffix = QStringLiteral("amf");
    m_slices.add("pair", slice);
    slice.request.configuration.setExtruder(Slicer::Right);
    m_slices.add("pair right", slice);
    slice.request.configuration.setExtruder(Slicer::Left);
    m_slices.add("pair left", slice);
    slice.request.configuration.setExtruder(Slicer::Both);
    slice.machineType = "fabrino_single";
    m_slices.add("pair on one", slice);
    slice = changed([](Slicer& c) {
        c.setExtruder(Slicer::Left);
        c.setRaft(true);
        c.setSupports(true);
    });
    slice.machineType = "fabrino_single";
    slice.model = stlOf(kTable);
    m_slices.add("one", slice);

    for (const char* material : {"abs", "pla", "dissolvable", "flexible"}) {
        slice = plain();
        slice.request.materials = {material};
        m_slices.add(material, slice);
    }
    slice = changed([](Slicer& c) { c.setExtruder(Slicer::Both); });
    slice.model = amfOf(kPair);
    slice.suffix = QStringLiteral("amf");
    slice.request.materials = {"flexible", "abs"};
    m_slices.add("flexible and abs", slice);

    m_slices.run();
}

void tst_SliceFields::theModelLiesInTheMiddleOfThePlatform()
{
    const SlicedGCode& file = m_slices["plain"];
    const MachineDefinition machine = machineOfType("fabrino_2x");

    QVERIFY(isNear((file.minX + file.maxX) / 2, machine.buildVolume[0].max / 2, 0.01));
    QVERIFY(isNear((file.minY + file.maxY) / 2, machine.buildVolume[1].max / 2, 0.01));
    // Half a path's width stands out on either side.
    QVERIFY(isNear(file.maxX - file.minX, 30, 0.6));
    QVERIFY(isNear(file.maxY - file.minY, 30, 0.6));
    QVERIFY(isNear(file.maxZ, 4, 0.11));
}

void tst_SliceFields::layerHeight_data()
{
    QTest::addColumn<double>("height");
    QTest::addColumn<double>("first");

    QTest::newRow("the finest") << 0.01 << 0.2;
    QTest::newRow("fine") << 0.1 << 0.2;
    QTest::newRow("standard") << 0.2 << 0.2;
    QTest::newRow("coarse") << 0.3 << 0.3;
    QTest::newRow("the coarsest") << 0.4 << 0.4;
}

void tst_SliceFields::layerHeight()
{
    QFETCH(double, height);
    QFETCH(double, first);
    const SlicedGCode& file = m_slices["layers " + std::to_string(height)];

    QVERIFY(hasLayersOf(file, height));
    QVERIFY(isNear(file.modelHeights().front(), first, 1e-3));
}

void tst_SliceFields::infill()
{
    const auto sparse = [&](const char* name) {
        return m_slices[name].paths("Internal infill").filament;
    };
    QCOMPARE(sparse("infill 0"), 0.0);
    QVERIFY(sparse("infill 10") > 0);
    // Where it is sparse, more of it goes along the walls.
    QVERIFY(isNear(sparse("infill 50") / sparse("infill 10"), 5, 1));

    // Full is solid all through.
    double all = 0;
    for (const std::string& feature : m_slices["infill 100"].features())
        all += m_slices["infill 100"].paths(feature).filament;
    const double filamentArea = std::acos(-1) / 4 * 1.75 * 1.75;
    QVERIFY(isNear(all * filamentArea, 30 * 30 * 4, 30 * 30 * 4 * 0.05));
}

void tst_SliceFields::shells()
{
    const auto loops = [&](const char* name) {
        const SlicedGCode& file = m_slices[name];
        const double around = 4 * 29.0;
        const double length =
            file.paths("Perimeter").length + file.paths("External perimeter").length;
        return length / around / static_cast<double>(file.modelHeights().size());
    };
    QVERIFY(isNear(loops("shells 1"), 1, 0.1));
    QVERIFY(isNear(loops("shells 2"), 2, 0.2));
    QVERIFY(isNear(loops("shells 5"), 5, 0.5));
    QVERIFY(isNear(m_slices["shells 1"].paths("Perimeter").length, 0, 1e-9));
}

void tst_SliceFields::solidLayersAreAsThickAtAnyHeight()
{
    const auto solidBottom = [&](double height) {
        const SlicedGCode& file = m_slices["layers " + std::to_string(height)];
        for (const SlicedLayer& layer : file.layers) {
            if (layer.has("Internal infill"))
                return layer.z - height;
        }
        return 0.0;
    };
    QVERIFY(isNear(solidBottom(0.1), 0.9, 0.01));
    QVERIFY(isNear(solidBottom(0.2), 0.8, 0.01));
    QVERIFY(isNear(solidBottom(0.3), 0.9, 0.01));
    QVERIFY(isNear(solidBottom(0.4), 1.2, 0.01));
}

void tst_SliceFields::extruderTemperatures()
{
    QCOMPARE(m_slices["plain"].toolCelsius, (std::map<int, std::vector<double>>{{kRight, {215}}}));
    QCOMPARE(m_slices["left"].toolCelsius, (std::map<int, std::vector<double>>{{kLeft, {225}}}));
    QCOMPARE(m_slices["pair"].toolCelsius,
             (std::map<int, std::vector<double>>{{kRight, {215}}, {kLeft, {225}}}));
    QCOMPARE(m_slices["pair"].codes.at("M109"), 2);
}

void tst_SliceFields::platformTemperatureAndHeating()
{
    QCOMPARE(m_slices["heated"].platformCelsius, std::vector<double>{105});
    QCOMPARE(m_slices["heated"].codes.at("M190"), 1);
    QCOMPARE(m_slices["plain"].platformCelsius, std::vector<double>());
}

void tst_SliceFields::aMachineWithoutAHeatedPlatformHeatsNone()
{
    QCOMPARE(m_slices["nothing to heat"].platformCelsius, std::vector<double>());
}

void tst_SliceFields::printSpeed_data()
{
    QTest::addColumn<int>("speed");

    for (const int speed : {10, 40, 80, 200})
        QTest::newRow(std::to_string(speed).c_str()) << speed;
}

void tst_SliceFields::printSpeed()
{
    QFETCH(int, speed);
    const SlicedGCode& file = m_slices["print speed " + std::to_string(speed)];

    QVERIFY(isNear(file.extruding.fastest, speed, 0.1));
    QVERIFY(isNear(file.paths("Internal infill").fastest, speed, 0.1));
    QVERIFY(isNear(file.travels.fastest, 150, 0.1));
    const auto shell = [&](const SlicedLayer& layer) {
        return layer.features.at("External perimeter").at(kRight).fastest;
    };
    // What is seen, and what has to stick, is printed more slowly.
    QVERIFY(isNear(shell(file.layers.at(2)), speed * 0.6, 0.1));
    QVERIFY(isNear(shell(file.layers.front()), std::min(speed, 30), 0.1));
}

void tst_SliceFields::travelSpeed_data()
{
    printSpeed_data();
}

void tst_SliceFields::travelSpeed()
{
    QFETCH(int, speed);
    const SlicedGCode& file = m_slices["travel speed " + std::to_string(speed)];

    QVERIFY(isNear(file.travels.fastest, speed, 0.1));
    QVERIFY(isNear(file.extruding.fastest, 80, 0.1));
}

void tst_SliceFields::speedsEndWhereTheMachinesDo()
{
    QVERIFY(isNear(m_slices["slow machine"].extruding.fastest, 120, 0.1));
    QVERIFY(isNear(m_slices["slow machine"].travels.fastest, 120, 0.1));
}

void tst_SliceFields::raft()
{
    const SlicedGCode& without = m_slices["table"];
    const SlicedGCode& with = m_slices["raft"];

    QVERIFY(without.layers.front().hasModel());
    QVERIFY(isNear(without.maxZ, 6, 0.11));
    int raftLayers = 0;
    while (!with.layers.at(raftLayers).hasModel())
        ++raftLayers;
    QCOMPARE(raftLayers, 3);
    QVERIFY(with.maxZ - without.maxZ > 0.6);
    // Nothing but the raft: what hangs over hangs over still.
    QCOMPARE(toolsOfSupports(with), Tools());
    QCOMPARE(toolsOfRaft(m_slices["raft left"]), Tools{kLeft});
    QCOMPARE(toolsOf(m_slices["raft left"], "External perimeter"), Tools{kRight});
}

void tst_SliceFields::supports()
{
    QCOMPARE(toolsOfSupports(m_slices["table"]), Tools());
    QCOMPARE(toolsOfSupports(m_slices["supports"]), Tools{kRight});
    QVERIFY(m_slices["supports"].layers.front().hasModel());
    // Around the foot and below the plate, with a gap that lets them come off.
    double highest = 0;
    for (const SlicedLayer& layer : m_slices["supports"].layers) {
        if (layer.has("Support material interface"))
            highest = layer.z;
    }
    QVERIFY(highest > 3 && highest < 3.9);
}

void tst_SliceFields::raftAndSupportsByExtruder_data()
{
    QTest::addColumn<int>("raftTool");
    QTest::addColumn<int>("supportTool");
    QTest::addColumn<int>("model");

    for (const int raftTool : {kRight, kLeft}) {
        for (const int supportTool : {kRight, kLeft}) {
            for (const int model : {int(Slicer::Right), int(Slicer::Left)}) {
                const std::string name = "raft " + std::to_string(raftTool) + " supports " +
                                         std::to_string(supportTool) + " model " +
                                         std::to_string(model);
                QTest::newRow(name.c_str()) << raftTool << supportTool << model;
            }
        }
    }
}

void tst_SliceFields::raftAndSupportsByExtruder()
{
    QFETCH(int, raftTool);
    QFETCH(int, supportTool);
    QFETCH(int, model);
    const SlicedGCode& file = m_slices[QTest::currentDataTag()];
    const int modelTool = model == Slicer::Left ? kLeft : kRight;

    QCOMPARE(toolsOfRaft(file), Tools{raftTool});
    QCOMPARE(toolsOfSupports(file), Tools{supportTool});
    QCOMPARE(toolsOf(file, "External perimeter"), Tools{modelTool});
    QCOMPARE(toolsOf(file, "Internal infill"), Tools{modelTool});
    const Tools used{raftTool, supportTool, modelTool};
    QCOMPARE(file.tools(), used);
    for (const int tool : used)
        QCOMPARE(file.toolCelsius.at(tool), std::vector<double>{tool == kRight ? 215.0 : 225.0});

    // Nothing is lost or pushed twice where tools change.
    const QList<QByteArray> told =
        QByteArray::fromStdString(file.comments.at("filament used [mm]")).split(',');
    for (const int tool : used) {
        double printed = 0;
        for (const std::string& feature : file.features())
            printed += file.paths(feature, tool).filament;
        QVERIFY(isNear(printed, told.value(tool).trimmed().toDouble(), 0.1));
        QVERIFY(isNear(file.filament.at(tool), printed, 5));
        QVERIFY(file.filament.at(tool) <= printed + 0.01);
    }
}

void tst_SliceFields::colorMatchedIsTheDissolvableTool_data()
{
    QTest::addColumn<int>("extras");
    QTest::addColumn<int>("model");

    QTest::newRow("automatic pla pla") << kRight << kRight;
    QTest::newRow("automatic abs dissolvable") << kLeft << kRight;
    QTest::newRow("automatic dissolvable abs") << kRight << kRight;
    QTest::newRow("automatic dissolvable abs, model left") << kRight << kLeft;
}

void tst_SliceFields::colorMatchedIsTheDissolvableTool()
{
    QFETCH(int, extras);
    QFETCH(int, model);
    const SlicedGCode& file = m_slices[QTest::currentDataTag()];

    QCOMPARE(toolsOfRaft(file), Tools{extras});
    QCOMPARE(toolsOfSupports(file), Tools{extras});
    QCOMPARE(toolsOf(file, "External perimeter"), Tools{model});
}

void tst_SliceFields::dissolvableSupportsTouchTheModel()
{
    // The table's plate is 2 mm thick.
    const auto gap = [&](const char* name) {
        const SlicedGCode& file = m_slices[name];
        double below = 0;
        for (const SlicedLayer& layer : file.layers) {
            if (layer.has("Support material interface"))
                below = layer.z;
        }
        return file.maxZ - below - 2;
    };
    QVERIFY(isNear(gap("automatic abs dissolvable"), 0, 0.01));
    QVERIFY(isNear(gap("automatic pla pla"), 0.2, 0.06));
}

void tst_SliceFields::extruder()
{
    QCOMPARE(m_slices["plain"].tools(), Tools{kRight});
    QCOMPARE(m_slices["left"].tools(), Tools{kLeft});
    // A file without parts is all the right one's.
    QCOMPARE(m_slices["both"].tools(), Tools{kRight});
    // Whoever names one means all parts, whatever the file says of them.
    QCOMPARE(m_slices["pair right"].tools(), Tools{kRight});
    QCOMPARE(m_slices["pair left"].tools(), Tools{kLeft});
}

void tst_SliceFields::partsKeepTheirToolsWithBothExtruders()
{
    const SlicedGCode& file = m_slices["pair"];

    QCOMPARE(file.tools(), (Tools{kRight, kLeft}));
    QVERIFY(file.toolChanges > 10);
    for (const SlicedLayer& layer : file.layers)
        QCOMPARE(layer.tools(), (Tools{kRight, kLeft}));
    const double right = file.paths("External perimeter", kRight).length;
    const double left = file.paths("External perimeter", kLeft).length;
    QVERIFY(isNear(right, left, right * 0.1));
}

void tst_SliceFields::aMachineWithOneExtruderPrintsEverythingWithIt()
{
    QCOMPARE(m_slices["one"].tools(), Tools{kRight});
    QCOMPARE(m_slices["one"].toolCelsius, (std::map<int, std::vector<double>>{{kRight, {215}}}));
    QCOMPARE(toolsOfRaft(m_slices["one"]), Tools{kRight});
    QCOMPARE(toolsOfSupports(m_slices["one"]), Tools{kRight});
    QCOMPARE(m_slices["pair on one"].tools(), Tools{kRight});
}

void tst_SliceFields::materialsDecideCoolingAndRetraction()
{
    const auto fan = [&](const char* material) {
        return m_slices[material].fan;
    };
    QCOMPARE(fan("abs"), std::vector<double>{0});
    QCOMPARE(fan("dissolvable"), std::vector<double>{0});
    // Not on the first layer.
    QCOMPARE(fan("pla"), (std::vector<double>{0, 255, 0}));
    QCOMPARE(fan("flexible"), (std::vector<double>{0, 255, 0}));

    QVERIFY(isNear(m_slices["pla"].retraction.at(kRight), 1.0, 1e-4));
    QVERIFY(isNear(m_slices["abs"].retraction.at(kRight), 1.2, 1e-4));
    QVERIFY(isNear(m_slices["dissolvable"].retraction.at(kRight), 1.4, 1e-4));
    QVERIFY(isNear(m_slices["flexible"].retraction.at(kRight), 0.5, 1e-4));
}

void tst_SliceFields::eachToolIsTheRightOneForItsFilament()
{
    const SlicedGCode& file = m_slices["flexible and abs"];

    // What rests is pulled back further.
    QVERIFY(isNear(file.retraction.at(kRight), 1.5, 1e-4));
    QVERIFY(isNear(file.retraction.at(kLeft), 3.6, 1e-4));
    // The fan goes with the tool.
    QVERIFY(file.fan.size() > 10);
}

void tst_SliceFields::machinesRunWhatWasSliced_data()
{
    QTest::addColumn<bool>("right");
    QTest::addColumn<bool>("left");

    QTest::newRow("plain") << true << false;
    QTest::newRow("left") << false << true;
    QTest::newRow("pair") << true << true;
    QTest::newRow("raft 0 supports 1 model 1") << true << true;
    QTest::newRow("raft 1 supports 0 model 1") << true << true;
    QTest::newRow("raft 1 supports 0 model 0") << true << true;
    QTest::newRow("automatic abs dissolvable") << true << true;
}

void tst_SliceFields::machinesRunWhatWasSliced()
{
    QFETCH(bool, right);
    QFETCH(bool, left);
    const MachineDefinition machine = machineOfType("fabrino_2x");
    const SliceSettings settings = changed([](Slicer&) {}).settings();
    const StartEndCode code = sliceCode(machine, settings, {right, left}, nullptr);
    std::vector<GCodeSection> sections;
    sections.push_back({"Start code", byteSourceOf(code.start)});
    sections.push_back(
        {std::string(), byteSourceOf(m_slices.text(QTest::currentDataTag()).toStdString())});
    sections.push_back({"End code", byteSourceOf(code.end)});

    GCodeProgram program(machine, std::move(sections), GCodeProgram::RefuseCold);
    MachineCommand command;
    while (program.next(command)) {
    }

    QCOMPARE(program.remarks().toString(), std::string());
}

QTEST_GUILESS_MAIN(tst_SliceFields)
#include "tst_slice_fields.moc"
