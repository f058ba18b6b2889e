#pragma once

#include <trovek/wire.h>

namespace ostrand {

/** True when the service says that it has no such job. */
inline bool saysUnknownJob(const JsonRpcException& e)
{
    const Json::Value data = e.data();
    return data.isObject() && data["name"].isString() &&
           data["name"].asString() == trovek::wire::error::kUnknownJob;
}

} // namespace ostrand
