#include "trovek/peer_credentials.h"

#include <memory>
#include <vector>

#include <windows.h>

namespace trovek {

namespace {

struct HandleCloser
{
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

/** The buffer starts with a TOKEN_USER; empty when the process may not be asked. */
std::vector<char> userOfProcess(HANDLE process)
{
    HANDLE opened = nullptr;
    if (!process || !::OpenProcessToken(process, TOKEN_QUERY, &opened))
        return {};
    const Handle token(opened);
    DWORD size = 0;
    ::GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<char> user(size);
    if (size == 0 || !::GetTokenInformation(token.get(), TokenUser, user.data(), size, &size))
        return {};
    return user;
}

PSID sidOf(std::vector<char>& user)
{
    return reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid;
}

} // namespace

bool peerIsSameUser(qintptr socketDescriptor)
{
    const auto pipe = reinterpret_cast<HANDLE>(socketDescriptor);
    DWORD flags = 0;
    if (!::GetNamedPipeInfo(pipe, &flags, nullptr, nullptr, nullptr))
        return false;
    ULONG id = 0;
    const BOOL known = (flags & PIPE_SERVER_END) ? ::GetNamedPipeClientProcessId(pipe, &id)
                                                 : ::GetNamedPipeServerProcessId(pipe, &id);
    if (!known)
        return false;
    const Handle process(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, id));
    std::vector<char> other = userOfProcess(process.get());
    std::vector<char> own = userOfProcess(::GetCurrentProcess());
    return !other.empty() && !own.empty() && ::EqualSid(sidOf(other), sidOf(own));
}

void checkSocketFolder(const std::string&)
{
    // A named pipe stands in no folder; the check of the other end's user is what protects it.
}

} // namespace trovek
