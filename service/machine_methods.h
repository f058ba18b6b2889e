#pragma once

namespace trovek::service {

class MachineList;
class MethodTable;

/**
 * Opening and closing the machines on ports.
 * @param machines not owned; must outlive the table
 */
void addMachineMethods(MethodTable& table, MachineList& machines);

} // namespace trovek::service
