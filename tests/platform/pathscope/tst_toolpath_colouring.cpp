#include "scene_world.h"

#include <QTest>

#include <cmath>
#include <limits>
#include <memory>
#include <set>

using namespace pathscope;

namespace {

std::uint32_t packedColour(const QColor& colour)
{
    return 0xff000000U | std::uint32_t(colour.blue()) << 16 | std::uint32_t(colour.green()) << 8 |
           std::uint32_t(colour.red());
}

double contrast(const QColor& a, const QColor& b)
{
    const auto luminance = [](const QColor& colour) {
        const auto linear = [](double c) {
            return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
               0.0722 * linear(colour.blueF());
    };
    const double one = luminance(a) + 0.05;
    const double other = luminance(b) + 0.05;
    return std::max(one / other, other / one);
}

const MoveStyle kInfill = {Feature::SparseInfill, 0, 0.6F, 0.2F, 80, 200, 0};

SceneSetting twoExtruders()
{
    SceneSetting setting;
    setting.dualExtrusion = true;
    setting.materials = {Orvane::PLA, Orvane::ABS};
    setting.colours = {QColor(Qt::red), QColor(Qt::blue)};
    return setting;
}

/** A square by each of three tools, in one layer. */
std::shared_ptr<const Toolpaths> threeTools()
{
    ToolpathsMaker maker;
    maker.style(kWall);
    maker.layer(0.2F);
    for (std::uint8_t tool = 0; tool < 3; ++tool) {
        MoveStyle style = kWall;
        style.tool = tool;
        maker.style(style);
        maker.square(50 + 30.0F * tool, 50, 20);
    }
    return maker.made();
}

} // namespace

class tst_ToolpathColouring : public QObject
{
    Q_OBJECT

private slots:
    void coloursOfExtrudersAreTheMaterials();
    void missingColoursAreOwnAndUnlikeTheOthers();
    void coloursOfFeaturesAreToldApart();
    void coloursReadOnLightAndDark();
    void rangesRiseInLightness();
    void coloursChangeOnlyWithModeOrPaths();
    void layerTimesColourLayers();
    void aSlowFirstLayerLeavesTheOthersTheirColours();
    void extrudersAreNamedWithTheirMaterials();
    void featuresAreNamed();
    void valuesAreSortedIntoRoundRanges_data();
    void valuesAreSortedIntoRoundRanges();
    void valuesOfTheSameRangeHaveTheSameColour();
    void whatIsNotToldHasAnEntryOfItsOwn();
    void amountsAddUp();
    void timesAreScaledToTheSlicersEstimate();
    void travelsAndRetractionsAreListedWhenShown();
    void aLegendOfNothingIsEmpty();
    void totalsTellThePrintFromItsSkirt();
    void totalsTellFilamentAndWeight();
    void totalsPreferTheSlicersTime();
};

void tst_ToolpathColouring::coloursOfExtrudersAreTheMaterials()
{
    World world(twoExtruders());
    world.model.setColourMode(ToolpathViewModel::ByExtruder);
    world.scene.setToolpaths(threeTools());

    const Toolpaths& paths = *world.scene.toolpaths();
    const auto& colours = world.scene.styleColours();
    QCOMPARE(colours.size(), paths.styles.size());
    int checked = 0;
    for (std::size_t i = 0; i < colours.size(); ++i) {
        QCOMPARE(colours[i] >> 24, 0xffU);
        if (paths.styles[i].width > 0 && paths.styles[i].tool < 2 && ++checked > 0)
            QCOMPARE(colours[i], paths.styles[i].tool == 0 ? 0xff0000ffU : 0xffff0000U);
        if (!(paths.styles[i].width > 0))
            QCOMPARE(colours[i], ToolpathScene::kindColour(MoveKind::Travel));
    }
    QCOMPARE(checked, 3);
}

void tst_ToolpathColouring::missingColoursAreOwnAndUnlikeTheOthers()
{
    SceneSetting setting;
    setting.colours = {QColor(), QColor(232, 133, 12), QColor(0, 0, 0, 0), QColor(1, 2, 3, 128)};
    World world(setting);
    world.model.setColourMode(ToolpathViewModel::ByExtruder);
    ToolpathsMaker maker;
    maker.style(kWall);
    maker.layer(0.2F);
    for (std::uint8_t tool = 0; tool < kToolCount; ++tool) {
        MoveStyle style = kWall;
        style.tool = tool;
        maker.style(style);
        maker.square(50, 50, 20);
    }
    world.scene.setToolpaths(maker.made());

    const auto legend = world.scene.legend();
    QCOMPARE(int(legend.size()), kToolCount);
    QCOMPARE(legend[1].colour, QColor(232, 133, 12));
    QCOMPARE(legend[3].colour, QColor(1, 2, 3));
    std::set<QRgb> different;
    for (const LegendEntry& entry : legend) {
        QCOMPARE(entry.colour.alpha(), 255);
        different.insert(entry.colour.rgb());
    }
    QCOMPARE(int(different.size()), kToolCount);
    for (const std::size_t own : {0U, 2U, 4U}) {
        QVERIFY2(legend[own].colour.saturation() > 60, "No black in place of what is not seen");
        QVERIFY(std::abs(legend[own].colour.hue() - legend[1].colour.hue()) > 15);
    }
}

void tst_ToolpathColouring::coloursOfFeaturesAreToldApart()
{
    World world;
    ToolpathsMaker maker;
    maker.style(kWall);
    maker.layer(0.2F);
    for (int i = 0; i < kFeatureCount; ++i) {
        MoveStyle style = kWall;
        style.feature = static_cast<Feature>(i);
        maker.style(style);
        maker.square(50, 50, 20);
    }
    world.scene.setToolpaths(maker.made());

    const auto legend = world.scene.legend();
    QCOMPARE(int(legend.size()), kFeatureCount);
    for (std::size_t i = 0; i < legend.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const QColor a = legend[i].colour;
            const QColor b = legend[j].colour;
            const int difference = std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
                                   std::abs(a.blue() - b.blue());
            QVERIFY2(difference > 50,
                     qPrintable(legend[i].name + QStringLiteral(" and ") + legend[j].name));
        }
    }
}

void tst_ToolpathColouring::coloursReadOnLightAndDark()
{
    World world;
    ToolpathsMaker maker;
    maker.style(kWall);
    maker.layer(0.2F);
    for (int i = 0; i < kFeatureCount; ++i) {
        MoveStyle style = kWall;
        style.feature = static_cast<Feature>(i);
        style.tool = std::uint8_t(i % kToolCount);
        style.speed = 20.0F * float(i);
        maker.style(style);
        maker.square(50, 50, 20);
    }
    world.scene.setToolpaths(maker.made());
    world.model.setTravelsShown(true);

    for (const auto mode : {ToolpathViewModel::ByExtruder, ToolpathViewModel::ByFeature,
                            ToolpathViewModel::BySpeed}) {
        world.model.setColourMode(mode);
        for (const LegendEntry& entry : world.scene.legend()) {
            QVERIFY2(contrast(entry.colour, QColor(250, 250, 250)) > 1.3, qPrintable(entry.name));
            QVERIFY2(contrast(entry.colour, QColor(30, 32, 36)) > 1.2, qPrintable(entry.name));
        }
    }
}

void tst_ToolpathColouring::rangesRiseInLightness()
{
    World world;
    world.model.setColourMode(ToolpathViewModel::BySpeed);
    ToolpathsMaker maker;
    maker.layer(0.2F);
    for (int i = 1; i <= 8; ++i) {
        MoveStyle style = kWall;
        style.speed = 10.0F * float(i);
        maker.style(style);
        maker.square(50, 50, 20);
    }
    world.scene.setToolpaths(maker.made());

    double before = -1;
    for (const LegendEntry& entry : world.scene.legend()) {
        const double lightness = contrast(entry.colour, Qt::black);
        QVERIFY2(lightness > before * 1.1, qPrintable(entry.name));
        before = lightness;
    }
}

void tst_ToolpathColouring::coloursChangeOnlyWithModeOrPaths()
{
    World world;
    world.scene.setToolpaths(tower(10).made());
    const int revision = world.scene.colourRevision();

    world.model.layerDown();
    world.model.setShownMoves(1);
    world.model.setTravelsShown(true);
    world.model.orthoViewToggled();
    Camera camera;
    camera.orbit({10, 10});
    world.scene.setCamera(camera);
    QCOMPARE(world.scene.colourRevision(), revision);

    world.model.setColourMode(ToolpathViewModel::ByHeight);
    QVERIFY(world.scene.colourRevision() > revision);
    const int second = world.scene.colourRevision();
    world.scene.setToolpaths(tower(3).made());
    QVERIFY(world.scene.colourRevision() > second);
}

void tst_ToolpathColouring::layerTimesColourLayers()
{
    World world;
    world.model.setColourMode(ToolpathViewModel::ByLayerTime);
    ToolpathsMaker maker = tower(4);
    for (int i = 0; i < 3; ++i)
        maker.square(50, 50, 20);
    world.scene.setToolpaths(maker.made());

    QVERIFY(world.scene.styleColours().empty());
    const auto& colours = world.scene.layerColours();
    QCOMPARE(colours.size(), std::size_t(4));
    QCOMPARE(colours[1], colours[2]);
    QVERIFY(colours[1] != colours[3]);
    QCOMPARE(colours[3], packedColour(world.scene.legend().back().colour));

    world.model.setColourMode(ToolpathViewModel::ByFeature);
    QVERIFY(world.scene.layerColours().empty());
    QVERIFY(!world.scene.styleColours().empty());
}

void tst_ToolpathColouring::aSlowFirstLayerLeavesTheOthersTheirColours()
{
    World world;
    world.model.setColourMode(ToolpathViewModel::ByLayerTime);
    auto paths = std::make_shared<Toolpaths>();
    for (int i = 0; i < 100; ++i) {
        Layer layer;
        layer.amount.seconds = i == 0 ? 5000 : 20 + i % 40;
        paths->layers.push_back(layer);
    }
    world.scene.setToolpaths(paths);

    QCOMPARE(world.names(), lines("20 to 30 s|30 to 40 s|40 to 50 s|50 to 60 s|more than 60 s"));
    QCOMPARE(world.scene.layerColours()[0], packedColour(world.scene.legend().back().colour));
}

void tst_ToolpathColouring::extrudersAreNamedWithTheirMaterials()
{
    SceneSetting setting = twoExtruders();
    setting.materials = {Orvane::PLA, Orvane::UnknownMaterial};
    World world(setting);
    world.model.setColourMode(ToolpathViewModel::ByExtruder);
    world.scene.setToolpaths(threeTools());

    QCOMPARE(world.names(), lines("Extruder 1: Orvane PLA|Extruder 2|Extruder 3"));
}

void tst_ToolpathColouring::featuresAreNamed()
{
    World world;
    ToolpathsMaker maker;
    maker.layer(0.2F);
    for (int i = kFeatureCount - 1; i >= 0; --i) {
        MoveStyle style = kWall;
        style.feature = static_cast<Feature>(i);
        maker.style(style);
        maker.square(50, 50, 20);
    }
    world.scene.setToolpaths(maker.made());

    QCOMPARE(world.names(),
             lines("Other|Outer wall|Inner wall|Overhang|Sparse infill|Solid infill|Top surface|"
                   "Ironing|Bridge|Gap fill|Skirt|Brim|Raft|Support|Support interface|"
                   "Prime tower|Custom"));
}

void tst_ToolpathColouring::valuesAreSortedIntoRoundRanges_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QList<double>>("values");
    QTest::addColumn<QStringList>("names");

    const auto row = [](const char* name, ToolpathViewModel::ColourMode mode,
                        const QList<double>& values, const char* names) {
        QTest::newRow(name) << int(mode) << values << lines(names);
    };
    QList<double> many;
    for (int i = 20; i <= 180; i += 7)
        many.append(i);
    QList<double> heights;
    for (int i = 0; i < 20; ++i)
        heights.append(0.05 + 0.01 * i);

    row("one value", ToolpathViewModel::BySpeed, {40}, "40 mm/s");
    row("one value twice, but for rounding", ToolpathViewModel::BySpeed, {40, 40.3}, "40 mm/s");
    row("few values", ToolpathViewModel::BySpeed, {60, 20, 40}, "20 mm/s|40 mm/s|60 mm/s");
    row("eight values", ToolpathViewModel::BySpeed, {1, 2, 3, 4, 5, 6, 7, 800},
        "1 mm/s|2 mm/s|3 mm/s|4 mm/s|5 mm/s|6 mm/s|7 mm/s|800 mm/s");
    row("many values", ToolpathViewModel::BySpeed, many,
        "20 to 40 mm/s|40 to 60 mm/s|60 to 80 mm/s|80 to 100 mm/s|100 to 120 mm/s|"
        "120 to 140 mm/s|140 to 160 mm/s|160 to 180 mm/s");
    row("nine values", ToolpathViewModel::BySpeed, {1, 2, 3, 4, 5, 6, 7, 8, 10},
        "0 to 2 mm/s|2 to 4 mm/s|4 to 6 mm/s|6 to 8 mm/s|8 to 10 mm/s");
    row("ranges without any value", ToolpathViewModel::BySpeed,
        {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 791}, "0 to 100 mm/s|700 to 800 mm/s");
    row("heights", ToolpathViewModel::ByHeight, {0.2, 0.3, 0.15}, "0.15 mm|0.2 mm|0.3 mm");
    row("many heights", ToolpathViewModel::ByHeight, heights,
        "0.05 to 0.1 mm|0.1 to 0.15 mm|0.15 to 0.2 mm|0.2 to 0.25 mm");
    row("widths", ToolpathViewModel::ByWidth, {0.4, 0.449999, 1}, "0.4 mm|0.45 mm|1 mm");
    row("temperatures", ToolpathViewModel::ByTemperature, {210, 200},
        "200 \302\260C|210 \302\260C");
    row("numbers beyond all sense", ToolpathViewModel::BySpeed,
        {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(), 40},
        "40 mm/s|Not told");
}

void tst_ToolpathColouring::valuesAreSortedIntoRoundRanges()
{
    QFETCH(int, mode);
    QFETCH(QList<double>, values);
    QFETCH(QStringList, names);
    World world;
    ToolpathsMaker maker;
    maker.layer(0.2F);
    for (const double value : values) {
        MoveStyle style = kWall;
        switch (mode) {
        case ToolpathViewModel::ByHeight:
            style.height = float(value);
            break;
        case ToolpathViewModel::ByWidth:
            style.width = float(value);
            break;
        case ToolpathViewModel::ByTemperature:
            style.celsius = float(value);
            break;
        default:
            style.speed = float(value);
            break;
        }
        maker.style(style);
        maker.square(50, 50, 20);
    }
    world.model.setColourMode(static_cast<ToolpathViewModel::ColourMode>(mode));
    world.scene.setToolpaths(maker.made());

    QCOMPARE(world.names(), names);
}

void tst_ToolpathColouring::valuesOfTheSameRangeHaveTheSameColour()
{
    World world;
    world.model.setColourMode(ToolpathViewModel::BySpeed);
    ToolpathsMaker maker;
    maker.layer(0.2F);
    for (const float speed : {10.0F, 12.0F, 14.0F, 16.0F, 18.0F, 22.0F, 33.0F, 44.0F, 55.0F}) {
        MoveStyle style = kWall;
        style.speed = speed;
        maker.style(style);
        maker.square(50, 50, 20);
    }
    world.scene.setToolpaths(maker.made());

    const auto legend = world.scene.legend();
    QCOMPARE(legend[0].name, QStringLiteral("10 to 20 mm/s"));
    const Toolpaths& paths = *world.scene.toolpaths();
    std::set<std::uint32_t> slow;
    for (std::size_t i = 0; i < paths.styles.size(); ++i) {
        if (paths.styles[i].width > 0 && paths.styles[i].speed < 20)
            slow.insert(world.scene.styleColours()[i]);
    }
    QCOMPARE(slow, std::set<std::uint32_t>{packedColour(legend[0].colour)});
}

void tst_ToolpathColouring::whatIsNotToldHasAnEntryOfItsOwn()
{
    World world;
    world.model.setColourMode(ToolpathViewModel::ByTemperature);
    ToolpathsMaker maker;
    maker.layer(0.2F);
    for (const float celsius : {0.0F, 205.0F}) {
        MoveStyle style = kWall;
        style.celsius = celsius;
        maker.style(style);
        maker.square(50, 50, 20);
    }
    world.scene.setToolpaths(maker.made());

    QCOMPARE(world.names(), lines("205 \302\260C|Not told"));
}

void tst_ToolpathColouring::amountsAddUp()
{
    World world;
    ToolpathsMaker maker = tower(5);
    maker.style(kInfill);
    maker.square(50, 50, 10);
    world.scene.setToolpaths(maker.made());

    const auto legend = world.scene.legend();
    QCOMPARE(world.names(), lines("Outer wall|Sparse infill"));
    QCOMPARE(legend[0].amount.millimetres, 5 * 80.0);
    QCOMPARE(legend[0].amount.seconds, 5 * 80 / 40.0);
    QCOMPARE(legend[0].amount.filament, 5 * 80 * ToolpathsMaker::kFilamentAMillimetre);
    QCOMPARE(legend[1].amount.millimetres, 40.0);
    QCOMPARE(legend[1].amount.seconds, 0.5);
    QVERIFY(qFuzzyCompare(legend[0].share, 10 / 10.5));
    QVERIFY(qFuzzyCompare(legend[0].share + legend[1].share, 1.0));
}

void tst_ToolpathColouring::timesAreScaledToTheSlicersEstimate()
{
    World world;
    ToolpathsMaker maker = tower(5);
    maker.paths().estimates.seconds = 3 * maker.paths().total.seconds;
    world.scene.setToolpaths(maker.made());
    world.model.setTravelsShown(true);
    const double estimated = maker.paths().estimates.seconds;

    for (int mode = 0; mode < ToolpathViewModel::kColourModeCount; ++mode) {
        world.model.setColourMode(static_cast<ToolpathViewModel::ColourMode>(mode));
        double seconds = 0;
        double share = 0;
        for (const LegendEntry& entry : world.scene.legend()) {
            seconds += entry.amount.seconds;
            share += entry.share;
        }
        QVERIFY2(qFuzzyCompare(seconds, estimated), qPrintable(QString::number(seconds)));
        QVERIFY(qFuzzyCompare(share, 1.0));
    }
}

void tst_ToolpathColouring::travelsAndRetractionsAreListedWhenShown()
{
    World world;
    ToolpathsMaker maker = tower(2);
    maker.retract();
    world.scene.setToolpaths(maker.made());
    QCOMPARE(world.names(), lines("Outer wall"));

    world.model.setTravelsShown(true);
    QCOMPARE(world.names(), lines("Outer wall|Travels"));
    QVERIFY(world.scene.legend().back().amount.seconds > 0);
    QCOMPARE(world.scene.legend().back().amount.filament, 0.0);

    world.model.setRetractionsShown(true);
    QCOMPARE(world.names(), lines("Outer wall|Travels|Retractions"));

    world.model.setTravelsShown(false);
    QCOMPARE(world.names(), lines("Outer wall|Retractions"));
}

void tst_ToolpathColouring::aLegendOfNothingIsEmpty()
{
    World world;
    world.model.setTravelsShown(true);
    world.model.setRetractionsShown(true);
    for (int mode = 0; mode < ToolpathViewModel::kColourModeCount; ++mode) {
        world.model.setColourMode(static_cast<ToolpathViewModel::ColourMode>(mode));
        QCOMPARE(world.names(), QStringList());
    }
}

void tst_ToolpathColouring::totalsTellThePrintFromItsSkirt()
{
    World world;
    ToolpathsMaker maker;
    maker.style({Feature::Skirt, 0, 0.4F, 0.2F, 40});
    maker.layer(0.2F);
    maker.square(50, 50, 60);
    maker.style(kWall);
    maker.square(50, 50, 20);
    maker.style({Feature::Support, 0, 0.4F, 0.2F, 40});
    maker.square(50, 50, 40);
    maker.style(kWall);
    maker.layer(0.4F);
    maker.square(50, 50, 10);
    world.scene.setToolpaths(maker.made());

    const Totals totals = world.scene.totals();
    QCOMPARE(totals.layers, 2);
    QVERIFY2(std::abs(totals.width - 20.4) < 1e-4, qPrintable(QString::number(totals.width)));
    QVERIFY(std::abs(totals.depth - 20.4) < 1e-4);
    QVERIFY(std::abs(totals.height - 0.4) < 1e-4);

    // As long as it is read, looking at all moves again and again would take too long.
    world.scene.setToolpaths(nullptr);
    world.scene.setToolpaths(maker.made(false));
    QCOMPARE(world.scene.totals().width, 60.0);
}

void tst_ToolpathColouring::totalsTellFilamentAndWeight()
{
    SceneSetting setting = twoExtruders();
    setting.materials = {Orvane::PLA, Orvane::UnknownMaterial};
    World world(setting);
    auto paths = std::make_shared<Toolpaths>();
    paths->toolAmounts[0].filament = 1000;
    paths->toolAmounts[1].filament = 250;
    world.scene.setToolpaths(paths);

    const auto tools = world.scene.totals().tools;
    QCOMPARE(tools.size(), std::size_t(2));
    QCOMPARE(tools[0].name, QStringLiteral("Extruder 1: Orvane PLA"));
    QCOMPARE(tools[0].colour, QColor(Qt::red));
    QCOMPARE(tools[0].millimetres, 1000.0);
    // A metre of 1.75 mm PLA is known to weigh just under 3 g.
    QVERIFY2(std::abs(tools[0].grams - 2.98) < 0.01, qPrintable(QString::number(tools[0].grams)));
    QCOMPARE(tools[1].name, QStringLiteral("Extruder 2"));
    QCOMPARE(tools[1].millimetres, 250.0);
    QVERIFY(tools[1].grams < 0);
}

void tst_ToolpathColouring::totalsPreferTheSlicersTime()
{
    World world;
    ToolpathsMaker maker = tower(1);
    world.scene.setToolpaths(maker.made());
    QCOMPARE(world.scene.totals().seconds, maker.paths().total.seconds);
    QVERIFY(!world.scene.totals().secondsFromSlicer);

    maker.paths().estimates.seconds = 4711;
    world.scene.setToolpaths(maker.made());
    QCOMPARE(world.scene.totals().seconds, 4711.0);
    QVERIFY(world.scene.totals().secondsFromSlicer);
}

QTEST_GUILESS_MAIN(tst_ToolpathColouring)
#include "tst_toolpath_colouring.moc"
