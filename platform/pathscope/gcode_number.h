#pragma once

#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

#ifdef _MSC_VER
#include <intrin.h>
#define PATHSCOPE_INLINE __forceinline
#else
/** For what runs with every move: calls would take a tenth of the time to read a file. */
#define PATHSCOPE_INLINE inline __attribute__((always_inline))
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

/** Eight characters as a number; the first one in the lowest byte. */
inline std::uint64_t load(const char* text)
{
    std::uint64_t word = 0;
    std::memcpy(&word, text, sizeof word);
    // Digits become 0 to 9.
    return word ^ 0x3030303030303030U;
}

/** The highest bit of every byte that is none of 0 to 9. */
inline std::uint64_t notDigits(std::uint64_t word)
{
    return ((word + 0x7676767676767676U) | word) & std::uint64_t(0x8080808080808080U);
}

/** So many bits, in whole bytes, are below the first byte that is marked in a mask of its own. */
inline unsigned bitsBelow(std::uint64_t mask)
{
    return lowestSetBit(mask) & ~7U;
}

/** The value of digits in the highest bytes, zeros below them. */
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

/** For any form and number of digits; rounded correctly, infinite when out of range. */
inline const char* readLong(const char* begin, double* value)
{
    const char* end = begin;
    while (isDigit(*end))
        ++end;
    auto digits = end - begin;
    if (*end == '.') {
        const char* const dot = end++;
        while (isDigit(*end))
            ++end;
        digits += end - dot - 1;
    }
    if (digits == 0)
        return nullptr;
    const auto result = std::from_chars(begin, end, *value, std::chars_format::fixed);
    if (result.ec != std::errc())
        *value = std::numeric_limits<double>::infinity();
    return end;
}

/** Up to seven digits before the dot and as many behind it, at least one each. */
inline const char* readMedium(const char* begin, double* value)
{
    const std::uint64_t whole = load(begin);
    const std::uint64_t wholeEnd = notDigits(whole);
    if (wholeEnd == 0 || bitsBelow(wholeEnd) == 0)
        return readLong(begin, value);
    const unsigned wholeBits = bitsBelow(wholeEnd);
    const char* const dot = begin + wholeBits / 8;
    const std::uint64_t fraction = load(dot + 1);
    const std::uint64_t fractionEnd = notDigits(fraction);
    if (*dot != '.' || fractionEnd == 0 || bitsBelow(fractionEnd) == 0)
        return readLong(begin, value);
    const unsigned bits = bitsBelow(fractionEnd);
    const unsigned digits = bits / 8;
    // All digits together and the power of ten are exact, so that the division rounds correctly.
    *value = static_cast<double>(valueOfDigits(whole << (64 - wholeBits)) * kPower[digits] +
                                 valueOfDigits(fraction << (64 - bits))) /
             kPowerAsDouble[digits];
    return dot + 1 + digits;
}

} // namespace number

/**
 * Reads "12", "-.5", "+5." and the like; an exponent is none, so that "1E5" ends before the E.
 *
 * @param text  followed by kNumberPadding bytes that may be read, with no digit among them
 * @param value correctly rounded; of no meaning when there is no number
 * @return where the number ends, or null when there is none
 */
PATHSCOPE_INLINE const char* readNumber(const char* text, double* value)
{
    const bool negative = *text == '-';
    const char* const begin = text + static_cast<int>(negative || *text == '+');
    // Without a branch for the numbers of digits: a wrong guess costs more than the arithmetic.
    const std::uint64_t word = number::load(begin);
    const std::uint64_t marks = number::notDigits(word);
    const std::uint64_t marksBehind = marks & (marks - 1);
    const char* end = nullptr;
    if (marksBehind == 0) {
        end = number::readMedium(begin, value);
        if (end == nullptr)
            return nullptr;
    } else {
        const unsigned whole = number::bitsBelow(marks);
        if (begin[whole / 8] == '.') {
            const unsigned all = number::bitsBelow(marksBehind);
            if (all == 8)
                return nullptr;
            // The digits before the dot move over it.
            const std::uint64_t before = (std::uint64_t(1) << whole) - 1;
            const std::uint64_t digits =
                (word & before) << 8 | (word & ~(before << 8 | std::uint64_t(0xff)));
            *value = static_cast<double>(number::valueOfDigits(digits << (64 - all))) /
                     number::kPowerAsDouble[(all - whole) / 8 - 1];
            end = begin + all / 8;
        } else {
            if (whole == 0)
                return nullptr;
            *value = static_cast<double>(number::valueOfDigits(word << (64 - whole)));
            end = begin + whole / 8;
        }
    }
    if (negative)
        *value = -*value;
    return end;
}

} // namespace pathscope
