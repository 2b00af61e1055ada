// What the document store costs: parsing, the nesting scan, copies, serialising, and the command map.

#include "config/JsonDepth.h"
#include "simulation/Browser.h"
#include "userdata/CommandMap.h"
#include "userdata/UserData.h"

#include <cstdlib>

#include <benchmark/benchmark.h>

namespace {

using nlohmann::json;

constexpr int kComponents = 5000;
constexpr int kCommandsEach = 4;  // 20,000 commands in all

/** The store with an empty home folder, without the process-wide object. */
class Store : public CUserData {};

Store* g_store = nullptr;

const json& Interactions() {
    static const json document = [] {
        std::vector<simulation::Command> commands;
        commands.reserve(kComponents * kCommandsEach);
        for (int id = 0; id < kComponents * kCommandsEach; ++id) {
            commands.push_back({id / kCommandsEach, "click", 1 + id % 50, true, "Set " + std::to_string(id),
                                "SET " + std::to_string(id) + "\r\n", 0});
        }
        return simulation::Browser::Interactions(commands);
    }();
    return document;
}

/** A layout of about 10 MB. */
const json& Layout() {
    static const json document = [] {
        json components = json::array();
        for (int id = 0; id < 66000; ++id) {
            components.push_back(
                {{"componentId", id},
                 {"title", "Button " + std::to_string(id)},
                 {"style", {{"color", "#20a0ff"}, {"fontSize", 14}, {"opacity", 0.85}}},
                 {"rect", {{"x", id % 1920}, {"y", id % 1080}, {"width", 120.5}, {"height", 48}}}});
        }
        return json{{"components", std::move(components)}};
    }();
    return document;
}

void CommandMapOf20000(benchmark::State& state) {
    const json& document = Interactions().at("componentInteractionInfo");
    while (state.KeepRunning()) {
        CmdMap map;
        BuildCmdMap(document, map);
        benchmark::DoNotOptimize(map);
    }
}

void GetCommands(benchmark::State& state) {
    g_store->SetComponentConfig(Interactions());
    std::int32_t id = 0;
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(g_store->GetCommands(id++ % kComponents, "click"));
    }
}

void DepthScanOf10MB(benchmark::State& state) {
    const std::string text = Layout().dump();
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(IsNestedTooDeep(text));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void ParseOf10MB(benchmark::State& state) {
    const std::string text = Layout().dump();
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(json::parse(text));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void CopyOf10MB(benchmark::State& state) {
    while (state.KeepRunning()) {
        json copy = Layout();
        benchmark::DoNotOptimize(copy);
    }
}

void SerialisingOf10MB(benchmark::State& state) {
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(Layout().dump());
    }
}

BENCHMARK(CommandMapOf20000)->Unit(benchmark::kMillisecond);
BENCHMARK(GetCommands);
BENCHMARK(DepthScanOf10MB)->Unit(benchmark::kMillisecond);
BENCHMARK(ParseOf10MB)->Unit(benchmark::kMillisecond);
BENCHMARK(CopyOf10MB)->Unit(benchmark::kMillisecond);
BENCHMARK(SerialisingOf10MB)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int count, char** arguments) {
    const simulation::TemporaryFolder home;  // the store takes its files from there and saves to it
    setenv("HOME", home.Path().c_str(), 1);
    Store store;
    g_store = &store;
    benchmark::Initialize(&count, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
