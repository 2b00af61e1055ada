#include "platform/StandardStreams.h"

#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

void PrepareStandardStreams() {
    int opened = 0;
    do {
        opened = open("/dev/null", O_RDWR);  // takes the lowest number that is free
    } while (opened >= 0 && opened <= STDERR_FILENO);
    if (opened >= 0) {
        close(opened);
    }
}

bool WriteStandardOutput(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {  // somebody has made it a stream that doesn't wait
            pollfd entry{STDOUT_FILENO, POLLOUT, 0};
            poll(&entry, 1, -1);
        } else if (errno != EINTR) {
            return errno == EBADF;
        }
    }
    return true;
}

bool IsStandardOutputFile() {
    struct stat status {};
    return fstat(STDOUT_FILENO, &status) == 0 && S_ISREG(status.st_mode);
}
