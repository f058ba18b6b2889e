#include "view_in_a_window.h"

#include "support/test_log.h"

using namespace pathscope;

/** Files that no slicer writes: the view shows what it can of them. */
class tst_ToolpathOddFiles : public QObject
{
    Q_OBJECT

private slots:
    void isShown_data();
    void isShown();
};

namespace {

bool isFinite(QVector3D place)
{
    return std::isfinite(place.x()) && std::isfinite(place.y()) && std::isfinite(place.z());
}

QByteArray wall(const char* before)
{
    return QByteArray(before) + "G1 X40 Y50 Z0.2 F1800\nG1 X60 E1\nG1 Y51 E2\nG1 X40 E3\n";
}

} // namespace

void tst_ToolpathOddFiles::isShown_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("layers");
    QTest::addColumn<bool>("seen");

    QTest::newRow("empty") << QByteArray() << 0 << false;
    QTest::newRow("nothing but comments") << QByteArray("; one\n;LAYER:0\n; two\n") << 0 << false;
    QTest::newRow("no G-code") << QByteArray("%PDF-1.4\n\x00\xff\xfe\n", 12) << 0 << false;
    QTest::newRow("nothing extruded")
        << QByteArray("G1 X10 Y10\nG1 X90 Y90\nG1 X5\n") << 1 << false;
    QTest::newRow("one retraction") << QByteArray("G1 E-1\n") << 1 << false;
    QTest::newRow("a single dot") << QByteArray("G1 X50 Y50 Z.2\nG1 X50.001 E1\n") << 1 << true;
    QTest::newRow("a wall") << wall("") << 1 << true;
    QTest::newRow("all points at one place") << [] {
        QByteArray text("G1 X50 Y50 Z.2\nM83\n");
        for (int i = 0; i < 2'000; ++i)
            text += "G1 E1\nG1 X50 E1\nG1 E-1\n";
        return text;
    }() << 1 << false;
    QTest::newRow("as far out as can be") << [] {
        QByteArray text("M83\n");
        for (const char* corner : {"X-1000000 Y-1000000 Z-1000000", "X1000000 Y1000000 Z1000000"})
            text += QByteArray("G1 ") + corner + " E1\n";
        return text;
    }() << -1 << false;
    QTest::newRow("a wall with one point far out") << wall("") + "G1 X1000000 Y1000000 E4\n"
                                                   << 1 << false;
    QTest::newRow("below the platform") << wall("G92 Z0\n").replace("Z0.2", "Z-40") << 1 << true;
    QTest::newRow("two thousand layers") << [] {
        QByteArray text("M83\nG1 F1800\n");
        text.reserve(120'000);
        for (int i = 0; i < 2'000; ++i) {
            text += ";LAYER_CHANGE\nG1 X40 Y50 Z" + QByteArray::number(0.02 * (i + 1), 'f', 2) +
                    "\nG1 X240 E1\n";
        }
        return text;
    }() << 2'000 << true;
    QTest::newRow("twenty thousand tool changes") << [] {
        QByteArray text = wall("") + "M83\n";
        for (int i = 0; i < 10'000; ++i)
            text += "T1\nT0\n";
        return text;
    }() << 1 << true;
    QTest::newRow("a style a move") << [] {
        QByteArray text = wall("") + "M83\n";
        for (int i = 0; i < 5'000; ++i)
            text += "G1 X" + QByteArray(i % 2 == 0 ? "50.1" : "50") + " E1 F" +
                    QByteArray::number(600 + i) + "\n";
        return text;
    }() << 1 << true;
}

void tst_ToolpathOddFiles::isShown()
{
    QFETCH(QByteArray, text);
    QFETCH(int, layers);
    // In a debug build every error of OpenGL is logged, and fails the test.
    trovek::TestLog log;
    ViewInAWindow shown;

    QVERIFY(shown.open(text));

    if (layers >= 0)
        QCOMPARE(shown.model()->layerCount(), layers);
    QTEST(countPixels(shown.picture(), isRed) > 20, "seen");
    for (int mode = ToolpathViewModel::ByExtruder; mode <= ToolpathViewModel::ByLayerTime; ++mode) {
        shown.model()->setColourMode(ToolpathViewModel::ColourMode(mode));
        QVERIFY(shown.settle());
    }
    shown.model()->setTravelsShown(true);
    shown.model()->setRetractionsShown(true);
    shown.model()->layerDown();
    QVERIFY(shown.settle());
    for (int preset = -1; preset <= Camera::Isometric; ++preset) {
        emit shown.view->overlayWidget()->cameraRequested(preset);
        shown.model()->orthoViewToggled();
        QVERIFY(shown.settle());
        const Camera camera = shown.scene()->camera();
        QVERIFY(isFinite(camera.eye()) && isFinite(camera.target()));
        QVERIFY(camera.distance() > 0);
        const QMatrix4x4 matrix = camera.projection(shown.scene()->worldBox(), shown.logicalSize(),
                                                    shown.model()->isOrthographic()) *
                                  camera.view();
        for (int i = 0; i < 16; ++i)
            QVERIFY(std::isfinite(matrix.constData()[i]));
    }
}

QTEST_MAIN(tst_ToolpathOddFiles)
#include "tst_toolpath_odd_files.moc"
