// What sockets have in common on all systems.
#include "simulation/Socket.h"

#include <random>
#include <system_error>
#include <utility>

namespace simulation {

Socket::Socket(Socket&& other) noexcept : m_handle(std::exchange(other.m_handle, -1)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
    std::swap(m_handle, other.m_handle);
    return *this;
}

int FreePort() {
    static std::mt19937 random{std::random_device{}()};
    while (true) {
        const int port = std::uniform_int_distribution<int>(15000, 32000)(random);
        try {
            Socket::Listen(port, 1, "0.0.0.0");
            return port;
        } catch (const std::system_error&) {  // taken: the next one
        }
    }
}

}  // namespace simulation
