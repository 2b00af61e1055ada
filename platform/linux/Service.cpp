#include "platform/Service.h"

// systemd runs the program as it is.
int HandleServiceCommand(std::string_view /*verb*/, const std::function<int()>& /*run*/) {
    return 2;
}
