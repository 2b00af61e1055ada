#include "server/LogText.h"
#include "simulation/Machine.h"
#include "simulation/TemporaryFolder.h"
#include "simulation/Wait.h"

#include <fstream>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

/** The text with "#" for each run of digits. */
std::string ShortDigits(const std::string& text) {
    std::string shortened;
    for (const char c : text) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit) {
            shortened += c;
        } else if (!shortened.ends_with('#')) {
            shortened += '#';
        }
    }
    return shortened;
}

class LogFiles : public testing::Test {
  protected:
    ~LogFiles() override {
        RavLog::StopLogs();
        RavLog::StartLogs("", "info");  // lets go of the files
        RavLog::StopLogs();
    }

    void Start(const char* threshold = "info") const {
        ASSERT_EQ(RavLog::StartLogs(m_folder.string(), threshold), "");
    }
    std::string Read(const std::string& name) const { return simulation::ReadTextFile(m_folder / name); }
    bool WaitFor(const std::string& text) const {
        const auto log = m_folder / "System.log";
        return simulation::WaitUntil(
            [&] { return simulation::ReadFile(log).find(text) != std::string::npos; });
    }

    const simulation::TemporaryFolder m_temporary;
    const std::filesystem::path m_folder = m_temporary.Path() / "Log";
};

TEST_F(LogFiles, RecordsByThreshold) {
    WriteRootLog(RavLog::Error, "Before", "nobody listens");
    Start("warn");
    WriteRootLog(RavLog::Info, "A::B", "below");
    WriteRootLog(RavLog::Error, "A::B", "[100%s] ");
    WriteOperationLog("10.0.0.551234", "/a%20b", "[20000] [] ");
    WriteOperationLog(
        "", "",
        "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80 \xFF\xC3|\xC0\xAF|\xED\xA0\x80|\xE2\x82|\xF4\x90\x80\x80");
    RavLog::StopLogs();
    WriteRootLog(RavLog::Error, "After", "nobody listens");

    EXPECT_EQ(ShortDigits(Read("Server.log")), "#-#-# #:#:#[LogRoot][Error][#][A::B][] [#%s] \n");
    EXPECT_EQ(ShortDigits(Read("Operation.log")),
              "#-#-# #:#:#[LogOperation][Unknow][#][#.#.#.#][/a%#b] [#] [] \n"
              "#-#-# #:#:#[LogOperation][Unknow][#][][] \u00E4\u20AC\U0001F600 "
              "\\xFF\\xC#|\\xC#\\xAF|\\xED\\xA#\\x#|\\xE#\\x#|"
              "\\xF#\\x#\\x#\\x#\n");
}

TEST_F(LogFiles, AllRecordsOfAllThreadsAreKeptInWholeLines) {
    Start();
    constexpr int kRecords = 20000;
    std::vector<std::jthread> threads(4);
    for (std::jthread& thread : threads) {
        thread = std::jthread([] {
            for (int i = 0; i < kRecords; ++i) {
                WriteOperationLog("client", "/path", "[20000] [] ");
            }
        });
    }
    threads.clear();
    RavLog::StopLogs();
    int lines = 0;
    for (const char* name : {"Operation.log", "Operation.1.log"}) {
        std::istringstream text(Read(name));
        EXPECT_LT(text.str().size(), 11U << 20U);
        for (std::string line; std::getline(text, line); ++lines) {
            ASSERT_TRUE(line.ends_with("[client][/path] [20000] [] ")) << line;
        }
    }
    EXPECT_EQ(lines, 4 * kRecords);
}

TEST_F(LogFiles, FileThatCantBeRenamedGrowsOn) {
    const std::string before = std::string(10U << 20U, 'x') + "\nwritten before\n";
    simulation::WriteFile(m_folder / "System.log", before);
    const std::ifstream viewer(m_folder / "System.log");  // forbids to rename the file on Windows
    for (int number = 1; simulation::Differences::kRemovesOpenFiles && number <= 4; ++number) {
        std::filesystem::create_directories(m_folder / ("System." + std::to_string(number) + ".log") / "x");
    }
    Start();
    RavLog::WriteSystemLog(RavLog::Info, "test", "written after");
    EXPECT_TRUE(WaitFor("grows on until it can be renamed"));
    RavLog::StopLogs();
    EXPECT_TRUE(simulation::ReadFile(m_folder / "System.log").starts_with(before))
        << "the file was begun anew";
    EXPECT_TRUE(WaitFor("written after"));
}

TEST_F(LogFiles, LogThatWasDeletedIsBegunAnew) {
    if (!simulation::Differences::kRemovesOpenFiles) {
        GTEST_SKIP() << "a file that is open can't be deleted";
    }
    Start();
    RavLog::WriteSystemLog(RavLog::Error, "test", "deleted");
    ASSERT_TRUE(WaitFor("deleted"));
    std::filesystem::remove_all(m_folder);
    RavLog::WriteSystemLog(RavLog::Error, "test", "kept");
    RavLog::StopLogs();
    EXPECT_THAT(Read("System.log"), testing::HasSubstr("kept"));
}

TEST_F(LogFiles, AFullDiskLosesRecordsAndSaysSo) {
    std::filesystem::create_directory(m_folder);
    if (!simulation::MakeLink(simulation::FullDisk(), m_folder / "Server.log")) {
        GTEST_SKIP() << "no disk of this system can be made full";
    }
    Start();
    WriteRootLog(RavLog::Info, "Full", "lost");
    RavLog::StopLogs();
    std::filesystem::remove(m_folder / "Server.log");
    Start();
    WriteRootLog(RavLog::Info, "Free", "kept");
    RavLog::StopLogs();
    EXPECT_THAT(Read("Server.log"), testing::StartsWith("1 records were lost here"));
    EXPECT_THAT(Read("Server.log"), testing::HasSubstr("kept"));
}

}  // namespace
