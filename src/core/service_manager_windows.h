#pragma once

#include "core/service_manager.h"

namespace trovek::service {

/** The name by which the Service Control Manager knows the service. */
extern const wchar_t kServiceName[];

/** What is run for the action, as arguments of the command interpreter. */
const wchar_t* commandLine(Action action);

/** The Service Control Manager of this computer. */
class WindowsServiceManager : public ServiceManager
{
public:
    WindowsServiceManager() = default;
    WindowsServiceManager(const WindowsServiceManager&) = delete;
    WindowsServiceManager& operator=(const WindowsServiceManager&) = delete;
    ~WindowsServiceManager() override;

    std::optional<SystemError> connect() override;
    std::optional<SystemError> openService() override;
    std::optional<SystemError> queryStatus() override;
    void run(Action action) override;

private:
    // SC_HANDLE, which only the system's header knows.
    void* m_manager = nullptr;
    void* m_service = nullptr;
};

} // namespace trovek::service
