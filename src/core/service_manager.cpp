#include "core/service_manager.h"

namespace trovek::service {
namespace {

std::string connectionFailure(const char* what, const SystemError& error)
{
    return std::string("Error connecting to ") + what + ". Code: " + std::to_string(error.code) +
           " Message: " + error.text;
}

} // namespace

std::string runAction(ServiceManager& manager, Action action)
{
    if (const auto error = manager.connect())
        return connectionFailure("Service Control Manager", *error);
    if (const auto error = manager.openService())
        return connectionFailure("background service", *error);
    if (const auto error = manager.queryStatus())
        return "Error querying service status: " + error->text;
    manager.run(action);
    return std::string();
}

} // namespace trovek::service
