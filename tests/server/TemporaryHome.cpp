// Gives the test program a home folder of its own, before anything reads the configuration.

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace {

class TemporaryHome : public testing::Environment {
  public:
    TemporaryHome() {
        std::string pattern = (std::filesystem::temp_directory_path() / "server-tests-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
        setenv("HOME", m_path.c_str(), 1);
        unsetenv("XDG_CONFIG_HOME");
    }
    ~TemporaryHome() override { std::filesystem::remove_all(m_path); }

    TemporaryHome(const TemporaryHome&) = delete;
    TemporaryHome& operator=(const TemporaryHome&) = delete;

  private:
    std::filesystem::path m_path;
};

const testing::Environment* const g_home = testing::AddGlobalTestEnvironment(new TemporaryHome);

}  // namespace
