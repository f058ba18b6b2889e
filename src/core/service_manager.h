#pragma once

// Without Qt, so that the part for one system can be built and tried alone.

#include <memory>
#include <optional>
#include <string>

namespace trovek::service {

enum class Action : int {
    Start = 0,
    Stop = 1,
    Restart = 2,
};

/** The longest time that an action's command is waited for. */
constexpr int kCommandWaitMs = 10000;

/** Why the system refused. */
struct SystemError
{
    /** The system's number for it. */
    unsigned long code = 0;
    /** The system's text for it, UTF-8. */
    std::string text;
};

/** What controls the services of a system. The steps are called in this order. */
class ServiceManager
{
public:
    virtual ~ServiceManager() = default;

    /** Each gives nothing when it has succeeded. */
    virtual std::optional<SystemError> connect() = 0;
    virtual std::optional<SystemError> openService() = 0;
    virtual std::optional<SystemError> queryStatus() = 0;
    /** Runs the action's command with an administrator's rights, and waits for its end. */
    virtual void run(Action action) = 0;
};

/** The one of this system. */
std::unique_ptr<ServiceManager> systemServiceManager();

/**
 * Runs an action in whatever state the service is, after a look whether there is one.
 * @return why no command was run, as a line for the log; empty when one was
 */
std::string runAction(ServiceManager& manager, Action action);

} // namespace trovek::service
