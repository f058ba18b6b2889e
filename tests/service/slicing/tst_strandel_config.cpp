#include "service/service_world.h"
#include "support/test_log.h"
#include "support/thrown_text.h"

#include <rpcwire/json_text.h>
#include <slicing/strandel_config.h>

#include <json/value.h>

#include <QFile>
#include <QTest>

#include <limits>

Q_DECLARE_METATYPE(Json::Value)
Q_DECLARE_METATYPE(std::string)

using namespace trovek;
using namespace trovek::service;

namespace {

Json::Value parsed(const QByteArray& text)
{
    Json::Value value;
    std::string error;
    if (!rpcwire::parseJson(text.toStdString(), &value, &error))
        qFatal("%s", error.c_str());
    return value;
}

Json::Value sample(const char* name)
{
    QFile file(QStringLiteral(TROVEK_TEST_DATA "/strandel/") + QLatin1String(name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s", name);
    return parsed(file.readAll());
}

Json::Value current()
{
    return sample("version_1_upgraded.json");
}

/** The member that a key such as "right_extruder.flow" names. */
Json::Value& at(Json::Value& document, const std::string& key)
{
    const std::size_t dot = key.find('.');
    return dot == std::string::npos ? document[key]
                                    : document[key.substr(0, dot)][key.substr(dot + 1)];
}

void remove(Json::Value& document, const std::string& key)
{
    const std::size_t dot = key.find('.');
    if (dot == std::string::npos)
        document.removeMember(key);
    else
        document[key.substr(0, dot)].removeMember(key.substr(dot + 1));
}

/** What is wrong with a document, whoever is asked. */
std::string problemOf(const Json::Value& document)
{
    const std::string problem = thrownText([&] { checkStrandelVersion(document); });
    // Only a document of the current version is read.
    if (document.isObject() && document["version"] == kStrandelVersion &&
        problem != thrownText([&] { readStrandelConfig(document); }))
        return "reading says something else";
    return problem;
}

} // namespace

class tst_StrandelConfig : public QObject
{
    Q_OBJECT

private slots:
    void saysOfWhichVersionADocumentIs_data();
    void saysOfWhichVersionADocumentIs();
    void upgradesEachOlderVersion_data();
    void upgradesEachOlderVersion();
    void keepsWhatItDoesNotKnow();
    void leavesTheCurrentVersionAsItIs();
    void readsEveryKey();
    void refusesAnOddDocument_data();
    void refusesAnOddDocument();
    void refusesAMissingKey_data();
    void refusesAMissingKey();
    void refusesNumbersOutOfTheirRange_data();
    void refusesNumbersOutOfTheirRange();
    void refusesOddValues_data();
    void refusesOddValues();
    void refusesOddOlderDocuments_data();
    void refusesOddOlderDocuments();
    void answersClients();
};

void tst_StrandelConfig::saysOfWhichVersionADocumentIs_data()
{
    QTest::addColumn<Json::Value>("document");
    QTest::addColumn<int>("version");

    QTest::newRow("1") << sample("version_1.json") << int(StrandelVersion::NeedsUpgrade);
    QTest::newRow("2") << sample("version_2.json") << int(StrandelVersion::NeedsUpgrade);
    QTest::newRow("3") << current() << int(StrandelVersion::UpToDate);
    Json::Value whole = current();
    whole["version"] = 3.0;
    QTest::newRow("3, written as a real number") << whole << int(StrandelVersion::UpToDate);
    QTest::newRow("4, of which nothing else is known")
        << parsed(R"({"version": 4, "layer_height": "thin"})") << int(StrandelVersion::TooNew);
    QTest::newRow("a million") << parsed(R"({"version": 1000000})") << int(StrandelVersion::TooNew);
}

void tst_StrandelConfig::saysOfWhichVersionADocumentIs()
{
    QFETCH(Json::Value, document);
    QFETCH(int, version);

    QCOMPARE(int(checkStrandelVersion(document)), version);
}

void tst_StrandelConfig::upgradesEachOlderVersion_data()
{
    QTest::addColumn<Json::Value>("document");
    QTest::addColumn<Json::Value>("upgraded");

    QTest::newRow("1") << sample("version_1.json") << sample("version_1_upgraded.json");
    QTest::newRow("2") << sample("version_2.json") << sample("version_2_upgraded.json");
    Json::Value without = sample("version_1.json");
    without["platformTemperature"] = 0;
    without["doRaft"] = false;
    without["doSupport"] = false;
    Json::Value withoutUpgraded = sample("version_1_upgraded.json");
    withoutUpgraded["heat_platform"] = false;
    withoutUpgraded["platform_temperature"] = 0;
    withoutUpgraded["raft"] = "off";
    withoutUpgraded["supports"] = "off";
    QTest::newRow("1, neither heated nor held") << without << withoutUpgraded;
}

void tst_StrandelConfig::upgradesEachOlderVersion()
{
    QFETCH(Json::Value, document);
    QFETCH(Json::Value, upgraded);

    const Json::Value result = upgradeStrandelConfig(document);

    QCOMPARE(QByteArray::fromStdString(result.toStyledString()),
             QByteArray::fromStdString(upgraded.toStyledString()));
    QCOMPARE(int(checkStrandelVersion(result)), int(StrandelVersion::UpToDate));
}

void tst_StrandelConfig::keepsWhatItDoesNotKnow()
{
    const Json::Value upgraded = upgradeStrandelConfig(sample("version_1.json"));

    QCOMPARE(upgraded["comment"].asString(), std::string("Brackets for the shelf"));
    QVERIFY(upgraded["myTools"] == sample("version_1.json")["myTools"]);
    // Nothing that was turned into another key stays behind.
    for (const char* key :
         {"layerHeight", "infillPercent", "numberOfShells", "printSpeed", "travelSpeed", "material",
          "temperature", "platformTemperature", "doRaft", "raftTool", "doSupport", "supportTool",
          "raft_extruder", "support_extruder", "right_material", "left_temperature"})
        QVERIFY2(!upgraded.isMember(key), key);
}

void tst_StrandelConfig::leavesTheCurrentVersionAsItIs()
{
    Json::Value document = current();
    document["mine"] = Json::Value(Json::arrayValue);
    document["right_extruder"]["mine"] = "too";

    QVERIFY(upgradeStrandelConfig(document) == document);
    QCOMPARE(thrownText([] { upgradeStrandelConfig(parsed(R"({"version": 4})")); }),
             std::string("strandel.json: \"version\" is 4; this service knows none above 3"));
    QCOMPARE(thrownText([] { readStrandelConfig(sample("version_2.json")); }),
             std::string("strandel.json: \"version\" is 2; this service reads version 3"));
}

void tst_StrandelConfig::readsEveryKey()
{
    Json::Value document = current();
    document["infill_pattern"] = "gyroid";
    document["raft"] = "color_matched";
    document["supports"] = "off";
    document["left_extruder"]["flow"] = 1.05;
    document["left_extruder"]["fan"] = 0.5;
    document["left_extruder"]["filament_diameter"] = 2.85;
    document["left_extruder"]["nozzle_diameter"] = 0.6;

    const StrandelConfig config = readStrandelConfig(document);

    QCOMPARE(config.layerHeight, 0.3);
    QCOMPARE(config.firstLayerHeight, 0.3);
    QCOMPARE(config.infill, 0.25);
    QCOMPARE(int(config.infillPattern), int(InfillPattern::Gyroid));
    QCOMPARE(config.shells, 3);
    QCOMPARE(config.solidLayers, 3);
    QCOMPARE(config.printSpeed, 80.0);
    QCOMPARE(config.outerShellSpeed, 48.0);
    QCOMPARE(config.firstLayerSpeed, 30.0);
    QCOMPARE(config.travelSpeed, 150.0);
    QCOMPARE(int(config.raft), int(ExtraPartChoice::ColorMatched));
    QCOMPARE(int(config.supports), int(ExtraPartChoice::Off));
    QCOMPARE(config.supportAngle, 45.0);
    QCOMPARE(config.heatPlatform, true);
    QCOMPARE(config.platformCelsius, 110);
    QCOMPARE(config.tools[0].material, std::string("abs"));
    QCOMPARE(config.tools[0].celsius, 230);
    QCOMPARE(config.tools[0].nozzleDiameter, 0.4);
    QCOMPARE(config.tools[1].material, std::string("dissolvable"));
    QCOMPARE(config.tools[1].celsius, 250);
    QCOMPARE(config.tools[1].flow, 1.05);
    QCOMPARE(config.tools[1].fan, 0.5);
    QCOMPARE(config.tools[1].minimumLayerSeconds, 12.0);
    QCOMPARE(config.tools[1].retraction, 1.4);
    QCOMPARE(config.tools[1].retractionSpeed, 25.0);
    QCOMPARE(config.tools[1].filamentDiameter, 2.85);
    QCOMPARE(config.tools[1].nozzleDiameter, 0.6);

    const std::pair<const char*, InfillPattern> patterns[] = {
        {"linear", InfillPattern::Linear},
        {"grid", InfillPattern::Grid},
        {"hexagonal", InfillPattern::Hexagonal},
    };
    for (const auto& [name, pattern] : patterns) {
        document["infill_pattern"] = name;
        QCOMPARE(int(readStrandelConfig(document).infillPattern), int(pattern));
    }
    const std::pair<const char*, ExtraPartChoice> choices[] = {
        {"right", ExtraPartChoice::Right},
        {"left", ExtraPartChoice::Left},
    };
    for (const auto& [name, choice] : choices) {
        document["supports"] = name;
        QCOMPARE(int(readStrandelConfig(document).supports), int(choice));
    }
}

void tst_StrandelConfig::refusesAnOddDocument_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("problem");

    const QByteArray noObject = "must hold an object";
    QTest::newRow("a list") << QByteArray("[]") << noObject;
    QTest::newRow("a list of settings") << QByteArray(R"([{"version": 3}])") << noObject;
    QTest::newRow("nothing") << QByteArray("null") << noObject;
    QTest::newRow("a number") << QByteArray("3") << noObject;
    QTest::newRow("a text") << QByteArray("\"version\"") << noObject;
    QTest::newRow("an empty object") << QByteArray("{}") << QByteArray("\"version\" is missing");
    const QByteArray oddVersion = "\"version\" must be a whole number from 1 to 1000000";
    for (const char* version : {"\"3\"", "0", "-1", "2.5", "1e300", "true", "null", "[3]", "{}",
                                "1000001", "18446744073709551615"}) {
        QTest::newRow(version) << QByteArray("{\"version\": ") + version + "}" << oddVersion;
    }
}

void tst_StrandelConfig::refusesAnOddDocument()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, problem);
    const Json::Value document = parsed(text);
    const std::string expected = "strandel.json: " + problem.toStdString();

    QCOMPARE(thrownText([&] { checkStrandelVersion(document); }), expected);
    QCOMPARE(thrownText([&] { upgradeStrandelConfig(document); }), expected);
    QCOMPARE(thrownText([&] { readStrandelConfig(document); }), expected);
}

void tst_StrandelConfig::refusesAMissingKey_data()
{
    QTest::addColumn<std::string>("key");

    const Json::Value document = current();
    for (const std::string& key : document.getMemberNames()) {
        if (key == "comment" || key == "myTools")
            continue;
        QTest::newRow(key.c_str()) << key;
        if (!document[key].isObject())
            continue;
        for (const std::string& inner : document[key].getMemberNames())
            QTest::newRow((key + "." + inner).c_str()) << key + "." + inner;
    }
}

void tst_StrandelConfig::refusesAMissingKey()
{
    QFETCH(std::string, key);
    Json::Value document = current();

    remove(document, key);

    QCOMPARE(problemOf(document), "strandel.json: \"" + key + "\" is missing");
}

void tst_StrandelConfig::refusesNumbersOutOfTheirRange_data()
{
    QTest::addColumn<std::string>("key");
    QTest::addColumn<double>("least");
    QTest::addColumn<double>("most");
    QTest::addColumn<bool>("isWhole");
    QTest::addColumn<std::string>("problem");

    const auto row = [](const std::string& key, double least, double most, bool isWhole,
                        const char* range) {
        QTest::newRow(key.c_str()) << key << least << most << isWhole
                                   << "strandel.json: \"" + key + "\" must be a " +
                                          (isWhole ? "whole " : "") + "number from " + range;
    };
    row("layer_height", 0.01, 1, false, "0.01 to 1");
    row("first_layer_height", 0.05, 1, false, "0.05 to 1");
    row("infill", 0, 1, false, "0 to 1");
    row("shells", 0, 100, true, "0 to 100");
    row("solid_layers", 0, 1000, true, "0 to 1000");
    row("print_speed", 1, 500, false, "1 to 500");
    row("outer_shell_speed", 0.5, 500, false, "0.5 to 500");
    row("first_layer_speed", 0.5, 500, false, "0.5 to 500");
    row("travel_speed", 1, 500, false, "1 to 500");
    row("support_angle", 1, 90, false, "1 to 90");
    row("platform_temperature", 0, 400, true, "0 to 400");
    for (const std::string side : {"right_extruder.", "left_extruder."}) {
        row(side + "temperature", 0, 400, true, "0 to 400");
        row(side + "flow", 0.5, 2, false, "0.5 to 2");
        row(side + "fan", 0, 1, false, "0 to 1");
        row(side + "minimum_layer_seconds", 0, 300, false, "0 to 300");
        row(side + "retraction", 0, 20, false, "0 to 20");
        row(side + "retraction_speed", 1, 200, false, "1 to 200");
        row(side + "filament_diameter", 0.5, 5, false, "0.5 to 5");
        row(side + "nozzle_diameter", 0.1, 2, false, "0.1 to 2");
    }
}

void tst_StrandelConfig::refusesNumbersOutOfTheirRange()
{
    QFETCH(std::string, key);
    QFETCH(double, least);
    QFETCH(double, most);
    QFETCH(bool, isWhole);
    QFETCH(std::string, problem);
    Json::Value document = current();

    for (const double good : {least, most}) {
        at(document, key) = good;
        QCOMPARE(problemOf(document), std::string("nothing thrown"));
    }
    const double step = isWhole ? 1 : 0.001;
    const double odd[] = {least - step, most + step, 1e300, -1e300};
    for (const double bad : odd) {
        at(document, key) = bad;
        QCOMPARE(problemOf(document), problem);
    }
    if (isWhole) {
        at(document, key) = least + 0.5;
        QCOMPARE(problemOf(document), problem);
    }
    for (const char* bad : {"\"1\"", "null", "true", "[1]", "{}", "18446744073709551615"}) {
        at(document, key) = parsed(bad);
        QCOMPARE(problemOf(document), problem);
    }
}

void tst_StrandelConfig::refusesOddValues_data()
{
    QTest::addColumn<std::string>("key");
    QTest::addColumn<Json::Value>("value");
    QTest::addColumn<std::string>("problem");

    const auto row = [](const char* name, const char* key, const char* value, const char* problem) {
        QTest::newRow(name) << std::string(key) << parsed(value)
                            << "strandel.json: \"" + std::string(key) + "\" " + problem;
    };
    const char* const choices = R"(must be "off", "color_matched", "right" or "left")";
    row("raft as truth", "raft", "true", choices);
    row("another raft", "raft", "\"both\"", choices);
    row("supports in upper case", "supports", "\"Left\"", choices);
    const char* const patterns = R"(must be "linear", "grid", "hexagonal" or "gyroid")";
    row("another pattern", "infill_pattern", "\"stars\"", patterns);
    row("a number as pattern", "infill_pattern", "1", patterns);
    row("heating as a number", "heat_platform", "1", "must be true or false");
    row("heating as text", "heat_platform", "\"true\"", "must be true or false");
    row("an extruder as list", "right_extruder", "[]", "must be an object");
    row("an extruder as number", "left_extruder", "230", "must be an object");
    row("no extruder", "left_extruder", "null", "must be an object");
    row("material as number", "left_extruder.material", "1", "must be a text");
}

void tst_StrandelConfig::refusesOddValues()
{
    QFETCH(std::string, key);
    QFETCH(Json::Value, value);
    QFETCH(std::string, problem);
    Json::Value document = current();

    at(document, key) = value;

    QCOMPARE(problemOf(document), problem);
}

void tst_StrandelConfig::refusesOddOlderDocuments_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<std::string>("key");
    QTest::addColumn<Json::Value>("value");
    QTest::addColumn<std::string>("problem");

    const auto row = [](const char* file, const char* key, const char* value, const char* problem) {
        QTest::newRow((std::string(file) + " " + key + " " + value).c_str())
            << QByteArray(file) << std::string(key) << parsed(value)
            << "strandel.json: \"" + std::string(key) + "\" " + problem;
    };
    row("version_1.json", "layerHeight", "\"0.2\"", "must be a number from 0.01 to 1");
    row("version_1.json", "layerHeight", "0", "must be a number from 0.01 to 1");
    row("version_1.json", "infillPercent", "101", "must be a number from 0 to 100");
    row("version_1.json", "numberOfShells", "2.5", "must be a whole number from 0 to 100");
    row("version_1.json", "printSpeed", "59", "must be a number from 60 to 30000");
    row("version_1.json", "travelSpeed", "30001", "must be a number from 60 to 30000");
    row("version_1.json", "platformTemperature", "-1", "must be a whole number from 0 to 400");
    row("version_1.json", "doRaft", "1", "must be true or false");
    row("version_1.json", "supportTool", "2", "must be a whole number from 0 to 1");
    const char* const temperatures = "must be a list of two whole numbers from 0 to 400";
    row("version_1.json", "temperature", "230", temperatures);
    row("version_1.json", "temperature", "[230]", temperatures);
    row("version_1.json", "temperature", "[230, 230, 230]", temperatures);
    row("version_1.json", "temperature", "[230, \"230\"]", temperatures);
    row("version_1.json", "temperature", "[401, 230]", temperatures);
    row("version_1.json", "temperature", "[-1, 230]", temperatures);
    row("version_1.json", "material", "\"abs\"", "must be a list of two texts");
    row("version_1.json", "material", "[\"abs\", null]", "must be a list of two texts");
    // What is not known is kept, and would stand in the way of what is.
    row("version_1.json", "layer_height", "0.2", "does not belong into this version");
    row("version_1.json", "left_extruder", "{}", "does not belong into this version");
    row("version_2.json", "outer_shell_speed", "10", "does not belong into this version");
    row("version_2.json", "raft", "\"off\"", "must be true or false");
    row("version_2.json", "right_material", "1", "must be a text");
    row("version_2.json", "left_temperature", "401", "must be a whole number from 0 to 400");
    row("version_2.json", "infill", "10", "must be a number from 0 to 1");
    row("version_2.json", "print_speed", "\"fast\"", "must be a number from 1 to 500");
}

void tst_StrandelConfig::refusesOddOlderDocuments()
{
    QFETCH(QByteArray, file);
    QFETCH(std::string, key);
    QFETCH(Json::Value, value);
    QFETCH(std::string, problem);
    Json::Value document = sample(file.constData());

    document[key] = value;

    QCOMPARE(problemOf(document), problem);
    document.removeMember(key);
    if (problem.find("does not belong") != std::string::npos)
        QCOMPARE(problemOf(document), std::string("nothing thrown"));
    else
        QCOMPARE(problemOf(document), "strandel.json: \"" + key + "\" is missing");
}

void tst_StrandelConfig::answersClients()
{
    TestLog log;
    ServiceWorld world;
    world.start();
    RecordingTrovek client;
    client.connectToDaemon(world.address());

    QCOMPARE(int(client.strandelConfigVersionCheck(sample("version_1.json"))), 0);
    QCOMPARE(int(client.strandelConfigVersionCheck(current())), 1);
    QCOMPARE(int(client.strandelConfigVersionCheck(parsed(R"({"version": 4})"))), 2);
    QVERIFY(client.upgradeStrandelConfig(sample("version_1.json")) == current());

    const auto refusal = [&](const Json::Value& document) -> std::string {
        try {
            client.strandelConfigVersionCheck(document);
        } catch (const JsonRpcException& error) {
            return errorName(error) + ": " + error.message();
        }
        return "no error";
    };
    Json::Value odd = current();
    odd["layer_height"] = "0.2";
    const std::string problem = "InvalidArgumentError: strandel.json: \"layer_height\" must be a "
                                "number from 0.01 to 1";
    QCOMPARE(refusal(odd), problem);
    QCOMPARE(refusal(parsed("[]")),
             std::string("InvalidArgumentError: Member \"config\" is not an object"));
    QCOMPARE(errorOf([&] { client.upgradeStrandelConfig(parsed("{}")); }),
             std::string("InvalidArgumentError"));
    QCOMPARE(errorOf([&] { client.upgradeStrandelConfig(parsed(R"({"version": 4})")); }),
             std::string("InvalidArgumentError"));
}

QTEST_GUILESS_MAIN(tst_StrandelConfig)
#include "tst_strandel_config.moc"
