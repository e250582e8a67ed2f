/* service.h - messages to the service manager that started the program, if one did. */
#ifndef CLI_COMMANDS_WATCH_SERVICE_H
#define CLI_COMMANDS_WATCH_SERVICE_H

#include <string>

namespace cli {

/* Sends a state such as "READY=1" to the socket that NOTIFY_SOCKET names; nothing without it. */
void notifyService(const std::string& state);

}  // namespace cli

#endif
