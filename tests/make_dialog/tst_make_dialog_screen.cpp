#include "make_dialog/thing_world.h"

#include <trovek-ui/make_gcode_dialog.h>

#include <QApplication>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>

using namespace trovek;

/** The make dialogs on a screen that is lower than they are; the tests' has 800 by 600 pixels. */
class tst_MakeDialogScreen : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void scrollsWhatDoesNotFit();
    void doesNotScrollWhatFits();
    void keepsItsPlaceWhenItOpens();
    void movesUpWhenItReachesBelowTheScreen();
    void reachesEverything();
    void showsWhatGetsTheFocus_data();
    void showsWhatGetsTheFocus();
    void movesNothingUnderTheMouse();
    void makesRoomForANotice();
    void scrollsTheGCodeDialogToo();

private:
    TrovekQt m_facade;
};

namespace {

struct Opened : OpenedThing
{
    explicit Opened(ThingWorld& world)
        : OpenedThing(world, "dual", SlicerConfiguration::Both)
    {}

    QScrollArea& page() const { return find<QScrollArea>("page"); }
    QScrollBar& bar() const { return *page().verticalScrollBar(); }

    /** Nothing of it is cut off by the page. */
    bool isInSight(const QWidget& widget) const
    {
        const QRect place(widget.mapTo(page().viewport(), QPoint(0, 0)), widget.size());
        return page().viewport()->rect().contains(place);
    }
};

QRect screenOf(const QWidget& widget)
{
    return widget.screen()->availableGeometry();
}

} // namespace

void tst_MakeDialogScreen::initTestCase()
{
    const QSize screen = QGuiApplication::primaryScreen()->availableSize();
    QVERIFY(screen.height() <= 600);
}

void tst_MakeDialogScreen::scrollsWhatDoesNotFit()
{
    TestLog log;
    ThingWorld world(m_facade);
    const Opened opened(world);
    opened.dialog->move(0, 0);
    const int width = opened.dialog->width();
    QVERIFY(width <= 1024);

    opened.openAdvanced();

    QTRY_VERIFY(opened.bar().isVisible());
    QVERIFY(opened.bar().maximum() > 0);
    QVERIFY(screenOf(*opened.dialog).height() >= opened.dialog->frameGeometry().height());
    // Room that there is is used.
    QVERIFY(opened.dialog->height() > screenOf(*opened.dialog).height() * 9 / 10);
    QCOMPARE(opened.dialog->width(), width);
    QCOMPARE(opened.page().horizontalScrollBar()->maximum(), 0);
    for (const char* button : {"cancelButton", "mainButton", "previewWanted"}) {
        const QWidget& widget = opened.find<QWidget>(button);
        QVERIFY(opened.dialog->rect().contains(
            QRect(widget.mapTo(opened.dialog, QPoint(0, 0)), widget.size())));
    }
}

void tst_MakeDialogScreen::doesNotScrollWhatFits()
{
    TestLog log;
    ThingWorld world(m_facade);
    const Opened opened(world);
    QVERIFY(!opened.bar().isVisible());

    opened.openAdvanced();
    QTRY_VERIFY(opened.bar().isVisible());
    QTest::mouseClick(&opened.find<QWidget>("advancedHeader"), Qt::LeftButton);

    QTRY_VERIFY(!opened.bar().isVisible());
    QCOMPARE(opened.page().viewport()->height(), opened.page().widget()->height());
}

void tst_MakeDialogScreen::keepsItsPlaceWhenItOpens()
{
    TestLog log;
    ThingWorld world(m_facade);
    const Opened opened(world);
    opened.dialog->move(20, 0);
    const QWidget& header = opened.find<QWidget>("advancedHeader");
    const QPoint before = header.mapToGlobal(QPoint(0, 0));

    opened.openAdvanced();
    QCOMPARE(header.mapToGlobal(QPoint(0, 0)), before);

    QTest::mouseClick(&opened.find<QWidget>("advancedHeader"), Qt::LeftButton);
    QTRY_VERIFY(!opened.bar().isVisible());
    QCOMPARE(header.mapToGlobal(QPoint(0, 0)), before);
}

void tst_MakeDialogScreen::movesUpWhenItReachesBelowTheScreen()
{
    TestLog log;
    ThingWorld world(m_facade);
    const Opened opened(world);
    const QRect screen = screenOf(*opened.dialog);
    opened.dialog->move(30, screen.bottom() - opened.dialog->frameGeometry().height());

    opened.openAdvanced();

    QTRY_VERIFY(opened.dialog->frameGeometry().bottom() <= screen.bottom());
    QVERIFY(opened.dialog->frameGeometry().top() >= screen.top());
    QCOMPARE(opened.dialog->x(), 30);
}

void tst_MakeDialogScreen::reachesEverything()
{
    TestLog log;
    ThingWorld world(m_facade);
    const Opened opened(world);
    opened.openAdvanced();

    opened.bar().setValue(opened.bar().maximum());

    QVERIFY(opened.isInSight(opened.find<QWidget>("createProfileButton")));
    QVERIFY(opened.isInSight(opened.find<QWidget>("travelingSpeed")));
    QVERIFY(!opened.isInSight(opened.find<QWidget>("makeRadio")));
}

void tst_MakeDialogScreen::showsWhatGetsTheFocus_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QByteArray>("focused");
    QTest::newRow("by its mnemonic") << int(Qt::Key_G) << QByteArray("travelingSpeed");
    QTest::newRow("by Tab") << int(Qt::Key_Tab) << QByteArray("createProfileButton");
}

void tst_MakeDialogScreen::showsWhatGetsTheFocus()
{
    TestLog log;
    QFETCH(int, key);
    QFETCH(QByteArray, focused);
    ThingWorld world(m_facade);
    const Opened opened(world);
    opened.openAdvanced();
    auto& widget = opened.find<QWidget>(focused);
    QVERIFY(!opened.isInSight(widget));

    if (key == Qt::Key_Tab) {
        opened.previewWanted().setFocus();
        QTest::keyClick(&opened.previewWanted(), Qt::Key_Backtab);
    } else {
        QTest::keyClick(opened.dialog, static_cast<Qt::Key>(key), Qt::AltModifier);
    }

    QVERIFY(widget.hasFocus());
    QVERIFY(opened.isInSight(widget));
}

void tst_MakeDialogScreen::movesNothingUnderTheMouse()
{
    TestLog log;
    ThingWorld world(m_facade);
    const Opened opened(world);
    opened.openAdvanced();
    // Half of it is cut off.
    auto& infill = opened.find<QWidget>("infill");
    opened.bar().setValue(infill.mapTo(opened.page().widget(), QPoint(0, infill.height() / 2)).y() -
                          opened.page().viewport()->height());
    const int before = opened.bar().value();
    QVERIFY(!opened.isInSight(infill));

    QTest::mousePress(&infill, Qt::LeftButton, {}, QPoint(8, 4));

    QVERIFY(infill.hasFocus());
    QCOMPARE(opened.bar().value(), before);
    QTest::mouseRelease(&infill, Qt::LeftButton, {}, QPoint(8, 4));
}

void tst_MakeDialogScreen::makesRoomForANotice()
{
    TestLog log;
    log.allowErrors("The slice for the preview failed: ");
    ThingWorld world(m_facade);
    const Opened opened(world);
    opened.openAdvanced();
    opened.previewWanted().setChecked(true);
    const int height = opened.dialog->height();
    opened.clickMain();
    ModalDriver driver;
    driver.expectMessage(kFailedToStartPrint);

    world.service.concludeJob(world.service.lastJobID(), JobFailed, std::string(300, 'w') + " end");

    QTRY_VERIFY(driver.isDone());
    QTRY_VERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(opened.find<QWidget>("previewNotice").isVisible());
    QTRY_COMPARE(opened.dialog->height(), height);
}

void tst_MakeDialogScreen::scrollsTheGCodeDialogToo()
{
    TestLog log;
    ThingWorld world(m_facade);
    const QFont before = QApplication::font();
    QFont large = before;
    large.setPixelSize(60);
    QApplication::setFont(large);
    {
        const MakeGCodeDialog dialog(m_facade, world.inputFile, &world.settings, nullptr,
                                     world.folder.path(), true);
        const_cast<MakeGCodeDialog&>(dialog).show();
        QVERIFY(QTest::qWaitForWindowExposed(const_cast<MakeGCodeDialog*>(&dialog)));

        auto* const page = dialog.findChild<QScrollArea*>(QStringLiteral("page"));
        QTRY_VERIFY(page->verticalScrollBar()->isVisible());
        QVERIFY(dialog.frameGeometry().height() <= screenOf(dialog).height());
    }
    QApplication::setFont(before);
}

QTEST_MAIN(tst_MakeDialogScreen)
#include "tst_make_dialog_screen.moc"
