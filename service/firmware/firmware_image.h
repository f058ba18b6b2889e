#pragma once

#include <trovek/firmware_version.h>
#include <trovek/printer.h>

#include <QByteArray>

namespace trovek::service {

/** No machine has more memory for its firmware. */
constexpr int kFirmwareBytesAtMost = 16 * 1024 * 1024;

/** What the header of a firmware image says: whose it is, and which. */
struct FirmwareHeader
{
    Printer::Type type = Printer::UnknownType;
    FirmwareVersion version;
};

/**
 * Reads the header of a whole image, as docs/formats/firmware_catalogue.md describes it.
 * @throws std::runtime_error what is wrong with it; the second half of a sentence that begins with
 *         the file
 */
FirmwareHeader readFirmwareHeader(const QByteArray& image);

/** SHA-256 of an image, as 64 lower-case hexadecimal digits. */
QByteArray firmwareHash(const QByteArray& image);

} // namespace trovek::service
