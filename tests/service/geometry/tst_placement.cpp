#include "shapes.h"

#include <geometry/placement.h>

#include <QtTest>

using namespace shapes;

namespace {

const Mesh& tall()
{
    static const Mesh& mesh = *new Mesh(box({-5, -10, -20}, {5, 10, 20}));
    return mesh;
}

/** Of a closed mesh. */
Vector centreOf(const Mesh& mesh)
{
    Vector sum;
    double total = 0;
    for (const auto& [a, b, c] : mesh.triangles) {
        const double part = dot(mesh.vertices[a], cross(mesh.vertices[b], mesh.vertices[c]));
        total += part;
        sum = sum + part / 4 * (mesh.vertices[a] + mesh.vertices[b] + mesh.vertices[c]);
    }
    return 1 / total * sum;
}

} // namespace

class tst_Placement : public QObject
{
    Q_OBJECT

private slots:
    void liesOnItsLargestSide_data();
    void liesOnItsLargestSide();
    void keepsWhatStandsAlready();
    void turnsAsLittleAsItHasTo();
    void standsOnlyWhereItDoesNotTipOver();
    void takesTheSidesOfItsHull();
    void seesThroughNoise();
    void takesAMeshThatIsNotClosed();
    void keepsItsPlaceAbovePlatform();
    void tellsTheTransform();
    void placesABall();
    void refusesWhatIsFlat_data();
    void refusesWhatIsFlat();
    void refusesAnEmptyMesh();
    void tellsItsProgressAndIsCanceled();
};

void tst_Placement::liesOnItsLargestSide_data()
{
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("z");
    QTest::addColumn<double>("radians");

    QTest::newRow("standing") << 1.0 << 0.0 << 0.0 << 0.0;
    QTest::newRow("tilted") << 1.0 << 2.0 << 3.0 << 0.4;
    QTest::newRow("on its head") << 1.0 << 0.0 << 0.0 << kPi;
    QTest::newRow("on an edge") << 0.0 << 1.0 << 0.0 << kPi / 4;
    QTest::newRow("on a corner") << 1.0 << -1.0 << 0.0 << std::atan(std::sqrt(2.0));
}

void tst_Placement::liesOnItsLargestSide()
{
    QFETCH(double, x);
    QFETCH(double, y);
    QFETCH(double, z);
    QFETCH(double, radians);
    const RigidTransform before =
        RigidTransform::moving({100, 200, 300}) * RigidTransform::turning(Vector{x, y, z}, radians);
    const Mesh placed = placedOnPlatform(transformed(tall(), before));
    const Box bounds = boundingBox(placed);
    QCOMPARE(bounds.minimum.z, 0.0);
    COMPARE_NEAR(bounds.maximum.z, 10, 1e-9);
    COMPARE_NEAR(volume(placed), volume(tall()), 1e-6);
    QVERIFY(placed.triangles == tall().triangles);
}

void tst_Placement::keepsWhatStandsAlready()
{
    const Mesh lying = box({10, 20, 0}, {50, 40, 10});
    QVERIFY(areSame(placedOnPlatform(lying), lying));
    // All sides of a cube are the same.
    const Mesh standing = box({0, 0, 0}, {10, 10, 10});
    QVERIFY(areSame(placedOnPlatform(standing), standing));
}

void tst_Placement::turnsAsLittleAsItHasTo()
{
    const RigidTransform tilt = RigidTransform::turning(Vector{1, 0.3, 0}, 0.5);
    const RigidTransform placement = placementOnPlatform(transformed(cube(10), tilt));
    COMPARE_NEAR(placement.radians(), 0.5, 1e-9);
}

void tst_Placement::standsOnlyWhereItDoesNotTipOver()
{
    // The largest side of the hull is the slanted one, beyond which the weight hangs.
    const Mesh wedge = prism({{0, 0, 0}, {10, 0, 0}, {40, 30, 0}, {38, 30, 0}}, 20);
    const Mesh placed = placedOnPlatform(wedge);
    const Vector centre = centreOf(placed);
    double left = HUGE_VAL;
    double right = -HUGE_VAL;
    double front = HUGE_VAL;
    double back = -HUGE_VAL;
    for (const Vector& vertex : placed.vertices) {
        if (vertex.z > 1e-6)
            continue;
        left = std::min(left, vertex.x);
        right = std::max(right, vertex.x);
        front = std::min(front, vertex.y);
        back = std::max(back, vertex.y);
    }
    QVERIFY(left < centre.x && centre.x < right);
    QVERIFY(front < centre.y && centre.y < back);

    // A tower that leans so much that it falls off its foot, which is larger than its sides.
    const Mesh leaning = [] {
        Mesh mesh = box({-10, -10, 0}, {10, 10, 8});
        for (Vector& vertex : mesh.vertices)
            vertex.x += 4 * vertex.z;
        return mesh;
    }();
    const RigidTransform placement = placementOnPlatform(leaning);
    QVERIFY(placement.radians() > 0.1);
}

void tst_Placement::takesTheSidesOfItsHull()
{
    // A table: four legs make its largest side.
    Mesh table = box({-50, -30, 40}, {50, 30, 42});
    for (const double x : {-48.0, 48.0}) {
        for (const double y : {-28.0, 28.0})
            table = both(table, box({x - 2, y - 2, 0}, {x + 2, y + 2, 40}));
    }
    for (const double radians : {0.0, 1.0}) {
        const Mesh placed =
            placedOnPlatform(transformed(table, RigidTransform::turning(Vector{1, 1, 0}, radians)));
        COMPARE_NEAR(boundingBox(placed).maximum.z, 42, 1e-6);
    }
}

void tst_Placement::seesThroughNoise()
{
    Dice dice;
    Mesh mesh = prism({{0, 0, 0}, {30, 0, 0}, {35, 20, 0}, {10, 30, 0}}, 8);
    // Many points on the sides, none of which is flat any more.
    const PointCloud points = pointsOfMesh(mesh, 3000, 0.02);
    for (const Vector& point : points.positions) {
        const auto first = std::uint32_t(mesh.vertices.size());
        for (int corner = 0; corner < 3; ++corner)
            mesh.vertices.push_back(point + 0.01 * dice.noiseVector());
        mesh.triangles.push_back({first, first + 1, first + 2});
    }
    const RigidTransform tilt = RigidTransform::turning(Vector{1, 0, 0}, 0.3);
    const Mesh placed = placedOnPlatform(transformed(mesh, tilt));
    QCOMPARE(boundingBox(placed).minimum.z, 0.0);
    COMPARE_NEAR(boundingBox(placed).maximum.z, 8, 0.5);
}

void tst_Placement::takesAMeshThatIsNotClosed()
{
    Mesh open = tall();
    open.triangles.pop_back();
    const Mesh placed =
        placedOnPlatform(transformed(open, RigidTransform::turning(Vector{1, 2, 3}, 0.4)));
    COMPARE_NEAR(boundingBox(placed).maximum.z, 10, 1e-9);
}

void tst_Placement::keepsItsPlaceAbovePlatform()
{
    const RigidTransform before =
        RigidTransform::moving({100, -200, 300}) * RigidTransform::turning(Vector{1, 2, 3}, 0.4);
    const Vector centre = centreOf(placedOnPlatform(transformed(tall(), before)));
    COMPARE_NEAR(centre.x, 100, 1e-6);
    COMPARE_NEAR(centre.y, -200, 1e-6);
    COMPARE_NEAR(centre.z, 5, 1e-6);
}

void tst_Placement::tellsTheTransform()
{
    const Mesh mesh = transformed(tall(), RigidTransform::turning(Vector{1, 2, 3}, 0.4));
    const Mesh moved = transformed(mesh, placementOnPlatform(mesh));
    const Mesh placed = placedOnPlatform(mesh);
    for (std::size_t vertex = 0; vertex < moved.vertices.size(); ++vertex)
        QVERIFY(length(moved.vertices[vertex] - placed.vertices[vertex]) < 1e-9);
}

void tst_Placement::placesABall()
{
    const Mesh placed = placedOnPlatform(ball(20));
    COMPARE_NEAR(boundingBox(placed).minimum.z, 0, 1e-12);
    COMPARE_NEAR(boundingBox(placed).maximum.z, 40, 0.2);
}

void tst_Placement::refusesWhatIsFlat_data()
{
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("z");

    QTest::newRow("a triangle") << 1.0 << 0.0;
    QTest::newRow("an upright one") << 0.0 << 1.0;
    QTest::newRow("a line") << 0.0 << 0.0;
}

void tst_Placement::refusesWhatIsFlat()
{
    QFETCH(double, y);
    QFETCH(double, z);
    const Mesh mesh{{{0, 0, 0}, {1, 0, 0}, {2, y, z}, {3, 2 * y, 3 * z}}, {{0, 1, 2}, {1, 3, 2}}};
    QCOMPARE(thrownBy([&] { placedOnPlatform(mesh); }),
             std::string("GeometryError: The mesh is flat: it cannot stand"));
}

void tst_Placement::refusesAnEmptyMesh()
{
    QCOMPARE(thrownBy([&] { placedOnPlatform({}); }), std::string("EmptyError: The mesh is empty"));
    QCOMPARE(thrownBy([&] {
                 placedOnPlatform({{{1, 2, 3}, {2, 3, 5}}, {}});
             }),
             std::string("EmptyError: The mesh is empty"));
}

void tst_Placement::tellsItsProgressAndIsCanceled()
{
    ProgressLog log;
    placedOnPlatform(tall(), log.progress());
    QVERIFY(log.isRising());
    for (int at = 1; at <= int(log.told.size()); ++at) {
        ProgressLog canceled(at);
        QCOMPARE(thrownBy([&] { placedOnPlatform(tall(), canceled.progress()); }),
                 std::string("Canceled"));
    }
}

QTEST_GUILESS_MAIN(tst_Placement)
#include "tst_placement.moc"
