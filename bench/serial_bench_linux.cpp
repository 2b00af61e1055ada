// What a request for the serial ports costs, with 32 converters plugged in, and the look-up before each
// command.

#include "platform/SerialDevices.h"
#include "platform/SerialNames.h"
#include "simulation/DeviceTree.h"

#include <benchmark/benchmark.h>

namespace {

constexpr int kPorts = 32;

/** A machine with so many ports that have their names already. */
struct Machine {
    Machine() {
        for (int port = 0; port < kPorts; ++port) {
            tree.Plug({"1-" + std::to_string(port + 1), "S" + std::to_string(port)},
                      "ttyUSB" + std::to_string(port));
        }
        SetSerialNameTable(folder.Path() / "SerialPorts.json");
    }
    ~Machine() { SetSerialNameTable(""); }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    simulation::TemporaryFolder folder;
    simulation::DeviceTree tree;
};

void DiscoveryWith32Ports(benchmark::State& state) {
    const Machine machine;
    while (state.KeepRunning()) {
        if (ListSerialDevices().size() != kPorts) {
            state.SkipWithError("not all ports were found");
        }
    }
}
BENCHMARK(DiscoveryWith32Ports)->Unit(benchmark::kMillisecond);

void LookUpOfOneNameOf32(benchmark::State& state) {
    const Machine machine;
    ListSerialDevices();
    while (state.KeepRunning()) {
        if (FindSerialDevice("COM20").empty()) {
            state.SkipWithError("the port was not found");
        }
    }
}
BENCHMARK(LookUpOfOneNameOf32)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
