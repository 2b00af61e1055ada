#include "platform/MemoryReserve.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

// Only address space until it is used. The JSON library needs 16 bytes for each value when it destroys many.
constexpr std::size_t kSize = std::size_t{64} << 20;

std::atomic<void*> g_block = nullptr;

[[noreturn]] void GiveUpReserve() {
    std::free(g_block.exchange(nullptr));  // NOLINT(cppcoreguidelines-no-malloc)
    throw std::bad_alloc();
}

}  // namespace

void KeepMemoryReserve() noexcept {
    if (g_block.load() == nullptr) {
        void* made = std::malloc(kSize);  // NOLINT(cppcoreguidelines-no-malloc)
        void* none = nullptr;
        if (!g_block.compare_exchange_strong(none, made)) {
            std::free(made);  // NOLINT(cppcoreguidelines-no-malloc)
        }
    }
    std::set_new_handler(GiveUpReserve);
}
