#pragma once

namespace trovek::service {

class FaultInjector;
class MachineList;
class MethodTable;

/**
 * What tests and demonstrations do to virtual machines and to the service itself.
 * @param machines, faults not owned; must outlive the table
 */
void addSimulationMethods(MethodTable& table, MachineList& machines, FaultInjector& faults);

} // namespace trovek::service
