#include "simulation/simulation_methods.h"

#include "machine.h"
#include "machine_list.h"
#include "method_table.h"
#include "onboard/onboard_map.h"
#include "running_job.h"
#include "simulation/fault_injector.h"

#include <trovek/wire.h>

#include <algorithm>
#include <optional>
#include <set>

namespace trovek::service {

namespace {

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
        entry["port"] = machine->portName();
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

/** Pulls its cable out and plugs it in elsewhere; a machine that is not plugged in stays so. */
Json::Value simulatePort(const MachineList& machines, const Call& call)
{
    Machine& machine = machines.machine(call.params.string("name"));
    const std::string port = call.params.string("port");
    const auto isTaken = [&](const auto& other) {
        return other.get() != &machine &&
               (other->portName() == port || other->definition().portName == port);
    };
    const auto& all = machines.machines();
    if (port.empty() || std::any_of(all.begin(), all.end(), isTaken)) {
        throw wire::makeError(wire::error::kInvalidArgument,
                              "Member \"port\" must be a name that no other port has");
    }
    const bool wasPluggedIn = machine.isPluggedIn();
    machine.unplug();
    machine.moveToPort(port);
    if (wasPluggedIn)
        machine.plugIn();
    return Json::Value();
}

Json::Value simulateUploadFailure(const MachineList& machines, const Call& call)
{
    Machine& machine = machines.machine(call.params.string("name"));
    if (!machine.driver().simulateUploadFailure(call.params.integer("percent", 0, 100)))
        throw wire::makeError(wire::error::kNotOffered, "The machine is not virtual");
    return Json::Value();
}

Json::Value simulateFault(FaultInjector& faults, const Call& call)
{
    const Json::Value& fault = call.params.object("fault");
    try {
        faults.add(wire::simulatedFaultFromJson(fault));
    } catch (const JsonRpcException&) {
        throw;
    } catch (const std::exception& error) {
        throw wire::makeError(wire::error::kInvalidArgument, error.what());
    }
    return Json::Value();
}

Json::Value simulatedFaults(const FaultInjector& faults)
{
    Json::Value list(Json::arrayValue);
    for (const SimulatedFault& fault : faults.faults())
        list.append(wire::toJson(fault));
    return list;
}

Json::Value clearFaults(const MachineList& machines, FaultInjector& faults)
{
    faults.clear();
    for (const auto& machine : machines.machines())
        machine->driver().simulateUploadFailure(std::nullopt);
    return Json::Value();
}

} // namespace

void addSimulationMethods(MethodTable& table, MachineList& machines, FaultInjector& faults)
{
    using namespace wire::method;
    MachineList* list = &machines;
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
    table.add(kSimulatePort, [list](const Call& call) { return simulatePort(*list, call); });
    table.add(kSimulateUploadFailure,
              [list](const Call& call) { return simulateUploadFailure(*list, call); });

    FaultInjector* injector = &faults;
    table.add(kSimulateFault,
              [injector](const Call& call) { return simulateFault(*injector, call); });
    table.add(kSimulatedFaults, [injector](const Call&) { return simulatedFaults(*injector); });
    table.add(kSimulateNoFaults, [=](const Call&) { return clearFaults(*list, *injector); });
}

} // namespace trovek::service
