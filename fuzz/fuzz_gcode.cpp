#include "fuzz_target.h"

#include <gcode/machine_definition.h>
#include <gcode/machine_file_writer.h>
#include <service/print_plan.h>

#include <exception>
#include <stdexcept>
#include <string>

using namespace trovek::service;

namespace {

const MachineDefinitions& definitions()
{
    static const MachineDefinitions& loaded = *new MachineDefinitions(defaultMachineDefinitions());
    return loaded;
}

std::vector<GCodeSection> sections(const std::string& program)
{
    GCodeSection section;
    section.source = byteSourceOf(program);
    std::vector<GCodeSection> list;
    list.push_back(std::move(section));
    return list;
}

void write(const MachineDefinition& machine, MachineFileFormat format, const std::string& program)
{
    std::uint64_t bytes = 0;
    MachineFileResult result;
    try {
        result = writeMachineFile(
            machine, format, "fuzz", [&] { return sections(program); },
            [&bytes](const char*, std::size_t size) { bytes += size; });
    } catch (const std::runtime_error&) {
        fuzz::require(bytes == 0, "nothing is written of a program that is refused");
        return;
    }
    fuzz::require(bytes == result.bytes, "every byte is counted");
}

void plan(const MachineDefinition& machine, const std::string& program)
{
    try {
        const PrintPlan plan = planPrint(machine, sections(program), {});
        fuzz::require(plan.motion.seconds >= 0, "a print takes no less than no time");
    } catch (const std::runtime_error&) {
    }
}

} // namespace

/** A program; the first byte says for which machine and in which format. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::vector<MachineDefinition>& machines = definitions().archetypes;
    const MachineDefinition& machine = machines[data[0] / 2 % machines.size()];
    const auto format = data[0] % 2 == 0 ? MachineFileFormat::X3g : MachineFileFormat::S3g;
    const std::string program(fuzz::textOf(data + 1, size - 1));
    write(machine, format, program);
    plan(machine, program);
    return 0;
}
