#include "method_table.h"

#include <trovek/log.h>
#include <trovek/wire.h>

#include <cmath>
#include <exception>

namespace trovek::service {

static constexpr char kLogUnit[] = "service\\method_table";

namespace {

constexpr char kMethodNotFound[] = "MethodNotFound";
constexpr char kInternal[] = "InternalError";

JsonRpcException invalidArgument(const std::string& text)
{
    return wire::makeError(wire::error::kInvalidArgument, text);
}

JsonRpcException withCode(const char* name, const std::string& text, int code)
{
    return JsonRpcException(text, wire::makeError(name, text).data(), code);
}

/** The reading functions tell what is wrong by std::runtime_error; a client is told by name. */
template <typename Read>
auto readArgument(Read read)
{
    try {
        return read();
    } catch (const std::exception& error) {
        throw invalidArgument(error.what());
    }
}

} // namespace

JsonRpcException internalError(const std::string& text)
{
    return withCode(kInternal, text, rpcwire::InternalError);
}

Params::Params(Json::Value value)
    : m_value(std::move(value))
{
    if (m_value.isNull())
        m_value = Json::Value(Json::objectValue);
    if (!m_value.isObject())
        throw invalidArgument("Parameters must be an object");
}

std::string Params::string(const char* name) const
{
    return readArgument([&] { return wire::stringMember(m_value, name); });
}

std::string Params::optionalString(const char* name) const
{
    return m_value[name].isNull() ? std::string() : string(name);
}

int Params::integer(const char* name) const
{
    return readArgument([&] { return wire::intMember(m_value, name); });
}

int Params::integer(const char* name, int least, int most) const
{
    const int value = integer(name);
    if (value < least || value > most) {
        throw invalidArgument(std::string("Member \"") + name + "\" must be from " +
                              std::to_string(least) + " to " + std::to_string(most));
    }
    return value;
}

bool Params::boolean(const char* name) const
{
    return readArgument([&] { return wire::boolMember(m_value, name); });
}

double Params::number(const char* name) const
{
    const Json::Value& member = m_value[name];
    if (!member.isNumeric() || !std::isfinite(member.asDouble()))
        throw invalidArgument(std::string("Member \"") + name + "\" is not a number");
    return member.asDouble();
}

const Json::Value& Params::array(const char* name) const
{
    const Json::Value& member = m_value[name];
    if (!member.isArray())
        throw invalidArgument(std::string("Member \"") + name + "\" is not a list");
    return member;
}

std::vector<std::string> Params::strings(const char* name) const
{
    return readArgument([&] { return wire::stringListMember(m_value, name); });
}

SlicerConfiguration Params::slicerConfiguration(const char* name) const
{
    return readArgument([&] { return wire::slicerConfigurationFromJson(object(name)); });
}

const Json::Value& Params::object(const char* name) const
{
    const Json::Value& member = m_value[name];
    if (!member.isObject())
        throw invalidArgument(std::string("Member \"") + name + "\" is not an object");
    return member;
}

void MethodTable::add(const char* name, Method method)
{
    addLate(name,
            [method = std::move(method)](const Call& call) { call.respond.result(method(call)); });
}

void MethodTable::addLate(const char* name, LateMethod method)
{
    m_methods.emplace(name, std::move(method));
}

void MethodTable::handle(const std::string& name, const Json::Value& params, Client& client,
                         const Responder& respond) const
{
    try {
        const auto found = m_methods.find(name);
        if (found == m_methods.end()) {
            throw withCode(kMethodNotFound, "The service has no such method",
                           rpcwire::MethodNotFound);
        }
        found->second({Params(params), client, respond});
    } catch (const JsonRpcException& error) {
        TROVEK_LOG(1) << "Refused a request: " << error.what() << std::endl;
        respond.error(error);
    } catch (const std::exception& error) {
        TROVEK_LOG(0) << "Request failed: " << error.what() << std::endl;
        respond.error(internalError(error.what()));
    }
}

} // namespace trovek::service
