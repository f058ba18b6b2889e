#pragma once

#include <QByteArray>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace trovek {

/** One command of an x3g or s3g file; what its code has not is zero. */
struct MachineFileCommand
{
    int code = 0;
    /** 139, 140, 142, 155: X, Y, Z, A, B. */
    std::array<std::int32_t, 5> steps{};
    /** 131, 132, 137, 144: bits 1 X, 2 Y, 4 Z, 8 A, 16 B (and 128 enable). */
    int axes = 0;
    /** 134, 135, 136, 141. */
    int tool = 0;
    /** 136. */
    int action = 0;
    /** 131, 132, 139: microseconds a step; 133: milliseconds; 136: target or on; 142: microseconds;
     * 150: percent; 155: steps a second; 157: version major * 256 + minor. */
    std::uint32_t value = 0;
    /** 131, 132, 135, 141, 149: seconds. */
    int timeout = 0;
    /** 155: millimetres. */
    float distance = 0;
    /** 155: 64ths of a millimetre a second. */
    int speed = 0;
    /** 149, 153. */
    std::string text;
    /** 157. */
    int machineId = 0;
};

/**
 * Takes a whole file apart, by the table of docs/formats/machine_file.md and nothing of the
 * writer's.
 * @throws std::runtime_error for a code that is not in the table and for a file that ends inside a
 * command
 */
std::vector<MachineFileCommand> readMachineFile(const QByteArray& bytes);

/** A machine that does what the file says. */
class MachineFileReplay
{
public:
    /** Where the motors are after each move, in steps, and the tool in use. */
    struct Stop
    {
        std::array<std::int32_t, 5> steps;
        int tool;
        double seconds;
    };

    explicit MachineFileReplay(const std::vector<MachineFileCommand>& commands);

    const std::vector<Stop>& stops() const { return m_stops; }
    /** In order, for example "tool 1", "heat 0 to 220", "wait 0", "platform 110", "wait platform",
     * "fan 0 on". */
    const std::vector<std::string>& events() const { return m_events; }
    const std::vector<int>& percents() const { return m_percents; }

private:
    std::vector<Stop> m_stops;
    std::vector<std::string> m_events;
    std::vector<int> m_percents;
};

} // namespace trovek
