#include "scanner_world.h"
#include "service/raw_client.h"
#include "support/thrown_text.h"

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

/** With a ball on the scanner's table. */
struct Fixture : ScannerFixture
{
    explicit Fixture(const Json::Value& settings = Json::Value(), bool withBall = true)
        : ScannerFixture(settings)
    {
        if (withBall)
            putOnTable(ball(kRadius, kMiddle));
    }
};

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

class tst_ScanJobs : public QObject
{
    Q_OBJECT

private slots:
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
    void shutsDownInTheMiddle();
};

void tst_ScanJobs::scansABall()
{
    Fixture f;
    const int cloud = f.createCloud();
    const Job job = f.scan(cloud, 100);
    QCOMPARE(job.failure(), std::string());
    QCOMPARE(job.conclusion(), JobEnded);
    QCOMPARE(job.kind(), std::string("scan"));
    QCOMPARE(job.name(), std::string("Scan"));
    QCOMPARE(job.progress(), 100);
    const Fit fit(f.downloadCloud(cloud));
    QVERIFY2(fit.points > 10000, qPrintable(QString::number(fit.points)));
    QVERIFY2(std::abs(fit.mean) < 0.04, qPrintable(QString::number(fit.mean)));
    QVERIFY2(fit.spread < 0.1, qPrintable(QString::number(fit.spread)));
    // Stray light is there, and it is little.
    QVERIFY(fit.strays > 0);
    QVERIFY(fit.strays < fit.points / 100);
}

void tst_ScanJobs::oneLaserSeesLess()
{
    Fixture f;
    const int cloud = f.createCloud();
    const auto points = [&](bool left, bool right) {
        f.call("digitizer_set_enabled_lasers", object("left", left, "right", right));
        f.scan(cloud, 20);
        return Fit(f.downloadCloud(cloud)).points;
    };
    const int left = points(true, false);
    const int right = points(false, true);
    const int both = points(true, true);
    QVERIFY(left > 500);
    QVERIFY(right > 500);
    QVERIFY(std::abs(both - left - right) < 50);
}

void tst_ScanJobs::moreNoiseSpreadsThePoints()
{
    Json::Value quiet(Json::objectValue);
    quiet["line_noise"] = 0;
    quiet["stray_light"] = 0;
    Fixture still(quiet);
    int cloud = still.createCloud();
    still.scan(cloud, 10);
    const Fit exact(still.downloadCloud(cloud));
    QCOMPARE(exact.strays, 0);
    // What is left are the flat triangles of the ball.
    QVERIFY2(exact.spread < 0.05, qPrintable(QString::number(exact.spread)));

    Json::Value loud(Json::objectValue);
    loud["line_noise"] = 0.6;
    loud["stray_light"] = 0.1;
    Fixture noisy(loud);
    cloud = noisy.createCloud();
    noisy.scan(cloud, 10);
    const Fit fit(noisy.downloadCloud(cloud));
    QVERIFY2(fit.spread > 4 * exact.spread, qPrintable(QString::number(fit.spread)));
    QVERIFY(fit.strays > fit.points / 40);
}

void tst_ScanJobs::tellsItsProgress()
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

void tst_ScanJobs::replacesWhatTheCloudHad()
{
    Fixture f;
    const int cloud = f.createCloud();
    f.scan(cloud, 40);
    const std::size_t first = f.downloadCloud(cloud).positions.size();
    f.scan(cloud, 20);
    const std::size_t second = f.downloadCloud(cloud).positions.size();
    QVERIFY(second < 0.6 * double(first));
}

void tst_ScanJobs::refusesScans_data()
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

void tst_ScanJobs::refusesScans()
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

void tst_ScanJobs::aScannerIsUsedByOneAtATime()
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

void tst_ScanJobs::anEmptyTableFailsTheJob()
{
    Fixture f;
    const int cloud = f.createCloud();
    f.scan(cloud, 20);
    const std::size_t before = f.downloadCloud(cloud).positions.size();
    f.call("simulate_scanned_model", object("position", list({900, 0, 0})));
    const Job job = f.scan(cloud, 20);
    QCOMPARE(job.conclusion(), JobFailed);
    QCOMPARE(job.failure(), std::string("The scanner saw nothing on the turntable"));
    QCOMPARE(f.downloadCloud(cloud).positions.size(), before);
}

void tst_ScanJobs::aCanceledScanChangesNothing()
{
    Fixture f;
    const int cloud = f.createCloud();
    f.scan(cloud, 20);
    const PointCloud before = f.downloadCloud(cloud);
    const int job = f.startScan(cloud, kForLong);
    QTRY_VERIFY(f.client.jobFromID(job).progress() > 0);
    f.client.cancelJob(job);
    const Job canceled = f.conclude(job);
    QCOMPARE(canceled.conclusion(), JobCanceled);
    QCOMPARE(canceled.stage(), std::string("Canceled"));
    QVERIFY(f.downloadCloud(cloud).positions == before.positions);
}

void tst_ScanJobs::aScanWaitsForWorkOnItsCloud()
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

void tst_ScanJobs::destroyingTheCloudEndsTheScan()
{
    Fixture f;
    const int cloud = f.createCloud();
    const int job = f.startScan(cloud, kForLong);
    f.call("point_cloud_destroy", object("id", cloud));
    QCOMPARE(f.conclude(job).conclusion(), JobCanceled);
    QCOMPARE(f.scan(f.createCloud(), 5).conclusion(), JobEnded);
}

void tst_ScanJobs::hangingUpEndsTheScan()
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

void tst_ScanJobs::unpluggingEndsTheScan()
{
    Fixture f;
    const int cloud = f.createCloud();
    const int job = f.startScan(cloud, kForLong);
    f.call("simulate_scanner_unplug");
    const Job failed = f.conclude(job);
    QCOMPARE(failed.conclusion(), JobFailed);
    QCOMPARE(failed.failure(), std::string("The scanner was unplugged"));
    QCOMPARE(errorOf([&] { f.downloadCloud(cloud); }), std::string("EmptyShapeError"));
    f.call("simulate_scanner_plug_in");
    QCOMPARE(f.scan(cloud, 5).conclusion(), JobEnded);
}

void tst_ScanJobs::shutsDownInTheMiddle()
{
    Fixture f;
    const int cloud = f.createCloud();
    f.startScan(cloud, kForLong);
    f.restart();
    QCOMPARE(f.scan(f.createCloud(), 5).conclusion(), JobEnded);
}

QTEST_GUILESS_MAIN(tst_ScanJobs)
#include "tst_scan_jobs.moc"
