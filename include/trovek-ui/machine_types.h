#pragma once

#include "trovek-ui/export.h"

#include <trovek/printer.h>
#include <trovek/slicer_configuration.h>

#include <QIcon>
#include <QPixmap>
#include <QString>

namespace trovek {

/** Which name of a machine type a text needs. */
enum PrinterStringContext : int {
    /** With the brand: "Orvane Fabrino 2". */
    PrinterStringWithBrand = 0,
    /** As used inside a sentence: "The Fabrino 2". */
    PrinterStringInSentence = 1,
};

/**
 * The machine type of an identifier as profiles and settings hold it, for example "fabrino_2".
 * The comparison is exact.
 * @throws std::runtime_error "Invalid machine type identifier:\n" and the text
 */
TROVEK_UI_EXPORT Printer::Type printerTypeFromIdentifier(const QString& identifier);

/** @throws std::runtime_error "Invalid machine type" for a type without an identifier */
TROVEK_UI_EXPORT QString printerTypeToIdentifier(Printer::Type type);

/** The name that a user reads, translated; "bot" for another type or another context. */
TROVEK_UI_EXPORT QString printerTypeToHumanString(Printer::Type type, PrinterStringContext context);

/**
 * The machine's picture as a button icon with its normal, active and selected state; the generic
 * machine for another type.
 * @throws std::runtime_error "Pixmap file not found"
 */
TROVEK_UI_EXPORT QIcon printerTypeToIcon(Printer::Type type);

/** The machine's picture. @throws std::runtime_error "Pixmap file not found" */
TROVEK_UI_EXPORT QPixmap printerTypeToPixmap(Printer::Type type);

/** @throws std::runtime_error "Invalid slicer identifier\n" and the text */
TROVEK_UI_EXPORT SlicerConfiguration::Slicer slicerFromIdentifier(const QString& identifier);

/** @throws std::runtime_error "Invalid slicer" for any but the one slicer with an identifier */
TROVEK_UI_EXPORT QString slicerToIdentifier(SlicerConfiguration::Slicer slicer);

/** Translated; "Invalid Slicer" for a value without a name. */
TROVEK_UI_EXPORT QString slicerToHumanString(SlicerConfiguration::Slicer slicer);

} // namespace trovek
