#include "machine_methods.h"

#include "machine.h"
#include "machine_list.h"
#include "method_table.h"

#include <trovek/wire.h>

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

} // namespace

void addMachineMethods(MethodTable& table, MachineList& machines)
{
    using namespace wire::method;
    MachineList* list = &machines;
    table.add(kConnectToPort, [list](const Call& call) { return connectToPort(*list, call); });
    table.add(kDisconnectFromPort,
              [list](const Call& call) { return disconnectFromPort(*list, call); });
}

} // namespace trovek::service
