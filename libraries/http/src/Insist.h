#pragma once

#include <chrono>
#include <new>
#include <thread>

namespace hv::internal {

/**
 * Starts an operation that the server can't do without. Tries again, with pauses, as long as there is no
 * memory for it.
 */
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
