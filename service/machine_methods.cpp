#include "machine_methods.h"

#include "machine.h"
#include "machine_list.h"
#include "method_table.h"
#include "onboard/onboard_map.h"
#include "running_job.h"

#include <trovek/wire.h>

#include <set>

namespace trovek::service {

namespace {

Json::Value connectToPort(const MachineList& machines, const Call& call)
{
    const std::string port = call.params.string("port");
    const std::string identity = call.params.optionalString("identity");
    Machine& machine = machines.machineOnPort(port);
    if (!identity.empty() && identity != machine.definition().portIdentity) {
        throw wire::makeError(wire::error::kUnknownPort,
                              "Another device is attached to this port now: " + port);
    }
    machine.open();
    Json::Value result(Json::objectValue);
    result["name"] = machine.definition().key;
    return result;
}

Json::Value disconnectFromPort(const MachineList& machines, const Call& call)
{
    machines.machineOnPort(call.params.string("port"))
        .close(QStringLiteral("The machine was disconnected"));
    return Json::Value();
}

/** What a machine can be given, and what it has. */
Json::Value firmwareVersions(Machine& machine)
{
    std::set<FirmwareVersion> versions = OnboardMaps::firmwareVersions(machine.definition().type);
    versions.emplace(machine.driver().firmwareVersion());
    Json::Value list(Json::arrayValue);
    for (const FirmwareVersion& version : versions)
        list.append(version.str());
    return list;
}

Json::Value simulatedMachines(const MachineList& machines)
{
    Json::Value list(Json::arrayValue);
    for (const auto& machine : machines.machines()) {
        const MachineDefinition& definition = machine->definition();
        Json::Value entry(Json::objectValue);
        entry["name"] = definition.key;
        entry["display_name"] = definition.displayName;
        entry["type"] = int(definition.type);
        entry["type_name"] = machineTypeName(definition.type);
        entry["plugged_in"] = machine->isPluggedIn();
        entry["firmware_version"] = machine->driver().firmwareVersion();
        entry["firmware_versions"] = firmwareVersions(*machine);
        list.append(entry);
    }
    return list;
}

/** Whoever exchanges a machine's firmware holds its cable in the other hand. */
Json::Value simulateFirmware(const MachineList& machines, const Call& call)
{
    Machine& machine = machines.machine(call.params.string("name"));
    const std::string version = call.params.string("version");
    if (!FirmwareVersion(version).valid()) {
        throw wire::makeError(wire::error::kInvalidArgument,
                              "Member \"version\" must be \"MAJOR.MINOR\"");
    }
    if (machine.job() != nullptr) {
        throw wire::makeError(wire::error::kMachineState,
                              "The machine is busy: " + machine.job()->data().name);
    }
    const bool wasPluggedIn = machine.isPluggedIn();
    machine.unplug();
    const bool done = machine.driver().simulateFirmware(version);
    if (wasPluggedIn)
        machine.plugIn();
    if (!done)
        throw wire::makeError(wire::error::kNotOffered, "The machine is not virtual");
    return Json::Value();
}

} // namespace

void addMachineMethods(MethodTable& table, MachineList& machines)
{
    using namespace wire::method;
    MachineList* list = &machines;
    table.add(kConnectToPort, [list](const Call& call) { return connectToPort(*list, call); });
    table.add(kDisconnectFromPort,
              [list](const Call& call) { return disconnectFromPort(*list, call); });

    table.add(kSimulatedMachines, [list](const Call&) { return simulatedMachines(*list); });
    table.add(kSimulatePlugIn, [list](const Call& call) {
        list->machine(call.params.string("name")).plugIn();
        return Json::Value();
    });
    table.add(kSimulateUnplug, [list](const Call& call) {
        list->machine(call.params.string("name")).unplug();
        return Json::Value();
    });
    table.add(kSimulateFirmware,
              [list](const Call& call) { return simulateFirmware(*list, call); });
}

} // namespace trovek::service
