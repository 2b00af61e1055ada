#include "libraries/log/StandardError.h"

#include <algorithm>
#include <climits>

#include <poll.h>
#include <unistd.h>

namespace RavLog {

namespace {

constexpr int kPatience = 100;  // milliseconds

}  // namespace

void WriteToStandardError(std::string_view text) {
    while (!text.empty()) {
        pollfd entry{STDERR_FILENO, POLLOUT, 0};
        if (::poll(&entry, 1, kPatience) != 1 || (entry.revents & POLLOUT) == 0) {
            return;
        }
        // A pipe that is ready takes this much without waiting (POSIX, PIPE_BUF).
        const ssize_t written =
            ::write(STDERR_FILENO, text.data(), std::min<std::size_t>(text.size(), PIPE_BUF));
        if (written <= 0) {
            return;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace RavLog
