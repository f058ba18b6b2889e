#include "make_dialog/preview_world.h"

#include <trovek-ui/pathscope_dialog.h>

#include <pathscope/layer_slider.h>
#include <pathscope/toolpath_gl_widget.h>
#include <pathscope/toolpath_scene.h>
#include <pathscope/toolpath_view_model.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGLWidget>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QSpinBox>

using namespace trovek;
using pathscope::ToolpathViewModel;

/** Where there is no OpenGL; tst_pathscope_dialog_gl has the rest. */
class tst_PathscopeDialog : public QObject
{
    Q_OBJECT

private slots:
    void showsItsTexts();
    void laysItsButtonsOut();
    void putsTheFocusOnTheAcceptButton();
    void answers_data();
    void answers();
    void deletesItselfWithItsView();
    void givesTheViewThePrinter_data();
    void givesTheViewThePrinter();
    void givesTheViewMaterialsAndColors();
    void opensWithoutAPrinter();
    void readsTheFile();
    void tellsWhyThereIsNoPicture();
    void logsAFileThatCannotBeRead();
    void usesASharedWidgetAndLeavesIt();
    void actsOnKeys_data();
    void actsOnKeys();
    void actsWhereverTheFocusIs_data();
    void actsWhereverTheFocusIs();
    void takesDigitsInTheNumberBoxes();
    void leavesKeysToAnOpenList();
    void leavesOtherWindowsTheirKeys();
    void leavesKeysWithModifiersAlone();
    void switchesOnceWhileAKeyIsHeld();
    void goesOnFromATypedNumber();
    void survivesItsEndWhileItReads_data();
    void survivesItsEndWhileItReads();
    void holdsUpItsParentOnly();
    void fitsASmallScreen();
};

void tst_PathscopeDialog::showsItsTexts()
{
    TestLog log;
    const PreviewWorld world;
    QCOMPARE(world.dialog->windowTitle(), QStringLiteral("Toolpath Visualization"));
    QCOMPARE(world.cancel().text(), QStringLiteral("Cancel"));
    QCOMPARE(world.question().text(), QStringLiteral("Are you happy with this preview?"));
    QCOMPARE(world.go().text(), QStringLiteral("Make It!"));
}

void tst_PathscopeDialog::laysItsButtonsOut()
{
    TestLog log;
    const PreviewWorld world;
    QCOMPARE(world.cancel().width(), 150);
    QCOMPARE(world.cancel().minimumWidth(), 150);
    QCOMPARE(world.go().width(), 150);
    QCOMPARE(world.go().minimumWidth(), 150);

    auto* const row = world.dialog->findChild<QHBoxLayout*>(QStringLiteral("buttonRow"));
    QVERIFY(row);
    QCOMPARE(row->count(), 3);
    QCOMPARE(row->itemAt(0)->widget(), &world.cancel());
    QCOMPARE(row->itemAt(1)->widget(), &world.question());
    QCOMPARE(row->itemAt(2)->widget(), &world.go());
    QCOMPARE(row->stretch(0), 0);
    QCOMPARE(row->stretch(1), 2);
    QCOMPARE(row->stretch(2), 0);
    QCOMPARE(row->itemAt(1)->alignment(), Qt::AlignRight | Qt::AlignVCenter);
    QVERIFY(world.view().geometry().bottom() < world.cancel().geometry().top());
    QCOMPARE(world.dialog->sizePolicy(), QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed));
}

void tst_PathscopeDialog::putsTheFocusOnTheAcceptButton()
{
    TestLog log;
    const PreviewWorld world;
    QVERIFY(world.go().hasFocus());
    QVERIFY(world.go().isDefault());
}

void tst_PathscopeDialog::answers_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("accepted");

    QTest::newRow("the accept button") << QByteArray("acceptButton") << 0 << 1;
    QTest::newRow("cancel") << QByteArray("cancelButton") << 0 << 0;
    QTest::newRow("Return") << QByteArray() << int(Qt::Key_Return) << 1;
    QTest::newRow("Space") << QByteArray() << int(Qt::Key_Space) << 1;
    QTest::newRow("Escape") << QByteArray() << int(Qt::Key_Escape) << 0;
}

void tst_PathscopeDialog::answers()
{
    TestLog log;
    QFETCH(QByteArray, button);
    QFETCH(int, key);
    QFETCH(int, accepted);
    const PreviewWorld world;
    QSignalSpy yes(world.dialog, &QDialog::accepted);
    QSignalSpy no(world.dialog, &QDialog::rejected);
    if (button.isEmpty())
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(key));
    else
        QTest::mouseClick(world.find<QPushButton>(button.constData()), Qt::LeftButton);
    QCOMPARE(yes.count(), accepted);
    QCOMPARE(no.count(), 1 - accepted);
    QTRY_VERIFY(!world.dialog);
}

void tst_PathscopeDialog::deletesItselfWithItsView()
{
    TestLog log;
    const PreviewWorld world;
    const QPointer<QWidget> view(&world.view());
    const int before = QApplication::allWidgets().size();
    world.dialog->close();
    QTRY_VERIFY(!world.dialog);
    QVERIFY(!view);
    QVERIFY(QApplication::allWidgets().size() < before);
    // The widget that the context came from has gone too.
    for (const QWidget* widget : QApplication::allWidgets())
        QVERIFY2(!widget->inherits("QGLWidget"), widget->metaObject()->className());
}

void tst_PathscopeDialog::givesTheViewThePrinter_data()
{
    QTest::addColumn<int>("extruders");
    QTest::addColumn<bool>("dual");

    QTest::newRow("none") << 0 << false;
    QTest::newRow("one extruder") << 1 << false;
    QTest::newRow("two extruders") << 2 << true;
    QTest::newRow("three extruders") << 3 << true;
}

void tst_PathscopeDialog::givesTheViewThePrinter()
{
    TestLog log;
    QFETCH(int, extruders);
    QFETCH(bool, dual);
    const PreviewWorld world(PreviewWorld::printerWith(extruders));
    const pathscope::SceneSetting& setting = world.view().toolpathScene()->setting();
    QCOMPARE(setting.dualExtrusion, dual);
    QCOMPARE(setting.buildVolume.xMin, -110.0F);
    QCOMPARE(setting.buildVolume.yMin, -70.0F);
    QCOMPARE(setting.buildVolume.zMin, 1.0F);
    QCOMPARE(setting.buildVolume.xMax, 115.0F);
    QCOMPARE(setting.buildVolume.yMax, 75.0F);
    QCOMPARE(setting.buildVolume.zMax, 150.0F);
    QCOMPARE(int(setting.platformShape), 0);
    QCOMPARE(int(setting.drawFlags), 16);
}

void tst_PathscopeDialog::givesTheViewMaterialsAndColors()
{
    TestLog log;
    const PreviewWorld world;
    const pathscope::SceneSetting& setting = world.view().toolpathScene()->setting();
    QCOMPARE(setting.materials, (std::vector<Orvane::Material>{Orvane::PLA, Orvane::ABS}));
    QCOMPARE(setting.colours, (std::vector<QColor>{Qt::red, Qt::blue}));
}

void tst_PathscopeDialog::opensWithoutAPrinter()
{
    TestLog log;
    const PreviewWorld world(nullptr);
    const pathscope::SceneSetting& setting = world.view().toolpathScene()->setting();
    QVERIFY(!setting.dualExtrusion);
    QVERIFY(setting.buildVolume.isEmpty());
    QVERIFY(world.dialog->isVisible());
}

void tst_PathscopeDialog::readsTheFile()
{
    TestLog log;
    const PreviewWorld world;
    world.waitForLayers();
    QCOMPARE(world.model().layerCount(), 30);
    QCOMPARE(world.find<QLabel>("totals")->text().section(QLatin1Char('\n'), 0, 0),
             QStringLiteral("Layers: 30"));
}

void tst_PathscopeDialog::tellsWhyThereIsNoPicture()
{
    TestLog log;
    const PreviewWorld world;
    QCOMPARE(world.view().whyNoPicture(),
             QStringLiteral("There is no picture of the toolpaths, because OpenGL is not available "
                            "here."));
    world.waitForLayers();
    const auto* const notice = world.find<QLabel>("notice");
    QVERIFY(notice->isVisible());
    QTRY_VERIFY(notice->text().contains(QLatin1String("Layers: 30\n")));
    QVERIFY(notice->text().startsWith(world.view().whyNoPicture()));
    QVERIFY(notice->text().contains(QLatin1String("Extruder 1: Orvane PLA, ")));
}

void tst_PathscopeDialog::logsAFileThatCannotBeRead()
{
    TestLog log;
    const QString missing = QStringLiteral("/nowhere/at all.gcode");
    log.expectError(QStringLiteral("Cannot show ") + missing);
    const PreviewWorld world(PreviewWorld::printerWith(1), missing);
    const auto* const totals = world.find<QLabel>("totals");
    QTRY_VERIFY(!totals->text().isEmpty());
    QVERIFY(world.dialog->isVisible());
    const QString reason = totals->text();
    QCOMPARE(MakeWorld::logOf(log, "src\\make_dialog\\pathscope_dialog"),
             QStringList{QStringLiteral("Cannot show ") + missing + QStringLiteral(": ") + reason});
}

void tst_PathscopeDialog::usesASharedWidgetAndLeavesIt()
{
    TestLog log;
    const QPointer<QGLWidget> share(new QGLWidget);
    {
        const PreviewWorld world(PreviewWorld::printerWith(1), QString(), share);
        world.waitForLayers();
    }
    QVERIFY(share);
    delete share;
}

void tst_PathscopeDialog::actsOnKeys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QByteArray>("action");
    QTest::addColumn<int>("layer");

    // From layer 20 of 30, counted from 0.
    QTest::newRow("Up") << int(Qt::Key_Up) << QByteArray("layerUp") << 21;
    QTest::newRow("Down") << int(Qt::Key_Down) << QByteArray("layerDown") << 19;
    QTest::newRow("PageUp stops at the top")
        << int(Qt::Key_PageUp) << QByteArray("tenLayersUp") << 29;
    QTest::newRow("PageDown") << int(Qt::Key_PageDown) << QByteArray("tenLayersDown") << 10;
    QTest::newRow("Home") << int(Qt::Key_Home) << QByteArray("firstLayer") << 0;
    QTest::newRow("End") << int(Qt::Key_End) << QByteArray("lastLayer") << 29;
    QTest::newRow("O") << int(Qt::Key_O) << QByteArray("orthoViewToggled") << 20;
    QTest::newRow("X") << int(Qt::Key_X) << QByteArray("singleLayer") << 20;
    QTest::newRow("F") << int(Qt::Key_F) << QByteArray("fit") << 20;
}

void tst_PathscopeDialog::actsOnKeys()
{
    TestLog log;
    QFETCH(int, key);
    QFETCH(QByteArray, action);
    QFETCH(int, layer);
    const PreviewWorld world;
    world.waitForLayers();
    world.model().setLastLayer(20);
    QSignalSpy triggered(world.find<QAction>(action.constData()), &QAction::triggered);

    QTest::keyClick(QApplication::focusWidget(), Qt::Key(key));

    QCOMPARE(triggered.count(), 1);
    QCOMPARE(world.model().lastLayer(), layer);
    QCOMPARE(world.model().isOrthographic(), key == Qt::Key_O);
    QCOMPARE(world.model().isSingleLayer(), key == Qt::Key_X);
    // A second time takes back what can be taken back.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key(key));
    QVERIFY(!world.model().isOrthographic());
    QVERIFY(!world.model().isSingleLayer());
}

void tst_PathscopeDialog::actsWhereverTheFocusIs_data()
{
    QTest::addColumn<QByteArray>("widget");

    for (const char* name :
         {"acceptButton", "cancelButton", "layerBox", "heightBox", "fromBox", "moveBox",
          "moveSlider", "layerSlider", "colorMode", "travels", "orthographic", "viewTop"})
        QTest::newRow(name) << QByteArray(name);
}

void tst_PathscopeDialog::actsWhereverTheFocusIs()
{
    TestLog log;
    QFETCH(QByteArray, widget);
    const PreviewWorld world;
    world.waitForLayers();
    world.model().setLayerRange(5, 15);
    auto* const focused = world.find<QWidget>(widget.constData());
    focused->setFocus();
    QVERIFY(focused->hasFocus());
    const auto mode = world.model().colourMode();
    const auto press = [focused](Qt::Key key) {
        QTest::keyClick(focused, key);
    };

    press(Qt::Key_Up);
    QCOMPARE(world.model().lastLayer(), 16);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    QCOMPARE(world.model().lastLayer(), 14);
    press(Qt::Key_PageUp);
    QCOMPARE(world.model().lastLayer(), 24);
    press(Qt::Key_End);
    QCOMPARE(world.model().lastLayer(), 29);
    press(Qt::Key_PageDown);
    QCOMPARE(world.model().lastLayer(), 19);
    QCOMPARE(world.model().firstLayer(), 5);
    press(Qt::Key_O);
    QVERIFY(world.model().isOrthographic());
    // One layer has no beginning, so its box loses the focus.
    if (widget != "fromBox") {
        press(Qt::Key_X);
        QVERIFY(world.model().isSingleLayer());
        press(Qt::Key_X);
        QVERIFY(!world.model().isSingleLayer());
    }
    QSignalSpy fits(world.find<QAction>("fit"), &QAction::triggered);
    press(Qt::Key_F);
    QCOMPARE(fits.count(), 1);
    press(Qt::Key_Home);
    QCOMPARE(world.model().lastLayer(), 0);
    // Nothing but that was done.
    QVERIFY(focused->hasFocus());
    QCOMPARE(world.model().colourMode(), mode);
    QVERIFY(!world.model().showsTravels());
    QVERIFY(world.dialog->isVisible());
}

void tst_PathscopeDialog::takesDigitsInTheNumberBoxes()
{
    TestLog log;
    const PreviewWorld world;
    world.waitForLayers();
    auto* const layer = world.find<QSpinBox>("layerBox");
    layer->setFocus();
    layer->selectAll();
    QTest::keyClicks(layer, QStringLiteral("12"));
    QTest::keyClick(layer, Qt::Key_Left);
    QTest::keyClick(layer, Qt::Key_Backspace);
    QTest::keyClick(layer, Qt::Key_Return);
    QCOMPARE(world.model().lastLayer(), 1);
    // Return has ended the number and nothing else.
    QVERIFY(world.dialog->isVisible());
    auto* const height = world.find<QAbstractSpinBox>("heightBox");
    height->setFocus();
    height->selectAll();
    QTest::keyClicks(height, QStringLiteral("2.0"));
    QTest::keyClick(height, Qt::Key_Tab);
    QCOMPARE(world.model().lastLayer(), 9);
}

void tst_PathscopeDialog::leavesKeysToAnOpenList()
{
    TestLog log;
    const PreviewWorld world;
    world.waitForLayers();
    auto* const colours = world.find<QComboBox>("colorMode");
    colours->setFocus();
    colours->showPopup();
    QTRY_VERIFY(QApplication::activePopupWidget());
    const int before = world.model().lastLayer();
    QTest::keyClick(QApplication::activePopupWidget()->focusWidget(), Qt::Key_Down);
    QTest::keyClick(QApplication::activePopupWidget()->focusWidget(), Qt::Key_Return);
    QCOMPARE(colours->currentIndex(), 1);
    QCOMPARE(world.model().lastLayer(), before);
}

void tst_PathscopeDialog::leavesOtherWindowsTheirKeys()
{
    TestLog log;
    const PreviewWorld world;
    world.waitForLayers();
    const int before = world.model().lastLayer();
    QLineEdit other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QTest::keyClicks(&other, QStringLiteral("oxf"));
    QTest::keyClick(&other, Qt::Key_Down);
    QTest::keyClick(&other, Qt::Key_Home);
    QCOMPARE(other.text(), QStringLiteral("oxf"));
    QCOMPARE(world.model().lastLayer(), before);
    QVERIFY(!world.model().isOrthographic());
}

void tst_PathscopeDialog::leavesKeysWithModifiersAlone()
{
    TestLog log;
    const PreviewWorld world;
    world.waitForLayers();
    world.model().setLastLayer(20);
    for (const char* name : {"acceptButton", "layerBox", "colorMode"}) {
        auto* const focused = world.find<QWidget>(name);
        focused->setFocus();
        for (const Qt::KeyboardModifier modifier : {Qt::ControlModifier, Qt::MetaModifier}) {
            for (const Qt::Key key : {Qt::Key_O, Qt::Key_X, Qt::Key_F, Qt::Key_Home})
                QTest::keyClick(focused, key, modifier);
        }
        QCOMPARE(world.model().lastLayer(), 20);
        QVERIFY(!world.model().isOrthographic());
        QVERIFY(!world.model().isSingleLayer());
    }
    // Those of the number pad are the same keys.
    auto* const layer = world.find<QWidget>("layerBox");
    layer->setFocus();
    QTest::keyClick(layer, Qt::Key_Up, Qt::KeypadModifier);
    QCOMPARE(world.model().lastLayer(), 21);
}

void tst_PathscopeDialog::switchesOnceWhileAKeyIsHeld()
{
    TestLog log;
    const PreviewWorld world;
    world.waitForLayers();
    world.model().setLastLayer(20);
    const auto hold = [&world](Qt::Key key) {
        const QString text = key < Qt::Key_Escape ? QString(QChar(key)) : QString();
        for (int i = 0; i < 4; ++i)
            qt_sendShortcutOverrideEvent(QApplication::focusWidget(), 0, key, Qt::NoModifier, text,
                                         i > 0, 1);
    };
    hold(Qt::Key_O);
    QVERIFY(world.model().isOrthographic());
    hold(Qt::Key_X);
    QVERIFY(world.model().isSingleLayer());
    QSignalSpy fits(world.find<QAction>("fit"), &QAction::triggered);
    hold(Qt::Key_F);
    QCOMPARE(fits.count(), 1);
    // Steps go on.
    hold(Qt::Key_Down);
    QCOMPARE(world.model().lastLayer(), 16);
}

void tst_PathscopeDialog::goesOnFromATypedNumber()
{
    TestLog log;
    const PreviewWorld world;
    world.waitForLayers();
    auto* const layer = world.find<QSpinBox>("layerBox");
    layer->setFocus();
    layer->selectAll();
    QTest::keyClicks(layer, QStringLiteral("12"));
    QTest::keyClick(layer, Qt::Key_Up);
    QCOMPARE(world.model().lastLayer(), 12);
    QCOMPARE(layer->text(), QStringLiteral("13"));
}

void tst_PathscopeDialog::survivesItsEndWhileItReads_data()
{
    QTest::addColumn<bool>("started");

    QTest::newRow("at once") << false;
    QTest::newRow("when the first layers stand") << true;
}

void tst_PathscopeDialog::survivesItsEndWhileItReads()
{
    TestLog log;
    QFETCH(bool, started);
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("large.gcode"));
    MakeWorld::writeFile(file, PreviewWorld::towerCode().repeated(3000));
    const PreviewWorld world(PreviewWorld::printerWith(1), file);
    if (started)
        QTRY_VERIFY_WITH_TIMEOUT(world.model().layerCount() > 0, 30000);
    delete world.dialog.data();
    QCoreApplication::processEvents();
    QVERIFY(!world.dialog);
}

void tst_PathscopeDialog::holdsUpItsParentOnly()
{
    TestLog log;
    const PreviewWorld world;
    QCOMPARE(world.dialog->windowModality(), Qt::WindowModal);
}

void tst_PathscopeDialog::fitsASmallScreen()
{
    TestLog log;
    const PreviewWorld world;
    // 1366 x 768 less a task bar and the window's frame.
    QVERIFY(world.dialog->minimumSizeHint().width() <= 1340);
    QVERIFY(world.dialog->minimumSizeHint().height() <= 680);
    const QSize available = world.dialog->screen()->availableSize();
    QVERIFY(world.dialog->width() <= available.width() * 0.92);
    QVERIFY(world.dialog->height() <= available.height() * 0.86);
}

QTEST_MAIN(tst_PathscopeDialog)
#include "tst_pathscope_dialog.moc"
