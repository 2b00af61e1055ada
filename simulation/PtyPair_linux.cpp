#include "simulation/PtyPair.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <poll.h>
#include <pty.h>
#include <unistd.h>

namespace simulation {

PtyPair::PtyPair(const std::filesystem::path& link) : m_link(link) {
    std::array<char, 64> name{};
    if (openpty(&m_other, &m_device, name.data(), nullptr, nullptr) != 0) {
        throw std::system_error(errno, std::generic_category(), "openpty");
    }
    std::filesystem::create_symlink(name.data(), m_link);
    m_thread = std::jthread([this](const std::stop_token& stop) {
        std::array<char, 4096> buffer;
        while (!stop.stop_requested()) {
            pollfd entry{m_other, POLLIN, 0};
            if (poll(&entry, 1, 5) > 0) {
                const ssize_t size = read(m_other, buffer.data(), buffer.size());
                m_received.Add({buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(0, size))});
            }
        }
    });
}

PtyPair::~PtyPair() {
    m_thread.request_stop();
    m_thread.join();
    close(m_other);
    close(m_device);
    std::error_code ignored;  // the folder goes away with the link in any case
    std::filesystem::remove(m_link, ignored);
}

void PtyPair::Send(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t size = write(m_other, bytes.data(), bytes.size());
        if (size < 0) {
            throw std::system_error(errno, std::generic_category(), "write to the serial line");
        }
        bytes.remove_prefix(static_cast<std::size_t>(size));
    }
}

}  // namespace simulation
