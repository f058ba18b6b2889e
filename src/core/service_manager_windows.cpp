#include "core/service_manager_windows.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <shellapi.h>

namespace trovek::service {

const wchar_t kServiceName[] = L"Orvane Trovek Service";

namespace {

std::string toUtf8(const wchar_t* text, int length)
{
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, length, &bytes[0], size, nullptr, nullptr);
    return bytes;
}

/** The error of the calling thread's last call. */
SystemError lastError()
{
    const DWORD code = GetLastError();
    wchar_t text[1024];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, code, 0, text, 1024, nullptr);
    // The system ends its texts with a line break.
    while (length > 0 &&
           (text[length - 1] == L'\n' || text[length - 1] == L'\r' || text[length - 1] == L' '))
        --length;
    return {code, toUtf8(text, static_cast<int>(length))};
}

void close(void* handle)
{
    if (handle)
        CloseServiceHandle(static_cast<SC_HANDLE>(handle));
}

} // namespace

// The pauses give the service time to change its state before the host looks again.
const wchar_t* commandLine(Action action)
{
    switch (action) {
    case Action::Start:
        return L"/C \"NET START \"ORVANE TROVEK SERVICE\" & SLEEP 3\"";
    case Action::Stop:
        return L"/C \"NET STOP \"ORVANE TROVEK SERVICE\" & SLEEP 3\"";
    case Action::Restart:
        break;
    }
    return L"/C \"NET STOP \"ORVANE TROVEK SERVICE\" & SLEEP 1 & "
           L"NET START \"ORVANE TROVEK SERVICE\" & SLEEP 2\"";
}

WindowsServiceManager::~WindowsServiceManager()
{
    close(m_service);
    close(m_manager);
}

std::optional<SystemError> WindowsServiceManager::connect()
{
    m_manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
    if (!m_manager)
        return lastError();
    return std::nullopt;
}

std::optional<SystemError> WindowsServiceManager::openService()
{
    m_service = OpenServiceW(static_cast<SC_HANDLE>(m_manager), kServiceName, SERVICE_QUERY_STATUS);
    if (!m_service)
        return lastError();
    return std::nullopt;
}

std::optional<SystemError> WindowsServiceManager::queryStatus()
{
    SERVICE_STATUS status;
    if (!QueryServiceStatus(static_cast<SC_HANDLE>(m_service), &status))
        return lastError();
    return std::nullopt;
}

void WindowsServiceManager::run(Action action)
{
    SHELLEXECUTEINFOW info = {};
    info.cbSize = sizeof info;
    info.fMask = SEE_MASK_NOCLOSEPROCESS;
    // Elevation: the system asks the user for an administrator's rights.
    info.lpVerb = L"runas";
    info.lpFile = L"CMD";
    info.lpParameters = commandLine(action);
    info.nShow = SW_HIDE;
    if (!ShellExecuteExW(&info) || !info.hProcess)
        return;
    WaitForSingleObject(info.hProcess, kCommandWaitMs);
    CloseHandle(info.hProcess);
}

std::unique_ptr<ServiceManager> systemServiceManager()
{
    return std::make_unique<WindowsServiceManager>();
}

} // namespace trovek::service
