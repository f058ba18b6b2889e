#include "platform/pathscope/overlay_world.h"

#include <QApplication>
#include <QSignalSpy>
#include <QWheelEvent>

using namespace pathscope;

namespace {

/** The mouse goes on with its button held down. */
void dragTo(LayerSlider& slider, qreal y)
{
    const QPointF point(slider.width() / 2.0, y);
    QMouseEvent event(QEvent::MouseMove, point, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&slider, &event);
}

QPoint onSlider(const LayerSlider& slider, qreal y)
{
    return {slider.width() / 2, qRound(y)};
}

} // namespace

class tst_LayerSlider : public QObject
{
    Q_OBJECT

private slots:
    void dragsTheUpperHandle();
    void dragsTheLowerHandle();
    void dragsTheWholeRange();
    void keepsTheRangeBelowWhileOneLayerIsDragged();
    void jumpsToAClickInTheGroove();
    void stepsBySliderKeys();
    void stepsByTheWheel();
    void goesThroughAMillionLayers();
    void staysOnTheOnlyLayer();
};

void tst_LayerSlider::dragsTheUpperHandle()
{
    const Opened opened;
    LayerSlider& slider = opened.slider();
    const qreal grip = -4;
    QTest::mousePress(&slider, Qt::LeftButton, {}, onSlider(slider, slider.positionOf(49) + grip));
    QCOMPARE(opened.model.lastLayer(), 49);
    dragTo(slider, slider.positionOf(30) + grip);
    QCOMPARE(opened.model.lastLayer(), 30);
    QCOMPARE(opened.box("layerBox").value(), 31);
    // Past the end it waits for the mouse to come back.
    dragTo(slider, -500);
    QCOMPARE(opened.model.lastLayer(), 49);
    QTest::mouseRelease(&slider, Qt::LeftButton);
    dragTo(slider, slider.positionOf(10));
    QCOMPARE(opened.model.lastLayer(), 49);
}

void tst_LayerSlider::dragsTheLowerHandle()
{
    const Opened opened;
    LayerSlider& slider = opened.slider();
    QTest::mousePress(&slider, Qt::LeftButton, {}, onSlider(slider, slider.positionOf(0) + 4));
    dragTo(slider, slider.positionOf(20) + 4);
    QCOMPARE(opened.model.firstLayer(), 20);
    QCOMPARE(opened.model.lastLayer(), 49);
    opened.model.setLastLayer(30);
    dragTo(slider, slider.positionOf(40) + 4);
    // The handles meet and do not push each other.
    QCOMPARE(opened.model.firstLayer(), 30);
    QCOMPARE(opened.model.lastLayer(), 30);
    QTest::mouseRelease(&slider, Qt::LeftButton);
}

void tst_LayerSlider::dragsTheWholeRange()
{
    const Opened opened;
    opened.model.setLayerRange(10, 20);
    LayerSlider& slider = opened.slider();
    const qreal distance = slider.positionOf(10) - slider.positionOf(15);
    QTest::mousePress(&slider, Qt::LeftButton, {}, onSlider(slider, slider.positionOf(15)));
    QCOMPARE(opened.model.lastLayer(), 20);
    dragTo(slider, slider.positionOf(15) - distance);
    QCOMPARE(opened.model.firstLayer(), 15);
    QCOMPARE(opened.model.lastLayer(), 25);
    dragTo(slider, -500);
    QCOMPARE(opened.model.firstLayer(), 39);
    QCOMPARE(opened.model.lastLayer(), 49);
    QTest::mouseRelease(&slider, Qt::LeftButton);
}

void tst_LayerSlider::keepsTheRangeBelowWhileOneLayerIsDragged()
{
    const Opened opened;
    opened.model.setFirstLayer(5);
    opened.model.setSingleLayer(true);
    LayerSlider& slider = opened.slider();
    QTest::mouseClick(&slider, Qt::LeftButton, {}, onSlider(slider, slider.positionOf(30)));
    QVERIFY(qAbs(opened.model.lastLayer() - 30) <= 1);
    opened.model.setSingleLayer(false);
    QCOMPARE(opened.model.firstLayer(), 5);
}

void tst_LayerSlider::jumpsToAClickInTheGroove()
{
    const Opened opened;
    opened.model.setLayerRange(10, 20);
    LayerSlider& slider = opened.slider();
    QTest::mouseClick(&slider, Qt::LeftButton, {}, onSlider(slider, slider.positionOf(40)));
    QVERIFY(qAbs(opened.model.lastLayer() - 40) <= 1);
    QCOMPARE(opened.model.firstLayer(), 10);
    QTest::mouseClick(&slider, Qt::LeftButton, {}, onSlider(slider, slider.positionOf(3)));
    QVERIFY(qAbs(opened.model.firstLayer() - 3) <= 1);
    const int last = opened.model.lastLayer();
    QTest::mouseClick(&slider, Qt::RightButton, {}, onSlider(slider, slider.positionOf(45)));
    QCOMPARE(opened.model.lastLayer(), last);
}

void tst_LayerSlider::stepsBySliderKeys()
{
    const Opened opened;
    LayerSlider& slider = opened.slider();
    slider.setFocus();
    const struct
    {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        int first;
        int last;
    } steps[] = {
        {Qt::Key_Down, {}, 0, 48},
        {Qt::Key_PageDown, {}, 0, 38},
        {Qt::Key_Up, {}, 0, 39},
        {Qt::Key_Up, Qt::ShiftModifier, 1, 39},
        {Qt::Key_PageUp, Qt::ShiftModifier, 11, 39},
        {Qt::Key_Down, Qt::ShiftModifier, 10, 39},
        {Qt::Key_End, {}, 10, 49},
        {Qt::Key_PageUp, {}, 10, 49},
        {Qt::Key_Home, {}, 0, 0},
        {Qt::Key_Left, {}, 0, 0},
    };
    for (const auto& step : steps) {
        QTest::keyClick(&slider, step.key, step.modifiers);
        QCOMPARE(opened.model.firstLayer(), step.first);
        QCOMPARE(opened.model.lastLayer(), step.last);
    }
}

void tst_LayerSlider::stepsByTheWheel()
{
    const Opened opened;
    LayerSlider& slider = opened.slider();
    const auto turn = [&](int angle, Qt::KeyboardModifiers modifiers = {}) {
        QWheelEvent event(slider.rect().center(), slider.mapToGlobal(slider.rect().center()), {},
                          {0, angle}, Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&slider, &event);
    };
    turn(-120);
    QCOMPARE(opened.model.lastLayer(), 48);
    turn(-60);
    QCOMPARE(opened.model.lastLayer(), 48);
    turn(-60);
    QCOMPARE(opened.model.lastLayer(), 47);
    turn(-120, Qt::ControlModifier);
    QCOMPARE(opened.model.lastLayer(), 37);
}

void tst_LayerSlider::goesThroughAMillionLayers()
{
    constexpr int kLayers = 1000000;
    Opened opened(0);
    opened.showUnevenLayers(kLayers);
    LayerSlider& slider = opened.slider();
    const qreal grip = -4;
    QTest::mousePress(&slider, Qt::LeftButton, {},
                      onSlider(slider, slider.positionOf(kLayers - 1) + grip));
    QCOMPARE(opened.model.lastLayer(), kLayers - 1);
    dragTo(slider, slider.positionOf(kLayers / 2) + grip);
    QVERIFY(qAbs(opened.model.lastLayer() - kLayers / 2) <= kLayers / slider.height());
    QTest::mouseRelease(&slider, Qt::LeftButton);
    // Between the pixels it goes on by keys and numbers.
    const int last = opened.model.lastLayer();
    QTest::keyClick(&slider, Qt::Key_Up);
    QCOMPARE(opened.model.lastLayer(), last + 1);
    opened.type(opened.box("layerBox"), "123456");
    QTest::keyClick(&opened.box("layerBox"), Qt::Key_Return);
    QCOMPARE(opened.model.lastLayer(), 123455);
    QCOMPARE(opened.text("layerCount"), QStringLiteral("of 1,000,000"));
}

void tst_LayerSlider::staysOnTheOnlyLayer()
{
    const Opened opened(1);
    LayerSlider& slider = opened.slider();
    QSignalSpy moves(&slider, &LayerSlider::rangeMoved);
    for (const qreal y : {slider.positionOf(0) - 4, slider.height() / 2.0, slider.height() - 4.0}) {
        QTest::mousePress(&slider, Qt::LeftButton, {}, onSlider(slider, y));
        dragTo(slider, 100);
        dragTo(slider, 300);
        QTest::mouseRelease(&slider, Qt::LeftButton);
    }
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End})
        QTest::keyClick(&slider, key);
    QCOMPARE(moves.count(), 0);
    QCOMPARE(opened.model.lastLayer(), 0);
    QCOMPARE(opened.box("layerBox").minimum(), 1);
    QCOMPARE(opened.box("layerBox").maximum(), 1);
    QCOMPARE(opened.text("layerCount"), QStringLiteral("of 1"));
}

QTEST_MAIN(tst_LayerSlider)
#include "tst_layer_slider.moc"
