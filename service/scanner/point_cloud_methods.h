#pragma once

namespace trovek::service {

class MethodTable;
class ShapeList;

/** @param shapes not owned; must outlive the table */
void addPointCloudMethods(MethodTable& table, ShapeList& shapes);

} // namespace trovek::service
