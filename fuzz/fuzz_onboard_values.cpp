#include "fuzz_target.h"

#include <onboard/onboard_map.h>

#include <rpcwire/json_text.h>

#include <string>

using namespace trovek::service;

namespace {

/** A setting of each kind; small, so that whole documents of it are tried. */
constexpr char kSource[] = R"({
    "machine_type": "fabrino_2x", "firmware_version": "7.5",
    "eeprom_map": {
        "name": {"offset": "0x0010", "type": "s", "factory": ["Orvane"]},
        "count": {"offset": "0x0020", "type": "B", "factory": [2], "constraints": "l,1,2"},
        "bits": {"offset": "0x0021", "type": "B", "factory": [31], "axis_expand": "True"},
        "motion": {"sub_map": {
            "rates": {"offset": "0x0030", "type": "hhh", "factory": [10, 20, 30]},
            "limits": {"offset": "0x0040", "type": "II", "factory": [1, 4294967295]},
            "steps": {"offset": "0x0050", "type": "q", "factory": [-5]},
            "pid": {"sub_map": {
                "p": {"offset": "0x0060", "type": "H", "factory": [7.5], "floating_point": "True"},
                "i": {"offset": "0x0070", "type": "f", "factory": [0.1], "constraints": "m,0,9"},
                "d": {"offset": "0x0080", "type": "d", "factory": [1e300]}}},
            "trim": {"offset": "0x0090", "type": "b", "factory": [-3]},
            "origin": {"offset": "0x00a0", "type": "iii", "factory": [1, -2, 3]}}}
    }
})";

const OnboardMap& smallMap()
{
    static const OnboardMap& map = *[] {
        Json::Value source;
        fuzz::require(rpcwire::parseJson(kSource, &source, nullptr), "the map is JSON");
        return new OnboardMap(source);
    }();
    return map;
}

/** A document that a client wants to write: refused as a whole, or taken as a whole. */
void writeDocument(const Json::Value& document)
{
    const OnboardMap& map = smallMap();
    const QByteArray factory = map.factoryImage();
    try {
        const QByteArray image = map.write(document, factory);
        fuzz::require(layoutOfImage(image) == map.layout(), "what is written is sealed");
        fuzz::require(map.write(map.read(image), image) == image,
                      "what is read is written as it was");
    } catch (const OnboardValueError& error) {
        fuzz::require(!error.problems().empty(), "a refusal names what is wrong");
    }
}

/** The source of a map: refused, or one that works. */
void loadMap(const Json::Value& source)
{
    try {
        const OnboardMap map(source);
        const QByteArray factory = map.factoryImage();
        fuzz::require(map.write(map.read(factory), factory) == factory,
                      "factory values are written as they are read");
        map.convert(smallMap(), smallMap().factoryImage());
    } catch (const OnboardValueError&) {
        fuzz::require(false, "a map takes its own factory values");
    } catch (const std::runtime_error& error) {
        fuzz::require(std::string(error.what()).rfind("Onboard map: ", 0) == 0,
                      "a refusal says that it is about the map");
    }
}

} // namespace

/** Bytes of an image and, where they are JSON, a client's document and the source of a map. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = fuzz::textOf(data, size);
    QByteArray image(text.data(), static_cast<int>(text.size()));
    image = image.leftJustified(kOnboardBytes, kErasedByte, true);
    layoutOfImage(image);
    smallMap().read(image);

    Json::Value value;
    if (rpcwire::parseJson(text, &value, nullptr)) {
        writeDocument(value);
        loadMap(value);
    }
    return 0;
}
