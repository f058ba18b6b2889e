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

/** Begins a name, ends it, or begins what is not looked at. */
constexpr char kMarks[] = "{}(;\r\n";

std::string_view lineBreakOf(std::string_view line)
{
    return line.substr(std::min(line.find_first_of("\r\n"), line.size()));
}

/** Nothing but the line break when a name means nothing here. */
std::string expandLine(std::string_view line, const std::string& fileName, int number,
                       const ProfileCodeValues& values)
{
    std::string expanded;
    std::string_view rest = line;
    const auto take = [&expanded, &rest](std::size_t end) {
        expanded += rest.substr(0, end);
        rest.remove_prefix(std::min(end, rest.size()));
    };
    while (true) {
        take(rest.find_first_of(kMarks));
        if (!rest.empty() && rest.front() == '(' && rest.find(')') != std::string_view::npos) {
            take(rest.find(')') + 1);
            continue;
        }
        if (rest.empty() || (rest.front() != '{' && rest.front() != '}'))
            return expanded + std::string(rest);
        const std::size_t close = rest.find_first_of(kMarks, 1);
        if (rest.front() == '}' || close == std::string_view::npos || rest[close] != '}')
            fail(fileName, number, "braces must stand around a name, as in {x_max}");
        const std::string name(rest.substr(1, close - 1));
        const auto value = values.find(name);
        if (value == values.end())
            fail(fileName, number, "{" + name + "} is not known");
        if (value->second.empty())
            return std::string(lineBreakOf(line));
        expanded += value->second;
        rest.remove_prefix(close + 1);
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
