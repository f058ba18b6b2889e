#pragma once

#include "gcode_program.h"

#include <array>
#include <cstdint>
#include <exception>
#include <functional>
#include <vector>

namespace trovek::service {

struct MachineDefinition;
struct HeaterDefinition;

/** How long commands take on a machine that starts cold: moves at their feed, heating by its
 * curves. */
class ProgramClock
{
public:
    /** @param machine not owned; must outlive the clock */
    explicit ProgramClock(const MachineDefinition& machine);

    /** Carries out the command. @return the seconds it takes */
    double advance(const MachineCommand& command);
    /** Since the beginning. */
    double seconds() const { return m_seconds; }

private:
    struct HeaterState
    {
        const HeaterDefinition* definition = nullptr;
        double celsius = 0;
        int target = 0;
        /** When `celsius` was. */
        double since = 0;
    };
    double setTarget(HeaterState& heater, int celsius, bool wait);

    std::array<HeaterState, 2> m_tools;
    HeaterState m_platform;
    double m_seconds = 0;
};

/** Thrown when a callback asked to stop. */
class GCodeCanceled : public std::exception
{
public:
    const char* what() const noexcept override { return "Canceled"; }
};

/** Called every kCommandsPerProgress commands with the bytes read up to now; false stops the work.
 */
using GCodeProgress = std::function<bool(std::uint64_t bytesRead)>;
constexpr std::uint64_t kCommandsPerProgress = 4096;

struct GCodeEstimate
{
    /** Heating and homing included. */
    double seconds = 0;
    /** Filament pushed less filament pulled back, in millimetres, of tools 0 and 1. */
    std::array<double, 2> filamentMm{};
    /** Whether any move pushes the tool's filament. */
    std::array<bool, 2> usesTool{};
    std::uint64_t lines = 0;
    std::uint64_t commands = 0;
    GCodeRemarks remarks;
};

/**
 * Reads a whole program and says what it would be like; also the check that it can be run at all.
 * @throws GCodeError, GCodeCanceled, and std::runtime_error from a source
 */
GCodeEstimate estimateGCode(const MachineDefinition& machine, std::vector<GCodeSection> sections,
                            GCodeProgram::ColdExtrusion coldExtrusion = GCodeProgram::CountCold,
                            const GCodeProgress& progress = {});

} // namespace trovek::service
