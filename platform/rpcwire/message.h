#pragma once

#include "rpcwire/json_rpc_exception.h"

#include <json/value.h>

#include <optional>
#include <string>
#include <string_view>

namespace rpcwire {

/** A JSON object that came in, told apart by its shape. */
struct Message
{
    enum class Kind {
        Request,
        Notification,
        /** The answer to a request: `result`, or `error` when that is set. */
        Answer,
        /** It has a "method" but breaks the rules; `defect` says which. */
        BadRequest,
        /** Meant as an answer, but not to be trusted; `defect` says why. */
        BadAnswer,
    };

    Kind kind = Kind::BadAnswer;
    std::string method;
    Json::Value params;
    Json::Value result;
    std::optional<JsonRpcException> error;
    /** Of a bad request: null also when the id itself is wrong. */
    Json::Value id;
    /** False for a notification, which nobody answers, however bad it is. */
    bool hasId = false;
    std::string defect;
};

/** @param object a JSON object; what the message needs is moved out of it */
Message readMessage(Json::Value object);

/** Each is one line without its line break. Null params are left out. */
std::string requestLine(int id, const std::string& method, const Json::Value& params);
std::string notificationLine(const std::string& method, const Json::Value& params);
std::string resultLine(const Json::Value& id, const Json::Value& result);
std::string errorLine(const Json::Value& id, const JsonRpcException& error);

/** Text from outside in double quotes, for a log: one line of at most 200 bytes of it. */
std::string quoted(std::string_view text);

} // namespace rpcwire
