#include "scanner_world.h"
#include "support/thrown_text.h"

#include <service/geometry/mesh_file.h>
#include <service/geometry/rigid_transform.h>

#include <QTest>

#include <cmath>

using namespace trovek;
using geometry::Mesh;
using geometry::RigidTransform;
using geometry::Vector;

namespace {

using Fixture = ScannerFixture;

} // namespace

class tst_MeshMethods : public QObject
{
    Q_OBJECT

private slots:
    void whatIsLoadedIsSaved_data();
    void whatIsLoadedIsSaved();
    void copiesAMesh();
    void cutsAMesh();
    void placesAMesh();
    void reconstructsABall();
    void refusesBadParameters_data();
    void refusesBadParameters();
    void refusesEmptyMeshes_data();
    void refusesEmptyMeshes();
    void refusesFiles_data();
    void refusesFiles();
    void anOpenMeshIsNotCut();
    void aMeshBelongsToItsClient();
};

void tst_MeshMethods::whatIsLoadedIsSaved_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("beginning");

    QTest::newRow("STL") << QByteArray("stl") << QStringLiteral("out.stl") << QByteArray();
    QTest::newRow("STL as text") << QByteArray("stl_text") << QStringLiteral("out.STL")
                                 << QByteArray("solid");
    QTest::newRow("OBJ") << QByteArray("obj") << QStringLiteral("out.obj") << QByteArray();
    QTest::newRow("PLY") << QByteArray("PLY") << QStringLiteral("out.ply") << QByteArray("ply\n");
}

void tst_MeshMethods::whatIsLoadedIsSaved()
{
    QFETCH(QByteArray, format);
    QFETCH(QString, name);
    QFETCH(QByteArray, beginning);
    Fixture f;
    const int id = f.upload(cube(10));
    const std::string path = f.world.writeFile(name, "what stood there before");
    QVERIFY(
        f.call("mesh_save", object("id", id, "path", path, "format", format.constData())).isNull());
    const QByteArray bytes = ServiceWorld::read(path);
    QVERIFY(bytes.startsWith(beginning));
    QVERIFY(!bytes.contains("before"));
    const int again = f.createMesh();
    const Json::Value answer = f.call("mesh_load", object("id", again, "path", path));
    QCOMPARE(answer["vertices"].asInt(), 8);
    QCOMPARE(answer["triangles"].asInt(), 12);
    QCOMPARE(volume(f.downloadMesh(again)), 1000.0);
}

void tst_MeshMethods::copiesAMesh()
{
    Fixture f;
    const int source = f.upload(cube(10));
    const int id = f.upload(cube(20));
    QCOMPARE(f.call("mesh_copy", object("id", id, "source", source))["triangles"].asInt(), 12);
    f.call("mesh_destroy", object("id", source));
    QCOMPARE(volume(f.downloadMesh(id)), 1000.0);
}

void tst_MeshMethods::cutsAMesh()
{
    Fixture f;
    const int id = f.upload(cube(10));
    f.call("mesh_cut_plane", object("id", id, "point", list({0, 0, 4}), "normal", list({0, 0, 3})));
    const Mesh cut = f.downloadMesh(id);
    QVERIFY(isClosed(cut));
    QVERIFY(std::abs(volume(cut) - 400) < 1e-6);
    // Askew: half of what is left, by the middle of it.
    f.call("mesh_cut_plane",
           object("id", id, "point", list({5, 5, 2}), "normal", list({-1, 0.5, 0.3})));
    const Mesh half = f.downloadMesh(id);
    QVERIFY(isClosed(half));
    QVERIFY(std::abs(volume(half) - 200) < 1e-6);
}

void tst_MeshMethods::placesAMesh()
{
    Fixture f;
    Mesh slab = cube(10);
    for (Vector& vertex : slab.vertices)
        vertex.z /= 5;
    const RigidTransform thrown =
        RigidTransform::moving({7, 8, 90}) * RigidTransform::turning(Vector{1, 0.4, 0.2}, 1.2);
    const int id = f.upload(transformed(slab, thrown));
    f.call("mesh_place_on_platform", object("id", id));
    const geometry::Box box = boundingBox(f.downloadMesh(id));
    QCOMPARE(box.minimum.z, 0.0);
    QVERIFY2(std::abs(box.maximum.z - 2) < 1e-3, qPrintable(QString::number(box.maximum.z)));
}

void tst_MeshMethods::reconstructsABall()
{
    Fixture f;
    const int cloud = f.createCloud();
    const std::string path =
        f.world.writeCloud(QStringLiteral("ball.ply"), ballPoints(25, {3, 4, 5}, 4000));
    f.call("point_cloud_load_from_id", object("id", cloud, "path", path));
    const int id = f.createMesh();
    const Json::Value answer =
        f.call("mesh_reconstruct_point_cloud", object("id", id, "point_cloud", cloud));
    const Mesh mesh = f.downloadMesh(id);
    QCOMPARE(answer["triangles"].asInt(), int(mesh.triangles.size()));
    QVERIFY(isClosed(mesh));
    const double ideal = 4.0 / 3 * 3.14159265 * 25 * 25 * 25;
    QVERIFY2(std::abs(volume(mesh) / ideal - 1) < 0.02, qPrintable(QString::number(volume(mesh))));
    for (const Vector& vertex : mesh.vertices) {
        const double off = length(vertex - Vector{3, 4, 5}) - 25;
        QVERIFY2(std::abs(off) < 0.5, qPrintable(QString::number(off)));
    }
}

void tst_MeshMethods::refusesBadParameters_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("error");

    const auto row = [](const char* name, const char* method, const char* json, const char* error) {
        QTest::newRow(name) << QByteArray(method) << QByteArray(json) << QByteArray(error);
    };
    row("unknown id", "mesh_destroy", R"({"id":999})", "UnknownMeshError");
    row("no id", "mesh_place_on_platform", "{}", "InvalidArgumentError");
    row("a cloud's id", "mesh_destroy", R"({"id":2})", "UnknownMeshError");
    row("copy from a cloud", "mesh_copy", R"({"id":1,"source":2})", "UnknownMeshError");
    row("copy without a source", "mesh_copy", R"({"id":1})", "InvalidArgumentError");
    row("load without a path", "mesh_load", R"({"id":1})", "InvalidArgumentError");
    row("load a file of no kind", "mesh_load", R"({"id":1,"path":"/part.gcode"})",
        "FileFormatError");
    row("load what is not there", "mesh_load", R"({"id":1,"path":"/nowhere/part.stl"})",
        "FileAccessError");
    row("load a relative path", "mesh_load", R"({"id":1,"path":"part.stl"})", "FileAccessError");
    row("load a device", "mesh_load", R"({"id":1,"path":"/dev/zero.stl"})", "FileAccessError");
    row("save as points", "mesh_save", R"({"id":1,"path":"/a.xyz","format":"xyz"})",
        "InvalidArgumentError");
    row("save where nothing is", "mesh_save", R"({"id":1,"path":"/nowhere/a.stl","format":"stl"})",
        "FileAccessError");
    row("cut without a point", "mesh_cut_plane", R"({"id":1,"normal":[0,0,1]})",
        "InvalidArgumentError");
    row("cut without a direction", "mesh_cut_plane", R"({"id":1,"point":[0,0,1],"normal":[0,0,0]})",
        "InvalidArgumentError");
    row("cut all of it", "mesh_cut_plane", R"({"id":1,"point":[0,0,-5],"normal":[0,0,1]})",
        "EmptyShapeError");
    row("reconstruct from a mesh", "mesh_reconstruct_point_cloud", R"({"id":1,"point_cloud":1})",
        "UnknownPointCloudError");
}

void tst_MeshMethods::refusesBadParameters()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, error);
    Fixture f;
    QCOMPARE(f.upload(cube(10)), 1);
    QCOMPARE(f.createCloud(), 2);
    QCOMPARE(f.errorFrom(method.constData(), parsed(json)), error.toStdString());
    QCOMPARE(volume(f.downloadMesh(1)), 1000.0);
}

void tst_MeshMethods::refusesEmptyMeshes_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("json");

    const auto row = [](const char* name, const char* method, const char* json) {
        QTest::newRow(name) << QByteArray(method) << QByteArray(json);
    };
    row("save", "mesh_save", R"({"id":2,"path":"/nowhere.stl","format":"stl"})");
    row("copy", "mesh_copy", R"({"id":1,"source":2})");
    row("cut", "mesh_cut_plane", R"({"id":2,"point":[0,0,0],"normal":[0,0,1]})");
    row("place", "mesh_place_on_platform", R"({"id":2})");
}

void tst_MeshMethods::refusesEmptyMeshes()
{
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, json);
    Fixture f;
    QCOMPARE(f.upload(cube(10)), 1);
    QCOMPARE(f.createMesh(), 2);
    QCOMPARE(f.errorFrom(method.constData(), parsed(json)), std::string("EmptyShapeError"));
    QCOMPARE(volume(f.downloadMesh(1)), 1000.0);
}

void tst_MeshMethods::refusesFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("empty STL") << QStringLiteral("bad.stl") << QByteArray();
    QTest::newRow("empty OBJ") << QStringLiteral("bad.obj") << QByteArray();
    QTest::newRow("empty PLY") << QStringLiteral("bad.ply") << QByteArray();
    QTest::newRow("a picture as STL")
        << QStringLiteral("bad.stl") << QByteArray("\x89PNG\r\n\x1a\n", 8);
    QTest::newRow("a vertex that is not there")
        << QStringLiteral("bad.obj") << QByteArray("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 4\n");
    QTest::newRow("points without faces")
        << QStringLiteral("bad.obj") << QByteArray("v 0 0 0\nv 1 0 0\nv 0 1 0\n");
    QTest::newRow("STL of another size")
        << QStringLiteral("bad.stl") << QByteArray(80, ' ') + QByteArray("\xff\xff\xff\x7f", 4);
}

void tst_MeshMethods::refusesFiles()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    Fixture f;
    const int id = f.upload(cube(10));
    const std::string path = f.world.writeFile(name, bytes);
    QCOMPARE(f.errorFrom("mesh_load", object("id", id, "path", path)),
             std::string("FileFormatError"));
    QCOMPARE(volume(f.downloadMesh(id)), 1000.0);
}

void tst_MeshMethods::anOpenMeshIsNotCut()
{
    Fixture f;
    Mesh open = cube(10);
    open.triangles.pop_back();
    const int id = f.upload(open);
    QCOMPARE(f.errorFrom("mesh_cut_plane",
                         object("id", id, "point", list({0, 0, 5}), "normal", list({0, 0, 1}))),
             std::string("GeometryError"));
    QCOMPARE(f.downloadMesh(id).triangles.size(), std::size_t(11));
}

void tst_MeshMethods::aMeshBelongsToItsClient()
{
    Fixture f;
    RecordingTrovek other;
    other.connectToDaemon(f.world.address());
    const int id = f.upload(cube(10));
    const int own = ask(other, "mesh_create").asInt();
    QVERIFY(own != id);
    for (const char* method : {"mesh_destroy", "mesh_place_on_platform"}) {
        QCOMPARE(errorOf([&] { ask(other, method, object("id", id)); }),
                 std::string("UnknownMeshError"));
    }
    QCOMPARE(errorOf([&] { ask(other, "mesh_copy", object("id", own, "source", id)); }),
             std::string("UnknownMeshError"));
    QCOMPARE(volume(f.downloadMesh(id)), 1000.0);
    // It goes with its client.
    f.client.disconnectFromDaemon();
    f.client.connectToDaemon(f.world.address());
    QCOMPARE(f.errorFrom("mesh_destroy", object("id", id)), std::string("UnknownMeshError"));
}

QTEST_GUILESS_MAIN(tst_MeshMethods)
#include "tst_mesh_methods.moc"
