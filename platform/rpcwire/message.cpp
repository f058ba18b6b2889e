#include "rpcwire/message.h"

#include "rpcwire/json_text.h"

#include <utility>

namespace rpcwire {

namespace {

constexpr char kVersion[] = "2.0";
constexpr std::size_t kMaxQuotedBytes = 200;

Json::Value takeMember(Json::Value& object, const char* name)
{
    Json::Value member;
    object.removeMember(name, &member);
    return member;
}

bool isInteger(const Json::Value& value)
{
    return value.type() == Json::intValue || value.type() == Json::uintValue;
}

/** Json::Value::isInt() also takes 1.0 for one. */
bool isRequestId(const Json::Value& id)
{
    return id.isNull() || id.isString() || isInteger(id) || id.type() == Json::realValue;
}

std::string requestDefect(const Json::Value& object)
{
    if (object["jsonrpc"] != kVersion)
        return "\"jsonrpc\" is not \"2.0\"";
    if (!object["method"].isString())
        return "\"method\" is not a string";
    const Json::Value& params = object["params"];
    if (object.isMember("params") && params.type() != Json::objectValue &&
        params.type() != Json::arrayValue)
        return "\"params\" is neither object nor array";
    if (!isRequestId(object["id"]))
        return "\"id\" is neither string nor number";
    return {};
}

std::string answerDefect(const Json::Value& object)
{
    if (object["jsonrpc"] != kVersion)
        return "\"jsonrpc\" is not \"2.0\"";
    if (object.isMember("result") == object.isMember("error"))
        return "it needs either \"result\" or \"error\"";
    const Json::Value& error = object["error"];
    if (object.isMember("error") &&
        (error.type() != Json::objectValue || !error["message"].isString()))
        return "\"error\" is not an object with a \"message\"";
    if (isInteger(object["id"]))
        return {};
    // Without an id the other side says that it could not even read what it got.
    if (object["id"].isNull() && object.isMember("error"))
        return "it belongs to no request and says " + quoted(error["message"].asString());
    return "\"id\" is not an integer";
}

JsonRpcException takeError(Json::Value error)
{
    const Json::Value& code = std::as_const(error)["code"];
    const int number = code.isInt() ? code.asInt() : int(ServiceError);
    return JsonRpcException(std::as_const(error)["message"].asString(), takeMember(error, "data"),
                            number);
}

Message readRequest(Json::Value& object)
{
    Message message;
    message.defect = requestDefect(object);
    message.hasId = object.isMember("id");
    message.id = takeMember(object, "id");
    if (!isRequestId(message.id))
        message.id = Json::Value();
    if (std::as_const(object)["method"].isString())
        message.method = std::as_const(object)["method"].asString();
    if (!message.defect.empty()) {
        message.kind = Message::Kind::BadRequest;
        return message;
    }
    message.kind = message.hasId ? Message::Kind::Request : Message::Kind::Notification;
    message.params = takeMember(object, "params");
    return message;
}

Message readAnswer(Json::Value& object)
{
    Message message;
    message.defect = answerDefect(object);
    if (!message.defect.empty())
        return message;
    message.kind = Message::Kind::Answer;
    message.hasId = true;
    message.id = takeMember(object, "id");
    if (object.isMember("error"))
        message.error = takeError(takeMember(object, "error"));
    else
        message.result = takeMember(object, "result");
    return message;
}

/** Built as text, so that large params and results are not copied first. */
std::string line(const std::string& members)
{
    return R"({"jsonrpc":"2.0",)" + members + '}';
}

std::string callMembers(const std::string& method, const Json::Value& params)
{
    std::string members = R"("method":)" + toJsonLine(method);
    if (!params.isNull())
        members += R"(,"params":)" + toJsonLine(params);
    return members;
}

} // namespace

Message readMessage(Json::Value object)
{
    return object.isMember("method") ? readRequest(object) : readAnswer(object);
}

std::string requestLine(int id, const std::string& method, const Json::Value& params)
{
    return line(R"("id":)" + std::to_string(id) + ',' + callMembers(method, params));
}

std::string notificationLine(const std::string& method, const Json::Value& params)
{
    return line(callMembers(method, params));
}

std::string resultLine(const Json::Value& id, const Json::Value& result)
{
    return line(R"("id":)" + toJsonLine(id) + R"(,"result":)" + toJsonLine(result));
}

std::string errorLine(const Json::Value& id, const JsonRpcException& error)
{
    Json::Value object(Json::objectValue);
    object["code"] = error.code();
    object["message"] = error.message();
    if (!error.data().isNull())
        object["data"] = error.data();
    return line(R"("id":)" + toJsonLine(id) + R"(,"error":)" + toJsonLine(object));
}

std::string quoted(std::string_view text)
{
    if (text.size() <= kMaxQuotedBytes)
        return toJsonLine(std::string(text));
    std::size_t end = kMaxQuotedBytes;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return toJsonLine(std::string(text.substr(0, end))) + "...";
}

} // namespace rpcwire
