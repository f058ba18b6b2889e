#include "scanner_world.h"
#include "support/thrown_text.h"

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

/** With a ball on the scanner's table. */
struct Fixture : ScannerFixture
{
    explicit Fixture(const Json::Value& settings = Json::Value(), bool withBall = true)
        : ScannerFixture(settings)
    {
        if (withBall)
            putOnTable(ball(kRadius, kMiddle));
    }

    QImage capture(const char* method, const Json::Value& params = object())
    {
        Json::Value all = params;
        all["path"] = world.emptyFile(QStringLiteral("picture.png"));
        call(method, all);
        return QImage::fromData(ServiceWorld::read(all["path"].asString()), "PNG");
    }
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
    void anUnpluggedScannerAnswersNothing_data();
    void anUnpluggedScannerAnswersNothing();
    void unpluggingIsToldOnce();
    void pluggingInStartsAnew();
    void seesWhatIsPutOnItsTable();
    void refusesModels_data();
    void refusesModels();
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
    f.restart();
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
    const geometry::Box box = boundingBox(f.downloadCloud(cloud));
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
    QCOMPARE(f.scan(cloud, 5).conclusion(), JobEnded);
}

QTEST_GUILESS_MAIN(tst_ScannerMethods)
#include "tst_scanner_methods.moc"
