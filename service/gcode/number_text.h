#pragma once

#include <charconv>
#include <string>

namespace trovek::service {

/** At most three decimals, a dot in every locale, no trailing zeros: for G-code and for users. */
inline std::string numberText(double value)
{
    char digits[400];
    const auto result =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, 3);
    std::string text(digits, result.ptr);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.')
        text.pop_back();
    return text == "-0" ? "0" : text;
}

} // namespace trovek::service
