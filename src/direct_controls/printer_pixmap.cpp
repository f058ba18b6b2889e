#include "direct_controls/printer_pixmap.h"

#include "trovek-ui/util.h"

#include <trovek/log.h>
#include <trovek/printer.h>

#include <stdexcept>

namespace trovek {

static constexpr char kLogUnit[] = "src\\direct_controls\\direct_controls_dialog";

namespace {

QPixmap familyPixmap(const Printer* printer)
{
    if (!printer)
        throw std::logic_error("null printer");
    switch (printer->type()) {
    case Printer::FabrinoSingle:
    case Printer::FabrinoDual:
        return loadPixmap(QStringLiteral(":/machines/fabrino.png"));
    case Printer::Fabrino2:
    case Printer::Fabrino2X:
        return loadPixmap(QStringLiteral(":/machines/fabrino2.png"));
    case Printer::CubioSingle:
    case Printer::CubioDual:
        return loadPixmap(QStringLiteral(":/machines/cubio.png"));
    case Printer::UnknownType:
        break;
    }
    return QPixmap();
}

} // namespace

QPixmap pixmapFromPrinter(const Printer* printer)
{
    try {
        return familyPixmap(printer);
    } catch (const std::exception& e) {
        TROVEK_LOG(0) << e.what() << std::endl;
        return QPixmap();
    }
}

} // namespace trovek
