#include "scanner_world.h"
#include "support/thrown_text.h"

#include <trovek/text.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace trovek;
using geometry::PointCloud;
using geometry::Vector;

namespace {

const Vector kMiddle{0, 0, 30};
constexpr double kRadius = 20;

struct Fixture : ScannerFixture
{
    Job takePictures(const char* method, const std::string& folder)
    {
        return conclude(call(method, object("path", folder))["id"].asInt());
    }

    /** Which parts are known: some of "camera lasers turntable". */
    std::string calibrated()
    {
        const Json::Value parts = call("simulated_scanner")["calibrated"];
        std::string text;
        for (const char* part : {"camera", "lasers", "turntable"}) {
            if (parts[part].asBool())
                text += std::string(text.empty() ? "" : " ") + part;
        }
        return text;
    }

    /** The root of the mean square of how far a scanned ball's points are from it. */
    double scanError()
    {
        putOnTable(ball(kRadius, kMiddle));
        const int cloud = createCloud();
        scan(cloud, 40);
        call("point_cloud_process", object("id", cloud, "grid_size", 0));
        double squares = 0;
        const PointCloud points = downloadCloud(cloud);
        for (const Vector& point : points.positions) {
            const double off = length(point - kMiddle) - kRadius;
            squares += off * off;
        }
        return std::sqrt(squares / double(points.positions.size()));
    }
};

const std::string kAll = "camera lasers turntable";

} // namespace

class tst_CalibrationMethods : public QObject
{
    Q_OBJECT

private slots:
    void aNewScannerIsCalibrated();
    void anInvalidCalibrationStopsScans();
    void calibratesFromPictures();
    void anotherUnitsCalibrationDistorts();
    void savesAndLoads();
    void refusesFiles_data();
    void refusesFiles();
    void savesOnlyWhatIsKnown();
    void refusesFolders_data();
    void refusesFolders();
    void refusesPicturesThatAreNone();
    void picturesReplaceEarlierOnes();
    void aCanceledJobLeavesNoPictures();
    void unpluggingEndsTheJob();
    void aDamagedMemoryHoldsNoCalibration();
};

void tst_CalibrationMethods::aNewScannerIsCalibrated()
{
    Fixture f;
    QCOMPARE(f.calibrated(), kAll);
    QVERIFY(f.scanError() < 0.12);
}

void tst_CalibrationMethods::anInvalidCalibrationStopsScans()
{
    Fixture f;
    QVERIFY(f.call("digitizer_invalidate_user_calibration").isNull());
    QCOMPARE(f.calibrated(), std::string());
    const int cloud = f.call("point_cloud_create").asInt();
    const Json::Value scan = object("point_cloud", cloud, "steps", 5);
    QCOMPARE(f.errorFrom("scan", scan), std::string("NotCalibratedError"));
    QCOMPARE(f.errorFrom("read_user_calibration_from_eeprom"), std::string("NotCalibratedError"));
    QCOMPARE(f.errorFrom("write_user_calibration_to_eeprom"), std::string("NotCalibratedError"));
    QCOMPARE(
        f.errorFrom("savecalibration", object("path", f.world.emptyFile(QStringLiteral("c.json")))),
        std::string("NotCalibratedError"));
    const std::string folder = f.world.makeFolder(QStringLiteral("pictures"));
    QCOMPARE(f.errorFrom("calibratelaser", object("path", folder)),
             std::string("NotCalibratedError"));
    QCOMPARE(f.errorFrom("calibrateturntable", object("path", folder)),
             std::string("NotCalibratedError"));
    // It is gone from the memory, too.
    f.restart();
    QCOMPARE(f.calibrated(), std::string());
}

void tst_CalibrationMethods::calibratesFromPictures()
{
    Fixture f;
    f.call("digitizer_invalidate_user_calibration");
    const std::string folder = f.world.makeFolder(QStringLiteral("pictures"));
    const Json::Value path = object("path", folder);

    const Job camera = f.takePictures("create_calibrate_camera_job", folder);
    QCOMPARE(camera.failure(), std::string());
    QCOMPARE(camera.conclusion(), JobEnded);
    QCOMPARE(camera.kind(), std::string("create_calibrate_camera_job"));
    QCOMPARE(camera.name(), std::string("Pictures for the camera"));
    const QDir pictures(toQString(folder));
    QCOMPARE(pictures.entryList({QStringLiteral("camera_*.png")}).size(), 12);
    QVERIFY(f.call("calibratecamera", path).isNull());
    QCOMPARE(f.calibrated(), std::string("camera"));

    const Job table = f.takePictures("create_calibrate_turntable_job", folder);
    QCOMPARE(table.conclusion(), JobEnded);
    QCOMPARE(table.name(), std::string("Pictures for the turntable"));
    QCOMPARE(pictures.entryList({QStringLiteral("turntable_*.png")}).size(), 27);
    f.call("calibratelaser", path);
    QCOMPARE(f.calibrated(), std::string("camera lasers"));
    f.call("calibrateturntable", path);
    QCOMPARE(f.calibrated(), kAll);
    const double error = f.scanError();
    QVERIFY2(error < 0.2, qPrintable(QString::number(error)));

    // The scanner itself keeps it when it is told to.
    f.call("simulate_scanner_unplug");
    f.call("simulate_scanner_plug_in");
    QCOMPARE(f.calibrated(), std::string());
    for (const char* method : {"calibratecamera", "calibratelaser", "calibrateturntable"})
        f.call(method, path);
    f.call("write_user_calibration_to_eeprom");
    f.restart();
    QCOMPARE(f.calibrated(), kAll);

    // Another camera needs the lasers and the table seen again.
    f.call("calibratecamera", path);
    QCOMPARE(f.calibrated(), std::string("camera"));
    QCOMPARE(f.errorFrom("write_user_calibration_to_eeprom"), std::string("NotCalibratedError"));
    f.call("read_user_calibration_from_eeprom");
    QCOMPARE(f.calibrated(), kAll);
}

void tst_CalibrationMethods::anotherUnitsCalibrationDistorts()
{
    Json::Value settings(Json::objectValue);
    settings["seed"] = 9;
    ScannerWorld elsewhere(settings);
    elsewhere.start();
    RecordingTrovek other;
    other.connectToDaemon(elsewhere.address());
    const std::string file = elsewhere.emptyFile(QStringLiteral("c.json"));
    ask(other, "savecalibration", object("path", file));

    Fixture f;
    f.call("loadcalibration", object("path", file));
    QVERIFY(f.scanError() > 0.5);
}

void tst_CalibrationMethods::savesAndLoads()
{
    Fixture f;
    const std::string file = f.world.writeFile(QStringLiteral("c.json"), "what stood there");
    QVERIFY(f.call("savecalibration", object("path", file)).isNull());
    const QByteArray saved = ServiceWorld::read(file);
    QVERIFY(saved.endsWith("\n"));
    QVERIFY(parsed(saved)["turntable"]["axis"].isArray());
    f.call("digitizer_invalidate_user_calibration");
    QVERIFY(f.call("loadcalibration", object("path", file)).isNull());
    QCOMPARE(f.calibrated(), kAll);
    const std::string again = f.world.emptyFile(QStringLiteral("again.json"));
    f.call("savecalibration", object("path", again));
    QCOMPARE(ServiceWorld::read(again), saved);
    // Loading writes nothing into the scanner.
    QCOMPARE(f.errorFrom("read_user_calibration_from_eeprom"), std::string("NotCalibratedError"));
    QCOMPARE(f.calibrated(), kAll);
}

void tst_CalibrationMethods::refusesFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no JSON") << QByteArray("hello");
    QTest::newRow("no calibration") << QByteArray("[1,2]");
    QTest::newRow("another version") << QByteArray(R"({"version":2})");
    QTest::newRow("another camera")
        << QByteArray(R"({"version":1,"camera":{"width":320,"height":240,"focal_x":400,)"
                      R"("focal_y":400,"center_x":160,"center_y":120,"distortion":0}})");
}

void tst_CalibrationMethods::refusesFiles()
{
    QFETCH(QByteArray, bytes);
    Fixture f;
    const std::string file = f.world.writeFile(QStringLiteral("c.json"), bytes);
    QCOMPARE(f.errorFrom("loadcalibration", object("path", file)), std::string("FileFormatError"));
    QCOMPARE(f.errorFrom("loadcalibration", object("path", "/nowhere/c.json")),
             std::string("FileAccessError"));
    QCOMPARE(f.errorFrom("loadcalibration"), std::string("InvalidArgumentError"));
    QCOMPARE(f.calibrated(), kAll);
}

void tst_CalibrationMethods::savesOnlyWhatIsKnown()
{
    Fixture f;
    const std::string file = f.world.emptyFile(QStringLiteral("c.json"));
    f.call("savecalibration", object("path", file));
    Json::Value part = parsed(ServiceWorld::read(file));
    part.removeMember("lasers");
    const std::string partly = f.world.writeFile(QStringLiteral("part.json"),
                                                 QByteArray::fromStdString(part.toStyledString()));
    f.call("loadcalibration", object("path", partly));
    QCOMPARE(f.calibrated(), std::string("camera turntable"));
    f.call("savecalibration", object("path", file));
    const Json::Value saved = parsed(ServiceWorld::read(file));
    QVERIFY(saved.isMember("camera") && !saved.isMember("lasers") && saved.isMember("turntable"));
    QCOMPARE(f.errorFrom("savecalibration", object("path", "/nowhere/c.json")),
             std::string("FileAccessError"));
}

void tst_CalibrationMethods::refusesFolders_data()
{
    QTest::addColumn<QString>("path");

    QTest::newRow("missing") << QStringLiteral("%1/missing");
    QTest::newRow("a file") << QStringLiteral("%1/file");
    QTest::newRow("a link") << QStringLiteral("%1/link");
    QTest::newRow("relative") << QStringLiteral("pictures");
    QTest::newRow("empty") << QString();
}

void tst_CalibrationMethods::refusesFolders()
{
    QFETCH(QString, path);
    Fixture f;
    f.world.emptyFile(QStringLiteral("file"));
    const QString folder = toQString(f.world.path({}));
    QFile::link(toQString(f.world.makeFolder(QStringLiteral("real"))),
                folder + QStringLiteral("/link"));
    const std::string named =
        toStdString(path.contains(QLatin1String("%1")) ? path.arg(folder) : path);
    QCOMPARE(f.errorFrom("create_calibrate_camera_job", object("path", named)),
             std::string("FileAccessError"));
    QCOMPARE(f.errorFrom("create_calibrate_turntable_job", object("path", named)),
             std::string("FileAccessError"));
    QVERIFY(eventsOf(f.client, "jobAdded").empty());
    QVERIFY(!QFileInfo::exists(folder + QStringLiteral("/missing")));
}

void tst_CalibrationMethods::refusesPicturesThatAreNone()
{
    Fixture f;
    const std::string folder = f.world.makeFolder(QStringLiteral("pictures"));
    for (const char* method : {"calibratecamera", "calibratelaser", "calibrateturntable"})
        QCOMPARE(f.errorFrom(method, object("path", folder)), std::string("FileAccessError"));
    for (int i = 0; i < 12; ++i) {
        f.world.writeFile(QStringLiteral("pictures/camera_%1.png").arg(i, 2, 10, QLatin1Char('0')),
                          "no picture");
    }
    QCOMPARE(f.errorFrom("calibratecamera", object("path", folder)),
             std::string("FileFormatError"));
    // A picture of what stands on the table shows no board.
    const std::string picture = f.world.emptyFile(QStringLiteral("table.png"));
    f.call("captureimage", object("path", picture, "exposure", 10));
    for (int i = 0; i < 12; ++i) {
        f.world.writeFile(QStringLiteral("pictures/camera_%1.png").arg(i, 2, 10, QLatin1Char('0')),
                          ServiceWorld::read(picture));
    }
    QCOMPARE(thrownText([&] { f.call("calibratecamera", object("path", folder)); }),
             std::string("Only 0 pictures show the whole board; at least 4 must"));
    QCOMPARE(f.errorFrom("calibratecamera", object("path", folder)),
             std::string("CalibrationError"));
    QCOMPARE(f.calibrated(), kAll);
}

void tst_CalibrationMethods::picturesReplaceEarlierOnes()
{
    Fixture f;
    const std::string folder = f.world.makeFolder(QStringLiteral("pictures"));
    const std::string first = f.world.writeFile(QStringLiteral("pictures/camera_00.png"), "old");
    f.world.writeFile(QStringLiteral("pictures/notes.txt"), "mine");
    QCOMPARE(f.takePictures("create_calibrate_camera_job", folder).conclusion(), JobEnded);
    QVERIFY(ServiceWorld::read(first).startsWith("\x89PNG"));
    QCOMPARE(ServiceWorld::read(f.world.path(QStringLiteral("pictures/notes.txt"))),
             QByteArray("mine"));
    // A link in their place is not followed.
    const QString link = toQString(f.world.path(QStringLiteral("pictures/camera_03.png")));
    QFile::remove(link);
    const std::string precious = f.world.writeFile(QStringLiteral("precious"), "precious");
    QFile::link(toQString(precious), link);
    const Job job = f.takePictures("create_calibrate_camera_job", folder);
    QCOMPARE(job.conclusion(), JobFailed);
    QVERIFY2(job.failure().find("it is a link") != std::string::npos, job.failure().c_str());
    QCOMPARE(ServiceWorld::read(precious), QByteArray("precious"));
}

void tst_CalibrationMethods::aCanceledJobLeavesNoPictures()
{
    Fixture f;
    const std::string folder = f.world.makeFolder(QStringLiteral("pictures"));
    const int job = f.call("create_calibrate_turntable_job", object("path", folder))["id"].asInt();
    QTRY_VERIFY(f.client.jobFromID(job).progress() > 0);
    f.client.cancelJob(job);
    QCOMPARE(f.conclude(job).conclusion(), JobCanceled);
    QVERIFY(QDir(toQString(folder)).isEmpty());
    QCOMPARE(f.errorFrom("digitizer_set_enabled_lasers", object("left", true, "right", true)),
             std::string());
}

void tst_CalibrationMethods::unpluggingEndsTheJob()
{
    Fixture f;
    const std::string folder = f.world.makeFolder(QStringLiteral("pictures"));
    const int job = f.call("create_calibrate_turntable_job", object("path", folder))["id"].asInt();
    f.call("simulate_scanner_unplug");
    const Job failed = f.conclude(job);
    QCOMPARE(failed.conclusion(), JobFailed);
    QCOMPARE(failed.failure(), std::string("The scanner was unplugged"));
    QVERIFY(QDir(toQString(folder)).isEmpty());
}

void tst_CalibrationMethods::aDamagedMemoryHoldsNoCalibration()
{
    Fixture f;
    f.call("digitizer_save_name", object("name", "mine"));
    f.client.disconnectFromDaemon();
    f.world.stop();
    const QString path = f.world.stateDir() + QStringLiteral("/scanner_memory.json");
    QFile memory(path);
    QVERIFY(memory.open(QIODevice::ReadWrite));
    QByteArray bytes = memory.readAll();
    bytes.replace("focal_x", "local_x");
    memory.resize(0);
    memory.write(bytes);
    memory.close();
    f.log.expectError("The scanner's memory is damaged: Calibration: \"camera.focal_x\" must be");
    f.world.start();
    f.client.connectToDaemon(f.world.address());
    QCOMPARE(f.call("digitizer_load_name").asString(), std::string("mine"));
    QCOMPARE(f.calibrated(), std::string());
}

QTEST_GUILESS_MAIN(tst_CalibrationMethods)
#include "tst_calibration_methods.moc"
