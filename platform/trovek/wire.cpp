#include "trovek/wire.h"

#include <cfloat>
#include <cmath>
#include <initializer_list>
#include <stdexcept>
#include <type_traits>
#include <utility>

namespace trovek::wire {

namespace {

constexpr int kMaxExtruders = 16;

[[noreturn]] void throwWrongKind(const char* name, const char* expected)
{
    throw std::runtime_error(std::string("Member \"") + name + "\" is not " + expected);
}

void checkObject(const Json::Value& value, const char* what)
{
    if (!value.isObject())
        throw std::runtime_error(std::string("Not a JSON object: ") + what);
}

/** Null when it is missing. */
const Json::Value* findMember(const Json::Value& object, const char* name)
{
    if (!object.isObject())
        throw std::runtime_error(std::string("No JSON object around member \"") + name + '"');
    return object.isMember(name) ? &object[name] : nullptr;
}

const Json::Value& requiredMember(const Json::Value& object, const char* name)
{
    const Json::Value* member = findMember(object, name);
    if (!member)
        throw std::runtime_error(std::string("Missing member \"") + name + '"');
    return *member;
}

void readInto(const Json::Value& member, const char* name, std::string* target)
{
    if (!member.isString())
        throwWrongKind(name, "a string");
    *target = member.asString();
}

void readInto(const Json::Value& member, const char* name, bool* target)
{
    if (!member.isBool())
        throwWrongKind(name, "a truth value");
    *target = member.asBool();
}

void readInto(const Json::Value& member, const char* name, int* target)
{
    if (!member.isInt())
        throwWrongKind(name, "an integer of 32 bits");
    *target = member.asInt();
}

void readInto(const Json::Value& member, const char* name, std::int64_t* target)
{
    if (!member.isInt64())
        throwWrongKind(name, "an integer of 64 bits");
    *target = member.asInt64();
}

void readInto(const Json::Value& member, const char* name, std::uint32_t* target)
{
    if (!member.isUInt())
        throwWrongKind(name, "an unsigned integer of 32 bits");
    *target = member.asUInt();
}

void readInto(const Json::Value& member, const char* name, double* target)
{
    if (!member.isNumeric() || !std::isfinite(member.asDouble()))
        throwWrongKind(name, "a number");
    *target = member.asDouble();
}

void readInto(const Json::Value& member, const char* name, float* target)
{
    double value = 0;
    readInto(member, name, &value);
    if (std::abs(value) > double(FLT_MAX))
        throwWrongKind(name, "a number of single precision");
    *target = static_cast<float>(value);
}

template <typename T>
void readInto(const Json::Value& member, const char* name, std::vector<T>* target)
{
    if (!member.isArray())
        throwWrongKind(name, "a list");
    std::vector<T> values;
    for (const Json::Value& element : member) {
        T value = T();
        readInto(element, name, &value);
        values.push_back(std::move(value));
    }
    *target = std::move(values);
}

/** Leaves the target as it is when the member is missing. */
template <typename T>
void readOptional(const Json::Value& object, const char* name, T* target)
{
    if (const Json::Value* member = findMember(object, name))
        readInto(*member, name, target);
}

template <typename T>
T readRequired(const Json::Value& object, const char* name)
{
    T value = T();
    readInto(requiredMember(object, name), name, &value);
    return value;
}

std::string readIdentity(const Json::Value& object, const char* name)
{
    std::string identity = readRequired<std::string>(object, name);
    if (identity.empty())
        throw std::runtime_error(std::string("Member \"") + name + "\" is empty");
    return identity;
}

/** The default for a value that this version does not know. */
template <typename Enum>
void readEnum(const Json::Value& object, const char* name, Enum last, Enum* target)
{
    int value = *target;
    readOptional(object, name, &value);
    if (value >= 0 && value <= last)
        *target = static_cast<Enum>(value);
}

template <typename T>
Json::Value toJsonArray(const std::vector<T>& values)
{
    Json::Value array(Json::arrayValue);
    for (const T& value : values)
        array.append(value);
    return array;
}

} // namespace

JsonRpcException makeError(const std::string& name, const std::string& message)
{
    Json::Value data(Json::objectValue);
    data["name"] = name;
    data["message"] = message;
    return JsonRpcException(message, std::move(data));
}

Json::Value toJson(const Printer::Data& printer)
{
    Json::Value value(Json::objectValue);
    value["name"] = printer.key.name();
    value["display_name"] = printer.displayName;
    value["port"] = printer.portName;
    value["type"] = int(printer.type);
    value["state"] = int(printer.state);
    value["machine_names"] = toJsonArray(printer.machineNames);
    value["extruders"] = printer.numberOfExtruders;
    value["heated_platform"] = printer.hasHeatedPlatform;
    value["connected"] = printer.connected;
    value["can_print"] = printer.canPrint;
    value["can_print_to_file"] = printer.canPrintToFile;
    value["firmware_version"] = printer.firmwareVersion.str();
    value["firmware_description"] = printer.firmwareVersion.description();
    value["temperatures"] = toJsonArray(printer.toolTemperature.toolheads);
    value["platform_temperature"] = printer.toolTemperature.platform;
    value["targets"] = toJsonArray(printer.toolheadTargetTemperature);
    value["platform_target"] = printer.platformTargetTemperature;
    Json::Value volume(Json::arrayValue);
    for (const float millimetres : printer.buildVolume)
        volume.append(double(millimetres));
    value["build_volume"] = volume;
    return value;
}

Printer::Data printerFromJson(const Json::Value& value)
{
    checkObject(value, "printer");
    Printer::Data printer;
    printer.key = MachineName(readIdentity(value, "name"));
    printer.displayName = printer.key.name();
    readOptional(value, "display_name", &printer.displayName);
    readOptional(value, "port", &printer.portName);

    // A type that this version does not know is shown as a generic machine.
    int type = printer.type;
    readOptional(value, "type", &type);
    printer.type = static_cast<Printer::Type>(type);
    readEnum(value, "state", Printer::ErrorState, &printer.state);

    readOptional(value, "machine_names", &printer.machineNames);
    readOptional(value, "extruders", &printer.numberOfExtruders);
    if (printer.numberOfExtruders < 1 || printer.numberOfExtruders > kMaxExtruders)
        throwWrongKind("extruders", "a number of extruders");
    readOptional(value, "heated_platform", &printer.hasHeatedPlatform);
    readOptional(value, "connected", &printer.connected);
    readOptional(value, "can_print", &printer.canPrint);
    readOptional(value, "can_print_to_file", &printer.canPrintToFile);

    std::string version;
    std::string description;
    readOptional(value, "firmware_version", &version);
    readOptional(value, "firmware_description", &description);
    printer.firmwareVersion = FirmwareVersion(version, description);

    readOptional(value, "temperatures", &printer.toolTemperature.toolheads);
    readOptional(value, "platform_temperature", &printer.toolTemperature.platform);
    readOptional(value, "targets", &printer.toolheadTargetTemperature);
    readOptional(value, "platform_target", &printer.platformTargetTemperature);

    std::vector<float> volume(std::extent_v<decltype(printer.buildVolume)>, 0.0F);
    const std::size_t corners = volume.size();
    readOptional(value, "build_volume", &volume);
    if (volume.size() != corners)
        throwWrongKind("build_volume", "a list of six numbers");
    std::copy(volume.begin(), volume.end(), printer.buildVolume);
    return printer;
}

Json::Value toJson(const Port::Data& port)
{
    Json::Value value(Json::objectValue);
    value["name"] = port.name;
    value["identity"] = port.identity;
    value["display_name"] = port.displayName;
    value["machine"] = port.machineName;
    value["whitelisted"] = port.inConnectionWhitelist;
    return value;
}

Port::Data portFromJson(const Json::Value& value)
{
    checkObject(value, "port");
    Port::Data port;
    port.name = readIdentity(value, "name");
    port.identity = readIdentity(value, "identity");
    readOptional(value, "display_name", &port.displayName);
    readOptional(value, "machine", &port.machineName);
    readOptional(value, "whitelisted", &port.inConnectionWhitelist);
    return port;
}

Json::Value toJson(const Job::Data& job)
{
    Json::Value value(Json::objectValue);
    value["id"] = job.id;
    value["name"] = job.name;
    value["kind"] = job.kind;
    value["machine"] = job.machine.name();
    value["conclusion"] = int(job.conclusion);
    value["progress"] = job.progress;
    value["stage"] = job.stage;
    value["failure"] = job.failure;
    if (job.secondsLeft >= 0)
        value["seconds_left"] = job.secondsLeft;
    return value;
}

Job::Data jobFromJson(const Json::Value& value)
{
    checkObject(value, "job");
    Job::Data job;
    job.id = intMember(value, "id");
    readOptional(value, "name", &job.name);
    readOptional(value, "kind", &job.kind);
    std::string machine;
    readOptional(value, "machine", &machine);
    job.machine = MachineName(machine);
    readEnum(value, "conclusion", JobNotConcluded, &job.conclusion);
    readOptional(value, "progress", &job.progress);
    job.progress = std::min(std::max(job.progress, 0), 100);
    readOptional(value, "stage", &job.stage);
    readOptional(value, "failure", &job.failure);
    readOptional(value, "seconds_left", &job.secondsLeft);
    return job;
}

Json::Value toJson(const EepromBackup& backup)
{
    Json::Value value(Json::objectValue);
    value["name"] = backup.name;
    value["time"] = Json::Int64(backup.time);
    return value;
}

EepromBackup eepromBackupFromJson(const Json::Value& value)
{
    checkObject(value, "backup");
    EepromBackup backup;
    backup.name = readIdentity(value, "name");
    backup.time = readRequired<std::int64_t>(value, "time");
    return backup;
}

Json::Value toJson(const SlicerConfiguration& configuration)
{
    Json::Value value(Json::objectValue);
    value["slicer"] = int(configuration.slicer());
    value["extruder"] = int(configuration.extruder());
    value["profile_path"] = configuration.profilePath();
    value["layer_height"] = configuration.layerHeight();
    value["infill"] = configuration.infill();
    value["shells"] = configuration.shells();
    value["print_speed"] = configuration.printSpeed();
    value["travel_speed"] = configuration.travelSpeed();
    value["extruder_temperature"] = configuration.extruderTemperature();
    value["left_extruder_temperature"] = configuration.leftExtruderTemperature();
    value["platform_temperature"] = configuration.platformTemperature();
    value["heat_platform"] = configuration.heatPlatform();
    value["raft"] = configuration.raft();
    value["supports"] = configuration.supports();
    value["default_raft_extruder"] = configuration.defaultRaftExtruder();
    value["default_support_extruder"] = configuration.defaultSupportExtruder();
    value["do_auto_raft"] = configuration.doAutoRaft();
    value["do_auto_support"] = configuration.doAutoSupport();
    return value;
}

SlicerConfiguration slicerConfigurationFromJson(const Json::Value& value)
{
    checkObject(value, "slicer_config");
    SlicerConfiguration configuration;
    const auto read = [&](const char* name, auto current, auto setter) {
        readOptional(value, name, &current);
        (configuration.*setter)(current);
    };
    using Config = SlicerConfiguration;

    Config::Slicer slicer = configuration.slicer();
    readEnum(value, "slicer", Config::UnknownSlicer, &slicer);
    configuration.setSlicer(slicer);
    Config::Extruder extruder = configuration.extruder();
    readEnum(value, "extruder", Config::Both, &extruder);
    configuration.setExtruder(extruder);

    read("profile_path", configuration.profilePath(), &Config::setProfilePath);
    read("layer_height", configuration.layerHeight(), &Config::setLayerHeight);
    read("infill", configuration.infill(), &Config::setInfill);
    read("shells", configuration.shells(), &Config::setShells);
    read("print_speed", configuration.printSpeed(), &Config::setPrintSpeed);
    read("travel_speed", configuration.travelSpeed(), &Config::setTravelSpeed);
    read("extruder_temperature", configuration.extruderTemperature(),
         &Config::setExtruderTemperature);
    read("left_extruder_temperature", configuration.leftExtruderTemperature(),
         &Config::setLeftExtruderTemperature);
    read("platform_temperature", configuration.platformTemperature(),
         &Config::setPlatformTemperature);
    read("heat_platform", configuration.heatPlatform(), &Config::setHeatPlatform);
    read("raft", configuration.raft(), &Config::setRaft);
    read("supports", configuration.supports(), &Config::setSupports);
    read("default_raft_extruder", configuration.defaultRaftExtruder(),
         &Config::setDefaultRaftExtruder);
    read("default_support_extruder", configuration.defaultSupportExtruder(),
         &Config::setDefaultSupportExtruder);
    read("do_auto_raft", configuration.doAutoRaft(), &Config::setDoAutoRaft);
    read("do_auto_support", configuration.doAutoSupport(), &Config::setDoAutoSupport);
    return configuration;
}

Json::Value toJson(const std::vector<std::string>& texts)
{
    return toJsonArray(texts);
}

std::string stringMember(const Json::Value& object, const char* name)
{
    return readRequired<std::string>(object, name);
}

int intMember(const Json::Value& object, const char* name)
{
    return readRequired<int>(object, name);
}

bool boolMember(const Json::Value& object, const char* name)
{
    return readRequired<bool>(object, name);
}

std::vector<std::string> stringListMember(const Json::Value& object, const char* name)
{
    return readRequired<std::vector<std::string>>(object, name);
}

} // namespace trovek::wire
