#pragma once

namespace trovek::service {

class MachineList;
class MethodTable;

/**
 * Ports, simulation, onboard memory and firmware.
 * @param machines not owned; must outlive the table
 */
void addMachineMethods(MethodTable& table, MachineList& machines);

} // namespace trovek::service
