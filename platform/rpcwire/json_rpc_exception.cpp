#include "rpcwire/json_rpc_exception.h"

#include <utility>

namespace rpcwire {

JsonRpcException::JsonRpcException(std::string message, Json::Value data, int code)
    : m_message(std::move(message))
    , m_data(std::move(data))
    , m_code(code)
{}

JsonRpcException::~JsonRpcException() = default;

ConnectionError::ConnectionError(const std::string& text)
    : std::runtime_error(text)
{}

ConnectionError::~ConnectionError() = default;

} // namespace rpcwire
