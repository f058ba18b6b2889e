#pragma once

#include "method_table.h"

#include <trovek/simulated_fault.h>

#include <QObject>

#include <list>
#include <optional>

namespace trovek::service {

class MachineList;

/**
 * Stands in front of the methods and lets requests go wrong, as tests and demonstrations want it.
 *
 * Faults belong to the service, whichever client asked for them, and are used up in their order.
 * The methods of simulation never fail by one, so that there is always a way back; nor can
 * "subscribe" fail for ever, without which no client comes in.
 */
class FaultInjector : public QObject
{
    Q_OBJECT

public:
    static constexpr int kTimesAtMost = 1'000'000;
    static constexpr int kDelayMsAtMost = 600'000;
    static constexpr int kFaultsAtMost = 1000;

    /** @param methods, machines not owned; must outlive it */
    FaultInjector(const MethodTable& methods, MachineList& machines, QObject* parent = nullptr);
    ~FaultInjector() override;

    /** @throws JsonRpcException InvalidArgumentError, UnknownMachineError */
    void add(SimulatedFault fault);
    /** Those that are still to come; what waits to be late is late all the same. */
    const std::list<SimulatedFault>& faults() const { return m_faults; }
    void clear() { m_faults.clear(); }

    /** As MethodTable::handle(). */
    void handle(const std::string& name, const Json::Value& params, Client& client,
                const Responder& respond);

private:
    std::optional<SimulatedFault> take(const std::string& method);
    void happen(const SimulatedFault& fault, const std::string& name, const Json::Value& params,
                Client& client, const Responder& respond);
    void pullOut(const SimulatedFault& fault);

    const MethodTable& m_methods;
    MachineList& m_machines;
    std::list<SimulatedFault> m_faults;
};

} // namespace trovek::service
