#include "shapes.h"

#include <QtTest>

using namespace shapes;

class tst_Mesh : public QObject
{
    Q_OBJECT

private slots:
    void measuresABox();
    void measuresABallAndATorus();
    void measuresFarAway();
    void hasANegativeVolumeInsideOut();
    void subtractsACavity();
    void isClosedWhereEachEdgeHasTwoSides_data();
    void isClosedWhereEachEdgeHasTwoSides();
    void hasABoundingBoxOfItsVertices();
    void joinsClouds();
};

void tst_Mesh::measuresABox()
{
    const Mesh mesh = box({-1, 2, 3}, {2, 4, 8});
    COMPARE_NEAR(volume(mesh), 30, 1e-12);
    COMPARE_NEAR(area(mesh), 62, 1e-12);
    QVERIFY(isClosed(mesh));
}

void tst_Mesh::measuresABallAndATorus()
{
    COMPARE_NEAR(volume(ball(10, 200)) / (4.0 / 3 * kPi * 1000), 1, 1e-3);
    COMPARE_NEAR(area(ball(10, 200)) / (4 * kPi * 100), 1, 1e-3);
    COMPARE_NEAR(volume(torus(20, 5, 200)) / (2 * kPi * kPi * 20 * 25), 1, 1e-3);
}

void tst_Mesh::measuresFarAway()
{
    COMPARE_NEAR(volume(box({1e6, 1e6, 1e6}, {1e6 + 1, 1e6 + 1, 1e6 + 1})), 1, 1e-6);
}

void tst_Mesh::hasANegativeVolumeInsideOut()
{
    COMPARE_NEAR(volume(insideOut(cube(2))), -8, 1e-12);
}

void tst_Mesh::subtractsACavity()
{
    COMPARE_NEAR(volume(both(cube(4), insideOut(cube(2)))), 64 - 8, 1e-12);
}

void tst_Mesh::isClosedWhereEachEdgeHasTwoSides_data()
{
    QTest::addColumn<QByteArray>("change");
    QTest::addColumn<bool>("expected");

    QTest::newRow("a cube") << QByteArray() << true;
    QTest::newRow("inside out") << QByteArray("inside out") << true;
    QTest::newRow("two cubes") << QByteArray("two") << true;
    QTest::newRow("vertices that nothing uses") << QByteArray("unused") << true;
    QTest::newRow("a triangle is missing") << QByteArray("missing") << false;
    QTest::newRow("a triangle is turned over") << QByteArray("turned over") << false;
    QTest::newRow("a triangle is there twice") << QByteArray("twice") << false;
    QTest::newRow("a triangle without an area") << QByteArray("degenerate") << false;
    QTest::newRow("no vertices are shared") << QByteArray("apart") << false;
    QTest::newRow("no triangles") << QByteArray("none") << false;
}

void tst_Mesh::isClosedWhereEachEdgeHasTwoSides()
{
    QFETCH(QByteArray, change);
    QFETCH(bool, expected);
    Mesh mesh = cube(2);
    if (change == "inside out")
        mesh = insideOut(mesh);
    else if (change == "two")
        mesh = both(mesh, transformed(mesh, RigidTransform::moving({5, 0, 0})));
    else if (change == "unused")
        mesh.vertices.push_back({9, 9, 9});
    else if (change == "missing")
        mesh.triangles.pop_back();
    else if (change == "turned over")
        std::swap(mesh.triangles[3][0], mesh.triangles[3][1]);
    else if (change == "twice")
        mesh.triangles.push_back(mesh.triangles[3]);
    else if (change == "degenerate")
        mesh.triangles.push_back({1, 1, 2});
    else if (change == "apart")
        mesh = takenApart(mesh);
    else if (change == "none")
        mesh.triangles.clear();
    QCOMPARE(isClosed(mesh), expected);
}

void tst_Mesh::hasABoundingBoxOfItsVertices()
{
    const Box bounds = boundingBox(box({-1, 2, 3}, {2, 4, 8}));
    QVERIFY((bounds.minimum == Vector{-1, 2, 3}));
    QVERIFY((bounds.maximum == Vector{2, 4, 8}));
    QCOMPARE(thrownBy([] { boundingBox(Mesh()); }), std::string("EmptyError: The mesh is empty"));
    QCOMPARE(thrownBy([] { boundingBox(PointCloud()); }),
             std::string("EmptyError: The point cloud is empty"));
    const Box ofOne = boundingBox(PointCloud{{{1, 2, 3}}, {}, {}});
    QVERIFY(ofOne.minimum == ofOne.maximum);
}

void tst_Mesh::joinsClouds()
{
    const PointCloud plain{{{1, 0, 0}}, {}, {}};
    const PointCloud full{{{2, 0, 0}}, {{0, 0, 1}}, {{1, 2, 3}}};
    QVERIFY(areSame(joined(full, full),
                    {{{2, 0, 0}, {2, 0, 0}}, {{0, 0, 1}, {0, 0, 1}}, {{1, 2, 3}, {1, 2, 3}}}));
    QVERIFY(areSame(joined(plain, full), {{{1, 0, 0}, {2, 0, 0}}, {}, {}}));
    QVERIFY(areSame(joined(PointCloud(), full), full));
    QVERIFY(areSame(joined(full, PointCloud()), full));
}

QTEST_GUILESS_MAIN(tst_Mesh)
#include "tst_mesh.moc"
