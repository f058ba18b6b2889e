#include "service/slicing/bare_slices.h"
#include "service/slicing/small_models.h"

#include <slicing/slice_profile.h>

#include <QTest>

#include <cmath>

using namespace trovek;
using namespace trovek::service;

namespace {

constexpr int kRight = 0;
constexpr int kLeft = 1;

std::vector<ModelBox> slab()
{
    return {{{0, 0, 0}, {28, 28, 3}}};
}

/** Leans over by 45 degrees, in steps as high as a layer. */
std::vector<ModelBox> leaning()
{
    std::vector<ModelBox> boxes;
    for (int step = 0; step < 15; ++step)
        boxes.push_back({{step * 0.2, 0, step * 0.2}, {12 + step * 0.2, 12, (step + 1) * 0.2}});
    return boxes;
}

bool isNear(double value, double expected, double tolerance)
{
    if (std::abs(value - expected) <= tolerance)
        return true;
    qWarning() << value << "is not near" << expected;
    return false;
}

double allFilament(const SlicedGCode& file)
{
    return file.extruding.filament;
}

} // namespace

/** Each key of a "strandel.json" that no field of a request says changes what is sliced. */
class tst_SliceKeys : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void firstLayerHeight();
    void infillPattern();
    void solidLayers();
    void outerShellSpeed();
    void firstLayerSpeed();
    void supportAngle();
    void flow();
    void fan();
    void minimumLayerSeconds();
    void retraction();
    void filamentDiameter();
    void nozzleDiameter();
    void extrudersAreToldApart();

private:
    template <typename Change>
    void add(const std::string& name, Change change,
             SlicerConfiguration::Extruder extruder = SlicerConfiguration::Right);

    BareSlices m_slices;
};

template <typename Change>
void tst_SliceKeys::add(const std::string& name, Change change,
                        SlicerConfiguration::Extruder extruder)
{
    BareSlice slice;
    slice.request.configuration.setExtruder(extruder);
    slice.profile = loadSliceProfile(TROVEK_PROFILES "/Orvane PLA Standard").config;
    slice.model = stlOf(slab());
    change(*slice.profile);
    if (slice.profile->supports != ExtraPartChoice::Off)
        slice.model = stlOf(leaning());
    m_slices.add(name, slice);
}

void tst_SliceKeys::initTestCase()
{
    using Config = StrandelConfig;
    add("plain", [](Config&) {});
    add("first layer height", [](Config& c) { c.firstLayerHeight = 0.35; });
    const std::pair<const char*, InfillPattern> patterns[] = {
        {"linear", InfillPattern::Linear},
        {"grid", InfillPattern::Grid},
        {"hexagonal", InfillPattern::Hexagonal},
        {"gyroid", InfillPattern::Gyroid},
    };
    for (const auto& [name, pattern] : patterns) {
        add(name, [pattern = pattern](Config& c) { c.infillPattern = pattern; });
        add(std::string("full ") + name, [pattern = pattern](Config& c) {
            c.infillPattern = pattern;
            c.infill = 1;
        });
    }
    for (const int layers : {0, 2, 6})
        add("solid layers " + std::to_string(layers), [&](Config& c) { c.solidLayers = layers; });
    add("outer shell speed", [](Config& c) { c.outerShellSpeed = 22; });
    add("outer shell speed above all", [](Config& c) { c.outerShellSpeed = 200; });
    add("first layer speed", [](Config& c) { c.firstLayerSpeed = 13; });
    for (const double angle : {30.0, 60.0}) {
        add("support angle " + std::to_string(int(angle)), [&](Config& c) {
            c.supports = ExtraPartChoice::Right;
            c.supportAngle = angle;
        });
    }
    add("flow", [](Config& c) { c.tools[kRight].flow = 1.1; });
    add("fan", [](Config& c) { c.tools[kRight].fan = 0.5; });
    add("no fan", [](Config& c) { c.tools[kRight].fan = 0; });
    add("minimum layer seconds", [](Config& c) { c.tools[kRight].minimumLayerSeconds = 60; });
    add("no minimum", [](Config& c) { c.tools[kRight].minimumLayerSeconds = 0; });
    add("retraction", [](Config& c) {
        c.tools[kRight].retraction = 2.5;
        c.tools[kRight].retractionSpeed = 20;
    });
    add("fast retraction", [](Config& c) { c.tools[kRight].retractionSpeed = 200; });
    add("no retraction", [](Config& c) { c.tools[kRight].retraction = 0; });
    add("filament diameter", [](Config& c) { c.tools[kRight].filamentDiameter = 2.85; });
    add("nozzle diameter", [](Config& c) { c.tools[kRight].nozzleDiameter = 0.6; });
    add(
        "left", [](Config& c) { c.tools[kRight].flow = 2; }, SlicerConfiguration::Left);
    add(
        "left flow", [](Config& c) { c.tools[kLeft].flow = 1.1; }, SlicerConfiguration::Left);
    m_slices.run();
}

void tst_SliceKeys::firstLayerHeight()
{
    QVERIFY(isNear(m_slices["plain"].modelHeights().at(0), 0.25, 1e-3));
    QVERIFY(isNear(m_slices["first layer height"].modelHeights().at(0), 0.35, 1e-3));
    QVERIFY(isNear(m_slices["first layer height"].modelHeights().at(1), 0.55, 1e-3));
}

void tst_SliceKeys::infillPattern()
{
    const auto moves = [&](const char* name) {
        return m_slices[name].paths("Internal infill").moves;
    };
    // The rounder, the more moves; a grid has lines of both directions in each layer.
    QVERIFY(moves("grid") > moves("linear"));
    QVERIFY(moves("hexagonal") > moves("grid"));
    QVERIFY(moves("gyroid") > 3 * moves("grid"));
    for (const char* name : {"linear", "grid", "hexagonal", "gyroid"}) {
        QVERIFY(isNear(allFilament(m_slices[std::string("full ") + name]),
                       allFilament(m_slices["full linear"]), 1e-6));
    }
}

void tst_SliceKeys::solidLayers()
{
    const auto sparse = [&](const char* name) {
        int layers = 0;
        for (const SlicedLayer& layer : m_slices[name].layers)
            layers += layer.has("Internal infill") ? 1 : 0;
        return static_cast<int>(m_slices[name].layers.size()) - layers;
    };
    QCOMPARE(sparse("solid layers 0"), 0);
    QCOMPARE(sparse("solid layers 2"), 4);
    QCOMPARE(sparse("solid layers 6"), 12);
}

void tst_SliceKeys::outerShellSpeed()
{
    const auto speed = [&](const char* name, const char* feature) {
        return m_slices[name].layers.at(3).features.at(feature).at(kRight).fastest;
    };
    QVERIFY(isNear(speed("outer shell speed", "External perimeter"), 22, 0.1));
    QVERIFY(isNear(speed("outer shell speed", "Perimeter"), 80, 0.1));
    // Nothing is faster than printing may be.
    QVERIFY(isNear(m_slices["outer shell speed above all"].extruding.fastest, 80, 0.1));
}

void tst_SliceKeys::firstLayerSpeed()
{
    const auto fastest = [&](const char* name) {
        double all = 0;
        for (const auto& [feature, byTool] : m_slices[name].layers.front().features)
            all = std::max(all, byTool.at(kRight).fastest);
        return all;
    };
    QVERIFY(isNear(fastest("plain"), 30, 0.1));
    QVERIFY(isNear(fastest("first layer speed"), 13, 0.1));
}

void tst_SliceKeys::supportAngle()
{
    QCOMPARE(m_slices["support angle 30"].paths("Support material").moves, 0);
    QVERIFY(m_slices["support angle 60"].paths("Support material").moves > 100);
}

void tst_SliceKeys::flow()
{
    QVERIFY(isNear(allFilament(m_slices["flow"]) / allFilament(m_slices["plain"]), 1.1, 1e-3));
}

void tst_SliceKeys::fan()
{
    QCOMPARE(m_slices["plain"].fan, (std::vector<double>{0, 255, 0}));
    QCOMPARE(m_slices["fan"].fan, (std::vector<double>{0, 127.5, 0}));
    QCOMPARE(m_slices["no fan"].fan, std::vector<double>{0});
}

void tst_SliceKeys::minimumLayerSeconds()
{
    const auto fastest = [&](const char* name) {
        return m_slices[name].paths("Internal infill").fastest;
    };
    QVERIFY(isNear(fastest("no minimum"), 80, 0.1));
    QVERIFY(fastest("minimum layer seconds") < 30);
}

void tst_SliceKeys::retraction()
{
    QVERIFY(isNear(m_slices["plain"].retraction.at(kRight), 1, 1e-4));
    QVERIFY(isNear(m_slices["plain"].retractionSpeed.at(kRight), 35, 0.1));
    QVERIFY(isNear(m_slices["retraction"].retraction.at(kRight), 2.5, 1e-4));
    QVERIFY(isNear(m_slices["retraction"].retractionSpeed.at(kRight), 20, 0.1));
    // No faster than the machine's extruder turns.
    QVERIFY(isNear(m_slices["fast retraction"].retractionSpeed.at(kRight), 45, 0.1));
    QCOMPARE(m_slices["no retraction"].retraction.at(kRight), 0.0);
}

void tst_SliceKeys::filamentDiameter()
{
    const double ratio = std::pow(1.75 / 2.85, 2);
    QVERIFY(isNear(allFilament(m_slices["filament diameter"]) / allFilament(m_slices["plain"]),
                   ratio, 1e-3));
}

void tst_SliceKeys::nozzleDiameter()
{
    // Wider paths, so fewer of them.
    QVERIFY(isNear(m_slices["nozzle diameter"].extruding.length,
                   m_slices["plain"].extruding.length / 1.5,
                   m_slices["plain"].extruding.length * 0.1));
}

void tst_SliceKeys::extrudersAreToldApart()
{
    QVERIFY(isNear(allFilament(m_slices["left"]), allFilament(m_slices["plain"]), 1e-3));
    QVERIFY(isNear(allFilament(m_slices["left flow"]) / allFilament(m_slices["plain"]), 1.1, 1e-3));
}

QTEST_GUILESS_MAIN(tst_SliceKeys)
#include "tst_slice_keys.moc"
