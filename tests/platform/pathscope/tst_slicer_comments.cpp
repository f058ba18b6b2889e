#include "moves_in_words.h"

#include <pathscope/thumbnail_comments.h>

#include <QtTest>

using namespace pathscope;

Q_DECLARE_METATYPE(std::string)
Q_DECLARE_METATYPE(pathscope::Feature)

namespace {

/** The style of the last move. */
MoveStyle lastStyle(const Toolpaths& paths)
{
    return paths.styles.at(paths.endOf(paths.segmentCount - 1).style());
}

} // namespace

class tst_SlicerComments : public QObject
{
    Q_OBJECT

private slots:
    void knowsFeatures_data();
    void knowsFeatures();
    void knowsWidthsAndHeights_data();
    void knowsWidthsAndHeights();
    void travelsHaveNoWidthNorFeature();
    void followsTheFilamentWhereNoWidthIsTold();
    void roundingMakesNoStyles();
    void readsEstimates_data();
    void readsEstimates();
    void readsTheGenerator_data();
    void readsTheGenerator();
    void readsThumbnails();
    void leavesOutBrokenThumbnails_data();
    void leavesOutBrokenThumbnails();
    void decodesBase64_data();
    void decodesBase64();
};

void tst_SlicerComments::knowsFeatures_data()
{
    QTest::addColumn<Feature>("feature");

    const auto rows = [](Feature feature, const std::vector<const char*>& comments) {
        for (const char* const comment : comments)
            QTest::newRow(comment) << feature;
    };
    rows(Feature::OuterWall,
         {";TYPE:External perimeter", ";TYPE:WALL-OUTER", "; FEATURE: Outer wall",
          "; feature outer perimeter", ";TYPE:Thin wall"});
    rows(Feature::InnerWall, {";TYPE:Perimeter", ";TYPE:WALL-INNER", "; FEATURE: Inner wall",
                              "; feature inner perimeter", ";TYPE:Internal perimeter"});
    rows(Feature::Overhang, {";TYPE:Overhang perimeter", "; FEATURE: Overhang wall"});
    rows(Feature::SparseInfill,
         {";TYPE:Internal infill", ";TYPE:FILL", "; FEATURE: Sparse infill", "; feature infill"});
    rows(Feature::SolidInfill,
         {";TYPE:Solid infill", ";TYPE:SKIN", "; FEATURE: Internal solid infill",
          "; FEATURE: Bottom surface", "; feature solid layer", ";TYPE:SOLID-FILL"});
    rows(Feature::TopSurface, {";TYPE:Top solid infill", "; FEATURE: Top surface"});
    rows(Feature::Ironing, {";TYPE:Ironing", "; FEATURE: Ironing"});
    rows(Feature::Bridge, {";TYPE:Bridge infill", "; FEATURE: Bridge", "; feature bridge"});
    rows(Feature::GapFill, {";TYPE:Gap fill", "; FEATURE: Gap infill", "; feature gap fill"});
    rows(Feature::Skirt,
         {";TYPE:Skirt/Brim", ";TYPE:SKIRT", "; FEATURE: Skirt", "; feature skirt"});
    rows(Feature::Brim, {";TYPE:Brim", "; FEATURE: Brim"});
    rows(Feature::Raft, {"; feature raft", ";TYPE:RAFT"});
    rows(Feature::Support,
         {";TYPE:Support material", ";TYPE:SUPPORT", "; FEATURE: Support", "; feature support"});
    rows(Feature::SupportInterface, {";TYPE:Support material interface", ";TYPE:SUPPORT-INTERFACE",
                                     "; FEATURE: Support interface", "; feature dense support"});
    rows(Feature::PrimeTower, {";TYPE:Wipe tower", ";TYPE:PRIME-TOWER", "; FEATURE: Prime tower",
                               "; feature prime pillar"});
    rows(Feature::Custom, {";TYPE:Custom", "; FEATURE: Custom"});
    rows(Feature::Unknown, {";TYPE:Frills", ";TYPE:", "; nothing", ";TYPES:Custom",
                            ";TYPE:a name that is much longer than any slicer's"});
}

void tst_SlicerComments::knowsFeatures()
{
    QFETCH(Feature, feature);

    const auto paths = parseGCode(std::string(QTest::currentDataTag()) + "\nG1 X1 E1\n");

    QCOMPARE(lastStyle(*paths).feature, feature);
}

void tst_SlicerComments::knowsWidthsAndHeights_data()
{
    QTest::addColumn<std::string>("comments");
    QTest::addColumn<double>("width");
    QTest::addColumn<double>("height");

    const auto row = [](const char* name, const char* comments, double width, double height) {
        QTest::newRow(name) << std::string(comments) << width << height;
    };
    row("PrusaSlicer", ";WIDTH:0.45\n;HEIGHT:0.2\n", 0.45, 0.2);
    row("BambuStudio", "; LINE_WIDTH: 0.42\n; LAYER_HEIGHT: 0.28\n", 0.42, 0.28);
    row("Simplify3D", "; tool H0.2500 W0.4800\n", 0.48, 0.25);
    row("rounded to a thousandth", ";WIDTH:0.449999\n;HEIGHT:0.200001\n", 0.45, 0.2);
    row("the last one", ";WIDTH:0.4\n;HEIGHT:0.2\n;WIDTH:0.6\n;HEIGHT:0.3\n", 0.6, 0.3);
    row("numbers that are none", ";WIDTH:0.4\n;HEIGHT:0.2\n;WIDTH:nan\n;HEIGHT:\n;WIDTH:-1\n", 0.4,
        0.2);
    row("too large", ";WIDTH:0.4\n;HEIGHT:0.2\n;WIDTH:101\n;HEIGHT:1e3\n;HEIGHT:0.2\n", 0.4, 0.2);
}

void tst_SlicerComments::knowsWidthsAndHeights()
{
    QFETCH(std::string, comments);
    QFETCH(double, width);
    QFETCH(double, height);

    const auto paths = parseGCode(comments + "G1 X1 E1\n");

    QCOMPARE(lastStyle(*paths).width, float(width));
    QCOMPARE(lastStyle(*paths).height, float(height));
}

void tst_SlicerComments::travelsHaveNoWidthNorFeature()
{
    const auto paths = parseGCode(";TYPE:Perimeter\n;WIDTH:0.4\n;HEIGHT:0.2\nG1 X1 E1\nG1 X2\n");

    const MoveStyle style = lastStyle(*paths);
    QCOMPARE(style.width, 0.0F);
    QCOMPARE(style.height, 0.0F);
    QCOMPARE(style.feature, Feature::Unknown);
}

void tst_SlicerComments::followsTheFilamentWhereNoWidthIsTold()
{
    // A line 0.45 mm wide and 0.2 mm high: a rectangle with half a circle at either side.
    const double area = 0.25 * 0.2 + 3.14159265358979 * 0.1 * 0.1;
    const double filament = area * 10 / (3.14159265358979 / 4 * 1.75 * 1.75);
    const std::string move = "G1 X10 E" + std::to_string(filament) + "\n";

    QCOMPARE(lastStyle(*parseGCode("G1 Z.2\n" + move)).width, 0.45F);
    ParseOptions thick;
    thick.filamentDiameter = 2.85;
    QVERIFY(lastStyle(*parseGCode("G1 Z.2\n" + move, thick)).width > 1.0F);
    QCOMPARE(lastStyle(*parseGCode("G1 Z.2\nG1 X1 E1000\n")).width, 5.0F);
    QCOMPARE(lastStyle(*parseGCode("G1 Z.2\nG1 X1000 E.0001\n")).width, 0.05F);
}

void tst_SlicerComments::roundingMakesNoStyles()
{
    std::string program = "M83\nG1 Z.2\n";
    for (int i = 0; i < 1000; ++i)
        program += "G1 X" + std::to_string(i % 2) + " E0.0332" + std::to_string(i % 10) + "\n";

    QCOMPARE(parseGCode(program)->styles.size(), std::size_t(2));
}

void tst_SlicerComments::readsEstimates_data()
{
    QTest::addColumn<std::string>("comments");
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QVector<double>>("filament");

    const auto row = [](const char* name, const char* comments, double seconds,
                        const QVector<double>& filament) {
        QTest::newRow(name) << std::string(comments) << seconds << filament;
    };
    row("none", "; filament used [g] = 4\n; estimated printing time (silent mode) = 9m\n", -1, {});
    row("PrusaSlicer",
        "; filament used [mm] = 7458.27, 11857.80\n; filament used [cm3] = 17.94, 28.52\n"
        "; estimated printing time (normal mode) = 1h 2m 3s\n",
        3723, {7458.27, 11857.80});
    row("more than a day", "; estimated printing time (normal mode) = 2d 1h 0m 5s", 176405, {});
    row("older", "; estimated printing time = 45s\n", 45, {});
    row("Cura", ";TIME:6666\n;Filament used: 1.25m, 0m\n", 6666, {1250, 0});
    row("millimetres behind", ";Filament used: 1250.5mm\n", -1, {1250.5});
    row("BambuStudio",
        "; model printing time: 10m 1s; total estimated time: 15m 2s\n"
        "; total filament length [mm] : 100.5,20\n",
        902, {100.5, 20});
    row("Simplify3D",
        ";   Build time: 1 hours 23 minutes\n;   Filament length: 1234.5 mm (1.23 m)\n", 4980,
        {1234.5});
    row("numbers that are none",
        "; filament used [mm] = nan\n; estimated printing time (normal mode) = soon\n;TIME:-5\n",
        -1, {});
}

void tst_SlicerComments::readsEstimates()
{
    QFETCH(std::string, comments);

    const SlicerEstimates estimates = parseGCode(comments)->estimates;

    QTEST(estimates.seconds, "seconds");
    QTEST(QVector<double>(estimates.filament.begin(), estimates.filament.end()), "filament");
}

void tst_SlicerComments::readsTheGenerator_data()
{
    QTest::addColumn<std::string>("comment");
    QTest::addColumn<std::string>("generator");

    const auto row = [](const char* comment, const char* generator) {
        QTest::newRow(comment) << std::string(comment) << std::string(generator);
    };
    row("; generated by PrusaSlicer 2.5.0 on 2026-11-21 at 07:24:54 UTC", "PrusaSlicer 2.5.0");
    row("; generated by OrcaSlicer 2.0.0 on 2026-01-01", "OrcaSlicer 2.0.0");
    row(";Generated with Cura_SteamEngine 5.2.1", "Cura_SteamEngine 5.2.1");
    row("; G-Code generated by Simplify3D(R) Version 4.1.2", "Simplify3D(R) Version 4.1.2");
    row(";Sliced by ideaMaker 4.0.1", "ideaMaker 4.0.1");
    row("; BambuStudio 01.08.00.57", "BambuStudio 01.08.00.57");
    row("; a file", "");
    row("; generated by one on monday\n; generated by two on sunday", "one");
}

void tst_SlicerComments::readsTheGenerator()
{
    QFETCH(std::string, comment);
    QFETCH(std::string, generator);

    QCOMPARE(parseGCode(comment + "\r\nG1 X1\r\n")->generator, generator);
}

void tst_SlicerComments::readsThumbnails()
{
    const auto paths = parseGCode("; thumbnail begin 16x12 16\n; aGVsbG8s\n; IHdvcmxk\n"
                                  "; thumbnail end\n;\n;\n"
                                  "; thumbnail_JPG begin 220x124 4\n; AAEC\n; thumbnail_JPG end\n"
                                  ";\n; thumbnail_QOI begin 1x1 4\n; /w==\n; thumbnail_QOI end\n"
                                  ";TYPE:Custom\nG1 X1 E1\n");

    QCOMPARE(paths->thumbnails.size(), std::size_t(3));
    QCOMPARE(paths->thumbnails[0].width, 16);
    QCOMPARE(paths->thumbnails[0].height, 12);
    QCOMPARE(paths->thumbnails[0].format, std::string("PNG"));
    QCOMPARE(paths->thumbnails[0].bytes, std::string("hello, world"));
    QCOMPARE(paths->thumbnails[1].format, std::string("JPG"));
    QCOMPARE(paths->thumbnails[1].bytes, std::string("\0\1\2", 3));
    QCOMPARE(paths->thumbnails[2].format, std::string("QOI"));
    QCOMPARE(paths->thumbnails[2].bytes, std::string("\xff"));
    QCOMPARE(lastStyle(*paths).feature, Feature::Custom);
}

void tst_SlicerComments::leavesOutBrokenThumbnails_data()
{
    QTest::addColumn<std::string>("comments");

    const auto row = [](const char* name, const char* comments) {
        QTest::newRow(name) << std::string(comments);
    };
    row("cut off", "; thumbnail begin 16x16 8\n; AAAA\n");
    row("empty", "; thumbnail begin 16x16 0\n; thumbnail end\n");
    row("no size", "; thumbnail begin\n; AAAA\n; thumbnail end\n");
    row("no number", "; thumbnail begin axb 8\n; AAAA\n; thumbnail end\n");
    row("size of nothing", "; thumbnail begin 0x16 8\n; AAAA\n; thumbnail end\n");
    row("negative", "; thumbnail begin -16x16 8\n; AAAA\n; thumbnail end\n");
    row("enormous", "; thumbnail begin 99999x16 8\n; AAAA\n; thumbnail end\n");
    row("beyond all numbers",
        "; thumbnail begin 16x99999999999999999999 8\n; AAAA\n; thumbnail end\n");
    row("no base64", "; thumbnail begin 16x16 8\n; A?A!\n; thumbnail end\n");
    row("only an end", "; thumbnail end\n");
    row("another begin", "; thumbnail begin 16x16 8\n; AAAA\n; thumbnail begin 8x8 8\n");
}

void tst_SlicerComments::leavesOutBrokenThumbnails()
{
    QFETCH(std::string, comments);

    const auto paths = parseGCode(comments + "G1 X1\n");

    QVERIFY(paths->thumbnails.empty());
    QCOMPARE(paths->segmentCount, std::uint64_t(1));
}

void tst_SlicerComments::decodesBase64_data()
{
    QTest::addColumn<std::string>("text");
    QTest::addColumn<std::string>("bytes");

    QTest::newRow("nothing") << std::string() << std::string();
    QTest::newRow("one byte") << std::string("YQ==") << std::string("a");
    QTest::newRow("two bytes") << std::string("YWI=") << std::string("ab");
    QTest::newRow("without padding") << std::string("YWI") << std::string("ab");
    QTest::newRow("all values") << std::string("+/9z") << std::string("\xfb\xff\x73");
    QTest::newRow("padding amid") << std::string("YQ==YQ==") << std::string();
    QTest::newRow("a blank") << std::string("YW I=") << std::string();
}

void tst_SlicerComments::decodesBase64()
{
    QFETCH(std::string, text);

    QTEST(decodeBase64(text), "bytes");
}

QTEST_APPLESS_MAIN(tst_SlicerComments)
#include "tst_slicer_comments.moc"
