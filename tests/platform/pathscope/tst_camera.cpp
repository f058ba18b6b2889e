#include <pathscope/camera.h>

#include <QTest>

#include <cmath>
#include <limits>
#include <vector>

using Orvane::BoundingBox;
using pathscope::Camera;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr BoundingBox kPart = {50, 60, 0, 150, 140, 97};

std::vector<QVector3D> cornersOf(const BoundingBox& box)
{
    std::vector<QVector3D> corners;
    for (const float x : {box.xMin, box.xMax}) {
        for (const float y : {box.yMin, box.yMax}) {
            for (const float z : {box.zMin, box.zMax})
                corners.emplace_back(x, y, z);
        }
    }
    return corners;
}

/** Where a point comes to lie: -1 to 1 in all three directions when it is seen. */
QVector3D clipped(const Camera& camera, QVector3D point, QSizeF window, bool orthographic,
                  const BoundingBox& world = kPart)
{
    return camera.projection(world, window, orthographic) * camera.view() * point;
}

/** In logical pixels from the top left. */
QPointF pixelOf(const Camera& camera, QVector3D point, QSizeF window, bool orthographic)
{
    const QVector3D at = clipped(camera, point, window, orthographic);
    return {(at.x() + 1.0) / 2 * window.width(), (1.0 - at.y()) / 2 * window.height()};
}

bool isFinite(const QVector3D& v)
{
    return std::isfinite(v.x()) && std::isfinite(v.y()) && std::isfinite(v.z());
}

bool isFinite(const QMatrix4x4& matrix)
{
    for (int i = 0; i < 16; ++i) {
        if (!std::isfinite(matrix.constData()[i]))
            return false;
    }
    return true;
}

bool isSane(const Camera& camera, QSizeF window)
{
    return isFinite(camera.eye()) && isFinite(camera.target()) && isFinite(camera.view()) &&
           isFinite(camera.projection(kPart, window, true)) &&
           isFinite(camera.projection(kPart, window, false)) && camera.distance() > 0 &&
           camera.elevation() >= -90 && camera.elevation() <= 90 && std::isfinite(camera.azimuth());
}

double distanceOf(QPointF a, QPointF b)
{
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

/** A camera that stands askew, with the part in sight. */
Camera lookingAtThePart(QSizeF window, bool orthographic)
{
    Camera camera;
    camera.orbit({37, -11});
    camera.fit(kPart, window, orthographic);
    return camera;
}

} // namespace

Q_DECLARE_METATYPE(BoundingBox)

class tst_Camera : public QObject
{
    Q_OBJECT

private slots:
    void aFitShowsAllCorners_data();
    void aFitShowsAllCorners();
    void aFitOfNonsenseChangesNothing_data();
    void aFitOfNonsenseChangesNothing();
    void presetsLookWhereTheySay_data();
    void presetsLookWhereTheySay();
    void presetsOnlyTurn();
    void upIsUpFromEverySide_data();
    void upIsUpFromEverySide();
    void aDragTurns();
    void turningStopsStraightAboveAndBelow();
    void turningAroundStaysNearZero();
    void aPanKeepsThePointUnderTheMouse_data();
    void aPanKeepsThePointUnderTheMouse();
    void aZoomKeepsThePointUnderTheCursor_data();
    void aZoomKeepsThePointUnderTheCursor();
    void aZoomChangesTheSizeByItsFactor();
    void aZoomEndsSomewhere();
    void projectionsShowTheTargetInTheSameSize();
    void planesEncloseTheWorld_data();
    void planesEncloseTheWorld();
    void aPixelIsAsLargeAsItSays();
    void noInputMakesNonsense_data();
    void noInputMakesNonsense();
    void camerasAreComparedByAllTheyHold();
};

void tst_Camera::aFitShowsAllCorners_data()
{
    QTest::addColumn<BoundingBox>("box");
    QTest::addColumn<QSizeF>("window");
    QTest::addColumn<bool>("orthographic");
    QTest::addColumn<bool>("fillsTheWindow");

    struct Box
    {
        const char* name;
        BoundingBox box;
        bool fills;
    };
    const std::vector<Box> boxes = {
        {"a part", kPart, true},
        {"a plate", {0, 0, 0, 300, 200, 0.2F}, true},
        {"a tower", {10, 10, 0, 12, 12, 300}, true},
        {"a line", {10, 10, 0.2F, 210, 10, 0.2F}, false},
        {"a point", {10, 10, 5, 10, 10, 5}, false},
        {"nothing at the origin", {}, false},
        {"a grain", {1, 1, 1, 1.01F, 1.01F, 1.01F}, false},
        {"a box as large as a hall", {-9e5F, -9e5F, 0, 9e5F, 9e5F, 9e5F}, true},
    };
    const std::vector<std::pair<const char*, QSizeF>> windows = {
        {"a usual window", {800, 600}},
        {"a wide one", {2000, 100}},
        {"a high one", {50, 1500}},
        {"a pixel", {1, 1}},
    };
    for (const Box& box : boxes) {
        for (const auto& window : windows) {
            for (const bool orthographic : {false, true}) {
                const QString name = QStringLiteral("%1 in %2, %3")
                                         .arg(QLatin1String(box.name), QLatin1String(window.first),
                                              orthographic ? QStringLiteral("orthographic")
                                                           : QStringLiteral("perspective"));
                QTest::newRow(qPrintable(name))
                    << box.box << window.second << orthographic << box.fills;
            }
        }
    }
}

void tst_Camera::aFitShowsAllCorners()
{
    QFETCH(BoundingBox, box);
    QFETCH(QSizeF, window);
    QFETCH(bool, orthographic);
    QFETCH(bool, fillsTheWindow);

    for (const auto preset : {Camera::Top, Camera::Front, Camera::Side, Camera::Isometric}) {
        Camera camera;
        camera.setPreset(preset);
        camera.orbit({3, 2});
        camera.fit(box, window, orthographic);

        float most = 0;
        for (const QVector3D& corner : cornersOf(box)) {
            const QVector3D at = clipped(camera, corner, window, orthographic, box);
            most = std::max({most, std::abs(at.x()), std::abs(at.y())});
            QVERIFY2(std::abs(at.z()) <= 1, qPrintable(QString::number(at.z())));
        }
        // Inside, with a margin, but not lost in the window either.
        QVERIFY2(most < 0.96F, qPrintable(QString::number(most)));
        if (fillsTheWindow)
            QVERIFY2(most > 0.75F, qPrintable(QString::number(most)));
    }
}

void tst_Camera::aFitOfNonsenseChangesNothing_data()
{
    QTest::addColumn<BoundingBox>("box");

    QTest::newRow("turned inside out") << BoundingBox{10, 10, 10, 0, 0, 0};
    QTest::newRow("one side turned inside out") << BoundingBox{0, 10, 0, 10, 0, 10};
    QTest::newRow("not a number") << BoundingBox{0, 0, 0, kNaN, 10, 10};
}

void tst_Camera::aFitOfNonsenseChangesNothing()
{
    QFETCH(BoundingBox, box);
    const Camera before = lookingAtThePart({800, 600}, false);

    Camera camera = before;
    camera.fit(box, {800, 600}, false);

    QVERIFY(camera == before);
}

void tst_Camera::presetsLookWhereTheySay_data()
{
    QTest::addColumn<int>("preset");
    QTest::addColumn<QVector3D>("fromTarget");

    const float third = 1 / std::sqrt(3.0F);
    QTest::newRow("top") << int(Camera::Top) << QVector3D(0, 0, 1);
    QTest::newRow("front") << int(Camera::Front) << QVector3D(0, -1, 0);
    QTest::newRow("side") << int(Camera::Side) << QVector3D(1, 0, 0);
    QTest::newRow("isometric") << int(Camera::Isometric) << QVector3D(third, -third, third);
}

void tst_Camera::presetsLookWhereTheySay()
{
    QFETCH(int, preset);
    QFETCH(QVector3D, fromTarget);
    Camera camera = lookingAtThePart({800, 600}, false);

    camera.setPreset(static_cast<Camera::Preset>(preset));

    const QVector3D direction = (camera.eye() - camera.target()) / camera.distance();
    QVERIFY((direction - fromTarget).length() < 1e-4F);
}

void tst_Camera::presetsOnlyTurn()
{
    Camera camera = lookingAtThePart({800, 600}, false);
    const QVector3D target = camera.target();
    const float distance = camera.distance();

    camera.setPreset(Camera::Side);

    QCOMPARE(camera.target(), target);
    QCOMPARE(camera.distance(), distance);
}

void tst_Camera::upIsUpFromEverySide_data()
{
    QTest::addColumn<int>("preset");
    QTest::addColumn<QVector3D>("right");
    QTest::addColumn<QVector3D>("up");

    const QVector3D x(1, 0, 0);
    const QVector3D y(0, 1, 0);
    const QVector3D z(0, 0, 1);
    QTest::newRow("top") << int(Camera::Top) << x << y;
    QTest::newRow("front") << int(Camera::Front) << x << z;
    QTest::newRow("side") << int(Camera::Side) << y << z;
}

void tst_Camera::upIsUpFromEverySide()
{
    QFETCH(int, preset);
    QFETCH(QVector3D, right);
    QFETCH(QVector3D, up);
    Camera camera;
    camera.setPreset(static_cast<Camera::Preset>(preset));

    QVERIFY((camera.view().row(0).toVector3D() - right).length() < 1e-4F);
    QVERIFY((camera.view().row(1).toVector3D() - up).length() < 1e-4F);
    QVERIFY((camera.view() * camera.target() - QVector3D(0, 0, -camera.distance())).length() <
            1e-3F);
}

void tst_Camera::aDragTurns()
{
    Camera camera;
    camera.setPreset(Camera::Front);

    camera.orbit({100, 0});
    QVERIFY2(camera.azimuth() < -10, "A drag to the right shows what is on the left");
    QCOMPARE(camera.elevation(), 0.0F);

    camera.orbit({0, 50});
    QVERIFY2(camera.elevation() > 5, "A drag downwards shows the top");
}

void tst_Camera::turningStopsStraightAboveAndBelow()
{
    Camera camera;
    camera.orbit({0, 1e6});
    QCOMPARE(camera.elevation(), 90.0F);
    camera.orbit({0, -1e6});
    QCOMPARE(camera.elevation(), -90.0F);
    QVERIFY(isSane(camera, {800, 600}));
}

void tst_Camera::turningAroundStaysNearZero()
{
    Camera camera;
    camera.orbit({123456.7, 0});
    QVERIFY(std::abs(camera.azimuth()) <= 180);
}

void tst_Camera::aPanKeepsThePointUnderTheMouse_data()
{
    QTest::addColumn<bool>("orthographic");

    QTest::newRow("perspective") << false;
    QTest::newRow("orthographic") << true;
}

void tst_Camera::aPanKeepsThePointUnderTheMouse()
{
    QFETCH(bool, orthographic);
    const QSizeF window(800, 600);
    Camera camera = lookingAtThePart(window, orthographic);
    const QVector3D point = camera.target();
    const QPointF before = pixelOf(camera, point, window, orthographic);
    const QPointF drag(120, -75);

    camera.pan(drag, window, orthographic);

    QVERIFY(distanceOf(pixelOf(camera, point, window, orthographic), before + drag) < 0.05);
}

void tst_Camera::aZoomKeepsThePointUnderTheCursor_data()
{
    QTest::addColumn<bool>("orthographic");
    QTest::addColumn<double>("factor");

    for (const bool orthographic : {false, true}) {
        for (const double factor : {0.3, 0.9, 1.1, 4.0}) {
            QTest::newRow(qPrintable(QStringLiteral("%1 by %2")
                                         .arg(orthographic ? QStringLiteral("orthographic")
                                                           : QStringLiteral("perspective"))
                                         .arg(factor)))
                << orthographic << factor;
        }
    }
}

void tst_Camera::aZoomKeepsThePointUnderTheCursor()
{
    QFETCH(bool, orthographic);
    QFETCH(double, factor);
    const QSizeF window(800, 600);
    Camera camera = lookingAtThePart(window, orthographic);
    // As far away as the target, to the right of it and above.
    const QMatrix4x4 view = camera.view();
    const QVector3D point =
        camera.target() + view.row(0).toVector3D() * 17 + view.row(1).toVector3D() * 9;
    const QPointF cursor = pixelOf(camera, point, window, orthographic);

    camera.zoom(float(factor), cursor, window, orthographic);

    QVERIFY(distanceOf(pixelOf(camera, point, window, orthographic), cursor) < 0.05);
}

void tst_Camera::aZoomChangesTheSizeByItsFactor()
{
    const QSizeF window(800, 600);
    Camera camera = lookingAtThePart(window, true);
    const float before = camera.millimetresPerPixel(window);

    camera.zoom(2, {100, 100}, window, true);

    QVERIFY(std::abs(before / camera.millimetresPerPixel(window) - 2) < 1e-4F);
}

void tst_Camera::aZoomEndsSomewhere()
{
    const QSizeF window(800, 600);
    for (const float factor : {1e-30F, 0.1F, 10.0F, 1e30F}) {
        Camera camera = lookingAtThePart(window, false);
        for (int i = 0; i < 100; ++i)
            camera.zoom(factor, {799, 0}, window, false);
        QVERIFY(isSane(camera, window));
        const Camera end = camera;
        camera.zoom(factor, {799, 0}, window, false);
        QVERIFY2(camera == end, "At the end nothing moves any more");
    }
}

void tst_Camera::projectionsShowTheTargetInTheSameSize()
{
    const QSizeF window(800, 600);
    const Camera camera = lookingAtThePart(window, false);
    const QVector3D beside = camera.target() + camera.view().row(0).toVector3D() * 20;

    const QPointF inPerspective = pixelOf(camera, beside, window, false);
    const QPointF orthographic = pixelOf(camera, beside, window, true);

    QVERIFY(distanceOf(inPerspective, {400, 300}) > 20);
    QVERIFY(distanceOf(inPerspective, orthographic) < 0.05);
}

void tst_Camera::planesEncloseTheWorld_data()
{
    aPanKeepsThePointUnderTheMouse_data();
}

void tst_Camera::planesEncloseTheWorld()
{
    QFETCH(bool, orthographic);
    const QSizeF window(800, 600);
    const BoundingBox world = {-50, -50, -1, 350, 350, 400};
    Camera camera = lookingAtThePart(window, orthographic);
    for (int i = 0; i < 12; ++i) {
        camera.orbit({71, i % 2 == 0 ? 40.0 : -55.0});
        camera.zoom(i % 3 == 0 ? 2.5F : 0.7F, {300, 200}, window, orthographic);
        for (const QVector3D& corner : cornersOf(world)) {
            const float depth = -(camera.view() * corner).z();
            // In perspective, what lies behind the eye has no place between the planes.
            if (!orthographic && depth < camera.distance() * 0.05F)
                continue;
            const float z = clipped(camera, corner, window, orthographic, world).z();
            QVERIFY2(z >= -1 && z <= 1, qPrintable(QString::number(z)));
        }
    }
}

void tst_Camera::aPixelIsAsLargeAsItSays()
{
    const QSizeF window(640, 480);
    const Camera camera = lookingAtThePart(window, true);
    const float millimetres = camera.millimetresPerPixel(window);

    const QVector3D point = camera.target() + camera.view().row(1).toVector3D() * millimetres * 10;

    QVERIFY(distanceOf(pixelOf(camera, point, window, true), {320, 230}) < 0.01);
}

void tst_Camera::noInputMakesNonsense_data()
{
    QTest::addColumn<double>("number");

    QTest::newRow("not a number") << double(kNaN);
    QTest::newRow("infinity") << double(kInfinity);
    QTest::newRow("minus infinity") << -double(kInfinity);
    QTest::newRow("the greatest double") << std::numeric_limits<double>::max();
    QTest::newRow("the greatest float") << double(std::numeric_limits<float>::max());
    QTest::newRow("the least double") << std::numeric_limits<double>::lowest();
    QTest::newRow("the smallest double") << std::numeric_limits<double>::denorm_min();
    QTest::newRow("0") << 0.0;
    QTest::newRow("-1") << -1.0;
}

void tst_Camera::noInputMakesNonsense()
{
    QFETCH(double, number);
    const auto asFloat = static_cast<float>(std::clamp<double>(
        number, std::numeric_limits<float>::lowest(), std::numeric_limits<float>::max()));
    const float single = std::isfinite(number) ? asFloat : static_cast<float>(number);
    const QSizeF window(800, 600);
    const QSizeF odd(number, number);
    for (const bool orthographic : {false, true}) {
        const Camera before = lookingAtThePart(window, orthographic);
        const auto check = [&](auto change) {
            Camera camera = before;
            change(camera);
            return isSane(camera, window) && isSane(camera, odd) && isSane(camera, {1, 1});
        };
        QVERIFY(check([&](Camera& c) { c.orbit({number, number}); }));
        QVERIFY(check([&](Camera& c) { c.pan({number, number}, window, orthographic); }));
        QVERIFY(check([&](Camera& c) { c.pan({1, 1}, odd, orthographic); }));
        QVERIFY(check([&](Camera& c) { c.zoom(single, {1, 1}, window, orthographic); }));
        QVERIFY(check([&](Camera& c) { c.zoom(2, {number, 1}, window, orthographic); }));
        QVERIFY(check([&](Camera& c) { c.zoom(2, {1, 1}, odd, orthographic); }));
        QVERIFY(check([&](Camera& c) { c.fit(kPart, odd, orthographic); }));
        QVERIFY(check([&](Camera& c) {
            c.fit({single, single, single, single, single, single}, window, orthographic);
        }));
        QVERIFY(check([&](Camera& c) {
            c.fit({-kInfinity, -kInfinity, 0, kInfinity, single, kInfinity}, window, orthographic);
        }));
        const BoundingBox oddWorld = {0, 0, 0, single, single, single};
        QVERIFY(isFinite(before.projection(oddWorld, window, orthographic)));
        QVERIFY(std::isfinite(before.millimetresPerPixel(odd)));
    }
}

void tst_Camera::camerasAreComparedByAllTheyHold()
{
    const Camera one;
    QVERIFY(one == Camera());

    Camera turned;
    turned.orbit({1, 0});
    Camera raised;
    raised.orbit({0, 1});
    Camera moved;
    moved.pan({1, 0}, {100, 100}, false);
    Camera nearer;
    nearer.zoom(2, {50, 50}, {100, 100}, false);
    for (const Camera& other : {turned, raised, moved, nearer})
        QVERIFY(one != other);
}

QTEST_GUILESS_MAIN(tst_Camera)
#include "tst_camera.moc"
