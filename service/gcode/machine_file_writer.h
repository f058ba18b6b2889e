#pragma once

#include "gcode_estimate.h"
#include "gcode_program.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace trovek::service {

struct MachineDefinition;

enum class MachineFileFormat {
    /** For firmware before 7.0. */
    S3g,
    /** For firmware 7.0 and later. */
    X3g,
};

/** "s3g" or "x3g", exactly; nothing otherwise. */
std::optional<MachineFileFormat> machineFileFormatFromName(const std::string& name);

/** Takes bytes in order; throws std::runtime_error when they cannot be kept. */
using ByteSink = std::function<void(const char* bytes, std::size_t size)>;

/**
 * Writes commands as a machine reads them from a card (docs/formats/machine_file.md).
 *
 * Steps are rounded from the positions, never summed up, so that nothing drifts. Call begin(),
 * write() for each command, finish(); a file without finish() is not complete.
 */
class MachineFileWriter
{
public:
    /**
     * @param machine   not owned; must outlive the writer
     * @param buildName shown by the machine; cut to 30 bytes
     * @param seconds   estimated for the whole program; progress is given by share of it
     */
    MachineFileWriter(const MachineDefinition& machine, MachineFileFormat format,
                      const std::string& buildName, double seconds, ByteSink sink);
    MachineFileWriter(const MachineFileWriter&) = delete;
    MachineFileWriter& operator=(const MachineFileWriter&) = delete;
    ~MachineFileWriter();

    void begin();
    /** @throws std::runtime_error from the sink */
    void write(const MachineCommand& command);
    /** Ends the build and hands the last bytes to the sink. */
    void finish();

    /** Of the file's commands. */
    std::uint64_t commandsWritten() const;
    std::uint64_t bytesWritten() const;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

struct MachineFileResult
{
    std::uint64_t commands = 0;
    std::uint64_t bytes = 0;
    GCodeEstimate estimate;
};

/**
 * Reads a program twice: once to check and time it, once to write it. Nothing reaches the sink
 * before the whole program is known to fit the machine.
 * @param open     gives the program's sections from their beginning; called twice
 * @param progress bytes read of both passes together; false stops
 * @throws as estimateGCode() and MachineFileWriter
 */
MachineFileResult writeMachineFile(const MachineDefinition& machine, MachineFileFormat format,
                                   const std::string& buildName,
                                   const std::function<std::vector<GCodeSection>()>& open,
                                   const ByteSink& sink, const GCodeProgress& progress = {});

} // namespace trovek::service
