#include "shapes.h"

#include <geometry/point_cloud_filter.h>

#include <QtTest>

#include <limits>

using namespace shapes;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

double closest(const PointCloud& cloud)
{
    double least = kInfinity;
    for (std::size_t a = 0; a < cloud.positions.size(); ++a) {
        for (std::size_t b = 0; b < a; ++b)
            least = std::min(least, length(cloud.positions[a] - cloud.positions[b]));
    }
    return least;
}

double distanceToNearest(const Vector& point, const PointCloud& cloud)
{
    double least = kInfinity;
    for (const Vector& other : cloud.positions)
        least = std::min(least, length(point - other));
    return least;
}

PointCloud withPointAt(PointCloud cloud, const Vector& point, std::size_t at)
{
    cloud.positions.insert(cloud.positions.begin() + std::ptrdiff_t(at), point);
    return cloud;
}

} // namespace

class tst_PointCloudFilter : public QObject
{
    Q_OBJECT

private slots:
    void cropsToTheBoxAndItsSides();
    void cropKeepsWhatBelongsToAPoint();
    void cropTellsWhatItCannot();

    void removesWhatLiesFarFromTheRest();
    void keepsACleanCloud_data();
    void keepsACleanCloud();
    void keepsAFewPoints();
    void keepsPointsAtOnePlace_data();
    void keepsPointsAtOnePlace();
    void leavesNoEmptyCloud();
    void removesTheSameEachTime();

    void thinsToTheGrid_data();
    void thinsToTheGrid();
    void thinsWithItsBelongings();
    void takesNoPointsThatAreFarEnough();
    void thinsFarAway();
    void thinningNeedsAGrid_data();
    void thinningNeedsAGrid();

    void nothingComesOfAnEmptyCloud();
    void tellsItsProgressAndIsCanceled_data();
    void tellsItsProgressAndIsCanceled();
};

void tst_PointCloudFilter::cropsToTheBoxAndItsSides()
{
    const double above = std::nextafter(2.0, 3.0);
    const PointCloud cloud{{{0, 0, 0},
                            {2, 3, 4},
                            {2, 0, 4},
                            {1, 1, 1},
                            {above, 1, 1},
                            {1, -1e-300, 1},
                            {1, 1, 5},
                            {-1, -1, -1}},
                           {},
                           {}};
    const PointCloud rest = cropped(cloud, {{0, 0, 0}, {2, 3, 4}});
    QVERIFY(areSame(rest, {{{0, 0, 0}, {2, 3, 4}, {2, 0, 4}, {1, 1, 1}}, {}, {}}));
    // A box may be flat, or a point.
    QVERIFY(areSame(cropped(cloud, {{1, 1, 1}, {1, 1, 1}}), {{{1, 1, 1}}, {}, {}}));
}

void tst_PointCloudFilter::cropKeepsWhatBelongsToAPoint()
{
    const PointCloud cloud{{{0, 0, 0}, {5, 0, 0}, {1, 0, 0}},
                           {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                           {{1, 1, 1}, {2, 2, 2}, {3, 3, 3}}};
    QVERIFY(areSame(cropped(cloud, {{0, 0, 0}, {2, 2, 2}}),
                    {{{0, 0, 0}, {1, 0, 0}}, {{1, 0, 0}, {0, 0, 1}}, {{1, 1, 1}, {3, 3, 3}}}));
}

void tst_PointCloudFilter::cropTellsWhatItCannot()
{
    const PointCloud cloud{{{0, 0, 0}}, {}, {}};
    QCOMPARE(thrownBy([&] {
                 cropped(cloud, {{1, 1, 1}, {2, 2, 2}});
             }),
             std::string("EmptyError: No point of the cloud lies in the box"));
    QCOMPARE(thrownBy([&] {
                 cropped(cloud, {{-1, 1, -1}, {1, -1, 1}});
             }),
             std::string("GeometryError: The box's minimum lies above its maximum"));
    QCOMPARE(thrownBy([&] {
                 cropped(cloud, {{-1, kNan, -1}, {1, 1, 1}});
             }),
             std::string("GeometryError: A corner of the box is not a number"));
    QCOMPARE(thrownBy([&] {
                 cropped(cloud, {{-1, -1, -1}, {1, 1, kInfinity}});
             }),
             std::string("GeometryError: A corner of the box is not a number"));
}

void tst_PointCloudFilter::removesWhatLiesFarFromTheRest()
{
    const PointCloud clean = pointsOfBall(3000, 20, 0.05);
    PointCloud cloud = withPointAt(clean, {0, 0, 0}, 0);
    cloud = withPointAt(cloud, {0, 0, 30}, 1500);
    cloud = withPointAt(cloud, {0, 0, 31}, 1501);
    cloud = withPointAt(cloud, {-100, 0, 0}, cloud.positions.size());
    QCOMPARE(cloud.positions.size(), clean.positions.size() + 4);
    // The others stay, in their order.
    QVERIFY(areSame(withoutOutliers(cloud), clean));
}

void tst_PointCloudFilter::keepsACleanCloud_data()
{
    QTest::addColumn<double>("noise");

    QTest::newRow("exact") << 0.0;
    QTest::newRow("noise") << 0.1;
}

void tst_PointCloudFilter::keepsACleanCloud()
{
    QFETCH(double, noise);
    // With edges and corners, where neighbours are on some sides only.
    const PointCloud cloud = pointsOfMesh(cube(30), 5000, noise);
    QVERIFY(areSame(withoutOutliers(cloud), cloud));
    PointCloud open;
    for (const Vector& position : cloud.positions) {
        if (position.z < 10)
            open.positions.push_back(position);
    }
    QVERIFY(areSame(withoutOutliers(open), open));
}

void tst_PointCloudFilter::keepsAFewPoints()
{
    const PointCloud cloud{{{0, 0, 0}, {1, 0, 0}, {1000, 0, 0}}, {}, {}};
    QVERIFY(areSame(withoutOutliers(cloud), cloud));
}

void tst_PointCloudFilter::keepsPointsAtOnePlace_data()
{
    QTest::addColumn<double>("size");

    QTest::newRow("all the same") << 0.0;
    QTest::newRow("at two places") << 1.0;
    QTest::newRow("closer than squares can tell") << 1e-200;
}

void tst_PointCloudFilter::keepsPointsAtOnePlace()
{
    QFETCH(double, size);
    PointCloud cloud;
    for (int point = 0; point < 100; ++point)
        cloud.positions.push_back({1, 2, point % 2 * size});
    QVERIFY(areSame(withoutOutliers(cloud), cloud));
}

void tst_PointCloudFilter::leavesNoEmptyCloud()
{
    // As many at each place as are looked at, and one that is far off: an outlier by the square.
    PointCloud cloud;
    for (int place = 0; place < 20; ++place)
        cloud.positions.insert(cloud.positions.end(), 12, {place * 1.0, 0, 0});
    QCOMPARE(
        thrownBy([&] { withoutOutliers(cloud); }),
        std::string("EmptyError: No point of the cloud has as many others near it as a surface"));
}

void tst_PointCloudFilter::removesTheSameEachTime()
{
    const PointCloud cloud = joined(pointsOfBall(2000, 20, 0.1, 1), pointsOfBall(50, 40, 20, 2));
    const PointCloud first = withoutOutliers(cloud);
    QVERIFY(first.positions.size() < cloud.positions.size());
    QVERIFY(first.positions.size() >= 2000);
    QVERIFY(areSame(withoutOutliers(cloud), first));
}

void tst_PointCloudFilter::thinsToTheGrid_data()
{
    QTest::addColumn<double>("gridSize");

    QTest::newRow("not at all") << 5e-324;
    QTest::newRow("hardly at all") << 0.1;
    QTest::newRow("a bit") << 1.0;
    QTest::newRow("much") << 7.3;
    QTest::newRow("to one") << 1000.0;
}

void tst_PointCloudFilter::thinsToTheGrid()
{
    QFETCH(double, gridSize);
    const PointCloud cloud = pointsOfBall(2000, 20, 0.2);
    const PointCloud rest = thinned(cloud, gridSize);
    QVERIFY(closest(rest) >= gridSize);
    for (const Vector& position : cloud.positions)
        QVERIFY(distanceToNearest(position, rest) < gridSize);
    // None is moved.
    for (const Vector& position : rest.positions)
        QCOMPARE(distanceToNearest(position, cloud), 0.0);
}

void tst_PointCloudFilter::thinsWithItsBelongings()
{
    const PointCloud cloud{{{0, 0, 0}, {0.5, 0, 0}, {1, 0, 0}},
                           {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                           {{1, 1, 1}, {2, 2, 2}, {3, 3, 3}}};
    QVERIFY(areSame(thinned(cloud, 1),
                    {{{0, 0, 0}, {1, 0, 0}}, {{1, 0, 0}, {0, 0, 1}}, {{1, 1, 1}, {3, 3, 3}}}));
}

void tst_PointCloudFilter::takesNoPointsThatAreFarEnough()
{
    // Exactly the grid size is not closer than it; close ones on both sides of zero are.
    QCOMPARE(thinned({{{0, 0, 0}, {2, 0, 0}, {4, 0, 0}}, {}, {}}, 2).positions.size(),
             std::size_t(3));
    QCOMPARE(thinned({{{-0.1, 0, 0}, {0.1, 0, 0}}, {}, {}}, 2).positions.size(), std::size_t(1));
    QCOMPARE(thinned({{{1, 2, 3}, {1, 2, 3}, {1, 2, 3}}, {}, {}}, 1e-9).positions.size(),
             std::size_t(1));
}

void tst_PointCloudFilter::thinsFarAway()
{
    // Cells beyond what an integer counts.
    const PointCloud cloud{{{1e9, 0, 0}, {-1e9, 0, 0}, {1e9, 1e-12, 0}}, {}, {}};
    QCOMPARE(thinned(cloud, 1e-11).positions.size(), std::size_t(2));
    QCOMPARE(thinned(cloud, 1e-300).positions.size(), std::size_t(3));
}

void tst_PointCloudFilter::thinningNeedsAGrid_data()
{
    QTest::addColumn<double>("gridSize");

    QTest::newRow("none") << 0.0;
    QTest::newRow("negative") << -1.0;
    QTest::newRow("no number") << kNan;
    QTest::newRow("infinite") << kInfinity;
}

void tst_PointCloudFilter::thinningNeedsAGrid()
{
    QFETCH(double, gridSize);
    QCOMPARE(thrownBy([&] {
                 thinned({{{1, 2, 3}}, {}, {}}, gridSize);
             }),
             std::string("GeometryError: The grid size must be above zero"));
}

void tst_PointCloudFilter::nothingComesOfAnEmptyCloud()
{
    const std::string expected = "EmptyError: The point cloud is empty";
    QCOMPARE(thrownBy([] { cropped({}, {}); }), expected);
    QCOMPARE(thrownBy([] { withoutOutliers({}); }), expected);
    QCOMPARE(thrownBy([] { thinned({}, 1); }), expected);
}

void tst_PointCloudFilter::tellsItsProgressAndIsCanceled_data()
{
    QTest::addColumn<bool>("isThinned");

    QTest::newRow("outliers") << false;
    QTest::newRow("thinning") << true;
}

void tst_PointCloudFilter::tellsItsProgressAndIsCanceled()
{
    QFETCH(bool, isThinned);
    const PointCloud cloud = pointsOfBall(30000, 20, 0.1);
    const auto run = [&](ProgressLog& log) {
        isThinned ? thinned(cloud, 1, log.progress()) : withoutOutliers(cloud, log.progress());
    };
    ProgressLog log;
    run(log);
    QVERIFY(log.isRising());
    QVERIFY(log.told.size() > 3);
    for (const int at : {1, 2, int(log.told.size())}) {
        ProgressLog canceled(at);
        QCOMPARE(thrownBy([&] { run(canceled); }), std::string("Canceled"));
        QCOMPARE(int(canceled.told.size()), at);
    }
}

QTEST_GUILESS_MAIN(tst_PointCloudFilter)
#include "tst_point_cloud_filter.moc"
