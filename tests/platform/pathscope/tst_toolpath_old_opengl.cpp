#include "view_in_a_window.h"

#include "support/test_log.h"

#include <QLabel>

using namespace pathscope;

/** The view with an OpenGL that is too old. */
class tst_ToolpathOldOpenGL : public QObject
{
    Q_OBJECT

private slots:
    void saysWhichVersionIsMissing();
};

void tst_ToolpathOldOpenGL::saysWhichVersionIsMissing()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    if (shown.view->isValid() && shown.view->format().majorVersion() > 2)
        QSKIP("this driver cannot be told to be an old one");
    shown.window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&shown.window));
    QSignalSpy complete(shown.view, &ToolpathGLWidget::pictureComplete);

    shown.view->setFile(QFileInfo(shown.write(towerText(50))));

    QTRY_COMPARE_WITH_TIMEOUT(complete.count(), 1, kPatienceMs);
    QCOMPARE(shown.view->whyNoPicture(),
             QStringLiteral("There is no picture of the toolpaths, because it needs OpenGL 3.3, "
                            "and here is only OpenGL 2.1."));
    const auto* notice = shown.view->findChild<QLabel*>(QStringLiteral("notice"));
    QVERIFY(notice->isVisible());
    QVERIFY2(notice->text().startsWith(shown.view->whyNoPicture() +
                                       QStringLiteral("\n\nLayers: 50\nSize: 20.8 x 20.8 x ")),
             qPrintable(notice->text()));
    QCOMPARE(shown.view->uploadedBytes(), std::uint64_t(0));
    QVERIFY(!shown.view->isPictureComplete());
    // The controls do, and resizing, hiding and showing harm nothing.
    shown.view->overlayWidget()->layerDown();
    QCOMPARE(shown.model()->lastLayer(), 48);
    shown.window.resize(900, 500);
    shown.window.hide();
    shown.window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&shown.window));
    QVERIFY(notice->isVisible());
}

int main(int argc, char** argv)
{
    qputenv("MESA_GL_VERSION_OVERRIDE", "2.1");
    QApplication application(argc, argv);
    tst_ToolpathOldOpenGL test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_toolpath_old_opengl.moc"
