#pragma once

#include "gcode_command.h"
#include "gcode_reader.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace trovek::service {

struct MachineDefinition;

/** A part of a program: the user's file, or start or end code around it. */
struct GCodeSection
{
    /** For errors, for example "Start code"; empty for the user's own file. */
    std::string name;
    ByteSource source;
};

/** What a program did not turn into commands. */
struct GCodeRemarks
{
    /** Codes without a counterpart, for example "G29", and how often each came. */
    std::map<std::string, std::uint64_t> leftOut;
    /** Lines that could not be understood; each was skipped. */
    std::uint64_t unreadableLines = 0;
    /** The first of them; 0 when there is none. */
    std::uint64_t firstUnreadableLine = 0;
    /** Moves that push filament through a tool whose target is too low for it. */
    std::uint64_t coldMoves = 0;
    std::uint64_t firstColdMoveLine = 0;

    /** For a job's log: "left out: G29 (1), M201 (3); not understood: 2 lines, first line 17";
     * empty when nothing. */
    std::string toString() const;
};

/**
 * Turns G-code into what a machine does, one command at a time and in constant memory.
 *
 * Begins with absolute positions in millimetres, tool 0, all counters at zero, heaters off. The
 * extruder is relative when G91 or M83 says so. G92 shifts coordinates, and the build volume is
 * always that of the machine, whatever the shift; G92.1 takes the shift away. Several sections are
 * read as one text. What a line says is either understood as a whole or skipped and counted, never
 * guessed. docs/formats/gcode.md lists the codes.
 */
class GCodeProgram
{
public:
    enum ColdExtrusion {
        /** Count in the remarks. */
        CountCold,
        /** Throw. For a machine, whose extruder would strip the filament. */
        RefuseCold,
    };

    /** @param machine not owned; must outlive the program */
    GCodeProgram(const MachineDefinition& machine, std::vector<GCodeSection> sections,
                 ColdExtrusion coldExtrusion = CountCold);
    GCodeProgram(const GCodeProgram&) = delete;
    GCodeProgram& operator=(const GCodeProgram&) = delete;
    ~GCodeProgram();

    /**
     * @return false at the end
     * @throws GCodeError "Line 12: " (or "Start code, line 3: ") with what the machine cannot do;
     * nothing can be read from the program afterwards
     * @throws std::runtime_error from a source
     */
    bool next(MachineCommand& command);

    /** Of what was read up to now. */
    const GCodeRemarks& remarks() const;
    /** Of all sections up to now. */
    std::uint64_t bytesRead() const;
    std::uint64_t linesRead() const;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace trovek::service
