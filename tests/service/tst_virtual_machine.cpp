#include "support/test_log.h"

#include <service/gcode/machine_definition.h>
#include <service/heater.h>
#include <service/motion_job.h>
#include <service/plan_runner.h>
#include <service/virtual_machine.h>

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

using namespace trovek;
using namespace trovek::service;

class tst_VirtualMachine : public QObject
{
    Q_OBJECT

private slots:
    void aHeaterRisesToItsTargetAndFallsToTheRoom();
    void aHeaterKnowsWhenItIsWarm();
    void aHeaterTakesNoPowerThatIsNotThere();
    void motionTakesItsTime();
    void motionEndsAtTheLimits();
    void homingGoesToTheEndStops();
    void waitsForTemperatures();
    void refusesColdExtrusion();
    void aRepeatingPlanNeverEnds_data();
    void aRepeatingPlanNeverEnds();
    void oneLongStepOfTimeIsLikeManyShortOnes();
    void opensRunsAndCloses();
    void stoppingIsSilent();
    void aClosedMachineCoolsDown();
    void anIdleMachineDoesNotTick();
    void memorySurvivesARestart();
    void memoryRefusesWhatDoesNotFit_data();
    void memoryRefusesWhatDoesNotFit();
    void aResetOfTheMemoryTakesTime();
    void aResetEndsWithTheMachine();
    void aResetNeedsAnIdleMachine();
    void writingFirmwareTakesTime();
    void writingFirmwareNeedsAnIdleMachine();
    void writingFirmwareEndsWithTheMachine();
    void writingFirmwareFailsOnceOnRequest();
    void firmwareSurvivesARestart();
    void aSavedPositionOutsideIsBroughtToTheEndStops();
    void spoiltStateIsLikeNone_data();
    void spoiltStateIsLikeNone();
    void positionSurvivesARestart();
};

namespace {

MachineDefinition definition(Printer::Type type = Printer::FabrinoDual)
{
    return defaultMachineDefinitions().archetypes.at(static_cast<std::size_t>(type) - 1);
}

PlanStep moveTo(float x, float y, float z, float seconds)
{
    PlanStep step;
    step.kind = PlanStep::Move;
    step.position = {x, y, z};
    step.seconds = seconds;
    return step;
}

PlanStep target(int tool, float celsius)
{
    PlanStep step;
    step.kind = PlanStep::SetToolTarget;
    step.tool = static_cast<std::uint8_t>(tool);
    step.celsius = celsius;
    return step;
}

PlanStep waitFor(int tool)
{
    PlanStep step;
    step.kind = PlanStep::WaitForTool;
    step.tool = static_cast<std::uint8_t>(tool);
    return step;
}

std::shared_ptr<const MotionPlan> planOf(std::vector<PlanStep> steps)
{
    MotionPlan plan;
    for (const PlanStep& step : steps)
        plan.seconds += static_cast<double>(step.seconds);
    plan.steps = std::move(steps);
    return std::make_shared<const MotionPlan>(std::move(plan));
}

bool isNear(double value, double expected, double tolerance = 1e-3)
{
    return std::abs(value - expected) < tolerance;
}

struct Fixture
{
    explicit Fixture(double timeScale = 1000)
        : scale(timeScale)
    {
        restart();
    }

    void restart()
    {
        machine.reset();
        machine = std::make_unique<VirtualMachine>(machineDefinition, folder.path(), scale);
    }

    void open()
    {
        machine->open();
        QTRY_COMPARE(machine->status().state, Printer::Idle);
    }

    QString file(const char* name) const { return folder.filePath(QString::fromLatin1(name)); }

    TestLog log;
    const double scale;
    const QTemporaryDir folder;
    const MachineDefinition machineDefinition = definition();
    std::unique_ptr<VirtualMachine> machine;
};

} // namespace

void tst_VirtualMachine::aHeaterRisesToItsTargetAndFallsToTheRoom()
{
    Heater heater(definition().toolhead);
    QCOMPARE(heater.celsius(), 23.0);
    QVERIFY(heater.isAtRest());
    heater.setTarget(200);
    double last = heater.celsius();
    int seconds = 0;
    while (heater.celsius() < 200 && seconds < 1000) {
        heater.advance(1);
        QVERIFY(heater.celsius() > last && heater.celsius() <= 200);
        last = heater.celsius();
        ++seconds;
    }
    QVERIFY2(seconds > 30 && seconds < 300, qPrintable(QString::number(seconds)));
    heater.advance(100);
    QCOMPARE(heater.celsius(), 200.0);

    heater.setTarget(0);
    heater.advance(60);
    QVERIFY(heater.celsius() < 200 && heater.celsius() > 100);
    heater.advance(10000);
    QCOMPARE(heater.celsius(), 23.0);
    QVERIFY(heater.isAtRest());
}

void tst_VirtualMachine::aHeaterKnowsWhenItIsWarm()
{
    Heater heater(definition().toolhead);
    QVERIFY(heater.isWarm());
    QCOMPARE(heater.secondsUntilWarm(), 0.0);
    heater.setTarget(200);
    const double wait = heater.secondsUntilWarm();
    QVERIFY(wait > 30);
    heater.advance(wait - 1);
    QVERIFY(!heater.isWarm());
    heater.advance(1);
    QVERIFY(heater.isWarm());
    heater.setTarget(100);
    QVERIFY2(heater.isWarm(), "warmer than needed is warm");
    heater.setTarget(10);
    heater.advance(100000);
    QVERIFY2(heater.isWarm(), "no heater cools below the room");
}

void tst_VirtualMachine::aHeaterTakesNoPowerThatIsNotThere()
{
    Heater none(definition(Printer::Fabrino2).platform);
    none.setTarget(0);
    none.advance(100);
    QCOMPARE(none.celsius(), 23.0);
    QVERIFY(none.isAtRest());
    Heater heater(definition().toolhead);
    heater.setCelsius(1e9);
    QCOMPARE(heater.celsius(), definition().toolhead.fullPowerCelsius);
    heater.setCelsius(-5);
    QCOMPARE(heater.celsius(), 0.0);
}

void tst_VirtualMachine::motionTakesItsTime()
{
    MachineBody body(definition());
    body.position = {0, 0, 0};
    PlanRunner runner(planOf({moveTo(100, 50, 10, 10), moveTo(100, 50, 20, 5)}));

    runner.advance(body, 5);
    QVERIFY(isNear(body.position[0], 50) && isNear(body.position[1], 25));
    QCOMPARE(runner.doneSeconds(), 0.0);
    runner.advance(body, 7.5);
    QVERIFY(isNear(body.position[0], 100) && isNear(body.position[2], 15));
    QCOMPARE(runner.doneSeconds(), 10.0);
    QVERIFY(!runner.isFinished());
    runner.advance(body, 100);
    QVERIFY(runner.isFinished());
    QVERIFY(isNear(body.position[2], 20));
    QCOMPARE(runner.doneSeconds(), 15.0);
}

void tst_VirtualMachine::motionEndsAtTheLimits()
{
    MachineBody body(definition());
    PlanRunner runner(planOf({moveTo(1e6F, -1e6F, 1e6F, 1)}));

    runner.advance(body, 2);

    QCOMPARE(body.position[0], 220.0);
    QCOMPARE(body.position[1], 0.0);
    QCOMPARE(body.position[2], 150.0);
}

void tst_VirtualMachine::homingGoesToTheEndStops()
{
    MachineBody body(definition());
    body.position = {100, 100, 50};
    PlanStep step;
    step.kind = PlanStep::Home;
    step.axes = 1 | 4;
    PlanRunner runner(planOf({step}));

    // The slowest axis decides: 50 mm at 10 mm a second.
    runner.advance(body, 4.9);
    QVERIFY(!runner.isFinished());
    runner.advance(body, 0.2);

    QVERIFY(runner.isFinished());
    QCOMPARE(body.position[0], 220.0);
    QCOMPARE(body.position[1], 100.0);
    QCOMPARE(body.position[2], 0.0);
}

void tst_VirtualMachine::waitsForTemperatures()
{
    MachineBody body(definition());
    PlanRunner runner(planOf({target(1, 200), waitFor(1), moveTo(1, 1, 1, 5)}));

    runner.advance(body, 1);
    QVERIFY(runner.isHeating(body));
    const double wait = runner.waitSeconds(body);
    QVERIFY(wait > 30);
    runner.advance(body, wait + 2);
    QVERIFY(!runner.isHeating(body));
    QCOMPARE(runner.waitSeconds(body), 0.0);
    QVERIFY(!runner.isFinished());
    QVERIFY(isNear(body.tools[1].celsius(), 200, 2));
    QCOMPARE(body.tools[0].celsius(), 23.0);
    runner.advance(body, 4);
    QVERIFY(runner.isFinished());
}

void tst_VirtualMachine::refusesColdExtrusion()
{
    MachineBody body(definition());
    PlanStep push = moveTo(1, 1, 1, 1);
    push.extrudes = true;
    push.tool = 1;
    PlanRunner cold(planOf({push}));
    QVERIFY_EXCEPTION_THROWN(cold.advance(body, 0.1), std::runtime_error);

    body.tools[1].setCelsius(90);
    body.tools[1].setTarget(90);
    PlanRunner warm(planOf({push}));
    warm.advance(body, 2);
    QVERIFY(warm.isFinished());
}

void tst_VirtualMachine::aRepeatingPlanNeverEnds_data()
{
    QTest::addColumn<int>("axis");
    QTest::addColumn<int>("distance");

    QTest::newRow("small steps") << int(Printer::XAxis) << -1;
    QTest::newRow("against the end stop") << int(Printer::XAxis) << 1;
    QTest::newRow("far out") << int(Printer::ZAxis) << 2147483647;
    QTest::newRow("far out the other way") << int(Printer::YAxis) << -2147483647;
}

void tst_VirtualMachine::aRepeatingPlanNeverEnds()
{
    QFETCH(int, axis);
    QFETCH(int, distance);
    MachineBody body(definition());
    const auto plan = std::make_shared<const MotionPlan>(
        jogPlan(definition(), static_cast<Printer::Axis>(axis), distance));
    PlanRunner runner(plan);

    for (int i = 0; i < 100; ++i)
        runner.advance(body, 100);

    QVERIFY(!runner.isFinished());
    const std::size_t index = static_cast<std::size_t>(axis - Printer::XAxis);
    const AxisRange& range = body.limits[index];
    QVERIFY(isNear(body.position[index], distance < 0 ? range.min : range.max));
}

void tst_VirtualMachine::oneLongStepOfTimeIsLikeManyShortOnes()
{
    const auto plan = planOf(
        {target(0, 210), waitFor(0), moveTo(10, 10, 10, 30), target(0, 0), moveTo(50, 50, 50, 30)});
    MachineBody once(definition());
    MachineBody often(definition());
    PlanRunner fast(plan);
    PlanRunner slow(plan);

    fast.advance(once, 150);
    for (int i = 0; i < 1500; ++i)
        slow.advance(often, 0.1);

    QCOMPARE(fast.isFinished(), slow.isFinished());
    for (std::size_t axis = 0; axis < 3; ++axis)
        QVERIFY(isNear(once.position[axis], often.position[axis], 1e-6));
    QVERIFY(isNear(once.tools[0].celsius(), often.tools[0].celsius(), 1e-6));
}

void tst_VirtualMachine::opensRunsAndCloses()
{
    Fixture f;
    QSignalSpy opened(f.machine.get(), &MachineDriver::opened);
    QSignalSpy finished(f.machine.get(), &MachineDriver::finished);
    QCOMPARE(f.machine->status().state, Printer::UnknownState);
    QVERIFY_EXCEPTION_THROWN(f.machine->run(planOf({})), std::logic_error);

    f.machine->open();
    QCOMPARE(f.machine->status().state, Printer::Connecting);
    QCOMPARE(opened.count(), 0);
    QTRY_COMPARE(opened.count(), 1);
    QCOMPARE(f.machine->status().state, Printer::Idle);
    f.machine->run(planOf({moveTo(1, 2, 3, 100)}));
    QCOMPARE(f.machine->status().state, Printer::Running);
    QTRY_COMPARE(finished.count(), 1);

    QCOMPARE(f.machine->status().state, Printer::Idle);
    QCOMPARE(f.machine->status().position, (std::array<double, 3>{1, 2, 3}));
    f.machine->close();
    QCOMPARE(f.machine->status().state, Printer::UnknownState);
    QCOMPARE(finished.count(), 1);
}

void tst_VirtualMachine::stoppingIsSilent()
{
    Fixture f;
    f.open();
    QSignalSpy finished(f.machine.get(), &MachineDriver::finished);
    QSignalSpy failed(f.machine.get(), &MachineDriver::failed);
    f.machine->setToolTarget(0, 50);
    f.machine->run(planOf({moveTo(1, 2, 3, 1e6F)}));

    f.machine->stop();

    QCOMPARE(f.machine->status().state, Printer::Idle);
    QCOMPARE(f.machine->status().toolTargets, (std::vector<int>{50, 0}));
    f.machine->run(planOf({}));
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(failed.count(), 0);
}

void tst_VirtualMachine::aClosedMachineCoolsDown()
{
    Fixture f;
    f.open();
    f.machine->setToolTarget(1, 200);
    f.machine->setPlatformTarget(60);
    QTRY_VERIFY(f.machine->status().toolCelsius[1] > 190);

    f.machine->close();

    QCOMPARE(f.machine->status().toolTargets, (std::vector<int>{0, 0}));
    QCOMPARE(f.machine->status().platformTarget, 0);
    QTRY_VERIFY(f.machine->status().toolCelsius[1] < 100);
}

void tst_VirtualMachine::anIdleMachineDoesNotTick()
{
    Fixture f;
    f.open();
    QSignalSpy changed(f.machine.get(), &MachineDriver::changed);
    VirtualMachine other(f.machineDefinition, QTemporaryDir().path(), 1000);
    other.open();
    QSignalSpy otherChanged(&other, &MachineDriver::changed);
    other.setToolTarget(0, 30);

    QTRY_VERIFY(otherChanged.count() > 4);

    QVERIFY2(changed.count() <= 1, qPrintable(QString::number(changed.count())));
    f.log.allowErrors("Cannot write ");
}

void tst_VirtualMachine::memorySurvivesARestart()
{
    Fixture f;
    QCOMPARE(f.machine->readMemory(0, 1 << 20), QByteArray(VirtualMachine::kMemoryBytes, '\xff'));
    QVERIFY(f.machine->writeMemory(100, QByteArray("\0\1\2name", 7)));

    f.restart();

    QCOMPARE(f.machine->readMemory(99, 9), QByteArray("\xff\0\1\2name\xff", 9));
    QFile file(f.file("memory.bin"));
    QCOMPARE(file.size(), qint64(VirtualMachine::kMemoryBytes));
}

void tst_VirtualMachine::memoryRefusesWhatDoesNotFit_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("expectedResult");

    QTest::newRow("all of it") << 0 << 4096 << true;
    QTest::newRow("nothing") << 0 << 0 << true;
    QTest::newRow("the last byte") << 4095 << 1 << true;
    QTest::newRow("one too many") << 0 << 4097 << false;
    QTest::newRow("over the end") << 4095 << 2 << false;
    QTest::newRow("behind the end") << 4097 << 0 << false;
    QTest::newRow("before the beginning") << -1 << 1 << false;
    QTest::newRow("far away") << 2147483647 << 1 << false;
}

void tst_VirtualMachine::memoryRefusesWhatDoesNotFit()
{
    QFETCH(int, offset);
    QFETCH(int, size);
    QFETCH(bool, expectedResult);
    Fixture f;

    QCOMPARE(f.machine->writeMemory(offset, QByteArray(size, 'x')), expectedResult);

    QCOMPARE(f.machine->readMemory(0, 1 << 20).size(), VirtualMachine::kMemoryBytes);
    QCOMPARE(f.machine->readMemory(0, 1 << 20).count('x'), expectedResult ? size : 0);
    QCOMPARE(f.machine->readMemory(-1, 5), QByteArray());
    QCOMPARE(f.machine->readMemory(4094, 5).size(), 2);
}

void tst_VirtualMachine::aResetOfTheMemoryTakesTime()
{
    Fixture f(20);
    f.open();
    f.machine->writeMemory(0, QByteArray(VirtualMachine::kMemoryBytes, 'o'));
    const QByteArray image(VirtualMachine::kMemoryBytes, 'n');
    QSignalSpy done(f.machine.get(), &MachineDriver::memoryReset);

    f.machine->resetMemory(image);

    QCOMPARE(done.count(), 0);
    QCOMPARE(f.machine->readMemory(0, 1), QByteArray("o"));
    QVERIFY(done.wait(30000));
    QCOMPARE(done.at(0).at(0).toBool(), true);
    QCOMPARE(f.machine->readMemory(0, 1 << 20), image);
    f.restart();
    QCOMPARE(f.machine->readMemory(0, 1 << 20), image);
}

void tst_VirtualMachine::aResetEndsWithTheMachine()
{
    Fixture f(20);
    f.open();
    QSignalSpy done(f.machine.get(), &MachineDriver::memoryReset);
    f.machine->resetMemory(QByteArray(VirtualMachine::kMemoryBytes, 'n'));
    f.machine->close();
    f.open();

    // A second one is the only one that ends.
    f.machine->resetMemory(QByteArray(VirtualMachine::kMemoryBytes, 'm'));
    QVERIFY(done.wait(30000));
    QCOMPARE(f.machine->readMemory(0, 1), QByteArray("m"));
    QCOMPARE(done.count(), 1);
}

void tst_VirtualMachine::aResetNeedsAnIdleMachine()
{
    Fixture f;
    const QByteArray image(VirtualMachine::kMemoryBytes, 'n');
    QVERIFY_EXCEPTION_THROWN(f.machine->resetMemory(image), std::logic_error);
    f.open();
    f.machine->resetMemory(image);
    QVERIFY_EXCEPTION_THROWN(f.machine->resetMemory(image), std::logic_error);
    QVERIFY_EXCEPTION_THROWN(f.machine->run(planOf({moveTo(1, 1, 1, 1)})), std::logic_error);
    QTRY_COMPARE(f.machine->readMemory(0, 1), QByteArray("n"));
    f.machine->run(planOf({moveTo(1, 1, 1, 1)}));
    QVERIFY_EXCEPTION_THROWN(f.machine->resetMemory(image), std::logic_error);
}

void tst_VirtualMachine::writingFirmwareTakesTime()
{
    Fixture f(100);
    f.open();
    QSignalSpy written(f.machine.get(), &MachineDriver::firmwareWritten);
    f.machine->writeFirmware("9.10", QByteArray(10, 'x'));
    QCOMPARE(f.machine->firmwareVersion(), definition().firmwareVersion);
    QVERIFY(written.wait(30000));
    QCOMPARE(written, (QList<QVariantList>{{QString()}}));
    QCOMPARE(f.machine->firmwareVersion(), std::string("9.10"));
    // At once, not with the next saving of its temperatures.
    f.restart();
    QCOMPARE(f.machine->firmwareVersion(), std::string("9.10"));
}

void tst_VirtualMachine::writingFirmwareNeedsAnIdleMachine()
{
    Fixture f;
    const QByteArray image(10, 'x');
    QVERIFY_EXCEPTION_THROWN(f.machine->writeFirmware("9.10", image), std::logic_error);
    f.open();
    f.machine->writeFirmware("9.10", image);
    QVERIFY_EXCEPTION_THROWN(f.machine->writeFirmware("9.11", image), std::logic_error);
    QVERIFY_EXCEPTION_THROWN(f.machine->run(planOf({moveTo(1, 1, 1, 1)})), std::logic_error);
    QVERIFY_EXCEPTION_THROWN(f.machine->resetMemory(image), std::logic_error);
    QTRY_COMPARE(f.machine->firmwareVersion(), std::string("9.10"));
    f.machine->run(planOf({moveTo(1, 1, 1, 1)}));
    QVERIFY_EXCEPTION_THROWN(f.machine->writeFirmware("9.11", image), std::logic_error);
}

void tst_VirtualMachine::writingFirmwareEndsWithTheMachine()
{
    Fixture f(1);
    f.open();
    QSignalSpy written(f.machine.get(), &MachineDriver::firmwareWritten);
    f.machine->writeFirmware("9.10", QByteArray(10, 'x'));
    f.machine->close();
    f.open();
    QCOMPARE(f.machine->firmwareVersion(), definition().firmwareVersion);
    QVERIFY(written.isEmpty());
    // It can be given firmware again.
    f.machine->writeFirmware("9.10", QByteArray(10, 'x'));
}

void tst_VirtualMachine::writingFirmwareFailsOnceOnRequest()
{
    Fixture f;
    f.open();
    QSignalSpy written(f.machine.get(), &MachineDriver::firmwareWritten);
    QVERIFY(f.machine->simulateUploadFailure(100));
    f.machine->writeFirmware("9.10", QByteArray(10, 'x'));
    QVERIFY(written.wait(30000));
    QCOMPARE(written.takeFirst().at(0).toString(),
             QStringLiteral("The machine took no more of the firmware after 100 percent"));
    QCOMPARE(f.machine->firmwareVersion(), definition().firmwareVersion);
    f.machine->writeFirmware("9.10", QByteArray(10, 'x'));
    QVERIFY(written.wait(30000));
    QCOMPARE(written.takeFirst().at(0).toString(), QString());
    QVERIFY(f.machine->simulateUploadFailure(0));
    QVERIFY(f.machine->simulateUploadFailure(std::nullopt));
    f.machine->writeFirmware("9.11", QByteArray(10, 'x'));
    QVERIFY(written.wait(30000));
    QCOMPARE(f.machine->firmwareVersion(), std::string("9.11"));
}

void tst_VirtualMachine::firmwareSurvivesARestart()
{
    Fixture f;
    QCOMPARE(f.machine->firmwareVersion(), definition().firmwareVersion);
    QVERIFY(f.machine->simulateFirmware("9.10"));
    QCOMPARE(f.machine->firmwareVersion(), std::string("9.10"));
    f.restart();
    QCOMPARE(f.machine->firmwareVersion(), std::string("9.10"));
    QVERIFY(f.machine->simulateFirmware(definition().firmwareVersion));
    f.restart();
    QCOMPARE(f.machine->firmwareVersion(), definition().firmwareVersion);
}

void tst_VirtualMachine::aSavedPositionOutsideIsBroughtToTheEndStops()
{
    Fixture f;
    QFile file(f.file("state.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\"position\": [1e300, -1e300, 5]}");
    file.close();

    f.restart();

    const std::array<double, 3> position = f.machine->status().position;
    const MachineDefinition& machine = f.machineDefinition;
    QCOMPARE(position[0], std::max(machine.buildVolume[0].max, machine.homePosition[0]));
    QCOMPARE(position[1], std::min(machine.buildVolume[1].min, machine.homePosition[1]));
    QCOMPARE(position[2], 5.0);
}

void tst_VirtualMachine::spoiltStateIsLikeNone_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("expectsError");

    QTest::newRow("no JSON") << QByteArray("{") << true;
    QTest::newRow("a list") << QByteArray("[1]") << false;
    QTest::newRow("other kinds") << QByteArray(
                                        "{\"tools\": {}, \"platform\": \"warm\", \"position\": 7}")
                                 << false;
    QTest::newRow("other kinds within")
        << QByteArray("{\"tools\": [\"x\", null], \"platform\": null, \"position\": [[], {}]}")
        << false;
    QTest::newRow("too few") << QByteArray("{\"tools\": [], \"position\": []}") << false;
}

void tst_VirtualMachine::spoiltStateIsLikeNone()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, expectsError);
    Fixture f;
    QFile file(f.file("state.json"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    if (expectsError)
        f.log.expectError("Cannot read ");

    f.restart();

    QCOMPARE(f.machine->status().toolCelsius, (std::vector<double>{23, 23}));
    QCOMPARE(f.machine->status().platformCelsius, 23.0);
    QCOMPARE(f.machine->status().position, f.machineDefinition.homePosition);
}

void tst_VirtualMachine::positionSurvivesARestart()
{
    Fixture f;
    f.open();
    QSignalSpy finished(f.machine.get(), &MachineDriver::finished);
    f.machine->run(planOf({moveTo(10, 20, 30, 1)}));
    QTRY_COMPARE(finished.count(), 1);

    f.restart();

    QCOMPARE(f.machine->status().position, (std::array<double, 3>{10, 20, 30}));
    QCOMPARE(f.machine->status().state, Printer::UnknownState);
}

QTEST_GUILESS_MAIN(tst_VirtualMachine)
#include "tst_virtual_machine.moc"
