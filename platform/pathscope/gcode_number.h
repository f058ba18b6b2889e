#pragma once

#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

#ifdef _MSC_VER
#include <intrin.h>
#endif

namespace pathscope {

/** What stands behind a text that numbers are read from: so many bytes are looked at at once. */
constexpr std::size_t kNumberPadding = 16;

namespace number {

constexpr std::uint64_t kPower[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000};
constexpr double kPowerAsDouble[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7};

inline unsigned lowestSetBit(std::uint64_t bits)
{
#ifdef _MSC_VER
    unsigned long index = 0;
    _BitScanForward64(&index, bits);
    return index;
#else
    return static_cast<unsigned>(__builtin_ctzll(bits));
#endif
}

/** Eight digits at once: the first one in the lowest byte, each as 0 to 9. */
inline std::uint64_t valueOfDigits(std::uint64_t digits)
{
    digits = digits * 10 + (digits >> 8);
    const std::uint64_t even = (digits & 0x000000ff000000ffU) * 0x000f424000000064U;
    const std::uint64_t odd = ((digits >> 16) & 0x000000ff000000ffU) * 0x0000271000000001U;
    return (even + odd) >> 32;
}

inline bool isDigit(char c)
{
    return static_cast<unsigned char>(c - '0') < 10;
}

/** For more digits than the fast way takes; rounded correctly, infinite when out of range. */
inline const char* readLong(const char* begin, double* value)
{
    const char* end = begin;
    while (isDigit(*end))
        ++end;
    if (*end == '.') {
        ++end;
        while (isDigit(*end))
            ++end;
    }
    const auto result = std::from_chars(begin, end, *value, std::chars_format::fixed);
    if (result.ec != std::errc())
        *value = std::numeric_limits<double>::infinity();
    return end;
}

} // namespace number

/**
 * Reads "12", "-.5", "+5." and the like; an exponent is none, so that "1E5" ends before the E.
 *
 * @param text  followed by kNumberPadding bytes that may be read, with no digit among them
 * @param value correctly rounded; unchanged when there is no number
 * @return where the number ends, or null when there is none
 */
inline const char* readNumber(const char* text, double* value)
{
    const bool negative = *text == '-';
    const char* const begin = text + static_cast<int>(negative || *text == '+');
    const char* p = begin;
    std::uint64_t whole = 0;
    while (number::isDigit(*p)) {
        whole = whole * 10 + static_cast<std::uint64_t>(*p - '0');
        ++p;
    }
    const auto wholeDigits = p - begin;
    double magnitude = 0;
    if (*p != '.') {
        if (wholeDigits == 0)
            return nullptr;
        if (wholeDigits <= 15)
            magnitude = static_cast<double>(whole);
        else
            p = number::readLong(begin, &magnitude);
        *value = negative ? -magnitude : magnitude;
        return p;
    }
    // The fraction without a branch for its length: a wrong guess costs more than the arithmetic.
    std::uint64_t word = 0;
    std::memcpy(&word, p + 1, sizeof word);
    word ^= 0x3030303030303030U;
    const std::uint64_t notDigits =
        ((word + 0x7676767676767676U) | word) & std::uint64_t(0x8080808080808080U);
    // Both the digits together and the power of ten are exact, so that one division rounds right.
    if (notDigits != 0 && wholeDigits <= 8) {
        const unsigned bits = number::lowestSetBit(notDigits) & ~7U;
        const unsigned digits = bits / 8;
        if (digits + static_cast<unsigned>(wholeDigits) == 0)
            return nullptr;
        const std::uint64_t fraction = digits == 0 ? 0 : number::valueOfDigits(word << (64 - bits));
        magnitude = static_cast<double>(whole * number::kPower[digits] + fraction) /
                    number::kPowerAsDouble[digits];
        p += 1 + digits;
    } else {
        p = number::readLong(begin, &magnitude);
    }
    *value = negative ? -magnitude : magnitude;
    return p;
}

} // namespace pathscope
