#include "fuzz_target.h"

#include <rpcwire/json_text.h>
#include <trovek/eeprom_map.h>
#include <trovek/wire.h>

#include <exception>
#include <stdexcept>

using namespace trovek;

namespace {

/** Reads a value; what is taken must come back as it is after it was written. */
template <typename Reader>
void convert(const Json::Value& value, Reader fromJson)
{
    Json::Value written;
    try {
        written = wire::toJson(fromJson(value));
    } catch (const std::runtime_error&) {
        return;
    }
    const Json::Value again = wire::toJson(fromJson(written));
    fuzz::require(rpcwire::toJsonLine(again) == rpcwire::toJsonLine(written),
                  "what is written is read as it was");
}

/** JsonCpp's own exceptions are no std::runtime_error: one of them ends the program. */
template <typename Read>
void readMember(Read read)
{
    try {
        read();
    } catch (const std::runtime_error&) {
    }
}

void readOnboardMemory(const Json::Value& value)
{
    const EepromMap map = EepromMap::fromService(value);
    for (const char* const path : {"a", "a.b", "x", ""}) {
        map.getInt(path);
        map.getFloat(path);
        map.getString(path);
    }
}

} // namespace

/** The JSON text of an answer, a notification's parameters or a request's settings. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Json::Value value;
    if (!rpcwire::parseJson(fuzz::textOf(data, size), &value, nullptr))
        return 0;
    convert(value, wire::printerFromJson);
    convert(value, wire::portFromJson);
    convert(value, wire::jobFromJson);
    convert(value, wire::eepromBackupFromJson);
    convert(value, wire::slicerConfigurationFromJson);
    convert(value, wire::simulatedFaultFromJson);
    readMember([&] { wire::stringMember(value, "name"); });
    readMember([&] { wire::intMember(value, "id"); });
    readMember([&] { wire::boolMember(value, "raft"); });
    readMember([&] { wire::stringListMember(value, "materials"); });
    readOnboardMemory(value);
    return 0;
}
