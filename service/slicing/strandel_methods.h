#pragma once

namespace trovek::service {

class MethodTable;

/** What clients ask of a "strandel.json". */
void addStrandelMethods(MethodTable& table);

} // namespace trovek::service
