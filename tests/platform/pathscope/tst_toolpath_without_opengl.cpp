#include "view_in_a_window.h"

#include "support/test_log.h"

#include <QLabel>

using namespace pathscope;

/** The view on a platform that has no OpenGL. */
class tst_ToolpathWithoutOpenGL : public QObject
{
    Q_OBJECT

private slots:
    void saysWhyThereIsNoPicture();
    void tellsTheFileInWords();
    void theControlsWork();
    void aMissingFileIsTold();
    void mouseAndWheelDoNothing();
    void mayBeDestroyedWhileLoading();
};

namespace {

QString noticeOf(const ViewInAWindow& shown)
{
    return shown.view->findChild<QLabel*>(QStringLiteral("notice"))->text();
}

} // namespace

void tst_ToolpathWithoutOpenGL::saysWhyThereIsNoPicture()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    shown.window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&shown.window));

    QCOMPARE(shown.view->whyNoPicture(),
             QStringLiteral("There is no picture of the toolpaths, because OpenGL is not available "
                            "here."));
    QCOMPARE(noticeOf(shown), shown.view->whyNoPicture());
    QVERIFY(shown.view->findChild<QLabel*>(QStringLiteral("notice"))->isVisible());
    QCOMPARE(shown.view->frameCount(), 0);
    QCOMPARE(shown.view->uploadedBytes(), std::uint64_t(0));
}

void tst_ToolpathWithoutOpenGL::tellsTheFileInWords()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    shown.window.show();
    QSignalSpy complete(shown.view, &ToolpathGLWidget::pictureComplete);

    shown.view->setFile(QFileInfo(shown.write(towerText(50))));

    QTRY_COMPARE_WITH_TIMEOUT(complete.count(), 1, kPatienceMs);
    const QString notice = noticeOf(shown);
    QVERIFY2(notice.startsWith(shown.view->whyNoPicture()), qPrintable(notice));
    QVERIFY2(notice.contains(QStringLiteral("Layers: 50\n")), qPrintable(notice));
    QVERIFY2(notice.contains(QStringLiteral("Size: 20.8 x 20.8 x 10.0 mm\n")), qPrintable(notice));
    QVERIFY2(notice.contains(QStringLiteral("Time: ")), qPrintable(notice));
    QVERIFY2(notice.contains(QStringLiteral("0.20\u00a0m")), qPrintable(notice));
}

void tst_ToolpathWithoutOpenGL::theControlsWork()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    shown.window.show();
    QSignalSpy complete(shown.view, &ToolpathGLWidget::pictureComplete);
    shown.view->setFile(QFileInfo(shown.write(towerText(50))));
    QTRY_COMPARE_WITH_TIMEOUT(complete.count(), 1, kPatienceMs);
    QVERIFY(shown.view->overlayWidget()->isVisible());

    shown.view->overlayWidget()->layerDown();

    QCOMPARE(shown.model()->lastLayer(), 48);
    shown.model()->orthoViewToggled();
    emit shown.view->overlayWidget()->cameraRequested(Camera::Top);
    QCOMPARE(shown.scene()->camera().elevation(), 90.0F);
}

void tst_ToolpathWithoutOpenGL::aMissingFileIsTold()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    shown.window.show();
    QSignalSpy failed(shown.view, &ToolpathGLWidget::loadFailed);
    QSignalSpy complete(shown.view, &ToolpathGLWidget::pictureComplete);

    shown.view->setFile(QFileInfo(QStringLiteral("/none")));

    QTRY_COMPARE_WITH_TIMEOUT(complete.count(), 1, kPatienceMs);
    QCOMPARE(failed.count(), 1);
    QCOMPARE(noticeOf(shown), shown.view->whyNoPicture());
}

void tst_ToolpathWithoutOpenGL::mouseAndWheelDoNothing()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    shown.window.show();
    const Camera before = shown.scene()->camera();

    QTest::mousePress(shown.view, Qt::LeftButton, Qt::NoModifier, QPoint(50, 50));
    QTest::mouseMove(shown.view, QPoint(90, 90));
    QTest::mouseRelease(shown.view, Qt::LeftButton, Qt::NoModifier, QPoint(90, 90));

    QCOMPARE(shown.scene()->camera(), before);
}

void tst_ToolpathWithoutOpenGL::mayBeDestroyedWhileLoading()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    shown.window.show();
    shown.view->setFile(QFileInfo(shown.write(towerText(5000))));
}

int main(int argc, char** argv)
{
    // With a display the platform would find OpenGL there.
    qunsetenv("DISPLAY");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    tst_ToolpathWithoutOpenGL test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_toolpath_without_opengl.moc"
