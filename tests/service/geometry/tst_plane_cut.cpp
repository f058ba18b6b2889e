#include "shapes.h"

#include <geometry/plane_cut.h>

#include <QtTest>

#include <algorithm>
#include <limits>

using namespace shapes;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/** How far the mesh reaches to where the normal points. */
double height(const Mesh& mesh, const Vector& point, const Vector& normal)
{
    double highest = -HUGE_VAL;
    for (const auto& triangle : mesh.triangles) {
        for (const std::uint32_t vertex : triangle)
            highest = std::max(highest, dot(mesh.vertices[vertex] - point, normalized(normal)));
    }
    return highest;
}

/** Both halves, which together are the whole. */
void compareHalves(const Mesh& mesh, const Vector& point, const Vector& normal, double expected,
                   double tolerance)
{
    const Mesh behind = cutByPlane(mesh, point, normal);
    QVERIFY(isClosed(behind));
    COMPARE_NEAR(volume(behind), expected, tolerance);
    QVERIFY(height(behind, point, normal) < 1e-6);
    const Mesh before = cutByPlane(mesh, point, -normal);
    QVERIFY(isClosed(before));
    COMPARE_NEAR(volume(before), std::abs(volume(mesh)) - expected, tolerance);
    QVERIFY(height(before, point, -normal) < 1e-6);
}

} // namespace

class tst_PlaneCut : public QObject
{
    Q_OBJECT

private slots:
    void cutsACube_data();
    void cutsACube();
    void leavesWhatLiesBehind_data();
    void leavesWhatLiesBehind();
    void leavesNothingOfWhatLiesBefore_data();
    void leavesNothingOfWhatLiesBefore();

    void cutsABall();
    void cutsATorusIntoTwoPieces();
    void cutsARoundHole();
    void cutsACavityOpen();
    void dropsWholeShells();
    void cutsAgainAndAgain();
    void cutsFarAwayAndSmall_data();
    void cutsFarAwayAndSmall();

    void repairsWhatItCan_data();
    void repairsWhatItCan();
    void refusesAnOpenMesh();
    void refusesAMeshThatIntersectsItself();
    void refusesAPlaneThatIsNone_data();
    void refusesAPlaneThatIsNone();
    void refusesAnEmptyMesh();
    void tellsItsProgressAndIsCanceled();
};

void tst_PlaneCut::cutsACube_data()
{
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("z");
    QTest::addColumn<double>("normalX");
    QTest::addColumn<double>("normalY");
    QTest::addColumn<double>("normalZ");
    QTest::addColumn<double>("expected");

    // Of the 1,000 cubic millimetres of a cube from -5 to 5.
    QTest::newRow("in the middle") << 0.0 << 0.0 << 0.0 << 0.0 << 0.0 << 1.0 << 500.0;
    QTest::newRow("near the top") << 9.0 << 9.0 << 4.0 << 0.0 << 0.0 << 1.0 << 900.0;
    QTest::newRow("along x") << 1.0 << 0.0 << 0.0 << 1.0 << 0.0 << 0.0 << 600.0;
    QTest::newRow("a normal of another length")
        << 1.0 << 0.0 << 0.0 << -1e-3 << 0.0 << 0.0 << 400.0;
    QTest::newRow("obliquely") << 0.0 << 0.0 << 0.0 << 0.3 << -0.2 << 1.0 << 500.0;
    QTest::newRow("a hexagon") << 0.0 << 0.0 << 0.0 << 1.0 << 1.0 << 1.0 << 500.0;
    QTest::newRow("through two edges") << 0.0 << 0.0 << 0.0 << 1.0 << 1.0 << 0.0 << 500.0;
    QTest::newRow("through three corners")
        << 5.0 << 5.0 << -5.0 << 1.0 << 1.0 << 1.0 << 1000 - 1000 / 6.0;
    QTest::newRow("a corner off") << 5.0 << 5.0 << 2.0 << 1.0 << 1.0 << 1.0 << 1000 - 27 / 6.0;
    QTest::newRow("through one edge, thin")
        << 5.0 << 5.0 << 5.0 << 1.0 << 0.0 << -0.01 << 1000 - 0.5 * 10 * 0.1 * 10;
    QTest::newRow("a hair below the top")
        << 0.0 << 0.0 << 5 - 1e-5 << 0.0 << 0.0 << 1.0 << 1000 - 1e-3;
}

void tst_PlaneCut::cutsACube()
{
    QFETCH(double, x);
    QFETCH(double, y);
    QFETCH(double, z);
    QFETCH(double, normalX);
    QFETCH(double, normalY);
    QFETCH(double, normalZ);
    QFETCH(double, expected);
    compareHalves(cube(10), {x, y, z}, {normalX, normalY, normalZ}, expected, 1e-6);
}

void tst_PlaneCut::leavesWhatLiesBehind_data()
{
    QTest::addColumn<double>("z");
    QTest::addColumn<double>("normalX");
    QTest::addColumn<double>("normalZ");

    QTest::newRow("far off") << 100.0 << 0.0 << 1.0;
    QTest::newRow("on a side") << 5.0 << 0.0 << 1.0;
    QTest::newRow("on a side, nearly") << 5 - 1e-12 << 0.0 << 1.0;
    QTest::newRow("on an edge") << 10.0 << 1.0 << 1.0;
}

void tst_PlaneCut::leavesWhatLiesBehind()
{
    QFETCH(double, z);
    QFETCH(double, normalX);
    QFETCH(double, normalZ);
    const Mesh mesh = cube(10);
    QVERIFY(areSame(cutByPlane(mesh, {0, 0, z}, {normalX, 0, normalZ}), mesh));
    // Even what could not be cut.
    const Mesh apart = takenApart(mesh);
    QVERIFY(areSame(cutByPlane(apart, {0, 0, z}, {normalX, 0, normalZ}), apart));
}

void tst_PlaneCut::leavesNothingOfWhatLiesBefore_data()
{
    leavesWhatLiesBehind_data();
}

void tst_PlaneCut::leavesNothingOfWhatLiesBefore()
{
    QFETCH(double, z);
    QFETCH(double, normalX);
    QFETCH(double, normalZ);
    QCOMPARE(thrownBy([&] {
                 cutByPlane(cube(10), {0, 0, z}, {-normalX, 0, -normalZ});
             }),
             std::string("EmptyError: Nothing of the mesh lies behind the plane of the cut"));
}

void tst_PlaneCut::cutsABall()
{
    // A cap of height 5 off a ball of 20.
    const Mesh mesh = ball(20, 60);
    const double whole = volume(mesh);
    const double cap = kPi * 25 * (60 - 5) / 3;
    for (const Vector& normal : {Vector{0, 0, 1}, Vector{1, 0, 0}, Vector{-1, 2, 0.5}})
        compareHalves(mesh, 15.0 * normalized(normal), normal, whole - cap, 0.02 * cap);
}

void tst_PlaneCut::cutsATorusIntoTwoPieces()
{
    const Mesh mesh = torus(20, 5);
    compareHalves(mesh, {0, 0, 0}, {1, 0, 0}, volume(mesh) / 2, 1e-6);
    compareHalves(mesh, {0, 0, 0}, {0, 0, 1}, volume(mesh) / 2, 1e-6);
    compareHalves(mesh, {0, 0, 0}, {1, 2, 3}, volume(mesh) / 2, 1e-6);
}

void tst_PlaneCut::cutsARoundHole()
{
    // Through the hole: two rings become two discs each.
    const Mesh mesh = torus(20, 5);
    const Mesh half = cutByPlane(mesh, {0, 1.234, 0}, {0, 1, 0});
    QVERIFY(isClosed(half));
    QVERIFY(volume(half) > volume(mesh) / 2);
}

void tst_PlaneCut::cutsACavityOpen()
{
    const Mesh mesh = both(cube(10), insideOut(cube(4)));
    compareHalves(mesh, {0, 0, 0}, {0.1, 0.2, 1}, (1000 - 64) / 2.0, 1e-6);
    compareHalves(mesh, {0, 0, 3}, {0, 0, 1}, 800 - 64, 1e-6);
}

void tst_PlaneCut::dropsWholeShells()
{
    const Mesh right = transformed(cube(10), RigidTransform::moving({20, 0, 0}));
    const Mesh rest = cutByPlane(both(cube(10), right), {10, 0, 0}, {1, 0, 0});
    QVERIFY(isClosed(rest));
    COMPARE_NEAR(volume(rest), 1000, 1e-9);
    COMPARE_NEAR(boundingBox(rest).maximum.x, 5, 1e-12);
    // One cut, the other left.
    compareHalves(both(cube(10), right), {20, 0, 0}, {1, 0.2, 0}, 1500, 1e-6);
}

void tst_PlaneCut::cutsAgainAndAgain()
{
    Dice dice;
    Mesh mesh = ball(20, 40);
    for (int cut = 0; cut < 12; ++cut) {
        const double before = volume(mesh);
        const Vector direction = dice.direction();
        mesh = cutByPlane(mesh, dice.between(11, 17) * direction, direction);
        QVERIFY(isClosed(mesh));
        QVERIFY(volume(mesh) < before);
        QVERIFY(volume(mesh) > 0);
    }
    // And again along the same planes.
    const Mesh flat = cutByPlane(mesh, {0, 0, 1}, {0, 0, 1});
    QVERIFY(areSame(cutByPlane(flat, {0, 0, 1}, {0, 0, 1}), flat));
}

void tst_PlaneCut::cutsFarAwayAndSmall_data()
{
    QTest::addColumn<double>("side");
    QTest::addColumn<double>("offset");

    QTest::newRow("small") << 1e-3 << 0.0;
    QTest::newRow("large") << 1e5 << 0.0;
    QTest::newRow("far away") << 10.0 << 1e5;
}

void tst_PlaneCut::cutsFarAwayAndSmall()
{
    QFETCH(double, side);
    QFETCH(double, offset);
    const Vector away{offset, -offset, offset};
    const Mesh mesh = transformed(cube(side), RigidTransform::moving(away));
    const Mesh half = cutByPlane(mesh, away, {0.3, -0.2, 1});
    QVERIFY(isClosed(half));
    COMPARE_NEAR(volume(half) / (side * side * side), 0.5, 1e-6);
}

void tst_PlaneCut::repairsWhatItCan_data()
{
    QTest::addColumn<QByteArray>("kind");

    QTest::newRow("inside out") << QByteArray("inside out");
    QTest::newRow("no vertices are shared") << QByteArray("apart");
    QTest::newRow("a triangle is turned over") << QByteArray("turned over");
    QTest::newRow("a triangle is there twice") << QByteArray("twice");
    QTest::newRow("a triangle without an area") << QByteArray("degenerate");
    QTest::newRow("vertices that nothing uses") << QByteArray("unused");
}

void tst_PlaneCut::repairsWhatItCan()
{
    QFETCH(QByteArray, kind);
    Mesh mesh = cube(10);
    if (kind == "inside out")
        mesh = insideOut(mesh);
    else if (kind == "apart")
        mesh = takenApart(mesh);
    else if (kind == "turned over")
        std::swap(mesh.triangles[3][0], mesh.triangles[3][1]);
    else if (kind == "twice")
        mesh.triangles.push_back(mesh.triangles[3]);
    else if (kind == "degenerate")
        mesh.triangles.push_back({1, 1, 2});
    else
        mesh.vertices.push_back({0, 0, 100});
    const Mesh half = cutByPlane(mesh, {0, 0, 1}, {0, 0, 1});
    QVERIFY(isClosed(half));
    COMPARE_NEAR(volume(half), 600, 1e-6);
    COMPARE_NEAR(boundingBox(half).maximum.z, 1, 1e-9);
}

void tst_PlaneCut::refusesAnOpenMesh()
{
    Mesh mesh = cube(10);
    mesh.triangles.pop_back();
    QCOMPARE(thrownBy([&] {
                 cutByPlane(mesh, {}, {0, 0, 1});
             }),
             std::string("GeometryError: The mesh is not closed: 3 edges are open"));
    QCOMPARE(thrownBy([&] {
                 cutByPlane({cube(10).vertices, {{0, 1, 7}}}, {}, {0, 0, 1});
             }),
             std::string("GeometryError: The mesh is not closed: 3 edges are open"));
}

void tst_PlaneCut::refusesAMeshThatIntersectsItself()
{
    const Mesh other = transformed(cube(10), RigidTransform::moving({3, 3, 0.5}));
    QCOMPARE(thrownBy([&] {
                 cutByPlane(both(cube(10), other), {}, {0.1, 0.05, 1});
             }),
             std::string("GeometryError: The mesh intersects itself where it is cut"));
}

void tst_PlaneCut::refusesAPlaneThatIsNone_data()
{
    QTest::addColumn<double>("point");
    QTest::addColumn<double>("normal");
    QTest::addColumn<std::string>("expected");

    const std::string noNumber = "GeometryError: The plane of the cut is not a number";
    QTest::newRow("no direction") << 0.0 << 0.0
                                  << std::string(
                                         "GeometryError: The plane of the cut has no direction");
    QTest::newRow("no place") << kNan << 1.0 << noNumber;
    QTest::newRow("an odd direction") << 0.0 << kNan << noNumber;
    QTest::newRow("an infinite direction") << 0.0 << HUGE_VAL << noNumber;
}

void tst_PlaneCut::refusesAPlaneThatIsNone()
{
    QFETCH(double, point);
    QFETCH(double, normal);
    QFETCH(std::string, expected);
    QCOMPARE(thrownBy([&] { cutByPlane(cube(10), {0, point, 0}, {0, 0, normal}); }), expected);
}

void tst_PlaneCut::refusesAnEmptyMesh()
{
    QCOMPARE(thrownBy([&] {
                 cutByPlane({}, {}, {0, 0, 1});
             }),
             std::string("EmptyError: The mesh is empty"));
}

void tst_PlaneCut::tellsItsProgressAndIsCanceled()
{
    ProgressLog log;
    cutByPlane(cube(10), {}, {0, 0, 1}, log.progress());
    QVERIFY(log.isRising());
    for (int at = 1; at <= int(log.told.size()); ++at) {
        ProgressLog canceled(at);
        QCOMPARE(thrownBy([&] {
                     cutByPlane(cube(10), {}, {0, 0, 1}, canceled.progress());
                 }),
                 std::string("Canceled"));
    }
}

QTEST_GUILESS_MAIN(tst_PlaneCut)
#include "tst_plane_cut.moc"
