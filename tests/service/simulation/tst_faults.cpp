#include "fault_world.h"
#include "service/raw_client.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <rpcwire/json_text.h>
#include <service/simulation/fault_injector.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <QTest>

using namespace trovek;

/** The service fails as it is asked to. */
class tst_Faults : public QObject
{
    Q_OBJECT

private slots:
    void nothingFailsUnasked();
    void aLateAnswerComesBehindOthers();
    void aLateRequestIsTakenUpLate();
    void aLateRequestOfAClientThatHasGoneIsDropped();
    void lateBeyondTheDeadlineEndsTheLink();
    void aSilentRequestIsNotCarriedOut();
    void anErrorIsTheAnswer_data();
    void anErrorIsTheAnswer();
    void anOddAnswerIsGivenAsItIs();
    void theLinkEndsBeforeTheAnswer();
    void theLinkEndsAfterTheAnswer();
    void theLinkEndsAfterAnErrorAndAfterALongWait();
    void theCableIsPulledOutBefore();
    void theCableIsPulledOutInTheMiddle();
    void aFaultHappensAsOftenAsItIsSaid();
    void faultsComeInTheirOrder();
    void everyMethodCanFailAtOnce();
    void faultsBelongToTheService();
    void aSubscriptionFailsAndTheNextOneDoesNot();
    void whatCannotFailIsRefused_data();
    void whatCannotFailIsRefused();
    void noMoreThanAThousandWait();
    void whatWaitsIsListedAndCleared();
    void clearingTakesAnUploadsFailureBack();
};

namespace {

constexpr char kJobs[] = "get_jobs";

/** The numbers of the answers that come next. */
std::vector<int> answersOf(RawClient& client, int count)
{
    std::vector<int> ids;
    while (static_cast<int>(ids.size()) < count) {
        const Json::Value line = client.readLine();
        if (line.isNull())
            break;
        ids.push_back(line["id"].asInt());
    }
    return ids;
}

std::string refusalOf(Trovek& client, const SimulatedFault& fault)
{
    return errorOf([&] { client.simulateFault(fault); });
}

int targetOf(const FaultWorld& world)
{
    return world.printer()->toolheadTargetTemperature().at(0);
}

void heat(const FaultWorld& world, int celsius)
{
    world.client->setToolheadTemperature(world.key, Printer::RightToolhead, celsius);
}

} // namespace

void tst_Faults::nothingFailsUnasked()
{
    TestLog log;
    FaultWorld world;
    QVERIFY(world.client->simulatedFaults().empty());
    world.client->clearSimulatedFaults();
    world.client->home(world.key);
}

void tst_Faults::aLateAnswerComesBehindOthers()
{
    TestLog log;
    FaultWorld world;
    world.client->simulateFault(SimulatedFault::late(kJobs, 300));
    RawClient client(world.service.address());
    client.greet();

    client.call(1, kJobs);
    client.call(2, kJobs);
    client.call(3, kJobs);

    QCOMPARE(answersOf(client, 3), (std::vector<int>{2, 3, 1}));
}

void tst_Faults::aLateRequestIsTakenUpLate()
{
    TestLog log;
    FaultWorld world;
    const std::string file = world.service.writeFile(QStringLiteral("a.gcode"), longGCode());
    world.client->simulateFault(SimulatedFault::late("print", 300));
    RawClient client(world.service.address());
    client.greet();
    client.call(1, wire::method::kSubscribe);
    QVERIFY(client.readLine().isMember("result"));
    Json::Value params(Json::objectValue);
    params["machine"] = world.key.name();
    params["input_path"] = file;
    params["slicer_config"] = Json::Value(Json::objectValue);
    params["materials"].append("pla");
    params["skip_start_end"] = true;

    client.call(2, wire::method::kPrint, params);
    client.call(3, kJobs);

    const Json::Value jobs = client.readLine();
    QCOMPARE(jobs["id"].asInt(), 3);
    QCOMPARE(jobs["result"].size(), 0U);
    // The order of an answer and of what its job tells holds all the same.
    Json::Value line = client.readLine();
    QCOMPARE(line["id"].asInt(), 2);
    const int job = line["result"]["id"].asInt();
    line = client.readLine();
    QCOMPARE(line["method"].asString(), std::string("job_added"));
    QCOMPARE(line["params"]["id"].asInt(), job);
}

void tst_Faults::aLateRequestOfAClientThatHasGoneIsDropped()
{
    TestLog log;
    FaultWorld world;
    world.client->simulateFault(SimulatedFault::late(wire::method::kHome, 400));
    world.client->simulateFault(SimulatedFault::late(kJobs, 500));
    {
        RawClient leaving(world.service.address());
        leaving.greet();
        Json::Value params(Json::objectValue);
        params["machine"] = world.key.name();
        leaving.call(1, wire::method::kHome, params);
        leaving.call(2, wire::method::kGetJob);
        QVERIFY(leaving.readLine().isMember("error"));
    }
    // Behind the time at which the other request would have been taken up.
    RawClient client(world.service.address());
    client.greet();
    client.call(1, kJobs);
    QCOMPARE(client.readLine()["result"].size(), 0U);
}

void tst_Faults::lateBeyondTheDeadlineEndsTheLink()
{
    TestLog log;
    FaultWorld world;
    for (int i = 0; i < 2; ++i) {
        world.client->simulateFault(SimulatedFault::late("get_job", 5000));
        world.client->setDeadlineScale(0.001);
        QCOMPARE(thrownText([&] { world.client->jobFromID(1); }),
                 std::string("No answer to \"get_job\" within 10 ms"));
        QVERIFY(!world.client->isConnected());
        world.connect();
        QCOMPARE(errorOf([&] { world.client->jobFromID(1); }), std::string("UnknownJobError"));
    }
}

void tst_Faults::aSilentRequestIsNotCarriedOut()
{
    TestLog log;
    FaultWorld world;
    world.client->simulateFault(SimulatedFault::never("set_toolhead_temperature"));
    world.client->setDeadlineScale(0.001);

    QCOMPARE(thrownText([&] { heat(world, 200); }),
             std::string("No answer to \"set_toolhead_temperature\" within 10 ms"));

    world.connect();
    QCOMPARE(targetOf(world), 0);
    // A client that goes on waiting is served meanwhile.
    world.client->simulateFault(SimulatedFault::never(kJobs));
    RawClient client(world.service.address());
    client.greet();
    for (int id = 1; id <= 3; ++id)
        client.call(id, kJobs);
    QCOMPARE(answersOf(client, 2), (std::vector<int>{2, 3}));
}

void tst_Faults::anErrorIsTheAnswer_data()
{
    QTest::addColumn<QByteArray>("data");

    for (const char* const data :
         {R"({"name": "PortOpenError", "message": "No"})", "null", "5", "\"text\"", "[1, [2]]",
          R"({"name": 5})", R"({"error": {"deep": [null]}})"})
        QTest::newRow(data) << QByteArray(data);
}

void tst_Faults::anErrorIsTheAnswer()
{
    QFETCH(QByteArray, data);
    TestLog log;
    FaultWorld world;
    Json::Value value;
    QVERIFY(rpcwire::parseJson(data.toStdString(), &value, nullptr));
    world.client->simulateFault(
        SimulatedFault::error("set_toolhead_temperature", JsonRpcException("It burns", value)));

    try {
        heat(world, 200);
        QFAIL("Nothing thrown");
    } catch (const JsonRpcException& error) {
        QCOMPARE(error.message(), std::string("It burns"));
        QVERIFY(error.data() == value);
        QCOMPARE(error.code(), int(rpcwire::ServiceError));
    }
    QCOMPARE(targetOf(world), 0);
    heat(world, 200);
    QTRY_COMPARE(targetOf(world), 200);
}

void tst_Faults::anOddAnswerIsGivenAsItIs()
{
    TestLog log;
    FaultWorld world;
    world.client->simulateFault(SimulatedFault::answer("jog", Json::Value("soon")));
    world.client->simulateFault(
        SimulatedFault::answer("getuploadablemachines", Json::Value(Json::objectValue)));

    QCOMPARE(thrownText([&] { world.client->jog(world.key, Printer::ZAxis, 1, 100'000); }),
             std::string("Odd answer to jog: No JSON object around member \"id\""));
    QVERIFY(world.client->getUploadableMachines() == Json::Value(Json::objectValue));
    QVERIFY(world.client->isConnected());
    QVERIFY(eventsOf(*world.client, "jobAdded").empty());
}

void tst_Faults::theLinkEndsBeforeTheAnswer()
{
    TestLog log;
    FaultWorld world;
    RecordingTrovek other;
    other.connectToDaemon(world.service.address());
    world.client->simulateFault(SimulatedFault::dropBefore("set_toolhead_temperature"));

    QCOMPARE(thrownText([&] { heat(world, 200); }),
             std::string("Connection closed by the other side"));

    QVERIFY(!world.client->isConnected());
    // Nobody told the client, but it was carried out.
    QTRY_COMPARE(other.printerFromKey(world.key)->toolheadTargetTemperature().at(0), 200);
    QVERIFY(other.isConnected());
    world.connect();
    heat(world, 0);
    QTRY_COMPARE(targetOf(world), 0);
}

void tst_Faults::theLinkEndsAfterTheAnswer()
{
    TestLog log;
    FaultWorld world;
    world.client->simulateFault(SimulatedFault::dropAfter("set_toolhead_temperature"));

    heat(world, 200);

    QTRY_VERIFY(!world.client->isConnected());
    QTRY_COMPARE(world.client->events.back(), std::string("disconnected"));
    world.connect();
    QTRY_COMPARE(targetOf(world), 200);
}

void tst_Faults::theLinkEndsAfterAnErrorAndAfterALongWait()
{
    TestLog log;
    FaultWorld world;
    world.client->simulateFault(SimulatedFault::dropAfter("get_job"));
    QCOMPARE(errorOf([&] { world.client->jobFromID(7); }), std::string("UnknownJobError"));
    QTRY_VERIFY(!world.client->isConnected());

    world.connect();
    world.client->simulateFault(SimulatedFault::dropAfter("uploadfirmware"));
    const std::string path =
        world.client->downloadFirmware("fabrino_2", Printer::Fabrino2, FirmwareVersion("7.6"));
    world.client->uploadFirmware(world.key, path);
    QTRY_VERIFY(!world.client->isConnected());
    world.connect();
    QCOMPARE(world.printer()->firmwareVersion().str(), std::string("7.6"));
}

void tst_Faults::theCableIsPulledOutBefore()
{
    TestLog log;
    FaultWorld world;
    world.client->simulateFault(SimulatedFault::unplug("read_eeprom", world.key.name()));
    Printer* const printer = world.printer();

    QCOMPARE(errorOf([&] { world.client->readEeprom(printer); }),
             std::string("UnknownMachineError"));

    QTRY_VERIFY(world.printer() == nullptr);
    QTRY_COMPARE(world.client->ports().size(), std::size_t(1));
    // Where there is no cable, nothing is pulled out.
    world.client->simulateFault(SimulatedFault::unplug(kJobs, world.key.name()).always());
    world.client->simulateFault(SimulatedFault::unplug("get_job", world.key.name()));
    QCOMPARE(errorOf([&] { world.client->jobFromID(7); }), std::string("UnknownJobError"));
}

void tst_Faults::theCableIsPulledOutInTheMiddle()
{
    TestLog log;
    FaultWorld world(1);
    const std::string path =
        world.client->downloadFirmware("fabrino_2", Printer::Fabrino2, FirmwareVersion("7.6"));
    world.client->simulateFault(SimulatedFault::unplug("uploadfirmware", world.key.name(), 100));

    QCOMPARE(thrownText([&] { world.client->uploadFirmware(world.key, path); }),
             std::string("The machine was unplugged"));
    QTRY_VERIFY(world.printer() == nullptr);
}

void tst_Faults::aFaultHappensAsOftenAsItIsSaid()
{
    TestLog log;
    FaultWorld world;
    const auto fault =
        SimulatedFault::error("set_toolhead_temperature", wire::makeError("SomeError", "No"));
    const auto heating = [&] {
        return errorOf([&] { heat(world, 50); });
    };
    world.client->simulateFault(fault.forTimes(3));
    for (int i = 0; i < 3; ++i)
        QCOMPARE(heating(), std::string("SomeError"));
    QCOMPARE(heating(), std::string());

    world.client->simulateFault(fault.always());
    for (int i = 0; i < 20; ++i)
        QCOMPARE(heating(), std::string("SomeError"));
    world.client->clearSimulatedFaults();
    QCOMPARE(heating(), std::string());
}

void tst_Faults::faultsComeInTheirOrder()
{
    TestLog log;
    FaultWorld world;
    const auto named = [](const char* method, const char* name) {
        return SimulatedFault::error(method, wire::makeError(name, "No"));
    };
    world.client->simulateFault(named("get_job", "First").forTimes(2));
    world.client->simulateFault(named("home", "OfAnother"));
    world.client->simulateFault(named("*", "OfAll"));
    world.client->simulateFault(named("get_job", "Last"));
    std::string names;
    for (int i = 0; i < 5; ++i)
        names += errorOf([&] { world.client->jobFromID(7); }) + ' ';
    QCOMPARE(names, std::string("First First OfAll Last UnknownJobError "));
    QCOMPARE(errorOf([&] { world.client->home(world.key); }), std::string("OfAnother"));
}

void tst_Faults::everyMethodCanFailAtOnce()
{
    TestLog log;
    FaultWorld world;
    world.client->simulateFault(
        SimulatedFault::error("*", wire::makeError("SomeError", "No")).always());

    QCOMPARE(errorOf([&] { world.client->jobFromID(7); }), std::string("SomeError"));
    QCOMPARE(errorOf([&] { world.client->home(world.key); }), std::string("SomeError"));
    QCOMPARE(errorOf([&] { world.client->getUploadableMachines(); }), std::string("SomeError"));
    // There is a way in and a way back.
    world.connect();
    QCOMPARE(world.client->simulatedMachines().size(), 6U);
    QCOMPARE(world.client->simulatedFaults().size(), std::size_t(1));
    world.client->clearSimulatedFaults();
    QCOMPARE(errorOf([&] { world.client->jobFromID(7); }), std::string("UnknownJobError"));
}

void tst_Faults::faultsBelongToTheService()
{
    TestLog log;
    FaultWorld world;
    world.client->simulateFault(
        SimulatedFault::error("get_job", wire::makeError("SomeError", "No")).forTimes(2));
    RecordingTrovek other;
    other.connectToDaemon(world.service.address());

    QCOMPARE(errorOf([&] { other.jobFromID(7); }), std::string("SomeError"));
    world.client.reset();
    QCOMPARE(errorOf([&] { other.jobFromID(7); }), std::string("SomeError"));
    QCOMPARE(errorOf([&] { other.jobFromID(7); }), std::string("UnknownJobError"));
}

void tst_Faults::aSubscriptionFailsAndTheNextOneDoesNot()
{
    TestLog log;
    FaultWorld world;
    world.client->simulateFault(
        SimulatedFault::error("subscribe", wire::makeError("SomeError", "Not today")));
    world.client->simulateFault(SimulatedFault::dropBefore("subscribe"));
    world.client->simulateFault(SimulatedFault::answer("subscribe", Json::Value(5)));

    RecordingTrovek other;
    const auto connecting = [&] {
        return thrownText([&] { other.connectToDaemon(world.service.address()); });
    };
    QCOMPARE(connecting(), std::string("Not today"));
    QCOMPARE(connecting(), std::string("Connection closed by the other side"));
    QCOMPARE(connecting(), std::string("Odd answer to subscribe: no list of ports"));
    QVERIFY(!other.isConnected());
    QCOMPARE(connecting(), std::string("nothing thrown"));
    QVERIFY(other.isConnected());
}

void tst_Faults::whatCannotFailIsRefused_data()
{
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<QByteArray>("expected");

    const QByteArray invalid("InvalidArgumentError");
    for (const char* const method :
         {"", "hello", "nothing", "Print", "simulate_fault", "simulate_no_faults",
          "simulated_faults", "simulate_plug_in", "simulated_machines"}) {
        QTest::addRow("method \"%s\"", method)
            << QByteArray(R"({"fault": {"kind": "never", "method": ")") + method + "\"}}"
            << invalid;
    }
    const auto row = [](const char* title, const char* fault, const QByteArray& expected) {
        QTest::newRow(title) << QByteArray(R"({"fault": )") + fault + "}" << expected;
    };
    QTest::newRow("no fault") << QByteArray("{}") << invalid;
    row("no object", "5", invalid);
    row("an empty one", "{}", invalid);
    row("an unknown kind", R"({"method": "jog", "kind": "sometimes"})", invalid);
    row("less than no time", R"({"method": "jog", "kind": "never", "times": -1})", invalid);
    row("too many times", R"({"method": "jog", "kind": "never", "times": 1000001})", invalid);
    row("before the request", R"({"method": "jog", "kind": "late", "delay_ms": -1})", invalid);
    row("for ever late", R"({"method": "jog", "kind": "late", "delay_ms": 600001})", invalid);
    row("no subscription any more", R"({"method": "subscribe", "kind": "never", "times": 0})",
        invalid);
    row("a cable of an unknown machine",
        R"({"method": "jog", "kind": "unplug", "machine": "nobody"})", "UnknownMachineError");
    row("a cable of an archetype",
        R"({"method": "jog", "kind": "unplug", "machine": "archetype_fabrino_2"})",
        "UnknownMachineError");
}

void tst_Faults::whatCannotFailIsRefused()
{
    QFETCH(QByteArray, params);
    QFETCH(QByteArray, expected);
    TestLog log;
    FaultWorld world;
    Json::Value value;
    QVERIFY(rpcwire::parseJson(params.toStdString(), &value, nullptr));
    RawClient client(world.service.address());
    client.greet();

    client.call(1, wire::method::kSimulateFault, value);

    QCOMPARE(client.readLine()["error"]["data"]["name"].asString(), expected.toStdString());
    QVERIFY(world.client->simulatedFaults().empty());
}

void tst_Faults::noMoreThanAThousandWait()
{
    TestLog log;
    FaultWorld world;
    const SimulatedFault fault = SimulatedFault::late("get_job", 0);
    for (int i = 0; i < service::FaultInjector::kFaultsAtMost; ++i)
        world.client->simulateFault(fault);
    QCOMPARE(refusalOf(*world.client, fault), std::string("InvalidArgumentError"));
    QCOMPARE(errorOf([&] { world.client->jobFromID(7); }), std::string("UnknownJobError"));
    QCOMPARE(refusalOf(*world.client, fault), std::string());
}

void tst_Faults::whatWaitsIsListedAndCleared()
{
    TestLog log;
    FaultWorld world;
    const std::vector<SimulatedFault> asked = {
        SimulatedFault::late("get_job", 5).forTimes(3),
        SimulatedFault::error("home", JsonRpcException("No", Json::Value(5))),
        SimulatedFault::unplug("*", world.key.name(), 9).always()};
    for (const SimulatedFault& fault : asked)
        world.client->simulateFault(fault);
    QCOMPARE(errorOf([&] { world.client->jobFromID(7); }), std::string("UnknownJobError"));

    const std::vector<SimulatedFault> waiting = world.client->simulatedFaults();

    QCOMPARE(waiting.size(), std::size_t(3));
    QCOMPARE(waiting[0].times, 2);
    for (std::size_t i = 1; i < asked.size(); ++i)
        QVERIFY(wire::toJson(waiting[i]) == wire::toJson(asked[i]));
    world.client->clearSimulatedFaults();
    QVERIFY(world.client->simulatedFaults().empty());
    world.client->home(world.key);
}

void tst_Faults::clearingTakesAnUploadsFailureBack()
{
    TestLog log;
    FaultWorld world;
    const std::string path =
        world.client->downloadFirmware("fabrino_2", Printer::Fabrino2, FirmwareVersion("7.6"));
    world.client->simulateUploadFailure(world.key.name(), 50);
    world.client->clearSimulatedFaults();
    world.client->uploadFirmware(world.key, path);
    QTRY_VERIFY(world.printer() != nullptr && world.printer()->firmwareVersion().str() == "7.6");

    for (const int percent : {-1, 101}) {
        QCOMPARE(errorOf([&] { world.client->simulateUploadFailure(world.key.name(), percent); }),
                 std::string("InvalidArgumentError"));
    }
    QCOMPARE(errorOf([&] { world.client->simulateUploadFailure("nobody", 50); }),
             std::string("UnknownMachineError"));
}

QTEST_GUILESS_MAIN(tst_Faults)
#include "tst_faults.moc"
