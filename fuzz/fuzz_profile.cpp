#include "fuzz_target.h"

#include <profile/json_file.h>
#include <profile/profile_json.h>

#include <json/writer.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>

using namespace trovek;

namespace {

bool startsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

/** JsonCpp's own exceptions, and texts that no list of profiles knows, end the program. */
template <typename Read>
bool isRead(Read read)
{
    static const std::array<std::string, 6> texts = {
        "profile.json is missing the machine_type field",
        "profile.json machine_type field not an array",
        "machine_type contains invalid name ",
        "profile.json is missing the slicer field",
        "profile.json slicer field not a string",
        "Invalid slicer identifier\n",
    };
    try {
        read();
        return true;
    } catch (const std::runtime_error& error) {
        const std::string text = error.what();
        fuzz::require(
            std::any_of(texts.begin(), texts.end(),
                        [&](const std::string& start) { return startsWith(text, start); }),
            "what is wrong with a profile is told in one of six texts");
        return false;
    }
}

} // namespace

/** The bytes of a "profile.json": what can be read comes back after it was written for a copy. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Json::Value json;
    if (!parseJson(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)), &json))
        return 0;
    std::vector<Printer::Type> types;
    auto slicer = SlicerConfiguration::UnknownSlicer;
    const bool hasTypes = isRead([&] { types = machineTypesOf(json); });
    const bool hasSlicer = isRead([&] { slicer = slicerOf(json); });
    if (!hasTypes || !hasSlicer)
        return 0;

    const Json::Value copy = makeProfileJson(slicer, types);
    Json::Value readBack;
    fuzz::require(parseJson(QByteArray::fromStdString(Json::StyledWriter().write(copy)), &readBack),
                  "what is written is JSON");
    fuzz::require(readBack == copy && machineTypesOf(readBack) == types &&
                      slicerOf(readBack) == slicer,
                  "what is written is read as it was");
    return 0;
}
