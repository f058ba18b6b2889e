#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <variant>

namespace trovek::service {

/**
 * Millimetres of X, Y, Z and of filament pushed by the first (A) and the second (B) extruder.
 *
 * These are the machine's counters: where the first tool's nozzle is, whichever tool is in use, in
 * the coordinates that G92 last gave.
 */
using MachinePosition = std::array<double, 5>;

/** A straight move of all motors together. */
struct MoveCommand
{
    MachinePosition target;
    /** Of X, Y and Z together; of the filament when only that moves. Millimetres, above 0. */
    double distance = 0;
    /** Millimetres a second along `distance`, within what each motor can do. */
    double feed = 0;
    /** distance / feed. */
    double seconds = 0;
    /** Filament is pushed forward; pulling it back does not count. */
    bool extruding = false;
};

/** The counters count from `position` on; nothing moves. */
struct SetPositionCommand
{
    MachinePosition position;
};

/** The named axes go to their end stops; the counters are at `position` then. */
struct HomeCommand
{
    /** X, Y, Z. */
    std::array<bool, 3> axes;
    MachinePosition position;
    /** About. */
    double seconds = 0;
};

struct ToolChangeCommand
{
    /** 0 right or only, 1 left. */
    int tool = 0;
};

struct ToolTemperatureCommand
{
    int tool = 0;
    /** Degrees Celsius; 0 is off. */
    int celsius = 0;
    /** Nothing else happens until it is reached. */
    bool wait = false;
};

struct PlatformTemperatureCommand
{
    int celsius = 0;
    bool wait = false;
};

/** The fan beside a tool. */
struct FanCommand
{
    int tool = 0;
    bool on = false;
};

struct DwellCommand
{
    std::uint32_t milliseconds = 0;
};

struct MotorsCommand
{
    /** X, Y, Z, A, B. */
    std::array<bool, 5> motors;
    bool enable = false;
};

struct MessageCommand
{
    /** As in the file; any bytes but line ends. */
    std::string text;
};

/** What the G-code itself says of its progress. */
struct ProgressCommand
{
    /** 0 to 100. */
    int percent = 0;
};

/** One thing for a machine to do, and the line that says so. */
struct MachineCommand
{
    /** Of its section, from 1. */
    std::uint64_t line = 0;
    /** Index of its section. */
    std::size_t section = 0;
    std::variant<MoveCommand, SetPositionCommand, HomeCommand, ToolChangeCommand,
                 ToolTemperatureCommand, PlatformTemperatureCommand, FanCommand, DwellCommand,
                 MotorsCommand, MessageCommand, ProgressCommand>
        action;
};

/** G-code that the machine must not be given; what() is for a user and names the line. */
class GCodeError : public std::runtime_error
{
public:
    enum Kind {
        OutsideBuildVolume,
        TemperatureLimit,
        NoSuchTool,
        ColdExtrusion,
    };

    GCodeError(Kind kind, const std::string& text);

    Kind kind() const { return m_kind; }

private:
    Kind m_kind;
};

} // namespace trovek::service
