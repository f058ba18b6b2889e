#include "fuzz_target.h"

#include <gcode/machine_definition.h>

#include <exception>
#include <stdexcept>
#include <string>

using namespace trovek::service;

/** The bytes of a machines file. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try {
        const MachineDefinitions definitions =
            loadMachineDefinitions(std::string(fuzz::textOf(data, size)));
        fuzz::require(definitions.archetypes.size() == 6, "every type has its archetype");
        for (const MachineDefinition& machine : definitions.machines)
            fuzz::require(!machine.key.empty() && !machine.portIdentity.empty(),
                          "a machine has a key and an identity");
    } catch (const std::runtime_error& error) {
        fuzz::require(std::string(error.what()).rfind("Machines file: ", 0) == 0,
                      "a refusal says that it is about the machines file");
    }
    return 0;
}
