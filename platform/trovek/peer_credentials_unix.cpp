#include "trovek/peer_credentials.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

namespace trovek {

bool peerIsSameUser(qintptr socketDescriptor)
{
    const int descriptor = static_cast<int>(socketDescriptor);
#ifdef SO_PEERCRED
    ucred credentials = {};
    socklen_t size = sizeof(credentials);
    return ::getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0 &&
           credentials.uid == ::geteuid();
#else
    uid_t user = 0;
    gid_t group = 0;
    return ::getpeereid(descriptor, &user, &group) == 0 && user == ::geteuid();
#endif
}

void checkSocketFolder(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "."
                               : slash == 0               ? "/"
                                                          : path.substr(0, slash);
    struct stat status = {};
    if (::stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
        throw std::runtime_error("No folder for the service's socket: " + folder);
    const bool ownerIsTrusted = status.st_uid == ::geteuid() || status.st_uid == 0;
    if (!ownerIsTrusted || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0)
        throw std::runtime_error("Others can write the folder of the service's socket: " + folder);
}

} // namespace trovek
