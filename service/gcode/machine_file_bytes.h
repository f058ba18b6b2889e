#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace trovek::service {

/** Bytes of a machine file in the making: little-endian, whatever the processor is. */
class MachineFileBytes
{
public:
    MachineFileBytes& u8(std::uint8_t value);
    MachineFileBytes& u16(std::uint16_t value);
    MachineFileBytes& u32(std::uint32_t value);
    MachineFileBytes& i32(std::int32_t value);
    MachineFileBytes& f32(float value);
    MachineFileBytes& zeros(std::size_t count);
    /** With the byte that ends it; the text holds none. */
    MachineFileBytes& text(std::string_view value);

    const char* data() const { return m_bytes.data(); }
    std::size_t size() const { return m_bytes.size(); }
    void clear() { m_bytes.clear(); }

private:
    std::string m_bytes;
};

/** What a machine's display gets: control characters become blanks, and it is cut between UTF-8
 * characters. */
std::string displayText(std::string_view text, std::size_t mostBytes);

} // namespace trovek::service
