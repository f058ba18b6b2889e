#pragma once

#include "trovek-ui/export.h"

#include <QPixmap>

namespace trovek {

class Printer;

/**
 * The large picture of the machine's family; empty for a machine of an unknown type. Without a
 * printer it is empty too, and the log has the error "null printer".
 * @param printer only read here
 */
TROVEK_UI_EXPORT QPixmap pixmapFromPrinter(const Printer* printer);

} // namespace trovek
