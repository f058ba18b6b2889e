#include "goal_table.h"
#include "support/scripted_service.h"

#include <trovek-ui/make_gcode_dialog.h>
#include <trovek-ui/trovekqt.h>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTemporaryDir>

#include <functional>
#include <memory>

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

/** A connected facade with ten machines and the archetypes. */
class World
{
public:
    World()
    {
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

    TrovekQt facade;

private:
    ScriptedService m_service;
    QTemporaryDir m_folder;
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

} // namespace

// In this order: what comes first pays for what the process does once.
BENCHMARK(firstBareDialog)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(firstMakeGCodeDialog)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(bareDialogAgain)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(makeGCodeDialogAgain)->UseManualTime()->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    World world;
    s_world = &world;
    return runWithBaselines(
        argc, argv,
        {{"firstMakeGCodeDialog", "firstBareDialog"}, {"makeGCodeDialogAgain", "bareDialogAgain"}});
}
