#include "goal_table.h"
#include "support/scripted_service.h"

#include <trovek-ui/machine_combo_box.h>
#include <trovek-ui/machine_list_model.h>
#include <trovek-ui/machine_types.h>
#include <trovek-ui/trovekqt.h>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QStandardItemModel>

#include <string>

using namespace trovek;

namespace {

/** A facade that knows that many archetypes, one of them the single Cubio's. */
class World
{
public:
    explicit World(int machines)
    {
        for (int i = 0; i < machines; ++i) {
            Printer::Data data = ScriptedService::archetype(i == machines / 2 ? Printer::CubioSingle
                                                                              : Printer::Fabrino2);
            data.key = MachineName("machine " + std::to_string(i));
            m_service.addPrinter(data);
        }
        facade.connectToDaemon(m_service.address());
    }

    TrovekQt facade;

private:
    ScriptedService m_service;
};

/** What a model of that many rows costs without any thought about what changed. */
void bareModelFill(benchmark::State& state)
{
    const QString name = printerTypeToHumanString(Printer::Fabrino2, PrinterStringInSentence);
    for (auto _ : state) {
        QStandardItemModel model;
        QList<QStandardItem*> items;
        for (int i = 0; i < state.range(0); ++i)
            items.append(new QStandardItem(name));
        model.invisibleRootItem()->appendRows(items);
        benchmark::DoNotOptimize(model.rowCount());
    }
    state.SetLabel("baseline of fill");
}

void fill(benchmark::State& state)
{
    World world(int(state.range(0)));
    MachineListModel model(world.facade, false);
    for (auto _ : state) {
        model.toggleArchetypes(true);
        state.PauseTiming();
        model.toggleArchetypes(false);
        state.ResumeTiming();
    }
    state.SetLabel("goal for 1,000: 5 ms");
}

void noChange(benchmark::State& state)
{
    World world(int(state.range(0)));
    MachineListModel model(world.facade, false);
    model.toggleArchetypes(true);
    int announced = 0;
    QObject::connect(&model, &QAbstractItemModel::dataChanged, [&announced] { ++announced; });
    QObject::connect(&model, &QAbstractItemModel::rowsInserted, [&announced] { ++announced; });
    QObject::connect(&model, &QAbstractItemModel::rowsRemoved, [&announced] { ++announced; });
    for (auto _ : state)
        model.update();
    state.counters["signals"] = announced;
    state.SetLabel("goal for 1,000: 1 ms, 0 signals");
}

void oneOutOneIn(benchmark::State& state)
{
    World world(int(state.range(0)));
    MachineListModel model(world.facade, false);
    model.toggleArchetypes(true);
    for (auto _ : state) {
        model.setShowCboArchetypes(false);
        model.setShowCboArchetypes(true);
    }
    state.SetLabel("goal for 1,000: 1 ms each, 2 ms both");
}

/** The same under the combo box of a dialog. */
void switchInAComboBox(benchmark::State& state)
{
    World world(int(state.range(0)));
    MachineComboBox box(world.facade);
    for (auto _ : state) {
        box.toggleArchetypes(true);
        box.toggleArchetypes(false);
    }
}

} // namespace

BENCHMARK(bareModelFill)->Arg(10)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(fill)->Arg(10)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(noChange)->Arg(10)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(oneOutOneIn)->Arg(10)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK(switchInAComboBox)->Arg(10)->Arg(1000)->Unit(benchmark::kMicrosecond);

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    return runWithBaselines(argc, argv,
                            {{"fill/10", "bareModelFill/10"}, {"fill/1000", "bareModelFill/1000"}});
}
