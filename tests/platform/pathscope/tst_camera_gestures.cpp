#include <pathscope/camera_gestures.h>

#include <QTest>

#include <cmath>
#include <limits>

using namespace pathscope;

namespace {

constexpr QSizeF kWindow(400, 300);

/** Pressed at (100, 100), then dragged to (140, 110) with that button alone. */
Camera dragged(Qt::MouseButton button, Qt::KeyboardModifiers modifiers)
{
    CameraGestures gestures;
    Camera camera;
    gestures.press(button, modifiers, {100, 100});
    gestures.drag(camera, button, {140, 110}, kWindow, false);
    return camera;
}

} // namespace

class tst_CameraGestures : public QObject
{
    Q_OBJECT

private slots:
    void buttonsTurnAndMove_data();
    void buttonsTurnAndMove();
    void aDragIsTheSameInOnePieceAndInMany();
    void nothingHappensBeforeAPressAndAfterARelease();
    void theButtonThatWasPressedFirstCounts();
    void aReleaseThatNobodyToldOfEndsTheGesture();
    void modifiersCountWhenPressed();
    void theWheelGoesNearerAndBack();
    void aWheelThatStandsStillChangesNothing();
};

void tst_CameraGestures::buttonsTurnAndMove_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<bool>("turns");
    QTest::addColumn<bool>("moves");

    const auto row = [](const char* name, Qt::MouseButton button, Qt::KeyboardModifiers modifiers,
                        bool turns, bool moves) {
        QTest::newRow(name) << int(button) << int(modifiers) << turns << moves;
    };
    row("left", Qt::LeftButton, Qt::NoModifier, true, false);
    row("left with Shift", Qt::LeftButton, Qt::ShiftModifier, false, true);
    row("left with Control", Qt::LeftButton, Qt::ControlModifier, true, false);
    row("middle", Qt::MiddleButton, Qt::NoModifier, false, true);
    row("middle with Shift", Qt::MiddleButton, Qt::ShiftModifier, false, true);
    row("right", Qt::RightButton, Qt::NoModifier, false, false);
    row("right with Shift", Qt::RightButton, Qt::ShiftModifier, false, false);
    row("back", Qt::BackButton, Qt::NoModifier, false, false);
}

void tst_CameraGestures::buttonsTurnAndMove()
{
    QFETCH(int, button);
    QFETCH(int, modifiers);

    const Camera camera = dragged(Qt::MouseButton(button), Qt::KeyboardModifiers(modifiers));

    QTEST(camera.azimuth() != Camera().azimuth(), "turns");
    QTEST(camera.target() != Camera().target(), "moves");
    QCOMPARE(camera.distance(), Camera().distance());
}

void tst_CameraGestures::aDragIsTheSameInOnePieceAndInMany()
{
    CameraGestures gestures;
    Camera camera;
    QVERIFY(gestures.press(Qt::LeftButton, Qt::NoModifier, {100, 100}));
    QCOMPARE(gestures.kind(), CameraGestures::Kind::Turn);
    for (int i = 1; i <= 10; ++i)
        QVERIFY(gestures.drag(camera, Qt::LeftButton, {100.0 + 4 * i, 100.0 + i}, kWindow, false));

    const Camera once = dragged(Qt::LeftButton, Qt::NoModifier);
    QVERIFY(std::abs(camera.azimuth() - once.azimuth()) < 1e-3F);
    QVERIFY(std::abs(camera.elevation() - once.elevation()) < 1e-3F);
    // Where it was already.
    QVERIFY(!gestures.drag(camera, Qt::LeftButton, {140, 110}, kWindow, false));
}

void tst_CameraGestures::nothingHappensBeforeAPressAndAfterARelease()
{
    CameraGestures gestures;
    Camera camera;

    QVERIFY(!gestures.drag(camera, Qt::LeftButton, {140, 110}, kWindow, false));
    gestures.release(Qt::LeftButton);
    QVERIFY(gestures.press(Qt::MiddleButton, Qt::NoModifier, {100, 100}));
    QCOMPARE(gestures.kind(), CameraGestures::Kind::Move);
    gestures.release(Qt::MiddleButton);
    QCOMPARE(gestures.kind(), CameraGestures::Kind::None);
    QVERIFY(!gestures.drag(camera, Qt::NoButton, {140, 110}, kWindow, false));

    QCOMPARE(camera, Camera());
}

void tst_CameraGestures::theButtonThatWasPressedFirstCounts()
{
    CameraGestures gestures;
    Camera camera;
    QVERIFY(gestures.press(Qt::LeftButton, Qt::NoModifier, {100, 100}));

    QVERIFY(!gestures.press(Qt::MiddleButton, Qt::NoModifier, {100, 100}));
    QVERIFY(gestures.drag(camera, Qt::LeftButton | Qt::MiddleButton, {140, 110}, kWindow, false));
    gestures.release(Qt::MiddleButton);

    QCOMPARE(gestures.kind(), CameraGestures::Kind::Turn);
    QCOMPARE(camera.target(), Camera().target());
    gestures.release(Qt::LeftButton);
    QCOMPARE(gestures.kind(), CameraGestures::Kind::None);
}

void tst_CameraGestures::aReleaseThatNobodyToldOfEndsTheGesture()
{
    CameraGestures gestures;
    Camera camera;
    QVERIFY(gestures.press(Qt::LeftButton, Qt::NoModifier, {100, 100}));

    QVERIFY(!gestures.drag(camera, Qt::NoButton, {140, 110}, kWindow, false));

    QCOMPARE(gestures.kind(), CameraGestures::Kind::None);
    QCOMPARE(camera, Camera());
}

void tst_CameraGestures::modifiersCountWhenPressed()
{
    CameraGestures gestures;
    QVERIFY(gestures.press(Qt::LeftButton, Qt::ShiftModifier, {100, 100}));
    QCOMPARE(gestures.kind(), CameraGestures::Kind::Move);
    gestures.release(Qt::LeftButton);
    QVERIFY(gestures.press(Qt::LeftButton, Qt::NoModifier, {100, 100}));
    QCOMPARE(gestures.kind(), CameraGestures::Kind::Turn);
}

void tst_CameraGestures::theWheelGoesNearerAndBack()
{
    for (const bool orthographic : {false, true}) {
        Camera camera;
        QVERIFY(CameraGestures::wheel(camera, 120, {300, 50}, kWindow, orthographic));
        QVERIFY(std::abs(camera.distance() * 1.15F - Camera().distance()) < 0.01F);
        QVERIFY(camera.target() != Camera().target());

        QVERIFY(CameraGestures::wheel(camera, -120, {300, 50}, kWindow, orthographic));
        QVERIFY(std::abs(camera.distance() - Camera().distance()) < 0.01F);
        QVERIFY((camera.target() - Camera().target()).length() < 0.01F);
    }
}

void tst_CameraGestures::aWheelThatStandsStillChangesNothing()
{
    Camera camera;

    QVERIFY(!CameraGestures::wheel(camera, 0, {300, 50}, kWindow, false));
    QCOMPARE(camera, Camera());
    // What no wheel does, and a broken driver may tell.
    for (const int units : {std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        CameraGestures::wheel(camera, units, {300, 50}, kWindow, false);
        QVERIFY(std::isfinite(camera.distance()) && camera.distance() > 0);
    }
}

QTEST_APPLESS_MAIN(tst_CameraGestures)
#include "tst_camera_gestures.moc"
