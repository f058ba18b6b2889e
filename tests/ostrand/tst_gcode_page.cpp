#include "apps/ostrand/file_view.h"

#include <pathscope/toolpath_gl_widget.h>
#include <pathscope/toolpath_scene.h>
#include <pathscope/toolpath_view_model.h>

#include <QAction>
#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

using namespace ostrand;
using pathscope::ToolpathGLWidget;

namespace {

QByteArray layersOfCode(int layers)
{
    QByteArray code = "G90\nM83\nG1 X10 Y10 F3000\n";
    for (int layer = 1; layer <= layers; ++layer)
        code +=
            "G1 Z" + QByteArray::number(0.2 * layer, 'f', 2) + "\nG1 X30 Y10 E1\nG1 X10 Y10 E1\n";
    return code;
}

/** The view in a window with another field, on the offscreen platform: without OpenGL. */
struct World
{
    QTemporaryDir folder;
    QWidget window;
    FileView* const view = new FileView(&window);
    QLineEdit* const other = new QLineEdit(&window);

    World()
    {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(view);
        layout->addWidget(other);
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("the window does not get the focus");
    }

    QString write(const char* name, const QByteArray& content) const
    {
        const QString path = folder.filePath(QString::fromLatin1(name));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    void open(const char* name, int layers)
    {
        view->setFile(write(name, layersOfCode(layers)));
        QTRY_COMPARE_WITH_TIMEOUT(model().layerCount(), layers, 30000);
        QTRY_VERIFY_WITH_TIMEOUT(paths().complete, 30000);
    }

    ToolpathGLWidget& toolpaths() const { return *view->toolpathView(); }
    const pathscope::Toolpaths& paths() const { return *toolpaths().toolpathScene()->toolpaths(); }
    pathscope::ToolpathViewModel& model() const
    {
        return *toolpaths().toolpathScene()->viewModel();
    }
    QPushButton& make() const
    {
        return *view->findChild<QPushButton*>(QStringLiteral("makeButton"));
    }
};

ViewedMachine machine(float width, int extruders)
{
    return {{-width / 2, -50, 0, width / 2, 50, 100}, extruders};
}

} // namespace

class tst_GCodePage : public QObject
{
    Q_OBJECT

private slots:
    void showsToolpathsOfGCodeAlone();
    void keepsTheBarAboveThePicture();
    void tellsInWordsWithoutOpenGL();
    void drawsASmallPictureOfTheFile();
    void stepsByKeysWithTheFocusInside_data();
    void stepsByKeysWithTheFocusInside();
    void leavesKeysToTheRestOfTheWindow();
    void readsAFileAgainOnlyWhenItHasChanged();
    void goesOnToTheNextFile();
    void goesOnToTheNextFileWhileItReads();
    void survivesItsEndWhileItReads();
    void tellsThatTheFileIsGone();
    void leavesShortcutsOfTheWindowAlone();
    void drawsTheMachineThatItIsTold();
    void drawsAMachineThatComesLater();
    void actsOnKeysAfterAnotherMachine();
};

void tst_GCodePage::showsToolpathsOfGCodeAlone()
{
    World world;
    QVERIFY(!world.view->toolpathView());
    world.view->setFile(world.write("part.stl", "solid"));
    QVERIFY(!world.view->toolpathView());
    world.open("part.gcode", 3);
    const QPointer<QWidget> shown(&world.toolpaths());
    QVERIFY(shown->isVisible());
    world.view->setFile(world.write("part.stl", "solid"));
    QVERIFY(!shown);
}

void tst_GCodePage::keepsTheBarAboveThePicture()
{
    World world;
    world.open("part.gcode", 3);
    QVERIFY(world.make().isVisible());
    QVERIFY(world.make().hasFocus());
    const auto bottom = world.make().mapTo(&world.window, world.make().rect().bottomLeft()).y();
    QVERIFY(bottom < world.toolpaths().mapTo(&world.window, QPoint()).y());
    const auto* name = world.view->findChild<QLabel*>(QStringLiteral("fileName"));
    QVERIFY(name->isVisible());
    QVERIFY(name->toolTip().contains(world.folder.path()));
    QSignalSpy made(world.view, &FileView::makeRequested);
    QTest::mouseClick(&world.make(), Qt::LeftButton);
    QCOMPARE(made.count(), 1);
}

void tst_GCodePage::tellsInWordsWithoutOpenGL()
{
    World world;
    world.open("part.gcode", 3);
    const auto* notice = world.view->findChild<QLabel*>(QStringLiteral("notice"));
    QTRY_VERIFY(notice->isVisible());
    QTRY_VERIFY(notice->text().contains(QLatin1String("\nLayers: 3\n")));
}

void tst_GCodePage::drawsASmallPictureOfTheFile()
{
    World world;
    const auto picture = [&world] {
        return world.view->findChild<QLabel*>(QStringLiteral("filePicture"))
            ->pixmap(Qt::ReturnByValue)
            .toImage();
    };
    world.view->setFile(world.write("empty.gcode", "G28\n"));
    const QImage icon = picture();
    QVERIFY(!icon.isNull());
    world.open("part.gcode", 30);
    QTRY_VERIFY_WITH_TIMEOUT(picture() != icon, 30000);
    const QImage small = picture();
    QCOMPARE(small.size(), QSize(44, 44));
    // It stays while nothing changes, and goes with the file.
    world.view->setFile(world.view->file());
    QCOMPARE(picture(), small);
    world.view->setFile(world.write("other.gcode", "G28\n"));
    QCOMPARE(picture(), icon);
}

void tst_GCodePage::stepsByKeysWithTheFocusInside_data()
{
    QTest::addColumn<QByteArray>("widget");

    QTest::newRow("the make button") << QByteArray("makeButton");
    QTest::newRow("a number box") << QByteArray("layerBox");
    QTest::newRow("the picture") << QByteArray("toolpathView");
}

void tst_GCodePage::stepsByKeysWithTheFocusInside()
{
    QFETCH(QByteArray, widget);
    World world;
    world.open("part.gcode", 30);
    auto* focused = world.view->findChild<QWidget*>(QString::fromLatin1(widget));
    focused->setFocus();
    QVERIFY(focused->hasFocus());
    QTest::keyClick(focused, Qt::Key_Down);
    QCOMPARE(world.model().lastLayer(), 28);
    QTest::keyClick(focused, Qt::Key_PageDown);
    QCOMPARE(world.model().lastLayer(), 18);
    QTest::keyClick(focused, Qt::Key_Up);
    QCOMPARE(world.model().lastLayer(), 19);
    QTest::keyClick(focused, Qt::Key_O);
    QVERIFY(world.model().isOrthographic());
    QTest::keyClick(focused, Qt::Key_Home);
    QCOMPARE(world.model().lastLayer(), 0);
}

void tst_GCodePage::leavesKeysToTheRestOfTheWindow()
{
    World world;
    world.open("part.gcode", 30);
    world.other->setFocus();
    QTest::keyClicks(world.other, QStringLiteral("ox"));
    QTest::keyClick(world.other, Qt::Key_Home);
    QTest::keyClick(world.other, Qt::Key_Down);
    QTest::keyClicks(world.other, QStringLiteral("f"));
    QCOMPARE(world.other->text(), QStringLiteral("fox"));
    QCOMPARE(world.model().lastLayer(), 29);
    QVERIFY(!world.model().isOrthographic());
}

void tst_GCodePage::readsAFileAgainOnlyWhenItHasChanged()
{
    World world;
    world.open("part.gcode", 10);
    world.model().setLastLayer(4);
    QSignalSpy changes(world.toolpaths().toolpathScene(), &pathscope::ToolpathScene::changed);
    world.view->setFile(world.view->file());
    QCOMPARE(changes.count(), 0);
    QCOMPARE(world.model().lastLayer(), 4);

    world.open("part.gcode", 12);
    QCOMPARE(world.model().lastLayer(), 11);
}

void tst_GCodePage::goesOnToTheNextFile()
{
    World world;
    world.open("part.gcode", 10);
    const QWidget* before = &world.toolpaths();
    world.open("other.gcode", 20);
    QCOMPARE(&world.toolpaths(), before);
    QVERIFY(world.make().hasFocus());
}

void tst_GCodePage::goesOnToTheNextFileWhileItReads()
{
    World world;
    world.view->setFile(world.write("large.gcode", layersOfCode(100000)));
    world.open("small.gcode", 5);
    QVERIFY(world.view->findChild<QWidget*>(QStringLiteral("progress"))->isHidden());
    QCOMPARE(world.view->findChild<QLabel*>(QStringLiteral("fileName"))->text(),
             QStringLiteral("small.gcode"));
    // Nothing of the first one comes any more.
    QSignalSpy changes(world.toolpaths().toolpathScene(),
                       &pathscope::ToolpathScene::toolpathsChanged);
    world.view->setFile(world.write("part.stl", "solid"));
    world.view->setFile(world.write("large.gcode", layersOfCode(100000)));
    world.open("small.gcode", 5);
    QCOMPARE(changes.count(), 0);
}

void tst_GCodePage::survivesItsEndWhileItReads()
{
    for (const bool started : {false, true}) {
        World world;
        world.view->setFile(world.write("large.gcode", layersOfCode(100000)));
        if (started)
            QTRY_VERIFY_WITH_TIMEOUT(world.model().layerCount() > 0, 30000);
    }
    QCoreApplication::processEvents();
}

void tst_GCodePage::tellsThatTheFileIsGone()
{
    World world;
    world.open("part.gcode", 10);
    const QString path = world.view->file();
    QVERIFY(QFile::remove(path));
    world.view->setFile(path);
    const auto* remark = world.view->findChild<QLabel*>(QStringLiteral("fileRemark"));
    QVERIFY(remark->isVisible());
    QCOMPARE(remark->text(), QStringLiteral("This file no longer exists."));
    QVERIFY(!world.make().isEnabled());
    const auto* totals = world.view->findChild<QLabel*>(QStringLiteral("totals"));
    QTRY_COMPARE_WITH_TIMEOUT(totals->text(),
                              QStringLiteral("The file %1 does not exist.").arg(path), 30000);
    QCOMPARE(world.model().layerCount(), 0);
    // And it is back.
    world.open("part.gcode", 12);
    QVERIFY(!remark->isVisible());
    QVERIFY(totals->text().startsWith(QLatin1String("Layers: 12\n")));
}

void tst_GCodePage::leavesShortcutsOfTheWindowAlone()
{
    World world;
    world.open("part.gcode", 10);
    QAction open;
    open.setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    world.window.addAction(&open);
    QSignalSpy opens(&open, &QAction::triggered);
    for (const char* name : {"makeButton", "layerBox", "toolpathView"}) {
        auto* focused = world.view->findChild<QWidget*>(QString::fromLatin1(name));
        focused->setFocus();
        QTest::keyClick(focused, Qt::Key_O, Qt::ControlModifier);
        QVERIFY(!world.model().isOrthographic());
    }
    QCOMPARE(opens.count(), 3);
}

void tst_GCodePage::drawsTheMachineThatItIsTold()
{
    World world;
    world.view->setMachine(machine(200, 2));
    world.open("part.gcode", 3);
    const pathscope::SceneSetting& setting = world.toolpaths().toolpathScene()->setting();
    QCOMPARE(setting.buildVolume.width(), 200.0F);
    QVERIFY(setting.dualExtrusion);
    const QWidget* before = &world.toolpaths();
    world.view->setMachine(machine(200, 2));
    QCOMPARE(&world.toolpaths(), before);
}

void tst_GCodePage::drawsAMachineThatComesLater()
{
    World world;
    world.open("part.gcode", 3);
    QVERIFY(world.toolpaths().toolpathScene()->setting().buildVolume.isEmpty());
    world.view->setMachine(machine(100, 1));
    QCOMPARE(world.toolpaths().toolpathScene()->setting().buildVolume.width(), 100.0F);
    QVERIFY(!world.toolpaths().toolpathScene()->setting().dualExtrusion);
    QTRY_COMPARE_WITH_TIMEOUT(world.model().layerCount(), 3, 30000);
}

void tst_GCodePage::actsOnKeysAfterAnotherMachine()
{
    World world;
    world.open("part.gcode", 30);
    world.view->setMachine(machine(100, 1));
    QTRY_VERIFY_WITH_TIMEOUT(world.paths().complete, 30000);
    world.make().setFocus();
    QTest::keyClick(&world.make(), Qt::Key_Down);
    QCOMPARE(world.model().lastLayer(), 28);
    QCOMPARE(world.view->findChildren<QAction*>(QStringLiteral("layerDown")).size(), 1);
}

QTEST_MAIN(tst_GCodePage)
#include "tst_gcode_page.moc"
