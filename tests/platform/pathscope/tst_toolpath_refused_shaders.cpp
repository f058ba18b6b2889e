#include "view_in_a_window.h"

#include "support/test_log.h"

#include <QLabel>

using namespace pathscope;

/** The view with a driver that gives OpenGL 3.3 and then takes no shader of it. */
class tst_ToolpathRefusedShaders : public QObject
{
    Q_OBJECT

private slots:
    void saysThatTheShadersAreRefused();
};

void tst_ToolpathRefusedShaders::saysThatTheShadersAreRefused()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    shown.window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&shown.window));
    QSignalSpy complete(shown.view, &ToolpathGLWidget::pictureComplete);

    shown.view->setFile(QFileInfo(shown.write(towerText(50))));

    QTRY_COMPARE_WITH_TIMEOUT(complete.count(), 1, kPatienceMs);
    if (shown.view->whyNoPicture().isEmpty())
        QSKIP("this driver cannot be told to refuse shaders");
    QCOMPARE(shown.view->whyNoPicture(),
             QStringLiteral("There is no picture of the toolpaths, because the graphics driver "
                            "does not take the view's shaders."));
    const auto* notice = shown.view->findChild<QLabel*>(QStringLiteral("notice"));
    QVERIFY(notice->isVisible());
    QVERIFY2(notice->text().startsWith(shown.view->whyNoPicture() +
                                       QStringLiteral("\n\nLayers: 50\nSize: 20.8 x 20.8 x ")),
             qPrintable(notice->text()));
    QCOMPARE(shown.view->uploadedBytes(), std::uint64_t(0));
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
    qputenv("force_glsl_version", "120");
    QApplication application(argc, argv);
    tst_ToolpathRefusedShaders test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_toolpath_refused_shaders.moc"
