#pragma once

namespace trovek::service {

class JobList;
class MethodTable;
class ScannerControl;
class ShapeList;

/**
 * What clients ask of the scanner itself: its name and version, pictures, scans, and what is done
 * to a virtual one. None of them is owned; all must outlive the table.
 */
void addScannerMethods(MethodTable& table, ScannerControl& control, ShapeList& shapes,
                       JobList& jobs);

} // namespace trovek::service
