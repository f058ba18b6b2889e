#include <service/geometry/mesh.h>
#include <service/geometry/mesh_file.h>

#include <QDir>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using trovek::geometry::Mesh;

namespace {

struct Ended
{
    int status = -1;
    QString out;
    QString errors;
};

Ended runProgram(const QStringList& arguments)
{
    QProcess program;
    program.start(QStringLiteral(SCAN_EXAMPLE_PROGRAM), arguments);
    Ended ended;
    if (program.waitForFinished(100000) && program.exitStatus() == QProcess::NormalExit)
        ended.status = program.exitCode();
    ended.out = QString::fromUtf8(program.readAllStandardOutput());
    ended.errors = QString::fromUtf8(program.readAllStandardError());
    return ended;
}

} // namespace

class tst_ScanExample : public QObject
{
    Q_OBJECT

private slots:
    void scansWithoutHands();
    void refusesOptions_data();
    void refusesOptions();
};

void tst_ScanExample::scansWithoutHands()
{
    const QTemporaryDir dir;
    const QDir out(dir.filePath(QStringLiteral("tour")));
    const Ended ended = runProgram(
        {QStringLiteral("--tour"), out.path(), QStringLiteral("--pictures"), QStringLiteral("80")});
    QVERIFY2(ended.status == 0, qPrintable(ended.out + ended.errors));

    const QStringList pictures = out.entryList({QStringLiteral("*.png")});
    QCOMPARE(pictures,
             (QStringList{QStringLiteral("01-scan.png"), QStringLiteral("02-clean.png"),
                          QStringLiteral("03-scan-again.png"), QStringLiteral("04-align.png"),
                          QStringLiteral("05-reconstruct.png"), QStringLiteral("06-place.png"),
                          QStringLiteral("07-save.png"), QStringLiteral("08-make.png")}));
    QList<QImage> seen;
    for (const QString& picture : pictures) {
        const QImage image(out.filePath(picture));
        QVERIFY2(!image.isNull(), qPrintable(picture));
        QVERIFY2(!seen.contains(image), qPrintable(picture));
        seen.append(image);
    }
    QVERIFY(out.exists(QStringLiteral("index.html")));

    // It is what stands on the virtual scanner's table: a closed head, some 50 mm each way.
    const Mesh mesh =
        trovek::geometry::loadMesh(out.filePath(QStringLiteral("scan.stl")).toStdString());
    QVERIFY(isClosed(mesh));
    QVERIFY2(std::abs(volume(mesh) - 71777) < 2500, qPrintable(QString::number(volume(mesh))));
    const trovek::geometry::Box box = boundingBox(mesh);
    QVERIFY(std::abs(box.minimum.z) < 1e-3);
    QVERIFY(box.maximum.z > 40 && box.maximum.z < 65);
}

void tst_ScanExample::refusesOptions_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("text");

    QTest::newRow("too few pictures")
        << QStringList{QStringLiteral("--pictures"), QStringLiteral("3")}
        << QStringLiteral("scan_example: --pictures needs a number from 20 to 2000");
    QTest::newRow("no number") << QStringList{QStringLiteral("--pictures=many")}
                               << QStringLiteral("--pictures needs a number");
    QTest::newRow("no such service")
        << QStringList{QStringLiteral("--service"), QStringLiteral("local:/nowhere/socket")}
        << QStringLiteral("scan_example: ");
}

void tst_ScanExample::refusesOptions()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, text);
    const QTemporaryDir dir;
    const Ended ended = runProgram(arguments + QStringList{QStringLiteral("--state"), dir.path()});
    QCOMPARE(ended.status, 1);
    QVERIFY2(ended.errors.contains(text), qPrintable(ended.errors));
}

QTEST_GUILESS_MAIN(tst_ScanExample)
#include "tst_scan_example.moc"
