#pragma once

#include <QThreadPool>

namespace trovek::service {

class JobList;
class MachineList;
class MethodTable;
class SliceQueue;

/**
 * Everything that makes, asks for or ends a job, and the heaters.
 * @param machines not owned; must outlive the table, as the others must
 */
void addJobMethods(MethodTable& table, MachineList& machines, JobList& jobs, QThreadPool& pool,
                   SliceQueue& slices);

} // namespace trovek::service
