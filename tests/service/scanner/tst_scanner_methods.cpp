#include "scanner_world.h"
#include "service/raw_client.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <service/geometry/point_cloud_file.h>

#include <QFile>
#include <QImage>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace trovek;
using geometry::PointCloud;
using geometry::Vector;

namespace {

constexpr double kRadius = 25;
const Vector kMiddle{3, 4, 30};
/** Steps of a scan that nobody waits for. */
constexpr int kForLong = 10000;

/** A service whose scanner has a ball on its table. */
struct Fixture
{
    explicit Fixture(const Json::Value& settings = Json::Value(), bool withBall = true)
        : world(settings)
    {
        world.start();
        client.connectToDaemon(world.address());
        if (withBall) {
            const std::string path =
                world.writeMesh(QStringLiteral("ball.ply"), ball(kRadius, kMiddle));
            call("simulate_scanned_model", object("path", path));
        }
    }

    Json::Value call(const char* method, const Json::Value& params = Json::Value())
    {
        return ask(client, method, params);
    }

    std::string errorFrom(const char* method, const Json::Value& params = Json::Value())
    {
        return errorOf([&] { call(method, params); });
    }

    int createCloud() { return call("point_cloud_create").asInt(); }

    int startScan(int cloud, int steps)
    {
        return call("scan", object("point_cloud", cloud, "steps", steps))["id"].asInt();
    }

    /** Runs it to its end. */
    Job conclude(int job)
    {
        if (!QTest::qWaitFor([&] { return client.jobFromID(job).conclusion() != JobNotConcluded; },
                             60000))
            qWarning("The job did not conclude");
        return client.jobFromID(job);
    }

    Job scan(int cloud, int steps = 60) { return conclude(startScan(cloud, steps)); }

    PointCloud download(int id)
    {
        const std::string path = world.emptyFile(QStringLiteral("download.ply"));
        call("point_cloud_save", object("id", id, "path", path, "format", "ply"));
        return geometry::loadPointCloud(path);
    }

    QImage capture(const char* method, const Json::Value& params = object())
    {
        Json::Value all = params;
        all["path"] = world.emptyFile(QStringLiteral("picture.png"));
        call(method, all);
        return QImage::fromData(ServiceWorld::read(all["path"].asString()), "PNG");
    }

    TestLog log;
    ScannerWorld world;
    RecordingTrovek client;
};

/** Pixels where there is much more red than green. */
int redPixels(const QImage& image, int fromX, int toX)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = fromX; x < toX; ++x) {
            const QRgb pixel = image.pixel(x, y);
            count += qRed(pixel) > qGreen(pixel) + 60 ? 1 : 0;
        }
    }
    return count;
}

double brightness(const QImage& image)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            sum += qGreen(image.pixel(x, y));
    }
    return sum / (image.width() * image.height());
}

/** How far the points are from the ball: the mean and its spread; strays are counted apart. */
struct Fit
{
    explicit Fit(const PointCloud& cloud)
    {
        double sum = 0;
        double squares = 0;
        for (const Vector& point : cloud.positions) {
            const double off = length(point - kMiddle) - kRadius;
            if (std::abs(off) > 1) {
                ++strays;
                continue;
            }
            ++points;
            sum += off;
            squares += off * off;
        }
        mean = sum / points;
        spread = std::sqrt(squares / points);
    }

    int points = 0;
    int strays = 0;
    double mean = 0;
    double spread = 0;
};

} // namespace

class tst_ScannerMethods : public QObject
{
    Q_OBJECT

private slots:
    void tellsWhatItIs();
    void remembersItsName();
    void refusesNames_data();
    void refusesNames();
    void takesPictures();
    void lightsUpOneLaserOrBoth();
    void exposesForAsLongAsIsAsked();
    void findsAnExposure();
    void refusesPictures_data();
    void refusesPictures();
    void scansABall();
    void oneLaserSeesLess();
    void moreNoiseSpreadsThePoints();
    void tellsItsProgress();
    void replacesWhatTheCloudHad();
    void refusesScans_data();
    void refusesScans();
    void aScannerIsUsedByOneAtATime();
    void anEmptyTableFailsTheJob();
    void aCanceledScanChangesNothing();
    void aScanWaitsForWorkOnItsCloud();
    void destroyingTheCloudEndsTheScan();
    void hangingUpEndsTheScan();
    void unpluggingEndsTheScan();
    void anUnpluggedScannerAnswersNothing_data();
    void anUnpluggedScannerAnswersNothing();
    void unpluggingIsToldOnce();
    void pluggingInStartsAnew();
    void seesWhatIsPutOnItsTable();
    void refusesModels_data();
    void refusesModels();
    void shutsDownInTheMiddle();
};

void tst_ScannerMethods::tellsWhatItIs()
{
    Fixture f({}, false);
    const Json::Value version = f.call("get_digitizer_version");
    QVERIFY(version.isArray());
    QCOMPARE(version.size(), 3U);
    QCOMPARE(version[0].asInt(), 1);
    QCOMPARE(version[1].asInt(), 2);
    QCOMPARE(version[2].asInt(), 0);
    QCOMPARE(f.call("digitizer_load_name").asString(), std::string("Virtual Scanner"));
    QCOMPARE(f.call("digitizer_camera_device_path").asString(),
             std::string("/dev/video-virtual-scanner"));
    const Json::Value all = f.call("simulated_scanner");
    QVERIFY(all["plugged_in"].asBool());
    QCOMPARE(all["device_path"].asString(), std::string("/dev/video-virtual-scanner"));
    QCOMPARE(all["model"]["path"].asString(), std::string());
    for (const char* part : {"camera", "lasers", "turntable"})
        QVERIFY(all["calibrated"][part].asBool());
}

void tst_ScannerMethods::remembersItsName()
{
    Fixture f({}, false);
    const std::string name = "Größe \"L\"";
    QVERIFY(f.call("digitizer_save_name", object("name", name)).isNull());
    QCOMPARE(f.call("digitizer_load_name").asString(), name);
    f.client.disconnectFromDaemon();
    f.world.stop();
    f.world.start();
    f.client.connectToDaemon(f.world.address());
    QCOMPARE(f.call("digitizer_load_name").asString(), name);
    QVERIFY(f.call("simulated_scanner")["calibrated"]["turntable"].asBool());
}

void tst_ScannerMethods::refusesNames_data()
{
    QTest::addColumn<QByteArray>("name");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("too long") << QByteArray(65, 'x');
    QTest::newRow("a line break") << QByteArray("a\nb");
}

void tst_ScannerMethods::refusesNames()
{
    QFETCH(QByteArray, name);
    Fixture f({}, false);
    QCOMPARE(f.errorFrom("digitizer_save_name", object("name", name.toStdString())),
             std::string("InvalidArgumentError"));
    QCOMPARE(f.errorFrom("digitizer_save_name", object("name", 5)),
             std::string("InvalidArgumentError"));
    QCOMPARE(f.call("digitizer_load_name").asString(), std::string("Virtual Scanner"));
    f.call("digitizer_save_name", object("name", std::string(64, 'x')));
}

void tst_ScannerMethods::takesPictures()
{
    Fixture f;
    const QImage picture = f.capture("captureimage", object("exposure", 20));
    QCOMPARE(picture.size(), QSize(640, 480));
    // The ball is where it is, and the room behind it is dark.
    QVERIFY(qGreen(picture.pixel(330, 300)) > 60);
    QVERIFY(qGreen(picture.pixel(20, 20)) < 25);
    QVERIFY(redPixels(picture, 0, 640) > 100);
    QCOMPARE(f.capture("captureimage", object("exposure", 20)), picture);
}

void tst_ScannerMethods::lightsUpOneLaserOrBoth()
{
    Fixture f;
    const auto red = [&f](bool left, bool right) {
        f.call("digitizer_set_enabled_lasers", object("left", left, "right", right));
        return redPixels(f.capture("captureimage", object("exposure", 15)), 0, 640);
    };
    const int both = red(true, true);
    const int left = red(true, false);
    const int right = red(false, true);
    QCOMPARE(red(false, false), 0);
    QVERIFY(left > 50);
    QVERIFY(right > 50);
    QVERIFY(both > left && both > right);
}

void tst_ScannerMethods::exposesForAsLongAsIsAsked()
{
    Fixture f;
    const double dark = brightness(f.capture("captureimage", object("exposure", 0.1)));
    const double normal = brightness(f.capture("captureimage", object("exposure", 10)));
    const double bright = brightness(f.capture("captureimage", object("exposure", 20.5)));
    const double white = brightness(f.capture("captureimage", object("exposure", 500)));
    QVERIFY(dark < 2);
    QVERIFY(normal > 3 * dark);
    QVERIFY(bright > 1.5 * normal);
    QVERIFY(white > bright);
}

void tst_ScannerMethods::findsAnExposure()
{
    Fixture f;
    f.call("digitizer_set_enabled_lasers", object("left", false, "right", false));
    const std::string path = f.world.emptyFile(QStringLiteral("auto.png"));
    const Json::Value answer = f.call("capture_image_auto_exposure", object("path", path));
    const QImage picture = QImage::fromData(ServiceWorld::read(path), "PNG");
    int brightest = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            brightest = std::max(brightest, qRed(picture.pixel(x, y)));
    }
    QVERIFY2(brightest > 200, qPrintable(QString::number(brightest)));
    const double exposure = answer["exposure"].asDouble();
    QVERIFY2(exposure > 1 && exposure < 200, qPrintable(QString::number(exposure)));
    QCOMPARE(f.capture("captureimage", object("exposure", exposure)), picture);
}

void tst_ScannerMethods::refusesPictures_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("error");

    const auto row = [](const char* name, const char* method, const char* json, const char* error) {
        QTest::newRow(name) << QByteArray(method) << QByteArray(json) << QByteArray(error);
    };
    row("no path", "captureimage", R"({"exposure":10})", "InvalidArgumentError");
    row("no exposure", "captureimage", R"({"path":"/nowhere/a.png"})", "InvalidArgumentError");
    row("too short", "captureimage", R"({"path":"/nowhere/a.png","exposure":0})",
        "InvalidArgumentError");
    row("too long", "captureimage", R"({"path":"/nowhere/a.png","exposure":501})",
        "InvalidArgumentError");
    row("missing file", "captureimage", R"({"path":"/nowhere/a.png","exposure":10})",
        "FileAccessError");
    row("a device", "capture_image_auto_exposure", R"({"path":"/dev/null"})", "FileAccessError");
    row("a relative path", "capture_image_auto_exposure", R"({"path":"a.png"})", "FileAccessError");
    row("one laser only", "digitizer_set_enabled_lasers", R"({"left":true})",
        "InvalidArgumentError");
    row("a laser by number", "digitizer_set_enabled_lasers", R"({"left":1,"right":true})",
        "InvalidArgumentError");
}

void tst_ScannerMethods::refusesPictures()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, error);
    Fixture f({}, false);
    QCOMPARE(f.errorFrom(method.constData(), parsed(json)), error.toStdString());
    // It is free again.
    f.call("digitizer_set_enabled_lasers", object("left", true, "right", true));
}

void tst_ScannerMethods::scansABall()
{
    Fixture f;
    const int cloud = f.createCloud();
    const Job job = f.scan(cloud, 100);
    QCOMPARE(job.failure(), std::string());
    QCOMPARE(job.conclusion(), JobEnded);
    QCOMPARE(job.kind(), std::string("scan"));
    QCOMPARE(job.name(), std::string("Scan"));
    QCOMPARE(job.progress(), 100);
    const Fit fit(f.download(cloud));
    QVERIFY2(fit.points > 10000, qPrintable(QString::number(fit.points)));
    QVERIFY2(std::abs(fit.mean) < 0.04, qPrintable(QString::number(fit.mean)));
    QVERIFY2(fit.spread < 0.1, qPrintable(QString::number(fit.spread)));
    // Stray light is there, and it is little.
    QVERIFY(fit.strays > 0);
    QVERIFY(fit.strays < fit.points / 100);
}

void tst_ScannerMethods::oneLaserSeesLess()
{
    Fixture f;
    const int cloud = f.createCloud();
    const auto points = [&](bool left, bool right) {
        f.call("digitizer_set_enabled_lasers", object("left", left, "right", right));
        f.scan(cloud, 20);
        return Fit(f.download(cloud)).points;
    };
    const int left = points(true, false);
    const int right = points(false, true);
    const int both = points(true, true);
    QVERIFY(left > 500);
    QVERIFY(right > 500);
    QVERIFY(std::abs(both - left - right) < 50);
}

void tst_ScannerMethods::moreNoiseSpreadsThePoints()
{
    Json::Value quiet(Json::objectValue);
    quiet["line_noise"] = 0;
    quiet["stray_light"] = 0;
    Fixture still(quiet);
    int cloud = still.createCloud();
    still.scan(cloud, 10);
    const Fit exact(still.download(cloud));
    QCOMPARE(exact.strays, 0);
    // What is left are the flat triangles of the ball.
    QVERIFY2(exact.spread < 0.05, qPrintable(QString::number(exact.spread)));

    Json::Value loud(Json::objectValue);
    loud["line_noise"] = 0.6;
    loud["stray_light"] = 0.1;
    Fixture noisy(loud);
    cloud = noisy.createCloud();
    noisy.scan(cloud, 10);
    const Fit fit(noisy.download(cloud));
    QVERIFY2(fit.spread > 4 * exact.spread, qPrintable(QString::number(fit.spread)));
    QVERIFY(fit.strays > fit.points / 40);
}

void tst_ScannerMethods::tellsItsProgress()
{
    Fixture f;
    std::vector<int> progress;
    std::vector<std::string> stages;
    int job = 0;
    f.client.onEvent = [&](const std::string& event) {
        if (event != "jobChanged " + std::to_string(job))
            return;
        const Job now = f.client.jobFromID(job);
        progress.push_back(now.progress());
        if (stages.empty() || stages.back() != now.stage())
            stages.push_back(now.stage());
    };
    job = f.startScan(f.createCloud(), 1500);
    QCOMPARE(f.conclude(job).conclusion(), JobEnded);
    QTRY_COMPARE(eventsOf(f.client, "jobConcluded").size(), std::size_t(1));
    QVERIFY(progress.size() >= 2);
    QVERIFY(std::is_sorted(progress.begin(), progress.end()));
    QCOMPARE(progress.back(), 100);
    QVERIFY(std::find(stages.begin(), stages.end(), "Scanning") != stages.end());
    QCOMPARE(stages.back(), std::string("Done"));
}

void tst_ScannerMethods::replacesWhatTheCloudHad()
{
    Fixture f;
    const int cloud = f.createCloud();
    f.scan(cloud, 40);
    const std::size_t first = f.download(cloud).positions.size();
    f.scan(cloud, 20);
    const std::size_t second = f.download(cloud).positions.size();
    QVERIFY(second < 0.6 * double(first));
}

void tst_ScannerMethods::refusesScans_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("error");

    const auto row = [](const char* name, const char* json, const char* error) {
        QTest::newRow(name) << QByteArray(json) << QByteArray(error);
    };
    row("no cloud", R"({"steps":10})", "InvalidArgumentError");
    row("no steps", R"({"point_cloud":1})", "InvalidArgumentError");
    row("no step", R"({"point_cloud":1,"steps":0})", "InvalidArgumentError");
    row("too many steps", R"({"point_cloud":1,"steps":10001})", "InvalidArgumentError");
    row("an unknown cloud", R"({"point_cloud":77,"steps":10})", "UnknownPointCloudError");
    row("a mesh", R"({"point_cloud":2,"steps":10})", "UnknownPointCloudError");
}

void tst_ScannerMethods::refusesScans()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, error);
    Fixture f({}, false);
    QCOMPARE(f.createCloud(), 1);
    QCOMPARE(f.call("mesh_create").asInt(), 2);
    QCOMPARE(f.errorFrom("scan", parsed(json)), error.toStdString());
    f.call("digitizer_set_enabled_lasers", object("left", false, "right", false));
    QCOMPARE(f.errorFrom("scan", object("point_cloud", 1, "steps", 10)),
             std::string("NoLaserError"));
    QVERIFY(eventsOf(f.client, "jobAdded").empty());
}

void tst_ScannerMethods::aScannerIsUsedByOneAtATime()
{
    Fixture f;
    RecordingTrovek other;
    other.connectToDaemon(f.world.address());
    const int cloud = ask(other, "point_cloud_create").asInt();
    const std::string path = f.world.emptyFile(QStringLiteral("busy.png"));
    const int job = f.startScan(f.createCloud(), kForLong);
    const auto otherGets = [&](const char* method, const Json::Value& params) {
        return errorOf([&] { ask(other, method, params); });
    };
    QCOMPARE(otherGets("scan", object("point_cloud", cloud, "steps", 10)),
             std::string("ScannerBusyError"));
    QCOMPARE(otherGets("captureimage", object("path", path, "exposure", 10)),
             std::string("ScannerBusyError"));
    QCOMPARE(otherGets("digitizer_set_enabled_lasers", object("left", true, "right", true)),
             std::string("ScannerBusyError"));
    QCOMPARE(otherGets("create_calibrate_camera_job",
                       object("path", f.world.makeFolder(QStringLiteral("pictures")))),
             std::string("ScannerBusyError"));
    QCOMPARE(otherGets("digitizer_invalidate_user_calibration", object()),
             std::string("ScannerBusyError"));
    QCOMPARE(otherGets("simulate_scanned_model", object()), std::string("ScannerBusyError"));
    // What needs no scanner is done meanwhile.
    QCOMPARE(ask(other, "digitizer_load_name").asString(), std::string("Virtual Scanner"));
    // Any client may cancel a job.
    other.cancelJob(job);
    QCOMPARE(f.conclude(job).conclusion(), JobCanceled);
    QVERIFY(ask(other, "scan", object("point_cloud", cloud, "steps", 5))["id"].asInt() > job);
}

void tst_ScannerMethods::anEmptyTableFailsTheJob()
{
    Fixture f;
    const int cloud = f.createCloud();
    f.scan(cloud, 20);
    const std::size_t before = f.download(cloud).positions.size();
    f.call("simulate_scanned_model", object("position", list({900, 0, 0})));
    const Job job = f.scan(cloud, 20);
    QCOMPARE(job.conclusion(), JobFailed);
    QCOMPARE(job.failure(), std::string("The scanner saw nothing on the turntable"));
    QCOMPARE(f.download(cloud).positions.size(), before);
}

void tst_ScannerMethods::aCanceledScanChangesNothing()
{
    Fixture f;
    const int cloud = f.createCloud();
    f.scan(cloud, 20);
    const PointCloud before = f.download(cloud);
    const int job = f.startScan(cloud, kForLong);
    QTRY_VERIFY(f.client.jobFromID(job).progress() > 0);
    f.client.cancelJob(job);
    const Job canceled = f.conclude(job);
    QCOMPARE(canceled.conclusion(), JobCanceled);
    QCOMPARE(canceled.stage(), std::string("Canceled"));
    QVERIFY(f.download(cloud).positions == before.positions);
}

void tst_ScannerMethods::aScanWaitsForWorkOnItsCloud()
{
    Fixture f;
    const int cloud = f.createCloud();
    f.scan(cloud, 100);
    RawClient raw(f.world.address());
    raw.greet();
    raw.call(1, "point_cloud_create");
    const int own = raw.readLine()["result"].asInt();
    raw.call(2, "scan", object("point_cloud", own, "steps", 20));
    // Asked for before the scan has ended, done when it has.
    raw.call(3, "point_cloud_process", object("id", own, "grid_size", 1));
    const Json::Value job = raw.readLine();
    QCOMPARE(job["id"].asInt(), 2);
    QVERIFY(job["result"]["id"].isInt());
    const Json::Value processed = raw.readLine();
    QCOMPARE(processed["id"].asInt(), 3);
    QVERIFY(processed["result"]["points"].asInt() > 100);
}

void tst_ScannerMethods::destroyingTheCloudEndsTheScan()
{
    Fixture f;
    const int cloud = f.createCloud();
    const int job = f.startScan(cloud, kForLong);
    f.call("point_cloud_destroy", object("id", cloud));
    QCOMPARE(f.conclude(job).conclusion(), JobCanceled);
    QCOMPARE(f.scan(f.createCloud(), 5).conclusion(), JobEnded);
}

void tst_ScannerMethods::hangingUpEndsTheScan()
{
    Fixture f;
    int job = 0;
    {
        RawClient raw(f.world.address());
        raw.greet();
        raw.call(1, "point_cloud_create");
        const int own = raw.readLine()["result"].asInt();
        raw.call(2, "scan", object("point_cloud", own, "steps", kForLong));
        job = raw.readLine()["result"]["id"].asInt();
        QVERIFY(job > 0);
    }
    QCOMPARE(f.conclude(job).conclusion(), JobCanceled);
    QCOMPARE(f.scan(f.createCloud(), 5).conclusion(), JobEnded);
}

void tst_ScannerMethods::unpluggingEndsTheScan()
{
    Fixture f;
    const int cloud = f.createCloud();
    const int job = f.startScan(cloud, kForLong);
    f.call("simulate_scanner_unplug");
    const Job failed = f.conclude(job);
    QCOMPARE(failed.conclusion(), JobFailed);
    QCOMPARE(failed.failure(), std::string("The scanner was unplugged"));
    QCOMPARE(errorOf([&] { f.download(cloud); }), std::string("EmptyShapeError"));
    f.call("simulate_scanner_plug_in");
    QCOMPARE(f.scan(cloud, 5).conclusion(), JobEnded);
}

void tst_ScannerMethods::anUnpluggedScannerAnswersNothing_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("json");

    const auto row = [](const char* method, const char* json) {
        QTest::newRow(method) << QByteArray(method) << QByteArray(json);
    };
    row("create_calibrate_camera_job", R"({"path":"/tmp"})");
    row("create_calibrate_turntable_job", R"({"path":"/tmp"})");
    row("calibratecamera", R"({"path":"/tmp"})");
    row("calibratelaser", R"({"path":"/tmp"})");
    row("calibrateturntable", R"({"path":"/tmp"})");
    row("loadcalibration", R"({"path":"/tmp/a"})");
    row("savecalibration", R"({"path":"/tmp/a"})");
    row("read_user_calibration_from_eeprom", "{}");
    row("write_user_calibration_to_eeprom", "{}");
    row("digitizer_invalidate_user_calibration", "{}");
    row("get_digitizer_version", "{}");
    row("digitizer_load_name", "{}");
    row("digitizer_save_name", R"({"name":"x"})");
    row("digitizer_camera_device_path", "{}");
    row("digitizer_set_enabled_lasers", R"({"left":true,"right":true})");
    row("captureimage", R"({"path":"/tmp/a","exposure":10})");
    row("capture_image_auto_exposure", R"({"path":"/tmp/a"})");
    row("scan", R"({"point_cloud":1,"steps":10})");
}

void tst_ScannerMethods::anUnpluggedScannerAnswersNothing()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, json);
    Json::Value settings(Json::objectValue);
    settings["plugged_in"] = false;
    Fixture f(settings, false);
    QCOMPARE(f.createCloud(), 1);
    QCOMPARE(f.errorFrom(method.constData(), parsed(json)), std::string("ScannerUnavailableError"));
}

void tst_ScannerMethods::unpluggingIsToldOnce()
{
    Fixture f({}, false);
    f.call("simulate_scanner_unplug");
    f.call("simulate_scanner_unplug");
    QTRY_COMPARE(eventsOf(f.client, "cameraClosed"),
                 std::vector<std::string>{"cameraClosed /dev/video-virtual-scanner"});
    QVERIFY(!f.call("simulated_scanner")["plugged_in"].asBool());
    f.call("simulate_scanner_plug_in");
    f.call("simulate_scanner_plug_in");
    QVERIFY(f.call("simulated_scanner")["plugged_in"].asBool());
    f.call("simulate_scanner_unplug");
    QTRY_COMPARE(eventsOf(f.client, "cameraClosed").size(), std::size_t(2));
}

void tst_ScannerMethods::pluggingInStartsAnew()
{
    Fixture f;
    f.call("digitizer_set_enabled_lasers", object("left", false, "right", false));
    f.call("simulate_scanner_unplug");
    f.call("simulate_scanner_plug_in");
    // The lasers are on again, and the calibration of its memory is in use.
    QCOMPARE(f.scan(f.createCloud(), 5).conclusion(), JobEnded);
}

void tst_ScannerMethods::seesWhatIsPutOnItsTable()
{
    Fixture f;
    const int cloud = f.createCloud();
    const std::string path = f.world.writeMesh(QStringLiteral("cube.ply"), cube(20));
    f.call("simulate_scanned_model",
           object("path", path, "turn", list({0, 0, 45}), "position", list({0, 0, 5})));
    f.scan(cloud, 60);
    f.call("point_cloud_process", object("id", cloud, "grid_size", 0));
    const geometry::Box box = boundingBox(f.download(cloud));
    // Corners along x and y, since it stands on its edge there: half a diagonal to the left.
    const double diagonal = 20 * std::sqrt(2.0);
    QVERIFY(std::abs(box.minimum.x + diagonal / 2) < 0.7);
    QVERIFY(std::abs(box.maximum.x - diagonal / 2) < 0.7);
    QVERIFY(std::abs(box.maximum.y - diagonal) < 0.7);
    QVERIFY(std::abs(box.minimum.z - 5) < 1);
    QVERIFY(std::abs(box.maximum.z - 25) < 1);
    const Json::Value model = f.call("simulated_scanner")["model"];
    QCOMPARE(model["path"].asString(), path);
    QCOMPARE(model["turn"][2].asDouble(), 45.0);
}

void tst_ScannerMethods::refusesModels_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("error");

    QTest::newRow("a relative path")
        << QByteArray(R"({"path":"a.stl"})") << QByteArray("InvalidArgumentError");
    QTest::newRow("no such file") << QByteArray(R"({"path":"/nowhere/a.stl"})")
                                  << QByteArray("FileAccessError");
    QTest::newRow("no mesh by its name")
        << QByteArray(R"({"path":"/a.txt"})") << QByteArray("FileFormatError");
    QTest::newRow("two angles") << QByteArray(R"({"turn":[1,2]})")
                                << QByteArray("InvalidArgumentError");
    QTest::newRow("far away") << QByteArray(R"({"position":[1e9,0,0]})")
                              << QByteArray("InvalidArgumentError");
    QTest::newRow("an unknown member")
        << QByteArray(R"({"size":1})") << QByteArray("InvalidArgumentError");
}

void tst_ScannerMethods::refusesModels()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, error);
    Fixture f;
    const std::string before = f.call("simulated_scanner")["model"]["path"].asString();
    QCOMPARE(f.errorFrom("simulate_scanned_model", parsed(json)), error.toStdString());
    QCOMPARE(f.call("simulated_scanner")["model"]["path"].asString(), before);
    const int cloud = f.createCloud();
    f.scan(cloud, 5);
    QVERIFY(Fit(f.download(cloud)).points > 300);
}

void tst_ScannerMethods::shutsDownInTheMiddle()
{
    Fixture f;
    const int cloud = f.createCloud();
    f.startScan(cloud, kForLong);
    f.client.disconnectFromDaemon();
    f.world.stop();
    f.world.start();
    f.client.connectToDaemon(f.world.address());
    QCOMPARE(f.scan(f.createCloud(), 5).conclusion(), JobEnded);
}

QTEST_GUILESS_MAIN(tst_ScannerMethods)
#include "tst_scanner_methods.moc"
