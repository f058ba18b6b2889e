#include "make_dialog/preview_world.h"

#include <pathscope/toolpath_overlay.h>

#include <QGLWidget>
#include <QSignalSpy>

using namespace trovek;
using pathscope::ToolpathViewModel;

/** Where there is OpenGL; needs an X server. */
class tst_PathscopeDialogGl : public QObject
{
    Q_OBJECT

private slots:
    void drawsThePathsInTheGivenColors();
    void drawsLessWithALayerLess();
    void drawsInASharedContext();
    void survivesWhenItIsClosedWhileItReads();

private:
    static void waitForPicture(const PreviewWorld& world)
    {
        QTRY_VERIFY_WITH_TIMEOUT(world.view().isPictureComplete(), 60000);
    }

    /** Pixels of the picture that are as good as this colour, whatever light falls on them. */
    static int pixelsLike(const PreviewWorld& world, const QColor& colour)
    {
        const QImage picture = world.view().grabFrameBuffer();
        int count = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                const QColor pixel = picture.pixelColor(x, y);
                if (pixel.hsvSaturation() > 150 && pixel.value() > 50 &&
                    qAbs(pixel.hsvHue() - colour.hsvHue()) < 12)
                    ++count;
            }
        }
        return count;
    }
};

void tst_PathscopeDialogGl::drawsThePathsInTheGivenColors()
{
    TestLog log;
    const PreviewWorld world;
    waitForPicture(world);
    QCOMPARE(world.view().whyNoPicture(), QString());
    world.model().setColourMode(ToolpathViewModel::ByExtruder);
    waitForPicture(world);
    // The first extruder is red, and nothing is printed with the second.
    QTRY_VERIFY(pixelsLike(world, Qt::red) > 1000);
    QCOMPARE(pixelsLike(world, Qt::blue), 0);
}

void tst_PathscopeDialogGl::drawsLessWithALayerLess()
{
    TestLog log;
    const PreviewWorld world;
    world.model().setColourMode(ToolpathViewModel::ByExtruder);
    waitForPicture(world);
    const int all = pixelsLike(world, Qt::red);
    const auto uploaded = world.view().uploadedBytes();
    world.dialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(world.dialog));
    QTest::keyClick(world.dialog, Qt::Key_PageDown);
    QTest::keyClick(world.dialog, Qt::Key_PageDown);
    QCOMPARE(world.model().lastLayer(), 9);
    waitForPicture(world);
    QTRY_VERIFY(pixelsLike(world, Qt::red) < all);
    QVERIFY(pixelsLike(world, Qt::red) > 0);
    QCOMPARE(world.view().uploadedBytes(), uploaded);
}

void tst_PathscopeDialogGl::drawsInASharedContext()
{
    TestLog log;
    QGLWidget share;
    const PreviewWorld world(PreviewWorld::printerWith(2), QString(), &share);
    waitForPicture(world);
    QVERIFY(world.view().isSharing());
    QVERIFY(world.view().frameCount() > 0);
}

void tst_PathscopeDialogGl::survivesWhenItIsClosedWhileItReads()
{
    TestLog log;
    for (int i = 0; i < 3; ++i) {
        const PreviewWorld world;
        world.dialog->close();
        QTRY_VERIFY(!world.dialog);
    }
}

QTEST_MAIN(tst_PathscopeDialogGl)
#include "tst_pathscope_dialog_gl.moc"
