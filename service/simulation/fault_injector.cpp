#include "simulation/fault_injector.h"

#include "machine.h"
#include "machine_list.h"

#include <trovek/log.h>
#include <trovek/wire.h>

#include <QPointer>
#include <QTimer>

#include <algorithm>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\simulation\\fault_injector";

namespace {

constexpr char kEveryMethod[] = "*";
constexpr char kOwnMethods[] = "simulate";

JsonRpcException invalid(const std::string& text)
{
    return wire::makeError(wire::error::kInvalidArgument, text);
}

bool isOwnMethod(const std::string& method)
{
    return method.rfind(kOwnMethods, 0) == 0;
}

bool concerns(const SimulatedFault& fault, const std::string& method)
{
    return fault.method == method ||
           (fault.method == kEveryMethod && method != wire::method::kSubscribe);
}

/** Its answers end the link instead, or after they were given. */
Responder droppingResponder(const Responder& respond, Client& client)
{
    const QPointer<Client> link(&client);
    const auto drop = [link] {
        if (link)
            link->close();
    };
    return {[respond, drop](const Json::Value& result) {
                respond.result(result);
                drop();
            },
            [respond, drop](const JsonRpcException& error) {
                respond.error(error);
                drop();
            }};
}

Responder silentResponder()
{
    return {[](const Json::Value&) {},
            [](const JsonRpcException&) {
            }};
}

} // namespace

FaultInjector::FaultInjector(const MethodTable& methods, MachineList& machines, QObject* parent)
    : QObject(parent)
    , m_methods(methods)
    , m_machines(machines)
{}

FaultInjector::~FaultInjector() = default;

void FaultInjector::add(SimulatedFault fault)
{
    if (fault.method != kEveryMethod &&
        (isOwnMethod(fault.method) || !m_methods.contains(fault.method)))
        throw invalid("Member \"method\" names no method that can fail: " + fault.method);
    if (fault.times < 0 || fault.times > kTimesAtMost) {
        throw invalid("Member \"times\" must be from 0 to " + std::to_string(kTimesAtMost));
    }
    if (fault.times == SimulatedFault::kAlways && fault.method == wire::method::kSubscribe)
        throw invalid("No client could come in any more: \"subscribe\" cannot always fail");
    if (fault.delayMs < 0 || fault.delayMs > kDelayMsAtMost) {
        throw invalid("Member \"delay_ms\" must be from 0 to " + std::to_string(kDelayMsAtMost));
    }
    if (fault.kind == SimulatedFault::Unplug)
        m_machines.machine(fault.machine);
    if (m_faults.size() >= kFaultsAtMost)
        throw invalid("There are " + std::to_string(kFaultsAtMost) + " faults already");
    m_faults.push_back(std::move(fault));
}

void FaultInjector::handle(const std::string& name, const Json::Value& params, Client& client,
                           const Responder& respond)
{
    if (!m_faults.empty()) {
        if (const auto fault = take(name)) {
            happen(*fault, name, params, client, respond);
            return;
        }
    }
    m_methods.handle(name, params, client, respond);
}

/** The next fault of that method, one time less from now on. */
std::optional<SimulatedFault> FaultInjector::take(const std::string& method)
{
    if (isOwnMethod(method))
        return std::nullopt;
    const auto found =
        std::find_if(m_faults.begin(), m_faults.end(),
                     [&method](const SimulatedFault& fault) { return concerns(fault, method); });
    if (found == m_faults.end())
        return std::nullopt;
    const SimulatedFault taken = *found;
    if (found->times != SimulatedFault::kAlways && --found->times == 0)
        m_faults.erase(found);
    return taken;
}

void FaultInjector::happen(const SimulatedFault& fault, const std::string& name,
                           const Json::Value& params, Client& client, const Responder& respond)
{
    TROVEK_LOG(1) << "Simulated fault of kind " << int(fault.kind) << ": " << name << std::endl;
    switch (fault.kind) {
    case SimulatedFault::Late:
        QTimer::singleShot(fault.delayMs, this,
                           [this, name, params, link = QPointer<Client>(&client), respond] {
                               if (link)
                                   m_methods.handle(name, params, *link, respond);
                           });
        break;
    case SimulatedFault::Never:
        break;
    case SimulatedFault::Error:
        respond.error(JsonRpcException(fault.errorMessage, fault.errorData));
        break;
    case SimulatedFault::Answer:
        respond.result(fault.result);
        break;
    case SimulatedFault::DropBefore:
        m_methods.handle(name, params, client, silentResponder());
        client.close();
        break;
    case SimulatedFault::DropAfter:
        m_methods.handle(name, params, client, droppingResponder(respond, client));
        break;
    case SimulatedFault::Unplug:
        if (fault.delayMs == 0)
            pullOut(fault);
        else
            QTimer::singleShot(fault.delayMs, this, [this, fault] { pullOut(fault); });
        m_methods.handle(name, params, client, respond);
        break;
    }
}

void FaultInjector::pullOut(const SimulatedFault& fault)
{
    m_machines.machine(fault.machine).unplug();
}

} // namespace trovek::service
