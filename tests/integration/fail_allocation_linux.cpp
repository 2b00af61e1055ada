/**
 * Preloaded into the host: makes some C++ allocations in a row fail, of whatever threads, as the file says
 * that FAIL_ALLOCATION names. Those of the destructor of the JSON library are passed over: it takes memory
 * and can't fail.
 */
#include "tests/integration/FailingAllocations.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace {

SFailingAllocations* g_control = nullptr;

using Main = int (*)(int, char**, char**);
using LibcStartMain = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);

Main g_main = nullptr;

int RunMain(int count, char** arguments, char** environment) {
    const int handle = open(std::getenv("FAIL_ALLOCATION"), O_RDWR | O_CLOEXEC);
    void* memory = mmap(nullptr, sizeof(SFailingAllocations), PROT_READ | PROT_WRITE, MAP_SHARED, handle, 0);
    close(handle);
    g_control = static_cast<SFailingAllocations*>(memory);
    g_control->left = g_control->leftAtMain.load();
    return g_main(count, arguments, environment);
}

bool IsSpared() {
    std::array<void*, 12> frames{};
    const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
    for (int i = 0; i < count; ++i) {
        Dl_info module{};
        void* frame = frames[static_cast<std::size_t>(i)];
        if (dladdr(frame, &module) == 0 || std::strstr(module.dli_fname, "libServer") == nullptr) {
            continue;
        }
        const auto offset = static_cast<char*>(frame) - static_cast<char*>(module.dli_fbase);
        for (const auto& [begin, end] : g_control->spared) {
            if (begin < offset && offset < end) {
                return true;
            }
        }
    }
    return false;
}

bool IsFailing() {
    if (g_control == nullptr || g_control->left.load() <= -g_control->count.load()) {
        return false;
    }
    const std::int64_t left = g_control->left.fetch_sub(1);
    if (left > 0 || left <= -g_control->count.load()) {
        return false;
    }
    g_control->reached = 1;
    return !IsSpared();
}

}  // namespace

// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the C library's
extern "C" __attribute__((visibility("default"))) int __libc_start_main(Main main, int count,
                                                                        char** arguments, void (*init)(),
                                                                        void (*finish)(),
                                                                        void (*finishLoader)(), void* stack) {
    g_main = main;
    const auto next = reinterpret_cast<LibcStartMain>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return next(RunMain, count, arguments, init, finish, finishLoader, stack);
}

__attribute__((visibility("default"))) void* operator new(std::size_t size) {
    void* memory = IsFailing() ? nullptr : std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

__attribute__((visibility("default"))) void operator delete(void* memory) noexcept {
    std::free(memory);
}

__attribute__((visibility("default"))) void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
