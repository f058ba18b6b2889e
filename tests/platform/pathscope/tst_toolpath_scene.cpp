#include "scene_world.h"

#include <QTest>

#include <functional>
#include <memory>

using namespace pathscope;

namespace {

/** The signals of a scene, in the order in which they come. */
class Heard : public QObject
{
public:
    explicit Heard(ToolpathScene& scene)
    {
        const auto listen = [&](auto* sender, auto signal, const char* name) {
            connect(sender, signal, this, [this, name] { m_names.append(QLatin1String(name)); });
        };
        listen(scene.viewModel(), &ToolpathViewModel::layersChanged, "layers");
        listen(scene.viewModel(), &ToolpathViewModel::movesChanged, "moves");
        listen(scene.viewModel(), &ToolpathViewModel::coloursChanged, "colours");
        listen(scene.viewModel(), &ToolpathViewModel::visibilityChanged, "visibility");
        listen(scene.viewModel(), &ToolpathViewModel::projectionChanged, "projection");
        listen(&scene, &ToolpathScene::toolpathsChanged, "toolpaths");
        listen(&scene, &ToolpathScene::cameraChanged, "camera");
        listen(&scene, &ToolpathScene::changed, "changed");
    }

    QString take() { return std::exchange(m_names, QStringList()).join(QLatin1Char(' ')); }

private:
    QStringList m_names;
};

} // namespace

Q_DECLARE_METATYPE(SegmentRange)

class tst_ToolpathScene : public QObject
{
    Q_OBJECT

private slots:
    void isEmptyAtFirst();
    void showsWhatTheRangeLeaves();
    void showsMovesOfTheTopLayerOnly();
    void aLayerStepCostsTheSameForEveryFile();
    void everyChangeIsToldOnce();
    void nothingIsToldWithoutAChange();
    void piecesKeepTheTopAndTheUsersRange();
    void aPieceThatGoesOnWithALayerKeepsTheChosenMoves();
    void anotherFileStartsOver();
    void nullShowsNothing();
    void knowsWhichKindsAreShown();
    void fitsThePathsOrElseTheMachine();
    void theWorldHoldsAllThatIsDrawn();
    void theCameraIsTold();
    void mayBeDestroyedInItsSignals_data();
    void mayBeDestroyedInItsSignals();
};

void tst_ToolpathScene::isEmptyAtFirst()
{
    const World world;

    QVERIFY(world.scene.toolpaths() != nullptr);
    QCOMPARE(world.scene.toolpaths()->segmentCount, std::uint64_t(0));
    QVERIFY(world.scene.shownSegments().isEmpty());
    QVERIFY(world.scene.topLayerSegments().isEmpty());
    QVERIFY(world.scene.styleColours().empty());
    QVERIFY(world.scene.layerColours().empty());
    QCOMPARE(world.scene.totals().layers, 0);
    QVERIFY(world.scene.totals().tools.empty());
}

void tst_ToolpathScene::showsWhatTheRangeLeaves()
{
    World world;
    world.scene.setToolpaths(tower(10).made());
    QCOMPARE(world.scene.shownSegments(), (SegmentRange{0, 50}));

    world.model.setLayerRange(2, 4);
    QCOMPARE(world.scene.shownSegments(), (SegmentRange{10, 25}));
    QCOMPARE(world.scene.topLayerSegments(), (SegmentRange{20, 25}));

    world.model.setSingleLayer(true);
    QCOMPARE(world.scene.shownSegments(), (SegmentRange{20, 25}));
}

void tst_ToolpathScene::showsMovesOfTheTopLayerOnly()
{
    World world;
    world.scene.setToolpaths(tower(10).made());
    world.model.setLayerRange(2, 4);
    QCOMPARE(world.model.moveCount(), 5);
    QCOMPARE(world.model.shownMoves(), 5);

    world.model.setShownMoves(2);
    QCOMPARE(world.scene.shownSegments(), (SegmentRange{10, 22}));
    QCOMPARE(world.scene.topLayerSegments(), (SegmentRange{20, 22}));

    world.model.setShownMoves(0);
    QCOMPARE(world.scene.shownSegments(), (SegmentRange{10, 20}));

    world.model.setFirstLayer(1);
    QCOMPARE(world.model.shownMoves(), 0);

    world.model.layerUp();
    QCOMPARE(world.model.shownMoves(), 5);
    QCOMPARE(world.scene.shownSegments(), (SegmentRange{5, 30}));
}

void tst_ToolpathScene::aLayerStepCostsTheSameForEveryFile()
{
    // Not one point is there: a step that looked at the moves would fall over them.
    auto paths = std::make_shared<Toolpaths>();
    constexpr std::uint64_t layers = 1000000;
    constexpr std::uint64_t moves = 4000;
    for (std::uint64_t i = 0; i < layers; ++i) {
        Layer layer;
        layer.segments = {i * moves, (i + 1) * moves};
        paths->layers.push_back(layer);
    }
    paths->segmentCount = layers * moves;
    World world;
    world.scene.setToolpaths(paths);
    const int revision = world.scene.colourRevision();

    for (int i = 0; i < 1000; ++i)
        world.model.layerDown();

    QCOMPARE(world.scene.shownSegments(), (SegmentRange{0, (layers - 1000) * moves}));
    QCOMPARE(world.scene.colourRevision(), revision);
}

void tst_ToolpathScene::everyChangeIsToldOnce()
{
    World world;
    Heard ear(world.scene);

    world.scene.setToolpaths(tower(10).made());
    QCOMPARE(ear.take(), QStringLiteral("moves layers toolpaths changed"));
    world.model.layerDown();
    QCOMPARE(ear.take(), QStringLiteral("layers changed"));
    world.model.setShownMoves(2);
    QCOMPARE(ear.take(), QStringLiteral("moves changed"));
    world.model.layerDown();
    QCOMPARE(ear.take(), QStringLiteral("moves layers changed"));
    world.model.setColourMode(ToolpathViewModel::BySpeed);
    QCOMPARE(ear.take(), QStringLiteral("colours changed"));
    world.model.setTravelsShown(true);
    QCOMPARE(ear.take(), QStringLiteral("visibility changed"));
    world.model.orthoViewToggled();
    QCOMPARE(ear.take(), QStringLiteral("projection changed"));
    world.scene.setToolpaths(tower(3).made());
    QCOMPARE(ear.take(), QStringLiteral("layers toolpaths changed"));
}

void tst_ToolpathScene::nothingIsToldWithoutAChange()
{
    World world;
    const auto paths = tower(2).made();
    world.scene.setToolpaths(nullptr);
    world.scene.setToolpaths(paths);
    Heard ear(world.scene);

    world.scene.setToolpaths(paths);
    world.scene.setToolpaths(world.scene.toolpaths());
    world.scene.setCamera(world.scene.camera());
    world.model.setTravelsShown(false);

    QCOMPARE(ear.take(), QString());
}

void tst_ToolpathScene::piecesKeepTheTopAndTheUsersRange()
{
    World world;
    world.scene.setToolpaths(tower(3).made(false));
    QCOMPARE(world.model.lastLayer(), 2);
    world.scene.setToolpaths(tower(6).made(false));
    QCOMPARE(world.model.lastLayer(), 5);

    world.model.setLayerRange(1, 4);
    world.scene.setToolpaths(tower(20).made(false));
    world.scene.setToolpaths(tower(30).made(true));

    QCOMPARE(world.model.layerCount(), 30);
    QCOMPARE(world.model.firstLayer(), 1);
    QCOMPARE(world.model.lastLayer(), 4);
}

void tst_ToolpathScene::aPieceThatGoesOnWithALayerKeepsTheChosenMoves()
{
    World world;
    ToolpathsMaker maker = tower(3);
    world.scene.setToolpaths(maker.made(false));
    world.model.setShownMoves(2);

    maker.square(50, 50, 10);
    world.scene.setToolpaths(maker.made(false));
    QCOMPARE(world.model.moveCount(), 10);
    QCOMPARE(world.model.shownMoves(), 2);

    world.model.setShownMoves(10);
    maker.square(50, 50, 5);
    world.scene.setToolpaths(maker.made());
    QCOMPARE(world.model.shownMoves(), 15);
}

void tst_ToolpathScene::anotherFileStartsOver()
{
    World world;
    world.scene.setToolpaths(tower(10).made());
    world.model.setLayerRange(3, 5);
    world.model.setShownMoves(1);
    world.model.setColourMode(ToolpathViewModel::ByWidth);

    world.scene.setToolpaths(tower(8).made());

    QCOMPARE(world.scene.shownSegments(), (SegmentRange{0, 40}));
    QCOMPARE(world.model.shownMoves(), 5);
    QCOMPARE(world.model.colourMode(), ToolpathViewModel::ByWidth);

    // A file whose reading was given up is followed by null.
    world.scene.setToolpaths(tower(4).made(false));
    world.model.setLayerRange(1, 2);
    world.scene.setToolpaths(nullptr);
    world.scene.setToolpaths(tower(6).made(false));
    QCOMPARE(world.scene.shownSegments(), (SegmentRange{0, 30}));
}

void tst_ToolpathScene::nullShowsNothing()
{
    World world;
    world.scene.setToolpaths(tower(10).made());
    Heard ear(world.scene);

    world.scene.setToolpaths(nullptr);

    QCOMPARE(ear.take(), QStringLiteral("moves layers toolpaths changed"));
    QVERIFY(world.scene.toolpaths() != nullptr);
    QVERIFY(world.scene.shownSegments().isEmpty());
    QCOMPARE(world.names(), QStringList());
}

void tst_ToolpathScene::knowsWhichKindsAreShown()
{
    World world;
    QVERIFY(world.scene.isShown(MoveKind::Extrude));
    QVERIFY(!world.scene.isShown(MoveKind::Travel));
    QVERIFY(!world.scene.isShown(MoveKind::Retract));
    QVERIFY(!world.scene.isShown(MoveKind::Unretract));
    QVERIFY(!world.scene.isShown(MoveKind::ToolChange));

    world.model.setTravelsShown(true);
    QVERIFY(world.scene.isShown(MoveKind::Travel));
    QVERIFY(!world.scene.isShown(MoveKind::Retract));

    world.model.setRetractionsShown(true);
    QVERIFY(world.scene.isShown(MoveKind::Retract));
    QVERIFY(world.scene.isShown(MoveKind::Unretract));
    QVERIFY(world.scene.isShown(MoveKind::ToolChange));
}

void tst_ToolpathScene::fitsThePathsOrElseTheMachine()
{
    SceneSetting setting;
    setting.buildVolume = {0, 0, 0, 220, 180, 150};
    World world(setting);
    QCOMPARE(world.scene.fitBox().xMax, 220.0F);

    world.scene.setToolpaths(tower(10).made());
    const Orvane::BoundingBox box = world.scene.fitBox();
    QCOMPARE(box.xMin, 40.0F);
    QCOMPARE(box.xMax, 60.0F);
    QCOMPARE(box.zMax, 2.0F);

    QVERIFY(World().scene.fitBox().width() > 0);
}

void tst_ToolpathScene::theWorldHoldsAllThatIsDrawn()
{
    SceneSetting setting;
    setting.buildVolume = {0, 0, 0, 55, 55, 150};
    World world(setting);
    world.scene.setToolpaths(tower(10).made());

    const Orvane::BoundingBox box = world.scene.worldBox();

    QVERIFY(box.xMin < 0 && box.yMin < 0 && box.zMin < 0);
    QVERIFY(box.xMax > 60 && box.yMax > 60 && box.zMax > 150);
}

void tst_ToolpathScene::theCameraIsTold()
{
    World world;
    Heard ear(world.scene);
    Camera camera = world.scene.camera();
    camera.orbit({10, 0});

    world.scene.setCamera(camera);

    QVERIFY(world.scene.camera() == camera);
    QCOMPARE(ear.take(), QStringLiteral("camera changed"));
}

using Connecting = std::function<void(ToolpathScene&, const std::function<void()>&)>;
Q_DECLARE_METATYPE(Connecting)

void tst_ToolpathScene::mayBeDestroyedInItsSignals_data()
{
    QTest::addColumn<Connecting>("connecting");

    QTest::newRow("layers") << Connecting([](auto& scene, const auto& destroy) {
        connect(scene.viewModel(), &ToolpathViewModel::layersChanged, QCoreApplication::instance(),
                destroy);
    });
    QTest::newRow("moves") << Connecting([](auto& scene, const auto& destroy) {
        connect(scene.viewModel(), &ToolpathViewModel::movesChanged, QCoreApplication::instance(),
                destroy);
    });
    QTest::newRow("toolpaths") << Connecting([](auto& scene, const auto& destroy) {
        connect(&scene, &ToolpathScene::toolpathsChanged, QCoreApplication::instance(), destroy);
    });
    QTest::newRow("changed") << Connecting([](auto& scene, const auto& destroy) {
        connect(&scene, &ToolpathScene::changed, QCoreApplication::instance(), destroy);
    });
    QTest::newRow("camera") << Connecting([](auto& scene, const auto& destroy) {
        connect(&scene, &ToolpathScene::cameraChanged, QCoreApplication::instance(), destroy);
    });
}

void tst_ToolpathScene::mayBeDestroyedInItsSignals()
{
    QFETCH(Connecting, connecting);
    auto scene = std::make_unique<ToolpathScene>(SceneSetting());
    connecting(*scene, [&] { scene.reset(); });

    if (QByteArray(QTest::currentDataTag()) == "camera") {
        Camera camera = scene->camera();
        camera.orbit({10, 0});
        scene->setCamera(camera);
    } else {
        scene->setToolpaths(tower(3).made());
    }

    QVERIFY(scene == nullptr);
}

QTEST_GUILESS_MAIN(tst_ToolpathScene)
#include "tst_toolpath_scene.moc"
