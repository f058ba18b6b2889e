#include "support/thrown_text.h"

#include <rpcwire/json_text.h>
#include <trovek/wire.h>

#include <QTest>

#include <limits>

#include <memory>

using namespace trovek;

namespace {

Json::Value json(const QByteArray& text)
{
    Json::Value value;
    std::string error;
    if (!rpcwire::parseJson(std::string_view(text.constData(), std::size_t(text.size())), &value,
                            &error))
        qFatal("Test data is not JSON: %s", error.c_str());
    return value;
}

/** Through the text, as it goes over the wire. */
Json::Value overTheWire(const Json::Value& value)
{
    return json(QByteArray::fromStdString(rpcwire::toJsonLine(value)));
}

Printer::Data fullPrinter()
{
    Printer::Data data;
    data.key = MachineName("m\xc3\xbc");
    data.displayName = "Left one";
    data.portName = "port 1";
    data.type = Printer::Fabrino2X;
    data.state = Printer::Paused;
    data.machineNames = {"Orvane Fabrino 2X", "another"};
    data.numberOfExtruders = 2;
    data.hasHeatedPlatform = true;
    data.connected = true;
    data.canPrint = true;
    data.canPrintToFile = true;
    data.firmwareVersion = FirmwareVersion("7.2", "about it");
    data.toolTemperature.toolheads = {210, 21};
    data.toolTemperature.platform = 100;
    data.toolheadTargetTemperature = {230, 0};
    data.platformTargetTemperature = 110;
    const float volume[6] = {-123.5F, -76, 0, 123.5F, 76, 155.1F};
    std::copy(std::begin(volume), std::end(volume), data.buildVolume);
    return data;
}

} // namespace

class tst_Wire : public QObject
{
    Q_OBJECT

private slots:
    void aPrinterComesBackAsItWas();
    void aPortComesBackAsItWas();
    void aJobComesBackAsItWas();
    void aBackupComesBackAsItWas();
    void aSlicerConfigurationComesBackAsItWas();
    void whatIsMissingTakesItsDefault();
    void whatIsUnknownTakesItsDefault();
    void progressStaysBetween0And100();
    void oddShapesAreRefused_data();
    void oddShapesAreRefused();
    void singleMembersAreChecked_data();
    void singleMembersAreChecked();
    void errorsCarryNameAndMessage();
    void membersHaveTheNamesOfTheProtocol();
};

void tst_Wire::aPrinterComesBackAsItWas()
{
    const Printer::Data before = fullPrinter();
    const Printer::Data after = wire::printerFromJson(overTheWire(wire::toJson(before)));
    QCOMPARE(after.key.name(), before.key.name());
    QCOMPARE(after.displayName, before.displayName);
    QCOMPARE(after.portName, before.portName);
    QCOMPARE(after.type, before.type);
    QCOMPARE(after.state, before.state);
    QCOMPARE(after.machineNames, before.machineNames);
    QCOMPARE(after.numberOfExtruders, before.numberOfExtruders);
    QCOMPARE(after.hasHeatedPlatform, before.hasHeatedPlatform);
    QCOMPARE(after.connected, before.connected);
    QCOMPARE(after.canPrint, before.canPrint);
    QCOMPARE(after.canPrintToFile, before.canPrintToFile);
    QCOMPARE(after.firmwareVersion.str(), before.firmwareVersion.str());
    QCOMPARE(after.firmwareVersion.description(), before.firmwareVersion.description());
    QCOMPARE(after.toolTemperature.toolheads, before.toolTemperature.toolheads);
    QCOMPARE(after.toolTemperature.platform, before.toolTemperature.platform);
    QCOMPARE(after.toolheadTargetTemperature, before.toolheadTargetTemperature);
    QCOMPARE(after.platformTargetTemperature, before.platformTargetTemperature);
    for (int i = 0; i < 6; ++i)
        QCOMPARE(after.buildVolume[i], before.buildVolume[i]);

    const Printer printer(after);
    QCOMPARE(printer.buildVolumeXmin(), -123.5F);
    QCOMPARE(printer.buildVolumeYmin(), -76.0F);
    QCOMPARE(printer.buildVolumeZmin(), 0.0F);
    QCOMPARE(printer.buildVolumeXmax(), 123.5F);
    QCOMPARE(printer.buildVolumeYmax(), 76.0F);
    QCOMPARE(printer.buildVolumeZmax(), 155.1F);
    QCOMPARE(printer.toolTemperature().at(Printer::LeftToolhead), 21);
    QVERIFY_EXCEPTION_THROWN(printer.toolTemperature().at(2), std::out_of_range);
}

void tst_Wire::aPortComesBackAsItWas()
{
    const Port::Data before{"port 1", "23c1:d314:0042", "Fine port", "left", true};
    const Port::Data after = wire::portFromJson(overTheWire(wire::toJson(before)));
    QCOMPARE(after.name, before.name);
    QCOMPARE(after.identity, before.identity);
    QCOMPARE(after.displayName, before.displayName);
    QCOMPARE(after.machineName, before.machineName);
    QCOMPARE(after.inConnectionWhitelist, true);
}

void tst_Wire::aJobComesBackAsItWas()
{
    Job::Data before;
    before.id = 2147483647;
    before.name = "vase";
    before.kind = "print_to_file";
    before.machine = MachineName("left");
    before.conclusion = JobCanceled;
    before.progress = 42;
    before.stage = "Heating";
    before.failure = "It broke";
    before.secondsLeft = 0;
    const Job after(wire::jobFromJson(overTheWire(wire::toJson(before))));
    QCOMPARE(after.id(), before.id);
    QCOMPARE(after.name(), before.name);
    QCOMPARE(after.kind(), before.kind);
    QCOMPARE(after.machine().name(), before.machine.name());
    QCOMPARE(after.conclusion(), before.conclusion);
    QCOMPARE(after.progress(), before.progress);
    QCOMPARE(after.stage(), before.stage);
    QCOMPARE(after.failure(), before.failure);
    QCOMPARE(after.secondsLeft(), 0);

    before.secondsLeft = -1;
    QVERIFY(!wire::toJson(before).isMember("seconds_left"));
    QCOMPARE(wire::jobFromJson(wire::toJson(before)).secondsLeft, -1);
}

void tst_Wire::aBackupComesBackAsItWas()
{
    for (const std::int64_t time :
         {std::int64_t(0), std::int64_t(4102444800123), std::numeric_limits<std::int64_t>::min()}) {
        const EepromBackup after =
            wire::eepromBackupFromJson(overTheWire(wire::toJson(EepromBackup{"12-x", time})));
        QCOMPARE(after.name, std::string("12-x"));
        QCOMPARE(after.time, time);
    }
}

void tst_Wire::aSlicerConfigurationComesBackAsItWas()
{
    SlicerConfiguration before;
    before.setSlicer(SlicerConfiguration::UnknownSlicer);
    before.setExtruder(SlicerConfiguration::Both);
    before.setProfilePath("/p\xc3\xbc");
    before.setLayerHeight(0.16);
    before.setInfill(0.33);
    before.setShells(5);
    before.setPrintSpeed(91);
    before.setTravelSpeed(151);
    before.setExtruderTemperature(221);
    before.setLeftExtruderTemperature(222);
    before.setPlatformTemperature(99);
    before.setHeatPlatform(false);
    before.setRaft(true);
    before.setSupports(true);
    before.setDefaultRaftExtruder(1);
    before.setDefaultSupportExtruder(2);
    before.setDoAutoRaft(true);
    before.setDoAutoSupport(true);
    const Json::Value document = wire::toJson(before);
    const SlicerConfiguration after = wire::slicerConfigurationFromJson(overTheWire(document));
    QVERIFY(wire::toJson(after) == document);
    QVERIFY(!(wire::toJson(SlicerConfiguration()) == document));
    // Every member differs from its default, so none can have been left out on the way.
    const Json::Value defaults = wire::toJson(SlicerConfiguration());
    for (const std::string& name : defaults.getMemberNames())
        QVERIFY2(defaults[name] != document[name], name.c_str());
    QCOMPARE(after.layerHeight(), 0.16);
    QCOMPARE(after.leftExtruderTemperature(), 222U);
}

void tst_Wire::whatIsMissingTakesItsDefault()
{
    const Printer::Data printer = wire::printerFromJson(json(R"({"name": "left"})"));
    QCOMPARE(printer.displayName, std::string("left"));
    QCOMPARE(printer.type, Printer::UnknownType);
    QCOMPARE(printer.numberOfExtruders, 1);
    QVERIFY(!printer.canPrint);
    QVERIFY(!printer.firmwareVersion.valid());
    QVERIFY(printer.toolTemperature.toolheads.empty());

    const Port::Data port = wire::portFromJson(json(R"({"name": "p", "identity": "i"})"));
    QCOMPARE(Port(port).displayName(), std::string("p"));
    QVERIFY(!port.inConnectionWhitelist);

    const Job::Data job = wire::jobFromJson(json(R"({"id": 3})"));
    QCOMPARE(job.conclusion, JobNotConcluded);
    QCOMPARE(job.progress, 0);
    QCOMPARE(job.secondsLeft, -1);

    const SlicerConfiguration configuration = wire::slicerConfigurationFromJson(json("{}"));
    QVERIFY(wire::toJson(configuration) == wire::toJson(SlicerConfiguration()));
}

void tst_Wire::whatIsUnknownTakesItsDefault()
{
    const Printer::Data printer =
        wire::printerFromJson(json(R"({"name": "left", "type": 77, "state": 6, "new": []})"));
    QCOMPARE(int(printer.type), 77);
    QCOMPARE(printer.state, Printer::UnknownState);
    QCOMPARE(wire::jobFromJson(json(R"({"id": 3, "conclusion": 9})")).conclusion, JobNotConcluded);
    QCOMPARE(wire::jobFromJson(json(R"({"id": 3, "conclusion": -1})")).conclusion, JobNotConcluded);
}

void tst_Wire::progressStaysBetween0And100()
{
    QCOMPARE(wire::jobFromJson(json(R"({"id": 3, "progress": 101})")).progress, 100);
    QCOMPARE(wire::jobFromJson(json(R"({"id": 3, "progress": -5})")).progress, 0);
}

void tst_Wire::oddShapesAreRefused_data()
{
    QTest::addColumn<QByteArray>("what");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("refusal");

    const auto row = [](const char* what, const char* text, const char* refusal) {
        QTest::addRow("%s %s", what, text)
            << QByteArray(what) << QByteArray(text) << QByteArray(refusal);
    };
    for (const char* const what : {"printer", "port", "job", "slicer_config", "backup"}) {
        for (const char* const text : {"null", "[]", "5", "\"text\"", "true"}) {
            QTest::addRow("%s %s", what, text)
                << QByteArray(what) << QByteArray(text) << "Not a JSON object: " + QByteArray(what);
        }
    }
    row("printer", "{}", "Missing member \"name\"");
    row("printer", R"({"name": 5})", "Member \"name\" is not a string");
    row("printer", R"({"name": ""})", "Member \"name\" is empty");
    row("printer", R"({"name": "a", "display_name": null})",
        "Member \"display_name\" is not a string");
    row("printer", R"({"name": "a", "port": 1})", "Member \"port\" is not a string");
    row("printer", R"({"name": "a", "type": "1"})", "Member \"type\" is not an integer of 32 bits");
    row("printer", R"({"name": "a", "type": 2147483648})",
        "Member \"type\" is not an integer of 32 bits");
    row("printer", R"({"name": "a", "state": true})",
        "Member \"state\" is not an integer of 32 bits");
    row("printer", R"({"name": "a", "machine_names": "b"})",
        "Member \"machine_names\" is not a list");
    row("printer", R"({"name": "a", "machine_names": ["b", 5]})",
        "Member \"machine_names\" is not a string");
    row("printer", R"({"name": "a", "extruders": 0})",
        "Member \"extruders\" is not a number of extruders");
    row("printer", R"({"name": "a", "extruders": 17})",
        "Member \"extruders\" is not a number of extruders");
    row("printer", R"({"name": "a", "extruders": 1.5})",
        "Member \"extruders\" is not an integer of 32 bits");
    row("printer", R"({"name": "a", "can_print": 1})", "Member \"can_print\" is not a truth value");
    row("printer", R"({"name": "a", "can_print_to_file": "True"})",
        "Member \"can_print_to_file\" is not a truth value");
    row("printer", R"({"name": "a", "connected": null})",
        "Member \"connected\" is not a truth value");
    row("printer", R"({"name": "a", "heated_platform": []})",
        "Member \"heated_platform\" is not a truth value");
    row("printer", R"({"name": "a", "firmware_version": 7.2})",
        "Member \"firmware_version\" is not a string");
    row("printer", R"({"name": "a", "temperatures": {}})", "Member \"temperatures\" is not a list");
    row("printer", R"({"name": "a", "temperatures": [null]})",
        "Member \"temperatures\" is not an integer of 32 bits");
    row("printer", R"({"name": "a", "targets": [2.5]})",
        "Member \"targets\" is not an integer of 32 bits");
    row("printer", R"({"name": "a", "platform_target": "9"})",
        "Member \"platform_target\" is not an integer of 32 bits");
    row("printer", R"({"name": "a", "build_volume": [1, 2, 3, 4, 5]})",
        "Member \"build_volume\" is not a list of six numbers");
    row("printer", R"({"name": "a", "build_volume": [1, 2, 3, 4, 5, "6"]})",
        "Member \"build_volume\" is not a number");
    row("printer", R"({"name": "a", "build_volume": [1, 2, 3, 4, 5, 1e300]})",
        "Member \"build_volume\" is not a number of single precision");

    row("port", R"({"name": "a"})", "Missing member \"identity\"");
    row("port", R"({"identity": "a"})", "Missing member \"name\"");
    row("port", R"({"name": "a", "identity": ""})", "Member \"identity\" is empty");
    row("port", R"({"name": "a", "identity": "b", "machine": null})",
        "Member \"machine\" is not a string");
    row("port", R"({"name": "a", "identity": "b", "whitelisted": 0})",
        "Member \"whitelisted\" is not a truth value");

    row("job", "{}", "Missing member \"id\"");
    row("job", R"({"id": "3"})", "Member \"id\" is not an integer of 32 bits");
    row("job", R"({"id": 1e10})", "Member \"id\" is not an integer of 32 bits");
    row("job", R"({"id": 3, "progress": "half"})",
        "Member \"progress\" is not an integer of 32 bits");
    row("job", R"({"id": 3, "machine": {}})", "Member \"machine\" is not a string");
    row("job", R"({"id": 3, "conclusion": null})",
        "Member \"conclusion\" is not an integer of 32 bits");
    row("job", R"({"id": 3, "seconds_left": "5"})",
        "Member \"seconds_left\" is not an integer of 32 bits");

    row("backup", R"({"time": 1})", "Missing member \"name\"");
    row("backup", R"({"name": ""})", "Member \"name\" is empty");
    row("backup", R"({"name": "a"})", "Missing member \"time\"");
    row("backup", R"({"name": "a", "time": 1.5})", "Member \"time\" is not an integer of 64 bits");
    row("backup", R"({"name": "a", "time": 9223372036854775808})",
        "Member \"time\" is not an integer of 64 bits");

    row("slicer_config", R"({"layer_height": "0.2"})", "Member \"layer_height\" is not a number");
    row("slicer_config", R"({"shells": -1})",
        "Member \"shells\" is not an unsigned integer of 32 bits");
    row("slicer_config", R"({"raft": "yes"})", "Member \"raft\" is not a truth value");
    row("slicer_config", R"({"profile_path": 5})", "Member \"profile_path\" is not a string");
    row("slicer_config", R"({"extruder": []})", "Member \"extruder\" is not an integer of 32 bits");
}

void tst_Wire::oddShapesAreRefused()
{
    QFETCH(QByteArray, what);
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, refusal);
    const Json::Value value = json(text);
    const std::string thrown = thrownText([&] {
        if (what == "printer")
            wire::printerFromJson(value);
        else if (what == "port")
            wire::portFromJson(value);
        else if (what == "job")
            wire::jobFromJson(value);
        else if (what == "backup")
            wire::eepromBackupFromJson(value);
        else
            wire::slicerConfigurationFromJson(value);
    });
    QCOMPARE(thrown, refusal.toStdString());
}

void tst_Wire::singleMembersAreChecked_data()
{
    QTest::addColumn<QByteArray>("object");
    QTest::addColumn<QByteArray>("refusal");
    QTest::newRow("not an object")
        << QByteArray("[1]") << QByteArray("No JSON object around member \"m\"");
    QTest::newRow("null") << QByteArray("null") << QByteArray("No JSON object around member \"m\"");
    QTest::newRow("missing") << QByteArray("{}") << QByteArray("Missing member \"m\"");
    QTest::newRow("null member") << QByteArray(R"({"m": null})")
                                 << QByteArray("Member \"m\" is not ");
    QTest::newRow("object member")
        << QByteArray(R"({"m": {}})") << QByteArray("Member \"m\" is not ");
}

void tst_Wire::singleMembersAreChecked()
{
    QFETCH(QByteArray, object);
    QFETCH(QByteArray, refusal);
    const Json::Value value = json(object);
    const std::string start = refusal.toStdString();
    const auto refused = [&](const std::string& text) {
        return text.rfind(start, 0) == 0;
    };
    QVERIFY(refused(thrownText([&] { wire::stringMember(value, "m"); })));
    QVERIFY(refused(thrownText([&] { wire::intMember(value, "m"); })));
    QVERIFY(refused(thrownText([&] { wire::boolMember(value, "m"); })));
    QVERIFY(refused(thrownText([&] { wire::stringListMember(value, "m"); })));

    const Json::Value good = json(R"({"s": "t", "i": -3, "b": true, "l": ["x", "y"]})");
    QCOMPARE(wire::stringMember(good, "s"), std::string("t"));
    QCOMPARE(wire::intMember(good, "i"), -3);
    QCOMPARE(wire::boolMember(good, "b"), true);
    QCOMPARE(wire::stringListMember(good, "l"), (std::vector<std::string>{"x", "y"}));
}

void tst_Wire::errorsCarryNameAndMessage()
{
    const JsonRpcException error = wire::makeError(wire::error::kPrintQueued, "Already printing");
    QCOMPARE(error.message(), std::string("Already printing"));
    QCOMPARE(error.code(), int(rpcwire::ServiceError));
    QVERIFY(error.data() ==
            json(R"({"name": "PrintQueuedException", "message": "Already printing"})"));
}

void tst_Wire::membersHaveTheNamesOfTheProtocol()
{
    QVERIFY(wire::toJson(Port::Data{"p", "i", "d", "m", true}) ==
            json(R"({"name": "p", "identity": "i", "display_name": "d", "machine": "m",
                        "whitelisted": true})"));
    std::string names;
    for (const std::string& name : wire::toJson(fullPrinter()).getMemberNames())
        names += name + ' ';
    QCOMPARE(names, std::string("build_volume can_print can_print_to_file connected display_name "
                                "extruders firmware_description firmware_version heated_platform "
                                "machine_names name platform_target platform_temperature port "
                                "state targets temperatures type "));
    QVERIFY(wire::toJson(std::vector<std::string>{"pla", "abs"}) == json(R"(["pla", "abs"])"));
}

QTEST_GUILESS_MAIN(tst_Wire)
#include "tst_wire.moc"
