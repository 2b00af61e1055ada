#include "simulation/OutputPipe.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <poll.h>
#include <unistd.h>

namespace simulation {

OutputPipe::OutputPipe() {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    m_before = dup(STDOUT_FILENO);
    m_reader = ends[0];
    dup2(ends[1], STDOUT_FILENO);
    close(ends[1]);
}

OutputPipe::~OutputPipe() {
    dup2(m_before, STDOUT_FILENO);
    close(m_before);
    EndReading();
}

std::string OutputPipe::Read() {
    pollfd entry{m_reader, POLLIN, 0};
    std::string text(65536, '\0');
    if (poll(&entry, 1, 100) != 1) {
        return {};
    }
    const ssize_t size = read(m_reader, text.data(), text.size());
    text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return text;
}

void OutputPipe::EndReading() {
    std::signal(SIGPIPE, SIG_IGN);
    if (m_reader >= 0) {
        close(std::exchange(m_reader, -1));
    }
}

void OutputPipe::CloseOutput() {
    close(STDOUT_FILENO);
}

}  // namespace simulation
