#include "every_operation.h"
#include "recording_trovek.h"
#include "support/scripted_service.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <rpcwire/json_text.h>
#include <trovek/wire.h>

#include <QTest>

using namespace trovek;

/** What every operation sends and gives back. */
class tst_Trovek : public QObject
{
    Q_OBJECT

private slots:
    void everyOperationSendsItsRequest_data() { addEveryOperation(); }
    void everyOperationSendsItsRequest();
    void oddAnswersAreRefused_data();
    void oddAnswersAreRefused();
    void jobsHaveTheirIDs();
    void aJobTellsWhatTheServiceSays();
    void cancelingAConcludedJobIsNoError();
    void onboardMemoryGoesThereAndBack();
    void backupsAreListedAndRead();
    void onboardMemoryNeedsAPrinter();
    void firmwareVersionsAreSorted();
    void configurationChecksAreTheServices();
    void machinesAreListedAsTheServiceSays();
    void callsAreCounted();
};

void tst_Trovek::everyOperationSendsItsRequest()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, params);
    TestLog log;
    ScriptedService service;
    addWhatEveryOperationNeeds(service);
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.clearRequests();

    operation(client);

    QCOMPARE(service.requests().size(), std::size_t(1));
    QCOMPARE(service.requests()[0].method, method.toStdString());
    QCOMPARE(rpcwire::toJsonLine(service.requests()[0].params), rpcwire::toJsonLine(json(params)));
    QCOMPARE(client.story(), std::string());
}

void tst_Trovek::oddAnswersAreRefused_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QByteArray>("refusal");

    const auto row = [](const char* method, const char* answer, const char* reason,
                        const Operation& operation) {
        QTest::addRow("%s %s", method, answer)
            << operation << QByteArray(method) << QByteArray(answer)
            << "Odd answer to " + QByteArray(method) + ": " + reason;
    };
    const Operation print = [](Trovek& t) {
        t.print(kLeft, "", SlicerConfiguration(), {}, false);
    };
    row("print", "5", "No JSON object around member \"id\"", print);
    row("print", "null", "No JSON object around member \"id\"", print);
    row("print", "{}", "Missing member \"id\"", print);
    row("print", R"({"id": "12"})", "Member \"id\" is not an integer of 32 bits", print);
    row("print_to_file", "[]", "No JSON object around member \"id\"",
        [](Trovek& t) { t.printToFile(kLeft, "", "", SlicerConfiguration(), {}, false, "x3g"); });
    row("slice", "{}", "Missing member \"id\"",
        [](Trovek& t) { t.slice(kLeft, "", "", SlicerConfiguration(), {}, false); });
    row("jog", R"({"id": 1.5})", "Member \"id\" is not an integer of 32 bits",
        [](Trovek& t) { t.jog(kLeft, Printer::XAxis, 1, 1); });
    row("get_job", "[]", "Not a JSON object: job", [](Trovek& t) { t.jobFromID(1); });
    row("get_job", "{}", "Missing member \"id\"", [](Trovek& t) { t.jobFromID(1); });
    row("read_eeprom", "[]", "not a JSON object", [](Trovek& t) {
        Printer printer(ScriptedService::machine("left", Printer::Fabrino2));
        t.readEeprom(&printer);
    });
    row("read_eeprom_backup", "5", "not a JSON object", [](Trovek& t) {
        Printer printer(ScriptedService::machine("left", Printer::Fabrino2));
        t.readEepromBackup(&printer, "7");
    });
    const Operation backups = [](Trovek& t) {
        Printer printer(ScriptedService::machine("left", Printer::Fabrino2));
        t.eepromBackups(&printer);
    };
    row("list_eeprom_backups", "{}", "not a list", backups);
    row("list_eeprom_backups", "[5]", "Not a JSON object: backup", backups);
    row("list_eeprom_backups", R"([{"time": 5}])", "Missing member \"name\"", backups);
    row("list_eeprom_backups", R"([{"name": "7"}])", "Missing member \"time\"", backups);
    row("list_eeprom_backups", R"([{"name": "7", "time": "now"}])",
        "Member \"time\" is not an integer of 64 bits", backups);
    row("list_eeprom_backups", R"([{"name": "", "time": 5}])", "Member \"name\" is empty", backups);
    row("getmachineversions", "{}", "not a list", [](Trovek& t) { t.getMachineVersions("a", 1); });
    row("downloadfirmware", "{}", "not a path",
        [](Trovek& t) { t.downloadFirmware("a", 1, FirmwareVersion("7.2")); });
    const Operation faults = [](Trovek& t) {
        t.simulatedFaults();
    };
    row("simulated_faults", "{}", "not a list", faults);
    row("simulated_faults", "[5]", "No JSON object around member \"method\"", faults);
    row("simulated_faults", R"([{"method": "print", "kind": "new"}])",
        "Member \"kind\" is no kind of fault: new", faults);
    for (const char* const answer : {"3", "-1", "\"1\"", "true", "null"})
        row("strandel_config_version_check", answer, "not 0, 1 or 2",
            [](Trovek& t) { t.strandelConfigVersionCheck(Json::Value()); });
}

void tst_Trovek::oddAnswersAreRefused()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, method);
    QFETCH(QByteArray, answer);
    QFETCH(QByteArray, refusal);
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.answerNext(method.toStdString(), json(answer));

    QCOMPARE(thrownText([&] { operation(client); }), refusal.toStdString());
    QVERIFY(client.isConnected());
}

void tst_Trovek::jobsHaveTheirIDs()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    const SlicerConfiguration settings;
    QCOMPARE(client.print(kLeft, "/vase.gcode", settings, {}, false), 1);
    QCOMPARE(client.printToFile(kLeft, "/a", "/b", settings, {}, false, "s3g"), 2);
    QCOMPARE(client.slice(kLeft, "/a", "/b", settings, {}, false), 3);
    QCOMPARE(client.jog(kLeft, Printer::XAxis, 1, 1), 4);
    QCOMPARE(client.jobFromID(1).name(), std::string("vase"));
    QTRY_COMPARE(client.story(), std::string("jobAdded 1, jobAdded 2, jobAdded 3, jobAdded 4"));
    QVERIFY(Job::kInvalidID < 0);
}

void tst_Trovek::aJobTellsWhatTheServiceSays()
{
    TestLog log;
    ScriptedService service;
    Job::Data data;
    data.id = 12;
    data.name = "vase";
    data.progress = 40;
    data.stage = "Heating";
    data.secondsLeft = 90;
    service.setJob(data);
    RecordingTrovek client;
    client.connectToDaemon(service.address());

    const Job job = client.jobFromID(12);
    QCOMPARE(job.id(), 12);
    QCOMPARE(job.name(), std::string("vase"));
    QCOMPARE(job.progress(), 40);
    QCOMPARE(job.stage(), std::string("Heating"));
    QCOMPARE(job.secondsLeft(), 90);
    QCOMPARE(job.conclusion(), JobNotConcluded);
    QVERIFY_EXCEPTION_THROWN(client.jobFromID(13), JsonRpcException);
}

void tst_Trovek::cancelingAConcludedJobIsNoError()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    const int id = client.print(kLeft, "/a", SlicerConfiguration(), {}, false);
    client.cancelJob(id);
    QCOMPARE(client.jobFromID(id).conclusion(), JobCanceled);
    client.cancelJob(id);
    QTRY_COMPARE(client.story(), std::string("jobAdded 1, jobChanged 1, jobConcluded 1"));
    QVERIFY_EXCEPTION_THROWN(client.cancelJob(99), JsonRpcException);
}

void tst_Trovek::onboardMemoryGoesThereAndBack()
{
    TestLog log;
    ScriptedService service;
    service.addPrinter(ScriptedService::machine("left", Printer::Fabrino2));
    const QByteArray text =
        R"({"eeprom_map": {"steps": {"offset": "0", "type": "f", "value": [2]}}})";
    service.setEeprom("left", json(text));
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Printer* const printer = client.printerFromKey(kLeft);

    EepromMap map = client.readEeprom(printer);
    // A whole number where the machine has a real one: brought to its kind on the way in.
    QVERIFY(map.getEepromMap()["eeprom_map"]["steps"]["value"][0].type() == Json::realValue);
    map.setFloat("steps", {2.5F});
    client.writeEeprom(printer, map);
    QVERIFY(client.readEeprom(printer).getEepromMap() == map.getEepromMap());
    client.resetEepromCompletely(kLeft);
    QVERIFY(!client.readEeprom(printer).getFloat("steps"));
}

void tst_Trovek::backupsAreListedAndRead()
{
    TestLog log;
    ScriptedService service;
    service.addPrinter(ScriptedService::machine("left", Printer::Fabrino2));
    const char* const text =
        R"({"eeprom_map": {"steps": {"offset": "0", "type": "f", "value": [2]}}})";
    service.addEepromBackup("left", {"12", 4102444800123}, json(text));
    service.addEepromBackup("left", {"11", 0}, json("{}"));
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    Printer* const printer = client.printerFromKey(kLeft);

    const std::vector<EepromBackup> backups = client.eepromBackups(printer);

    QCOMPARE(backups.size(), std::size_t(2));
    QCOMPARE(backups[0].name, std::string("12"));
    QCOMPARE(backups[0].time, std::int64_t(4102444800123));
    QCOMPARE(backups[1].name, std::string("11"));
    QCOMPARE(backups[1].time, std::int64_t(0));
    const EepromMap map = client.readEepromBackup(printer, "12");
    QVERIFY(map.getEepromMap()["eeprom_map"]["steps"]["value"][0].type() == Json::realValue);
    QVERIFY_EXCEPTION_THROWN(client.readEepromBackup(printer, "13"), JsonRpcException);
}

void tst_Trovek::onboardMemoryNeedsAPrinter()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.clearRequests();
    QCOMPARE(thrownText([&] { client.readEeprom(nullptr); }), std::string("No printer given"));
    QCOMPARE(thrownText([&] { client.writeEeprom(nullptr, EepromMap(Json::Value())); }),
             std::string("No printer given"));
    QCOMPARE(thrownText([&] { client.eepromBackups(nullptr); }), std::string("No printer given"));
    QCOMPARE(thrownText([&] { client.readEepromBackup(nullptr, "7"); }),
             std::string("No printer given"));
    QVERIFY(service.requests().empty());
}

void tst_Trovek::firmwareVersionsAreSorted()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    service.answerNext("getmachineversions",
                       json(R"([["7.10", "new"], ["7.2", "old"], 5, ["7.3"], ["7.4", 1], []])"));
    for (int i = 0; i < 4; ++i)
        log.expectError("Firmware version left out, not a pair of texts");
    std::string texts;
    for (const FirmwareVersion& version : client.getMachineVersions("a", 1))
        texts += version.str() + '=' + version.description() + ' ';
    QCOMPARE(texts, std::string("7.2=old 7.10=new "));
    QCOMPARE(client.downloadFirmware("a", 1, FirmwareVersion("7.2")),
             std::string("firmware-7.2.hex"));
}

void tst_Trovek::configurationChecksAreTheServices()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    const Json::Value config = json(R"({"layerHeight": 0.27})");
    for (const int answer : {0, 1, 2}) {
        service.answerNext("strandel_config_version_check", answer);
        QCOMPARE(int(client.strandelConfigVersionCheck(config)), answer);
    }
    QVERIFY(client.upgradeStrandelConfig(config) == config);
}

void tst_Trovek::machinesAreListedAsTheServiceSays()
{
    TestLog log;
    ScriptedService service;
    service.addPrinter(ScriptedService::machine("left", Printer::Fabrino2));
    RecordingTrovek client;
    client.connectToDaemon(service.address());
    QVERIFY(client.getUploadableMachines() == json(R"(["Orvane Fabrino 2"])"));
    service.answerNext("simulated_machines", json(R"([{"name": "x"}])"));
    QVERIFY(client.simulatedMachines() == json(R"([{"name": "x"}])"));
}

void tst_Trovek::callsAreCounted()
{
    TestLog log;
    ScriptedService service;
    RecordingTrovek client;
    QCOMPARE(client.callCount(), quint64(0));
    client.connectToDaemon(service.address());
    const quint64 afterConnecting = client.callCount();
    QCOMPARE(afterConnecting, quint64(2));
    client.printers();
    client.ports();
    QCOMPARE(client.callCount(), afterConnecting);
    client.home(kLeft);
    QCOMPARE(client.callCount(), afterConnecting + 1);
}

QTEST_GUILESS_MAIN(tst_Trovek)
#include "tst_trovek.moc"
