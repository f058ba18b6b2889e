#include "fuzz_target.h"

#include <slicing/profile_code.h>

#include <stdexcept>
#include <string>

using namespace trovek::service;

namespace {

bool hasBracesOutsideComments(const std::string& text)
{
    // What ends the comment besides the line; 0 outside of one.
    char inside = 0;
    for (const char c : text) {
        if (c == '\n' || c == '\r' || (c == ')' && inside == ')'))
            inside = 0;
        else if (inside == 0 && (c == ';' || c == '('))
            inside = c == ';' ? '\n' : ')';
        else if (inside == 0 && (c == '{' || c == '}'))
            return true;
    }
    return false;
}

} // namespace

/** The start or end code of a profile. */
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ProfileCodeValues values{{"x_max", "245"}, {"off", ""}, {"prime", "T0\nG1 X5"}};
    const std::string text(fuzz::textOf(data, size));
    try {
        const std::string code = expandProfileCode(text, "start.gcode", values);
        fuzz::require(!hasBracesOutsideComments(code), "every name has its value");
        fuzz::require(code.empty() || code.back() == '\n' || code.back() == '\r',
                      "code ends with its line");
        fuzz::require(expandProfileCode(code, "start.gcode", values) == code,
                      "what has no names stays as it is");
    } catch (const std::runtime_error& error) {
        fuzz::require(std::string(error.what()).rfind("start.gcode, line ", 0) == 0,
                      "a refusal names the line");
    }
    return 0;
}
