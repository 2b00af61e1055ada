#include "simulation/TemporaryFolder.h"

#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace simulation {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    std::random_device random;
    do {
        m_path = fs::temp_directory_path() / ("server-test-" + std::to_string(random()));
    } while (!fs::create_directory(m_path));
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;  // a file that stays behind fails no test
    fs::remove_all(m_path, ignored);
}

namespace {

std::string ReadAll(std::ifstream file) {
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

std::string ReadFile(const fs::path& path) {
    return ReadAll(std::ifstream(path, std::ios::binary));
}

std::string ReadTextFile(const fs::path& path) {
    return ReadAll(std::ifstream(path));
}

void WriteFile(const fs::path& path, std::string_view content) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

}  // namespace simulation
