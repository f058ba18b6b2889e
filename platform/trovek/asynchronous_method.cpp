#include "trovek/asynchronous_method.h"

#include "trovek/log.h"
#include "trovek_p.h"

#include <rpcwire/json_rpc_exception.h>

#include <stdexcept>
#include <utility>

namespace trovek {

namespace {

constexpr char kLogUnit[] = "platform\\trovek\\asynchronous_method";

Json::Value errorObject(const std::exception& error)
{
    Json::Value object(Json::objectValue);
    object["code"] = int(rpcwire::ServiceError);
    object["message"] = error.what();
    if (const auto* const answer = dynamic_cast<const JsonRpcException*>(&error)) {
        object["code"] = answer->code();
        if (!answer->data().isNull())
            object["data"] = answer->data();
    }
    return object;
}

} // namespace

class AsynchronousMethod::Private
{
public:
    bool issued = false;
    /** Gone with the request; the answer finds by it that nobody waits any more. */
    std::shared_ptr<int> alive = std::make_shared<int>();
};

AsynchronousMethod::AsynchronousMethod(std::string methodName)
    : d(std::make_unique<Private>())
    , m_name(std::move(methodName))
    , m_parameters(Json::objectValue)
{}

AsynchronousMethod::~AsynchronousMethod() = default;

void AsynchronousMethod::issue(Trovek& trovek)
{
    if (d->issued)
        throw std::logic_error("Request was already issued");
    d->issued = true;

    const auto answered = [this, alive = std::weak_ptr<int>(d->alive)](
                              const Json::Value& result, const std::exception* error) {
        if (alive.expired())
            return;
        try {
            if (error)
                handleErrorResponse(errorObject(*error));
            else
                handleResponse(result);
        } catch (const std::exception& e) {
            // The request may have been destroyed by its own handler: nothing of it is used here.
            TROVEK_LOG(0) << "Handler of an answer threw: " << e.what() << std::endl;
        } catch (...) {
            TROVEK_LOG(0) << "Handler of an answer threw something" << std::endl;
        }
    };
    trovek.d->request(m_name, m_parameters, answered);
}

void AsynchronousMethod::setParameter(const char* name, Json::Value value)
{
    m_parameters[name] = std::move(value);
}

} // namespace trovek
