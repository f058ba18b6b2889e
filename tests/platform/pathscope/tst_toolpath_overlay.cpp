#include "platform/pathscope/overlay_world.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSet>
#include <QSignalSpy>
#include <QSlider>
#include <QToolButton>

using namespace pathscope;

namespace {

/** Counts how often layouts in a widget have to place their widgets anew. */
class LayoutCounter : public QObject
{
public:
    explicit LayoutCounter(QWidget& root)
    {
        root.installEventFilter(this);
        for (QWidget* widget : root.findChildren<QWidget*>())
            widget->installEventFilter(this);
    }

    int count = 0;

protected:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::LayoutRequest)
            ++count;
        return false;
    }
};

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
    void showsThePartOfALayer();
    void switchesWhatIsShown();
    void asksForViews_data();
    void asksForViews();
    void changesNothingWhenTheModelSaysTheSame();
    void emitsOneChangeForOneStep();
    void keepsWhatIsTypedWhileTheFileGrows();
    void laysNothingOutForAStep();
    void tellsALayersTimeAsTheSlicerEstimates();
    void takesNumbersAsTheUserWritesThem_data();
    void takesNumbersAsTheUserWritesThem();
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
    button->show();
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

void tst_ToolpathOverlay::laysNothingOutForAStep()
{
    Opened opened(0);
    opened.showUnevenLayers(100);
    const auto goDown = [&opened](int layers) {
        QSet<QString> texts;
        for (int i = 0; i < layers; ++i) {
            opened.overlay->layerDown();
            QCoreApplication::processEvents();
            texts.insert(opened.text("layerInfo") + opened.text("moveCount"));
        }
        return texts.size();
    };
    // Past the widest texts.
    goDown(50);
    const LayoutCounter layouts(*opened.overlay);
    QVERIFY(goDown(20) > 10);
    QCOMPARE(layouts.count, 0);
}

void tst_ToolpathOverlay::tellsALayersTimeAsTheSlicerEstimates()
{
    Opened opened(0);
    auto paths = std::make_shared<Toolpaths>(*tower(50));
    paths->estimates.seconds = 2 * paths->total.seconds;

    opened.scene.setToolpaths(paths);

    QCOMPARE(opened.text("layerInfo"), QStringLiteral("0.20 mm thick, 8 s"));
}

void tst_ToolpathOverlay::takesNumbersAsTheUserWritesThem_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<QString>("height");
    QTest::addColumn<QString>("shown");

    QTest::newRow("point") << QLocale(QLocale::English) << QStringLiteral("2.4")
                           << QStringLiteral("2.40 mm");
    QTest::newRow("comma") << QLocale(QLocale::German) << QStringLiteral("2,4")
                           << QStringLiteral("2,40 mm");
    QTest::newRow("point where a comma is usual")
        << QLocale(QLocale::German) << QStringLiteral("2.4") << QStringLiteral("2,40 mm");
}

void tst_ToolpathOverlay::takesNumbersAsTheUserWritesThem()
{
    QFETCH(QLocale, locale);
    QFETCH(QString, height);
    QFETCH(QString, shown);
    const QLocale before;
    QLocale::setDefault(locale);
    const Opened opened;
    QLocale::setDefault(before);
    auto& box = opened.find<QDoubleSpinBox>("heightBox");
    opened.type(box, height.toLatin1().constData());
    QTest::keyClick(&box, Qt::Key_Return);
    QCOMPARE(opened.model.lastLayer(), 11);
    QCOMPARE(box.text(), shown);
}

QTEST_MAIN(tst_ToolpathOverlay)
#include "tst_toolpath_overlay.moc"
