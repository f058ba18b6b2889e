#pragma once

#include <trovek/printer.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace trovek::service {

/** A range on one axis in millimetres. */
struct AxisRange
{
    double min = 0;
    double max = 0;

    double length() const { return max - min; }
};

/** Motors in the order in which machine files count them: X, Y, Z, then the two extruders. */
enum MotorIndex : int {
    MotorX = 0,
    MotorY = 1,
    MotorZ = 2,
    /** Extruder of tool 0, the right or only one. */
    MotorA = 3,
    /** Extruder of tool 1, the left one. */
    MotorB = 4,
};
constexpr int kMotorCount = 5;

/** How one kind of heater behaves: full power until the target, then held; without power it cools.
 */
struct HeaterDefinition
{
    /** Highest target in degrees Celsius that the machine accepts. */
    int maxCelsius = 0;
    /** Where it would end at full power, in degrees Celsius; above maxCelsius. */
    double fullPowerCelsius = 0;
    /** Time constant of the rise in seconds. */
    double riseSeconds = 0;
    /** Time constant of the fall towards the room's temperature in seconds. */
    double fallSeconds = 0;

    static constexpr double kRoomCelsius = 23.0;

    /** Seconds at full power from one temperature to a higher one; 0 when it is warm enough
     * already. */
    double secondsToHeat(double fromCelsius, double toCelsius) const;
    /** The temperature after some time with a target; a target of 0 is off. */
    double celsiusAfter(double fromCelsius, double targetCelsius, double seconds) const;
};

/**
 * Everything that the service knows of one machine without asking it: from the machines file.
 *
 * Coordinates are those of its G-code: the origin is the front left corner of the platform, at the
 * nozzle's height on it, so the build volume begins at 0 on every axis unless the file says
 * otherwise. Lengths in millimetres, speeds in millimetres a second, temperatures in degrees
 * Celsius.
 */
struct MachineDefinition
{
    /** Unique among machines and archetypes; never empty. */
    std::string key;
    std::string displayName;
    /** 1 to 6. */
    Printer::Type type = Printer::UnknownType;
    /** Names under which firmware is offered for it. */
    std::vector<std::string> machineNames;
    /** "MAJOR.MINOR". */
    std::string firmwareVersion;
    /** 1 or 2. */
    int extruders = 1;
    bool hasHeatedPlatform = false;

    /** X, Y, Z. */
    std::array<AxisRange, 3> buildVolume;
    /** Steps a millimetre, one a motor. */
    std::array<double, kMotorCount> stepsPerMm{};
    /** Highest speed, one a motor. */
    std::array<double, kMotorCount> maxFeed{};

    /** X, Y, Z: true when the end stop is at the maximum. */
    std::array<bool, 3> homesToMaximum{};
    /** X, Y, Z of the first tool's nozzle at the end stops. */
    std::array<double, 3> homePosition{};
    /** Of each axis. */
    std::array<double, 3> homingFeed{};

    HeaterDefinition toolhead;
    /** maxCelsius is 0 without a heated platform. */
    HeaterDefinition platform;
    /** Colder than this an extruder must not push filament. */
    int minimumExtrusionCelsius = 0;
    /** Where each tool's nozzle is, seen from the first tool's: X, Y, Z; the first entry is zero.
     */
    std::array<std::array<double, 3>, 2> toolOffsets{};

    /** Written into x3g files. */
    std::uint16_t x3gMachineId = 0;
    /** "x3g" or "s3g": what its firmware reads. */
    std::string defaultFileFormat;

    /** Empty for an archetype. */
    std::string portName;
    /** Never empty for a machine. */
    std::string portIdentity;
    bool portInConnectionWhitelist = false;
    /** Whether it is attached when the service starts. */
    bool pluggedIn = false;
    /** Exported for but never printed on; has no port. */
    bool isArchetype = false;
};

struct MachineDefinitions
{
    /** In the file's order. */
    std::vector<MachineDefinition> machines;
    /** One for each of the six types, in the types' order. */
    std::vector<MachineDefinition> archetypes;
};

/**
 * Reads a machines file (docs/formats/machines_json.md).
 *
 * What the file does not say of a type comes from the compiled-in file, what it does not say of a
 * machine from the machine's type. Everything is checked; nothing is taken over from a file with an
 * error.
 * @param json the file's bytes, UTF-8
 * @throws std::runtime_error "Machines file: " with the entry, the member and what is wrong with it
 */
MachineDefinitions loadMachineDefinitions(const std::string& json);

/** The compiled-in machines file: a virtual machine of each type, one single and one dual plugged
 * in. */
MachineDefinitions defaultMachineDefinitions();
/** Its bytes, for whoever wants to write a file of their own. */
std::string defaultMachinesJson();

/** The name that the machines file uses, for example "fabrino_2x"; empty outside 1 to 6. */
std::string machineTypeName(Printer::Type type);
/** UnknownType when there is no such name. */
Printer::Type machineTypeFromName(const std::string& name);

} // namespace trovek::service
