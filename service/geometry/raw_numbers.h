#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace trovek::geometry {

enum class ByteOrder { LittleEndian, BigEndian };

template <std::size_t size>
using RawInteger = std::conditional_t<
    size == 1, std::uint8_t,
    std::conditional_t<size == 2, std::uint16_t,
                       std::conditional_t<size == 4, std::uint32_t, std::uint64_t>>>;

/** Whatever the processor's own order is; compilers make one instruction of it. */
template <typename Number>
Number readRaw(const char* bytes, ByteOrder order)
{
    RawInteger<sizeof(Number)> raw = 0;
    for (std::size_t byte = 0; byte < sizeof(Number); ++byte) {
        const std::size_t place =
            order == ByteOrder::LittleEndian ? byte : sizeof(Number) - 1 - byte;
        raw = RawInteger<sizeof(Number)>(raw | RawInteger<sizeof(Number)>(std::uint8_t(bytes[byte]))
                                                   << (8 * place));
    }
    Number number;
    std::memcpy(&number, &raw, sizeof number);
    return number;
}

/** Little-endian. */
template <typename Number>
void writeRaw(char* bytes, Number number)
{
    RawInteger<sizeof(Number)> raw;
    std::memcpy(&raw, &number, sizeof number);
    for (std::size_t byte = 0; byte < sizeof(Number); ++byte)
        bytes[byte] = char(std::uint8_t(raw >> (8 * byte)));
}

} // namespace trovek::geometry
