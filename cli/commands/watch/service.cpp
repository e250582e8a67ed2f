/* service.cpp - one datagram a message. */
#include "commands/watch/service.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace cli {

void notifyService(const std::string& state) {
    const char* name = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address = {};
    if (name == nullptr || (*name != '/' && *name != '@') ||
        std::strlen(name) >= sizeof address.sun_path) {
        return;
    }
    address.sun_family = AF_UNIX;
    const std::size_t length = std::strlen(name);
    std::memcpy(address.sun_path, name, length);
    if (*name == '@') {
        address.sun_path[0] = '\0';  // a name outside the file system
    }
    const int end = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (end < 0) {
        return;
    }
    (void)sendto(end, state.data(), state.size(), MSG_NOSIGNAL,
                 reinterpret_cast<const sockaddr*>(&address),
                 static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length));
    close(end);
}

}  // namespace cli
