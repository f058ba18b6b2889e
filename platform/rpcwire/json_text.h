#pragma once

#include "rpcwire/export.h"

#include <json/value.h>

#include <string>
#include <string_view>

namespace rpcwire {

/** Deeper nesting than this is refused: JsonCpp's reader recurses, and throws at 1,001 levels. */
constexpr int kMaxJsonDepth = 500;

/**
 * Reads one JSON text: strict JSON, nothing after it but white space, no member twice.
 *
 * Bytes in strings that are not UTF-8 become U+FFFD. Never throws.
 * @return false, and the reason in *error (may be null), when it is none
 */
RPCWIRE_EXPORT bool parseJson(std::string_view text, Json::Value* value, std::string* error);

/** The value as one line without a line break, UTF-8, reals with all their digits. */
RPCWIRE_EXPORT std::string toJsonLine(const Json::Value& value);

} // namespace rpcwire
