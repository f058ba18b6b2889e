#include "support/test_log.h"
#include "support/thrown_text.h"

#include <service/geometry/geometry_error.h>
#include <service/scanner/calibration_pictures.h>
#include <service/scanner/calibration_solver.h>
#include <service/scanner/picture.h>
#include <service/scanner/scanner_settings.h>

#include <rpcwire/json_text.h>

#include <QTest>

#include <cmath>
#include <map>

using namespace trovek;
using namespace trovek::service;
using geometry::Vector;

namespace {

using Files = std::map<std::string, std::string>;

/** A scanner with a small camera, and pictures that it took. */
struct Fixture
{
    explicit Fixture(unsigned seed = 5)
    {
        settings.width = 640;
        settings.height = 480;
        settings.seed = seed;
        design = designedScanner(settings);
        build = builtScanner(settings);
    }

    void take(const std::vector<BoardPicture>& pictures)
    {
        const std::vector<std::string> bytes =
            takePictures(build, pictures, settings.pictureNoise, 7, {});
        for (std::size_t i = 0; i < bytes.size(); ++i)
            files[pictures[i].fileName] = bytes[i];
    }

    /** All pictures of the unit, which are taken once for all tests. */
    void takeAll()
    {
        static std::map<unsigned, Files> taken;
        Files& all = taken[settings.seed];
        if (all.empty()) {
            take(cameraPictures());
            take(turntablePictures());
            all = files;
        }
        files = all;
    }

    ReadFile reader()
    {
        return [this](const std::string& name) {
            return files.at(name);
        };
    }

    ScannerSettings settings;
    ScannerBuild design;
    ScannerBuild build;
    Files files;
};

/** How far apart two cameras see the same, at most, in pixels. */
double difference(const CameraModel& a, const CameraModel& b)
{
    double most = 0;
    for (const double x : {-70.0, -30.0, 0.0, 30.0, 70.0}) {
        for (const double y : {-50.0, 0.0, 50.0}) {
            const auto seen = a.project({x, y, 270});
            const auto other = b.project({x, y, 270});
            most = std::max(most, std::hypot(seen->x - other->x, seen->y - other->y));
        }
    }
    return most;
}

std::string complete(const Calibration& calibration)
{
    return rpcwire::toJsonLine(toJson(calibration));
}

} // namespace

class tst_Calibration : public QObject
{
    Q_OBJECT

private slots:
    void aCameraSeesWhereItLooks();
    void aUnitIsNotAsDesigned();
    void picturesTellTheScanner_data();
    void picturesTellTheScanner();
    void everyDotIsFound();
    void aBoardThatIsCutOffIsLeftOut();
    void tooFewPicturesAreNotEnough();
    void mixedPicturesFitNoCamera();
    void refusesPictures_data();
    void refusesPictures();
    void aStandingBoardTellsNoTurntable();
    void givesUpWhenAsked();
    void savedNumbersComeBackAsTheyWere();
    void refusesDocuments_data();
    void refusesDocuments();
};

void tst_Calibration::aCameraSeesWhereItLooks()
{
    const Fixture f;
    const CameraModel& camera = *f.build.truth.camera;
    QVERIFY(std::abs(camera.distortion) > 0.01);
    for (const double x : {0.0, 100.5, 320.0, 639.0}) {
        for (const double y : {0.0, 240.0, 479.5}) {
            const auto seen = camera.project(70 * camera.viewDirection({x, y}));
            QVERIFY(std::abs(seen->x - x) < 1e-3);
            QVERIFY(std::abs(seen->y - y) < 1e-3);
        }
    }
    QVERIFY(!camera.project({0, 0, 0}));
    QVERIFY(!camera.project({1, 1, -5}));
}

void tst_Calibration::aUnitIsNotAsDesigned()
{
    Fixture f;
    QVERIFY(difference(*f.design.truth.camera, *f.build.truth.camera) > 3);
    f.settings.tolerance = 0;
    QVERIFY(difference(*builtScanner(f.settings).truth.camera, *f.design.truth.camera) < 1e-9);
    f.settings.tolerance = 1;
    QCOMPARE(complete(builtScanner(f.settings).truth), complete(f.build.truth));
    f.settings.seed = 6;
    QVERIFY(complete(builtScanner(f.settings).truth) != complete(f.build.truth));
}

void tst_Calibration::picturesTellTheScanner_data()
{
    QTest::addColumn<unsigned>("seed");

    QTest::newRow("a unit") << 1U;
    QTest::newRow("another unit") << 4U;
}

void tst_Calibration::picturesTellTheScanner()
{
    QFETCH(unsigned, seed);
    Fixture f(seed);
    f.takeAll();

    std::vector<double> told;
    const auto progress = [&told](double done) {
        told.push_back(done);
        return true;
    };
    const CameraModel camera = calibrateCamera(*f.design.truth.camera, f.reader(), progress);
    QVERIFY(!told.empty() && std::is_sorted(told.begin(), told.end()) && told.back() <= 1);
    QVERIFY2(difference(camera, *f.build.truth.camera) < 2.5,
             qPrintable(QString::number(difference(camera, *f.build.truth.camera))));

    // What counts is where points come to lie: at most a tenth of a millimetre or two beside.
    Calibration found;
    found.camera = camera;
    found.lasers = calibrateLasers(camera, f.reader(), {});
    found.turntable = calibrateTurntable(camera, f.reader(), {});
    QVERIFY(found.isComplete());
    const auto seenAt = [&f](const Vector& onTable, Laser laser) {
        // The nearest point of the sheet of light.
        const Vector point = f.build.truth.turntable->toCamera(0).point(onTable);
        const LaserPlane& plane = (*f.build.truth.lasers)[laser];
        const Vector lit = point - (dot(plane.normal, point) - plane.distance) * plane.normal;
        return std::pair(f.build.truth.camera->project(lit),
                         f.build.truth.turntable->toCamera(0).inverse().point(lit));
    };
    for (const Laser laser : {kLeftLaser, kRightLaser}) {
        for (const double z : {10.0, 40.0, 70.0}) {
            for (const double y : {-30.0, 0.0, 20.0}) {
                const auto [place, truth] = seenAt({0, y, z}, laser);
                const auto measured = surfacePoint(found, laser, *place, 0);
                QVERIFY(measured.has_value());
                QVERIFY2(length(*measured - truth) < 0.35,
                         qPrintable(QString::number(length(*measured - truth))));
                // Uncalibrated it would be somewhere else.
                const auto wrong = surfacePoint(f.design.truth, laser, *place, 0);
                QVERIFY(!wrong || length(*wrong - truth) > 0.7);
            }
        }
    }
}

void tst_Calibration::everyDotIsFound()
{
    Fixture f;
    const auto pictures = cameraPictures();
    f.takeAll();
    for (const BoardPicture& picture : pictures) {
        const auto dots = findDots(decodePng(f.files[picture.fileName], 640, 480));
        QVERIFY2(dots.has_value(), picture.fileName.c_str());
        for (int row = 0; row < board::kRows; ++row) {
            for (int column = 0; column < board::kColumns; ++column) {
                const Vector place = f.build.truth.turntable->toCamera(0).point(
                    picture.boardToTable.point(board::middle(column, row)));
                const auto expected = f.build.truth.camera->project(place);
                const PixelPoint found = (*dots)[dotIndex(column, row)];
                QVERIFY2(std::hypot(found.x - expected->x, found.y - expected->y) < 0.3,
                         picture.fileName.c_str());
            }
        }
    }
}

void tst_Calibration::aBoardThatIsCutOffIsLeftOut()
{
    Fixture f;
    auto pictures = cameraPictures();
    f.takeAll();
    for (std::size_t i = 0; i < 4; ++i) {
        pictures[i].boardToTable =
            geometry::RigidTransform::moving({70, 0, 0}) * pictures[i].boardToTable;
    }
    pictures.resize(4);
    f.take(pictures);
    QVERIFY(!findDots(decodePng(f.files[pictures[0].fileName], 640, 480)));
    const CameraModel camera = calibrateCamera(*f.design.truth.camera, f.reader(), {});
    QVERIFY(difference(camera, *f.build.truth.camera) < 3);
}

void tst_Calibration::tooFewPicturesAreNotEnough()
{
    Fixture f;
    f.takeAll();
    const std::string dark = encodePng(Picture(640, 480));
    for (std::size_t i = 3; i < cameraPictures().size(); ++i)
        f.files[cameraPictures()[i].fileName] = dark;
    QCOMPARE(thrownText([&] { calibrateCamera(*f.design.truth.camera, f.reader(), {}); }),
             std::string("Only 3 pictures show the whole board; at least 4 must"));
}

void tst_Calibration::mixedPicturesFitNoCamera()
{
    Fixture f(1);
    auto pictures = cameraPictures();
    f.takeAll();
    // Half of them of quite another camera.
    f.settings.fieldOfView = 52;
    f.build = builtScanner(f.settings);
    pictures.resize(6);
    f.take(pictures);
    QVERIFY_EXCEPTION_THROWN(calibrateCamera(*f.design.truth.camera, f.reader(), {}),
                             CalibrationError);
}

void tst_Calibration::refusesPictures_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("text");

    Fixture f;
    const QByteArray whole = QByteArray::fromStdString(encodePng(Picture(640, 480)));
    QTest::newRow("empty") << QByteArray() << QByteArray("camera_00.png: Not a picture");
    QTest::newRow("text") << QByteArray("hello") << QByteArray("camera_00.png: Not a picture");
    QTest::newRow("cut off") << whole.left(whole.size() / 2)
                             << QByteArray("camera_00.png: Not a picture");
    QTest::newRow("another size") << QByteArray::fromStdString(encodePng(Picture(320, 240)))
                                  << QByteArray("it has 320 x 240 pixels");
}

void tst_Calibration::refusesPictures()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, text);
    Fixture f;
    f.files["camera_00.png"] = bytes.toStdString();
    const std::string thrown =
        thrownText([&] { calibrateCamera(*f.design.truth.camera, f.reader(), {}); });
    QVERIFY2(thrown.find(text.toStdString()) != std::string::npos, thrown.c_str());
    QVERIFY_EXCEPTION_THROWN(calibrateCamera(*f.design.truth.camera, f.reader(), {}),
                             geometry::FileFormatError);
}

void tst_Calibration::aStandingBoardTellsNoTurntable()
{
    Fixture f;
    f.takeAll();
    for (std::size_t i = 1; i < turntableAngles().size(); ++i) {
        f.files[turntableFiles(i).dark] = f.files[turntableFiles(0).dark];
        for (const Laser laser : {kLeftLaser, kRightLaser})
            f.files[turntableFiles(i).lit[laser]] = f.files[turntableFiles(0).lit[laser]];
    }
    const CameraModel& camera = *f.build.truth.camera;
    QCOMPARE(thrownText([&] { calibrateTurntable(camera, f.reader(), {}); }),
             std::string("The board did not turn as the table does"));
    QCOMPARE(thrownText([&] { calibrateLasers(camera, f.reader(), {}); }),
             std::string("The laser is seen on one line only: the board must be turned"));
    for (std::size_t i = 0; i < turntableAngles().size(); ++i) {
        for (const Laser laser : {kLeftLaser, kRightLaser})
            f.files[turntableFiles(i).lit[laser]] = f.files[turntableFiles(0).dark];
    }
    QCOMPARE(thrownText([&] { calibrateLasers(camera, f.reader(), {}); }),
             std::string("The laser is not seen on the board"));
}

void tst_Calibration::givesUpWhenAsked()
{
    Fixture f;
    const auto stop = [](double) {
        return false;
    };
    QVERIFY_EXCEPTION_THROWN(takePictures(f.build, cameraPictures(), 1, 1, stop),
                             geometry::Canceled);
    QVERIFY_EXCEPTION_THROWN(calibrateCamera(*f.design.truth.camera, f.reader(), stop),
                             geometry::Canceled);
    QVERIFY_EXCEPTION_THROWN(calibrateLasers(*f.design.truth.camera, f.reader(), stop),
                             geometry::Canceled);
    QVERIFY_EXCEPTION_THROWN(calibrateTurntable(*f.design.truth.camera, f.reader(), stop),
                             geometry::Canceled);
}

void tst_Calibration::savedNumbersComeBackAsTheyWere()
{
    const Fixture f;
    const std::string text = complete(f.build.truth);
    Json::Value value;
    QVERIFY(rpcwire::parseJson(text, &value, nullptr));
    QCOMPARE(complete(calibrationFromJson(value)), text);
    QVERIFY(calibrationFromJson(value).isComplete());
    value.removeMember("lasers");
    const Calibration part = calibrationFromJson(value);
    QVERIFY(part.camera && !part.lasers && part.turntable && !part.isComplete());
}

void tst_Calibration::refusesDocuments_data()
{
    QTest::addColumn<QByteArray>("member");
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("text");

    const auto row = [](const char* name, const char* member, const char* json, const char* text) {
        QTest::newRow(name) << QByteArray(member) << QByteArray(json) << QByteArray(text);
    };
    row("no version", "version", "null", "Calibration: \"version\" must be 1");
    row("a later version", "version", "2", "Calibration: \"version\" must be 1");
    row("a camera that is none", "camera", "5", "Calibration: \"camera\" is not an object");
    row("no width", "camera", R"({"height":480})",
        "Calibration: \"camera.width\" must be a whole number from 1 to 16384");
    row("a focal length of 0", "camera",
        R"({"width":640,"height":480,"focal_x":0,"focal_y":1,"center_x":1,"center_y":1,"distortion":0})",
        "Calibration: \"camera.focal_x\" must be a number from 1.000000 to 1000000.000000");
    row("one laser", "lasers", R"({"left":{"normal":[1,0,0],"distance":0}})",
        "Calibration: \"lasers.right\" is not an object");
    row("a laser without a direction", "lasers",
        R"({"left":{"normal":[0,0,0],"distance":0},"right":{"normal":[1,0,0],"distance":0}})",
        "Calibration: \"lasers.left.normal\" has no direction");
    row("an axis of two numbers", "turntable", R"({"origin":[0,0,250],"axis":[0,1]})",
        "Calibration: \"turntable.axis\" must be three numbers");
    row("a camera on the axis", "turntable", R"({"origin":[0,0,0],"axis":[0,1,0]})",
        "Calibration: the camera cannot lie on the turntable's axis");
}

void tst_Calibration::refusesDocuments()
{
    QFETCH(QByteArray, member);
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, text);
    const Fixture f;
    Json::Value value = toJson(f.build.truth);
    QVERIFY(rpcwire::parseJson(json.toStdString(), &value[member.constData()], nullptr));
    QCOMPARE(thrownText([&] { calibrationFromJson(value); }), text.toStdString());
    QCOMPARE(thrownText([&] { calibrationFromJson(Json::Value(3)); }),
             std::string("Calibration: not an object"));
}

QTEST_GUILESS_MAIN(tst_Calibration)
#include "tst_calibration.moc"
