#include <pathscope/toolpath_view_model.h>

#include <QMetaMethod>
#include <QTest>

#include <functional>
#include <limits>
#include <memory>

using pathscope::ToolpathViewModel;

namespace {

/** The names of all signals of a view model, in the order in which they come. */
class Heard : public QObject
{
public:
    explicit Heard(ToolpathViewModel& model)
    {
        const auto listen = [&](auto signal, const char* name) {
            connect(&model, signal, this, [this, name] { m_names.append(QLatin1String(name)); });
        };
        listen(&ToolpathViewModel::layersChanged, "layers");
        listen(&ToolpathViewModel::movesChanged, "moves");
        listen(&ToolpathViewModel::coloursChanged, "colours");
        listen(&ToolpathViewModel::visibilityChanged, "visibility");
        listen(&ToolpathViewModel::projectionChanged, "projection");
        listen(&ToolpathViewModel::changed, "changed");
    }

    /** Separated by spaces; forgotten afterwards. */
    QString take() { return std::exchange(m_names, QStringList()).join(QLatin1Char(' ')); }

private:
    QStringList m_names;
};

struct World
{
    explicit World(int layers = 10) { model.startOver(layers); }

    QString range() const
    {
        return QStringLiteral("%1-%2").arg(model.firstLayer()).arg(model.lastLayer());
    }

    ToolpathViewModel model;
};

using Step = std::function<void(ToolpathViewModel&)>;

} // namespace

Q_DECLARE_METATYPE(Step)

class tst_ToolpathViewModel : public QObject
{
    Q_OBJECT

private slots:
    void beginsWithoutLayersByFeatureInPerspective();
    void rangesStayInsideTheFile_data();
    void rangesStayInsideTheFile();
    void everyChangeIsTold_data();
    void everyChangeIsTold();
    void nothingIsToldWithoutAChange_data();
    void nothingIsToldWithoutAChange();
    void theTopLayerStaysOnTopWhileMoreComeIn();
    void aChosenRangeIsKeptWhileMoreComesIn();
    void aChosenRangeShrinksWithTheFile();
    void anotherFileShowsAllItsLayersAndKeepsTheSwitches();
    void layersGoUpAndDownOneByOne();
    void belowTheFirstLayerTheRangeMovesAlong();
    void aSingleLayerKeepsTheBeginningForLater();
    void aSingleLayerIsSteppedThrough();
    void movesAreCutToTheTopLayer();
    void aCountOfMovesShowsThemAll();
    void moreMovesKeepWhatAUserChose();
    void colourModesOutsideTheListAreIgnored();
    void aChangeDuringASignalIsOneChange();
    void isNotTouchedAfterItsDestructionInASignal();
};

void tst_ToolpathViewModel::beginsWithoutLayersByFeatureInPerspective()
{
    const ToolpathViewModel model;
    QCOMPARE(model.layerCount(), 0);
    QCOMPARE(model.firstLayer(), 0);
    QCOMPARE(model.lastLayer(), 0);
    QCOMPARE(model.moveCount(), 0);
    QCOMPARE(model.colourMode(), ToolpathViewModel::ByFeature);
    QVERIFY(!model.isSingleLayer());
    QVERIFY(!model.showsTravels());
    QVERIFY(!model.showsRetractions());
    QVERIFY(!model.isOrthographic());
}

void tst_ToolpathViewModel::rangesStayInsideTheFile_data()
{
    QTest::addColumn<Step>("step");
    QTest::addColumn<QString>("range");

    constexpr int most = std::numeric_limits<int>::max();
    constexpr int least = std::numeric_limits<int>::min();
    const auto row = [](const char* name, const Step& step, const char* range) {
        QTest::newRow(name) << step << QString::fromLatin1(range);
    };
    row(
        "as wanted", [](auto& m) { m.setLayerRange(2, 5); }, "2-5");
    row(
        "one layer", [](auto& m) { m.setLayerRange(4, 4); }, "4-4");
    row(
        "turned round", [](auto& m) { m.setLayerRange(5, 2); }, "2-5");
    row(
        "far outside", [](auto& m) { m.setLayerRange(least, most); }, "0-9");
    row(
        "all above", [](auto& m) { m.setLayerRange(20, 30); }, "9-9");
    row(
        "all below", [](auto& m) { m.setLayerRange(-30, -20); }, "0-0");
    row(
        "last layer below 0", [](auto& m) { m.setLastLayer(least); }, "0-0");
    row(
        "last layer beyond the end", [](auto& m) { m.setLastLayer(most); }, "0-9");
    row(
        "first layer below 0", [](auto& m) { m.setFirstLayer(least); }, "0-9");
    row(
        "first layer beyond the end", [](auto& m) { m.setFirstLayer(most); }, "9-9");
    row(
        "last layer below the first",
        [](auto& m) {
            m.setLayerRange(4, 8);
            m.setLastLayer(2);
        },
        "2-2");
    row(
        "first layer above the last",
        [](auto& m) {
            m.setLayerRange(2, 5);
            m.setFirstLayer(7);
        },
        "7-7");
    row(
        "no layers", [](auto& m) { m.setLayerCount(0); }, "0-0");
    row(
        "fewer layers than none", [](auto& m) { m.setLayerCount(least); }, "0-0");
    row(
        "a range without layers",
        [](auto& m) {
            m.startOver(0);
            m.setLayerRange(3, 4);
        },
        "0-0");
}

void tst_ToolpathViewModel::rangesStayInsideTheFile()
{
    QFETCH(Step, step);
    QFETCH(QString, range);
    World world;

    step(world.model);

    QCOMPARE(world.range(), range);
}

void tst_ToolpathViewModel::everyChangeIsTold_data()
{
    QTest::addColumn<Step>("step");
    QTest::addColumn<QString>("heard");

    const auto row = [](const char* name, const Step& step, const char* heard) {
        QTest::newRow(name) << step << QString::fromLatin1(heard);
    };
    row(
        "range", [](auto& m) { m.setLayerRange(1, 2); }, "layers changed");
    row(
        "last layer", [](auto& m) { m.setLastLayer(2); }, "layers changed");
    row(
        "first layer", [](auto& m) { m.setFirstLayer(2); }, "layers changed");
    row(
        "layer down", [](auto& m) { m.layerDown(); }, "layers changed");
    row(
        "more layers", [](auto& m) { m.setLayerCount(11); }, "layers changed");
    row(
        "another file", [](auto& m) { m.startOver(3); }, "layers changed");
    row(
        "one layer", [](auto& m) { m.setSingleLayer(true); }, "layers changed");
    row(
        "one layer toggled", [](auto& m) { m.singleLayerToggled(); }, "layers changed");
    row(
        "moves counted", [](auto& m) { m.setMoveCount(7); }, "moves changed");
    row(
        "moves chosen",
        [](auto& m) {
            m.setMoveCount(7);
            m.setShownMoves(3);
        },
        "moves changed moves changed");
    row(
        "colour", [](auto& m) { m.setColourMode(ToolpathViewModel::BySpeed); }, "colours changed");
    row(
        "travels", [](auto& m) { m.setTravelsShown(true); }, "visibility changed");
    row(
        "retractions", [](auto& m) { m.setRetractionsShown(true); }, "visibility changed");
    row(
        "projection", [](auto& m) { m.setOrthographic(true); }, "projection changed");
    row(
        "projection toggled twice",
        [](auto& m) {
            m.orthoViewToggled();
            m.orthoViewToggled();
        },
        "projection changed projection changed");
}

void tst_ToolpathViewModel::everyChangeIsTold()
{
    QFETCH(Step, step);
    QFETCH(QString, heard);
    World world;
    Heard ear(world.model);

    step(world.model);

    QCOMPARE(ear.take(), heard);
}

void tst_ToolpathViewModel::nothingIsToldWithoutAChange_data()
{
    QTest::addColumn<Step>("step");

    const auto row = [](const char* name, const Step& step) {
        QTest::newRow(name) << step;
    };
    row("the same range", [](auto& m) { m.setLayerRange(0, 9); });
    row("a range that is cut to the same", [](auto& m) { m.setLayerRange(-1, 100); });
    row("up at the top", [](auto& m) { m.layerUp(); });
    row("the same count of layers", [](auto& m) { m.setLayerCount(10); });
    row("the same file again", [](auto& m) { m.startOver(10); });
    row("no single layer", [](auto& m) { m.setSingleLayer(false); });
    row("the same count of moves", [](auto& m) { m.setMoveCount(0); });
    row("more moves than there are", [](auto& m) { m.setShownMoves(5); });
    row("the same colour", [](auto& m) { m.setColourMode(ToolpathViewModel::ByFeature); });
    row("no travels", [](auto& m) { m.setTravelsShown(false); });
    row("no retractions", [](auto& m) { m.setRetractionsShown(false); });
    row("perspective", [](auto& m) { m.setOrthographic(false); });
}

void tst_ToolpathViewModel::nothingIsToldWithoutAChange()
{
    QFETCH(Step, step);
    World world;
    Heard ear(world.model);

    step(world.model);

    QCOMPARE(ear.take(), QString());
}

void tst_ToolpathViewModel::theTopLayerStaysOnTopWhileMoreComeIn()
{
    World world(3);
    world.model.setFirstLayer(1);

    world.model.setLayerCount(5);

    QCOMPARE(world.range(), QStringLiteral("1-4"));
}

void tst_ToolpathViewModel::aChosenRangeIsKeptWhileMoreComesIn()
{
    World world(5);
    world.model.setLayerRange(1, 3);

    world.model.setLayerCount(500);

    QCOMPARE(world.range(), QStringLiteral("1-3"));
}

void tst_ToolpathViewModel::aChosenRangeShrinksWithTheFile()
{
    World world;
    world.model.setLayerRange(4, 6);

    world.model.setLayerCount(6);
    QCOMPARE(world.range(), QStringLiteral("4-5"));

    world.model.setLayerCount(2);
    QCOMPARE(world.range(), QStringLiteral("1-1"));
}

void tst_ToolpathViewModel::anotherFileShowsAllItsLayersAndKeepsTheSwitches()
{
    World world;
    ToolpathViewModel& model = world.model;
    model.setLayerRange(2, 3);
    model.setColourMode(ToolpathViewModel::ByLayerTime);
    model.setTravelsShown(true);
    model.setRetractionsShown(true);
    model.setOrthographic(true);

    model.startOver(20);

    QCOMPARE(world.range(), QStringLiteral("0-19"));
    QCOMPARE(model.colourMode(), ToolpathViewModel::ByLayerTime);
    QVERIFY(model.showsTravels());
    QVERIFY(model.showsRetractions());
    QVERIFY(model.isOrthographic());
}

void tst_ToolpathViewModel::layersGoUpAndDownOneByOne()
{
    World world;
    world.model.setLayerRange(2, 5);

    world.model.layerUp();
    QCOMPARE(world.range(), QStringLiteral("2-6"));

    world.model.layerDown();
    world.model.layerDown();
    QCOMPARE(world.range(), QStringLiteral("2-4"));
}

void tst_ToolpathViewModel::belowTheFirstLayerTheRangeMovesAlong()
{
    World world;
    world.model.setLayerRange(2, 2);

    world.model.layerDown();
    QCOMPARE(world.range(), QStringLiteral("1-1"));
    world.model.layerDown();
    QCOMPARE(world.range(), QStringLiteral("0-0"));

    Heard ear(world.model);
    world.model.layerDown();
    QCOMPARE(world.range(), QStringLiteral("0-0"));
    QCOMPARE(ear.take(), QString());
}

void tst_ToolpathViewModel::aSingleLayerKeepsTheBeginningForLater()
{
    World world;
    world.model.setLayerRange(2, 6);

    world.model.setSingleLayer(true);
    QCOMPARE(world.range(), QStringLiteral("6-6"));

    world.model.setSingleLayer(false);
    QCOMPARE(world.range(), QStringLiteral("2-6"));
}

void tst_ToolpathViewModel::aSingleLayerIsSteppedThrough()
{
    World world;
    world.model.setLayerRange(4, 5);
    world.model.setSingleLayer(true);
    Heard ear(world.model);

    world.model.layerUp();
    QCOMPARE(world.range(), QStringLiteral("6-6"));
    for (int i = 0; i < 4; ++i)
        world.model.layerDown();
    QCOMPARE(world.range(), QStringLiteral("2-2"));
    QCOMPARE(ear.take(), QStringList(QList<QString>::fromVector(
                                         QVector<QString>(5, QStringLiteral("layers changed"))))
                             .join(QLatin1Char(' ')));

    world.model.setSingleLayer(false);
    QCOMPARE(world.range(), QStringLiteral("2-2"));
}

void tst_ToolpathViewModel::movesAreCutToTheTopLayer()
{
    World world;
    world.model.setMoveCount(100);

    world.model.setShownMoves(40);
    QCOMPARE(world.model.shownMoves(), 40);
    world.model.setShownMoves(101);
    QCOMPARE(world.model.shownMoves(), 100);
    world.model.setShownMoves(-1);
    QCOMPARE(world.model.shownMoves(), 0);
}

void tst_ToolpathViewModel::aCountOfMovesShowsThemAll()
{
    World world;
    world.model.setMoveCount(100);
    world.model.setShownMoves(40);

    world.model.setMoveCount(100);
    QCOMPARE(world.model.shownMoves(), 100);

    world.model.setMoveCount(-5);
    QCOMPARE(world.model.moveCount(), 0);
    QCOMPARE(world.model.shownMoves(), 0);
}

void tst_ToolpathViewModel::moreMovesKeepWhatAUserChose()
{
    World world;
    world.model.setMoveCount(100);
    world.model.extendMoveCount(120);
    QCOMPARE(world.model.shownMoves(), 120);

    world.model.setShownMoves(40);
    world.model.extendMoveCount(150);
    QCOMPARE(world.model.moveCount(), 150);
    QCOMPARE(world.model.shownMoves(), 40);

    world.model.extendMoveCount(10);
    QCOMPARE(world.model.shownMoves(), 10);
}

void tst_ToolpathViewModel::colourModesOutsideTheListAreIgnored()
{
    World world;
    Heard ear(world.model);

    world.model.setColourMode(
        static_cast<ToolpathViewModel::ColourMode>(ToolpathViewModel::kColourModeCount));
    world.model.setColourMode(static_cast<ToolpathViewModel::ColourMode>(-1));

    QCOMPARE(world.model.colourMode(), ToolpathViewModel::ByFeature);
    QCOMPARE(ear.take(), QString());
}

void tst_ToolpathViewModel::aChangeDuringASignalIsOneChange()
{
    World world;
    Heard ear(world.model);
    connect(&world.model, &ToolpathViewModel::layersChanged, this,
            [&] { world.model.setMoveCount(world.model.lastLayer() * 10); });

    world.model.setLastLayer(4);

    QCOMPARE(ear.take(), QStringLiteral("layers moves changed"));
}

void tst_ToolpathViewModel::isNotTouchedAfterItsDestructionInASignal()
{
    auto model = std::make_unique<ToolpathViewModel>();
    model->startOver(5);
    Heard ear(*model);
    connect(model.get(), &ToolpathViewModel::layersChanged, this, [&] { model.reset(); });

    model->layerDown();

    QVERIFY(model == nullptr);
    QCOMPARE(ear.take(), QStringLiteral("layers"));
}

QTEST_GUILESS_MAIN(tst_ToolpathViewModel)
#include "tst_toolpath_view_model.moc"
