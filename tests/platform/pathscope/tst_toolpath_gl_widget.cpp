#include "view_in_a_window.h"

#include "support/test_log.h"

#include <QGLContext>
#include <QLabel>
#include <QOpenGLContext>
#include <QPointer>
#include <QScreen>
#include <QWindow>

using namespace pathscope;

namespace {

/** The middle of the front wall's face at a height. */
QPoint onTheWall(const ViewInAWindow& shown, float z)
{
    return shown.place(50, 40, z);
}

/**
 * Compares with the picture that is kept under this name; drivers round edges differently.
 *
 * With TROVEK_KEEP_PICTURES set the picture is kept instead, to be looked at before a commit.
 */
void compareWithKept(const QImage& picture, const char* name)
{
    const QString folder = QFINDTESTDATA("pictures");
    const QString path = folder + QLatin1Char('/') + QLatin1String(name);
    if (qEnvironmentVariableIsSet("TROVEK_KEEP_PICTURES")) {
        QVERIFY(picture.save(path));
        return;
    }
    const QImage kept = QImage(path).convertToFormat(QImage::Format_RGB32);
    QVERIFY2(!kept.isNull(), qPrintable(path));
    QCOMPARE(picture.size(), kept.size());
    constexpr int kTold = 48;
    int others = 0;
    for (int y = 0; y < kept.height(); ++y) {
        for (int x = 0; x < kept.width(); ++x) {
            const QRgb a = picture.pixel(x, y);
            const QRgb b = kept.pixel(x, y);
            others += std::abs(qRed(a) - qRed(b)) > kTold ||
                              std::abs(qGreen(a) - qGreen(b)) > kTold ||
                              std::abs(qBlue(a) - qBlue(b)) > kTold
                          ? 1
                          : 0;
        }
    }
    const int allowed = kept.width() * kept.height() / 200;
    if (others > allowed)
        picture.save(QStringLiteral("differs_") + QLatin1String(name));
    QVERIFY2(others <= allowed, qPrintable(QStringLiteral("%1 pixels of %2 differ")
                                               .arg(others)
                                               .arg(kept.width() * kept.height())));
}

} // namespace

class tst_ToolpathGLWidget : public QObject
{
    Q_OBJECT

private slots:
    void aRedWallIsRedWhereItShouldBe();
    void theFirstLayerAloneIsAtTheBottom();
    void oneLayerShowsNothingBelow();
    void theMoveSliderShowsTheLayerGrow();
    void travelsAreShownOnlyWhenWanted();
    void looksTheSameAsEver_data();
    void looksTheSameAsEver();
    void orthographicNeedsNoUpload();
    void aLayerStepUploadsNothingAndDrawsThatLayer();
    void layersUpAndDownEndInTheSamePicture();
    void anotherColourUploadsOnlyTheTable();
    void drawsNothingWhenNothingChanges();
    void coveredAndSeenAgainItDrawsNoSegment();
    void showsTheControlsBesideThePicture();
    void theMouseTurnsMovesAndZooms();
    void theWheelZoomsOnlyOverThePicture();
    void doubleClickFits();
    void thePresetsOfTheControlsAreTaken();
    void movingIsCoarseAndThenFull();
    void resizingKeepsThePictureRight();
    void survivesAnotherParent();
    void rebuildsALostContext();
    void sharesAContext();
    void aMissingFileIsToldAndLeavesTheViewEmpty();
    void aSecondFileTakesThePlaceOfTheFirst();
    void aFileAfterAMissingOneIsShown();
    void loadsBeforeItIsShown();
    void mayBeDestroyedWhileLoading();
    void mayBeDestroyedWhenThePictureIsComplete();
    void followsThePalette();
};

void tst_ToolpathGLWidget::aRedWallIsRedWhereItShouldBe()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));
    QCOMPARE(shown.view->whyNoPicture(), QString());

    const QImage picture = shown.picture();

    for (const float z : {1.0F, 5.0F, 9.0F})
        QVERIFY2(isRed(picture.pixel(onTheWall(shown, z))), qPrintable(QString::number(double(z))));
    // Beside the wall, and above the one behind.
    QVERIFY(!isRed(picture.pixel(shown.place(50, 37, 0))));
    QVERIFY(!isRed(picture.pixel(shown.place(50, 60, 13))));
}

void tst_ToolpathGLWidget::theFirstLayerAloneIsAtTheBottom()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));

    shown.model()->setLayerRange(0, 0);
    QVERIFY(shown.settle());

    const QImage picture = shown.picture();
    QVERIFY(isRed(picture.pixel(onTheWall(shown, 0.1F))));
    QVERIFY(!isRed(picture.pixel(onTheWall(shown, 2))));
}

void tst_ToolpathGLWidget::oneLayerShowsNothingBelow()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));

    shown.model()->setLastLayer(40);
    shown.model()->setSingleLayer(true);
    QVERIFY(shown.settle());

    const QImage picture = shown.picture();
    QVERIFY(isRed(picture.pixel(onTheWall(shown, 8.1F))));
    QVERIFY(!isRed(picture.pixel(onTheWall(shown, 5))));
    QVERIFY(!isRed(picture.pixel(onTheWall(shown, 1))));
}

void tst_ToolpathGLWidget::theMoveSliderShowsTheLayerGrow()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(1)));
    const int all = countPixels(shown.picture(), isRed);

    // To the wall, and two of its four sides: the one in front, and the one on the right.
    shown.model()->setShownMoves(shown.model()->moveCount() - 4);
    QVERIFY(shown.settle());

    const QImage picture = shown.picture();
    QVERIFY(isRed(picture.pixel(shown.place(50, 40, 0.1F))));
    QVERIFY(isRed(picture.pixel(shown.place(60, 50, 0.1F))));
    QVERIFY(!isRed(picture.pixel(shown.place(50, 60, 0.1F))));
    QVERIFY(countPixels(picture, isRed) < 0.7 * all);
}

void tst_ToolpathGLWidget::travelsAreShownOnlyWhenWanted()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));
    const int without = countPixels(shown.picture(), isBlue);

    shown.model()->setTravelsShown(true);
    QVERIFY(shown.settle());
    const int with = countPixels(shown.picture(), isBlue);
    shown.model()->setTravelsShown(false);
    QVERIFY(shown.settle());

    QVERIFY2(with > without + 100, qPrintable(QString::number(with)));
    QCOMPARE(countPixels(shown.picture(), isBlue), without);
}

void tst_ToolpathGLWidget::looksTheSameAsEver_data()
{
    QTest::addColumn<bool>("orthographic");
    QTest::addColumn<bool>("round");
    QTest::addColumn<QString>("name");

    QTest::newRow("perspective") << false << false << "view_perspective.png";
    QTest::newRow("orthographic") << true << false << "view_orthographic.png";
    QTest::newRow("round platform") << false << true << "view_round_platform.png";
}

void tst_ToolpathGLWidget::looksTheSameAsEver()
{
    QFETCH(bool, orthographic);
    QFETCH(bool, round);
    QFETCH(QString, name);
    trovek::TestLog log;
    ViewInAWindow shown(QSize(560, 400), {QColor(220, 30, 30)},
                        round ? Orvane::Ground::Round : Orvane::Ground::Rectangular);
    shown.view->overlayWidget()->setFixedWidth(240);
    shown.model()->setOrthographic(orthographic);
    QVERIFY(shown.open(towerText(40)));

    compareWithKept(shown.picture(), qPrintable(name));
}

void tst_ToolpathGLWidget::orthographicNeedsNoUpload()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));
    const std::uint64_t before = shown.view->uploadedBytes();
    QVERIFY(before >= 50 * 7 * sizeof(PathPoint));
    const QImage perspective = shown.picture();

    shown.model()->orthoViewToggled();
    QVERIFY(shown.settle());

    QCOMPARE(shown.view->uploadedBytes(), before);
    QVERIFY(shown.picture() != perspective);
}

void tst_ToolpathGLWidget::aLayerStepUploadsNothingAndDrawsThatLayer()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(200)));
    shown.model()->setLastLayer(100);
    QVERIFY(shown.settle());
    const std::uint64_t uploaded = shown.view->uploadedBytes();
    const std::uint64_t drawn = shown.view->drawnSegments();

    shown.model()->layerUp();
    QVERIFY(shown.settle());

    QCOMPARE(shown.view->uploadedBytes(), uploaded);
    QCOMPARE(shown.view->drawnSegments() - drawn, shown.scene()->topLayerSegments().count());
}

void tst_ToolpathGLWidget::layersUpAndDownEndInTheSamePicture()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));
    shown.model()->setLastLayer(25);
    QVERIFY(shown.settle());
    const QImage before = shown.picture();

    shown.model()->layerUp();
    QVERIFY(shown.settle());
    QVERIFY(shown.picture() != before);
    shown.model()->layerDown();
    QVERIFY(shown.settle());

    QVERIFY(shown.picture() == before);
}

void tst_ToolpathGLWidget::anotherColourUploadsOnlyTheTable()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));
    const std::uint64_t before = shown.view->uploadedBytes();

    shown.model()->setColourMode(ToolpathViewModel::ByFeature);
    QVERIFY(shown.settle());

    const std::uint64_t table = shown.scene()->toolpaths()->styles.size() * sizeof(PathPoint);
    QCOMPARE(shown.view->uploadedBytes() - before, table);
    QVERIFY(!isRed(shown.picture().pixel(onTheWall(shown, 5))));

    shown.model()->setColourMode(ToolpathViewModel::ByLayerTime);
    QVERIFY(shown.settle());
    QVERIFY(countPixels(shown.picture(), isRed) == 0);
}

void tst_ToolpathGLWidget::drawsNothingWhenNothingChanges()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));
    // What the window system still has to say.
    QTest::qWait(1000);
    const int frames = shown.view->frameCount();
    const std::uint64_t drawn = shown.view->drawnSegments();

    QTest::qWait(5000);
    shown.model()->setLastLayer(shown.model()->lastLayer());
    shown.model()->layerUp();
    shown.scene()->setCamera(shown.scene()->camera());
    QTest::qWait(200);

    QCOMPARE(shown.view->frameCount(), frames);
    QCOMPARE(shown.view->drawnSegments(), drawn);
}

void tst_ToolpathGLWidget::coveredAndSeenAgainItDrawsNoSegment()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));
    const QImage before = shown.picture();
    const int frames = shown.view->frameCount();
    const std::uint64_t drawn = shown.view->drawnSegments();

    shown.view->update();
    QTRY_VERIFY(shown.view->frameCount() > frames);

    QCOMPARE(shown.view->drawnSegments(), drawn);
    QVERIFY(shown.picture() == before);
}

void tst_ToolpathGLWidget::showsTheControlsBesideThePicture()
{
    trovek::TestLog log;
    ViewInAWindow shown(QSize(720, 560));
    QVERIFY(shown.open(towerText(50)));
    const QRect controls(shown.view->overlayWidget()->mapTo(&shown.window, QPoint()),
                         shown.view->overlayWidget()->size());
    QCOMPARE(controls.right(), shown.window.width() - 1);
    QCOMPARE(controls.height(), shown.window.height());

    const auto screen = [&shown] {
        const QPoint origin = shown.window.mapToGlobal(QPoint());
        return shown.window.screen()
            ->grabWindow(0, origin.x(), origin.y(), shown.window.width(), shown.window.height())
            .toImage();
    };

    // On the screen, where a native window would cover what is painted under it.
    QTRY_VERIFY(countPixels(screen().copy(0, 0, controls.left(), 560), isRed) > 500);
    const auto isText = [](QRgb pixel) {
        return qGray(pixel) < 90;
    };
    QTRY_VERIFY(countPixels(screen().copy(controls), isText) > 300);
}

void tst_ToolpathGLWidget::theMouseTurnsMovesAndZooms()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(20)));
    const auto drag = [&shown](Qt::MouseButton button, Qt::KeyboardModifiers modifiers) {
        QTest::mousePress(shown.view, button, modifiers, QPoint(100, 100));
        QMouseEvent move(QEvent::MouseMove, QPointF(140, 110), QPointF(140, 110), Qt::NoButton,
                         button, modifiers);
        QCoreApplication::sendEvent(shown.view, &move);
        QTest::mouseRelease(shown.view, button, modifiers, QPoint(140, 110));
    };

    const Camera first = shown.scene()->camera();
    drag(Qt::LeftButton, Qt::NoModifier);
    const Camera turned = shown.scene()->camera();
    QVERIFY(turned.azimuth() != first.azimuth());
    QCOMPARE(turned.target(), first.target());
    QCOMPARE(shown.view->cursor().shape(), Qt::OpenHandCursor);

    drag(Qt::MiddleButton, Qt::NoModifier);
    const Camera moved = shown.scene()->camera();
    QCOMPARE(moved.azimuth(), turned.azimuth());
    QVERIFY(moved.target() != turned.target());

    drag(Qt::LeftButton, Qt::ShiftModifier);
    QVERIFY(shown.scene()->camera().target() != moved.target());
    QCOMPARE(shown.scene()->camera().azimuth(), moved.azimuth());

    const Camera still = shown.scene()->camera();
    drag(Qt::RightButton, Qt::NoModifier);
    QCOMPARE(shown.scene()->camera(), still);

    QTest::mousePress(shown.view, Qt::LeftButton, Qt::NoModifier, QPoint(100, 100));
    QCOMPARE(shown.view->cursor().shape(), Qt::ClosedHandCursor);
    QTest::mouseRelease(shown.view, Qt::LeftButton, Qt::NoModifier, QPoint(100, 100));
}

void tst_ToolpathGLWidget::theWheelZoomsOnlyOverThePicture()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(20)));
    const auto turn = [&shown](QPointF position, int units) {
        QWheelEvent wheel(position, shown.view->mapToGlobal(position.toPoint()), QPoint(),
                          QPoint(0, units), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(shown.view, &wheel);
        return wheel.isAccepted();
    };
    const Camera before = shown.scene()->camera();
    const QPoint under = shown.place(40, 40, 0);

    QVERIFY(turn(QPointF(under) / shown.view->devicePixelRatioF(), 240));
    QVERIFY(shown.scene()->camera().distance() < before.distance());
    QVERIFY((shown.place(40, 40, 0) - under).manhattanLength() <= 12);

    const Camera nearer = shown.scene()->camera();
    QVERIFY(!turn(QPointF(shown.logicalSize().width() + 20, 100), 240));
    QCOMPARE(shown.scene()->camera(), nearer);
}

void tst_ToolpathGLWidget::doubleClickFits()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(20)));
    const Camera fitted = shown.scene()->camera();
    Camera away = fitted;
    away.pan(QPointF(300, 100), shown.logicalSize(), false);
    shown.scene()->setCamera(away);

    QTest::mouseDClick(shown.view, Qt::LeftButton, Qt::NoModifier, QPoint(50, 50));

    QCOMPARE(shown.scene()->camera(), fitted);
}

void tst_ToolpathGLWidget::thePresetsOfTheControlsAreTaken()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(20)));

    emit shown.view->overlayWidget()->cameraRequested(Camera::Top);
    QCOMPARE(shown.scene()->camera().elevation(), 90.0F);
    emit shown.view->overlayWidget()->cameraRequested(Camera::Side);
    QCOMPARE(shown.scene()->camera().elevation(), 0.0F);
    QCOMPARE(shown.scene()->camera().azimuth(), 90.0F);
    emit shown.view->overlayWidget()->cameraRequested(-1);
    QCOMPARE(shown.scene()->camera().azimuth(), 90.0F);

    QVERIFY(shown.settle());
    QVERIFY(isRed(shown.picture().pixel(shown.place(60, 50, 2))));
}

void tst_ToolpathGLWidget::movingIsCoarseAndThenFull()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    // More than is drawn in full for each frame.
    QVERIFY(shown.open(towerText(40'000)));
    const std::uint64_t all = shown.scene()->toolpaths()->segmentCount;
    const std::uint64_t drawn = shown.view->drawnSegments();
    const int frames = shown.view->frameCount();

    Camera camera = shown.scene()->camera();
    camera.orbit(QPointF(20, 5));
    shown.scene()->setCamera(camera);
    QTRY_VERIFY_WITH_TIMEOUT(shown.view->frameCount() > frames, kPatienceMs);

    QVERIFY(!shown.view->isPictureComplete());
    QVERIFY2(shown.view->drawnSegments() - drawn < all / 2,
             qPrintable(QString::number(shown.view->drawnSegments() - drawn)));
    QVERIFY(shown.settle());
    QVERIFY(shown.view->drawnSegments() - drawn >= all);
}

void tst_ToolpathGLWidget::resizingKeepsThePictureRight()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));

    for (const QSize size : {QSize(900, 500), QSize(520, 700), QSize(700, 360)}) {
        shown.window.resize(size);
        QTRY_COMPARE(shown.view->size(), size);
        QVERIFY(shown.settle());
        QVERIFY(isRed(shown.picture().pixel(onTheWall(shown, 5))));
    }
}

void tst_ToolpathGLWidget::survivesAnotherParent()
{
    trovek::TestLog log;
    QWidget other;
    auto* layout = new QHBoxLayout(&other);
    layout->setContentsMargins(0, 0, 0, 0);
    other.resize(640, 480);
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));

    layout->addWidget(shown.view);
    other.show();
    QVERIFY(QTest::qWaitForWindowExposed(&other));
    QVERIFY(shown.settle());
    QTRY_VERIFY(shown.settle() && isRed(shown.picture().pixel(onTheWall(shown, 5))));

    shown.view->setParent(nullptr);
    shown.view->resize(640, 480);
    shown.view->show();
    QVERIFY(QTest::qWaitForWindowExposed(shown.view));
    QVERIFY(shown.settle());
    QTRY_VERIFY(shown.settle() && isRed(shown.picture().pixel(onTheWall(shown, 5))));

    // What lies over it would be on the picture of the screen.
    other.hide();
    shown.window.layout()->addWidget(shown.view);
    shown.view->show();
    QVERIFY(shown.settle());
    QTRY_VERIFY(shown.settle() && isRed(shown.picture().pixel(onTheWall(shown, 5))));
}

void tst_ToolpathGLWidget::rebuildsALostContext()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));
    const QImage before = shown.picture();
    QSignalSpy complete(shown.view, &ToolpathGLWidget::pictureComplete);

    // Twice: what is built in the place of the first one may be lost as well.
    for (int i = 1; i <= 2; ++i) {
        const QPointer<QOpenGLContext> lost = shown.view->context()->contextHandle();
        const std::uint64_t uploaded = shown.view->uploadedBytes();

        shown.view->setContext(new QGLContext(shown.view->context()->requestedFormat()));
        QVERIFY(lost.isNull());
        shown.view->update();

        QTRY_VERIFY_WITH_TIMEOUT(shown.view->uploadedBytes() > uploaded, kPatienceMs);
        QVERIFY(shown.settle());
        QCOMPARE(shown.view->whyNoPicture(), QString());
        QVERIFY(shown.picture() == before);
    }
    shown.model()->layerDown();
    QVERIFY(shown.settle());
    QVERIFY(shown.picture() != before);
    // Of the file, which was read long before.
    QCOMPARE(complete.count(), 0);
}

void tst_ToolpathGLWidget::sharesAContext()
{
    trovek::TestLog log;
    QGLFormat format;
    format.setVersion(3, 3);
    format.setProfile(QGLFormat::CoreProfile);
    QGLWidget share(format);
    ViewInAWindow shown(QSize(640, 480), {QColor(220, 30, 30)}, Orvane::Ground::Rectangular,
                        &share);

    QVERIFY(shown.open(towerText(50)));

    QVERIFY(isRed(shown.picture().pixel(onTheWall(shown, 5))));
}

void tst_ToolpathGLWidget::aMissingFileIsToldAndLeavesTheViewEmpty()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    shown.window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&shown.window));
    QSignalSpy failed(shown.view, &ToolpathGLWidget::loadFailed);
    QSignalSpy complete(shown.view, &ToolpathGLWidget::pictureComplete);

    shown.view->setFile(QFileInfo(shown.folder.filePath(QStringLiteral("none.gcode"))));

    QTRY_COMPARE_WITH_TIMEOUT(complete.count(), 1, kPatienceMs);
    QCOMPARE(failed.count(), 1);
    QVERIFY(!failed.first().first().toString().isEmpty());
    QVERIFY(shown.settle());
    QCOMPARE(countPixels(shown.picture(), isRed), 0);
    QTest::qWait(200);
    QCOMPARE(complete.count(), 1);
}

void tst_ToolpathGLWidget::aSecondFileTakesThePlaceOfTheFirst()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(100)));

    QVERIFY(shown.load(towerText(20)));

    QCOMPARE(shown.scene()->toolpaths()->layers.size(), std::size_t(20));
    const QImage picture = shown.picture();
    QVERIFY(isRed(picture.pixel(onTheWall(shown, 2))));
    QVERIFY(!isRed(picture.pixel(onTheWall(shown, 8))));
    // Twice in a row, before the first is read: only the last one counts.
    QSignalSpy complete(shown.view, &ToolpathGLWidget::pictureComplete);
    shown.view->setFile(QFileInfo(shown.write(towerText(3000))));
    shown.view->setFile(QFileInfo(shown.write(towerText(30))));
    QVERIFY(complete.wait(kPatienceMs));
    QVERIFY(shown.settle());
    QCOMPARE(shown.scene()->toolpaths()->layers.size(), std::size_t(30));
    QCOMPARE(complete.count(), 1);
}

void tst_ToolpathGLWidget::aFileAfterAMissingOneIsShown()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(50)));
    QSignalSpy complete(shown.view, &ToolpathGLWidget::pictureComplete);
    shown.view->setFile(QFileInfo(QStringLiteral("/none")));
    QVERIFY(complete.wait(kPatienceMs));

    QVERIFY(shown.load(towerText(50)));

    QVERIFY(isRed(shown.picture().pixel(onTheWall(shown, 5))));
}

void tst_ToolpathGLWidget::loadsBeforeItIsShown()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QSignalSpy complete(shown.view, &ToolpathGLWidget::pictureComplete);
    shown.view->setFile(QFileInfo(shown.write(towerText(50))));
    QTRY_VERIFY_WITH_TIMEOUT(shown.scene()->toolpaths()->complete, kPatienceMs);
    QCOMPARE(complete.count(), 0);

    shown.window.show();

    QTRY_COMPARE_WITH_TIMEOUT(complete.count(), 1, kPatienceMs);
    QVERIFY(isRed(shown.picture().pixel(onTheWall(shown, 5))));
}

void tst_ToolpathGLWidget::mayBeDestroyedWhileLoading()
{
    trovek::TestLog log;
    for (int i = 0; i < 5; ++i) {
        ViewInAWindow shown;
        shown.window.show();
        shown.view->setFile(QFileInfo(shown.write(towerText(5000))));
        for (int turn = 0; turn < 3 * i; ++turn)
            QCoreApplication::processEvents();
    }
}

void tst_ToolpathGLWidget::mayBeDestroyedWhenThePictureIsComplete()
{
    trovek::TestLog log;
    auto* shown = new ViewInAWindow;
    shown->window.show();
    connect(shown->view, &ToolpathGLWidget::pictureComplete, this, [&shown] {
        delete shown;
        shown = nullptr;
    });
    shown->view->setFile(QFileInfo(shown->write(towerText(50))));

    QTRY_VERIFY_WITH_TIMEOUT(shown == nullptr, kPatienceMs);
}

void tst_ToolpathGLWidget::followsThePalette()
{
    trovek::TestLog log;
    ViewInAWindow shown;
    QVERIFY(shown.open(towerText(5)));
    QVERIFY(qGray(shown.picture().pixel(3, 3)) > 160);

    QPalette dark;
    dark.setColor(QPalette::Window, QColor(40, 40, 44));
    shown.view->setPalette(dark);
    QVERIFY(shown.settle());

    QVERIFY(qGray(shown.picture().pixel(3, 3)) < 100);
}

QTEST_MAIN(tst_ToolpathGLWidget)
#include "tst_toolpath_gl_widget.moc"
