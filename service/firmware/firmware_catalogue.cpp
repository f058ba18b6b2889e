#include "firmware/firmware_catalogue.h"

#include "firmware/firmware_image.h"
#include "gcode/machine_definition.h"

#include <rpcwire/json_text.h>
#include <trovek/log.h>
#include <trovek/text.h>
#include <trovek/wire.h>

#include <QRegularExpression>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\firmware\\firmware_catalogue";

namespace {

std::runtime_error failure(const std::string& text)
{
    return std::runtime_error("Firmware catalogue: " + text);
}

bool matches(const std::string& text, const char* form)
{
    const QRegularExpression expression(QLatin1String("\\A(?:") + QLatin1String(form) +
                                        QLatin1String(")\\z"));
    return expression.match(toQString(text)).hasMatch();
}

bool isStorable(const FirmwareVersion& version)
{
    constexpr int kMost = std::numeric_limits<quint16>::max();
    return version.valid() && version.major() <= kMost && version.minor() <= kMost;
}

/** @throws std::runtime_error naming the member and what is wrong with it */
FirmwareEntry readEntry(const Json::Value& value)
{
    FirmwareEntry entry;
    entry.machine = wire::stringMember(value, "machine");
    if (entry.machine.empty())
        throw std::runtime_error("Member \"machine\" is empty");
    entry.type = machineTypeFromName(wire::stringMember(value, "type"));
    entry.version = FirmwareVersion(wire::stringMember(value, "version"),
                                    wire::stringMember(value, "description"));
    if (!isStorable(entry.version))
        throw std::runtime_error("Member \"version\" is not \"MAJOR.MINOR\"");
    const std::string file = wire::stringMember(value, "file");
    // Whatever the index says, nothing outside its folder is read.
    if (!matches(file, "[A-Za-z0-9_][A-Za-z0-9_.+-]*"))
        throw std::runtime_error("Member \"file\" is not a plain file name");
    entry.file = toQString(file);
    entry.bytes = wire::intMember(value, "size");
    if (entry.bytes < 1 || entry.bytes > kFirmwareBytesAtMost) {
        throw std::runtime_error("Member \"size\" must be from 1 to " +
                                 std::to_string(kFirmwareBytesAtMost));
    }
    const std::string hash = wire::stringMember(value, "sha256");
    if (!matches(hash, "[0-9A-Fa-f]{64}"))
        throw std::runtime_error("Member \"sha256\" is not 64 hexadecimal digits");
    entry.hash = QByteArray::fromStdString(hash).toLower();
    return entry;
}

} // namespace

FirmwareCatalogue::FirmwareCatalogue(const QByteArray& json)
{
    Json::Value index;
    std::string error;
    if (!rpcwire::parseJson({json.constData(), static_cast<std::size_t>(json.size())}, &index,
                            &error))
        throw failure(error);
    if (!index.isObject() || !index["firmware"].isArray())
        throw failure("there is no list \"firmware\"");
    const Json::Value& list = index["firmware"];
    for (Json::ArrayIndex i = 0; i < list.size(); ++i) {
        const std::string where = "firmware[" + std::to_string(i) + "]: ";
        try {
            FirmwareEntry entry = readEntry(list[i]);
            if (entry.type == Printer::UnknownType) {
                TROVEK_LOG(1) << "Firmware catalogue: " << where << "left out, for unknown machines"
                              << std::endl;
                continue;
            }
            if (find(entry.machine, entry.type, entry.version.str()) != nullptr)
                throw std::runtime_error("It is there twice");
            m_entries.push_back(std::move(entry));
        } catch (const std::exception& problem) {
            throw failure(where + problem.what());
        }
    }
}

std::vector<std::string> FirmwareCatalogue::machines() const
{
    std::vector<std::string> names;
    for (const FirmwareEntry& entry : m_entries) {
        if (std::find(names.begin(), names.end(), entry.machine) == names.end())
            names.push_back(entry.machine);
    }
    return names;
}

bool FirmwareCatalogue::offersAnythingFor(const std::string& machine) const
{
    return std::any_of(m_entries.begin(), m_entries.end(),
                       [&machine](const FirmwareEntry& entry) { return entry.machine == machine; });
}

const FirmwareEntry* FirmwareCatalogue::find(const std::string& machine, Printer::Type type,
                                             const std::string& version) const
{
    const auto found =
        std::find_if(m_entries.begin(), m_entries.end(), [&](const FirmwareEntry& entry) {
            return entry.machine == machine && entry.type == type && entry.version.str() == version;
        });
    return found == m_entries.end() ? nullptr : &*found;
}

} // namespace trovek::service
