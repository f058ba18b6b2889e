#include "shapes.h"

#include <geometry/ray_caster.h>

#include <QtTest>

#include <thread>

using namespace shapes;

class tst_RayCaster : public QObject
{
    Q_OBJECT

private slots:
    void meetsACube_data();
    void meetsACube();
    void missesWhatIsNotThere();
    void meetsABallAllAround();
    void meetsTheNearestOfMany();
    void meetsASideEdgeOn();
    void losesNothingBetweenTriangles();
    void passesOverTrianglesWithoutAnArea();
    void seesWhatNothingHides();
    void answersManyThreads();
    void refusesAnEmptyMesh();
};

void tst_RayCaster::meetsACube_data()
{
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("z");

    QTest::newRow("on a side") << 1.0 << 2.0;
    QTest::newRow("between its triangles") << 2.0 << 2.0;
    QTest::newRow("on an edge") << 5.0 << 1.0;
    QTest::newRow("on a corner") << 5.0 << 5.0;
}

void tst_RayCaster::meetsACube()
{
    QFETCH(double, y);
    QFETCH(double, z);
    const Mesh mesh = cube(10);
    const RayCaster caster(mesh);
    // The length of the direction does not matter.
    const auto hit = caster.firstHit({-20, y, z}, {0.01, 0, 0});
    QVERIFY(hit.has_value());
    QVERIFY(length(hit->point - Vector{-5, y, z}) < 1e-9);
    COMPARE_NEAR(hit->distance, 15, 1e-9);
    COMPARE_NEAR(length(hit->normal), 1, 1e-12);
    if (y < 5 && z < 5)
        QVERIFY(length(hit->normal - Vector{-1, 0, 0}) < 1e-12);
    QVERIFY(hit->triangle < mesh.triangles.size());

    // From inside the other side is met, from behind.
    const auto inside = caster.firstHit({0, y / 2, z / 2}, {1, 0, 0});
    QVERIFY(inside.has_value());
    QVERIFY(length(inside->point - Vector{5, y / 2, z / 2}) < 1e-9);
    QVERIFY(length(inside->normal - Vector{1, 0, 0}) < 1e-12);
}

void tst_RayCaster::missesWhatIsNotThere()
{
    const RayCaster caster(cube(10));
    QVERIFY(!caster.firstHit({-20, 5.001, 0}, {1, 0, 0}));
    QVERIFY(!caster.firstHit({-20, 0, 0}, {-1, 0, 0}));
}

void tst_RayCaster::meetsABallAllAround()
{
    const Mesh mesh = ball(20, 64);
    const RayCaster caster(mesh);
    Dice dice;
    for (int ray = 0; ray < 2000; ++ray) {
        const Vector direction = dice.direction();
        const auto hit = caster.firstHit(100.0 * direction, -direction);
        QVERIFY(hit.has_value());
        COMPARE_NEAR(length(hit->point), 20, 0.03);
        COMPARE_NEAR(hit->distance, 80, 0.03);
        QVERIFY(dot(hit->normal, direction) > 0.99);
        // On the triangle that is named.
        const auto& [a, b, c] = mesh.triangles[hit->triangle];
        const Vector corner = mesh.vertices[a];
        const Vector normal =
            normalized(cross(mesh.vertices[b] - corner, mesh.vertices[c] - corner));
        QVERIFY(length(hit->normal - normal) < 1e-9);
        COMPARE_NEAR(dot(hit->point - corner, normal), 0, 1e-9);
    }
}

void tst_RayCaster::meetsTheNearestOfMany()
{
    Mesh row = cube(2);
    for (int number = 1; number < 10; ++number)
        row = both(row, transformed(cube(2), RigidTransform::moving({10.0 * number, 0, 0})));
    const RayCaster caster(row);
    for (int number = 0; number < 10; ++number) {
        const auto hit = caster.firstHit({10.0 * number - 5, 0.3, 0.2}, {1, 0, 0});
        QVERIFY(hit.has_value());
        COMPARE_NEAR(hit->point.x, 10.0 * number - 1, 1e-9);
    }
}

void tst_RayCaster::meetsASideEdgeOn()
{
    const RayCaster caster(cube(10));
    const auto hit = caster.firstHit({-20, 5, 1}, {1, 0, 0});
    QVERIFY(hit.has_value());
    COMPARE_NEAR(hit->point.x, -5, 1e-9);
    // A single triangle, looked at along its plane.
    const RayCaster flat(Mesh{{{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}, {{0, 1, 2}}});
    const auto edge = flat.firstHit({-3, 1, 0}, {1, 0, 0});
    QVERIFY(edge.has_value());
    QVERIFY(length(edge->point - Vector{0, 1, 0}) < 1e-9);
    COMPARE_NEAR(edge->distance, 3, 1e-9);
}

void tst_RayCaster::losesNothingBetweenTriangles()
{
    // At the very edges and corners of a closed mesh.
    const Mesh mesh = transformed(ball(20, 16), RigidTransform::turning(Vector{1, 2, 3}, 0.7));
    const RayCaster caster(mesh);
    for (const auto& [a, b, c] : mesh.triangles) {
        for (const Vector& at : {mesh.vertices[a], 0.5 * (mesh.vertices[a] + mesh.vertices[b]),
                                 0.25 * (mesh.vertices[b] + 3.0 * mesh.vertices[c])}) {
            const auto hit = caster.firstHit({0, 0, 0}, at);
            QVERIFY(hit.has_value());
            COMPARE_NEAR(hit->distance, length(at), 1e-6);
        }
    }
}

void tst_RayCaster::passesOverTrianglesWithoutAnArea()
{
    Mesh mesh = cube(10);
    mesh.vertices.insert(mesh.vertices.end(), {{-9, 0, 0}, {-9, 1, 1}, {-9, 2, 2}});
    mesh.triangles.insert(mesh.triangles.begin(), {{8, 9, 10}, {8, 8, 9}});
    const auto hit = RayCaster(mesh).firstHit({-20, 1, 1}, {1, 0, 0});
    QVERIFY(hit.has_value());
    COMPARE_NEAR(hit->point.x, -5, 1e-9);
    // By the numbers of the mesh, with those that are passed over.
    QVERIFY(hit->triangle >= 2);
    QVERIFY(length(hit->normal - Vector{-1, 0, 0}) < 1e-12);
}

void tst_RayCaster::seesWhatNothingHides()
{
    const RayCaster caster(cube(10));
    const Vector camera{50, 1, 2};
    QVERIFY(caster.isVisible({5, 1, 1}, camera));
    QVERIFY(caster.isVisible({5, 5, 5}, camera));
    QVERIFY(!caster.isVisible({-5, 1, 1}, camera));
    QVERIFY(!caster.isVisible({-20, 1, 1}, camera));
    QVERIFY(caster.isVisible({-20, 50, 1}, camera));
    QVERIFY(caster.isVisible({20, 1, 1}, camera));
    // From side to side, inside, nothing is in the way.
    QVERIFY(caster.isVisible({-5, 1, 1}, {5, 1, 1}));
    QVERIFY(caster.isVisible(camera, camera));
    QVERIFY(caster.isVisible({5, 1, 1}, {5, 1, 1}));

    // Each point of a ball is seen from outside where it faces the eye.
    const Mesh mesh = ball(20, 32);
    const RayCaster ballCaster(mesh);
    const Vector eye{0, 300, 0};
    for (const Vector& vertex : mesh.vertices) {
        const double facing = dot(normalized(vertex), normalized(eye - vertex));
        if (std::abs(facing) > 0.1)
            QCOMPARE(ballCaster.isVisible(vertex, eye), facing > 0);
    }
}

void tst_RayCaster::answersManyThreads()
{
    const RayCaster caster(ball(20, 32));
    std::vector<std::thread> threads;
    std::array<int, 4> hits{};
    for (std::size_t thread = 0; thread < hits.size(); ++thread) {
        threads.emplace_back([&caster, &hits, thread] {
            Dice dice(unsigned(thread + 1));
            for (int ray = 0; ray < 500; ++ray) {
                const Vector direction = dice.direction();
                hits[thread] += caster.firstHit(100.0 * direction, -direction).has_value();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const int count : hits)
        QCOMPARE(count, 500);
}

void tst_RayCaster::refusesAnEmptyMesh()
{
    const std::string expected = "EmptyError: The mesh is empty";
    QCOMPARE(thrownBy([] { RayCaster caster((Mesh())); }), expected);
    QCOMPARE(thrownBy([] { RayCaster caster(Mesh{{{1, 2, 3}}, {{0, 0, 0}}}); }), expected);
}

QTEST_GUILESS_MAIN(tst_RayCaster)
#include "tst_ray_caster.moc"
