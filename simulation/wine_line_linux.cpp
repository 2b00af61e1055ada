// Holds a serial line for a test that runs under Wine: a pty pair whose one end Wine's COM port leads to, and
// whose other end is read into a file. What is added to the file RECORD-FILE.answers is sent from there. It
// ends when the record file is removed.
//   wine_line RECORD-FILE LINK

#include <array>
#include <cstdio>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

int main(int argc, char* argv[]) {
    if (argc != 3) {
        return 2;
    }
    const std::string next = std::string(argv[2]) + ".next";
    std::array<char, 64> name{};
    int other = -1;
    int device = -1;  // stays open, so that the pair outlives each opening by the server
    const int record = open(argv[1], O_WRONLY | O_APPEND | O_CLOEXEC);
    const int answers = open((std::string(argv[1]) + ".answers").c_str(), O_RDONLY | O_CLOEXEC);
    if (record < 0 || answers < 0 || openpty(&other, &device, name.data(), nullptr, nullptr) != 0) {
        return 1;
    }
    unlink(next.c_str());
    if (symlink(name.data(), next.c_str()) != 0 || std::rename(next.c_str(), argv[2]) != 0) {
        return 1;
    }
    std::array<char, 4096> bytes{};
    while (access(argv[1], F_OK) == 0) {
        pollfd entry{other, POLLIN, 0};
        if (poll(&entry, 1, 5) > 0) {
            const ssize_t size = read(other, bytes.data(), bytes.size());
            if (size > 0 && write(record, bytes.data(), static_cast<size_t>(size)) != size) {
                break;
            }
        }
        const ssize_t size = read(answers, bytes.data(), bytes.size());
        if (size > 0 && write(other, bytes.data(), static_cast<size_t>(size)) != size) {
            break;
        }
    }
    unlink(argv[2]);
    return 0;
}
