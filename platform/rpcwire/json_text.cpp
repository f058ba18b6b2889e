#include "rpcwire/json_text.h"

#include "rpcwire/json_reader.h"

#include <json/writer.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace rpcwire {

namespace {

/** Never destroyed: a connection may still write while the process's statics go away. */
const Json::StreamWriterBuilder& writerBuilder()
{
    static const Json::StreamWriterBuilder& builder = *[] {
        auto* const settings = new Json::StreamWriterBuilder;
        (*settings)["commentStyle"] = "None";
        (*settings)["indentation"] = "";
        (*settings)["emitUTF8"] = true;
        (*settings)["precision"] = 17;
        return settings;
    }();
    return builder;
}

bool isNonFiniteReal(const Json::Value& value)
{
    return value.type() == Json::realValue && !std::isfinite(value.asDouble());
}

bool hasNonFiniteReal(const Json::Value& value)
{
    return isNonFiniteReal(value) || std::any_of(value.begin(), value.end(), hasNonFiniteReal);
}

void nullNonFiniteReals(Json::Value* value)
{
    if (isNonFiniteReal(*value))
        *value = Json::Value();
    for (Json::Value& child : *value)
        nullNonFiniteReals(&child);
}

} // namespace

bool parseJson(std::string_view text, Json::Value* value, std::string* error)
{
    std::string reason;
    const bool read = readJson(text, value, &reason);
    if (!read && error)
        *error = reason;
    return read;
}

std::string toJsonLine(const Json::Value& value)
{
    // JsonCpp writes an infinite real as 1e+9999, which no reader takes for a number.
    if (hasNonFiniteReal(value)) {
        Json::Value finite = value;
        nullNonFiniteReals(&finite);
        return toJsonLine(finite);
    }
    return toValidUtf8(Json::writeString(writerBuilder(), value));
}

} // namespace rpcwire
