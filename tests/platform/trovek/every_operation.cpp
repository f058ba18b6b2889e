#include "every_operation.h"

#include "support/scripted_service.h"

#include <rpcwire/json_text.h>
#include <trovek/wire.h>

#include <QTest>

namespace trovek {

Json::Value json(const QByteArray& text)
{
    Json::Value value;
    if (!rpcwire::parseJson(std::string_view(text.constData(), std::size_t(text.size())), &value,
                            nullptr))
        qFatal("Test data is not JSON: %s", text.constData());
    return value;
}

SlicerConfiguration configuration()
{
    SlicerConfiguration configuration;
    configuration.setLayerHeight(0.16);
    return configuration;
}

void addEveryOperation()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("params");
    QTest::addColumn<int>("deadlineMs");

    const auto row = [](const char* method, const QByteArray& params, int deadlineMs,
                        const Operation& operation) {
        QTest::newRow(method) << operation << QByteArray(method) << params << deadlineMs;
    };
    const QByteArray settings =
        QByteArray::fromStdString(rpcwire::toJsonLine(wire::toJson(configuration())));

    row("connect_to_port", R"({"port": "one", "identity": "23c1:d314:one"})", 60000,
        [](Trovek& t) { t.connectToPort(Port(ScriptedService::port("one"))); });
    row("disconnect_from_port", R"({"port": "one"})", 10000,
        [](Trovek& t) { t.disconnectFromPort("one"); });
    row("get_job", R"({"id": 7})", 10000, [](Trovek& t) { t.jobFromID(7); });
    row("cancel_job", R"({"id": 7})", 10000, [](Trovek& t) { t.cancelJob(7); });
    row("print",
        R"({"machine": "left", "input_path": "/i.gcode", "materials": ["pla", "abs"],
            "skip_start_end": true, "slicer_config": )" +
            settings + "}",
        10000, [](Trovek& t) {
            t.print(kLeft, "/i.gcode", configuration(), {"pla", "abs"}, true);
        });
    row("print_to_file",
        R"({"machine": "left", "input_path": "/i.gcode", "output_path": "/o.x3g", "materials": [],
            "skip_start_end": false, "format": "x3g", "slicer_config": )" +
            settings + "}",
        10000, [](Trovek& t) {
            t.printToFile(kLeft, "/i.gcode", "/o.x3g", configuration(), {}, false, "x3g");
        });
    row("slice",
        R"({"machine": "left", "input_path": "/i.stl", "output_path": "/o.gcode",
            "materials": ["pla"], "add_start_end": true, "slicer_config": )" +
            settings + "}",
        10000,
        [](Trovek& t) { t.slice(kLeft, "/i.stl", "/o.gcode", configuration(), {"pla"}, true); });
    row("jog", R"({"machine": "left", "axis": 4, "distance": -10, "limit_ms": 20000})", 10000,
        [](Trovek& t) { t.jog(kLeft, Printer::ZAxis, -10, 20000); });
    row("home", R"({"machine": "left"})", 60000, [](Trovek& t) { t.home(kLeft); });
    row("set_toolhead_temperature", R"({"machine": "left", "toolhead": 1, "target": 230})", 10000,
        [](Trovek& t) { t.setToolheadTemperature(kLeft, Printer::LeftToolhead, 230); });
    row("cbo_calibration", R"({"machine": "left"})", 300000,
        [](Trovek& t) { t.cboCalibration(kLeft); });
    row("read_eeprom", R"({"machine": "left"})", 180000, [](Trovek& t) {
        Printer printer(ScriptedService::machine("left", Printer::Fabrino2));
        t.readEeprom(&printer);
    });
    row("write_eeprom", R"({"machine": "left", "map": {"eeprom_map": {}, "x": 1.5}})", 180000,
        [](Trovek& t) {
            Printer printer(ScriptedService::machine("left", Printer::Fabrino2));
            t.writeEeprom(&printer, EepromMap(json(R"({"eeprom_map": {}, "x": 1.5})")));
        });
    row("reset_eeprom_completely", R"({"machine": "left"})", 180000,
        [](Trovek& t) { t.resetEepromCompletely(kLeft); });
    row("list_eeprom_backups", R"({"machine": "left"})", 10000, [](Trovek& t) {
        Printer printer(ScriptedService::machine("left", Printer::Fabrino2));
        t.eepromBackups(&printer);
    });
    row("read_eeprom_backup", R"({"machine": "left", "backup": "7"})", 10000, [](Trovek& t) {
        Printer printer(ScriptedService::machine("left", Printer::Fabrino2));
        t.readEepromBackup(&printer, "7");
    });
    row("getuploadablemachines", "{}", 60000, [](Trovek& t) { t.getUploadableMachines(); });
    row("getmachineversions", R"({"machine": "Fabrino", "type": 3})", 60000,
        [](Trovek& t) { t.getMachineVersions("Fabrino", 3); });
    row("downloadfirmware", R"({"machine": "Fabrino", "type": 3, "version": "7.2"})", 300000,
        [](Trovek& t) { t.downloadFirmware("Fabrino", 3, FirmwareVersion("7.2", "text")); });
    row("uploadfirmware", R"({"machine": "left", "path": "/f.hex"})", 300000,
        [](Trovek& t) { t.uploadFirmware(kLeft, "/f.hex"); });
    row("strandel_config_version_check", R"({"config": {"a": [1, null]}})", 10000,
        [](Trovek& t) { t.strandelConfigVersionCheck(json(R"({"a": [1, null]})")); });
    row("upgrade_strandel_config", R"({"config": {"a": 1}})", 10000,
        [](Trovek& t) { t.upgradeStrandelConfig(json(R"({"a": 1})")); });
    row("simulated_machines", "{}", 10000, [](Trovek& t) { t.simulatedMachines(); });
    row("simulate_plug_in", R"({"name": "left"})", 10000,
        [](Trovek& t) { t.simulatePlugIn("left"); });
    row("simulate_unplug", R"({"name": "left"})", 10000,
        [](Trovek& t) { t.simulateUnplug("left"); });
    row("simulate_firmware", R"({"name": "left", "version": "7.6"})", 10000,
        [](Trovek& t) { t.simulateFirmware("left", "7.6"); });
    row("simulate_port", R"({"name": "left", "port": "two"})", 10000,
        [](Trovek& t) { t.simulatePort("left", "two"); });
    row("simulate_upload_failure", R"({"name": "left", "percent": 40})", 10000,
        [](Trovek& t) { t.simulateUploadFailure("left", 40); });
    row("simulated_scanner", "{}", 10000, [](Trovek& t) { t.simulatedScanner(); });
    row("simulate_scanner_plug_in", "{}", 10000, [](Trovek& t) { t.simulateScannerPlugIn(); });
    row("simulate_scanner_unplug", "{}", 10000, [](Trovek& t) { t.simulateScannerUnplug(); });
    row("simulate_scanned_model", R"({"path": "/a.stl"})", 10000,
        [](Trovek& t) { t.simulateScannedModel(json(R"({"path": "/a.stl"})")); });
    row("simulate_fault",
        R"({"fault": {"method": "print", "kind": "late", "times": 2, "delay_ms": 70}})", 10000,
        [](Trovek& t) { t.simulateFault(SimulatedFault::late("print", 70).forTimes(2)); });
    row("simulated_faults", "{}", 10000, [](Trovek& t) { t.simulatedFaults(); });
    row("simulate_no_faults", "{}", 10000, [](Trovek& t) { t.clearSimulatedFaults(); });
}

void addWhatEveryOperationNeeds(ScriptedService& service)
{
    service.addPort(ScriptedService::port("one"));
    Job::Data job;
    job.id = 7;
    service.setJob(job);
    service.addEepromBackup("left", {"7", 0}, json(R"({"eeprom_map": {}})"));
}

} // namespace trovek
