#include "fuzz_target.h"

#include <gcode/machine_definition.h>
#include <make_request.h>
#include <slicing/prusa_options.h>
#include <slicing/slice_profile.h>
#include <slicing/slice_settings.h>

#include <rpcwire/json_text.h>

#include <stdexcept>
#include <string>

using namespace trovek::service;

namespace {

void requireName(const std::runtime_error& error)
{
    fuzz::require(std::string(error.what()).rfind("strandel.json: ", 0) == 0,
                  "a refusal says that it is about strandel.json");
}

/** A document as a client sends it. */
void checkDocument(const Json::Value& document)
{
    try {
        const StrandelVersion version = checkStrandelVersion(document);
        if (version == StrandelVersion::TooNew)
            return;
        const Json::Value upgraded = upgradeStrandelConfig(document);
        fuzz::require(checkStrandelVersion(upgraded) == StrandelVersion::UpToDate,
                      "what was upgraded is up to date");
        fuzz::require(upgradeStrandelConfig(upgraded) == upgraded,
                      "what is up to date stays as it is");
        readStrandelConfig(upgraded);
    } catch (const std::runtime_error& error) {
        requireName(error);
    }
}

/** Settings that were read make options for every machine, or are more than it can do. */
void makeOptions(const StrandelConfig& config)
{
    static const MachineDefinitions& machines =
        *new MachineDefinitions(defaultMachineDefinitions());
    for (const MachineDefinition& machine : machines.archetypes) {
        try {
            const SliceSettings settings = sliceSettings(machine, MakeRequest(), &config);
            const std::string options = prusaOptions(machine, settings);
            fuzz::require(options.find("\npost_process = \n") != std::string::npos,
                          "the slicer runs nothing");
            fuzz::require(options.find("nan") == std::string::npos &&
                              options.find("inf\n") == std::string::npos,
                          "numbers are numbers");
        } catch (const std::runtime_error&) {
        }
    }
}

} // namespace

/** The text of a strandel.json, as a client sends it and as a profile folder holds it. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(fuzz::textOf(data, size));
    Json::Value document;
    if (rpcwire::parseJson(text, &document, nullptr))
        checkDocument(document);
    try {
        makeOptions(parseStrandelConfig(text));
    } catch (const std::runtime_error& error) {
        requireName(error);
    }
    return 0;
}
