#pragma once

#include <rpcwire/json_rpc_exception.h>

#include <functional>
#include <optional>

namespace trovek::service {

/** Runs work on shapes, pictures or calibrations; what it throws as a client is answered it. */
std::optional<JsonRpcException> errorOfWork(const std::function<void()>& work);

} // namespace trovek::service
