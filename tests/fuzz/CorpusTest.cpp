// Gives every fuzz target its seeds, without a fuzzer. CorpusTest FOLDER
#include "simulation/TemporaryFolder.h"
#include "tests/fuzz/FuzzTarget.h"

#include <filesystem>
#include <iostream>
#include <map>

namespace {

namespace fs = std::filesystem;

std::map<std::string, FuzzTarget>& Targets() {
    static std::map<std::string, FuzzTarget> targets;
    return targets;
}

}  // namespace

bool RegisterFuzzTarget(const char* name, FuzzTarget target) {
    return Targets().emplace(name, target).second;
}

int main(int /*count*/, char** arguments) {
    for (const auto& [name, target] : Targets()) {
        int seeds = 0;
        for (const auto& entry : fs::directory_iterator(fs::path(arguments[1]) / name)) {
            std::cout << name << ": " << entry.path().filename().string()
                      << std::endl;  // before it can crash
            target(simulation::ReadFile(entry.path()));
            ++seeds;
        }
        if (seeds == 0) {
            return 1;
        }
    }
    return Targets().empty() ? 1 : 0;
}
