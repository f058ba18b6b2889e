// Runs on Windows, or under Wine, and without Qt: run.sh builds it.

#include "core/service_manager_windows.h"

#include <cstdio>
#include <cwchar>
#include <string>

using namespace trovek::service;

namespace {

int failures = 0;

void check(bool condition, const char* what, const std::string& seen = std::string())
{
    if (condition)
        return;
    ++failures;
    std::printf("FAIL: %s: %s\n", what, seen.c_str());
}

bool equal(const wchar_t* left, const wchar_t* right)
{
    return std::wcscmp(left, right) == 0;
}

void commandLinesAreThose()
{
    check(equal(kServiceName, L"Orvane Trovek Service"), "the service's name");
    check(
        equal(commandLine(Action::Start), L"/C \"NET START \"ORVANE TROVEK SERVICE\" & SLEEP 3\""),
        "the command to start");
    check(equal(commandLine(Action::Stop), L"/C \"NET STOP \"ORVANE TROVEK SERVICE\" & SLEEP 3\""),
          "the command to stop");
    check(equal(commandLine(Action::Restart),
                L"/C \"NET STOP \"ORVANE TROVEK SERVICE\" & SLEEP 1 & NET START \"ORVANE TROVEK "
                L"SERVICE\" & SLEEP 2\""),
          "the command to restart");
    check(kCommandWaitMs == 10000, "the wait for the command");
}

/** The real manager of this system, with every command counted instead of run. */
class CountingManager : public WindowsServiceManager
{
public:
    void run(Action) override { ++commands; }
    int commands = 0;
};

void missingServiceIsError1060()
{
    CountingManager manager;
    check(!manager.connect(), "the Service Control Manager answers");
    const auto error = manager.openService();
    check(error.has_value(), "there is no such service");
    if (!error)
        return;
    check(error->code == 1060, "the code of a service that does not exist",
          std::to_string(error->code));
    check(!error->text.empty() && error->text.find_first_of("\r\n") == std::string::npos,
          "the system's text in one line", error->text);
    std::printf("system error %lu: %s\n", error->code, error->text.c_str());
}

void missingServiceRunsNoCommand()
{
    for (const Action action : {Action::Start, Action::Stop, Action::Restart}) {
        CountingManager manager;
        const std::string line = runAction(manager, action);
        const std::string start = "Error connecting to background service. Code: 1060 Message: ";
        check(line.compare(0, start.size(), start) == 0 && line.size() > start.size(),
              "the line for the log", line);
        check(manager.commands == 0, "no command is run");
    }
}

void closedHandleIsAnError()
{
    // Asked without having been opened: the system refuses the handle.
    WindowsServiceManager manager;
    const auto error = manager.queryStatus();
    check(error && error->code == 6, "a query without a service",
          error ? std::to_string(error->code) : "succeeded");
}

} // namespace

int main()
{
    commandLinesAreThose();
    missingServiceIsError1060();
    missingServiceRunsNoCommand();
    closedHandleIsAnError();
    std::printf("%s\n", failures == 0 ? "all passed" : "failed");
    return failures == 0 ? 0 : 1;
}
