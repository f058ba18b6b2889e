#include "platform/pathscope/sample_paths.h"

#include <pathscope/layer_slider.h>
#include <pathscope/legend_list.h>
#include <pathscope/toolpath_overlay.h>
#include <pathscope/toolpath_scene.h>
#include <pathscope/toolpath_view_model.h>

#include <QAbstractSpinBox>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>

using namespace pathscope;

namespace {

/** The controls over a tower, and the widgets in them by their names. */
struct Opened
{
    explicit Opened(int layers = 50, const std::vector<Orvane::Material>& materials = {})
        : scene(settingWith(materials))
        , overlay(new ToolpathOverlay(&scene, &window))
        , model(*scene.viewModel())
    {
        auto* layout = new QVBoxLayout(&window);
        layout->addWidget(overlay);
        if (layers > 0)
            scene.setToolpaths(tower(layers));
        window.resize(280, 700);
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("the window does not get the focus");
    }

    static SceneSetting settingWith(const std::vector<Orvane::Material>& materials)
    {
        SceneSetting setting;
        setting.materials = materials;
        return setting;
    }

    template <typename Widget>
    Widget& find(const char* name) const
    {
        auto* found = overlay->findChild<Widget*>(QString::fromLatin1(name));
        if (found == nullptr)
            qFatal("there is no %s", name);
        return *found;
    }

    QString text(const char* label) const { return find<QLabel>(label).text(); }
    QSpinBox& box(const char* name) const { return find<QSpinBox>(name); }
    LayerSlider& slider() const { return find<LayerSlider>("layerSlider"); }

    void type(QAbstractSpinBox& into, const char* keys) const
    {
        into.setFocus();
        into.selectAll();
        QTest::keyClicks(&into, QString::fromLatin1(keys));
    }

    ToolpathScene scene;
    QDialog window;
    ToolpathOverlay* const overlay;
    ToolpathViewModel& model;
};

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

class tst_ToolpathOverlay : public QObject
{
    Q_OBJECT

private slots:
    void showsWhereItStands();
    void isUnusableWithoutLayers();
    void goesToATypedLayer_data();
    void goesToATypedLayer();
    void countsANumberOnlyWhenItIsFinished();
    void endsANumberWithoutTheDefaultButton();
    void goesToATypedHeight_data();
    void goesToATypedHeight();
    void stepsTheHeightByLayers();
    void startsTheRangeWhereItIsTyped();
    void showsOneLayer();
    void dragsTheUpperHandle();
    void dragsTheLowerHandle();
    void dragsTheWholeRange();
    void keepsTheRangeBelowWhileOneLayerIsDragged();
    void jumpsToAClickInTheGroove();
    void stepsBySliderKeys();
    void stepsByTheWheel();
    void showsThePartOfALayer();
    void choosesColors_data();
    void choosesColors();
    void namesTheColors();
    void keepsTheColorWhenTheWheelPasses();
    void tellsWhatTheColorsMean();
    void tellsTotals();
    void tellsTheMaterialWithItsWeight();
    void tellsWhatWasNotUnderstood();
    void showsTheErrorInPlaceOfTotals();
    void showsProgressWhileItReads();
    void switchesWhatIsShown();
    void listsTravelsOnlyWhileTheyAreShown();
    void asksForViews_data();
    void asksForViews();
    void changesNothingWhenTheModelSaysTheSame();
    void emitsOneChangeForOneStep();
    void keepsWhatIsTypedWhileTheFileGrows();
    void visitsItsWidgetsInOrder();
    void isReachedByMnemonics();
    void namesEverythingForAssistiveTechnology();
    void fitsLowWindows();
};

void tst_ToolpathOverlay::showsWhereItStands()
{
    const Opened opened;
    QCOMPARE(opened.box("layerBox").value(), 50);
    QCOMPARE(opened.box("layerBox").minimum(), 1);
    QCOMPARE(opened.box("layerBox").maximum(), 50);
    QCOMPARE(opened.text("layerCount"), QStringLiteral("of 50"));
    QCOMPARE(opened.find<QDoubleSpinBox>("heightBox").text(), QStringLiteral("10.00 mm"));
    QCOMPARE(opened.text("layerInfo"), QStringLiteral("0.20 mm thick, 4 s"));
    QCOMPARE(opened.box("fromBox").value(), 1);
    QCOMPARE(opened.box("moveBox").value(), 4);
    QCOMPARE(opened.text("moveCount"), QStringLiteral("of 4"));
    QCOMPARE(opened.slider().firstLayer(), 0);
    QCOMPARE(opened.slider().lastLayer(), 49);
    QVERIFY(opened.find<QProgressBar>("progress").isHidden());
    QVERIFY(opened.find<QLabel>("skipped").isHidden());
}

void tst_ToolpathOverlay::isUnusableWithoutLayers()
{
    const Opened opened(0);
    for (const char* name : {"layerBox", "heightBox", "fromBox", "moveBox", "singleLayer",
                             "moveSlider", "layerSlider"})
        QVERIFY2(!opened.find<QWidget>(name).isEnabled(), name);
    QCOMPARE(opened.text("layerCount"), QStringLiteral("of 0"));
    QCOMPARE(opened.text("layerInfo"), QString());
    QVERIFY(opened.find<QLabel>("totals").isHidden());
    QTest::mouseClick(&opened.slider(), Qt::LeftButton);
    QCOMPARE(opened.model.lastLayer(), 0);
}

void tst_ToolpathOverlay::goesToATypedLayer_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<int>("layer");

    QTest::newRow("in the middle") << QByteArray("17") << 17;
    QTest::newRow("the first") << QByteArray("1") << 1;
    QTest::newRow("none is no layer") << QByteArray("0") << 50;
    QTest::newRow("above the top the digit is not taken") << QByteArray("51") << 5;
}

void tst_ToolpathOverlay::goesToATypedLayer()
{
    QFETCH(QByteArray, keys);
    QFETCH(int, layer);
    const Opened opened;
    opened.type(opened.box("layerBox"), keys.constData());
    QTest::keyClick(&opened.box("layerBox"), Qt::Key_Return);
    QCOMPARE(opened.model.lastLayer(), layer - 1);
    QCOMPARE(opened.model.firstLayer(), 0);
    QCOMPARE(opened.box("layerBox").value(), layer);
}

void tst_ToolpathOverlay::countsANumberOnlyWhenItIsFinished()
{
    const Opened opened;
    QSignalSpy changes(&opened.model, &ToolpathViewModel::layersChanged);
    opened.type(opened.box("layerBox"), "17");
    QCOMPARE(changes.count(), 0);
    QTest::keyClick(&opened.box("layerBox"), Qt::Key_Tab);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(opened.model.lastLayer(), 16);
}

void tst_ToolpathOverlay::endsANumberWithoutTheDefaultButton()
{
    Opened opened;
    auto* button = new QPushButton(&opened.window);
    button->setDefault(true);
    opened.window.layout()->addWidget(button);
    QSignalSpy clicks(button, &QPushButton::clicked);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        opened.type(opened.box("layerBox"), "9");
        QTest::keyClick(&opened.box("layerBox"), key);
        QCOMPARE(opened.model.lastLayer(), 8);
        // The next number replaces this one.
        QCOMPARE(opened.box("layerBox").findChild<QLineEdit*>()->selectedText(),
                 QStringLiteral("9"));
    }
    QCOMPARE(clicks.count(), 0);
}

void tst_ToolpathOverlay::goesToATypedHeight_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<int>("layer");
    QTest::addColumn<QString>("shown");

    QTest::newRow("of a layer") << QByteArray("2.4") << 12 << QStringLiteral("2.40 mm");
    QTest::newRow("between two layers") << QByteArray("2.55") << 13 << QStringLiteral("2.60 mm");
    QTest::newRow("below the first") << QByteArray("0") << 1 << QStringLiteral("0.20 mm");
    QTest::newRow("near the one that is shown")
        << QByteArray("9.95") << 50 << QStringLiteral("10.00 mm");
}

void tst_ToolpathOverlay::goesToATypedHeight()
{
    QFETCH(QByteArray, keys);
    QFETCH(int, layer);
    QFETCH(QString, shown);
    const Opened opened;
    auto& box = opened.find<QDoubleSpinBox>("heightBox");
    opened.type(box, keys.constData());
    QTest::keyClick(&box, Qt::Key_Return);
    QCOMPARE(opened.model.lastLayer(), layer - 1);
    QCOMPARE(box.text(), shown);
    QCOMPARE(opened.box("layerBox").value(), layer);
}

void tst_ToolpathOverlay::stepsTheHeightByLayers()
{
    const Opened opened;
    auto& box = opened.find<QDoubleSpinBox>("heightBox");
    box.setFocus();
    QTest::keyClick(&box, Qt::Key_Down);
    QCOMPARE(opened.model.lastLayer(), 48);
    QCOMPARE(box.text(), QStringLiteral("9.80 mm"));
    QTest::keyClick(&box, Qt::Key_Up);
    QTest::keyClick(&box, Qt::Key_Up);
    QCOMPARE(opened.model.lastLayer(), 49);
}

void tst_ToolpathOverlay::startsTheRangeWhereItIsTyped()
{
    const Opened opened;
    opened.type(opened.box("fromBox"), "20");
    QTest::keyClick(&opened.box("fromBox"), Qt::Key_Return);
    QCOMPARE(opened.model.firstLayer(), 19);
    QCOMPARE(opened.model.lastLayer(), 49);
    QCOMPARE(opened.slider().firstLayer(), 19);
}

void tst_ToolpathOverlay::showsOneLayer()
{
    const Opened opened;
    opened.model.setFirstLayer(9);
    opened.find<QCheckBox>("singleLayer").click();
    QVERIFY(opened.model.isSingleLayer());
    QVERIFY(!opened.box("fromBox").isEnabled());
    QVERIFY(opened.slider().isSingleLayer());
    QCOMPARE(opened.box("fromBox").value(), 50);
    opened.find<QCheckBox>("singleLayer").click();
    QCOMPARE(opened.box("fromBox").value(), 10);
    QVERIFY(opened.box("fromBox").isEnabled());
}

void tst_ToolpathOverlay::dragsTheUpperHandle()
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

void tst_ToolpathOverlay::dragsTheLowerHandle()
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

void tst_ToolpathOverlay::dragsTheWholeRange()
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

void tst_ToolpathOverlay::keepsTheRangeBelowWhileOneLayerIsDragged()
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

void tst_ToolpathOverlay::jumpsToAClickInTheGroove()
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

void tst_ToolpathOverlay::stepsBySliderKeys()
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

void tst_ToolpathOverlay::stepsByTheWheel()
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

void tst_ToolpathOverlay::showsThePartOfALayer()
{
    const Opened opened;
    auto& slider = opened.find<QSlider>("moveSlider");
    slider.setFocus();
    QTest::keyClick(&slider, Qt::Key_Left);
    QCOMPARE(opened.model.shownMoves(), 3);
    QCOMPARE(opened.box("moveBox").value(), 3);
    opened.type(opened.box("moveBox"), "1");
    QTest::keyClick(&opened.box("moveBox"), Qt::Key_Return);
    QCOMPARE(opened.model.shownMoves(), 1);
    QCOMPARE(slider.value(), 1);
    // Another layer is shown with all of its moves.
    opened.overlay->layerDown();
    QCOMPARE(slider.value(), 4);
    QCOMPARE(opened.box("moveBox").value(), 4);
}

void tst_ToolpathOverlay::choosesColors_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<ToolpathViewModel::ColourMode>("mode");

    QTest::newRow("feature") << QStringLiteral("Feature") << ToolpathViewModel::ByFeature;
    QTest::newRow("extruder") << QStringLiteral("Extruder") << ToolpathViewModel::ByExtruder;
    QTest::newRow("height") << QStringLiteral("Layer height") << ToolpathViewModel::ByHeight;
    QTest::newRow("width") << QStringLiteral("Width") << ToolpathViewModel::ByWidth;
    QTest::newRow("speed") << QStringLiteral("Speed") << ToolpathViewModel::BySpeed;
    QTest::newRow("temperature") << QStringLiteral("Temperature")
                                 << ToolpathViewModel::ByTemperature;
    QTest::newRow("layer time") << QStringLiteral("Layer time") << ToolpathViewModel::ByLayerTime;
}

void tst_ToolpathOverlay::choosesColors()
{
    QFETCH(QString, text);
    QFETCH(ToolpathViewModel::ColourMode, mode);
    const Opened opened;
    auto& box = opened.find<QComboBox>("colorMode");
    const int row = box.findText(text);
    QVERIFY(row >= 0);
    QTest::keyClick(&box, Qt::Key_Home);
    for (int i = 0; i < row; ++i)
        QTest::keyClick(&box, Qt::Key_Down);
    QCOMPARE(opened.model.colourMode(), mode);
    opened.model.setColourMode(ToolpathViewModel::ByLayerTime);
    opened.model.setColourMode(mode);
    QCOMPARE(box.currentText(), text);
}

void tst_ToolpathOverlay::namesTheColors()
{
    const Opened opened;
    auto& box = opened.find<QComboBox>("colorMode");
    QStringList texts;
    for (int i = 0; i < box.count(); ++i)
        texts.append(box.itemText(i));
    QCOMPARE(texts.join(QLatin1Char('|')),
             QStringLiteral("Feature|Extruder|Layer height|Width|Speed|Temperature|Layer time"));
    QCOMPARE(box.count(), ToolpathViewModel::kColourModeCount);
}

void tst_ToolpathOverlay::keepsTheColorWhenTheWheelPasses()
{
    const Opened opened;
    auto& box = opened.find<QComboBox>("colorMode");
    const auto turn = [&box] {
        QWheelEvent event(box.rect().center(), box.mapToGlobal(box.rect().center()), {}, {0, -120},
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&box, &event);
    };
    opened.box("layerBox").setFocus();
    turn();
    QCOMPARE(box.currentIndex(), 0);
    box.setFocus();
    turn();
    QCOMPARE(box.currentIndex(), 1);
}

void tst_ToolpathOverlay::tellsWhatTheColorsMean()
{
    const Opened opened;
    auto& legend = opened.find<LegendList>("legend");
    QCOMPARE(legend.count(), 2);
    QCOMPARE(legend.item(0)->text(), QStringLiteral("Outer wall"));
    QCOMPARE(legend.item(0)->data(Qt::AccessibleTextRole).toString(),
             QStringLiteral("Outer wall, 2 min 30 s, 0.75 m, 75 % of the time"));
    QCOMPARE(legend.item(0)->toolTip(),
             QStringLiteral("<p>Outer wall, 2 min 30 s, 0.75 m, 75 % of the time</p>"));
    QCOMPARE(legend.item(1)->data(Qt::AccessibleTextRole).toString(),
             QStringLiteral("Sparse infill, 50 s, 0.25 m, 25 % of the time"));
    QVERIFY(legend.item(0)->data(Qt::DecorationRole).value<QColor>().isValid());
    QVERIFY(legend.item(0)->data(Qt::DecorationRole) != legend.item(1)->data(Qt::DecorationRole));
}

void tst_ToolpathOverlay::tellsTotals()
{
    const Opened opened;
    const QStringList lines = opened.text("totals").split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines[0], QStringLiteral("Layers: 50"));
    QVERIFY2(lines[1].startsWith(QLatin1String("Size: 20.")), qPrintable(lines[1]));
    QCOMPARE(lines[2], QStringLiteral("Time: 3 min 20 s"));
    QCOMPARE(lines[3], QStringLiteral("Extruder 1, 1.00\u00a0m"));
}

void tst_ToolpathOverlay::tellsTheMaterialWithItsWeight()
{
    const Opened opened(50, {Orvane::PLA});
    QCOMPARE(opened.text("totals").split(QLatin1Char('\n')).last(),
             QStringLiteral("Extruder 1: Orvane PLA, 1.00\u00a0m, 3.0\u00a0g"));
}

void tst_ToolpathOverlay::tellsWhatWasNotUnderstood()
{
    Opened opened;
    auto paths = tower(3);
    paths->skipped.lines = 1;
    opened.scene.setToolpaths(paths);
    QCOMPARE(opened.text("skipped"), QStringLiteral("1 line of the file was not understood."));
    QVERIFY(opened.find<QLabel>("skipped").isVisible());

    paths = tower(3);
    paths->skipped.lines = 1000;
    paths->skipped.badNumbers = 200;
    paths->skipped.badArcs = 34;
    paths->skipped.examples = {{7, "G1 <b>X"}, {9, "nonsense"}};
    opened.scene.setToolpaths(paths);
    QCOMPARE(opened.text("skipped"),
             QStringLiteral("1,234 lines of the file were not understood."));
    QCOMPARE(opened.find<QLabel>("skipped").toolTip(),
             QStringLiteral("<p>Line 7: G1 &lt;b&gt;X<br>\nLine 9: nonsense</p>"));
    opened.scene.setToolpaths(tower(3));
    QVERIFY(opened.find<QLabel>("skipped").isHidden());
}

void tst_ToolpathOverlay::showsTheErrorInPlaceOfTotals()
{
    Opened opened;
    opened.overlay->setError(QStringLiteral("The file <b>is</b> gone."));
    QCOMPARE(opened.text("totals"), QStringLiteral("The file <b>is</b> gone."));
    QCOMPARE(opened.find<QLabel>("totals").textFormat(), Qt::PlainText);
    opened.scene.setToolpaths(tower(3));
    QCOMPARE(opened.text("totals"), QStringLiteral("The file <b>is</b> gone."));
    opened.overlay->setError(QString());
    QVERIFY(opened.text("totals").startsWith(QLatin1String("Layers: 3\n")));
}

void tst_ToolpathOverlay::showsProgressWhileItReads()
{
    const Opened opened;
    auto& bar = opened.find<QProgressBar>("progress");
    opened.overlay->setProgress(0.25);
    QVERIFY(bar.isVisible());
    QCOMPARE(bar.text(), QStringLiteral("Reading: 25 %"));
    opened.overlay->setProgress(-3);
    QCOMPARE(bar.text(), QStringLiteral("Reading: 0 %"));
    opened.overlay->setProgress(1);
    QVERIFY(bar.isHidden());
}

void tst_ToolpathOverlay::switchesWhatIsShown()
{
    const Opened opened;
    const auto check = [&opened](const char* name) {
        opened.find<QCheckBox>(name).click();
    };
    check("travels");
    QVERIFY(opened.model.showsTravels());
    check("retractions");
    QVERIFY(opened.model.showsRetractions());
    check("orthographic");
    QVERIFY(opened.model.isOrthographic());
    opened.model.setTravelsShown(false);
    QVERIFY(!opened.find<QCheckBox>("travels").isChecked());
    opened.model.setRetractionsShown(false);
    QVERIFY(!opened.find<QCheckBox>("retractions").isChecked());
    opened.model.orthoViewToggled();
    QVERIFY(!opened.find<QCheckBox>("orthographic").isChecked());
}

void tst_ToolpathOverlay::listsTravelsOnlyWhileTheyAreShown()
{
    Opened opened;
    auto paths = tower(3);
    paths->travelCount = 1;
    opened.scene.setToolpaths(paths);
    auto& legend = opened.find<LegendList>("legend");
    QCOMPARE(legend.count(), 2);
    opened.find<QCheckBox>("travels").click();
    QCOMPARE(legend.count(), 3);
    QCOMPARE(legend.item(2)->text(), QStringLiteral("Travels"));
}

void tst_ToolpathOverlay::asksForViews_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("preset");

    QTest::newRow("top") << QByteArray("viewTop") << QStringLiteral("Top") << int(Camera::Top);
    QTest::newRow("front") << QByteArray("viewFront") << QStringLiteral("Front")
                           << int(Camera::Front);
    QTest::newRow("side") << QByteArray("viewSide") << QStringLiteral("Side") << int(Camera::Side);
    QTest::newRow("isometric") << QByteArray("viewIsometric") << QStringLiteral("Isometric")
                               << int(Camera::Isometric);
    QTest::newRow("fit") << QByteArray("viewFit") << QStringLiteral("Fit") << -1;
}

void tst_ToolpathOverlay::asksForViews()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, text);
    QFETCH(int, preset);
    const Opened opened;
    QSignalSpy requests(opened.overlay, &ToolpathOverlay::cameraRequested);
    auto& button = opened.find<QToolButton>(name.constData());
    QCOMPARE(button.text(), text);
    QTest::mouseClick(&button, Qt::LeftButton);
    QCOMPARE(requests.count(), 1);
    QCOMPARE(requests[0][0].toInt(), preset);
}

void tst_ToolpathOverlay::changesNothingWhenTheModelSaysTheSame()
{
    Opened opened;
    QSignalSpy changes(&opened.scene, &ToolpathScene::changed);
    opened.overlay->layerUp();
    opened.box("layerBox").setValue(50);
    opened.find<QSlider>("moveSlider").setValue(4);
    opened.slider().setLayers(50, 0, 49, false);
    QCOMPARE(changes.count(), 0);
}

void tst_ToolpathOverlay::emitsOneChangeForOneStep()
{
    Opened opened;
    QSignalSpy layers(&opened.model, &ToolpathViewModel::layersChanged);
    QSignalSpy colours(&opened.model, &ToolpathViewModel::coloursChanged);
    QSignalSpy changes(&opened.scene, &ToolpathScene::changed);
    opened.overlay->layerDown();
    QCOMPARE(layers.count(), 1);
    QCOMPARE(changes.count(), 1);
    opened.box("layerBox").stepUp();
    QCOMPARE(layers.count(), 2);
    QCOMPARE(changes.count(), 2);
    QCOMPARE(colours.count(), 0);
}

void tst_ToolpathOverlay::keepsWhatIsTypedWhileTheFileGrows()
{
    Opened opened(0);
    opened.scene.setToolpaths(tower(20, false));
    opened.type(opened.box("fromBox"), "1");
    opened.scene.setToolpaths(tower(40, false));
    QTest::keyClicks(&opened.box("fromBox"), QStringLiteral("3"));
    QTest::keyClick(&opened.box("fromBox"), Qt::Key_Return);
    QCOMPARE(opened.model.firstLayer(), 12);
    QCOMPARE(opened.text("layerCount"), QStringLiteral("of 40"));
}

void tst_ToolpathOverlay::visitsItsWidgetsInOrder()
{
    const Opened opened;
    opened.slider().setFocus();
    QStringList names;
    for (int i = 0; i < 15; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        names.append(QApplication::focusWidget()->objectName());
    }
    QCOMPARE(names.join(QLatin1Char(' ')),
             QStringLiteral("layerBox heightBox fromBox moveBox moveSlider colorMode travels "
                            "singleLayer retractions orthographic viewTop viewFront viewSide "
                            "viewIsometric viewFit"));
}

void tst_ToolpathOverlay::isReachedByMnemonics()
{
    Opened opened;
    const struct
    {
        Qt::Key key;
        const char* name;
    } fields[] = {{Qt::Key_L, "layerBox"},
                  {Qt::Key_G, "heightBox"},
                  {Qt::Key_O, "fromBox"},
                  {Qt::Key_E, "moveBox"},
                  {Qt::Key_C, "colorMode"}};
    for (const auto& field : fields) {
        QTest::keyClick(&opened.window, field.key, Qt::AltModifier);
        QCOMPARE(QApplication::focusWidget()->objectName(), QString::fromLatin1(field.name));
    }
    const struct
    {
        Qt::Key key;
        const char* name;
    } boxes[] = {{Qt::Key_Y, "singleLayer"},
                 {Qt::Key_T, "travels"},
                 {Qt::Key_N, "retractions"},
                 {Qt::Key_P, "orthographic"}};
    for (const auto& box : boxes) {
        QTest::keyClick(&opened.window, box.key, Qt::AltModifier);
        QTRY_VERIFY2(opened.find<QCheckBox>(box.name).isChecked(), box.name);
    }
}

void tst_ToolpathOverlay::namesEverythingForAssistiveTechnology()
{
    const Opened opened;
    for (const QWidget* widget : opened.overlay->findChildren<QWidget*>()) {
        if (widget->focusPolicy() == Qt::NoFocus ||
            widget->objectName().startsWith(QLatin1String("qt_")))
            continue;
        const auto* button = qobject_cast<const QAbstractButton*>(widget);
        const QString name = button && widget->accessibleName().isEmpty()
                                 ? button->text()
                                 : widget->accessibleName();
        QVERIFY2(!name.isEmpty(), qPrintable(widget->objectName()));
        QVERIFY2(!widget->toolTip().isEmpty(), qPrintable(widget->objectName()));
    }
}

void tst_ToolpathOverlay::fitsLowWindows()
{
    Opened opened;
    QVERIFY(opened.overlay->minimumSizeHint().height() <= 240);
    // About a quarter of a small screen with a common font.
    QVERIFY2(opened.overlay->sizeHint().width() <= 17 * opened.overlay->fontMetrics().height(),
             qPrintable(QString::number(opened.overlay->sizeHint().width())));
    QVERIFY(opened.overlay->minimumSizeHint().width() <= opened.overlay->sizeHint().width());
}

QTEST_MAIN(tst_ToolpathOverlay)
#include "tst_toolpath_overlay.moc"
