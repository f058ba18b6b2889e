#include "shapes.h"

#include <geometry/rigid_transform.h>

#include <QtTest>

using namespace shapes;

namespace {

double distance(const Vector& a, const Vector& b)
{
    return length(a - b);
}

} // namespace

class tst_RigidTransform : public QObject
{
    Q_OBJECT

private slots:
    void changesNothingAsMade();
    void turnsCounterClockwiseAgainstTheAxis();
    void takesAnAxisOfAnyLength();
    void turnsOneDirectionToAnother_data();
    void turnsOneDirectionToAnother();
    void doesTheRightOneFirst();
    void isUndoneByItsInverse();
    void movesCloudsAndMeshes();
};

void tst_RigidTransform::changesNothingAsMade()
{
    const RigidTransform none;
    QVERIFY((none.point({1, 2, 3}) == Vector{1, 2, 3}));
    QCOMPARE(none.radians(), 0.0);
}

void tst_RigidTransform::turnsCounterClockwiseAgainstTheAxis()
{
    const RigidTransform turn = RigidTransform::turning(Vector{0, 0, 1}, kPi / 2);
    QVERIFY(distance(turn.point({1, 0, 5}), {0, 1, 5}) < 1e-12);
    COMPARE_NEAR(turn.radians(), kPi / 2, 1e-12);
}

void tst_RigidTransform::takesAnAxisOfAnyLength()
{
    for (const double size : {1e-200, 1.0, 1e200}) {
        const RigidTransform turn = RigidTransform::turning(Vector{size, 0, 0}, kPi / 2);
        QVERIFY(distance(turn.point({0, 1, 0}), {0, 0, 1}) < 1e-12);
    }
}

void tst_RigidTransform::turnsOneDirectionToAnother_data()
{
    QTest::addColumn<double>("x");
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("z");
    QTest::addColumn<double>("radians");

    QTest::newRow("the same") << 0.0 << 0.0 << 3.0 << 0.0;
    QTest::newRow("across") << 2.0 << 0.0 << 0.0 << kPi / 2;
    QTest::newRow("opposite") << 0.0 << 0.0 << -1.0 << kPi;
    QTest::newRow("nearly opposite") << 1e-12 << 0.0 << -1.0 << kPi;
    QTest::newRow("oblique") << 1.0 << 1.0 << 1.0 << std::acos(1 / std::sqrt(3.0));
}

void tst_RigidTransform::turnsOneDirectionToAnother()
{
    QFETCH(double, x);
    QFETCH(double, y);
    QFETCH(double, z);
    QFETCH(double, radians);
    const Vector to{x, y, z};
    const RigidTransform turn = RigidTransform::turning(Vector{0, 0, 2}, to);
    QVERIFY(distance(turn.direction({0, 0, 1}), normalized(to)) < 1e-9);
    COMPARE_NEAR(turn.radians(), radians, 1e-6);
    QVERIFY(turn.translation == Vector());
}

void tst_RigidTransform::doesTheRightOneFirst()
{
    const RigidTransform turn = RigidTransform::turning(Vector{0, 0, 1}, kPi / 2);
    const RigidTransform move = RigidTransform::moving({10, 0, 0});
    QVERIFY(distance((turn * move).point({0, 0, 0}), {0, 10, 0}) < 1e-12);
    QVERIFY(distance((move * turn).point({0, 0, 0}), {10, 0, 0}) < 1e-12);
    // Directions are not moved.
    QVERIFY(distance((move * turn).direction({1, 0, 0}), {0, 1, 0}) < 1e-12);
}

void tst_RigidTransform::isUndoneByItsInverse()
{
    const RigidTransform transform =
        RigidTransform::moving({1, -2, 3}) * RigidTransform::turning(Vector{1, 2, 3}, 0.7);
    for (const Vector& point : {Vector{0, 0, 0}, Vector{5, -6, 7}, Vector{1e4, 0, -1e4}})
        QVERIFY(distance(transform.inverse().point(transform.point(point)), point) < 1e-9);
}

void tst_RigidTransform::movesCloudsAndMeshes()
{
    const RigidTransform transform =
        RigidTransform::moving({1, 2, 3}) * RigidTransform::turning(Vector{0, 0, 1}, kPi);
    const PointCloud cloud{{{1, 0, 0}}, {{0, 1, 0}}, {{1, 2, 3}}};
    const PointCloud moved = transformed(cloud, transform);
    QVERIFY(distance(moved.positions[0], {0, 2, 3}) < 1e-12);
    QVERIFY(distance(moved.normals[0], {0, -1, 0}) < 1e-12);
    QVERIFY(moved.colors == cloud.colors);

    const Mesh mesh = transformed(cube(2), transform);
    const Box bounds = boundingBox(mesh);
    QVERIFY(distance(bounds.minimum, {0, 1, 2}) < 1e-12);
    QVERIFY(distance(bounds.maximum, {2, 3, 4}) < 1e-12);
    COMPARE_NEAR(volume(mesh), 8, 1e-12);
}

QTEST_GUILESS_MAIN(tst_RigidTransform)
#include "tst_rigid_transform.moc"
