#include "moves_in_words.h"

#include <QtTest>

using namespace pathscope;

Q_DECLARE_METATYPE(std::string)

namespace {

/** "0-3 z 0.2 h 0.2, ..." */
QString layersInWords(const Toolpaths& paths)
{
    QStringList layers;
    for (const Layer& layer : paths.layers)
        layers << QStringLiteral("%1-%2 z %3 h %4")
                      .arg(layer.segments.first)
                      .arg(layer.segments.end)
                      .arg(layer.z)
                      .arg(layer.height);
    return layers.join(QStringLiteral(", "));
}

} // namespace

class tst_GcodeLayers : public QObject
{
    Q_OBJECT

private slots:
    void followsTheComments_data();
    void followsTheComments();
    void findsLayersByHeight_data();
    void findsLayersByHeight();
    void coversAllSegments();
    void whatComesBeforeTheFirstMarkCountsInItsLayer();
    void givesASpiralALayerATurn();
    void timeGoesToTheLayerOfTheSegments();
    void takesAMillionLayers();
};

void tst_GcodeLayers::followsTheComments_data()
{
    QTest::addColumn<std::string>("program");
    QTest::addColumn<QString>("layers");

    const auto row = [](const char* name, const char* program, const char* layers) {
        QTest::newRow(name) << std::string(program) << QString::fromLatin1(layers);
    };
    row("PrusaSlicer",
        "G1 Z5\n;LAYER_CHANGE\n;Z:0.2\n;HEIGHT:0.2\nG1 Z.2\nG1 X1 E1\n"
        ";LAYER_CHANGE\n;Z:0.35\n;HEIGHT:0.15\nG1 Z.35\nG1 X2 E2\n",
        "0-3 z 0.2 h 0.2, 3-5 z 0.35 h 0.15");
    row("BambuStudio",
        "; CHANGE_LAYER\n; Z_HEIGHT: 0.2\n; LAYER_HEIGHT: 0.2\nG1 Z.6\nG1 Z.2\nG1 X1 E1\n"
        "; CHANGE_LAYER\n; Z_HEIGHT: 0.5\n; LAYER_HEIGHT: 0.3\nG1 X2 E2\n",
        "0-3 z 0.2 h 0.2, 3-4 z 0.5 h 0.3");
    row("Cura", ";LAYER_COUNT:2\n;LAYER:0\nG0 X5 Z.3\nG1 X1 E1\n;LAYER:1\nG0 Z0.5\nG1 X2 E2\n",
        "0-2 z 0.3 h 0.3, 2-4 z 0.5 h 0.2");
    row("Cura with a raft", ";LAYER:-2\nG1 Z.3\nG1 X1 E1\n;LAYER:-1\nG1 Z.6\nG1 X2 E2\n",
        "0-2 z 0.3 h 0.3, 2-4 z 0.6 h 0.3");
    row("Simplify3D",
        "; layer 1, Z = 0.200\n; tool H0.200 W0.480\nG1 Z.2\nG1 X1 E1\n"
        "; layer 2, Z = 0.400\nG1 Z.4\nG1 X2 E2\n; layer end\nG1 X0\n",
        "0-2 z 0.2 h 0.2, 2-5 z 0.4 h 0.2");
    row("two ways at once",
        ";LAYER_CHANGE\n;LAYER:0\n;Z:0.2\nG1 Z.2\nG1 X1 E1\n;LAYER_CHANGE\n;LAYER:1\n;Z:0.4\n"
        "G1 X2 E2\n",
        "0-2 z 0.2 h 0.2, 2-3 z 0.4 h 0.2");
    row("a second way amid a layer", ";LAYER_CHANGE\nG1 Z.2\nG1 X1 E1\n;LAYER:0\nG1 X2 E2\n",
        "0-3 z 0.2 h 0.2");
    row("what comes before the first one",
        "G1 Z.3\nG1 X100 E10\nG92 E0\nG1 Z5\n;LAYER_CHANGE\n;Z:0.2\n;HEIGHT:0.2\nG1 Z.2\n"
        "G1 X1 E1\n",
        "0-5 z 0.2 h 0.2");
    row("a hop", ";LAYER:0\nG1 Z.2\nG1 X1 E1\nG1 Z1\nG1 X5\nG1 Z.2\nG1 X2 E2\n", "0-6 z 0.2 h 0.2");
    row("marks without moves", ";LAYER:0\n;LAYER:1\n;LAYER:2\nG1 Z.2\nG1 X1 E1\n;LAYER:3\n",
        "0-2 z 0.2 h 0.2");
    row("heights within a layer",
        ";LAYER_CHANGE\n;Z:0.2\n;HEIGHT:0.2\nG1 Z.2\nG1 X1 E1\n;HEIGHT:0.4\nG1 X2 E2\n",
        "0-3 z 0.2 h 0.2");
    row("heights and tops that are none",
        ";LAYER_CHANGE\n;Z:nan\n;HEIGHT:inf\nG1 Z.2\nG1 X1 E1\n;LAYER_CHANGE\n;Z:\n;HEIGHT:-1\n"
        "G1 Z.4\nG1 X2 E2\n",
        "0-2 z 0.2 h 0.2, 2-4 z 0.4 h 0.2");
    row("objects one after the other",
        ";LAYER:0\nG1 Z.2\nG1 X1 E1\n;LAYER:1\nG1 Z.4\nG1 X2 E2\n;LAYER:0\nG1 Z.2\nG1 X3 E3\n",
        "0-2 z 0.2 h 0.2, 2-4 z 0.4 h 0.2, 4-6 z 0.2 h 0.2");
}

void tst_GcodeLayers::followsTheComments()
{
    QFETCH(std::string, program);

    const auto paths = parseGCode(program);

    QTEST(layersInWords(*paths), "layers");
    QVERIFY(paths->layersFromComments);
}

void tst_GcodeLayers::findsLayersByHeight_data()
{
    QTest::addColumn<std::string>("program");
    QTest::addColumn<QString>("layers");

    const auto row = [](const char* name, const char* program, const char* layers) {
        QTest::newRow(name) << std::string(program) << QString::fromLatin1(layers);
    };
    row("nothing", "", "");
    row("only travels", "G1 X1\nG1 Z2", "0-2 z 0 h 0");
    row("two", "G1 Z.2\nG1 X1 E1\nG1 X2 E2\nG1 Z.4\nG1 X3\nG1 X1 E3\n",
        "0-3 z 0.2 h 0.2, 3-6 z 0.4 h 0.2");
    row("a hop is none", "G1 Z.2\nG1 X1 E1\nG1 Z2\nG1 X9\nG1 Z.2\nG1 X2 E2\n", "0-6 z 0.2 h 0.2");
    row("a hop on the way up", "G1 Z.2\nG1 X1 E1\nG1 Z2\nG1 X9\nG1 Z.4\nG1 X2 E2\n",
        "0-2 z 0.2 h 0.2, 2-6 z 0.4 h 0.2");
    row("a retraction above", "G1 Z.2\nG1 X1 E1\nG1 Z2\nG1 E0\nG1 E1\nG1 Z.2\nG1 X2 E2\n",
        "0-7 z 0.2 h 0.2");
    row("rounding is none", "G1 Z.2\nG1 X1 E1\nG1 Z.2004\nG1 X2 E2\n", "0-4 z 0.2 h 0.2");
    row("down to the next object", "G1 Z.2\nG1 X1 E1\nG1 Z.4\nG1 X2 E2\nG1 Z9\nG1 Z.2\nG1 X3 E3\n",
        "0-2 z 0.2 h 0.2, 2-4 z 0.4 h 0.2, 4-7 z 0.2 h 0.2");
    row("straight on at another height", "G1 Z.2\nG1 X1 E1\nG1 X1 Z.4 E2\nG1 X2 E3\n",
        "0-2 z 0.2 h 0.2, 2-4 z 0.4 h 0.2");
    row("the first one high up", "G1 Z40\nG1 X1 E1\n", "0-2 z 40 h 0.2");
    row("a comment alike", "; layer height = 0.2\n;LAYER:x\n; layer 5\nG1 Z.2\nG1 X1 E1\n",
        "0-2 z 0.2 h 0.2");
}

void tst_GcodeLayers::findsLayersByHeight()
{
    QFETCH(std::string, program);

    const auto paths = parseGCode(program);

    QTEST(layersInWords(*paths), "layers");
    QVERIFY(!paths->layersFromComments);
}

void tst_GcodeLayers::coversAllSegments()
{
    for (const char* const mark : {"", ";LAYER_CHANGE\n", ";LAYER:1\n"}) {
        std::string program = "T1\nG1 E-1\n";
        for (int layer = 1; layer <= 50; ++layer) {
            program += "G1 E-1\n" + std::string(mark) + "G1 Z" + std::to_string(layer) + "\nT" +
                       std::to_string(layer % 2) + "\nM83\nG1 X1 E1\nG1 X0 E1\nG1 X5\nG1 E-1\n";
        }
        const auto paths = parseGCode(program + "G28 X0\n");
        QCOMPARE(paths->layers.size(), std::size_t(50));
        std::uint64_t next = 0;
        for (const Layer& layer : paths->layers) {
            QCOMPARE(layer.segments.first, next);
            QVERIFY(layer.segments.end > next);
            next = layer.segments.end;
        }
        QCOMPARE(next, paths->segmentCount);
        double seconds = 0;
        double millimetres = 0;
        for (const Layer& layer : paths->layers) {
            seconds += layer.amount.seconds;
            millimetres += layer.amount.millimetres;
        }
        QCOMPARE(seconds, paths->total.seconds);
        QCOMPARE(millimetres, paths->total.millimetres);
        for (std::uint64_t i = 0; i < paths->segmentCount; ++i) {
            const SegmentRange& range = paths->layers[paths->layerOf(i)].segments;
            QVERIFY(range.first <= i && i < range.end);
        }
        QCOMPARE(paths->layerOf(paths->segmentCount), paths->layers.size());
    }
}

void tst_GcodeLayers::whatComesBeforeTheFirstMarkCountsInItsLayer()
{
    const auto paths = parseGCode("G1 F60\nG1 Z1\nG1 X10 E1\nG1 X0\nG1 E0\n;LAYER:0\nG1 X5 E1\n"
                                  ";LAYER:1\nG1 X0 E2\n");

    QCOMPARE(paths->layers.size(), std::size_t(2));
    QCOMPARE(paths->layers[0].amount.seconds, 1.0 + 10 + 10 + 1 + 5);
    QCOMPARE(paths->layers[0].amount.filament, 2.0);
    QCOMPARE(paths->layers[1].amount.seconds, 5.0);
}

void tst_GcodeLayers::givesASpiralALayerATurn()
{
    std::string program = "M83\nG1 Z.2\nG1 X10 E1\nG1 Y10 E1\nG1 Z.4\nG1 X0 E1\n";
    // Ten turns, each 0.2 mm high, of a hundred moves.
    for (int i = 1; i <= 1000; ++i)
        program +=
            "G1 X" + std::to_string(i % 100) + " Z" + std::to_string(0.4 + i * 0.002) + " E.1\n";

    const auto paths = parseGCode(program);

    QCOMPARE(paths->layers.size(), std::size_t(12));
    for (std::size_t i = 2; i < 11; ++i) {
        QVERIFY(std::abs(double(paths->layers[i].height) - 0.2) < 0.01);
        QVERIFY(paths->layers[i].segments.count() >= 97);
    }
}

void tst_GcodeLayers::timeGoesToTheLayerOfTheSegments()
{
    const std::string first = "G1 F60\nG1 Z1\nG1 X1 E1\nG1 X3\nG1 X4 E2\n";
    const std::string second = "G1 E1\nG1 Z2\nG1 X0\nG1 X5 E3\nG1 X0\n";

    const auto byHeight = parseGCode(first + second);
    const auto marked = parseGCode(";LAYER:0\n" + first + ";LAYER:1\n" + second);

    for (const auto& paths : {byHeight, marked}) {
        QCOMPARE(paths->layers.size(), std::size_t(2));
        QCOMPARE(paths->layers[0].segments.end, std::uint64_t(4));
        QCOMPARE(paths->layers[0].amount.seconds, 1.0 + 1 + 2 + 1);
        QCOMPARE(paths->layers[1].amount.seconds, 1.0 + 1 + 4 + 5 + 5);
        QCOMPARE(paths->layers[0].amount.filament, 2.0);
        QCOMPARE(paths->layers[1].amount.millimetres, 5.0);
    }
}

void tst_GcodeLayers::takesAMillionLayers()
{
    std::string marked = "M83\n";
    std::string byHeight = "M83\n";
    std::string empty;
    for (int i = 0; i < 1000000; ++i) {
        marked += ";LAYER:1\nG1 X" + std::to_string(i % 2) + "1E1\n";
        empty += ";LAYER:1\n";
    }
    for (int i = 0; i < 200000; ++i)
        byHeight += "G1 Z" + std::to_string(i) + "\nG1 X" + std::to_string(i % 2) + "1E1\n";

    QCOMPARE(parseGCode(marked)->layers.size(), std::size_t(1000000));
    QCOMPARE(parseGCode(byHeight)->layers.size(), std::size_t(200000));
    QCOMPARE(parseGCode(empty)->layers.size(), std::size_t(0));
}

QTEST_APPLESS_MAIN(tst_GcodeLayers)
#include "tst_gcode_layers.moc"
