#include "service_world.h"
#include "support/test_log.h"

#include <trovek/asynchronous_method.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>

using namespace trovek;

using Events = std::vector<std::string>;

class tst_ServiceJobs : public QObject
{
    Q_OBJECT

private slots:
    void printsToTheEndInOrder();
    void tellsAJobsChangesAtMostTenTimesASecond();
    void knowsStageAndTimeLeft();
    void startCodeHeatsAndEndCodeCools();
    void refusesASecondPrint();
    void refusesAPrintOnAMachineThatJogs();
    void printsOnAMachineThatConnectsWhenItAnswers();
    void aPrintWaitsForAMachineThatConnects();
    void refusesToMoveAndToHeatAMachineThatConnects();
    void cancelingAPrintFreesTheMachine();
    void cancelingAConcludedJobIsNoError();
    void unknownJobsAreAnError();
    void failsClearly_data();
    void failsClearly();
    void refusesInputs_data();
    void refusesInputs();
    void jogsUntilCanceled();
    void jogsUntilTheLimit();
    void aClientThatVanishesEndsItsJogs();
    void aClientThatVanishesDoesNotEndItsPrints();
    void refusesJogs_data();
    void refusesJogs();
    void jogsAWarmExtruder();
    void homesAsAJob();
    void calibratesACubioAndAnswersWhenDone();
    void calibratesNothingElse();
    void aCanceledCalibrationIsAnError();
    void servesOthersWhileItCalibrates();
    void listsJobs();
};

namespace {

const MachineName kMachine(ServiceWorld::kMachine);

Printer* printer(Trovek& client, const MachineName& key = kMachine)
{
    return client.printerFromKey(key);
}

/** A connected client with an idle machine. */
struct Fixture
{
    explicit Fixture(double timeScale = ServiceWorld::kFast)
        : world(timeScale)
    {
        world.start();
        client.connectToDaemon(world.address());
        ServiceWorld::openMachine(client);
        client.events.clear();
    }

    std::string file(const QByteArray& text = squareGCode())
    {
        return world.writeFile(QStringLiteral("part.gcode"), text);
    }

    int print(const std::string& path, bool skipStartEnd = true)
    {
        return client.print(kMachine, path, {}, {"pla"}, skipStartEnd);
    }

    TestLog log;
    ServiceWorld world;
    RecordingTrovek client;
};

} // namespace

void tst_ServiceJobs::printsToTheEndInOrder()
{
    Fixture f;
    std::vector<int> progress;
    f.client.onEvent = [&](const std::string& event) {
        if (event.compare(0, 10, "jobChanged") == 0)
            progress.push_back(f.client.jobFromID(std::stoi(event.substr(11))).progress());
    };

    const int job = f.print(f.file());
    QVERIFY2(f.client.events.empty(), "the answer comes before everything that is told of the job");
    QVERIFY(waitForConclusion(f.client, job));
    QTRY_VERIFY(!f.client.events.empty() &&
                f.client.events.back() == "jobConcluded " + std::to_string(job));

    const Job done = f.client.jobFromID(job);
    QCOMPARE(done.conclusion(), JobEnded);
    QCOMPARE(done.progress(), 100);
    QCOMPARE(done.name(), std::string("part"));
    QCOMPARE(done.kind(), std::string("print"));
    QCOMPARE(done.machine(), kMachine);
    QCOMPARE(done.failure(), std::string());
    const std::string number = std::to_string(job);
    QCOMPARE(f.client.events.front(), "jobAdded " + number);
    QCOMPARE(f.client.events[f.client.events.size() - 2], "jobChanged " + number);
    QCOMPARE(eventsOf(f.client, "jobAdded").size(), std::size_t(1));
    QCOMPARE(eventsOf(f.client, "jobConcluded").size(), std::size_t(1));
    QVERIFY(std::is_sorted(progress.begin(), progress.end()));
    QCOMPARE(progress.back(), 100);
    QTRY_COMPARE(printer(f.client)->state(), Printer::Idle);
    QCOMPARE(printer(f.client)->toolheadTargetTemperature().at(0), 0);
}

void tst_ServiceJobs::tellsAJobsChangesAtMostTenTimesASecond()
{
    // Slow enough for a second and more of printing.
    Fixture f(400);
    QElapsedTimer clock;
    clock.start();

    const int job = f.print(f.file());
    QVERIFY(waitForConclusion(f.client, job));
    const qint64 elapsed = clock.elapsed();
    QTRY_COMPARE(eventsOf(f.client, "jobConcluded").size(), std::size_t(1));

    const auto changes = static_cast<qint64>(eventsOf(f.client, "jobChanged").size());
    QVERIFY2(elapsed > 500, qPrintable(QString::number(elapsed)));
    QVERIFY2(changes > 3, qPrintable(QString::number(changes)));
    QVERIFY2(changes <= 2 + elapsed / 100, qPrintable(QString::number(changes)));
}

void tst_ServiceJobs::knowsStageAndTimeLeft()
{
    Fixture f(10);
    std::vector<std::string> stages;
    const int job = f.print(f.file(longGCode()));

    QTRY_COMPARE(f.client.jobFromID(job).stage(), std::string("Heating"));
    QTRY_COMPARE(printer(f.client)->state(), Printer::Running);
    QTRY_COMPARE(printer(f.client)->toolheadTargetTemperature().at(0), 210);
    const Job heating = f.client.jobFromID(job);
    QCOMPARE(heating.progress(), 0);
    // 20,000 rounds of 220 mm at 20 mm a second.
    QVERIFY2(heating.secondsLeft() > 200000, qPrintable(QString::number(heating.secondsLeft())));
    QVERIFY2(heating.secondsLeft() < 250000, qPrintable(QString::number(heating.secondsLeft())));
}

void tst_ServiceJobs::startCodeHeatsAndEndCodeCools()
{
    Fixture f;
    // Without start code this would be pushed through a cold extruder.
    const std::string file = f.file("G90\nG92 E0\nG1 X50 Y50 Z1 E5 F1200\n");

    const int bare = f.print(file, true);
    QVERIFY(waitForConclusion(f.client, bare));
    QCOMPARE(f.client.jobFromID(bare).conclusion(), JobFailed);
    QTRY_COMPARE(printer(f.client)->state(), Printer::Idle);
    const int dressed = f.print(file, false);
    QVERIFY(waitForConclusion(f.client, dressed));

    QCOMPARE(f.client.jobFromID(dressed).failure(), std::string());
    QCOMPARE(f.client.jobFromID(dressed).conclusion(), JobEnded);
}

void tst_ServiceJobs::refusesASecondPrint()
{
    Fixture f(10);
    const std::string file = f.file(longGCode());
    const int first = f.print(file);
    f.client.events.clear();

    QCOMPARE(errorOf([&] { f.print(file); }), std::string("PrintQueuedException"));

    QCOMPARE(f.client.jobFromID(first).conclusion(), JobNotConcluded);
    QCOMPARE(errorOf([&] { f.client.jobFromID(first + 1); }), std::string("UnknownJobError"));
    ServiceWorld::openMachine(f.client, ServiceWorld::kOtherPort);
    QVERIFY(f.client.print(MachineName(ServiceWorld::kOtherMachine), file, {}, {"pla", "pla"},
                           true) > first);
}

void tst_ServiceJobs::refusesAPrintOnAMachineThatJogs()
{
    Fixture f;
    f.client.jog(kMachine, Printer::XAxis, 1, 100000);

    QCOMPARE(errorOf([&] { f.print(f.file()); }), std::string("PrintQueuedException"));
}

void tst_ServiceJobs::printsOnAMachineThatConnectsWhenItAnswers()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    client.connectToPort(client.portFromName(ServiceWorld::kPort));
    const std::string file = world.writeFile(QStringLiteral("a.gcode"), squareGCode());

    const int job = client.print(kMachine, file, {}, {"pla"}, true);

    QVERIFY(waitForConclusion(client, job));
    QCOMPARE(client.jobFromID(job).conclusion(), JobEnded);
}

void tst_ServiceJobs::aPrintWaitsForAMachineThatConnects()
{
    TestLog log;
    ServiceWorld world(0.01);
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    client.connectToPort(client.portFromName(ServiceWorld::kPort));
    const std::string file = world.writeFile(QStringLiteral("a.gcode"), squareGCode());

    const int job = client.print(kMachine, file, {}, {"pla"}, true);

    QTRY_COMPARE(client.jobFromID(job).stage(), std::string("Connecting"));
    QCOMPARE(errorOf([&] { client.print(kMachine, file, {}, {"pla"}, true); }),
             std::string("PrintQueuedException"));
    client.cancelJob(job);
    QCOMPARE(client.jobFromID(job).conclusion(), JobCanceled);
}

void tst_ServiceJobs::refusesToMoveAndToHeatAMachineThatConnects()
{
    TestLog log;
    ServiceWorld world(0.01);
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());
    client.connectToPort(client.portFromName(ServiceWorld::kPort));

    QCOMPARE(errorOf([&] { client.home(kMachine); }), std::string("MachineStateException"));
    QCOMPARE(errorOf([&] { client.setToolheadTemperature(kMachine, Printer::RightToolhead, 100); }),
             std::string("MachineStateException"));
}

void tst_ServiceJobs::cancelingAPrintFreesTheMachine()
{
    Fixture f(10);
    const std::string file = f.file(longGCode());
    const int first = f.print(file);
    QTRY_COMPARE(printer(f.client)->toolheadTargetTemperature().at(0), 210);

    f.client.cancelJob(first);
    const int second = f.print(file);
    f.client.cancelJob(second);

    QCOMPARE(f.client.jobFromID(first).conclusion(), JobCanceled);
    QTRY_COMPARE(eventsOf(f.client, "jobConcluded").size(), std::size_t(2));
    QTRY_COMPARE(printer(f.client)->state(), Printer::Idle);
    QTRY_COMPARE(printer(f.client)->toolheadTargetTemperature().at(0), 0);
}

void tst_ServiceJobs::cancelingAConcludedJobIsNoError()
{
    Fixture f;
    const int job = f.print(f.file());
    QVERIFY(waitForConclusion(f.client, job));

    f.client.cancelJob(job);

    QCOMPARE(f.client.jobFromID(job).conclusion(), JobEnded);
}

void tst_ServiceJobs::unknownJobsAreAnError()
{
    Fixture f;

    QCOMPARE(errorOf([&] { f.client.jobFromID(4711); }), std::string("UnknownJobError"));
    QCOMPARE(errorOf([&] { f.client.cancelJob(4711); }), std::string("UnknownJobError"));
    QCOMPARE(errorOf([&] { f.client.cancelJob(Job::kInvalidID); }), std::string("UnknownJobError"));
}

void tst_ServiceJobs::failsClearly_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expectedFailure");

    QTest::newRow("an empty model")
        << QStringLiteral("a.stl") << QByteArray() << QStringLiteral("The model is empty");
    QTest::newRow("an empty model in capitals")
        << QStringLiteral("A.STL") << QByteArray() << QStringLiteral("The model is empty");
    QTest::newRow("an empty file")
        << QStringLiteral("a.gcode") << QByteArray() << QStringLiteral("The file holds no G-code");
    QTest::newRow("no G-code at all") << QStringLiteral("a.gcode") << QByteArray(5000, '\x01')
                                      << QStringLiteral("The file holds no G-code");
    QTest::newRow("a target above the limit")
        << QStringLiteral("a.gcode") << QByteArray("M104 S281\n") << QStringLiteral("Line 1: ");
    QTest::newRow("cold extrusion")
        << QStringLiteral("a.gcode") << QByteArray("G90\nG92 E0\nG1 X9 E5 F1200\n")
        << QStringLiteral("Line 3: ");
    QTest::newRow("extruding before it is warm")
        << QStringLiteral("a.gcode") << QByteArray("M104 S220\nG92 E0\nG1 X9 E5 F1200\n")
        << QStringLiteral("Cold extrusion refused: the extruder has ");
    QTest::newRow("outside of the build volume")
        << QStringLiteral("a.gcode") << QByteArray("G90\nG1 X900 F1200\n")
        << QStringLiteral("Line 2: ");
    QTest::newRow("a tool that it does not have")
        << QStringLiteral("a.gcode") << QByteArray("M104 T1 S200\n") << QStringLiteral("Line 1: ");
}

void tst_ServiceJobs::failsClearly()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, text);
    QFETCH(QString, expectedFailure);
    // So slow that the extruder is still cold when filament is to be pushed.
    Fixture f(100);

    const int job = f.print(f.world.writeFile(name, text));
    QVERIFY(waitForConclusion(f.client, job));

    const Job failed = f.client.jobFromID(job);
    QCOMPARE(failed.conclusion(), JobFailed);
    QVERIFY2(toQString(failed.failure()).startsWith(expectedFailure), failed.failure().c_str());
    QTRY_COMPARE(eventsOf(f.client, "jobConcluded").size(), std::size_t(1));
    QTRY_COMPARE(printer(f.client)->state(), Printer::Idle);
}

void tst_ServiceJobs::refusesInputs_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("missing") << QStringLiteral("nothing.gcode");
    QTest::newRow("a folder") << QStringLiteral(".");
    QTest::newRow("a link to a folder") << QStringLiteral("link.gcode");
    QTest::newRow("a link to nothing") << QStringLiteral("broken.gcode");
}

void tst_ServiceJobs::refusesInputs()
{
    QFETCH(QString, name);
    Fixture f;
    const auto linkTo = [&](const QString& target, const QString& link) {
        return QFile::link(target, toQString(f.world.path(link)));
    };
    QVERIFY(linkTo(toQString(f.world.path(QStringLiteral("."))), QStringLiteral("link.gcode")));
    QVERIFY(linkTo(QStringLiteral("/nowhere"), QStringLiteral("broken.gcode")));

    QCOMPARE(errorOf([&] { f.print(f.world.path(name)); }), std::string("FileAccessError"));

    QVERIFY(eventsOf(f.client, "job").empty());
}

void tst_ServiceJobs::jogsUntilCanceled()
{
    Fixture f(10);
    const int job = f.client.jog(kMachine, Printer::XAxis, -2000, 1000000000);
    QTRY_COMPARE(printer(f.client)->state(), Printer::Running);
    QCOMPARE(errorOf([&] { f.client.jog(kMachine, Printer::YAxis, 1, 1000); }),
             std::string("MachineStateException"));
    QCOMPARE(f.client.jobFromID(job).kind(), std::string("jog"));

    f.client.cancelJob(job);
    const int next = f.client.jog(kMachine, Printer::YAxis, 1, 100000);

    QCOMPARE(f.client.jobFromID(job).conclusion(), JobCanceled);
    QCOMPARE(f.client.jobFromID(next).conclusion(), JobNotConcluded);
}

void tst_ServiceJobs::jogsUntilTheLimit()
{
    Fixture f;
    const int job = f.client.jog(kMachine, Printer::XAxis, 1, 300);
    QElapsedTimer clock;
    clock.start();

    QVERIFY(waitForConclusion(f.client, job));

    QCOMPARE(f.client.jobFromID(job).conclusion(), JobEnded);
    QVERIFY2(clock.elapsed() > 200, "a limit counts milliseconds of the clock, whatever the scale");
}

void tst_ServiceJobs::aClientThatVanishesEndsItsJogs()
{
    Fixture f(10);
    RecordingTrovek other;
    other.connectToDaemon(f.world.address());
    const int job = other.jog(kMachine, Printer::XAxis, 1, 1000000000);
    QTRY_COMPARE(printer(f.client)->state(), Printer::Running);

    other.disconnectFromDaemon();

    QTRY_COMPARE(f.client.jobFromID(job).conclusion(), JobCanceled);
    QTRY_COMPARE(printer(f.client)->state(), Printer::Idle);
}

void tst_ServiceJobs::aClientThatVanishesDoesNotEndItsPrints()
{
    Fixture f(1000);
    int job = 0;
    {
        RecordingTrovek other;
        other.connectToDaemon(f.world.address());
        job = other.print(kMachine, f.file(), {}, {"pla"}, true);
    }

    QVERIFY(waitForConclusion(f.client, job));

    QCOMPARE(f.client.jobFromID(job).conclusion(), JobEnded);
}

void tst_ServiceJobs::refusesJogs_data()
{
    QTest::addColumn<int>("axis");
    QTest::addColumn<int>("distance");
    QTest::addColumn<int>("limitMs");
    QTest::addColumn<QString>("expectedError");

    const QString invalid = QStringLiteral("InvalidArgumentError");
    QTest::newRow("no distance") << 2 << 0 << 1000 << invalid;
    QTest::newRow("no time") << 2 << 1 << 0 << invalid;
    QTest::newRow("a negative limit") << 2 << 1 << -5 << invalid;
    QTest::newRow("a negative axis") << -1 << 1 << 1000 << invalid;
    QTest::newRow("an axis that there is not") << 5 << 1 << 1000 << invalid;
    QTest::newRow("an extruder that it does not have") << 1 << 1 << 1000 << invalid;
    QTest::newRow("a cold extruder") << 0 << 1 << 1000 << QStringLiteral("ColdExtrusionError");
    QTest::newRow("a cold extruder backwards")
        << 0 << -1 << 1000 << QStringLiteral("ColdExtrusionError");
    QTest::newRow("the greatest distance") << 4 << 2147483647 << 1000 << QString();
    QTest::newRow("the smallest distance") << 4 << (-2147483647 - 1) << 2147483647 << QString();
}

void tst_ServiceJobs::refusesJogs()
{
    QFETCH(int, axis);
    QFETCH(int, distance);
    QFETCH(int, limitMs);
    QFETCH(QString, expectedError);
    Fixture f;

    const std::string error = errorOf(
        [&] { f.client.jog(kMachine, static_cast<Printer::Axis>(axis), distance, limitMs); });

    QCOMPARE(toQString(error), expectedError);
}

void tst_ServiceJobs::jogsAWarmExtruder()
{
    Fixture f(100);
    f.client.setToolheadTemperature(kMachine, Printer::RightToolhead, 230);
    QTRY_COMPARE(printer(f.client)->toolTemperature().at(0), 230);

    const int job = f.client.jog(kMachine, Printer::RightExtruderAxis, 2000, 1000000000);
    // A user may change the temperature while filament is loaded.
    f.client.setToolheadTemperature(kMachine, Printer::RightToolhead, 235);

    QTRY_COMPARE(printer(f.client)->toolTemperature().at(0), 235);
    QCOMPARE(f.client.jobFromID(job).conclusion(), JobNotConcluded);
    f.client.cancelJob(job);
    QCOMPARE(printer(f.client)->toolheadTargetTemperature().at(0), 235);
}

void tst_ServiceJobs::homesAsAJob()
{
    Fixture f(100);
    f.client.home(kMachine);
    QCOMPARE(errorOf([&] { f.client.home(kMachine); }), std::string("MachineStateException"));

    QTRY_COMPARE(eventsOf(f.client, "jobConcluded").size(), std::size_t(1));
    const int job = std::stoi(f.client.events.back().substr(13));
    QCOMPARE(f.client.jobFromID(job).kind(), std::string("home"));
    QCOMPARE(f.client.jobFromID(job).conclusion(), JobEnded);
}

void tst_ServiceJobs::calibratesACubioAndAnswersWhenDone()
{
    Fixture f(100);
    f.client.simulatePlugIn("virtual_cubio_single");
    QTRY_VERIFY(f.client.ports().size() == 3);
    ServiceWorld::openMachine(f.client, "virtual5");

    f.client.cboCalibration(MachineName("virtual_cubio_single"));

    QTRY_COMPARE(eventsOf(f.client, "jobConcluded").size(), std::size_t(1));
    QTRY_COMPARE(printer(f.client, MachineName("virtual_cubio_single"))->state(), Printer::Idle);
}

void tst_ServiceJobs::calibratesNothingElse()
{
    Fixture f;

    QCOMPARE(errorOf([&] { f.client.cboCalibration(kMachine); }), std::string("NotOfferedError"));
}

namespace {

/** A calibration that can be waited for. */
class Calibration : public AsynchronousMethod
{
public:
    Calibration()
        : AsynchronousMethod(wire::method::kCboCalibration)
    {
        setParameter("machine", "virtual_cubio_single");
    }
    ~Calibration() override = default;

    bool done = false;
    Json::Value error;

protected:
    void handleResponse(const Json::Value&) override { done = true; }
    void handleErrorResponse(const Json::Value& answer) override { error = answer; }
};

void openCubio(Fixture& f)
{
    f.client.simulatePlugIn("virtual_cubio_single");
    QTRY_VERIFY(f.client.ports().size() == 3);
    ServiceWorld::openMachine(f.client, "virtual5");
}

} // namespace

void tst_ServiceJobs::aCanceledCalibrationIsAnError()
{
    Fixture f(10);
    openCubio(f);
    Calibration calibration;
    calibration.issue(f.client);
    QTRY_COMPARE(eventsOf(f.client, "jobAdded").size(), std::size_t(1));

    f.client.cancelJob(std::stoi(eventsOf(f.client, "jobAdded").front().substr(9)));

    QTRY_VERIFY(calibration.error.isObject());
    QCOMPARE(calibration.error["message"].asString(), std::string("The calibration was canceled"));
    QVERIFY(!calibration.done);
}

void tst_ServiceJobs::servesOthersWhileItCalibrates()
{
    Fixture f(10);
    openCubio(f);
    Calibration calibration;
    calibration.issue(f.client);
    QTRY_COMPARE(eventsOf(f.client, "jobAdded").size(), std::size_t(1));
    RecordingTrovek other;
    other.connectToDaemon(f.world.address());

    f.client.home(kMachine);
    QCOMPARE(other.simulatedMachines().size(), 6U);

    QVERIFY(!calibration.done);
    QTRY_VERIFY(calibration.done);
}

void tst_ServiceJobs::listsJobs()
{
    Fixture f;
    const int first = f.client.jog(kMachine, Printer::XAxis, 1, 1000000000);
    f.client.cancelJob(first);
    const int second = f.client.jog(kMachine, Printer::YAxis, 1, 1000000000);

    class GetJobs : public AsynchronousMethod
    {
    public:
        GetJobs()
            : AsynchronousMethod(wire::method::kGetJobs)
        {}
        ~GetJobs() override = default;
        Json::Value jobs;

    protected:
        void handleResponse(const Json::Value& response) override { jobs = response; }
        void handleErrorResponse(const Json::Value&) override {}
    } request;
    request.issue(f.client);

    QTRY_COMPARE(request.jobs.size(), 2U);
    QCOMPARE(request.jobs[0]["id"].asInt(), first);
    QCOMPARE(request.jobs[0]["conclusion"].asInt(), int(JobCanceled));
    QCOMPARE(request.jobs[1]["id"].asInt(), second);
    QCOMPARE(request.jobs[1]["conclusion"].asInt(), int(JobNotConcluded));
}

QTEST_GUILESS_MAIN(tst_ServiceJobs)
#include "tst_service_jobs.moc"
