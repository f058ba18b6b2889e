#include "trovek/trovek.h"

#include "trovek/log.h"
#include "trovek/wire.h"
#include "trovek_p.h"

#include <stdexcept>
#include <utility>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "platform\\trovek\\trovek";

constexpr int kTimeoutMs = 10'000;
/** Opening a port and homing move the machine; lists of firmware come over a network. */
constexpr int kSlowTimeoutMs = 60'000;
constexpr int kEepromTimeoutMs = 180'000;
/** Firmware, and a calibration that is answered when it is done. */
constexpr int kLongTimeoutMs = 300'000;

/** An object of named values, in the order of writing: {{"machine", name}, ...}. */
Json::Value object(std::initializer_list<std::pair<const char*, Json::Value>> members)
{
    Json::Value value(Json::objectValue);
    for (const auto& [name, member] : members)
        value[name] = member;
    return value;
}

/** Reads an answer; a wrong shape throws a text that names the method. */
template <typename Reader>
auto readAnswer(const char* method, const Json::Value& answer, Reader reader)
{
    try {
        return reader(answer);
    } catch (const std::exception& e) {
        throw std::runtime_error(std::string("Odd answer to ") + method + ": " + e.what());
    }
}

int readID(const char* method, const Json::Value& answer)
{
    return readAnswer(method, answer,
                      [](const Json::Value& value) { return wire::intMember(value, "id"); });
}

EepromMap readMap(const char* method, Json::Value answer)
{
    if (!answer.isObject())
        throw std::runtime_error(std::string("Odd answer to ") + method + ": not a JSON object");
    return EepromMap::fromService(std::move(answer));
}

const MachineName& nameOf(const Printer* printer)
{
    if (!printer)
        throw std::runtime_error("No printer given");
    return printer->key();
}

} // namespace

Trovek::Trovek()
    : d(std::make_unique<Private>(*this))
{}

Trovek::~Trovek() = default;

// ---- The link

void Trovek::connectToDaemon(const Address& address)
{
    d->connectTo(address);
}

bool Trovek::isConnected() const
{
    return d->isOpen();
}

void Trovek::disconnectFromDaemon()
{
    d->endLink();
}

std::string Trovek::serviceVersion() const
{
    return d->isOpen() ? d->serviceVersion() : std::string();
}

quint64 Trovek::callCount() const
{
    return d->callCount();
}

void Trovek::setDeadlineScale(double scale)
{
    d->setDeadlineScale(scale);
}

// ---- Printers and ports

std::list<Printer*> Trovek::printers() const
{
    return d->printers();
}

std::set<Port> Trovek::ports() const
{
    return d->ports();
}

Port Trovek::portFromName(const std::string& name) const
{
    for (const Port& port : d->ports()) {
        if (port.name() == name)
            return port;
    }
    throw std::runtime_error("No such port: " + name);
}

MachineName Trovek::printerFromPortName(const std::string& name) const
{
    for (const Port& port : d->ports()) {
        if (port.name() == name && !port.machineName().empty())
            return MachineName(port.machineName());
    }
    return MachineName();
}

Printer* Trovek::printerFromKey(const MachineName& key) const
{
    return d->findPresent(key);
}

void Trovek::connectToPort(const Port& port)
{
    d->call(wire::method::kConnectToPort,
            object({{"port", port.name()}, {"identity", port.identity()}}), kSlowTimeoutMs);
}

void Trovek::disconnectFromPort(const std::string& name)
{
    d->call(wire::method::kDisconnectFromPort, object({{"port", name}}), kTimeoutMs);
}

// ---- Jobs

Job Trovek::jobFromID(int id)
{
    const char* const method = wire::method::kGetJob;
    const Json::Value answer = d->call(method, object({{"id", id}}), kTimeoutMs);
    return readAnswer(method, answer,
                      [](const Json::Value& value) { return Job(wire::jobFromJson(value)); });
}

void Trovek::cancelJob(int id)
{
    d->call(wire::method::kCancelJob, object({{"id", id}}), kTimeoutMs);
}

int Trovek::print(const MachineName& machine, const std::string& inputFile,
                  const SlicerConfiguration& configuration,
                  const std::vector<std::string>& materials, bool skipStartEndCode)
{
    const char* const method = wire::method::kPrint;
    return readID(method, d->call(method,
                                  object({{"machine", machine.name()},
                                          {"input_path", inputFile},
                                          {"slicer_config", wire::toJson(configuration)},
                                          {"materials", wire::toJson(materials)},
                                          {"skip_start_end", skipStartEndCode}}),
                                  kTimeoutMs));
}

int Trovek::printToFile(const MachineName& machine, const std::string& inputFile,
                        const std::string& outputFile, const SlicerConfiguration& configuration,
                        const std::vector<std::string>& materials, bool skipStartEndCode,
                        const std::string& format)
{
    const char* const method = wire::method::kPrintToFile;
    return readID(method, d->call(method,
                                  object({{"machine", machine.name()},
                                          {"input_path", inputFile},
                                          {"output_path", outputFile},
                                          {"slicer_config", wire::toJson(configuration)},
                                          {"materials", wire::toJson(materials)},
                                          {"skip_start_end", skipStartEndCode},
                                          {"format", format}}),
                                  kTimeoutMs));
}

int Trovek::slice(const MachineName& machine, const std::string& inputFile,
                  const std::string& outputFile, const SlicerConfiguration& configuration,
                  const std::vector<std::string>& materials, bool addStartEndCode)
{
    const char* const method = wire::method::kSlice;
    return readID(method, d->call(method,
                                  object({{"machine", machine.name()},
                                          {"input_path", inputFile},
                                          {"output_path", outputFile},
                                          {"slicer_config", wire::toJson(configuration)},
                                          {"materials", wire::toJson(materials)},
                                          {"add_start_end", addStartEndCode}}),
                                  kTimeoutMs));
}

// ---- Direct control

int Trovek::jog(MachineName machine, Printer::Axis axis, int distance, int limitMs)
{
    const char* const method = wire::method::kJog;
    return readID(method, d->call(method,
                                  object({{"machine", machine.name()},
                                          {"axis", int(axis)},
                                          {"distance", distance},
                                          {"limit_ms", limitMs}}),
                                  kTimeoutMs));
}

void Trovek::home(const MachineName& machine)
{
    d->call(wire::method::kHome, object({{"machine", machine.name()}}), kSlowTimeoutMs);
}

void Trovek::setToolheadTemperature(const MachineName& machine, Printer::Toolhead toolhead,
                                    int targetCelsius)
{
    d->call(
        wire::method::kSetToolheadTemperature,
        object(
            {{"machine", machine.name()}, {"toolhead", int(toolhead)}, {"target", targetCelsius}}),
        kTimeoutMs);
}

void Trovek::cboCalibration(const MachineName& machine)
{
    d->call(wire::method::kCboCalibration, object({{"machine", machine.name()}}), kLongTimeoutMs);
}

// ---- Onboard memory

EepromMap Trovek::readEeprom(Printer* const printer)
{
    const char* const method = wire::method::kReadEeprom;
    return readMap(
        method, d->call(method, object({{"machine", nameOf(printer).name()}}), kEepromTimeoutMs));
}

void Trovek::writeEeprom(Printer* const printer, EepromMap map)
{
    d->call(wire::method::kWriteEeprom,
            object({{"machine", nameOf(printer).name()}, {"map", map.getEepromMap()}}),
            kEepromTimeoutMs);
}

void Trovek::resetEepromCompletely(const MachineName& machine)
{
    d->call(wire::method::kResetEepromCompletely, object({{"machine", machine.name()}}),
            kEepromTimeoutMs);
}

std::vector<EepromBackup> Trovek::eepromBackups(Printer* const printer)
{
    const char* const method = wire::method::kListEepromBackups;
    const Json::Value answer =
        d->call(method, object({{"machine", nameOf(printer).name()}}), kTimeoutMs);
    return readAnswer(method, answer, [](const Json::Value& list) {
        if (!list.isArray())
            throw std::runtime_error("not a list");
        std::vector<EepromBackup> backups;
        for (const Json::Value& backup : list)
            backups.push_back(wire::eepromBackupFromJson(backup));
        return backups;
    });
}

EepromMap Trovek::readEepromBackup(Printer* const printer, const std::string& name)
{
    const char* const method = wire::method::kReadEepromBackup;
    return readMap(method,
                   d->call(method, object({{"machine", nameOf(printer).name()}, {"backup", name}}),
                           kTimeoutMs));
}

// ---- Firmware

Json::Value Trovek::getUploadableMachines()
{
    return d->call(wire::method::kGetUploadableMachines, object({}), kSlowTimeoutMs);
}

std::set<FirmwareVersion> Trovek::getMachineVersions(const std::string& machine, int printerType)
{
    const char* const method = wire::method::kGetMachineVersions;
    const Json::Value answer =
        d->call(method, object({{"machine", machine}, {"type", printerType}}), kSlowTimeoutMs);
    if (!answer.isArray())
        throw std::runtime_error("Odd answer to getmachineversions: not a list");
    std::set<FirmwareVersion> versions;
    for (const Json::Value& pair : answer) {
        if (pair.isArray() && pair.size() == 2 && pair[0].isString() && pair[1].isString())
            versions.emplace(pair[0].asString(), pair[1].asString());
        else
            TROVEK_LOG(0) << "Firmware version left out, not a pair of texts" << std::endl;
    }
    return versions;
}

std::string Trovek::downloadFirmware(const std::string& machine, int printerType,
                                     const FirmwareVersion& version)
{
    const Json::Value answer =
        d->call(wire::method::kDownloadFirmware,
                object({{"machine", machine}, {"type", printerType}, {"version", version.str()}}),
                kLongTimeoutMs);
    if (!answer.isString())
        throw std::runtime_error("Odd answer to downloadfirmware: not a path");
    return answer.asString();
}

void Trovek::uploadFirmware(const MachineName& machine, const std::string& firmwareFile)
{
    d->call(wire::method::kUploadFirmware,
            object({{"machine", machine.name()}, {"path", firmwareFile}}), kLongTimeoutMs);
}

// ---- Slicer configurations

Trovek::StrandelConfigVersionCheck Trovek::strandelConfigVersionCheck(const Json::Value& config)
{
    const Json::Value answer = d->call(wire::method::kStrandelConfigVersionCheck,
                                       object({{"config", config}}), kTimeoutMs);
    if (!answer.isInt() || answer.asInt() < NeedsUpgrade || answer.asInt() > TooNew)
        throw std::runtime_error("Odd answer to strandel_config_version_check: not 0, 1 or 2");
    return static_cast<StrandelConfigVersionCheck>(answer.asInt());
}

Json::Value Trovek::upgradeStrandelConfig(const Json::Value& config)
{
    Json::Value answer =
        d->call(wire::method::kUpgradeStrandelConfig, object({{"config", config}}), kTimeoutMs);
    // It is about to replace what a user has written.
    if (!answer.isObject())
        throw std::runtime_error("Odd answer to upgrade_strandel_config: not a JSON object");
    return answer;
}

// ---- Virtual machines

Json::Value Trovek::simulatedMachines()
{
    return d->call(wire::method::kSimulatedMachines, object({}), kTimeoutMs);
}

void Trovek::simulatePlugIn(const std::string& machine)
{
    d->call(wire::method::kSimulatePlugIn, object({{"name", machine}}), kTimeoutMs);
}

void Trovek::simulateUnplug(const std::string& machine)
{
    d->call(wire::method::kSimulateUnplug, object({{"name", machine}}), kTimeoutMs);
}

void Trovek::simulateFirmware(const std::string& machine, const std::string& version)
{
    d->call(wire::method::kSimulateFirmware, object({{"name", machine}, {"version", version}}),
            kTimeoutMs);
}

void Trovek::simulatePort(const std::string& machine, const std::string& portName)
{
    d->call(wire::method::kSimulatePort, object({{"name", machine}, {"port", portName}}),
            kTimeoutMs);
}

void Trovek::simulateUploadFailure(const std::string& machine, int percent)
{
    d->call(wire::method::kSimulateUploadFailure, object({{"name", machine}, {"percent", percent}}),
            kTimeoutMs);
}

Json::Value Trovek::simulatedScanner()
{
    return d->call(wire::method::kSimulatedScanner, object({}), kTimeoutMs);
}

void Trovek::simulateScannerPlugIn()
{
    d->call(wire::method::kSimulateScannerPlugIn, object({}), kTimeoutMs);
}

void Trovek::simulateScannerUnplug()
{
    d->call(wire::method::kSimulateScannerUnplug, object({}), kTimeoutMs);
}

void Trovek::simulateScannedModel(const Json::Value& model)
{
    d->call(wire::method::kSimulateScannedModel, model, kTimeoutMs);
}

void Trovek::simulateFault(const SimulatedFault& fault)
{
    d->call(wire::method::kSimulateFault, object({{"fault", wire::toJson(fault)}}), kTimeoutMs);
}

std::vector<SimulatedFault> Trovek::simulatedFaults()
{
    const char* const method = wire::method::kSimulatedFaults;
    return readAnswer(method, d->call(method, object({}), kTimeoutMs), [](const Json::Value& list) {
        if (!list.isArray())
            throw std::runtime_error("not a list");
        std::vector<SimulatedFault> faults;
        for (const Json::Value& fault : list)
            faults.push_back(wire::simulatedFaultFromJson(fault));
        return faults;
    });
}

void Trovek::clearSimulatedFaults()
{
    d->call(wire::method::kSimulateNoFaults, object({}), kTimeoutMs);
}

// ---- Hooks: what does not care for an event leaves its hook empty

void Trovek::emitPrinterAdded(Printer*) {}
void Trovek::emitPrinterRemoved(Printer*) {}
void Trovek::emitPrinterChanged(Printer*) {}
void Trovek::emitJobAdded(int) {}
void Trovek::emitJobConcluded(int) {}
void Trovek::emitJobChanged(int) {}
void Trovek::emitPortAttached(const std::string&) {}
void Trovek::emitPortDetached(const std::string&) {}
void Trovek::emitCameraClosed(const std::string&) {}
void Trovek::emitDisconnected() {}

} // namespace trovek
