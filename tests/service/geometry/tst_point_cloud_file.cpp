#include "shapes.h"
#include "support/file_size_limit.h"
#include "support/test_file.h"

#include <geometry/point_cloud_file.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <limits>

using namespace shapes;
using trovek::contents;
using trovek::makeFile;

namespace {

std::string written(const PointCloud& cloud, PointCloudFormat format)
{
    std::string bytes;
    writePointCloud(cloud, format,
                    [&bytes](const char* piece, std::size_t size) { bytes.append(piece, size); });
    return bytes;
}

/** With numbers that take all their digits. */
PointCloud oddCloud(bool hasNormals, bool hasColors)
{
    Dice dice;
    PointCloud cloud;
    for (int point = 0; point < 500; ++point) {
        cloud.positions.push_back(std::pow(10, dice.between(-12, 6)) * dice.noiseVector());
        if (hasNormals)
            cloud.normals.push_back(dice.direction());
        if (hasColors)
            cloud.colors.push_back(
                {std::uint8_t(point), std::uint8_t(255 - point % 256), std::uint8_t(point * 7)});
    }
    cloud.positions[0] = {0, -0.0, 1.0 / 3};
    cloud.positions[1] = {5e-324, 1e9, -1e9};
    return cloud;
}

std::string plyOf(const std::string& properties, const std::string& body)
{
    return "ply\nformat ascii 1.0\nelement vertex 2\n" + properties + "end_header\n" + body;
}

const std::string kPlace = "property float x\nproperty float y\nproperty float z\n";
const std::string kNormal = "property float nx\nproperty float ny\nproperty float nz\n";

} // namespace

Q_DECLARE_METATYPE(trovek::geometry::PointCloudFormat)

class tst_PointCloudFile : public QObject
{
    Q_OBJECT

private slots:
    void knowsItsFormats();
    void comesBackAsItWas_data();
    void comesBackAsItWas();
    void writesWhatOthersRead();
    void takesThePointsOfAMesh();
    void readsColorsAndNormals();
    void makesNormalsOfLengthOne();
    void readsXyz_data();
    void readsXyz();
    void tellsWhatIsWrong_data();
    void tellsWhatIsWrong();

    void savesAndLoads();
    void namesTheFileThatItCannotLoad();
    void leavesTheEarlierFileWhenTheDiskIsFull_data();
    void leavesTheEarlierFileWhenTheDiskIsFull();
    void leavesTheEarlierFileWhenItIsCanceled();
    void takesAMillionPoints();
    void tellsItsProgressAndIsCanceled_data();
    void tellsItsProgressAndIsCanceled();
};

void tst_PointCloudFile::knowsItsFormats()
{
    QVERIFY(pointCloudFormat("ply") == PointCloudFormat::Ply);
    QVERIFY(pointCloudFormat("PLY") == PointCloudFormat::Ply);
    QVERIFY(pointCloudFormat("ply_text") == PointCloudFormat::PlyText);
    QVERIFY(pointCloudFormat("xyz") == PointCloudFormat::Xyz);
    for (const char* none : {"", "stl", "obj", "ply "})
        QVERIFY(!pointCloudFormat(none));
    QVERIFY(pointCloudFormatOfPath("/a/b.XYZ") == PointCloudFormat::Xyz);
    for (const char* none : {"", "/a/ply", "/a.ply/b", "/a/b.ply_text", "/a/b.stl"})
        QVERIFY(!pointCloudFormatOfPath(none));
}

void tst_PointCloudFile::comesBackAsItWas_data()
{
    QTest::addColumn<PointCloudFormat>("format");
    QTest::addColumn<bool>("hasNormals");
    QTest::addColumn<bool>("hasColors");

    for (const bool hasNormals : {false, true}) {
        for (const bool hasColors : {false, true}) {
            const QString with =
                QStringLiteral("%1%2").arg(QLatin1String(hasNormals ? ", normals" : ""),
                                           QLatin1String(hasColors ? ", colors" : ""));
            QTest::newRow(qPrintable(QStringLiteral("PLY") + with))
                << PointCloudFormat::Ply << hasNormals << hasColors;
            QTest::newRow(qPrintable(QStringLiteral("PLY as text") + with))
                << PointCloudFormat::PlyText << hasNormals << hasColors;
        }
        QTest::newRow(hasNormals ? "XYZ, normals" : "XYZ")
            << PointCloudFormat::Xyz << hasNormals << false;
    }
}

void tst_PointCloudFile::comesBackAsItWas()
{
    QFETCH(PointCloudFormat, format);
    QFETCH(bool, hasNormals);
    QFETCH(bool, hasColors);
    const PointCloud cloud = oddCloud(hasNormals, hasColors);
    const PointCloud read = readPointCloud(written(cloud, format), format);
    QVERIFY(areSame(read, cloud));
    QVERIFY(std::signbit(read.positions[0].y));
}

void tst_PointCloudFile::writesWhatOthersRead()
{
    const PointCloud cloud{{{1, -2.5, 0.1}}, {{0, 0, 1}}, {{1, 22, 255}}};
    QCOMPARE(written(cloud, PointCloudFormat::PlyText),
             std::string("ply\nformat ascii 1.0\nelement vertex 1\nproperty double x\n"
                         "property double y\nproperty double z\nproperty double nx\n"
                         "property double ny\nproperty double nz\nproperty uchar red\n"
                         "property uchar green\nproperty uchar blue\nend_header\n"
                         "1 -2.5 0.1 0 0 1 1 22 255\n"));
    QCOMPARE(written(cloud, PointCloudFormat::Xyz), std::string("1 -2.5 0.1 0 0 1\n"));
    const std::string binary = written(cloud, PointCloudFormat::Ply);
    QCOMPARE(binary.substr(0, 40), std::string("ply\nformat binary_little_endian 1.0\nelem"));
    // -2.5 as it stands in a file.
    const std::size_t body = binary.find("end_header\n") + 11;
    QCOMPARE(binary.substr(body + 8, 8), std::string("\0\0\0\0\0\0\x04\xc0", 8));
    QCOMPARE(binary.size(), body + 6 * 8 + 3);
}

void tst_PointCloudFile::takesThePointsOfAMesh()
{
    const PointCloud cloud =
        readPointCloud("ply\nformat ascii 1.0\nelement vertex 3\n" + kPlace +
                           "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
                           "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n",
                       PointCloudFormat::Ply);
    QVERIFY(areSame(cloud, {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {}, {}}));
}

void tst_PointCloudFile::readsColorsAndNormals()
{
    const std::string colors = "property uchar red\nproperty uchar green\nproperty uchar blue\n";
    const std::string body = "0 0 0 1 2 3 0 0 1\n1 0 0 4 5 6 0 1 0\n";
    QVERIFY(areSame(readPointCloud(plyOf(kPlace + colors + kNormal, body), PointCloudFormat::Ply),
                    {{{0, 0, 0}, {1, 0, 0}}, {{0, 0, 1}, {0, 1, 0}}, {{1, 2, 3}, {4, 5, 6}}}));
    // Colors of another kind mean something else; two parts of a normal mean nothing.
    const std::string fractions = "property float red\nproperty float green\nproperty float blue\n";
    const std::string part = "property float nx\nproperty float ny\nproperty float confidence\n";
    QVERIFY(areSame(readPointCloud(plyOf(kPlace + fractions + part, body), PointCloudFormat::Ply),
                    {{{0, 0, 0}, {1, 0, 0}}, {}, {}}));
}

void tst_PointCloudFile::makesNormalsOfLengthOne()
{
    const auto normals = [](const std::string& second) {
        return readPointCloud(plyOf(kPlace + kNormal, "0 0 0 0 0 5\n1 0 0 " + second + "\n"),
                              PointCloudFormat::Ply)
            .normals;
    };
    QVERIFY((normals("0 -0.1 0") == std::vector<Vector>{{0, 0, 1}, {0, -1, 0}}));
    // One that is none says that the others cannot be trusted either.
    QVERIFY(normals("0 0 0").empty());
    QVERIFY(normals("1e300 1e300 1e300").empty());
}

void tst_PointCloudFile::readsXyz_data()
{
    QTest::addColumn<std::string>("bytes");

    QTest::newRow("plain") << std::string("1 2 3\n4 5 6\n");
    QTest::newRow("no line end") << std::string("1 2 3\n4 5 6");
    QTest::newRow("blanks, comments and signs")
        << std::string("# x y z\r\n\r\n\t1.0  +2e0\t3\r\n#4 4 4\r\n  4 5 60e-1  \r\n\r\n");
}

void tst_PointCloudFile::readsXyz()
{
    QFETCH(std::string, bytes);
    QVERIFY(
        areSame(readPointCloud(bytes, PointCloudFormat::Xyz), {{{1, 2, 3}, {4, 5, 6}}, {}, {}}));
}

void tst_PointCloudFile::tellsWhatIsWrong_data()
{
    QTest::addColumn<PointCloudFormat>("format");
    QTest::addColumn<std::string>("bytes");
    QTest::addColumn<std::string>("expected");

    const auto row = [](const char* name, PointCloudFormat format, const std::string& bytes,
                        const char* expected) {
        QTest::newRow(name) << format << bytes << "FileFormatError: " + std::string(expected);
    };
    const PointCloudFormat ply = PointCloudFormat::Ply;
    const PointCloudFormat xyz = PointCloudFormat::Xyz;
    row("PLY: empty", ply, "", "The file is empty");
    row("PLY: something else", ply, "1 2 3\n", "The file is no PLY file");
    row("PLY: no points", ply,
        "ply\nformat ascii 1.0\nelement vertex 0\n" + kPlace + "end_header\n",
        "The file has no points");
    row("PLY: cut off", ply, plyOf(kPlace, "0 0 0\n1 0\n"),
        "The file is cut off: it has fewer than the 2 items of \"vertex\" that its header says");
    row("PLY: cut off in a wide column", ply, plyOf(kPlace, "0.000001 0.000001 0.000001\n1 0\n"),
        "The file is cut off: numbers are missing at its end");
    row("PLY: a color too large", ply,
        plyOf(kPlace + "property uchar red\nproperty uchar green\nproperty uchar blue\n",
              "0 0 0 1 2 256\n0 0 0 1 2 3\n"),
        "Line 11: \"256\" is more than its type can hold");
    row("PLY: not a number", ply, plyOf(kPlace, "0 0 0\n1 0 -nan\n"),
        "Line 9: \"-nan\" is no number that can be used");
    row("XYZ: empty", xyz, "", "The file is empty");
    row("XYZ: comments only", xyz, "# nothing\n\n", "The file has no points");
    row("XYZ: bytes", xyz, std::string("1 2 3\n\0", 7), "The file is no text");
    row("XYZ: cut off", xyz, "1 2 3\n4 5\n",
        "Line 2: a point has three numbers, or six with its normal");
    row("XYZ: a number too many", xyz, "1 2 3 4\n",
        "Line 1: a point has three numbers, or six with its normal");
    row("XYZ: now with a normal", xyz, "1 2 3\n4 5 6 0 0 1\n",
        "Line 2: a point has another number of numbers than those before it");
    row("XYZ: words", xyz, "1 2 three\n", "Line 1: \"three\" is no number");
    row("XYZ: infinite", xyz, "1 2 inf\n", "Line 1: \"inf\" is no number that can be used");
    row("XYZ: far out", xyz, "1 2 1e10\n", "Line 1: \"1e10\" lies too far out");
    row("XYZ: a decimal comma", xyz, "1,5 2 3\n", "Line 1: \"1,5\" is no number");
}

void tst_PointCloudFile::tellsWhatIsWrong()
{
    QFETCH(PointCloudFormat, format);
    QFETCH(std::string, bytes);
    QFETCH(std::string, expected);
    QCOMPARE(thrownBy([&] { readPointCloud(bytes, format); }), expected);
}

void tst_PointCloudFile::savesAndLoads()
{
    const QTemporaryDir folder;
    const PointCloud cloud = oddCloud(true, true);
    const std::string path = folder.filePath(QStringLiteral("Größe.ply")).toStdString();
    savePointCloud(cloud, path, PointCloudFormat::Ply);
    QVERIFY(areSame(loadPointCloud(path), cloud));
    // The second time it is replaced.
    const PointCloud other = oddCloud(false, false);
    savePointCloud(other, path, PointCloudFormat::PlyText);
    QVERIFY(areSame(loadPointCloud(path), other));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 1);
}

void tst_PointCloudFile::namesTheFileThatItCannotLoad()
{
    const QTemporaryDir folder;
    const QString wrong = folder.filePath(QStringLiteral("scan.ply"));
    makeFile(wrong, "1 2 3\n");
    QCOMPARE(thrownBy([&] { loadPointCloud(wrong.toStdString()); }),
             "FileFormatError: " + wrong.toStdString() + ": The file is no PLY file");
    const std::string other = folder.filePath(QStringLiteral("scan.stl")).toStdString();
    QCOMPARE(thrownBy([&] { loadPointCloud(other); }),
             "FileFormatError: " + other + ": A point cloud is read from .ply and .xyz files");
    const std::string missing = folder.filePath(QStringLiteral("missing.xyz")).toStdString();
    QCOMPARE(thrownBy([&] { loadPointCloud(missing); }),
             "Other: Cannot read " + missing + ": No such file or directory");
}

void tst_PointCloudFile::leavesTheEarlierFileWhenTheDiskIsFull_data()
{
    QTest::addColumn<int>("points");
    QTest::addColumn<int>("room");

    QTest::newRow("while it is written") << 10000 << 100000;
    QTest::newRow("when what is buffered is written at the end") << 100 << 1000;
}

void tst_PointCloudFile::leavesTheEarlierFileWhenTheDiskIsFull()
{
#ifdef Q_OS_UNIX
    QFETCH(int, points);
    QFETCH(int, room);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("scan.ply"));
    makeFile(path, "earlier");
    const PointCloud cloud = pointsOfBall(points, 20, 0);
    std::string text;
    {
        const trovek::FileSizeLimit limit{rlim_t(room)};
        text = thrownBy([&] { savePointCloud(cloud, path.toStdString(), PointCloudFormat::Ply); });
    }
    QCOMPARE(text, "Other: Cannot write to " + path.toStdString() + ": File too large");
    QCOMPARE(contents(path), QByteArray("earlier"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 1);
    // With room again it works.
    savePointCloud(cloud, path.toStdString(), PointCloudFormat::Ply);
    QVERIFY(areSame(loadPointCloud(path.toStdString()), cloud));
#endif
}

void tst_PointCloudFile::leavesTheEarlierFileWhenItIsCanceled()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("scan.ply"));
    makeFile(path, "earlier");
    const PointCloud cloud = pointsOfBall(50000, 20, 0);
    for (const int at : {1, 2, 5}) {
        ProgressLog canceled(at);
        QCOMPARE(thrownBy([&] {
                     savePointCloud(cloud, path.toStdString(), PointCloudFormat::Ply,
                                    canceled.progress());
                 }),
                 std::string("Canceled"));
        QCOMPARE(contents(path), QByteArray("earlier"));
    }
    QCOMPARE(thrownBy([&] { savePointCloud({}, path.toStdString(), PointCloudFormat::Ply); }),
             std::string("EmptyError: The point cloud is empty"));
    QCOMPARE(contents(path), QByteArray("earlier"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 1);
}

void tst_PointCloudFile::takesAMillionPoints()
{
    PointCloud cloud;
    for (int point = 0; point < 1000000; ++point)
        cloud.positions.push_back({point / 3.0, point % 1000 / 7.0, -point / 11.0});
    const QTemporaryDir folder;
    const std::string path = folder.filePath(QStringLiteral("scan.ply")).toStdString();
    savePointCloud(cloud, path, PointCloudFormat::Ply);
    QVERIFY(areSame(loadPointCloud(path), cloud));
}

void tst_PointCloudFile::tellsItsProgressAndIsCanceled_data()
{
    QTest::addColumn<PointCloudFormat>("format");

    QTest::newRow("PLY") << PointCloudFormat::Ply;
    QTest::newRow("PLY as text") << PointCloudFormat::PlyText;
    QTest::newRow("XYZ") << PointCloudFormat::Xyz;
}

void tst_PointCloudFile::tellsItsProgressAndIsCanceled()
{
    QFETCH(PointCloudFormat, format);
    const PointCloud cloud = pointsOfBall(50000, 20, 0);
    const std::string bytes = written(cloud, format);
    ProgressLog reading;
    readPointCloud(bytes, format, reading.progress());
    QVERIFY(reading.isRising());
    QVERIFY(reading.told.size() > 3);
    for (int at = 1; at <= int(reading.told.size()); ++at) {
        ProgressLog canceled(at);
        QCOMPARE(thrownBy([&] { readPointCloud(bytes, format, canceled.progress()); }),
                 std::string("Canceled"));
        QCOMPARE(int(canceled.told.size()), at);
    }
}

QTEST_GUILESS_MAIN(tst_PointCloudFile)
#include "tst_point_cloud_file.moc"
