#include "scanner_world.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <service/geometry/ray_caster.h>
#include <service/scanner/default_model.h>
#include <service/scanner/line_scan.h>
#include <service/scanner/scanner_settings.h>

#include <rpcwire/json_text.h>

#include <QTest>

#include <algorithm>
#include <cmath>

using namespace trovek;
using namespace trovek::service;
using geometry::Mesh;
using geometry::PointCloud;
using geometry::RayCaster;
using geometry::Vector;

namespace {

/** A scan without noise, by a scanner that is well known. */
LineScan exactScan(int steps)
{
    ScannerSettings settings;
    settings.width = 640;
    settings.height = 480;
    LineScan scan;
    scan.scanner = builtScanner(settings);
    scan.calibration = scan.scanner.truth;
    scan.lasers = {true, true};
    scan.steps = steps;
    scan.pointsAtMost = 1000000;
    return scan;
}

Mesh both(Mesh first, const Mesh& second)
{
    const auto offset = static_cast<std::uint32_t>(first.vertices.size());
    first.vertices.insert(first.vertices.end(), second.vertices.begin(), second.vertices.end());
    for (const auto& [a, b, c] : second.triangles)
        first.triangles.push_back({a + offset, b + offset, c + offset});
    return first;
}

ScannerSettings settingsFrom(const QByteArray& json)
{
    return scannerSettingsFromJson(parsed(json));
}

} // namespace

class tst_LineScan : public QObject
{
    Q_OBJECT

private slots:
    void everyPointIsLitAndSeen_data();
    void everyPointIsLitAndSeen();
    void eachLaserLightsItsPlane();
    void aWallHidesWhatIsBehindIt();
    void theTableTurnsTheRightWay();
    void theSameSeedSeesTheSame();
    void nothingOnTheTableIsAnError();
    void stopsAtTooManyPoints();
    void givesUpWhenAsked();
    void theDefaultModelIsClosedAndStands();
    void settingsHaveDefaults();
    void readsSettings();
    void refusesSettings_data();
    void refusesSettings();
    void aServiceDoesNotStartWithBadSettings_data();
    void aServiceDoesNotStartWithBadSettings();
};

void tst_LineScan::everyPointIsLitAndSeen_data()
{
    QTest::addColumn<bool>("hasPost");

    QTest::newRow("a model by itself") << false;
    QTest::newRow("a ball behind a post, past which the lasers shine") << true;
}

void tst_LineScan::everyPointIsLitAndSeen()
{
    QFETCH(bool, hasPost);
    Mesh post = cube(1);
    for (Vector& vertex : post.vertices)
        vertex = {6 * vertex.x - 3, 10 * vertex.y - 130, 90 * vertex.z};
    const RayCaster model(hasPost ? both(ball(20, {0, 0, 25}), post) : defaultModel());
    LineScan scan = exactScan(1);
    const auto toTable = scan.scanner.truth.turntable->toCamera(0).inverse();
    for (const Laser laser : {kLeftLaser, kRightLaser}) {
        scan.lasers = {laser == kLeftLaser, laser == kRightLaser};
        const PointCloud cloud = scanLines(scan, model, {});
        QVERIFY(cloud.positions.size() > 50);
        const Vector source = toTable.point(scan.scanner.laserSources[laser]);
        for (const Vector& point : cloud.positions) {
            // A little outside, so that the surface itself is not in the way.
            const Vector eyeward = point + 0.01 * normalized(toTable.translation - point);
            const Vector lightward = point + 0.01 * normalized(source - point);
            QVERIFY(model.isVisible(eyeward, toTable.translation));
            QVERIFY(model.isVisible(lightward, source));
        }
    }
}

void tst_LineScan::eachLaserLightsItsPlane()
{
    const RayCaster model(ball(25, {0, 0, 30}));
    LineScan scan = exactScan(1);
    const auto toCamera = scan.scanner.truth.turntable->toCamera(0);
    for (const Laser laser : {kLeftLaser, kRightLaser}) {
        scan.lasers = {laser == kLeftLaser, laser == kRightLaser};
        const LaserPlane& plane = (*scan.scanner.truth.lasers)[laser];
        const PointCloud cloud = scanLines(scan, model, {});
        for (const Vector& point : cloud.positions) {
            QVERIFY(std::abs(dot(plane.normal, toCamera.point(point)) - plane.distance) < 1e-6);
            QVERIFY(std::abs(length(point - Vector{0, 0, 30}) - 25) < 0.05);
        }
    }
}

void tst_LineScan::aWallHidesWhatIsBehindIt()
{
    // A ball in the middle of the table, and a block before it, towards the camera.
    const Mesh behind = ball(10, {0, 0, 20});
    Mesh block = cube(70);
    for (Vector& vertex : block.vertices)
        vertex = vertex + Vector{-35, -90, 0};
    const RayCaster alone(behind);
    const RayCaster covered(both(behind, block));
    const auto onBall = [](const PointCloud& cloud) {
        return std::count_if(cloud.positions.begin(), cloud.positions.end(), [](const Vector& p) {
            return std::abs(length(p - Vector{0, 0, 20}) - 10) < 0.1;
        });
    };
    const auto free = onBall(scanLines(exactScan(1), alone, {}));
    QVERIFY(free > 50);
    // The lasers light the block's sides only, which the camera does not see.
    QVERIFY_EXCEPTION_THROWN(scanLines(exactScan(1), covered, {}), geometry::EmptyError);
    // From the other side it is seen.
    const PointCloud around = scanLines(exactScan(40), covered, {});
    QVERIFY(onBall(around) > free);
}

void tst_LineScan::theTableTurnsTheRightWay()
{
    // A model that is not the same from any side; turned the wrong way its points would not fit.
    const Mesh mesh = defaultModel();
    const RayCaster model(mesh);
    const PointCloud cloud = scanLines(exactScan(16), model, {});
    int beside = 0;
    for (const Vector& point : cloud.positions) {
        const auto hit = model.firstHit(point, point - Vector{0, 0, 18});
        const auto back = model.firstHit(point, Vector{0, 0, 18} - point);
        const double off = std::min(hit ? hit->distance : 1e9, back ? back->distance : 1e9);
        beside += off > 0.05 ? 1 : 0;
    }
    QVERIFY2(beside < int(cloud.positions.size()) / 100, qPrintable(QString::number(beside)));
}

void tst_LineScan::theSameSeedSeesTheSame()
{
    const RayCaster model(ball(25, {0, 0, 30}));
    LineScan scan = exactScan(3);
    scan.lineNoise = 0.2;
    scan.strayLight = 0.01;
    scan.seed = 4;
    const PointCloud first = scanLines(scan, model, {});
    QVERIFY(scanLines(scan, model, {}).positions == first.positions);
    scan.seed = 5;
    QVERIFY(scanLines(scan, model, {}).positions != first.positions);
}

void tst_LineScan::nothingOnTheTableIsAnError()
{
    const RayCaster model(ball(5, {0, 400, 0}));
    QCOMPARE(thrownText([&] { scanLines(exactScan(4), model, {}); }),
             std::string("The scanner saw nothing on the turntable"));
    LineScan dark = exactScan(4);
    dark.lasers = {false, false};
    const RayCaster seen(ball(25, {0, 0, 30}));
    QVERIFY_EXCEPTION_THROWN(scanLines(dark, seen, {}), geometry::EmptyError);
}

void tst_LineScan::stopsAtTooManyPoints()
{
    const RayCaster model(ball(25, {0, 0, 30}));
    LineScan scan = exactScan(1000);
    scan.pointsAtMost = 2000;
    double last = 0;
    const auto progress = [&last](double done) {
        last = done;
        return true;
    };
    QCOMPARE(thrownText([&] { scanLines(scan, model, progress); }),
             std::string("There are more than 2000 points: take fewer pictures"));
    QVERIFY(last < 0.1);
}

void tst_LineScan::givesUpWhenAsked()
{
    const RayCaster model(ball(25, {0, 0, 30}));
    int asked = 0;
    const auto stop = [&asked](double) {
        return ++asked < 3;
    };
    QVERIFY_EXCEPTION_THROWN(scanLines(exactScan(100), model, stop), geometry::Canceled);
    QCOMPARE(asked, 3);
}

void tst_LineScan::theDefaultModelIsClosedAndStands()
{
    const Mesh mesh = defaultModel();
    QVERIFY(isClosed(mesh));
    QVERIFY(volume(mesh) > 50000);
    const geometry::Box box = boundingBox(mesh);
    QCOMPARE(box.minimum.z, 0.0);
    QVERIFY(box.maximum.z > 40 && box.maximum.z < 60);
}

void tst_LineScan::settingsHaveDefaults()
{
    const ScannerSettings settings = settingsFrom("{}");
    QVERIFY(settings.pluggedIn);
    QCOMPARE(settings.width, 1280);
    QCOMPARE(settings.height, 960);
    QCOMPARE(settings.devicePath, std::string("/dev/video-virtual-scanner"));
    QCOMPARE(settings.model.path, std::string());
}

void tst_LineScan::readsSettings()
{
    const ScannerSettings settings = settingsFrom(R"({
        "plugged_in": false, "device_path": "/dev/video7", "version": [2, 0, 13],
        "tolerance": 0.5, "seed": 12, "line_noise": 0.3, "stray_light": 0.01,
        "camera": {"width": 800, "height": 600, "field_of_view": 45, "noise": 3},
        "model": {"path": "/tmp/a.stl", "turn": [0, 0, 90], "position": [1, 2, 3]}})");
    QVERIFY(!settings.pluggedIn);
    QCOMPARE(settings.devicePath, std::string("/dev/video7"));
    QCOMPARE(settings.version[2], 13);
    QCOMPARE(settings.tolerance, 0.5);
    QCOMPARE(settings.seed, 12U);
    QCOMPARE(settings.lineNoise, 0.3);
    QCOMPARE(settings.strayLight, 0.01);
    QCOMPARE(settings.width, 800);
    QCOMPARE(settings.height, 600);
    QCOMPARE(settings.fieldOfView, 45.0);
    QCOMPARE(settings.pictureNoise, 3.0);
    QCOMPARE(settings.model.path, std::string("/tmp/a.stl"));
    // Turned first, moved then.
    const Vector there = settings.model.toTable().point({10, 0, 0});
    QVERIFY(length(there - Vector{1, 12, 3}) < 1e-9);
}

void tst_LineScan::refusesSettings_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("text");

    const auto row = [](const char* name, const char* json, const char* text) {
        QTest::newRow(name) << QByteArray(json) << "Scanner settings: " + QByteArray(text);
    };
    row("a list", "[]", "not an object");
    row("an unknown member", R"({"lasers":3})", "lasers is not a member");
    row("an unknown inner member", R"({"camera":{"zoom":3}})", "camera.zoom is not a member");
    row("no truth", R"({"plugged_in":1})", "plugged_in must be true or false");
    row("no device", R"({"device_path":""})", "device_path must not be empty");
    row("two versions", R"({"version":[1,2]})",
        "version must be three whole numbers, none below 0");
    row("a small picture", R"({"camera":{"width":100}})",
        "camera.width must be a whole number from 320 to 4096");
    row("half a pixel", R"({"camera":{"height":480.5}})",
        "camera.height must be a whole number from 240 to 4096");
    row("too much noise", R"({"line_noise":11})", "line_noise must be a number from 0 to 10");
    row("too much stray light", R"({"stray_light":0.6})",
        "stray_light must be a number from 0 to 0.5");
    row("a camera that is none", R"({"camera":5})", "camera is not an object");
    row("a relative model", R"({"model":{"path":"a.stl"}})", "model.path must be absolute");
    row("a turn of two numbers", R"({"model":{"turn":[1,2]}})",
        "model.turn must be three numbers from -360 to 360");
}

void tst_LineScan::refusesSettings()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, text);
    QCOMPARE(thrownText([&] { settingsFrom(json); }), text.toStdString());
}

void tst_LineScan::aServiceDoesNotStartWithBadSettings_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("text");

    QTest::newRow("no JSON") << QByteArray("hello") << QByteArray("Scanner settings: ");
    QTest::newRow("a wrong member")
        << QByteArray(R"({"seed":-1})")
        << QByteArray("Scanner settings: seed must be a whole number from 0 to 2147483647");
}

void tst_LineScan::aServiceDoesNotStartWithBadSettings()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, text);
    TestLog log;
    ServiceWorld world;
    world.options.scannerFile = world.writeFile(QStringLiteral("scanner.json"), bytes);
    const std::string thrown = thrownText([&] { world.start(); });
    QVERIFY2(thrown.find(text.toStdString()) == 0, thrown.c_str());
    world.options.scannerFile = world.path(QStringLiteral("missing.json"));
    const std::string missing = thrownText([&] { world.start(); });
    QVERIFY2(missing.find("Cannot read the scanner settings") == 0, missing.c_str());
}

QTEST_GUILESS_MAIN(tst_LineScan)
#include "tst_line_scan.moc"
