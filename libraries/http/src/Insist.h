#pragma once

#include <chrono>
#include <new>
#include <thread>

namespace hv::internal {

/** Starts an operation that the server can't go on without: while the memory for it is missing, again. */
template <typename Start>
void Insist(Start start) {
    constexpr std::chrono::milliseconds pause{10};
    for (;;) {
        try {
            start();
            return;
        } catch (const std::bad_alloc&) {
            std::this_thread::sleep_for(pause);
        }
    }
}

}  // namespace hv::internal
