#include "shapes.h"
#include "support/test_file.h"

#include <geometry/mesh_file.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <limits>
#include <optional>

using namespace shapes;
using trovek::contents;
using trovek::makeFile;

namespace {

std::string written(const Mesh& mesh, MeshFormat format)
{
    std::string bytes;
    writeMesh(mesh, format,
              [&bytes](const char* piece, std::size_t size) { bytes.append(piece, size); });
    return bytes;
}

/** With coordinates that take all the digits of a number. */
Mesh oddMesh()
{
    return transformed(ball(20, 12), RigidTransform::moving({1.0 / 3, 1e-17, -1e5 / 7}));
}

Mesh inSinglePrecision(Mesh mesh)
{
    for (Vector& vertex : mesh.vertices)
        vertex = {double(float(vertex.x)), double(float(vertex.y)), double(float(vertex.z))};
    return mesh;
}

/** The corners of all triangles, whatever the vertices' numbers. */
std::vector<Vector> corners(const Mesh& mesh)
{
    std::vector<Vector> result;
    for (const auto& triangle : mesh.triangles) {
        for (const std::uint32_t vertex : triangle)
            result.push_back(mesh.vertices[vertex]);
    }
    return result;
}

template <typename Number>
void put(std::string& bytes, Number number)
{
    char raw[sizeof number];
    std::memcpy(raw, &number, sizeof number);
    bytes.append(raw, sizeof number);
}

template <typename Number>
void putBigEndian(std::string& bytes, Number number)
{
    char raw[sizeof number];
    std::memcpy(raw, &number, sizeof number);
    bytes.append(std::string(raw, sizeof number).rbegin(), std::string(raw, sizeof number).rend());
}

std::string binaryStl(std::uint32_t count, int triangles, float coordinate = 1)
{
    std::string bytes(80, ' ');
    put(bytes, count);
    for (int triangle = 0; triangle < triangles; ++triangle) {
        for (const float number :
             {0.f, 0.f, 1.f, 0.f, 0.f, float(triangle), coordinate, 0.f, 0.f, 0.f, 1.f, 0.f})
            put(bytes, number);
        put(bytes, std::uint16_t(7));
    }
    return bytes;
}

std::string plyHeader(const char* format, const char* vertices, const char* faces)
{
    return std::string("ply\nformat ") + format + " 1.0\nelement vertex " + vertices +
           "\nproperty float x\nproperty float y\nproperty float z\nelement face " + faces +
           "\nproperty list uchar int vertex_indices\nend_header\n";
}

std::string textPly(const char* vertices, const char* faces, const char* body)
{
    return plyHeader("ascii", vertices, faces) + body;
}

std::string binaryPly(const char* vertices, const char* faces, std::int32_t corner = 2)
{
    std::string bytes = plyHeader("binary_little_endian", vertices, faces);
    for (const float number : {0.f, 0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 1.f, 0.f})
        put(bytes, number);
    put(bytes, std::uint8_t(3));
    for (const std::int32_t vertex : {0, 1, corner})
        put(bytes, vertex);
    return bytes;
}

const char* const kTriangleText = "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
const char* const kTriangleObj = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";

std::string textStl(const std::string& vertex)
{
    return "solid a name\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex " + vertex +
           "\nvertex 0 1 0\nendloop\nendfacet\nendsolid a name\n";
}

} // namespace

Q_DECLARE_METATYPE(trovek::geometry::MeshFormat)

class tst_MeshFile : public QObject
{
    Q_OBJECT

private slots:
    void knowsItsFormats();
    void comesBackAsItWas_data();
    void comesBackAsItWas();
    void writesWhatOthersRead();

    void readsBinaryStlThatCallsItselfSolid();
    void readsTextStl_data();
    void readsTextStl();
    void leavesOutTrianglesWithoutAnArea();
    void readsPly_data();
    void readsPly();
    void readsObj_data();
    void readsObj();
    void takesConcaveFacesApart();
    void takesAnyFaceApart_data();
    void takesAnyFaceApart();

    void tellsWhatIsWrong_data();
    void tellsWhatIsWrong();
    void survivesBeingCutOff_data();
    void survivesBeingCutOff();
    void survivesAnyByte_data();
    void survivesAnyByte();

    void savesAndLoads_data();
    void savesAndLoads();
    void loadsByTheEndingOnly();
    void namesTheFileThatItCannotLoad();
    void replacesAFileAsAWhole();
    void leavesTheEarlierFile();
    void refusesAnEmptyMesh();
    void tellsItsProgressAndIsCanceled_data();
    void tellsItsProgressAndIsCanceled();
};

void tst_MeshFile::knowsItsFormats()
{
    QVERIFY(meshFormat("stl") == MeshFormat::Stl);
    QVERIFY(meshFormat("STL") == MeshFormat::Stl);
    QVERIFY(meshFormat("stl_text") == MeshFormat::StlText);
    QVERIFY(meshFormat("obj") == MeshFormat::Obj);
    QVERIFY(meshFormat("Ply") == MeshFormat::Ply);
    for (const char* none : {"", "st", "stl ", "3mf", "xyz", ".stl"})
        QVERIFY(!meshFormat(none));
    QVERIFY(meshFormatOfPath("/a/b.stl") == MeshFormat::Stl);
    QVERIFY(meshFormatOfPath("/a.obj/b.c.PLY") == MeshFormat::Ply);
    for (const char* none : {"", "/a/stl", "/a.stl/b", "/a/b.", "/a/b.stl_text", "/a/b.stl/"})
        QVERIFY(!meshFormatOfPath(none));
}

void tst_MeshFile::comesBackAsItWas_data()
{
    QTest::addColumn<MeshFormat>("format");
    QTest::addColumn<bool>("isExact");

    QTest::newRow("STL") << MeshFormat::Stl << false;
    QTest::newRow("STL as text") << MeshFormat::StlText << false;
    QTest::newRow("OBJ") << MeshFormat::Obj << true;
    QTest::newRow("PLY") << MeshFormat::Ply << true;
}

void tst_MeshFile::comesBackAsItWas()
{
    QFETCH(MeshFormat, format);
    QFETCH(bool, isExact);
    const Mesh mesh = oddMesh();
    const Mesh read = readMesh(written(mesh, format), format);
    if (isExact) {
        QVERIFY(areSame(read, mesh));
        return;
    }
    QVERIFY(corners(read) == corners(inSinglePrecision(mesh)));
    // Equal corners are one vertex again.
    QCOMPARE(read.vertices.size(), mesh.vertices.size());
    QVERIFY(isClosed(read));
}

void tst_MeshFile::writesWhatOthersRead()
{
    const Mesh mesh{{{0, 0, 0}, {1.5, 0, 0}, {0, 0.1, 0}}, {{0, 1, 2}}};
    QCOMPARE(written(mesh, MeshFormat::Obj),
             std::string("v 0 0 0\nv 1.5 0 0\nv 0 0.1 0\nf 1 2 3\n"));
    QCOMPARE(written(mesh, MeshFormat::StlText),
             std::string("solid mesh\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\n"
                         "vertex 1.5 0 0\nvertex 0 0.1 0\nendloop\nendfacet\nendsolid mesh\n"));
    const std::string stl = written(mesh, MeshFormat::Stl);
    QCOMPARE(stl.size(), std::size_t(134));
    QCOMPARE(stl.substr(80, 4), std::string("\x01\0\0\0", 4));
    QVERIFY(stl.rfind("solid", 0) != 0);
    // The normal's z, then the second corner's x.
    QCOMPARE(stl.substr(92, 4), std::string("\0\0\x80\x3f", 4));
    QCOMPARE(stl.substr(108, 4), std::string("\0\0\xc0\x3f", 4));
    const std::string ply = written(mesh, MeshFormat::Ply);
    const std::string header =
        "ply\nformat binary_little_endian 1.0\nelement vertex 3\nproperty double x\n"
        "property double y\nproperty double z\nelement face 1\n"
        "property list uchar uint vertex_indices\nend_header\n";
    QCOMPARE(ply.substr(0, header.size()), header);
    QCOMPARE(ply.size(), header.size() + 3 * 24 + 13);
}

void tst_MeshFile::readsBinaryStlThatCallsItselfSolid()
{
    std::string bytes = binaryStl(2, 2);
    bytes.replace(0, 20, "solid and not a text");
    QCOMPARE(readMesh(bytes, MeshFormat::Stl).triangles.size(), std::size_t(2));
    bytes.pop_back();
    QCOMPARE(thrownBy([&] { readMesh(bytes, MeshFormat::Stl); }),
             std::string("FileFormatError: The file is cut off: 1 of 2 triangles are there"));
}

void tst_MeshFile::readsTextStl_data()
{
    QTest::addColumn<std::string>("bytes");
    QTest::addColumn<int>("triangles");

    const std::string one = textStl("1 0 0");
    QTest::newRow("plain") << one << 1;
    QTest::newRow("no name, one line")
        << std::string("solid\nfacet normal 0 0 0 outer loop vertex 0 0 0 vertex +1.0e0 0 0 "
                       "vertex 0 1. 0 endloop endfacet endsolid")
        << 1;
    QTest::newRow("capitals and blanks")
        << QByteArray(one.c_str()).toUpper().replace("\n", " \t\r\n").toStdString() << 1;
    QTest::newRow("a blank before it") << "  \n" + one << 1;
    QTest::newRow("two solids") << one + textStl("2 0 0") << 2;
    QTest::newRow("an odd normal")
        << QByteArray(one.c_str()).replace("normal 0 0 1", "normal nan -nan(ind) inf").toStdString()
        << 1;
    QTest::newRow("a small number") << textStl("1 1e-400 0") << 1;
}

void tst_MeshFile::readsTextStl()
{
    QFETCH(std::string, bytes);
    QFETCH(int, triangles);
    const Mesh mesh = readMesh(bytes, MeshFormat::Stl);
    QCOMPARE(int(mesh.triangles.size()), triangles);
    COMPARE_NEAR(area(Mesh{mesh.vertices, {mesh.triangles[0]}}), 0.5, 1e-12);
}

void tst_MeshFile::leavesOutTrianglesWithoutAnArea()
{
    // Three equal corners, and two.
    std::string bytes = binaryStl(2, 2);
    bytes.replace(84 + 12, 36, std::string(36, '\0'));
    const Mesh mesh = readMesh(bytes, MeshFormat::Stl);
    QCOMPARE(mesh.triangles.size(), std::size_t(1));
    QCOMPARE(readMesh("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 2\nf 1 2 3\nf 3 3 3 3\n", MeshFormat::Obj)
                 .triangles.size(),
             std::size_t(1));
}

void tst_MeshFile::readsPly_data()
{
    QTest::addColumn<std::string>("bytes");

    std::string bigEndian = plyHeader("binary_big_endian", "3", "1");
    for (const float number : {0.f, 0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 1.f, 0.f}) {
        std::string raw;
        put(raw, number);
        bigEndian.append(raw.rbegin(), raw.rend());
    }
    bigEndian += '\3';
    for (const char vertex : {0, 1, 2})
        bigEndian += std::string(3, '\0') + vertex;

    QTest::newRow("text") << textPly("3", "1", kTriangleText);
    QTest::newRow("text in one line") << textPly("3", "1", "0 0 0 1 0 0 0 1 0 3 0 1 2");
    QTest::newRow("text with Windows' line ends")
        << QByteArray(textPly("3", "1", kTriangleText).c_str()).replace("\n", "\r\n").toStdString();
    QTest::newRow("text with old Macs' line ends")
        << QByteArray(textPly("3", "1", kTriangleText).c_str()).replace("\n", "\r").toStdString();
    QTest::newRow("little-endian") << binaryPly("3", "1");
    QTest::newRow("big-endian") << bigEndian;
    QTest::newRow("a line end behind") << binaryPly("3", "1") + "\r\n";
    QTest::newRow("comments")
        << QByteArray(textPly("3", "1", kTriangleText).c_str())
               .replace("element face",
                        "comment end_header is not here\nobj_info x\n\nelement face")
               .toStdString();
    QTest::newRow("more of a vertex")
        << std::string("ply\nformat ascii 1.0\nelement vertex 3\nproperty float confidence\n"
                       "property double x\nproperty list uchar short odd\nproperty int y\n"
                       "property int8 z\nelement face 1\nproperty uchar flags\n"
                       "property list ushort uint32 vertex_index\nend_header\n"
                       "0.5 0 0 0 0\n0.5 1 2 7 7 0 0\n0.5 0 1 7 1 0\n9 3 0 1 2\n");
    QTest::newRow("more than vertices and faces")
        << std::string("ply\nformat ascii 1.0\nelement light 1\nproperty float power\n"
                       "element nothing 18446744073709551\n"
                       "element vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
                       "element face 1\nproperty list uchar int vertex_indices\n"
                       "element edge 1\nproperty int a\nproperty int b\nend_header\n"
                       "12\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n0 1\n");
    QTest::newRow("faces before vertices")
        << std::string("ply\nformat ascii 1.0\nelement face 1\n"
                       "property list uchar int vertex_indices\nelement vertex 3\n"
                       "property float x\nproperty float y\nproperty float z\nend_header\n"
                       "3 0 1 2\n0 0 0\n1 0 0\n0 1 0\n");
    QTest::newRow("faces without corners")
        << textPly("3", "3", "0 0 0 1 0 0 0 1 0 0 2 0 1 3 0 1 2");
}

void tst_MeshFile::readsPly()
{
    QFETCH(std::string, bytes);
    const Mesh mesh = readMesh(bytes, MeshFormat::Ply);
    QVERIFY(areSame(mesh, {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}}));
}

void tst_MeshFile::readsObj_data()
{
    QTest::addColumn<std::string>("bytes");

    QTest::newRow("plain") << std::string(kTriangleObj);
    QTest::newRow("no line end") << std::string("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3");
    QTest::newRow("normals and textures")
        << std::string("vn 0 0 1\nvt 0 0\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1/1/1 2//1 3/1\n");
    QTest::newRow("counted backwards") << std::string("v 0 0 0\nv 1 0 0\nv 0 1 0\nf -3 -2 -1\n");
    QTest::newRow("faces first") << std::string("f 1 2 3\nv 0 0 0\nv 1 0 0\nv 0 1 0\n");
    QTest::newRow("weights and colors")
        << std::string("v 0 0 0 1.0\nv 1 0 0 0.5 0.5 0.5\nv 0 1 0\nf 1 2 3\n");
    QTest::newRow("whatever else is in it") << std::string(
        "# a comment\nmtllib a.mtl\no part\ng group\n\nusemtl b\ns off\n\tv  0 0 0 \r\n"
        "v 1 0 0\r\nv 0 1 0\r\nl 1 2\np 3\nf 1 2 3\n");
}

void tst_MeshFile::readsObj()
{
    QFETCH(std::string, bytes);
    const Mesh mesh = readMesh(bytes, MeshFormat::Obj);
    QVERIFY(areSame(mesh, {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}}));
}

void tst_MeshFile::takesConcaveFacesApart()
{
    const auto areaOf = [](const std::string& bytes) {
        const Mesh mesh = readMesh(bytes, MeshFormat::Obj);
        // None lies over another one.
        for (const auto& [a, b, c] : mesh.triangles) {
            const Vector normal =
                cross(mesh.vertices[b] - mesh.vertices[a], mesh.vertices[c] - mesh.vertices[a]);
            if (normal.z < 0)
                return -1.0;
        }
        return area(mesh);
    };
    QCOMPARE(areaOf("v 0 0 0\nv 2 0 0\nv 2 2 0\nv 0 2 0\nf 1 2 3 4\n"), 4.0);
    // An arrow's head, from each of its corners.
    for (const char* face : {"1 2 3 4", "2 3 4 1", "3 4 1 2", "4 1 2 3"}) {
        COMPARE_NEAR(areaOf(std::string("v 0 0 0\nv 4 -4 0\nv 0 8 0\nv -4 -4 0\nf ") + face + "\n"),
                     32, 1e-9);
    }
    // A U, from each of its corners, upright too.
    const std::string u =
        "v 0 0 0\nv 3 0 0\nv 3 3 0\nv 2 3 0\nv 2 1 0\nv 1 1 0\nv 1 3 0\nv 0 3 0\n";
    for (int first = 0; first < 8; ++first) {
        std::string face = "f";
        for (int corner = 0; corner < 8; ++corner)
            face += " " + std::to_string((first + corner) % 8 + 1);
        COMPARE_NEAR(areaOf(u + face + "\n"), 7, 1e-9);
    }
}

void tst_MeshFile::takesAnyFaceApart_data()
{
    QTest::addColumn<std::string>("vertices");

    QTest::newRow("crosses itself")
        << std::string("v 0 0 0\nv 3 0 0\nv 0 2 0\nv 3 3 0\nv 2 5 0\nv 1 -1 0\n");
    QTest::newRow("crosses itself as often as it has a corner twice")
        << std::string("v 5 0 0\nv 3 0 0\nv 3 3 0\nv 2 3 0\nv 0 1 0\nv 0 1 0\n");
    QTest::newRow("touches itself")
        << std::string("v 0 0 0\nv 4 0 0\nv 4 4 0\nv 2 0 0\nv 0 4 0\nv 0 1 0\n");
    QTest::newRow("goes back the same way")
        << std::string("v 0 0 0\nv 4 0 0\nv 4 4 0\nv 4 0 0\nv 4 -1 0\nv 0 -1 0\n");
    QTest::newRow("has corners above each other")
        << std::string("v 0 0 0\nv 4 0 0\nv 4 4 1\nv 1 1 0\nv 4 4 0\nv 0 4 0\n");
    QTest::newRow("has no area") << std::string(
        "v 0 0 0\nv 1 0 0\nv 2 0 0\nv 1 0 0\nv 3 0 0\nv 2 0 0\n");
    QTest::newRow("is tiny") << std::string(
        "v 0 0 0\nv 4e-200 0 0\nv 4e-200 4e-200 0\nv 1e-200 1e-200 0\n"
        "v 0 4e-200 0\nv 0 1e-200 0\n");
}

void tst_MeshFile::takesAnyFaceApart()
{
    QFETCH(std::string, vertices);
    const Mesh mesh = readMesh(vertices + "f 1 2 3 4 5 6\n", MeshFormat::Obj);
    QCOMPARE(mesh.vertices.size(), std::size_t(6));
    QCOMPARE(mesh.triangles.size(), std::size_t(4));
    for (const auto& triangle : mesh.triangles) {
        for (const std::uint32_t vertex : triangle)
            QVERIFY(vertex < mesh.vertices.size());
    }
}

void tst_MeshFile::tellsWhatIsWrong_data()
{
    QTest::addColumn<MeshFormat>("format");
    QTest::addColumn<std::string>("bytes");
    QTest::addColumn<std::string>("expected");

    const auto row = [](const char* name, MeshFormat format, const std::string& bytes,
                        const char* expected) {
        QTest::newRow(name) << format << bytes << "FileFormatError: " + std::string(expected);
    };
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const MeshFormat format : {MeshFormat::Stl, MeshFormat::Obj, MeshFormat::Ply})
        row(qPrintable(QStringLiteral("empty, %1").arg(int(format))), format, "",
            "The file is empty");

    const MeshFormat stl = MeshFormat::Stl;
    row("STL: something else", stl, "PK and so on", "The file is no STL file");
    row("STL: a header only", stl, std::string(80, ' '), "The file is no STL file");
    row("STL: no triangles", stl, binaryStl(0, 0), "The file has no triangles");
    row("STL: cut off", stl, binaryStl(3, 2), "The file is cut off: 2 of 3 triangles are there");
    row("STL: a count that lies", stl, binaryStl(4294967295u, 1),
        "The file is cut off: 1 of 4294967295 triangles are there");
    row("STL: longer than it says", stl, binaryStl(1, 2),
        "The file goes on behind its 1 triangles");
    row("STL: not a number", stl, binaryStl(1, 1, nan), "Triangle 0 has a corner without a place");
    row("STL: infinite", stl, binaryStl(1, 1, HUGE_VALF),
        "Triangle 0 has a corner without a place");
    row("STL: far out", stl, binaryStl(1, 1, 1e30f), "Triangle 0 lies too far out");
    row("STL: points only", stl, binaryStl(1, 1, 0), "The file has no triangles");
    row("STL text: nothing in it", stl, "solid\nendsolid\n", "The file has no triangles");
    row("STL text: cut off in a facet", stl,
        textStl("1 0 0").substr(0, textStl("1 0 0").find("vertex 1")),
        "The file is cut off: \"vertex\" is missing");
    row("STL text: cut off at the end", stl,
        textStl("1 0 0").substr(0, textStl("1 0 0").rfind("endsolid")),
        "The file is cut off: \"endsolid\" is missing");
    row("STL text: not a number", stl, textStl("1 nan 0"),
        "Line 5: \"nan\" is no number that can be used");
    row("STL text: infinite", stl, textStl("1 -inf 0"),
        "Line 5: \"-inf\" is no number that can be used");
    row("STL text: more than a number holds", stl, textStl("1 1e999 0"),
        "Line 5: \"1e999\" is no number that can be used");
    row("STL text: far out", stl, textStl("1 1.1e9 0"), "Line 5: \"1.1e9\" lies too far out");
    row("STL text: no number", stl, textStl("1 2x 0"), "Line 5: \"2x\" is no number");
    row("STL text: a number too few", stl, textStl("1 0"), "Line 6: \"vertex\" is no number");
    row("STL text: another word", stl, "solid\nfacet normal 0 0 1\nouter space\n",
        "Line 3: \"space\" stands where \"loop\" should");
    row("STL text: words", stl, "solid state physics\nis fun\n",
        "Line 2: \"is\" stands where \"facet\" should");
    row("STL text: more behind it", stl, textStl("1 0 0") + "more\n",
        "Line 10: \"more\" stands where \"solid\" should");

    const MeshFormat obj = MeshFormat::Obj;
    row("OBJ: bytes", obj, std::string("v 0 0 0\n\0\1\2", 11), "The file is no text");
    row("OBJ: something else", obj, "#!/bin/sh\necho v f\n", "The file has no faces");
    row("OBJ: no faces", obj, "v 0 0 0\nv 1 0 0\n", "The file has no faces");
    row("OBJ: a vertex that is not there", obj, "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 4\n",
        "Line 4: vertex 4 is not there");
    row("OBJ: one before the first", obj, "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 -4\n",
        "Line 4: \"-4\" is a vertex that is not there");
    row("OBJ: vertex zero", obj, "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 0\n",
        "Line 4: \"0\" is a vertex that is not there");
    row("OBJ: a huge number", obj, "v 0 0 0\nf 1 1 99999999999\n",
        "Line 2: \"99999999999\" is a vertex that is not there");
    row("OBJ: more than a number holds", obj, "v 0 0 0\nf 1 1 99999999999999999999\n",
        "Line 2: \"99999999999999999999\" is no whole number");
    row("OBJ: no number", obj, "v 0 0 0\nf 1 x 3\n", "Line 2: \"x\" is no whole number");
    row("OBJ: no vertex before the texture", obj, "v 0 0 0\nf 1 /1 3\n",
        "Line 2: a number is missing");
    row("OBJ: two corners", obj, std::string(kTriangleObj) + "f 1 2\n",
        "Line 5: a face has fewer than three corners");
    row("OBJ: a coordinate too few", obj, "v 0 0\nf 1 1 1\n", "Line 1: a number is missing");
    row("OBJ: not a number", obj, "v 0 0 nan\n", "Line 1: \"nan\" is no number that can be used");
    row("OBJ: odd bytes", obj, "v 0 0 \x80\x1b[2J\n", "Line 1: \"??[2J\" is no number");
    row("OBJ: a long word", obj, "v 0 0 " + std::string(1000, 'x') + "\n",
        ("Line 1: \"" + std::string(40, 'x') + "...\" is no number").c_str());

    const MeshFormat ply = MeshFormat::Ply;
    row("PLY: something else", ply, "plywood\n", "The file is no PLY file");
    row("PLY: its name only", ply, "ply", "The file is no PLY file");
    row("PLY: a header that does not end", ply, "ply\nformat ascii 1.0\nelement vertex 3\n",
        "The file is cut off: its header does not end");
    row("PLY: no format", ply, "ply\nelement vertex 0\nend_header\n",
        "The header of the PLY file does not say its format");
    row("PLY: another format", ply, "ply\nformat utf8 1.0\nend_header\n",
        "Line 2: \"utf8\" is no format of a PLY file");
    row("PLY: another word", ply, "ply\nformat ascii 1.0\nelephant 3\nend_header\n",
        "Line 3: \"elephant\" stands in no header of a PLY file");
    row("PLY: another type", ply,
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty half x\nend_header\n",
        "Line 4: \"half\" is no type of a number");
    row("PLY: a property of nothing", ply, "ply\nformat ascii 1.0\nproperty float x\nend_header\n",
        "Line 3: a property of nothing");
    row("PLY: less than none", ply, "ply\nformat ascii 1.0\nelement vertex -3\nend_header\n",
        "Line 3: less than none");
    row("PLY: a list counted with a fraction", ply,
        "ply\nformat ascii 1.0\nelement face 1\nproperty list float int "
        "vertex_indices\nend_header\n",
        "Line 4: a list is counted with a fraction");
    row("PLY: no vertices", ply, "ply\nformat ascii 1.0\nend_header\n", "The file has no points");
    row("PLY: no faces", ply, textPly("3", "0", "0 0 0 1 0 0 0 1 0"), "The file has no faces");
    row("PLY: flat vertices", ply,
        "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float "
        "y\nend_header\n0 0\n",
        "The vertices of the file have no x, y and z");
    row("PLY: x twice", ply,
        "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float x\nproperty "
        "float y\n"
        "property float z\nend_header\n0 0 0 0\n",
        "The vertices of the file have no x, y and z");
    row("PLY: vertices twice", ply,
        "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\nproperty "
        "float z\n"
        "element vertex 1\nproperty float x\nproperty float y\nproperty float z\nend_header\n0 0 0 "
        "0 0 0\n",
        "The file has vertices twice");
    row("PLY: faces without vertices", ply,
        "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\nproperty "
        "float z\n"
        "element face 1\nproperty int color\nend_header\n0 0 0 7\n",
        "The faces of the file have no vertices");
    row("PLY: cut off", ply, binaryPly("3", "1").substr(0, binaryPly("3", "1").size() - 1),
        "The file is cut off: it has fewer than the 1 items of \"face\" that its header says");
    row("PLY: a count of vertices that lies", ply, binaryPly("4000000000", "1"),
        "The file is cut off: it has fewer than the 4000000000 items of \"vertex\" that its header "
        "says");
    row("PLY: a huge count", ply, binaryPly("9223372036854775807", "1"),
        "The file is cut off: it has fewer than the 9223372036854775807 items of \"vertex\" that "
        "its "
        "header says");
    row("PLY: a count of faces that lies", ply, binaryPly("3", "2"),
        "The file is cut off: it has fewer than the 2 items of \"face\" that its header says");
    row("PLY: longer than it says", ply, binaryPly("3", "1") + "x",
        "The file goes on behind what its header says");
    row("PLY: a vertex that is not there", ply, binaryPly("3", "1", 3),
        "Face 0 has a corner at a vertex that is not there");
    row("PLY: one before the first", ply, binaryPly("3", "1", -1),
        "Face 0 has a corner at a vertex that is not there");
    row("PLY text: cut off", ply, textPly("3", "1", "0 0 0 1 0 0 0 1 0 3 0 1"),
        "The file is cut off: it has fewer than the 1 items of \"face\" that its header says");
    row("PLY text: a count that lies", ply, textPly("3000000000", "1", kTriangleText),
        "The file is cut off: it has fewer than the 3000000000 items of \"vertex\" that its header "
        "says");
    row("PLY text: a list that lies", ply,
        QByteArray(textPly("3", "1", "0 0 0 1 0 0 0 1 0 4294967295 0 1 2").c_str())
            .replace("uchar int", "uint int")
            .toStdString(),
        "The file is cut off: it has fewer than the 1 items of \"face\" that its header says");
    row("PLY text: less than none", ply,
        QByteArray(textPly("3", "1", "0 0 0 1 0 0 0 1 0 -3 0 1 2").c_str())
            .replace("uchar int", "char int")
            .toStdString(),
        "A list in the file has less than no items");
    row("PLY text: more than a type holds", ply, textPly("3", "1", "0 0 0 1 0 0 0 1 0 256 0 1 2"),
        "Line 10: \"256\" is more than its type can hold");
    row("PLY text: half a vertex", ply, textPly("3", "1", "0 0 0\n1 0 0\n0 1 0\n3 0 1 1.5\n"),
        "Line 13: \"1.5\" is no whole number");
    row("PLY text: not a number", ply, textPly("3", "1", "0 0 0\n1 0 nan\n0 1 0\n3 0 1 2\n"),
        "Line 11: \"nan\" is no number that can be used");
    row("PLY text: far out", ply, textPly("3", "1", "0 0 0\n1 0 -2e9\n0 1 0\n3 0 1 2\n"),
        "Vertex 1 lies too far out");
    row("PLY text: longer than it says", ply, textPly("3", "1", "0 0 0 1 0 0 0 1 0 3 0 1 2\n7"),
        "The file goes on behind what its header says");
    std::string notANumber = binaryPly("3", "1");
    notANumber.replace(plyHeader("binary_little_endian", "3", "1").size() + 8, 4,
                       std::string("\0\0\xc0\x7f", 4));
    row("PLY: not a number", ply, notANumber, "Vertex 0 has no place");
}

void tst_MeshFile::tellsWhatIsWrong()
{
    QFETCH(MeshFormat, format);
    QFETCH(std::string, bytes);
    QFETCH(std::string, expected);
    QCOMPARE(thrownBy([&] { readMesh(bytes, format); }), expected);
}

void tst_MeshFile::survivesBeingCutOff_data()
{
    comesBackAsItWas_data();
}

void tst_MeshFile::survivesBeingCutOff()
{
    QFETCH(MeshFormat, format);
    const std::string bytes = written(cube(2), format);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const std::string text = thrownBy([&] { readMesh(bytes.substr(0, size), format); });
        if (format == MeshFormat::Obj) {
            // A shorter file is one as well, as long as its lines can be read.
            QVERIFY2(text == "nothing" || text.rfind("FileFormatError: ", 0) == 0, text.c_str());
            continue;
        }
        // Only the line end behind the last word may be missing.
        if (format == MeshFormat::StlText && size >= bytes.rfind("endsolid") + 8)
            continue;
        QVERIFY2(text.rfind("FileFormatError: ", 0) == 0, text.c_str());
    }
}

void tst_MeshFile::survivesAnyByte_data()
{
    comesBackAsItWas_data();
}

void tst_MeshFile::survivesAnyByte()
{
    QFETCH(MeshFormat, format);
    const std::string bytes = written(cube(2), format);
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        for (const char byte : {'\0', '\xff', '9', '-', '\n'}) {
            std::string changed = bytes;
            changed[at] = byte;
            const std::string text = thrownBy([&] {
                const Mesh mesh = readMesh(changed, format);
                for (const auto& triangle : mesh.triangles) {
                    for (const std::uint32_t vertex : triangle)
                        QVERIFY(vertex < mesh.vertices.size());
                }
                for (const Vector& vertex : mesh.vertices)
                    QVERIFY(isFinite(vertex));
            });
            QVERIFY2(text == "nothing" || text.rfind("FileFormatError: ", 0) == 0, text.c_str());
        }
    }
}

void tst_MeshFile::savesAndLoads_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("STL") << QStringLiteral("part.stl");
    QTest::newRow("OBJ in capitals") << QStringLiteral("PART.OBJ");
    QTest::newRow("a name that is not ASCII") << QStringLiteral("Gehäuse – Größe 2.ply");
}

void tst_MeshFile::savesAndLoads()
{
    QFETCH(QString, name);
    const QTemporaryDir folder;
    const std::string path = folder.filePath(name).toStdString();
    const Mesh mesh = inSinglePrecision(oddMesh());
    saveMesh(mesh, path, *meshFormatOfPath(path));
    QVERIFY(corners(loadMesh(path)) == corners(mesh));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList{name});
}

void tst_MeshFile::loadsByTheEndingOnly()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("part.3mf"));
    makeFile(path, kTriangleObj);
    QCOMPARE(thrownBy([&] { loadMesh(path.toStdString()); }),
             "FileFormatError: " + path.toStdString() +
                 ": A mesh is read from .stl, .obj and .ply files");
    // What is inside is another format's.
    const QString wrong = folder.filePath(QStringLiteral("part.ply"));
    makeFile(wrong, kTriangleObj);
    QCOMPARE(thrownBy([&] { loadMesh(wrong.toStdString()); }),
             "FileFormatError: " + wrong.toStdString() + ": The file is no PLY file");
}

void tst_MeshFile::namesTheFileThatItCannotLoad()
{
    const QTemporaryDir folder;
    const std::string missing = folder.filePath(QStringLiteral("missing.stl")).toStdString();
    QCOMPARE(thrownBy([&] { loadMesh(missing); }),
             "Other: Cannot read " + missing + ": No such file or directory");
    const QString name = folder.filePath(QStringLiteral("folder.stl"));
    QVERIFY(QDir().mkdir(name));
    QCOMPARE(thrownBy([&] { loadMesh(name.toStdString()); }),
             "Other: Cannot read " + name.toStdString() + ": it is not a regular file");
    QCOMPARE(thrownBy([&] { loadMesh("part.stl"); }),
             std::string("Other: Cannot read \"part.stl\": its path is not absolute"));
    // As large as a disk, but without contents.
    const QString sparse = folder.filePath(QStringLiteral("sparse.stl"));
    QFile file(sparse);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize((qint64(1) << 30) + 1));
    QCOMPARE(thrownBy([&] { loadMesh(sparse.toStdString()); }),
             "Other: Cannot read " + sparse.toStdString() + ": it is larger than 1 GiB");
}

void tst_MeshFile::replacesAFileAsAWhole()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("part.obj"));
    makeFile(path, QByteArray(100000, 'x'));
    saveMesh({{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}}, path.toStdString(), MeshFormat::Obj);
    QCOMPARE(contents(path), QByteArray(kTriangleObj));
}

void tst_MeshFile::leavesTheEarlierFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("part.stl"));
    makeFile(path, "earlier");
    const std::string name = path.toStdString();
    ProgressLog canceled(2);
    QCOMPARE(thrownBy([&] { saveMesh(cube(2), name, MeshFormat::Stl, canceled.progress()); }),
             std::string("Canceled"));
    QCOMPARE(thrownBy([&] { saveMesh({}, name, MeshFormat::Stl); }),
             std::string("EmptyError: The mesh is empty"));
    QCOMPARE(contents(path), QByteArray("earlier"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 1);

    const std::string nowhere = folder.filePath(QStringLiteral("no/folder.stl")).toStdString();
    QCOMPARE(thrownBy([&] { saveMesh(cube(2), nowhere, MeshFormat::Stl); }),
             "Other: Cannot write to " + nowhere + ": No such file or directory");
    QCOMPARE(thrownBy([&] { saveMesh(cube(2), "part.stl", MeshFormat::Stl); }),
             std::string("Other: Cannot write to \"part.stl\": its path is not absolute"));
    QVERIFY(thrownBy([&] {
                saveMesh(cube(2), folder.path().toStdString(), MeshFormat::Stl);
            }).rfind("Other: Cannot write to ", 0) == 0);
}

void tst_MeshFile::refusesAnEmptyMesh()
{
    QCOMPARE(thrownBy([] { written({}, MeshFormat::Ply); }),
             std::string("EmptyError: The mesh is empty"));
    QCOMPARE(thrownBy([] {
                 written({{{1, 2, 3}}, {}}, MeshFormat::Obj);
             }),
             std::string("EmptyError: The mesh is empty"));
}

void tst_MeshFile::tellsItsProgressAndIsCanceled_data()
{
    comesBackAsItWas_data();
}

void tst_MeshFile::tellsItsProgressAndIsCanceled()
{
    QFETCH(MeshFormat, format);
    const Mesh mesh = ball(20, 150);
    std::string bytes;
    const auto write = [&](ProgressLog& log) {
        bytes.clear();
        writeMesh(
            mesh, format,
            [&bytes](const char* piece, std::size_t size) { bytes.append(piece, size); },
            log.progress());
    };
    ProgressLog writing;
    write(writing);
    QVERIFY(writing.isRising());
    QVERIFY(writing.told.size() > 3);
    ProgressLog reading;
    readMesh(bytes, format, reading.progress());
    QVERIFY(reading.isRising());
    QVERIFY(reading.told.size() > 3);
    const std::string all = bytes;
    for (const int at : {1, 2, 3}) {
        ProgressLog canceled(at);
        QCOMPARE(thrownBy([&] { write(canceled); }), std::string("Canceled"));
        QVERIFY(bytes.size() < all.size());
        ProgressLog canceledReading(at);
        QCOMPARE(thrownBy([&] { readMesh(all, format, canceledReading.progress()); }),
                 std::string("Canceled"));
    }
}

QTEST_GUILESS_MAIN(tst_MeshFile)
#include "tst_mesh_file.moc"
