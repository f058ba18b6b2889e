#include "shapes.h"

#include <geometry/reconstruction.h>

#include <QtTest>

#include <algorithm>

using namespace shapes;

namespace {

struct Radii
{
    double least = HUGE_VAL;
    double most = 0;
    double mean = 0;
};

Radii radii(const Mesh& mesh, const Vector& centre)
{
    Radii result;
    for (const Vector& vertex : mesh.vertices) {
        const double radius = length(vertex - centre);
        result.least = std::min(result.least, radius);
        result.most = std::max(result.most, radius);
        result.mean += radius / double(mesh.vertices.size());
    }
    return result;
}

/** But for rounding, which may here and there turn an edge. */
void compareSurfaces(const Mesh& a, const Mesh& b)
{
    COMPARE_NEAR(volume(a) / volume(b), 1, 1e-4);
    COMPARE_NEAR(double(a.vertices.size()) / double(b.vertices.size()), 1, 0.02);
}

bool isInsideOut(const Mesh& mesh)
{
    return volume(mesh) < 0;
}

} // namespace

class tst_Reconstruction : public QObject
{
    Q_OBJECT

private slots:
    void makesABall_data();
    void makesABall();
    void usesNormals();
    void makesACube();
    void makesATorus();
    void makesTwoParts();
    void closesWhatIsOpen();
    void makesTheSameEachTime();
    void thinsWhatIsTooMuch();
    void makesABallOfLines();
    void takesPointsThatAreThereTwice();
    void makesSmallAndLargeAndFarAway_data();
    void makesSmallAndLargeAndFarAway();

    void refusesTooFewPoints();
    void refusesPointsInAPlane_data();
    void refusesPointsInAPlane();
    void comesToAnEndInFog();
    void tellsItsProgressAndIsCanceled();
};

void tst_Reconstruction::makesABall_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<double>("noise");

    QTest::newRow("exact") << 4000 << 0.0;
    QTest::newRow("a scanner's noise") << 4000 << 0.1;
    QTest::newRow("much noise") << 5000 << 0.3;
    QTest::newRow("few points") << 300 << 0.0;
}

void tst_Reconstruction::makesABall()
{
    QFETCH(int, count);
    QFETCH(double, noise);
    const Mesh mesh = reconstructed(pointsOfBall(std::size_t(count), 20, noise));
    QVERIFY(isClosed(mesh));
    QVERIFY(!isInsideOut(mesh));
    const Radii found = radii(mesh, {});
    // What the points leave open between them.
    const double spacing = std::sqrt(4 * kPi * 400 / count);
    COMPARE_NEAR(found.mean, 20, noise / 2 + 0.05 * spacing);
    QVERIFY(found.least > 20 - 5 * noise - 0.5 * spacing);
    QVERIFY(found.most < 20 + 5 * noise + 0.5 * spacing);
    COMPARE_NEAR(volume(mesh) / (4.0 / 3 * kPi * 8000), 1, 0.02 + 0.01 * spacing * spacing);
}

void tst_Reconstruction::usesNormals()
{
    PointCloud cloud = pointsOfBall(1000, 20, 0);
    for (const Vector& position : cloud.positions)
        cloud.normals.push_back(normalized(position));
    const Mesh mesh = reconstructed(cloud);
    QVERIFY(isClosed(mesh));
    QVERIFY(!isInsideOut(mesh));
    COMPARE_NEAR(radii(mesh, {}).mean, 20, 0.05);
}

void tst_Reconstruction::makesACube()
{
    const Mesh mesh = reconstructed(pointsOfMesh(cube(30), 5000, 0.05));
    QVERIFY(isClosed(mesh));
    COMPARE_NEAR(volume(mesh) / 27000, 1, 0.02);
    const Box bounds = boundingBox(mesh);
    for (const double side : {bounds.maximum.x, bounds.maximum.y, bounds.maximum.z,
                              -bounds.minimum.x, -bounds.minimum.y, -bounds.minimum.z})
        COMPARE_NEAR(side, 15, 0.6);
}

void tst_Reconstruction::makesATorus()
{
    const Mesh mesh = reconstructed(pointsOfMesh(torus(20, 6, 96), 5000, 0.05));
    QVERIFY(isClosed(mesh));
    COMPARE_NEAR(volume(mesh) / (2 * kPi * kPi * 20 * 36), 1, 0.03);
    // Its hole stays: as many edges as vertices and faces together.
    QCOMPARE(mesh.triangles.size() * 3 / 2, mesh.vertices.size() + mesh.triangles.size());
}

void tst_Reconstruction::makesTwoParts()
{
    const PointCloud left = pointsOfBall(1500, 10, 0.02, 1);
    const PointCloud right =
        transformed(pointsOfBall(1500, 10, 0.02, 2), RigidTransform::moving({30, 0, 5}));
    const Mesh mesh = reconstructed(joined(left, right));
    QVERIFY(isClosed(mesh));
    COMPARE_NEAR(volume(mesh) / (2 * 4.0 / 3 * kPi * 1000), 1, 0.05);
}

void tst_Reconstruction::closesWhatIsOpen()
{
    // As it stood on the turntable: nothing was seen of its bottom.
    PointCloud cloud;
    for (const Vector& position : pointsOfBall(3000, 20, 0.05).positions) {
        if (position.z > -12)
            cloud.positions.push_back(position);
    }
    const Mesh mesh = reconstructed(cloud);
    QVERIFY(isClosed(mesh));
    QVERIFY(!isInsideOut(mesh));
    COMPARE_NEAR(volume(mesh) / (4.0 / 3 * kPi * 8000), 1, 0.1);
}

void tst_Reconstruction::makesTheSameEachTime()
{
    const PointCloud cloud = pointsOfBall(1000, 20, 0.1);
    compareSurfaces(reconstructed(cloud), reconstructed(cloud));
}

void tst_Reconstruction::thinsWhatIsTooMuch()
{
    // Most of the 130,000 points are crowded in places where few are enough.
    PointCloud cloud = pointsOfBall(3000, 20, 0);
    Dice dice;
    while (cloud.positions.size() < 130000) {
        const Vector& around = cloud.positions[std::size_t(dice.between(0, 3000))];
        cloud.positions.push_back(20.0 * normalized(around + 1e-3 * dice.noiseVector()));
    }
    const Mesh mesh = reconstructed(cloud);
    QVERIFY(isClosed(mesh));
    COMPARE_NEAR(radii(mesh, {}).mean, 20, 0.05);
}

void tst_Reconstruction::makesABallOfLines()
{
    // As a scanner sees it: 2 mm between its lines, 0.1 mm along them.
    Dice dice;
    PointCloud cloud;
    for (int line = 0; line < 60; ++line) {
        for (int point = 0; point < 600; ++point) {
            const double around = kPi * line / 30;
            const double polar = kPi * (point + 0.5) / 600;
            cloud.positions.push_back((20 + 0.05 * dice.noise()) *
                                      Vector{std::sin(polar) * std::cos(around),
                                             std::sin(polar) * std::sin(around), std::cos(polar)});
        }
    }
    const Mesh mesh = reconstructed(cloud);
    QVERIFY(isClosed(mesh));
    const Radii found = radii(mesh, {});
    COMPARE_NEAR(found.mean, 20, 0.05);
    QVERIFY(found.least > 19.4);
    QVERIFY(found.most < 20.6);
    COMPARE_NEAR(volume(mesh) / (4.0 / 3 * kPi * 8000), 1, 0.03);
}

void tst_Reconstruction::takesPointsThatAreThereTwice()
{
    PointCloud cloud = pointsOfBall(2000, 20, 0);
    const PointCloud once = cloud;
    for (int copy = 0; copy < 10; ++copy)
        cloud = joined(cloud, once);
    compareSurfaces(reconstructed(cloud), reconstructed(once));
}

void tst_Reconstruction::makesSmallAndLargeAndFarAway_data()
{
    QTest::addColumn<double>("radius");
    QTest::addColumn<double>("away");

    QTest::newRow("small") << 1e-3 << 0.0;
    QTest::newRow("large") << 1e5 << 0.0;
    QTest::newRow("far away") << 20.0 << 1e4;
}

void tst_Reconstruction::makesSmallAndLargeAndFarAway()
{
    QFETCH(double, radius);
    QFETCH(double, away);
    const Vector centre{away, -away, away};
    const Mesh mesh =
        reconstructed(transformed(pointsOfBall(1000, radius, 0), RigidTransform::moving(centre)));
    QVERIFY(isClosed(mesh));
    COMPARE_NEAR(radii(mesh, centre).mean / radius, 1, 0.02);
}

void tst_Reconstruction::refusesTooFewPoints()
{
    QCOMPARE(thrownBy([] { reconstructed({}); }),
             std::string("EmptyError: The point cloud is empty"));
    QCOMPARE(thrownBy([] { reconstructed(pointsOfBall(29, 20, 0)); }),
             std::string("GeometryError: The point cloud has too few points: a surface needs 30"));
    PointCloud same = pointsOfBall(29, 20, 0);
    same = joined(same, same);
    QCOMPARE(thrownBy([&] { reconstructed(same); }),
             std::string("GeometryError: Too many points of the cloud are the same"));
}

void tst_Reconstruction::refusesPointsInAPlane_data()
{
    QTest::addColumn<double>("y");

    QTest::newRow("a plane") << 1.0;
    QTest::newRow("a line") << 0.0;
    QTest::newRow("a point") << HUGE_VAL;
}

void tst_Reconstruction::refusesPointsInAPlane()
{
    QFETCH(double, y);
    Dice dice;
    PointCloud cloud;
    for (int point = 0; point < 500; ++point) {
        const double along = std::isfinite(y) ? dice.between(-20, 20) : 7;
        const double across = std::isfinite(y) ? y * dice.between(-20, 20) : 8;
        cloud.positions.push_back({along, across, along / 2 + across / 3});
    }
    QCOMPARE(thrownBy([&] { reconstructed(cloud); }),
             std::string("GeometryError: The points of the cloud lie in one plane"));
}

void tst_Reconstruction::comesToAnEndInFog()
{
    // There is no surface in it; whatever comes out is closed, or is told.
    Dice dice;
    PointCloud fog;
    for (int point = 0; point < 500; ++point)
        fog.positions.push_back(20.0 * dice.noiseVector());
    const std::string text = thrownBy([&] { QVERIFY(isClosed(reconstructed(fog))); });
    QVERIFY2(text == "nothing" ||
                 text == "GeometryError: No closed surface was found around the points",
             text.c_str());
}

void tst_Reconstruction::tellsItsProgressAndIsCanceled()
{
    const PointCloud cloud = pointsOfBall(1500, 20, 0.1);
    ProgressLog log;
    reconstructed(cloud, log.progress());
    QVERIFY(log.isRising());
    const int calls = int(log.told.size());
    QVERIFY(calls > 20);
    for (int at = 1; at <= calls; at += calls / 12) {
        ProgressLog canceled(at);
        QCOMPARE(thrownBy([&] { reconstructed(cloud, canceled.progress()); }),
                 std::string("Canceled"));
        QCOMPARE(int(canceled.told.size()), at);
    }
}

QTEST_GUILESS_MAIN(tst_Reconstruction)
#include "tst_reconstruction.moc"
