#pragma once

#include <QtEndian>

#include <cstring>
#include <type_traits>

namespace trovek::geometry {

enum class ByteOrder { LittleEndian, BigEndian };

template <std::size_t size>
using RawInteger = std::conditional_t<
    size == 1, quint8,
    std::conditional_t<size == 2, quint16, std::conditional_t<size == 4, quint32, quint64>>>;

/** Whatever the processor's own order is. */
template <typename Number>
Number readRaw(const char* bytes, ByteOrder order)
{
    using Raw = RawInteger<sizeof(Number)>;
    const Raw raw = order == ByteOrder::LittleEndian ? qFromLittleEndian<Raw>(bytes)
                                                     : qFromBigEndian<Raw>(bytes);
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
    qToLittleEndian(raw, bytes);
}

} // namespace trovek::geometry
