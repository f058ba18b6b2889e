#include "fuzz_target.h"

#include <service/firmware/firmware_catalogue.h>
#include <service/firmware/firmware_image.h>
#include <service/gcode/machine_definition.h>

#include <exception>
#include <stdexcept>
#include <string>

using namespace trovek::service;

namespace {

void readIndex(const QByteArray& bytes)
{
    try {
        const FirmwareCatalogue catalogue(bytes);
        for (const FirmwareEntry& entry : catalogue.entries()) {
            fuzz::require(entry.version.valid() && !machineTypeName(entry.type).empty(),
                          "an entry has a version and a type");
            fuzz::require(!entry.file.contains(QLatin1Char('/')) &&
                              !entry.file.startsWith(QLatin1Char('.')),
                          "a file is beside its index");
            fuzz::require(catalogue.find(entry.machine, entry.type, entry.version.str()) == &entry,
                          "no firmware is there twice");
        }
    } catch (const std::runtime_error& error) {
        fuzz::require(std::string(error.what()).rfind("Firmware catalogue: ", 0) == 0,
                      "a refusal says that it is about the catalogue");
    }
}

void readImage(const QByteArray& bytes)
{
    try {
        const FirmwareHeader header = readFirmwareHeader(bytes);
        fuzz::require(header.version.valid() && !machineTypeName(header.type).empty(),
                      "a header has a version and a type");
    } catch (const std::runtime_error&) {
    }
}

} // namespace

/** The bytes of a catalogue's index, or of an image. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    readIndex(bytes);
    readImage(bytes);
    return 0;
}
