#pragma once

#include <json/value.h>

#include <string>
#include <string_view>

namespace rpcwire {

/** The bytes with every sequence that is not UTF-8 replaced by U+FFFD. */
std::string toValidUtf8(std::string_view bytes);

/**
 * Reads a JSON text into a JsonCpp value, by the grammar of RFC 8259 and nothing more.
 *
 * JsonCpp's own reader is not strict enough for bytes from outside: it takes "-", "01" and "1." for
 * numbers and raw control characters in strings, makes strings that are not UTF-8, throws when the
 * nesting is deep, and reads reals by the process's locale. So another library reads, and hands
 * over event by event.
 *
 * @return false when the text is not one JSON value; *error says why
 */
bool readJson(std::string_view text, Json::Value* value, std::string* error);

} // namespace rpcwire
