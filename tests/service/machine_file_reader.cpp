#include "machine_file_reader.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace trovek {

namespace {

class Bytes
{
public:
    explicit Bytes(const QByteArray& bytes)
        : m_bytes(bytes)
    {}

    bool atEnd() const { return m_at == m_bytes.size(); }

    std::uint32_t number(int size)
    {
        if (m_bytes.size() - m_at < size)
            throw std::runtime_error("the file ends inside a command");
        std::uint32_t value = 0;
        for (int i = 0; i < size; ++i)
            value |= std::uint32_t(static_cast<unsigned char>(m_bytes[m_at++])) << (8 * i);
        return value;
    }

    float real()
    {
        const std::uint32_t bits = number(4);
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    std::string text()
    {
        std::string value;
        while (const std::uint32_t c = number(1))
            value += static_cast<char>(c);
        return value;
    }

    void zeros(int count)
    {
        for (int i = 0; i < count; ++i) {
            if (number(1) != 0)
                throw std::runtime_error("a reserved byte is set");
        }
    }

private:
    const QByteArray& m_bytes;
    int m_at = 0;
};

MachineFileCommand readCommand(Bytes& bytes)
{
    MachineFileCommand c;
    const auto byte = [&] {
        return static_cast<int>(bytes.number(1));
    };
    const auto word = [&] {
        return static_cast<int>(bytes.number(2));
    };
    const auto steps = [&] {
        for (std::int32_t& step : c.steps)
            step = static_cast<std::int32_t>(bytes.number(4));
    };
    c.code = byte();
    switch (c.code) {
    case 131:
    case 132:
        c.axes = byte();
        c.value = bytes.number(4);
        c.timeout = word();
        break;
    case 133:
        c.value = bytes.number(4);
        break;
    case 134:
        c.tool = byte();
        break;
    case 135:
    case 141:
        c.tool = byte();
        c.value = bytes.number(2);
        c.timeout = word();
        break;
    case 136: {
        c.tool = byte();
        c.action = byte();
        const int length = byte();
        if (length != (c.action == 12 ? 1 : 2) ||
            (c.action != 3 && c.action != 12 && c.action != 31))
            throw std::runtime_error("unknown tool action " + std::to_string(c.action));
        c.value = bytes.number(length);
        break;
    }
    case 137:
    case 144:
        c.axes = byte();
        break;
    case 139:
        steps();
        c.value = bytes.number(4);
        break;
    case 140:
        steps();
        break;
    case 142:
        steps();
        c.value = bytes.number(4);
        bytes.zeros(1);
        break;
    case 149:
        c.axes = byte();
        bytes.zeros(2);
        c.timeout = byte();
        c.text = bytes.text();
        break;
    case 150:
        c.value = bytes.number(1);
        bytes.zeros(1);
        break;
    case 153:
        bytes.zeros(4);
        c.text = bytes.text();
        break;
    case 154:
        bytes.zeros(1);
        break;
    case 155:
        steps();
        c.value = bytes.number(4);
        bytes.zeros(1);
        c.distance = bytes.real();
        c.speed = word();
        break;
    case 157:
        c.value = bytes.number(1) * 256;
        c.value += bytes.number(1);
        bytes.zeros(5);
        c.machineId = word();
        bytes.zeros(11);
        break;
    default:
        throw std::runtime_error("unknown code " + std::to_string(c.code));
    }
    return c;
}

} // namespace

std::vector<MachineFileCommand> readMachineFile(const QByteArray& bytes)
{
    Bytes source(bytes);
    std::vector<MachineFileCommand> commands;
    while (!source.atEnd())
        commands.push_back(readCommand(source));
    return commands;
}

MachineFileReplay::MachineFileReplay(const std::vector<MachineFileCommand>& commands)
{
    std::array<std::int32_t, 5> steps{};
    int tool = 0;
    for (const MachineFileCommand& c : commands) {
        const std::string toolText = std::to_string(c.tool);
        const std::string valueText = std::to_string(c.value);
        double seconds = 0;
        switch (c.code) {
        case 131:
        case 132:
            m_events.push_back("home " + std::to_string(c.axes) +
                               (c.code == 131 ? " down" : " up"));
            break;
        case 133:
            m_events.push_back("delay " + valueText);
            break;
        case 134:
            tool = c.tool;
            m_events.push_back("tool " + toolText);
            break;
        case 135:
            m_events.push_back("wait " + toolText);
            break;
        case 136:
            if (c.action == 3)
                m_events.push_back("heat " + toolText + " to " + valueText);
            else if (c.action == 31)
                m_events.push_back("platform " + valueText);
            else
                m_events.push_back("fan " + toolText + (c.value ? " on" : " off"));
            break;
        case 137:
            m_events.push_back("motors " + std::to_string(c.axes & 31) +
                               (c.axes & 128 ? " on" : " off"));
            break;
        case 140:
            steps = c.steps;
            break;
        case 141:
            m_events.push_back("wait platform");
            break;
        case 142:
            seconds = c.value / 1e6;
            break;
        case 149:
            m_events.push_back("message " + c.text);
            break;
        case 150:
            m_percents.push_back(static_cast<int>(c.value));
            break;
        case 155:
            for (std::size_t i = 0; i < steps.size(); ++i) {
                const double way = std::abs(double(c.steps[i]) - double(steps[i]));
                seconds = std::max(seconds, way / c.value);
            }
            break;
        default:
            break;
        }
        if (c.code == 139 || c.code == 142 || c.code == 155) {
            steps = c.steps;
            m_stops.push_back({steps, tool, seconds});
        }
    }
}

} // namespace trovek
