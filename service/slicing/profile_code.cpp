#include "slicing/profile_code.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace trovek::service {

namespace {

[[noreturn]] void fail(const std::string& fileName, int line, const std::string& problem)
{
    throw std::runtime_error(fileName + ", line " + std::to_string(line) + ": " + problem);
}

/** The next line with its line break, taken away from the text; CR, LF and CR LF each break. */
std::string_view takeLine(std::string_view& text)
{
    std::size_t end = text.find_first_of("\r\n");
    if (end == std::string_view::npos)
        end = text.size();
    else if (text.substr(end, 2) == "\r\n")
        end += 2;
    else
        ++end;
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end);
    return line;
}

/** Behind the braces and before them; nothing when a name means nothing here. */
std::string expandLine(std::string_view line, const std::string& fileName, int number,
                       const ProfileCodeValues& values)
{
    const std::size_t codeEnd = std::min(line.find_first_of(";\r\n"), line.size());
    std::string_view code = line.substr(0, codeEnd);
    const std::string_view rest = line.substr(codeEnd);
    std::string expanded;
    while (true) {
        const std::size_t open = code.find_first_of("{}");
        expanded += code.substr(0, open);
        if (open == std::string_view::npos)
            return expanded + std::string(rest);
        const std::size_t close = code.find_first_of("{}", open + 1);
        if (code[open] == '}' || close == std::string_view::npos || code[close] == '{')
            fail(fileName, number, "braces must stand around a name, as in {x_max}");
        const std::string name(code.substr(open + 1, close - open - 1));
        const auto value = values.find(name);
        if (value == values.end())
            fail(fileName, number, "{" + name + "} is not known");
        if (value->second.empty())
            return std::string(rest.substr(std::min(rest.find_first_of("\r\n"), rest.size())));
        expanded += value->second;
        code.remove_prefix(close + 1);
    }
}

} // namespace

std::string expandProfileCode(const std::string& text, const std::string& fileName,
                              const ProfileCodeValues& values)
{
    std::string expanded;
    std::string_view rest = text;
    for (int number = 1; !rest.empty(); ++number)
        expanded += expandLine(takeLine(rest), fileName, number, values);
    // Code after it must begin a line.
    if (!expanded.empty() && expanded.back() != '\n' && expanded.back() != '\r')
        expanded += '\n';
    return expanded;
}

} // namespace trovek::service
