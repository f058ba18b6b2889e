#include "machine_definition.h"

#include "machine_entry.h"

#include <rpcwire/json_text.h>

#include <json/value.h>

#include <QFile>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <stdexcept>

static void initializeMachinesResource()
{
    // A static library's resources are dropped by the linker when nobody asks for them.
    Q_INIT_RESOURCE(machines);
}

namespace trovek::service {

namespace {

constexpr const char* kTypeNames[] = {"fabrino_single", "fabrino_dual", "fabrino_2",
                                      "fabrino_2x",     "cubio_single", "cubio_dual"};
constexpr int kFirstType = 1;
constexpr int kLastType = 6;
constexpr char kMotorLetters[] = {'x', 'y', 'z', 'a', 'b'};
constexpr double kLongestAxis = 10000;
constexpr double kMostStepsPerMm = 100000;
constexpr double kHighestFeed = 10000;
constexpr double kHottest = 1000;
constexpr double kSlowestHeater = 100000;

/** The members of `over` on top of those of `base`, objects member by member. */
Json::Value merged(const Json::Value& base, const Json::Value& over)
{
    if (!base.isObject() || !over.isObject())
        return over;
    Json::Value result = base;
    for (const std::string& name : over.getMemberNames())
        result[name] = base.isMember(name) ? merged(base[name], over[name]) : over[name];
    return result;
}

HeaterDefinition readHeater(const MachineEntry& entry)
{
    entry.checkMembers({"max", "full_power", "rise_seconds", "fall_seconds"});
    HeaterDefinition heater;
    heater.maxCelsius = entry.integer("max", 1, static_cast<int>(kHottest));
    heater.fullPowerCelsius = entry.number("full_power", heater.maxCelsius + 1, 2 * kHottest);
    heater.riseSeconds = entry.number("rise_seconds", 0.01, kSlowestHeater);
    heater.fallSeconds = entry.number("fall_seconds", 0.01, kSlowestHeater);
    return heater;
}

void readHoming(const MachineEntry& entry, MachineDefinition& machine)
{
    entry.checkMembers({"x", "y", "z", "position", "feed"});
    const MachineEntry position = entry.object("position");
    const MachineEntry feed = entry.object("feed");
    position.checkMembers({"x", "y", "z"});
    feed.checkMembers({"x", "y", "z"});
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::string name(1, kMotorLetters[axis]);
        machine.homesToMaximum[axis] = entry.choice(name, {"min", "max"}) == "max";
        machine.homePosition[axis] = position.number(name, -kLongestAxis, kLongestAxis);
        machine.homingFeed[axis] = feed.number(name, 0.1, kHighestFeed);
    }
}

void readPort(const MachineEntry& entry, MachineDefinition& machine)
{
    entry.checkMembers({"name", "identity", "whitelisted"});
    machine.portName = entry.text("name");
    machine.portIdentity = entry.text("identity");
    machine.portInConnectionWhitelist = entry.boolean("whitelisted");
}

/** What a type and a machine have in common. */
void readBody(const MachineEntry& entry, MachineDefinition& machine)
{
    machine.displayName = entry.text("display_name");
    machine.machineNames = entry.texts("machine_names");
    machine.firmwareVersion = entry.text("firmware_version");
    if (!FirmwareVersion(machine.firmwareVersion).valid())
        entry.fail("firmware_version", "must be \"MAJOR.MINOR\"");
    machine.extruders = entry.integer("extruders", 1, 2);
    machine.hasHeatedPlatform = entry.boolean("heated_platform");

    const MachineEntry volume = entry.object("build_volume");
    const MachineEntry steps = entry.object("steps_per_mm");
    const MachineEntry feeds = entry.object("max_feed");
    volume.checkMembers({"x", "y", "z"});
    steps.checkMembers({"x", "y", "z", "a", "b"});
    feeds.checkMembers({"x", "y", "z", "a", "b"});
    for (std::size_t motor = 0; motor < kMotorCount; ++motor) {
        const std::string name(1, kMotorLetters[motor]);
        machine.stepsPerMm[motor] = steps.number(name, 0.01, kMostStepsPerMm);
        machine.maxFeed[motor] = feeds.number(name, 0.1, kHighestFeed);
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::string name(1, kMotorLetters[axis]);
        const std::vector<double> range = volume.numbers(name, 2, kLongestAxis);
        if (range[0] >= range[1])
            volume.fail(name, "must begin below its end");
        machine.buildVolume[axis] = {range[0], range[1]};
    }
    readHoming(entry.object("homing"), machine);
    machine.toolhead = readHeater(entry.object("toolhead"));
    if (machine.hasHeatedPlatform)
        machine.platform = readHeater(entry.object("platform"));
    machine.minimumExtrusionCelsius =
        entry.integer("minimum_extrusion_temperature", 0, machine.toolhead.maxCelsius);
    if (machine.extruders == 2) {
        const auto offsets = entry.points("tool_offsets", 2, kLongestAxis);
        if (offsets[0] != std::array<double, 3>{})
            entry.fail("tool_offsets", "must begin with [0, 0, 0]");
        machine.toolOffsets = {offsets[0], offsets[1]};
    }
    machine.x3gMachineId = static_cast<std::uint16_t>(
        entry.integer("x3g_machine_id", 0, std::numeric_limits<std::uint16_t>::max()));
    machine.defaultFileFormat = entry.choice("file_format", {"x3g", "s3g"});
}

std::vector<std::string> typeMembers()
{
    return {"display_name", "machine_names",   "firmware_version",
            "extruders",    "heated_platform", "build_volume",
            "steps_per_mm", "max_feed",        "homing",
            "toolhead",     "platform",        "minimum_extrusion_temperature",
            "tool_offsets", "x3g_machine_id",  "file_format"};
}

std::vector<std::string> machineMembers()
{
    std::vector<std::string> names = typeMembers();
    names.insert(names.end(), {"key", "type", "port", "plugged_in"});
    return names;
}

Json::Value parse(const std::string& json)
{
    Json::Value document;
    std::string error;
    if (!rpcwire::parseJson(json, &document, &error))
        throw std::runtime_error("Machines file: " + error);
    return document;
}

/** One object a type, in the types' order, each complete. */
std::vector<Json::Value> readTypes(const MachineEntry& document, const Json::Value& builtIn)
{
    std::vector<Json::Value> types;
    const Json::Value& own = document.value()["types"];
    for (const char* name : kTypeNames)
        types.push_back(merged(builtIn["types"][name], own.isObject() && own.isMember(name)
                                                           ? own[name]
                                                           : Json::Value(Json::objectValue)));
    return types;
}

MachineDefinition readArchetype(int type, const Json::Value& value)
{
    const std::string name = kTypeNames[type - kFirstType];
    const MachineEntry entry(value, "types." + name);
    entry.checkMembers(typeMembers());
    MachineDefinition machine;
    machine.key = "archetype_" + name;
    machine.type = static_cast<Printer::Type>(type);
    machine.isArchetype = true;
    readBody(entry, machine);
    return machine;
}

MachineDefinition readMachine(const Json::Value& own, std::size_t index,
                              const std::vector<Json::Value>& types)
{
    std::string where = "machines[" + std::to_string(index) + "]";
    const MachineEntry plain(own, where);
    plain.checkMembers(machineMembers());
    MachineDefinition machine;
    machine.key = plain.text("key");
    where += " (" + machine.key + ")";
    const MachineEntry named(own, where);
    machine.type = machineTypeFromName(named.text("type"));
    if (machine.type == Printer::UnknownType)
        named.fail("type", "is none of the six machine types");

    const Json::Value all = merged(types[static_cast<std::size_t>(machine.type - kFirstType)], own);
    const MachineEntry entry(all, where);
    machine.pluggedIn = entry.boolean("plugged_in");
    readPort(entry.object("port"), machine);
    readBody(entry, machine);
    return machine;
}

void checkUnique(const MachineDefinitions& definitions)
{
    std::set<std::string> keys;
    std::set<std::string> ports;
    std::set<std::string> identities;
    for (const MachineDefinition& archetype : definitions.archetypes)
        keys.insert(archetype.key);
    const auto check = [](std::set<std::string>& seen, const std::string& text,
                          const std::string& what, const std::string& key) {
        if (!seen.insert(text).second)
            throw std::runtime_error("Machines file: machine \"" + key + "\": " + what + " \"" +
                                     text + "\" is taken already");
    };
    for (const MachineDefinition& machine : definitions.machines) {
        check(keys, machine.key, "the key", machine.key);
        check(ports, machine.portName, "the port name", machine.key);
        check(identities, machine.portIdentity, "the port identity", machine.key);
    }
}

} // namespace

double HeaterDefinition::secondsToHeat(double fromCelsius, double toCelsius) const
{
    if (fromCelsius >= toCelsius || toCelsius >= fullPowerCelsius)
        return 0;
    return riseSeconds *
           std::log((fullPowerCelsius - fromCelsius) / (fullPowerCelsius - toCelsius));
}

double HeaterDefinition::celsiusAfter(double fromCelsius, double targetCelsius,
                                      double seconds) const
{
    if (maxCelsius == 0)
        return fromCelsius;
    if (targetCelsius > fromCelsius) {
        const double risen =
            fullPowerCelsius - (fullPowerCelsius - fromCelsius) * std::exp(-seconds / riseSeconds);
        return std::min(risen, targetCelsius);
    }
    // A target below the room's temperature cannot be held.
    const double floor = std::max(targetCelsius, kRoomCelsius);
    if (fromCelsius <= floor)
        return fromCelsius;
    const double fallen =
        kRoomCelsius + (fromCelsius - kRoomCelsius) * std::exp(-seconds / fallSeconds);
    return std::max(fallen, floor);
}

MachineDefinitions loadMachineDefinitions(const std::string& json)
{
    const Json::Value builtIn = parse(defaultMachinesJson());
    const Json::Value value = parse(json);
    const MachineEntry document(value, "");
    document.checkMembers({"types", "machines"});
    if (value.isMember("types")) {
        const MachineEntry types = document.object("types");
        types.checkMembers({kTypeNames, kTypeNames + kLastType});
        for (const std::string& name : types.value().getMemberNames())
            types.object(name);
    }

    MachineDefinitions definitions;
    const std::vector<Json::Value> types = readTypes(document, builtIn);
    for (int type = kFirstType; type <= kLastType; ++type)
        definitions.archetypes.push_back(
            readArchetype(type, types[static_cast<std::size_t>(type - kFirstType)]));
    const Json::Value& machines = document.list("machines");
    for (Json::ArrayIndex i = 0; i < machines.size(); ++i)
        definitions.machines.push_back(readMachine(machines[i], i, types));
    checkUnique(definitions);
    return definitions;
}

MachineDefinitions defaultMachineDefinitions()
{
    return loadMachineDefinitions(defaultMachinesJson());
}

std::string defaultMachinesJson()
{
    initializeMachinesResource();
    QFile file(QStringLiteral(":/service/machines.json"));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("Machines file: the compiled-in one is missing");
    return file.readAll().toStdString();
}

std::string machineTypeName(Printer::Type type)
{
    return type >= kFirstType && type <= kLastType ? kTypeNames[type - kFirstType] : "";
}

Printer::Type machineTypeFromName(const std::string& name)
{
    for (int type = kFirstType; type <= kLastType; ++type) {
        if (name == kTypeNames[type - kFirstType])
            return static_cast<Printer::Type>(type);
    }
    return Printer::UnknownType;
}

} // namespace trovek::service
