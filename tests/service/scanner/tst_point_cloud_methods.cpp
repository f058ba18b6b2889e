#include "scanner_world.h"
#include "service/raw_client.h"
#include "support/file_size_limit.h"
#include "support/thrown_text.h"

#include <service/geometry/point_cloud_file.h>
#include <service/geometry/rigid_transform.h>

#include <QFile>
#include <QTest>

#include <cmath>

using namespace trovek;
using geometry::PointCloud;
using geometry::RigidTransform;
using geometry::Vector;

namespace {

using Fixture = ScannerFixture;

Json::Value pairs(const std::vector<Vector>& vectors)
{
    Json::Value value(Json::arrayValue);
    for (const Vector& vector : vectors)
        value.append(list(vector));
    return value;
}

double distance(const Vector& a, const Vector& b)
{
    return length(a - b);
}

/** A surface that looks like itself from one side only. */
PointCloud hill()
{
    PointCloud cloud;
    for (int i = 0; i < 60; ++i) {
        for (int j = 0; j < 60; ++j) {
            const double x = i * 0.7;
            const double y = j * 0.7;
            cloud.positions.push_back(
                {x, y,
                 6 * std::exp(-((x - 12) * (x - 12) + (y - 20) * (y - 20)) / 60) +
                     9 * std::exp(-((x - 30) * (x - 30) + (y - 12) * (y - 12)) / 40) +
                     0.002 * x * x});
        }
    }
    return cloud;
}

} // namespace

class tst_PointCloudMethods : public QObject
{
    Q_OBJECT

private slots:
    void createsAnswerWithNewNumbers();
    void whatIsLoadedIsSaved_data();
    void whatIsLoadedIsSaved();
    void copiesACloud();
    void appendsACloud();
    void crops();
    void processes();
    void alignsByPairs();
    void alignsByShape();
    void refusesBadParameters_data();
    void refusesBadParameters();
    void refusesEmptyClouds_data();
    void refusesEmptyClouds();
    void anAlignmentThatIsNoNumberIsRefused();
    void whatFailsChangesNothing();
    void refusesFiles_data();
    void refusesFiles();
    void refusesOutputs_data();
    void refusesOutputs();
    void aRefusedOutputKeepsItsContents();
    void aFullDiskLeavesAnEmptyFile_data();
    void aFullDiskLeavesAnEmptyFile();
    void aCloudBelongsToItsClient();
    void cloudsEndWithTheirClient();
    void requestsMayBeSentWithoutWaiting();
    void aClientMayHangUpInTheMiddle();
};

void tst_PointCloudMethods::createsAnswerWithNewNumbers()
{
    Fixture f;
    const int first = f.createCloud();
    const int second = f.createCloud();
    QVERIFY(first > 0);
    QVERIFY(second > first);
    QVERIFY(f.call("point_cloud_destroy", object("id", second)).isNull());
    QVERIFY(f.createCloud() > second);
}

void tst_PointCloudMethods::whatIsLoadedIsSaved_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QString>("name");

    QTest::newRow("PLY") << QByteArray("ply") << QStringLiteral("out.ply");
    QTest::newRow("PLY as text") << QByteArray("ply_text") << QStringLiteral("out.ply");
    QTest::newRow("XYZ in capitals") << QByteArray("XYZ") << QStringLiteral("out.xyz");
}

void tst_PointCloudMethods::whatIsLoadedIsSaved()
{
    QFETCH(QByteArray, format);
    QFETCH(QString, name);
    Fixture f;
    const PointCloud points = ballPoints(25, {1.25, -2.5, 30}, 500);
    const int id = f.upload(points);
    const std::string path = f.world.emptyFile(name);
    QVERIFY(f.call("point_cloud_save", object("id", id, "path", path, "format", format.constData()))
                .isNull());
    const PointCloud saved = geometry::loadPointCloud(path);
    QCOMPARE(saved.positions.size(), points.positions.size());
    QVERIFY(saved.positions == points.positions);
    const Json::Value answer =
        f.call("point_cloud_load_from_id", object("id", f.createCloud(), "path", path));
    QCOMPARE(answer["points"].asInt(), 500);
}

void tst_PointCloudMethods::copiesACloud()
{
    Fixture f;
    const int source = f.upload(ballPoints(25, {}, 400));
    const int id = f.upload(ballPoints(10, {}, 100));
    QCOMPARE(
        f.call("point_cloud_load_from_id", object("id", id, "source", source))["points"].asInt(),
        400);
    // Each has its own points from then on.
    f.call("point_cloud_crop",
           object("id", source, "minimum", list({0, -30, -30}), "maximum", list({30, 30, 30})));
    QCOMPARE(f.downloadCloud(id).positions.size(), std::size_t(400));
    QVERIFY(f.downloadCloud(source).positions.size() < 250);
}

void tst_PointCloudMethods::appendsACloud()
{
    Fixture f;
    const int source = f.upload(ballPoints(25, {}, 400));
    const int id = f.upload(ballPoints(10, {}, 100));
    QCOMPARE(f.call("point_cloud_load_from_id",
                    object("id", id, "source", source, "append", true))["points"]
                 .asInt(),
             500);
    QCOMPARE(
        f.call("point_cloud_load_from_id", object("id", id, "source", id, "append", true))["points"]
            .asInt(),
        1000);
    const std::string path = f.world.writeCloud(QStringLiteral("more.ply"), ballPoints(5, {}, 10));
    QCOMPARE(
        f.call("point_cloud_load_from_id", object("id", id, "path", path, "append", true))["points"]
            .asInt(),
        1010);
    QCOMPARE(f.call("point_cloud_load_from_id",
                    object("id", id, "path", path, "append", false))["points"]
                 .asInt(),
             10);
}

void tst_PointCloudMethods::crops()
{
    Fixture f;
    PointCloud row;
    for (int i = 0; i <= 10; ++i)
        row.positions.push_back({double(i), 0, 0});
    const int id = f.upload(row);
    // The box's own sides belong to it.
    const Json::Value answer =
        f.call("point_cloud_crop",
               object("id", id, "minimum", list({2, -1, -1}), "maximum", list({5, 0, 0})));
    QCOMPARE(answer["points"].asInt(), 4);
    const PointCloud left = f.downloadCloud(id);
    QCOMPARE(left.positions.size(), std::size_t(4));
    QCOMPARE(left.positions.front().x, 2.0);
    QCOMPARE(left.positions.back().x, 5.0);
}

void tst_PointCloudMethods::processes()
{
    Fixture f;
    PointCloud points = ballPoints(25, {}, 5000);
    points.positions.push_back({90, 0, 0});
    points.positions.push_back({0, 0, -80});
    const int id = f.upload(points);
    // Without a grid size only what lies apart goes.
    QCOMPARE(f.call("point_cloud_process", object("id", id, "grid_size", 0))["points"].asInt(),
             5000);
    const int thin =
        f.call("point_cloud_process", object("id", id, "grid_size", 3.5))["points"].asInt();
    const PointCloud left = f.downloadCloud(id);
    QCOMPARE(int(left.positions.size()), thin);
    QVERIFY2(thin > 300 && thin < 1200, qPrintable(QString::number(thin)));
    for (std::size_t i = 0; i < left.positions.size(); ++i) {
        QVERIFY(std::abs(length(left.positions[i]) - 25) < 0.01);
        for (std::size_t j = 0; j < i; ++j)
            QVERIFY(distance(left.positions[i], left.positions[j]) >= 3.5);
    }
}

void tst_PointCloudMethods::alignsByPairs()
{
    Fixture f;
    const PointCloud points = hill();
    const RigidTransform applied =
        RigidTransform::moving({30, -12, 7}) * RigidTransform::turning(Vector{1, 2, 3}, 1.1);
    const int id = f.upload(points);
    const int target = f.upload(transformed(points, applied));
    const std::vector<Vector> picked = {points.positions[10], points.positions[1700],
                                        points.positions[3300], points.positions[59]};
    std::vector<Vector> there;
    for (const Vector& point : picked)
        there.push_back(applied.point(point));

    const Json::Value answer = f.call(
        "point_cloud_coarse_alignment",
        object("id", id, "target", target, "points", pairs(picked), "target_points", pairs(there)));

    QVERIFY(answer["error"].asDouble() < 1e-6);
    for (int row = 0; row < 3; ++row) {
        const Vector expected = applied.rotation[std::size_t(row)];
        const Json::Value& got = answer["rotation"][row];
        QVERIFY(distance(expected, {got[0].asDouble(), got[1].asDouble(), got[2].asDouble()}) <
                1e-6);
    }
    const Json::Value& by = answer["translation"];
    QVERIFY(distance(applied.translation, {by[0].asDouble(), by[1].asDouble(), by[2].asDouble()}) <
            1e-5);
    const PointCloud moved = f.downloadCloud(id);
    for (std::size_t i = 0; i < points.positions.size(); ++i)
        QVERIFY(distance(moved.positions[i], applied.point(points.positions[i])) < 1e-5);
}

void tst_PointCloudMethods::alignsByShape()
{
    Fixture f;
    const PointCloud points = hill();
    const RigidTransform applied = RigidTransform::moving({0.8, -0.5, 0.4}) *
                                   RigidTransform::turning(Vector{0.2, 1, 0.5}, 0.05);
    const int id = f.upload(points);
    const int target = f.upload(transformed(points, applied));

    const Json::Value answer =
        f.call("point_cloud_fine_alignment", object("id", id, "target", target));

    QVERIFY2(answer["error"].asDouble() < 0.05,
             qPrintable(QString::number(answer["error"].asDouble())));
    const PointCloud moved = f.downloadCloud(id);
    for (std::size_t i = 0; i < points.positions.size(); ++i)
        QVERIFY(distance(moved.positions[i], applied.point(points.positions[i])) < 0.2);
}

void tst_PointCloudMethods::refusesBadParameters_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("error");

    const auto row = [](const char* name, const char* method, const char* json, const char* error) {
        QTest::newRow(name) << QByteArray(method) << QByteArray(json) << QByteArray(error);
    };
    row("no id", "point_cloud_destroy", "{}", "InvalidArgumentError");
    row("id is a text", "point_cloud_destroy", R"({"id":"1"})", "InvalidArgumentError");
    row("id 0", "point_cloud_destroy", R"({"id":0})", "UnknownPointCloudError");
    row("unknown id", "point_cloud_destroy", R"({"id":999})", "UnknownPointCloudError");
    row("load without a source", "point_cloud_load_from_id", R"({"id":1})", "InvalidArgumentError");
    row("load from two sources", "point_cloud_load_from_id",
        R"({"id":1,"source":1,"path":"/a.ply"})", "InvalidArgumentError");
    row("load from an unknown cloud", "point_cloud_load_from_id", R"({"id":1,"source":999})",
        "UnknownPointCloudError");
    row("append is no truth", "point_cloud_load_from_id", R"({"id":1,"source":1,"append":1})",
        "InvalidArgumentError");
    row("load a file of no kind", "point_cloud_load_from_id", R"({"id":1,"path":"/a.txt"})",
        "FileFormatError");
    row("save without a format", "point_cloud_save", R"({"id":1,"path":"/a.ply"})",
        "InvalidArgumentError");
    row("save as a mesh", "point_cloud_save", R"({"id":1,"path":"/a.ply","format":"stl"})",
        "InvalidArgumentError");
    row("save an unknown cloud", "point_cloud_save", R"({"id":9,"path":"/a.ply","format":"ply"})",
        "UnknownPointCloudError");
    row("crop without a corner", "point_cloud_crop", R"({"id":1,"minimum":[0,0,0]})",
        "InvalidArgumentError");
    row("crop with two numbers", "point_cloud_crop",
        R"({"id":1,"minimum":[0,0,0],"maximum":[1,1]})", "InvalidArgumentError");
    row("crop with a text", "point_cloud_crop", R"({"id":1,"minimum":[0,0,0],"maximum":[1,1,"1"]})",
        "InvalidArgumentError");
    row("crop from back to front", "point_cloud_crop",
        R"({"id":1,"minimum":[5,0,0],"maximum":[1,1,1]})", "GeometryError");
    row("crop all of it", "point_cloud_crop", R"({"id":1,"minimum":[500,0,0],"maximum":[501,1,1]})",
        "EmptyShapeError");
    row("process without a grid size", "point_cloud_process", R"({"id":1})",
        "InvalidArgumentError");
    row("process with a grid size below 0", "point_cloud_process", R"({"id":1,"grid_size":-1})",
        "InvalidArgumentError");
    row("align to an unknown cloud", "point_cloud_fine_alignment", R"({"id":1,"target":999})",
        "UnknownPointCloudError");
    row("align without points", "point_cloud_coarse_alignment", R"({"id":1,"target":1})",
        "InvalidArgumentError");
    row("align a flat list of numbers", "point_cloud_coarse_alignment",
        R"({"id":1,"target":1,"points":[1,2,3],"target_points":[1,2,3]})", "InvalidArgumentError");
    row("align two pairs", "point_cloud_coarse_alignment",
        R"({"id":1,"target":1,"points":[[0,0,0],[1,0,0]],"target_points":[[0,0,0],[1,0,0]]})",
        "GeometryError");
    row("align by places beyond all", "point_cloud_coarse_alignment",
        R"({"id":1,"target":1,"points":[[0,0,0],[1,0,0],[0,1,0]],
            "target_points":[[1e12,0,0],[1e12,1,0],[1e12,0,1]]})",
        "GeometryError");
    row("align by the largest numbers", "point_cloud_coarse_alignment",
        R"({"id":1,"target":1,"points":[[0,0,0],[1e308,0,0],[0,1e308,0]],
            "target_points":[[0,0,0],[1,0,0],[0,1,0]]})",
        "GeometryError");
    row("align so that the error is no number", "point_cloud_coarse_alignment",
        R"({"id":1,"target":1,"points":[[1,0,0],[-1,0,0],[0,1,0],[0,-1,0]],
            "target_points":[[1e160,0,0],[-1e160,0,0],[0,1e160,0],[0,-1e160,0]]})",
        "GeometryError");
    row("align more points than targets", "point_cloud_coarse_alignment",
        R"({"id":1,"target":1,"points":[[0,0,0],[1,0,0],[0,1,0],[0,0,1]],
            "target_points":[[0,0,0],[1,0,0],[0,1,0]]})",
        "GeometryError");
}

void tst_PointCloudMethods::refusesBadParameters()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, error);
    Fixture f;
    const PointCloud points = ballPoints(25, {}, 300);
    QCOMPARE(f.upload(points), 1);
    QCOMPARE(f.errorFrom(method.constData(), parsed(json)), error.toStdString());
    QVERIFY(f.downloadCloud(1).positions == points.positions);
}

void tst_PointCloudMethods::refusesEmptyClouds_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("json");

    const auto row = [](const char* name, const char* method, const char* json) {
        QTest::newRow(name) << QByteArray(method) << QByteArray(json);
    };
    row("save", "point_cloud_save", R"({"id":2,"path":"/nowhere.ply","format":"ply"})");
    row("crop", "point_cloud_crop", R"({"id":2,"minimum":[0,0,0],"maximum":[1,1,1]})");
    row("process", "point_cloud_process", R"({"id":2,"grid_size":1})");
    row("copy", "point_cloud_load_from_id", R"({"id":1,"source":2})");
    row("append", "point_cloud_load_from_id", R"({"id":1,"source":2,"append":true})");
    row("align it", "point_cloud_fine_alignment", R"({"id":2,"target":1})");
    row("align to it", "point_cloud_fine_alignment", R"({"id":1,"target":2})");
    row("align it by pairs", "point_cloud_coarse_alignment",
        R"({"id":2,"target":1,"points":[[0,0,0],[1,0,0],[0,1,0]],
            "target_points":[[0,0,0],[1,0,0],[0,1,0]]})");
    row("align by pairs to it", "point_cloud_coarse_alignment",
        R"({"id":1,"target":2,"points":[[0,0,0],[1,0,0],[0,1,0]],
            "target_points":[[0,0,0],[1,0,0],[0,1,0]]})");
    row("reconstruct", "mesh_reconstruct_point_cloud", R"({"id":3,"point_cloud":2})");
}

void tst_PointCloudMethods::refusesEmptyClouds()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, json);
    Fixture f;
    const PointCloud points = ballPoints(25, {}, 300);
    QCOMPARE(f.upload(points), 1);
    QCOMPARE(f.createCloud(), 2);
    QCOMPARE(f.createMesh(), 3);
    QCOMPARE(f.errorFrom(method.constData(), parsed(json)), std::string("EmptyShapeError"));
    QVERIFY(f.downloadCloud(1).positions == points.positions);
}

void tst_PointCloudMethods::anAlignmentThatIsNoNumberIsRefused()
{
    Fixture f;
    // So small that squares of its size are none.
    const PointCloud points = ballPoints(1e-200, {}, 300);
    const int id = f.upload(points);
    QCOMPARE(f.errorFrom("point_cloud_fine_alignment", object("id", id, "target", id)),
             std::string("GeometryError"));
    QVERIFY(f.downloadCloud(id).positions == points.positions);
}

void tst_PointCloudMethods::whatFailsChangesNothing()
{
    Fixture f;
    const PointCloud points = ballPoints(25, {}, 300);
    const int id = f.upload(points);
    const int far = f.upload(ballPoints(25, {500, 0, 0}, 300));
    const std::string error =
        f.errorFrom("point_cloud_fine_alignment", object("id", id, "target", far));
    QCOMPARE(error, std::string("GeometryError"));
    QVERIFY(f.downloadCloud(id).positions == points.positions);
}

void tst_PointCloudMethods::refusesFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("not what its name says") << QByteArray("solid cube\nendsolid\n");
    QTest::newRow("cut off") << QByteArray(
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty float "
        "x\nproperty float y\nproperty float z\nend_header\n0 0 0\n");
    QTest::newRow("no points") << QByteArray("ply\nformat ascii 1.0\nelement vertex 0\nproperty "
                                             "float x\nproperty float y\nproperty float "
                                             "z\nend_header\n");
    QTest::newRow("no number") << QByteArray("ply\nformat ascii 1.0\nelement vertex 1\nproperty "
                                             "float x\nproperty float y\nproperty float "
                                             "z\nend_header\n0 0 nan\n");
    QTest::newRow("more points than there can be")
        << QByteArray("ply\nformat binary_little_endian 1.0\nelement vertex 4000000000\nproperty "
                      "float x\nproperty float y\nproperty float z\nend_header\n0123");
}

void tst_PointCloudMethods::refusesFiles()
{
    QFETCH(QByteArray, bytes);
    Fixture f;
    const PointCloud points = ballPoints(25, {}, 300);
    const int id = f.upload(points);
    const std::string path = f.world.writeFile(QStringLiteral("bad.ply"), bytes);
    QCOMPARE(f.errorFrom("point_cloud_load_from_id", object("id", id, "path", path)),
             std::string("FileFormatError"));
    QVERIFY(f.downloadCloud(id).positions == points.positions);
}

void tst_PointCloudMethods::refusesOutputs_data()
{
    QTest::addColumn<QString>("path");

    QTest::newRow("missing") << QStringLiteral("%1/missing.ply");
    QTest::newRow("a folder") << QStringLiteral("%1");
    QTest::newRow("relative") << QStringLiteral("out.ply");
    QTest::newRow("empty") << QString();
    QTest::newRow("a link") << QStringLiteral("%1/link.ply");
    QTest::newRow("a device") << QStringLiteral("/dev/null");
}

void tst_PointCloudMethods::refusesOutputs()
{
    QFETCH(QString, path);
    Fixture f;
    const int id = f.upload(ballPoints(25, {}, 300));
    const QString folder = QString::fromStdString(f.world.path({}));
    QFile::link(QString::fromStdString(f.world.emptyFile(QStringLiteral("real.ply"))),
                folder + QStringLiteral("/link.ply"));
    const std::string named =
        path.contains(QLatin1String("%1")) ? path.arg(folder).toStdString() : path.toStdString();
    QCOMPARE(f.errorFrom("point_cloud_save", object("id", id, "path", named, "format", "ply")),
             std::string("FileAccessError"));
    QVERIFY(!QFile::exists(folder + QStringLiteral("/missing.ply")));
}

void tst_PointCloudMethods::aRefusedOutputKeepsItsContents()
{
    Fixture f;
    const int empty = f.createCloud();
    const std::string path = f.world.writeFile(QStringLiteral("kept.ply"), "kept");
    QCOMPARE(f.errorFrom("point_cloud_save", object("id", empty, "path", path, "format", "ply")),
             std::string("EmptyShapeError"));
    QCOMPARE(ServiceWorld::read(path), QByteArray("kept"));
}

void tst_PointCloudMethods::aFullDiskLeavesAnEmptyFile_data()
{
    QTest::addColumn<int>("points");

    QTest::newRow("a large file") << 20000;
    QTest::newRow("a small file") << 100;
}

void tst_PointCloudMethods::aFullDiskLeavesAnEmptyFile()
{
#ifdef Q_OS_UNIX
    QFETCH(int, points);
    Fixture f;
    const int id = f.upload(ballPoints(25, {}, points));
    const std::string path = f.world.emptyFile(QStringLiteral("out.ply"));
    const Json::Value params = object("id", id, "path", path, "format", "ply");
    {
        const FileSizeLimit limit(1000);
        QCOMPARE(thrownText([&] { f.call("point_cloud_save", params); }),
                 "Cannot write to " + path + ": File too large");
    }
    QCOMPARE(QFile(QString::fromStdString(path)).size(), qint64(0));
    QCOMPARE(f.errorFrom("point_cloud_save", params), std::string());
    QCOMPARE(geometry::loadPointCloud(path).positions.size(), std::size_t(points));
#endif
}

void tst_PointCloudMethods::aCloudBelongsToItsClient()
{
    Fixture f;
    RecordingTrovek other;
    other.connectToDaemon(f.world.address());
    const int id = f.upload(ballPoints(25, {}, 300));
    const int own = ask(other, "point_cloud_create").asInt();
    QVERIFY(own != id);
    QCOMPARE(errorOf([&] { ask(other, "point_cloud_destroy", object("id", id)); }),
             std::string("UnknownPointCloudError"));
    QCOMPARE(
        errorOf([&] { ask(other, "point_cloud_load_from_id", object("id", own, "source", id)); }),
        std::string("UnknownPointCloudError"));
    QCOMPARE(f.downloadCloud(id).positions.size(), std::size_t(300));
}

void tst_PointCloudMethods::cloudsEndWithTheirClient()
{
    Fixture f;
    // As many as one client may have: were they kept, there would be no room for a new client's.
    const int first = f.createCloud();
    f.client.disconnectFromDaemon();
    f.client.connectToDaemon(f.world.address());
    QCOMPARE(f.errorFrom("point_cloud_destroy", object("id", first)),
             std::string("UnknownPointCloudError"));
}

void tst_PointCloudMethods::requestsMayBeSentWithoutWaiting()
{
    Fixture f;
    const std::string path = f.world.writeCloud(QStringLiteral("in.ply"), ballPoints(25, {}, 2000));
    const std::string out = f.world.emptyFile(QStringLiteral("out.ply"));
    RawClient raw(f.world.address());
    raw.greet();
    raw.call(1, "point_cloud_create");
    const int id = raw.readLine()["result"].asInt();
    raw.call(2, "point_cloud_load_from_id", object("id", id, "path", path));
    raw.call(3, "point_cloud_crop",
             object("id", id, "minimum", list({0, -30, -30}), "maximum", list({30, 30, 30})));
    raw.call(4, "point_cloud_save", object("id", id, "path", out, "format", "ply"));
    raw.call(5, "point_cloud_destroy", object("id", id));
    raw.call(6, "point_cloud_save", object("id", id, "path", out, "format", "ply"));
    std::map<int, Json::Value> answers;
    for (int i = 0; i < 5; ++i) {
        const Json::Value line = raw.readLine();
        answers[line["id"].asInt()] = line;
    }
    QCOMPARE(answers[2]["result"]["points"].asInt(), 2000);
    QCOMPARE(answers[3]["result"]["points"].asInt(), 1000);
    QVERIFY(answers[4].isMember("result"));
    QVERIFY(answers[5].isMember("result"));
    QCOMPARE(answers[6]["error"]["data"]["name"].asString(), std::string("UnknownPointCloudError"));
    QCOMPARE(geometry::loadPointCloud(out).positions.size(), std::size_t(1000));
}

void tst_PointCloudMethods::aClientMayHangUpInTheMiddle()
{
    Fixture f;
    const std::string path =
        f.world.writeCloud(QStringLiteral("in.ply"), ballPoints(25, {}, 20000));
    for (int i = 0; i < 5; ++i) {
        RawClient raw(f.world.address());
        raw.greet();
        raw.call(1, "point_cloud_create");
        const int id = raw.readLine()["result"].asInt();
        raw.call(2, "point_cloud_load_from_id", object("id", id, "path", path));
        raw.call(3, "point_cloud_process", object("id", id, "grid_size", 0.1));
        raw.call(4, "mesh_create");
    }
    // The service goes on, and with others' work too.
    const int id = f.upload(ballPoints(25, {}, 300));
    QCOMPARE(f.downloadCloud(id).positions.size(), std::size_t(300));
}

QTEST_GUILESS_MAIN(tst_PointCloudMethods)
#include "tst_point_cloud_methods.moc"
