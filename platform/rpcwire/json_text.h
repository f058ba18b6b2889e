#pragma once

#include "rpcwire/export.h"

#include <json/value.h>

#include <string>
#include <string_view>

namespace rpcwire {

/** Deeper nesting than this is refused: whoever reads, copies, writes or destroys a value recurses.
 */
constexpr int kMaxJsonDepth = 500;

/**
 * Reads one JSON text: strict JSON, nothing after it but white space, no member twice.
 *
 * In strings, bytes that are not UTF-8 and halves of surrogate pairs become U+FFFD. A number
 * without fraction and exponent becomes an integer where 64 bits hold it, any other one a real; one
 * that no double holds is refused. The process's locale does not matter. Never throws.
 * @param value left alone on failure
 * @return false, and the reason in *error (may be null), when it is none
 */
RPCWIRE_EXPORT bool parseJson(std::string_view text, Json::Value* value, std::string* error);

/**
 * The value as one line without a line break, always valid JSON in UTF-8.
 *
 * Reals keep all their digits and come back as reals; those that are not finite become null. Bytes
 * in strings that are not UTF-8 become U+FFFD. Comments of the value are left out.
 */
RPCWIRE_EXPORT std::string toJsonLine(const Json::Value& value);

} // namespace rpcwire
