// The estimate of what a JSON text becomes, against what it takes; and the end of a document.
#include "config/JsonMemory.h"
#include "config/JsonRelease.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

namespace {

std::atomic<std::size_t> g_held = 0;
std::atomic<std::size_t> g_peak = 0;
constexpr std::size_t kFront = 16;  // of each block; holds its size
std::atomic<bool> g_refuses = false;

std::string Repeated(const std::string& part, int count, const std::string& end = "") {
    std::string text = "[";
    for (int i = 0; i < count; ++i) {
        text += part;
    }
    return text + end + "]";
}

}  // namespace

void* operator new(std::size_t size) {
    const std::size_t taken = (size + 8 + 15) / 16 * 16;  // with what the allocator needs beside it
    auto* made = g_refuses ? nullptr : static_cast<char*>(std::malloc(size + kFront));
    if (made == nullptr) {
        throw std::bad_alloc();
    }
    *reinterpret_cast<std::size_t*>(made) = taken;
    g_held += taken;
    g_peak = std::max<std::size_t>(g_peak, g_held);
    return made + kFront;
}

void operator delete(void* block) noexcept {
    if (block != nullptr) {
        char* made = static_cast<char*>(block) - kFront;
        g_held -= *reinterpret_cast<std::size_t*>(made);
        std::free(made);
    }
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
    operator delete(block);
}

namespace {

TEST(JsonMemory, IsEstimatedBeforeItIsTaken) {
    const std::string deep = std::string(250, '[') + Repeated("1,", 10000, "1") + std::string(250, ']');
    const struct {
        const char* name;
        std::string text;
        double most;  // times what it takes in truth
    } rows[] = {
        {"empty arrays", Repeated("[],", 10000, "1"), 2},
        {"empty keys", Repeated(R"({"":0},)", 10000, "1"), 2},
        {"numbers", Repeated("1,", 30000, "1"), 3},
        {"short texts", Repeated(R"("a",)", 10000, "1"), 2},
        {"a long text", "[\"" + std::string(100000, 't') + "\"]", 4},
        {"components",
         Repeated(R"({"id":123456,"x":10.5,"name":"abc","style":{"color":"#ffffff"}},)", 2000, "1"), 2},
        {"numbers that stand deep", deep, 3},
    };
    for (const auto& row : rows) {
        const std::uint64_t estimate = EstimateJsonMemory(row.text);
        const std::size_t before = g_held;
        g_peak = before;
        nlohmann::json parsed = nlohmann::json::parse(row.text);
        // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): a save has one
        const nlohmann::json saved = parsed;
        const std::string text = saved.dump(4);
        const auto peak = static_cast<double>(g_peak - before);
        EXPECT_GE(static_cast<double>(estimate), peak) << row.name;
        EXPECT_LT(static_cast<double>(estimate), row.most * peak) << row.name;
    }
}

TEST(JsonRelease, NeedsNoMemory) {
    const std::string text =
        Repeated(R"({"a":[1,"a long text, too long for its place",[[]]],"b":{}},)", 100, "{}");
    nlohmann::json value = nlohmann::json::parse(text);
    g_refuses = true;
    ReleaseJson(value);
    g_refuses = false;
    EXPECT_TRUE(value.is_null());
}

}  // namespace
