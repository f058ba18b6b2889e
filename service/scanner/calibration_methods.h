#pragma once

class QThreadPool;

namespace trovek::service {

class JobList;
class MethodTable;
class ScannerControl;

/**
 * What clients ask about the scanner's calibration. None of them is owned; all must outlive the
 * table.
 */
void addCalibrationMethods(MethodTable& table, ScannerControl& control, JobList& jobs,
                           QThreadPool& pool);

} // namespace trovek::service
