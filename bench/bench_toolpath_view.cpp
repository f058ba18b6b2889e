#include "bench_data.h"
#include "goal_table.h"

#include <pathscope/toolpath_gl_widget.h>
#include <pathscope/toolpath_overlay.h>
#include <pathscope/toolpath_scene.h>
#include <pathscope/toolpath_view_model.h>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QHBoxLayout>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace pathscope;

namespace {

constexpr int kRuns = 7;
constexpr int kPatienceMs = 120'000;
constexpr double kMegabyte = 1e6;

double processorSeconds()
{
    return double(std::clock()) / CLOCKS_PER_SEC;
}

/** A line of /proc/self/status, in bytes; 0 where there is none. */
double statusBytes(const char* name)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(name))
            return line.simplified().split(' ').value(1).toDouble() * 1024;
    }
    return 0;
}

/** From now on VmHWM tells the peak since now. */
void forgetPeak()
{
    QFile refs(QStringLiteral("/proc/self/clear_refs"));
    if (refs.open(QIODevice::WriteOnly))
        refs.write("5");
}

/** The longest time that the event loop was kept, while it lives. */
class Heartbeat
{
public:
    Heartbeat()
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { beat(); });
        m_clock.start();
        m_timer.start(1);
    }

    double longestMs()
    {
        beat();
        return m_longest;
    }

private:
    void beat()
    {
        m_longest = std::max(m_longest, double(m_clock.nsecsElapsed()) / 1e6);
        m_clock.restart();
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    double m_longest = 0;
};

bool waitFor(const std::function<bool()>& done)
{
    QElapsedTimer clock;
    clock.start();
    // Wakes the loop up where nothing else does, to look at the clock.
    QTimer wake;
    wake.start(1000);
    while (!done() && clock.elapsed() < kPatienceMs)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return done();
}

/** A view of 1,280 x 720 pixels, beside its controls. */
class World
{
public:
    World()
        : view(new ToolpathGLWidget(nullptr, true, {Orvane::PLA, Orvane::PLA}, {},
                                    {0, 0, 0, 280, 280, 200}, Orvane::Ground::Rectangular,
                                    Orvane::Ground::DrawBuildVolume))
    {
        auto* layout = new QHBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(view);
        window.resize(1280 + view->overlayWidget()->sizeHint().width(), 720);
        window.show();
        waitFor([this] { return view->frameCount() > 0 && view->isPictureComplete(); });
    }

    ToolpathScene& scene() const { return *view->toolpathScene(); }
    ToolpathViewModel& model() const { return *scene().viewModel(); }
    double moves() const { return double(scene().toolpaths()->segmentCount); }

    /** @return false when there is no such file, or no OpenGL */
    bool open(const std::string& name)
    {
        const QFileInfo info(QString::fromStdString(benchFile(name)));
        if (!info.isFile() || !view->whyNoPicture().isEmpty())
            return false;
        bool done = false;
        const auto connection =
            QObject::connect(view, &ToolpathGLWidget::pictureComplete, [&done] { done = true; });
        const std::uint64_t drawnBefore = view->drawnSegments();
        int frameBefore = -1;
        firstPictureMs = 0;
        QElapsedTimer clock;
        Heartbeat heart;
        clock.start();
        view->setFile(info);
        const bool opened = waitFor([&] {
            if (frameBefore < 0 && view->drawnSegments() > drawnBefore)
                frameBefore = view->frameCount();
            if (firstPictureMs == 0 && frameBefore >= 0 && view->frameCount() > frameBefore)
                firstPictureMs = double(clock.nsecsElapsed()) / 1e6;
            return done;
        });
        completePictureMs = double(clock.nsecsElapsed()) / 1e6;
        longestStallMs = heart.longestMs();
        QObject::disconnect(connection);
        return opened;
    }

    /** From an action to the next picture on the screen, in seconds. */
    double untilNextFrame(const std::function<void()>& action) const
    {
        const int frames = view->frameCount();
        QElapsedTimer clock;
        clock.start();
        action();
        waitFor([&] { return view->frameCount() > frames; });
        return double(clock.nsecsElapsed()) / 1e9;
    }

    void settle() const
    {
        QCoreApplication::processEvents();
        waitFor([this] { return view->isPictureComplete(); });
    }

    QWidget window;
    ToolpathGLWidget* view;
    double firstPictureMs = 0;
    double completePictureMs = 0;
    double longestStallMs = 0;
};

/** The window of all rows but the first; main() closes it before the application goes. */
std::unique_ptr<World>& sharedWorld()
{
    static std::unique_ptr<World> world;
    return world;
}

/** With this file in it, and the picture complete; null and the row left out where it cannot be. */
World* worldWith(const std::string& name, benchmark::State& state)
{
    std::unique_ptr<World>& world = sharedWorld();
    static std::string shown;
    if (world == nullptr)
        world = std::make_unique<World>();
    if (shown != name && !world->open(name)) {
        state.SkipWithError("no file, or no OpenGL");
        return nullptr;
    }
    shown = name;
    world->settle();
    return world.get();
}

/** What the toolpaths hold, counted from their arrays: other memory of the process says little. */
double arrayBytes(const Toolpaths& toolpaths)
{
    std::size_t bytes = toolpaths.layers.capacity() * sizeof(Layer) +
                        toolpaths.styles.capacity() * sizeof(MoveStyle) +
                        toolpaths.styleAmounts.capacity() * sizeof(Amount);
    for (const auto& chunk : toolpaths.chunks)
        bytes += sizeof(PointChunk) + chunk->points.capacity() * sizeof(PathPoint);
    return double(bytes);
}

/**
 * Of memory the first file of the process tells most.
 *
 * On a software renderer the process's memory holds what would be the GPU's. The pictures in it
 * (four pixels with their depths for each one of the window, and up to two copies of them to step
 * layers from) depend on the window alone, and so they are told apart.
 */
void memory(benchmark::State& state)
{
    World world;
    const double before = statusBytes("VmRSS");
    forgetPeak();
    for (auto _ : state) {
        if (!world.open("large")) {
            state.SkipWithError("no file, or no OpenGL");
            return;
        }
        state.SetIterationTime(world.completePictureMs / 1e3);
    }
    const double after = statusBytes("VmRSS");
    const double inProcess = arrayBytes(*world.scene().toolpaths());
    const auto onGpu = double(world.view->uploadedBytes());
    state.counters["peak MB over the empty view"] = (statusBytes("VmHWM") - before) / kMegabyte;
    state.counters["bytes a move in the process"] = inProcess / world.moves();
    state.counters["bytes a move on the GPU"] = onGpu / world.moves();
    state.counters["bytes a move, both"] = (inProcess + onGpu) / world.moves();
    state.counters["MB beside, mostly copies of the picture"] =
        (after - before - inProcess - onGpu) / kMegabyte;
    state.SetLabel("goal: peak 220 MB (130), 24 + 16 bytes a move (16 + 16)");
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void opening(benchmark::State& state)
{
    World* world = worldWith("small", state);
    if (world == nullptr)
        return;
    std::vector<double> first;
    std::vector<double> stalls;
    for (auto _ : state) {
        world->open("large");
        state.SetIterationTime(world->completePictureMs / 1e3);
        first.push_back(world->firstPictureMs);
        stalls.push_back(world->longestStallMs);
    }
    state.counters["first picture ms"] = median(first);
    state.counters["longest stall ms"] = median(stalls);
    state.SetLabel("goal: complete 3 s (1.5), first 0.6 s (0.3), stall 50 ms (16)");
    world->open("small");
}

void fullFrame(benchmark::State& state)
{
    World* world = worldWith("large", state);
    if (world == nullptr)
        return;
    std::vector<double> each;
    for (auto _ : state) {
        const double start = processorSeconds();
        Camera camera = world->scene().camera();
        camera.orbit(QPointF(3, 0));
        world->scene().setCamera(camera);
        world->settle();
        const double used = processorSeconds() - start;
        state.SetIterationTime(used);
        each.push_back(used * 1e9 / world->moves());
    }
    state.counters["ns CPU a move"] = median(each);
    state.SetLabel("goal: 650 ns (400), with the coarse frame before it");
}

void movingFrame(benchmark::State& state, const std::string& name)
{
    World* world = worldWith(name, state);
    if (world == nullptr)
        return;
    for (auto _ : state) {
        Camera camera = world->scene().camera();
        camera.orbit(QPointF(3, 1));
        state.SetIterationTime(world->untilNextFrame([&] { world->scene().setCamera(camera); }));
    }
    state.SetLabel("goal: 120 ms (60)");
    world->settle();
}

void toTheMiddle(World& world)
{
    world.model().setLastLayer(world.model().layerCount() / 2);
    world.settle();
}

void layerUp(benchmark::State& state)
{
    World* world = worldWith("large", state);
    if (world == nullptr)
        return;
    toTheMiddle(*world);
    for (auto _ : state) {
        state.SetIterationTime(
            world->untilNextFrame([&] { world->view->overlayWidget()->layerUp(); }));
        world->settle();
    }
    state.SetLabel("goal: 30 ms (15)");
}

void layerDown(benchmark::State& state)
{
    World* world = worldWith("large", state);
    if (world == nullptr)
        return;
    toTheMiddle(*world);
    for (auto _ : state) {
        state.SetIterationTime(
            world->untilNextFrame([&] { world->view->overlayWidget()->layerDown(); }));
        world->settle();
    }
    state.SetLabel("goal: 250 ms (60)");
}

/** The scene's part of a step: what has to be drawn, found again. */
void layerStep(benchmark::State& state, const std::string& name)
{
    World* world = worldWith(name, state);
    if (world == nullptr)
        return;
    ToolpathScene scene(world->scene().setting());
    scene.setToolpaths(world->scene().toolpaths());
    scene.viewModel()->setLastLayer(0);
    const int last = scene.viewModel()->layerCount() - 1;
    for (auto _ : state) {
        if (scene.viewModel()->lastLayer() == last)
            scene.viewModel()->setLastLayer(0);
        scene.viewModel()->layerUp();
        benchmark::DoNotOptimize(scene.shownSegments());
    }
    state.SetLabel("goal: 50 us (5)");
}

void orthographicToggle(benchmark::State& state)
{
    World* world = worldWith("large", state);
    if (world == nullptr)
        return;
    const std::uint64_t uploaded = world->view->uploadedBytes();
    for (auto _ : state)
        world->model().orthoViewToggled();
    world->settle();
    state.counters["bytes uploaded"] = double(world->view->uploadedBytes() - uploaded);
    state.SetLabel("goal: 50 us, 0 bytes");
}

void idle(benchmark::State& state)
{
    World* world = worldWith("large", state);
    if (world == nullptr)
        return;
    const int frames = world->view->frameCount();
    for (auto _ : state) {
        QElapsedTimer clock;
        clock.start();
        waitFor([&clock] { return clock.elapsed() >= 5000; });
    }
    state.counters["frames"] = world->view->frameCount() - frames;
    state.SetLabel("goal: 0 frames in 5 s");
}

} // namespace

BENCHMARK(memory)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(opening)->Iterations(kRuns)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(fullFrame)->Iterations(kRuns)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(movingFrame, large, std::string("large"))
    ->Iterations(5 * kRuns)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(layerUp)->Iterations(5 * kRuns)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(layerDown)->Iterations(5 * kRuns)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(layerStep, large, std::string("large"))->Unit(benchmark::kMicrosecond);
BENCHMARK(orthographicToggle)->Iterations(kRuns)->Unit(benchmark::kMicrosecond);
BENCHMARK(idle)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(movingFrame, dual, std::string("dual"))
    ->Iterations(5 * kRuns)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(movingFrame, small, std::string("small"))
    ->Iterations(5 * kRuns)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(layerStep, small, std::string("small"))->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const int result = runWithBaselines(argc, argv, {{"layerStep/small", "layerStep/large"}});
    sharedWorld().reset();
    return result;
}
