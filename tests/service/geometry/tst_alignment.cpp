#include "shapes.h"

#include <geometry/alignment.h>

#include <QtTest>

#include <algorithm>
#include <limits>

using namespace shapes;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<Vector> moved(const std::vector<Vector>& points, const RigidTransform& transform)
{
    std::vector<Vector> result;
    for (const Vector& point : points)
        result.push_back(transform.point(point));
    return result;
}

/** How far apart two moves take a part of the given size. */
double difference(const RigidTransform& a, const RigidTransform& b, double size)
{
    double largest = 0;
    for (const Vector& point :
         {Vector{size, 0, 0}, Vector{0, size, 0}, Vector{0, 0, size}, Vector{-size, -size, -size}})
        largest = std::max(largest, length(a.point(point) - b.point(point)));
    return largest;
}

bool isRotation(const RigidTransform& transform)
{
    const auto& [x, y, z] = transform.rotation;
    return std::abs(dot(x, cross(y, z)) - 1) < 1e-9 && std::abs(dot(x, y)) < 1e-9 &&
           std::abs(length(x) - 1) < 1e-9;
}

/** The points of a potato that a scan from the left or from the right gets to see. */
PointCloud scanOf(double from, double to, double noise, unsigned seed)
{
    Dice dice(seed);
    PointCloud cloud;
    while (cloud.positions.size() < 8000) {
        const Vector point = pointOfPotato(dice.direction());
        if (point.x >= from && point.x <= to)
            cloud.positions.push_back(point + noise * dice.noiseVector());
    }
    return cloud;
}

const std::vector<Vector> kCorners{{0, 0, 0}, {10, 0, 0}, {0, 20, 0}, {0, 0, 30}, {5, 5, 5}};

} // namespace

class tst_Alignment : public QObject
{
    Q_OBJECT

private slots:
    void findsTheMoveOfPairs_data();
    void findsTheMoveOfPairs();
    void threePairsAreEnough();
    void givesTheErrorOfPairs();
    void neverMirrors();
    void refusesPairsThatAreNone_data();
    void refusesPairsThatAreNone();

    void findsTheMoveOfClouds_data();
    void findsTheMoveOfClouds();
    void takesUpACoarseAlignment();
    void doesNothingToCloudsThatFit();
    void findsTheSameEachTime();
    void staysWhereShapesSayNothing();
    void usesNormalsOfNeither();
    void refusesCloudsThatDoNotFit();
    void refusesTooFewPoints();
    void tellsItsProgressAndIsCanceled();
};

void tst_Alignment::findsTheMoveOfPairs_data()
{
    QTest::addColumn<double>("radians");
    QTest::addColumn<double>("away");

    QTest::newRow("none") << 0.0 << 0.0;
    QTest::newRow("a move") << 0.0 << 100.0;
    QTest::newRow("a turn") << 0.5 << 0.0;
    QTest::newRow("both") << -2.0 << -300.0;
    QTest::newRow("upside down") << kPi << 1.0;
}

void tst_Alignment::findsTheMoveOfPairs()
{
    QFETCH(double, radians);
    QFETCH(double, away);
    const RigidTransform applied = RigidTransform::moving({away, -away, 2 * away}) *
                                   RigidTransform::turning(Vector{1, 2, 3}, radians);
    const Alignment alignment = alignPairs(kCorners, moved(kCorners, applied));
    QVERIFY(difference(alignment.transform, applied, 30) < 1e-9);
    QVERIFY(isRotation(alignment.transform));
    COMPARE_NEAR(alignment.error, 0, 1e-9);
}

void tst_Alignment::threePairsAreEnough()
{
    const RigidTransform applied =
        RigidTransform::moving({1, 2, 3}) * RigidTransform::turning(Vector{3, 2, 1}, 1.2);
    const std::vector<Vector> points(kCorners.begin(), kCorners.begin() + 3);
    const Alignment alignment = alignPairs(points, moved(points, applied));
    QVERIFY(difference(alignment.transform, applied, 30) < 1e-9);
    QVERIFY(isRotation(alignment.transform));
}

void tst_Alignment::givesTheErrorOfPairs()
{
    // Farther apart by 1 mm at both ends than they can be brought together.
    const std::vector<Vector> points{{-10, 0, 0}, {10, 0, 0}, {0, 5, 0}};
    const std::vector<Vector> targets{{-11, 0, 0}, {11, 0, 0}, {0, 5, 0}};
    const Alignment alignment = alignPairs(points, targets);
    COMPARE_NEAR(alignment.error, std::sqrt(2.0 / 3), 1e-9);

    Dice dice;
    std::vector<Vector> many;
    std::vector<Vector> noisy;
    const RigidTransform applied =
        RigidTransform::moving({1, 2, 3}) * RigidTransform::turning(Vector{3, 2, 1}, 1.2);
    for (int point = 0; point < 1000; ++point) {
        many.push_back(20.0 * dice.noiseVector());
        noisy.push_back(applied.point(many.back()) + 0.1 * dice.noiseVector());
    }
    const Alignment ofMany = alignPairs(many, noisy);
    COMPARE_NEAR(ofMany.error, 0.1 * std::sqrt(3.0), 0.01);
    QVERIFY(difference(ofMany.transform, applied, 30) < 0.05);
}

void tst_Alignment::neverMirrors()
{
    std::vector<Vector> mirrored;
    for (const Vector& point : kCorners)
        mirrored.push_back({-point.x, point.y, point.z});
    const Alignment alignment = alignPairs(kCorners, mirrored);
    QVERIFY(isRotation(alignment.transform));
    QVERIFY(alignment.error > 1);
}

void tst_Alignment::refusesPairsThatAreNone_data()
{
    QTest::addColumn<int>("points");
    QTest::addColumn<int>("targets");
    QTest::addColumn<double>("across");
    QTest::addColumn<double>("targetAcross");
    QTest::addColumn<std::string>("expected");

    const std::string tooFew = "GeometryError: An alignment needs three pairs of points";
    const std::string onOneLine = "GeometryError: The points lie on one line";
    const std::string noNumber = "GeometryError: A point is not a number";
    QTest::newRow("none") << 0 << 0 << 1.0 << 1.0 << tooFew;
    QTest::newRow("two") << 2 << 2 << 1.0 << 1.0 << tooFew;
    QTest::newRow("one without another")
        << 4 << 3 << 1.0 << 1.0
        << std::string("GeometryError: There are 4 points, but 3 to move them onto");
    QTest::newRow("points on a line") << 4 << 4 << 0.0 << 1.0 << onOneLine;
    QTest::newRow("targets on a line") << 4 << 4 << 1.0 << 0.0 << onOneLine;
    QTest::newRow("nearly on a line") << 4 << 4 << 1e-9 << 1.0 << onOneLine;
    QTest::newRow("no number") << 4 << 4 << kNan << 1.0 << noNumber;
    QTest::newRow("infinite") << 4 << 4 << 1.0 << HUGE_VAL << noNumber;
}

void tst_Alignment::refusesPairsThatAreNone()
{
    QFETCH(int, points);
    QFETCH(int, targets);
    QFETCH(double, across);
    QFETCH(double, targetAcross);
    QFETCH(std::string, expected);
    const auto row = [](int count, double y) {
        std::vector<Vector> result;
        for (int point = 0; point < count; ++point)
            result.push_back({double(point), point == 1 ? y : 0, double(2 * point)});
        return result;
    };
    QCOMPARE(thrownBy([&] { alignPairs(row(points, across), row(targets, targetAcross)); }),
             expected);
}

void tst_Alignment::findsTheMoveOfClouds_data()
{
    QTest::addColumn<double>("overlap");
    QTest::addColumn<double>("radians");
    QTest::addColumn<double>("noise");
    QTest::addColumn<double>("tolerance");

    QTest::newRow("all of it") << 1.0 << 0.1 << 0.0 << 0.02;
    QTest::newRow("most of it") << 0.7 << 0.1 << 0.0 << 0.02;
    QTest::newRow("half of it") << 0.5 << 0.1 << 0.0 << 0.03;
    QTest::newRow("a third of it") << 0.35 << 0.05 << 0.0 << 0.03;
    QTest::newRow("turned much") << 1.0 << 0.25 << 0.0 << 0.02;
    QTest::newRow("noise") << 1.0 << 0.1 << 0.1 << 0.1;
    QTest::newRow("noise in half of it") << 0.5 << 0.1 << 0.1 << 0.15;
}

void tst_Alignment::findsTheMoveOfClouds()
{
    QFETCH(double, overlap);
    QFETCH(double, radians);
    QFETCH(double, noise);
    QFETCH(double, tolerance);
    const double border = 40 * (1 - overlap);
    const RigidTransform applied =
        RigidTransform::moving({1, -2, 1.5}) * RigidTransform::turning(Vector{1, 2, 3}, radians);
    const PointCloud target = scanOf(-100, 40 - border, noise, 1);
    const PointCloud cloud = transformed(scanOf(-40 + border, 100, noise, 2), applied.inverse());
    const Alignment alignment = alignClouds(cloud, target);
    const double off = difference(alignment.transform, applied, 40);
    QVERIFY2(off < tolerance, qPrintable(QString::number(off)));
    QVERIFY(isRotation(alignment.transform));
    // What is between neighbouring points of the target, and the noise of both.
    QVERIFY(alignment.error < 0.08 + 1.6 * noise);
    QVERIFY(alignment.error > 0);
}

void tst_Alignment::takesUpACoarseAlignment()
{
    const RigidTransform applied =
        RigidTransform::moving({300, -200, 150}) * RigidTransform::turning(Vector{1, 2, 3}, 2.5);
    const PointCloud target = scanOf(-100, 10, 0.05, 1);
    const PointCloud cloud = transformed(scanOf(-10, 100, 0.05, 2), applied.inverse());
    // As picked by hand, some millimetres off.
    Dice dice;
    std::vector<Vector> picked;
    std::vector<Vector> pickedTargets;
    for (const Vector& direction : {Vector{0, 1, 0}, Vector{0, -1, 1}, Vector{0, 0, -1}}) {
        const Vector point = pointOfPotato(normalized(direction));
        picked.push_back(applied.inverse().point(point) + dice.noiseVector());
        pickedTargets.push_back(point + dice.noiseVector());
    }
    const RigidTransform coarse = alignPairs(picked, pickedTargets).transform;
    const Alignment fine = alignClouds(transformed(cloud, coarse), target);
    QVERIFY(difference(coarse, applied, 40) > 0.5);
    const double off = difference(fine.transform * coarse, applied, 40);
    QVERIFY2(off < 0.2, qPrintable(QString::number(off)));
}

void tst_Alignment::doesNothingToCloudsThatFit()
{
    const PointCloud cloud = scanOf(-100, 100, 0, 1);
    const Alignment alignment = alignClouds(cloud, cloud);
    QVERIFY(difference(alignment.transform, {}, 40) < 1e-6);
    COMPARE_NEAR(alignment.error, 0, 1e-6);
}

void tst_Alignment::findsTheSameEachTime()
{
    const PointCloud target = scanOf(-100, 20, 0.1, 1);
    const PointCloud cloud =
        transformed(scanOf(-20, 100, 0.1, 2), RigidTransform::moving({1, 1, 1}));
    const Alignment first = alignClouds(cloud, target);
    const Alignment second = alignClouds(cloud, target);
    QCOMPARE(difference(first.transform, second.transform, 40), 0.0);
    QCOMPARE(first.error, second.error);
}

void tst_Alignment::staysWhereShapesSayNothing()
{
    // A ball may turn in its socket as it likes; what counts is where its centre comes to.
    const Alignment alignment =
        alignClouds(transformed(pointsOfBall(8000, 20, 0.05, 1), RigidTransform::moving({1, 2, 0})),
                    pointsOfBall(8000, 20, 0.05, 2));
    QVERIFY(length(alignment.transform.point({1, 2, 0})) < 0.02);
    QVERIFY(alignment.transform.radians() < 0.3);
}

void tst_Alignment::usesNormalsOfNeither()
{
    const PointCloud target = scanOf(-100, 100, 0, 1);
    PointCloud cloud = transformed(scanOf(-100, 100, 0, 2), RigidTransform::moving({1, 1, 1}));
    cloud.normals.assign(cloud.positions.size(), {1, 0, 0});
    QVERIFY(difference(alignClouds(cloud, target).transform, RigidTransform::moving({-1, -1, -1}),
                       40) < 0.03);
}

void tst_Alignment::refusesCloudsThatDoNotFit()
{
    const PointCloud target = pointsOfBall(3000, 20, 0);
    const PointCloud away =
        transformed(pointsOfBall(3000, 20, 0, 2), RigidTransform::moving({100, 0, 0}));
    QCOMPARE(
        thrownBy([&] { alignClouds(away, target); }),
        std::string("GeometryError: The point clouds do not overlap: align them roughly first"));
    // Something else altogether, in the same place.
    Dice dice;
    PointCloud fog;
    for (int point = 0; point < 3000; ++point)
        fog.positions.push_back(
            {dice.between(-20, 20), dice.between(-20, 20), dice.between(-20, 20)});
    QVERIFY(thrownBy([&] { alignClouds(fog, target); }).rfind("GeometryError: ", 0) == 0);
}

void tst_Alignment::refusesTooFewPoints()
{
    const PointCloud good = pointsOfBall(100, 20, 0);
    const PointCloud few = pointsOfBall(29, 20, 0);
    const std::string tooFew =
        "GeometryError: The point cloud has too few points: an alignment needs 30";
    QCOMPARE(thrownBy([&] { alignClouds(few, good); }), tooFew);
    QCOMPARE(thrownBy([&] { alignClouds(good, few); }), tooFew);
    QCOMPARE(thrownBy([&] { alignClouds({}, good); }),
             std::string("EmptyError: The point cloud is empty"));
    QCOMPARE(thrownBy([&] { alignClouds(good, {}); }),
             std::string("EmptyError: The point cloud is empty"));
    PointCloud same;
    same.positions.assign(100, {1, 2, 3});
    QCOMPARE(thrownBy([&] { alignClouds(good, same); }),
             std::string("GeometryError: All points of the cloud are the same"));
}

void tst_Alignment::tellsItsProgressAndIsCanceled()
{
    const PointCloud target = scanOf(-100, 20, 0.1, 1);
    const PointCloud cloud = scanOf(-20, 100, 0.1, 2);
    ProgressLog log;
    alignClouds(cloud, target, log.progress());
    QVERIFY(log.isRising());
    const int calls = int(log.told.size());
    for (const int at : {1, 2, calls / 2, calls - 1, calls}) {
        ProgressLog canceled(at);
        QCOMPARE(thrownBy([&] { alignClouds(cloud, target, canceled.progress()); }),
                 std::string("Canceled"));
        QCOMPARE(int(canceled.told.size()), at);
    }
}

QTEST_GUILESS_MAIN(tst_Alignment)
#include "tst_alignment.moc"
