#include "pathscope/coarse_paths.h"
#include "toolpaths_maker.h"

#include <QTest>

using namespace pathscope;

namespace {

constexpr std::uint64_t kAll = ~std::uint64_t(0);

/** Round walls of so many sides, 40 mm wide, with a line of infill in each layer. */
std::shared_ptr<const Toolpaths> cylinder(int layers, int sides)
{
    ToolpathsMaker maker;
    for (int layer = 0; layer < layers; ++layer) {
        maker.layer(0.2F * float(layer + 1));
        maker.style({Feature::OuterWall, 0, 0.4F, 0.2F, 50});
        maker.travelTo(70, 50);
        for (int side = 1; side <= sides; ++side) {
            const double angle = 2 * M_PI * side / sides;
            maker.extrudeTo(50 + 20 * float(std::cos(angle)), 50 + 20 * float(std::sin(angle)));
        }
        maker.style({Feature::SparseInfill, 0, 0.4F, 0.2F, 50});
        maker.travelTo(40, 50);
        maker.extrudeTo(60, 50);
    }
    return maker.made();
}

CoarsePaths coarse(const Toolpaths& paths, std::size_t maxPoints)
{
    CoarsePaths result(maxPoints);
    result.append(paths, paths.layers.size(), kAll);
    return result;
}

int extrusions(const CoarsePaths& paths)
{
    int count = 0;
    for (const PathPoint& point : paths.points())
        count += point.kind() == MoveKind::Extrude ? 1 : 0;
    return count;
}

} // namespace

class tst_CoarsePaths : public QObject
{
    Q_OBJECT

private slots:
    void hasNothingAtFirst();
    void keepsWhatIsSeenFromOutside();
    void straightensWithinTheTolerance();
    void keepsTheCornersOfASquare();
    void thinsItselfOut();
    void keepsTheHighestLayerOfEachGroup();
    void growsAsTheFileDoes();
    void aPartIsOfWholeLayers();
    void aLayerLargerThanAllIsKept();
    void startsAnew();
};

void tst_CoarsePaths::hasNothingAtFirst()
{
    CoarsePaths paths;

    QCOMPARE(paths.stride(), std::size_t(1));
    QVERIFY(paths.points().empty());
    QVERIFY(paths.part(0, 100).segments.isEmpty());
    QCOMPARE(paths.part(0, 100).lastLayer, -1L);
    paths.append(Toolpaths(), 0, kAll);
    QVERIFY(paths.points().empty());
}

void tst_CoarsePaths::keepsWhatIsSeenFromOutside()
{
    ToolpathsMaker maker;
    maker.layer(0.2F);
    for (int feature = 0; feature < kFeatureCount; ++feature) {
        maker.style({Feature(feature), 0, 0.4F, 0.2F, 50});
        maker.travelTo(0, float(feature));
        maker.extrudeTo(10, float(feature));
    }

    const CoarsePaths paths = coarse(*maker.made(), 1000);

    QCOMPARE(extrusions(paths), kFeatureCount - 5);
    for (const PathPoint& point : paths.points()) {
        const int feature = int(point.y);
        QVERIFY2(feature != int(Feature::SparseInfill) && feature != int(Feature::InnerWall),
                 qPrintable(QString::number(feature)));
    }
}

void tst_CoarsePaths::straightensWithinTheTolerance()
{
    const auto paths = cylinder(1, 2000);
    const CoarsePaths few = coarse(*paths, 100'000);

    QVERIFY2(few.points().size() < 400, qPrintable(QString::number(few.points().size())));
    for (std::size_t i = 1; i < few.points().size(); ++i) {
        const PathPoint& from = few.points()[i - 1];
        const PathPoint& to = few.points()[i];
        if (to.kind() != MoveKind::Extrude)
            continue;
        const double x = (from.x + to.x) / 2 - 50;
        const double y = (from.y + to.y) / 2 - 50;
        QVERIFY(std::abs(std::hypot(x, y) - 20) < 0.1);
    }
}

void tst_CoarsePaths::keepsTheCornersOfASquare()
{
    ToolpathsMaker maker;
    maker.layer(0.2F);
    maker.style({Feature::OuterWall, 0, 0.4F, 0.2F, 50});
    maker.square(50, 50, 20);

    const CoarsePaths paths = coarse(*maker.made(), 1000);

    QCOMPARE(paths.points().size(), std::size_t(5));
    QCOMPARE(paths.points()[0].kind(), MoveKind::Travel);
    QCOMPARE(paths.points()[2].x, 60.0F);
    QCOMPARE(paths.points()[2].y, 60.0F);
}

void tst_CoarsePaths::thinsItselfOut()
{
    const auto paths = cylinder(1000, 100);

    const CoarsePaths few = coarse(*paths, 2000);

    QVERIFY(few.points().size() <= 2000);
    QVERIFY(few.points().size() > 500);
    QVERIFY(few.stride() > 8);
    QVERIFY(few.revision() > 0);
}

void tst_CoarsePaths::keepsTheHighestLayerOfEachGroup()
{
    const auto paths = cylinder(64, 50);

    const CoarsePaths few = coarse(*paths, 500);

    QVERIFY(few.stride() > 1);
    for (const PathPoint& point : few.points()) {
        const int layer = int(std::lround(point.z / 0.2F)) - 1;
        QCOMPARE(std::size_t(layer) % few.stride(), few.stride() - 1);
    }
}

void tst_CoarsePaths::growsAsTheFileDoes()
{
    const auto paths = cylinder(300, 60);
    CoarsePaths growing(3000);
    for (std::size_t layers = 0; layers <= paths->layers.size(); layers += 7)
        growing.append(*paths, layers, 100);
    while (growing.layers() < paths->layers.size())
        growing.append(*paths, paths->layers.size(), 1);
    const CoarsePaths atOnce = coarse(*paths, 3000);

    QCOMPARE(growing.stride(), atOnce.stride());
    QCOMPARE(growing.points().size(), atOnce.points().size());
}

void tst_CoarsePaths::aPartIsOfWholeLayers()
{
    const auto paths = cylinder(64, 8);
    const CoarsePaths few = coarse(*paths, 100'000);
    QCOMPARE(few.stride(), std::size_t(1));

    const CoarsePaths::Part part = few.part(10, 12);

    QCOMPARE(part.lastLayer, 12L);
    for (std::uint64_t segment = part.segments.first; segment < part.segments.end; ++segment) {
        const float z = few.points()[segment + 1].z;
        QVERIFY(z > 0.2F * 10.9F && z < 0.2F * 13.1F);
    }
    QVERIFY(few.part(0, 63).segments.count() + 1 == few.points().size());
    QVERIFY(few.part(64, 100).segments.isEmpty());
}

void tst_CoarsePaths::aLayerLargerThanAllIsKept()
{
    ToolpathsMaker maker;
    maker.layer(0.2F);
    maker.style({Feature::OuterWall, 0, 0.4F, 0.2F, 50});
    for (int i = 0; i < 1000; ++i)
        maker.square(float(5 * i), 0, 3);

    const CoarsePaths paths = coarse(*maker.made(), 10);

    QCOMPARE(paths.stride(), std::size_t(1));
    QCOMPARE(extrusions(paths), 4000);
}

void tst_CoarsePaths::startsAnew()
{
    CoarsePaths paths = coarse(*cylinder(100, 50), 500);
    const int revision = paths.revision();

    paths.clear();

    QVERIFY(paths.revision() != revision);
    QCOMPARE(paths.layers(), std::size_t(0));
    QCOMPARE(paths.stride(), std::size_t(1));
    QVERIFY(paths.points().empty());
}

QTEST_APPLESS_MAIN(tst_CoarsePaths)
#include "tst_coarse_paths.moc"
