#pragma once

#include "trovek/export.h"

#include <json/value.h>

#include <memory>
#include <string>

namespace trovek {

class Trovek;

/**
 * One request to the service that is answered later.
 *
 * Set the arguments, then issue() it once. Exactly one of the two handlers is called, once, from
 * the event loop and never inside issue(): with the service's answer, or with an error object when
 * it answers one, refuses the request, or the link is lost or was never there (then the object has
 * no "data"). Destroying the request before drops the answer; when the client is destroyed before,
 * neither handler is called any more. Requests have no deadline of their own.
 *
 * A handler may destroy the request. An exception that it lets out is logged and dropped.
 */
class TROVEK_EXPORT AsynchronousMethod
{
public:
    AsynchronousMethod(const AsynchronousMethod&) = delete;
    AsynchronousMethod& operator=(const AsynchronousMethod&) = delete;

    /** @throws std::logic_error "Request was already issued" */
    void issue(Trovek& trovek);

    /** The service's method name. */
    const std::string& methodName() const { return m_name; }
    const Json::Value& parameters() const { return m_parameters; }

protected:
    explicit AsynchronousMethod(std::string methodName);
    virtual ~AsynchronousMethod();

    virtual void handleResponse(const Json::Value& response) = 0;
    /** @param error the JSON-RPC error object: "code", "message" and mostly "data" */
    virtual void handleErrorResponse(const Json::Value& error) = 0;

    void setParameter(const char* name, Json::Value value);

private:
    class TROVEK_NO_EXPORT Private;
    const std::unique_ptr<Private> d;
    std::string m_name;
    Json::Value m_parameters;
};

} // namespace trovek
