#include "fuzz_target.h"

#include <slicing/profile_code.h>

#include <stdexcept>
#include <string>

using namespace trovek::service;

namespace {

bool hasBracesOutsideComments(const std::string& text)
{
    bool isComment = false;
    for (const char c : text) {
        if (c == '\n' || c == '\r')
            isComment = false;
        else if (c == ';')
            isComment = true;
        else if ((c == '{' || c == '}') && !isComment)
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
