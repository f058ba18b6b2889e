#include <gcode/machine_definition.h>

#include <rpcwire/json_text.h>

#include <json/value.h>

#include <QtTest>

#include <cmath>
#include <functional>
#include <stdexcept>

using namespace trovek;
using namespace trovek::service;

namespace {

Json::Value parsed(const std::string& json)
{
    Json::Value value;
    std::string error;
    if (!rpcwire::parseJson(json, &value, &error))
        throw std::runtime_error(error);
    return value;
}

/** The smallest file: one machine, everything else as its type has it. */
Json::Value smallFile()
{
    return parsed(R"({"machines": [{"key": "one", "type": "fabrino_2x", "plugged_in": true,
                     "port": {"name": "p1", "identity": "i1", "whitelisted": false}}]})");
}

MachineDefinitions loaded(const Json::Value& document)
{
    return loadMachineDefinitions(rpcwire::toJsonLine(document));
}

QString thrownBy(const std::function<void()>& action)
{
    try {
        action();
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what());
    }
    return QStringLiteral("nothing");
}

} // namespace

class tst_MachineDefinition : public QObject
{
    Q_OBJECT

private slots:
    void offersAMachineOfEachTypeByDefault();
    void offersAnArchetypeOfEachType();
    void hasPlausibleDefaults_data();
    void hasPlausibleDefaults();
    void takesFromTheTypeWhatAMachineDoesNotSay();
    void overridesMembersOfObjectsOneByOne();
    void overridesTypesForMachinesAndArchetypes();
    void keepsTheFilesOrder();
    void acceptsAFileWithoutMachines();
    void refusesAFileWithAnError_data();
    void refusesAFileWithAnError();
    void refusesTextThatIsNotJson();
    void refusesWhatIsTakenAlready_data();
    void refusesWhatIsTakenAlready();
    void refusesWrongTypesOfEveryMember();
    void namesTypes();
    void heatsByACurve();
    void coolsByACurve();
    void leavesAHeaterThatIsNotThereAlone();
};

void tst_MachineDefinition::offersAMachineOfEachTypeByDefault()
{
    const MachineDefinitions definitions = defaultMachineDefinitions();

    std::map<int, int> types;
    std::vector<std::string> plugged;
    for (const MachineDefinition& machine : definitions.machines) {
        ++types[machine.type];
        if (machine.pluggedIn)
            plugged.push_back(machineTypeName(machine.type));
        QVERIFY(!machine.isArchetype);
        QVERIFY(!machine.portName.empty());
        QVERIFY(!machine.portIdentity.empty());
        QVERIFY(machine.portInConnectionWhitelist);
    }
    QCOMPARE(types, (std::map<int, int>{{1, 1}, {2, 1}, {3, 1}, {4, 1}, {5, 1}, {6, 1}}));
    QCOMPARE(plugged, (std::vector<std::string>{"fabrino_2", "fabrino_2x"}));
}

void tst_MachineDefinition::offersAnArchetypeOfEachType()
{
    const MachineDefinitions definitions = defaultMachineDefinitions();

    QCOMPARE(definitions.archetypes.size(), std::size_t(6));
    for (std::size_t i = 0; i < 6; ++i) {
        const MachineDefinition& archetype = definitions.archetypes[i];
        QCOMPARE(int(archetype.type), int(i) + 1);
        QCOMPARE(archetype.key, "archetype_" + machineTypeName(archetype.type));
        QVERIFY(archetype.isArchetype);
        QVERIFY(!archetype.pluggedIn);
        QVERIFY(archetype.portName.empty());
    }
    QCOMPARE(definitions.archetypes[3].displayName, std::string("Orvane Fabrino 2X"));
}

void tst_MachineDefinition::hasPlausibleDefaults_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("extruders");
    QTest::addColumn<bool>("heatedPlatform");
    QTest::addColumn<QByteArray>("format");

    QTest::newRow("fabrino_single") << 1 << 1 << true << QByteArray("s3g");
    QTest::newRow("fabrino_dual") << 2 << 2 << true << QByteArray("s3g");
    QTest::newRow("fabrino_2") << 3 << 1 << false << QByteArray("x3g");
    QTest::newRow("fabrino_2x") << 4 << 2 << true << QByteArray("x3g");
    QTest::newRow("cubio_single") << 5 << 1 << true << QByteArray("s3g");
    QTest::newRow("cubio_dual") << 6 << 2 << true << QByteArray("s3g");
}

void tst_MachineDefinition::hasPlausibleDefaults()
{
    QFETCH(int, type);
    QFETCH(int, extruders);
    QFETCH(bool, heatedPlatform);
    QFETCH(QByteArray, format);
    const MachineDefinition machine =
        defaultMachineDefinitions().archetypes[static_cast<std::size_t>(type) - 1];

    QCOMPARE(machineTypeName(machine.type), std::string(QTest::currentDataTag()));
    QCOMPARE(machine.extruders, extruders);
    QCOMPARE(machine.hasHeatedPlatform, heatedPlatform);
    QCOMPARE(machine.platform.maxCelsius > 0, heatedPlatform);
    QCOMPARE(machine.defaultFileFormat, format.toStdString());
    for (const AxisRange& range : machine.buildVolume) {
        QCOMPARE(range.min, 0.0);
        QVERIFY(range.max >= 100 && range.max <= 300);
    }
    QVERIFY(machine.toolhead.maxCelsius >= 250);
    // Flexible filament is printed at 100; whatever else is colder than this is not soft.
    QVERIFY(machine.minimumExtrusionCelsius >= 80 && machine.minimumExtrusionCelsius <= 100);
    // Warm within minutes: what a person expects of such a machine.
    const double seconds = machine.toolhead.secondsToHeat(23, 230);
    QVERIFY2(seconds > 30 && seconds < 300, qPrintable(QString::number(seconds)));
    QCOMPARE(machine.toolOffsets[1][0] != 0, extruders == 2);
}

void tst_MachineDefinition::takesFromTheTypeWhatAMachineDoesNotSay()
{
    const MachineDefinitions definitions = loaded(smallFile());

    QCOMPARE(definitions.machines.size(), std::size_t(1));
    const MachineDefinition& machine = definitions.machines[0];
    const MachineDefinition& type = definitions.archetypes[3];
    QCOMPARE(machine.key, std::string("one"));
    QCOMPARE(machine.type, Printer::Fabrino2X);
    QCOMPARE(machine.displayName, type.displayName);
    QCOMPARE(machine.portName, std::string("p1"));
    QCOMPARE(machine.portIdentity, std::string("i1"));
    QVERIFY(!machine.portInConnectionWhitelist);
    QVERIFY(machine.pluggedIn);
    QCOMPARE(machine.extruders, 2);
    QCOMPARE(machine.stepsPerMm, type.stepsPerMm);
    QCOMPARE(machine.maxFeed, type.maxFeed);
    QCOMPARE(machine.homePosition, type.homePosition);
    QCOMPARE(machine.firmwareVersion, type.firmwareVersion);
    QCOMPARE(machine.x3gMachineId, type.x3gMachineId);
}

void tst_MachineDefinition::overridesMembersOfObjectsOneByOne()
{
    Json::Value file = smallFile();
    Json::Value& machine = file["machines"][0];
    machine["display_name"] = "Mine";
    machine["steps_per_mm"]["y"] = 100.5;
    machine["build_volume"]["z"] = parsed("[-1, 50.5]");
    machine["homing"]["z"] = "max";
    machine["homing"]["position"]["z"] = 50;
    machine["toolhead"]["max"] = 260;
    machine["tool_offsets"] = parsed("[[0, 0, 0], [1.5, -2, 0.25]]");
    machine["x3g_machine_id"] = 65535;
    machine["file_format"] = "s3g";

    const MachineDefinitions definitions = loaded(file);

    const MachineDefinition& read = definitions.machines[0];
    const MachineDefinition& type = definitions.archetypes[3];
    QCOMPARE(read.displayName, std::string("Mine"));
    QCOMPARE(read.stepsPerMm[MotorY], 100.5);
    QCOMPARE(read.stepsPerMm[MotorX], type.stepsPerMm[MotorX]);
    QCOMPARE(read.buildVolume[2].min, -1.0);
    QCOMPARE(read.buildVolume[2].max, 50.5);
    QCOMPARE(read.buildVolume[0].max, type.buildVolume[0].max);
    QVERIFY(read.homesToMaximum[2]);
    QVERIFY(!type.homesToMaximum[2]);
    QCOMPARE(read.homePosition[2], 50.0);
    QCOMPARE(read.toolhead.maxCelsius, 260);
    QCOMPARE(read.toolhead.riseSeconds, type.toolhead.riseSeconds);
    QCOMPARE(read.toolOffsets[1], (std::array<double, 3>{1.5, -2, 0.25}));
    QCOMPARE(read.x3gMachineId, std::uint16_t(65535));
    QCOMPARE(read.defaultFileFormat, std::string("s3g"));
}

void tst_MachineDefinition::overridesTypesForMachinesAndArchetypes()
{
    Json::Value file = smallFile();
    file["types"]["fabrino_2x"]["max_feed"]["x"] = 77;
    file["types"]["fabrino_2x"]["display_name"] = "Ours";

    const MachineDefinitions definitions = loaded(file);

    QCOMPARE(definitions.machines[0].maxFeed[MotorX], 77.0);
    QCOMPARE(definitions.machines[0].displayName, std::string("Ours"));
    QCOMPARE(definitions.archetypes[3].maxFeed[MotorX], 77.0);
    QVERIFY(definitions.archetypes[2].maxFeed[MotorX] != 77.0);
}

void tst_MachineDefinition::keepsTheFilesOrder()
{
    Json::Value file = smallFile();
    for (const char* key : {"zeta", "alpha"}) {
        Json::Value machine = file["machines"][0];
        machine["key"] = key;
        machine["port"]["name"] = std::string("port ") + key;
        machine["port"]["identity"] = std::string("identity ") + key;
        file["machines"].append(machine);
    }

    const MachineDefinitions definitions = loaded(file);

    QCOMPARE(definitions.machines.size(), std::size_t(3));
    QCOMPARE(definitions.machines[1].key, std::string("zeta"));
    QCOMPARE(definitions.machines[2].key, std::string("alpha"));
}

void tst_MachineDefinition::acceptsAFileWithoutMachines()
{
    const MachineDefinitions definitions = loadMachineDefinitions(R"({"machines": []})");

    QVERIFY(definitions.machines.empty());
    QCOMPARE(definitions.archetypes.size(), std::size_t(6));
}

void tst_MachineDefinition::refusesAFileWithAnError_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("error");

    // The path leads to a member of the only machine, unless it begins with a slash.
    const auto row = [](const char* path, const char* value, const char* error) {
        QTest::addRow("%s = %s", path, value)
            << QByteArray(path) << QByteArray(value) << QByteArray(error);
    };
    row("/", "[]", "must be an object");
    row("/machines", "{}", "\"machines\" must be a list");
    row("/machines", "(removed)", "\"machines\" is missing");
    row("/machines", "[1]", "machines[0]: must be an object");
    row("/types", "[]", "\"types\" must be an object");
    row("/types/fabrino_3", "{}", "types: \"fabrino_3\" is not known here");
    row("/types/fabrino_2", "7", "types: \"fabrino_2\" must be an object");
    row("/types/fabrino_2/key", "\"x\"", "types.fabrino_2: \"key\" is not known here");
    row("/types/fabrino_2/extruders", "3",
        "types.fabrino_2: \"extruders\" must be a whole number from 1 to 2");
    row("/comment", "\"x\"", "\"comment\" is not known here");
    row("key", "(removed)", "machines[0]: \"key\" is missing");
    row("key", "\"\"", "machines[0]: \"key\" must be a text");
    row("type", "\"Fabrino_2\"", "machines[0] (one): \"type\" is none of the six machine types");
    row("type", "3", "machines[0] (one): \"type\" must be a text");
    row("colour", "\"red\"", "machines[0]: \"colour\" is not known here");
    row("plugged_in", "1", "machines[0] (one): \"plugged_in\" must be true or false");
    row("port", "(removed)", "machines[0] (one): \"port\" is missing");
    row("port/name", "\"\"", "machines[0] (one).port: \"name\" must be a text");
    row("port/identity", "(removed)", "machines[0] (one).port: \"identity\" is missing");
    row("port/speed", "9600", "machines[0] (one).port: \"speed\" is not known here");
    row("machine_names", "[]", "machines[0] (one): \"machine_names\" must not be empty");
    row("machine_names", "[1]", "machines[0] (one): \"machine_names\" must be a list of texts");
    row("firmware_version", "\"seven\"",
        "machines[0] (one): \"firmware_version\" must be \"MAJOR.MINOR\"");
    row("extruders", "1.5", "machines[0] (one): \"extruders\" must be a whole number from 1 to 2");
    row("build_volume/x", "[0]",
        "machines[0] (one).build_volume: \"x\" must hold 2 numbers within 10000");
    row("build_volume/x", "[10, 10]",
        "machines[0] (one).build_volume: \"x\" must begin below its end");
    row("build_volume/x", "[0, 1e300]",
        "machines[0] (one).build_volume: \"x\" must hold 2 numbers within 10000");
    row("steps_per_mm/z", "0",
        "machines[0] (one).steps_per_mm: \"z\" must be a number from 0.01 to 100000");
    row("steps_per_mm/c", "1", "machines[0] (one).steps_per_mm: \"c\" is not known here");
    row("max_feed/a", "-1", "machines[0] (one).max_feed: \"a\" must be a number from 0.1 to 10000");
    row("homing/x", "\"left\"", "machines[0] (one).homing: \"x\" must be \"min\" or \"max\"");
    row("homing/feed/x", "null",
        "machines[0] (one).homing.feed: \"x\" must be a number from 0.1 to 10000");
    row("toolhead/full_power", "280",
        "machines[0] (one).toolhead: \"full_power\" must be a number from 281 to 2000");
    row("platform", "null", "machines[0] (one): \"platform\" must be an object");
    row("minimum_extrusion_temperature", "281",
        "machines[0] (one): \"minimum_extrusion_temperature\" must be a whole number from 0 to "
        "280");
    row("tool_offsets", "[[0, 0, 0]]", "machines[0] (one): \"tool_offsets\" must hold 2 points");
    row("tool_offsets", "[[1, 0, 0], [0, 0, 0]]",
        "machines[0] (one): \"tool_offsets\" must begin with [0, 0, 0]");
    row("tool_offsets", "[[0, 0, 0], [0, 0]]",
        "machines[0] (one): \"tool_offsets\" must hold 3 numbers within 10000");
    row("x3g_machine_id", "65536",
        "machines[0] (one): \"x3g_machine_id\" must be a whole number from 0 to 65535");
    row("file_format", "\"gcode\"",
        "machines[0] (one): \"file_format\" must be \"x3g\" or \"s3g\"");
}

void tst_MachineDefinition::refusesAFileWithAnError()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, error);
    Json::Value file = smallFile();
    Json::Value* parent = path.startsWith('/') ? &file : &file["machines"][0];
    QList<QByteArray> names = path.split('/');
    names.removeAll(QByteArray());
    while (names.size() > 1)
        parent = &(*parent)[names.takeFirst().toStdString()];
    if (names.isEmpty())
        file = parsed(value.toStdString());
    else if (value == "(removed)")
        parent->removeMember(names[0].toStdString());
    else
        (*parent)[names[0].toStdString()] = parsed(value.toStdString());

    QCOMPARE(thrownBy([&] { loaded(file); }),
             QStringLiteral("Machines file: ") + QString::fromUtf8(error));
}

void tst_MachineDefinition::refusesTextThatIsNotJson()
{
    for (const char* text : {"", "{", "machines", "{\"machines\": []} x", "\xff"}) {
        const QString thrown = thrownBy([&] { loadMachineDefinitions(text); });
        QVERIFY2(thrown.startsWith(QLatin1String("Machines file: ")), qPrintable(thrown));
    }
    QVERIFY(thrownBy([] {
                loadMachineDefinitions(std::string(100000, '['));
            }).startsWith(QLatin1String("Machines file: ")));
}

void tst_MachineDefinition::refusesWhatIsTakenAlready_data()
{
    QTest::addColumn<QByteArray>("member");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("error");

    QTest::newRow("key") << QByteArray("key") << QByteArray("one")
                         << QStringLiteral("machine \"one\": the key \"one\" is taken already");
    QTest::newRow("an archetype's key")
        << QByteArray("key") << QByteArray("archetype_fabrino_2")
        << QStringLiteral(
               "machine \"archetype_fabrino_2\": the key \"archetype_fabrino_2\" is taken already");
    QTest::newRow("port name") << QByteArray("name") << QByteArray("p1")
                               << QStringLiteral(
                                      "machine \"two\": the port name \"p1\" is taken already");
    QTest::newRow("port identity")
        << QByteArray("identity") << QByteArray("i1")
        << QStringLiteral("machine \"two\": the port identity \"i1\" is taken already");
}

void tst_MachineDefinition::refusesWhatIsTakenAlready()
{
    QFETCH(QByteArray, member);
    QFETCH(QByteArray, value);
    QFETCH(QString, error);
    Json::Value file = smallFile();
    Json::Value second = file["machines"][0];
    second["key"] = "two";
    second["port"]["name"] = "p2";
    second["port"]["identity"] = "i2";
    (member == "key" ? second : second["port"])[member.toStdString()] = value.toStdString();
    file["machines"].append(second);

    QCOMPARE(thrownBy([&] { loaded(file); }), QStringLiteral("Machines file: ") + error);
}

void tst_MachineDefinition::refusesWrongTypesOfEveryMember()
{
    const Json::Value builtIn = parsed(defaultMachinesJson());
    const Json::Value& type = builtIn["types"]["fabrino_2x"];
    for (const std::string& name : type.getMemberNames()) {
        for (const char* wrong : {"null", "[]", "{}", "\"\"", "-5", "true"}) {
            if (name == "heated_platform" && std::string(wrong) == "true")
                continue;
            Json::Value file = smallFile();
            file["machines"][0][name] = parsed(wrong);
            // An empty object takes everything from the type.
            const bool fine = type[name].isObject() && std::string(wrong) == "{}";
            const QString thrown = thrownBy([&] { loaded(file); });
            QVERIFY2(fine ? thrown == QLatin1String("nothing")
                          : thrown.startsWith(QLatin1String("Machines file: machines[0] (one)")),
                     qPrintable(QString::fromStdString(name) + QLatin1String(wrong) + thrown));
        }
    }
}

void tst_MachineDefinition::namesTypes()
{
    for (int type = 1; type <= 6; ++type) {
        const auto value = static_cast<Printer::Type>(type);
        QCOMPARE(machineTypeFromName(machineTypeName(value)), value);
    }
    QCOMPARE(machineTypeName(static_cast<Printer::Type>(0)), std::string());
    QCOMPARE(machineTypeName(static_cast<Printer::Type>(7)), std::string());
    QCOMPARE(machineTypeFromName("Fabrino_2"), Printer::UnknownType);
    QCOMPARE(machineTypeFromName(""), Printer::UnknownType);
}

void tst_MachineDefinition::heatsByACurve()
{
    const HeaterDefinition heater{250, 323, 100, 150};

    // Half of the way to full power takes ln 2 time constants.
    QVERIFY(std::abs(heater.secondsToHeat(23, 173) - 100 * std::log(2.0)) < 1e-9);
    QVERIFY(std::abs(heater.celsiusAfter(23, 250, 100 * std::log(2.0)) - 173) < 1e-9);
    QCOMPARE(heater.celsiusAfter(23, 250, 0), 23.0);
    QCOMPARE(heater.celsiusAfter(23, 250, 10000), 250.0);
    QCOMPARE(heater.secondsToHeat(200, 200), 0.0);
    QCOMPARE(heater.secondsToHeat(210, 200), 0.0);
    QVERIFY(std::abs(heater.celsiusAfter(23, 250, heater.secondsToHeat(23, 250)) - 250) < 1e-9);
}

void tst_MachineDefinition::coolsByACurve()
{
    const HeaterDefinition heater{250, 323, 100, 150};

    QVERIFY(std::abs(heater.celsiusAfter(223, 0, 150 * std::log(2.0)) - 123) < 1e-9);
    QVERIFY(std::abs(heater.celsiusAfter(223, 0, 100000) - HeaterDefinition::kRoomCelsius) < 1e-9);
    QCOMPARE(heater.celsiusAfter(223, 200, 100000), 200.0);
    QCOMPARE(heater.celsiusAfter(200, 200, 100), 200.0);
    QCOMPARE(heater.celsiusAfter(10, 0, 100), 10.0);
}

void tst_MachineDefinition::leavesAHeaterThatIsNotThereAlone()
{
    const HeaterDefinition none;

    QCOMPARE(none.celsiusAfter(23, 100, 50), 23.0);
    QCOMPARE(none.celsiusAfter(23, 0, 0), 23.0);
    QCOMPARE(none.secondsToHeat(23, 100), 0.0);
}

QTEST_GUILESS_MAIN(tst_MachineDefinition)
#include "tst_machine_definition.moc"
