#include "trovek/simulated_fault.h"

#include "trovek/wire.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace trovek {

namespace {

/** Names on the wire, in the order of the kinds. */
constexpr const char* kKindNames[] = {"late",        "never",      "error", "answer",
                                      "drop_before", "drop_after", "unplug"};

SimulatedFault faultOf(std::string method, SimulatedFault::Kind kind)
{
    SimulatedFault fault;
    fault.method = std::move(method);
    fault.kind = kind;
    return fault;
}

SimulatedFault::Kind kindFromName(const std::string& name)
{
    const auto found = std::find(std::begin(kKindNames), std::end(kKindNames), name);
    if (found == std::end(kKindNames))
        throw std::runtime_error("Member \"kind\" is no kind of fault: " + name);
    return static_cast<SimulatedFault::Kind>(found - std::begin(kKindNames));
}

} // namespace

SimulatedFault SimulatedFault::late(std::string method, int delayMs)
{
    SimulatedFault fault = faultOf(std::move(method), Late);
    fault.delayMs = delayMs;
    return fault;
}

SimulatedFault SimulatedFault::never(std::string method)
{
    return faultOf(std::move(method), Never);
}

SimulatedFault SimulatedFault::error(std::string method, const JsonRpcException& error)
{
    SimulatedFault fault = faultOf(std::move(method), Error);
    fault.errorMessage = error.message();
    fault.errorData = error.data();
    return fault;
}

SimulatedFault SimulatedFault::answer(std::string method, Json::Value result)
{
    SimulatedFault fault = faultOf(std::move(method), Answer);
    fault.result = std::move(result);
    return fault;
}

SimulatedFault SimulatedFault::dropBefore(std::string method)
{
    return faultOf(std::move(method), DropBefore);
}

SimulatedFault SimulatedFault::dropAfter(std::string method)
{
    return faultOf(std::move(method), DropAfter);
}

SimulatedFault SimulatedFault::unplug(std::string method, std::string machine, int afterMs)
{
    SimulatedFault fault = faultOf(std::move(method), Unplug);
    fault.machine = std::move(machine);
    fault.delayMs = afterMs;
    return fault;
}

SimulatedFault SimulatedFault::forTimes(int count) const
{
    SimulatedFault fault = *this;
    fault.times = count;
    return fault;
}

namespace wire {

Json::Value toJson(const SimulatedFault& fault)
{
    Json::Value value(Json::objectValue);
    value["method"] = fault.method;
    value["kind"] = kKindNames[fault.kind];
    value["times"] = fault.times;
    switch (fault.kind) {
    case SimulatedFault::Unplug:
        value["machine"] = fault.machine;
        [[fallthrough]];
    case SimulatedFault::Late:
        value["delay_ms"] = fault.delayMs;
        break;
    case SimulatedFault::Error:
        value["message"] = fault.errorMessage;
        value["data"] = fault.errorData;
        break;
    case SimulatedFault::Answer:
        value["result"] = fault.result;
        break;
    default:
        break;
    }
    return value;
}

SimulatedFault simulatedFaultFromJson(const Json::Value& value)
{
    std::string method = stringMember(value, "method");
    SimulatedFault fault = faultOf(std::move(method), kindFromName(stringMember(value, "kind")));
    if (value.isMember("times"))
        fault.times = intMember(value, "times");
    switch (fault.kind) {
    case SimulatedFault::Unplug:
        fault.machine = stringMember(value, "machine");
        if (value.isMember("delay_ms"))
            fault.delayMs = intMember(value, "delay_ms");
        break;
    case SimulatedFault::Late:
        fault.delayMs = intMember(value, "delay_ms");
        break;
    case SimulatedFault::Error:
        fault.errorMessage = stringMember(value, "message");
        fault.errorData = value["data"];
        break;
    case SimulatedFault::Answer:
        fault.result = value["result"];
        break;
    default:
        break;
    }
    return fault;
}

} // namespace wire

} // namespace trovek
