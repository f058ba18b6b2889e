#pragma once

#include <trovek/firmware_version.h>
#include <trovek/printer.h>

#include <QByteArray>
#include <QString>

#include <string>
#include <vector>

namespace trovek::service {

/** One firmware that a catalogue offers. */
struct FirmwareEntry
{
    /** The name under which it is offered. */
    std::string machine;
    /** Of the machines under that name it is for these. */
    Printer::Type type = Printer::UnknownType;
    /** With its description. */
    FirmwareVersion version;
    /** A plain file name, beside the index. */
    QString file;
    int bytes = 0;
    /** SHA-256 as 64 lower-case hexadecimal digits. */
    QByteArray hash;
};

/** The index of a catalogue of firmware, as docs/formats/firmware_catalogue.md describes it. */
class FirmwareCatalogue
{
public:
    /**
     * @param json the file's bytes, UTF-8; entries of types that this version does not know are
     *             left out
     * @throws std::runtime_error "Firmware catalogue: " with the entry and what is wrong with it
     */
    explicit FirmwareCatalogue(const QByteArray& json);

    const std::vector<FirmwareEntry>& entries() const { return m_entries; }
    /** Names in the order of the index, each once. */
    std::vector<std::string> machines() const;
    bool offersAnythingFor(const std::string& machine) const;
    /** Null when it does not offer that. */
    const FirmwareEntry* find(const std::string& machine, Printer::Type type,
                              const std::string& version) const;

private:
    std::vector<FirmwareEntry> m_entries;
};

} // namespace trovek::service
