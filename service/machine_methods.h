#pragma once

namespace trovek::service {

class MachineList;
class MethodTable;

/**
 * Ports and simulation.
 * @param machines not owned; must outlive the table
 */
void addMachineMethods(MethodTable& table, MachineList& machines);

} // namespace trovek::service
