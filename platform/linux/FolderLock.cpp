#include "platform/FolderLock.h"

#include <array>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

void Close(int file) {
    if (file >= 0) {
        close(file);
    }
}

/** The number that the holder has written; empty when there is none. */
std::string ReadNumber(int file) {
    std::array<char, 20> text{};
    const ssize_t size = pread(file, text.data(), text.size(), 0);
    std::string number;
    for (ssize_t i = 0; i < size && std::isdigit(static_cast<unsigned char>(text.at(i))) != 0; ++i) {
        number += text.at(i);
    }
    return number;
}

/** For a message only: if it can't be written, the number is unknown. */
void WriteNumber(const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    const std::string text = std::to_string(getpid()) + "\n";
    if (file >= 0 && write(file, text.data(), text.size()) < 0) {
        static_cast<void>(ftruncate(file, 0));
    }
    Close(file);
}

/** Takes the lock of an open file without waiting. @return 0 or errno */
int Lock(int file) {
    while (flock(file, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

}  // namespace

CFolderLock::CFolderLock(const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        m_problem = error.message();
    } else {
        Take((std::filesystem::path(folder) / "Server.lock").string());
    }
}

void CFolderLock::Take(const std::string& path) {
    int made = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    const int unmade = errno;
    // Held for reading, so that the disk can still be made read-only.
    int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        m_problem = std::generic_category().message(made < 0 ? unmade : errno);
        Close(made);
        return;
    }
    int error = Lock(file);
    if (error == EBADF && made >= 0) {
        std::swap(file, made);  // some network file systems lock only files that are open for writing
        error = Lock(file);
    }
    Close(made);
    if (error == 0) {
        WriteNumber(path);
        m_state = EnState::Held;
        m_file = file;
        return;
    }
    if (error == EWOULDBLOCK || error == EACCES) {  // the latter from file systems of other machines
        m_state = EnState::Taken;
        m_owner = ReadNumber(file);
    } else {
        m_problem = std::generic_category().message(error);
    }
    Close(file);
}

CFolderLock::~CFolderLock() {
    Close(static_cast<int>(m_file));
}
