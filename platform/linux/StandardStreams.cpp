#include "platform/StandardStreams.h"

#include <climits>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

constexpr int g_patience = 100;  // milliseconds

}  // namespace

// A pipe that is ready takes this much without waiting.
static_assert(g_standardOutputPiece <= PIPE_BUF);

void PrepareStandardStreams() {
    int opened = 0;
    do {
        opened = open("/dev/null", O_RDWR);  // takes the lowest number that is free
    } while (opened >= 0 && opened <= STDERR_FILENO);
    if (opened >= 0) {
        close(opened);
    }
}

bool WaitForStandardOutput() {
    pollfd entry{STDOUT_FILENO, POLLOUT, 0};
    return poll(&entry, 1, g_patience) != 0;
}
