#pragma once

#include "rpcwire/export.h"

#include <json/value.h>

#include <exception>
#include <stdexcept>
#include <string>

namespace rpcwire {

/** JSON-RPC 2.0 error codes (jsonrpc.org, section 5.1) and the one for errors that the service
 * names. */
enum ErrorCode : int {
    ParseError = -32700,
    InvalidRequest = -32600,
    MethodNotFound = -32601,
    InvalidParams = -32602,
    InternalError = -32603,
    /** A service exception; "data" has its name. */
    ServiceError = -32000,
};

/**
 * The other side answered a request with an error.
 *
 * message() is its "message", data() its "data" (null when there is none). The service puts an
 * object with "name" (the service-side exception's name) and "message" there; whoever reads it
 * checks the shape first.
 */
class RPCWIRE_EXPORT JsonRpcException : public std::exception
{
public:
    explicit JsonRpcException(std::string message, Json::Value data = Json::Value(),
                              int code = ServiceError);
    ~JsonRpcException() override;

    const std::string& message() const { return m_message; }
    const Json::Value& data() const { return m_data; }
    int code() const { return m_code; }

    /** The same text as message(). */
    const char* what() const noexcept override { return m_message.c_str(); }

private:
    std::string m_message;
    Json::Value m_data;
    int m_code;
};

/** The link itself failed: it is not there, was lost, or an answer did not come in time. */
class RPCWIRE_EXPORT ConnectionError : public std::runtime_error
{
public:
    explicit ConnectionError(const std::string& text);
    ~ConnectionError() override;
};

} // namespace rpcwire

using rpcwire::JsonRpcException;
