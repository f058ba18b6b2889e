#include "machine_file_bytes.h"

#include <cstring>

namespace trovek::service {

MachineFileBytes& MachineFileBytes::u8(std::uint8_t value)
{
    m_bytes += static_cast<char>(value);
    return *this;
}

MachineFileBytes& MachineFileBytes::u16(std::uint16_t value)
{
    return u8(static_cast<std::uint8_t>(value & 0xff)).u8(static_cast<std::uint8_t>(value >> 8));
}

MachineFileBytes& MachineFileBytes::u32(std::uint32_t value)
{
    return u16(static_cast<std::uint16_t>(value & 0xffff))
        .u16(static_cast<std::uint16_t>(value >> 16));
}

MachineFileBytes& MachineFileBytes::i32(std::int32_t value)
{
    return u32(static_cast<std::uint32_t>(value));
}

MachineFileBytes& MachineFileBytes::f32(float value)
{
    std::uint32_t bits = 0;
    static_assert(sizeof bits == sizeof value);
    std::memcpy(&bits, &value, sizeof bits);
    return u32(bits);
}

MachineFileBytes& MachineFileBytes::zeros(std::size_t count)
{
    m_bytes.append(count, '\0');
    return *this;
}

MachineFileBytes& MachineFileBytes::text(std::string_view value)
{
    m_bytes.append(value);
    return u8(0);
}

std::string displayText(std::string_view text, std::size_t mostBytes)
{
    std::size_t size = text.size();
    if (size > mostBytes) {
        size = mostBytes;
        while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xc0) == 0x80)
            --size;
    }
    std::string result(text.substr(0, size));
    for (char& c : result) {
        if (static_cast<unsigned char>(c) < ' ' || c == 0x7f)
            c = ' ';
    }
    return result;
}

} // namespace trovek::service
