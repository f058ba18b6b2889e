#include "goal_table.h"
#include "support/scripted_service.h"

#include <trovek-ui/create_profile_dialog.h>
#include <trovek-ui/make_gcode_dialog.h>
#include <trovek-ui/make_thing_dialog.h>
#include <trovek-ui/profile.h>
#include <trovek-ui/profile_list_model.h>
#include <trovek-ui/trovekqt.h>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSpinBox>
#include <QTemporaryDir>

#include <functional>
#include <map>
#include <memory>
#include <string>

using namespace trovek;

namespace {

/** Notes that a window has been painted. */
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QWidget* window) { window->installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override
    {
        isPainted = isPainted || event->type() == QEvent::Paint;
        return false;
    }

    bool isPainted = false;
};

/** Seconds from the beginning of the construction to the end of the first paint. */
double secondsToFirstPaint(const std::function<QDialog*()>& construct)
{
    QElapsedTimer timer;
    timer.start();
    const std::unique_ptr<QDialog> dialog(construct());
    PaintWatch watch(dialog.get());
    dialog->show();
    while (!watch.isPainted)
        QCoreApplication::processEvents();
    return double(timer.nsecsElapsed()) / 1e9;
}

void measure(benchmark::State& state, const std::function<QDialog*()>& construct)
{
    for (auto _ : state)
        state.SetIterationTime(secondsToFirstPaint(construct));
}

/** The same widgets in a form, without anything behind them. */
QDialog* bareDialog()
{
    auto* const dialog = new QDialog;
    auto* const form = new QFormLayout(dialog);
    form->setSizeConstraint(QLayout::SetFixedSize);
    form->addRow(new QRadioButton(QStringLiteral("Make It Now")),
                 new QRadioButton(QStringLiteral("Export to a File")));
    for (const char* label : {"Make With:", "Material:", "Extruder:"}) {
        auto* const box = new QComboBox;
        box->addItems({QStringLiteral("First"), QStringLiteral("Second"), QStringLiteral("Third")});
        form->addRow(QString::fromLatin1(label), box);
    }
    form->addRow(QStringLiteral("File:"), new QLabel(QStringLiteral("part.gcode")));
    form->addRow(new QCheckBox(QStringLiteral("Add start/end GCode")));
    form->addRow(new QLabel(QStringLiteral("Warning: always select the same extruder.")));
    form->addRow(new QPushButton(QStringLiteral("Cancel")),
                 new QPushButton(QStringLiteral("Make It!")));
    return dialog;
}

/** The same for the make-thing dialog, whose advanced widgets are made with it. */
QDialog* bareThingDialog(int profiles)
{
    auto* const dialog = new QDialog;
    auto* const form = new QFormLayout(dialog);
    form->setSizeConstraint(QLayout::SetFixedSize);
    form->addRow(new QRadioButton(QStringLiteral("Make It Now")),
                 new QRadioButton(QStringLiteral("Export to a File")));
    for (const char* label : {"Make With:", "Left:", "Right:", "Single:", "Raft:", "Supports:"}) {
        auto* const box = new QComboBox;
        box->addItems({QStringLiteral("First"), QStringLiteral("Second"), QStringLiteral("Third")});
        form->addRow(QString::fromLatin1(label), box);
    }
    for (const char* label : {"Low", "Standard", "High"})
        form->addRow(new QRadioButton(QString::fromLatin1(label)));
    auto* const list = new QComboBox;
    for (int i = 0; i < profiles; ++i)
        list->addItem(QStringLiteral("profile %1").arg(i));
    form->addRow(QStringLiteral("Profile:"), list);
    auto* const numbers = new QGroupBox(QStringLiteral("Numbers"));
    auto* const rows = new QFormLayout(numbers);
    for (int i = 0; i < 8; ++i)
        rows->addRow(QStringLiteral("Number:"), new QSpinBox);
    numbers->hide();
    form->addRow(numbers);
    form->addRow(new QPushButton(QStringLiteral("Cancel")),
                 new QPushButton(QStringLiteral("Make It!")));
    return dialog;
}

/** A connected facade with ten machines and the archetypes, and the user's profiles. */
class World
{
public:
    World()
    {
        m_profiles.mkpath(QStringLiteral("."));
        setGlobalProfileDirectory(m_profiles);
        for (int i = 0; i < 10; ++i)
            m_service.addPrinter(
                ScriptedService::machine("machine " + std::to_string(i), Printer::Fabrino2X));
        for (int type = Printer::FabrinoSingle; type <= Printer::CubioDual; ++type)
            m_service.addPrinter(ScriptedService::archetype(static_cast<Printer::Type>(type)));
        facade.connectToDaemon(m_service.address());
        QCoreApplication::processEvents();
    }

    QDialog* makeGCodeDialog()
    {
        return new MakeGCodeDialog(facade, m_folder.filePath(QStringLiteral("part.gcode")),
                                   &m_settings, nullptr, m_folder.path(), true);
    }

    QDialog* makeThingDialog()
    {
        return new MakeThingDialog(facade, m_folder.filePath(QStringLiteral("part.stl")),
                                   SlicerConfiguration::Right, &m_settings, nullptr,
                                   m_folder.path(), true);
    }

    /** Copies of a built-in one. */
    void setProfileCount(int count)
    {
        const ResourceProfile profile(QStringLiteral(":/profiles/Orvane PLA Standard"));
        for (; m_profileCount < count; ++m_profileCount)
            profile.copyToDisk(m_profiles, QStringLiteral("profile %1").arg(m_profileCount),
                               {Printer::Fabrino2X});
        while (m_profileCount > count)
            QDir(m_profiles.filePath(QStringLiteral("profile %1").arg(--m_profileCount)))
                .removeRecursively();
    }

    TrovekQt facade;

private:
    ScriptedService m_service;
    QTemporaryDir m_folder;
    // The folder around it is watched too, and the whole temporary one would be slow to watch.
    const QDir m_profiles{m_folder.filePath(QStringLiteral("profiles"))};
    int m_profileCount = 0;
    QSettings m_settings{m_folder.filePath(QStringLiteral("host.ini")), QSettings::IniFormat};
};

/** Made and destroyed by main(), since it needs the application. */
World* s_world = nullptr;

void measureMakeGCodeDialog(benchmark::State& state, const char* goal)
{
    const quint64 callsBefore = s_world->facade.callCount();
    measure(state, [] { return s_world->makeGCodeDialog(); });
    state.counters["service_calls"] = double(s_world->facade.callCount() - callsBefore);
    state.SetLabel(goal);
}

void measureMakeThingDialog(benchmark::State& state, int profiles, const char* goal)
{
    s_world->setProfileCount(profiles);
    const quint64 callsBefore = s_world->facade.callCount();
    measure(state, [] { return s_world->makeThingDialog(); });
    state.counters["service_calls"] = double(s_world->facade.callCount() - callsBefore);
    state.SetLabel(goal);
}

void firstBareDialog(benchmark::State& state)
{
    measure(state, bareDialog);
    state.SetLabel("baseline, pays for fonts and style");
}

void firstMakeGCodeDialog(benchmark::State& state)
{
    measureMakeGCodeDialog(state, "goal: 40 ms, 0 service calls");
}

void bareDialogAgain(benchmark::State& state)
{
    measure(state, bareDialog);
    state.SetLabel("baseline");
}

void makeGCodeDialogAgain(benchmark::State& state)
{
    measureMakeGCodeDialog(state, "goal: 15 ms, 0 service calls");
}

void firstMakeThingDialog(benchmark::State& state)
{
    measureMakeThingDialog(state, 50, "goal: 40 ms, 0 service calls");
}

void bareThingDialogAgain(benchmark::State& state)
{
    const auto profiles = int(state.range(0));
    measure(state, [profiles] { return bareThingDialog(profiles); });
    state.SetLabel("baseline");
}

void makeThingDialogAgain(benchmark::State& state)
{
    const auto profiles = int(state.range(0));
    measureMakeThingDialog(state, profiles,
                           profiles <= 50 ? "goal: 15 ms, 0 service calls" : "0 service calls");
}

/** Which lists the built-in ones too. */
void createProfileDialog(benchmark::State& state)
{
    s_world->setProfileCount(0);
    measure(state, [] { return new CreateProfileDialog; });
    state.SetLabel("the built-in profiles");
}

} // namespace

// In this order: what comes first pays for what the process does once.
BENCHMARK(firstBareDialog)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(firstMakeGCodeDialog)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(firstMakeThingDialog)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(bareDialogAgain)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(makeGCodeDialogAgain)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(bareThingDialogAgain)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Arg(0)
    ->Arg(50)
    ->Arg(100)
    ->Arg(1000);
BENCHMARK(makeThingDialogAgain)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Arg(0)
    ->Arg(50)
    ->Arg(100)
    ->Arg(1000);
BENCHMARK(createProfileDialog)->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    World world;
    s_world = &world;
    std::map<std::string, std::string> baselines = {{"firstMakeGCodeDialog", "firstBareDialog"},
                                                    {"makeGCodeDialogAgain", "bareDialogAgain"}};
    for (const char* profiles : {"/0", "/50", "/100", "/1000"})
        baselines[std::string("makeThingDialogAgain") + profiles] =
            std::string("bareThingDialogAgain") + profiles;
    return runWithBaselines(argc, argv, baselines);
}
