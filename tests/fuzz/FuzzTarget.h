#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

/**
 * FUZZ_TARGET(name) { ... } is one fuzz target: it gets any bytes, as the string_view "bytes", and ends the
 * process when the code under test does something wrong. Its seeds are in corpus/<name>. With clang it
 * becomes a program of its own, <name>_fuzz; otherwise CorpusTest.cpp passes the seeds to it.
 */
#if defined(SERVER_FUZZER)
#define FUZZ_TARGET(name)                                                               \
    static void name##Target(std::string_view bytes);                                   \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) { \
        name##Target({reinterpret_cast<const char*>(data), size});                      \
        return 0;                                                                       \
    }                                                                                   \
    static void name##Target(std::string_view bytes)
#else
using FuzzTarget = void (*)(std::string_view);

/** Registers a target for the corpus test. */
bool RegisterFuzzTarget(const char* name, FuzzTarget target);

#define FUZZ_TARGET(name)                                                            \
    static void name##Target(std::string_view bytes);                                \
    static const bool name##IsRegistered = RegisterFuzzTarget(#name, &name##Target); \
    static void name##Target(std::string_view bytes)
#endif

/** Ends the process unless the condition holds. */
inline void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}
