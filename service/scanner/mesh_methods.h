#pragma once

namespace trovek::service {

class MethodTable;
class ShapeList;

/** @param shapes not owned; must outlive the table */
void addMeshMethods(MethodTable& table, ShapeList& shapes);

} // namespace trovek::service
