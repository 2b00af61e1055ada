#include "server/LogText.h"
#include "simulation/Machine.h"
#include "simulation/TemporaryFolder.h"
#include "simulation/Wait.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

std::string ReadFile(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

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
    const simulation::TemporaryFolder m_temporary;
    const std::filesystem::path m_folder = m_temporary.Path();
};

TEST_F(LogFiles, RecordsByThreshold) {
    WriteRootLog(RavLog::Error, "Before", "nobody listens");
    ASSERT_EQ(RavLog::StartLogs((m_folder / "new").string(), "warn"), "");
    WriteRootLog(RavLog::Info, "A::B", "below");
    WriteRootLog(RavLog::Error, "A::B", "[100%s] ");
    WriteOperationLog("10.0.0.551234", "/a%20b", "[20000] [] ");
    WriteOperationLog(
        "", "",
        "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80 \xFF\xC3|\xC0\xAF|\xED\xA0\x80|\xE2\x82|\xF4\x90\x80\x80");
    RavLog::StopLogs();
    WriteRootLog(RavLog::Error, "After", "nobody listens");

    EXPECT_EQ(ShortDigits(ReadFile(m_folder / "new/Server.log")),
              "#-#-# #:#:#[LogRoot][Error][#][A::B][] [#%s] \n");
    EXPECT_EQ(ShortDigits(ReadFile(m_folder / "new/Operation.log")),
              "#-#-# #:#:#[LogOperation][Unknow][#][#.#.#.#][/a%#b] [#] [] \n"
              "#-#-# #:#:#[LogOperation][Unknow][#][][] \u00E4\u20AC\U0001F600 "
              "\\xFF\\xC#|\\xC#\\xAF|\\xED\\xA#\\x#|\\xE#\\x#|"
              "\\xF#\\x#\\x#\\x#\n");
}

TEST_F(LogFiles, AllRecordsOfAllThreadsAreKeptInWholeLines) {
    ASSERT_EQ(RavLog::StartLogs(m_folder.string(), "info"), "");
    constexpr int kThreads = 4;
    constexpr int kRecords = 20000;
    {
        std::vector<std::jthread> threads;
        threads.reserve(kThreads);
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([] {
                for (int i = 0; i < kRecords; ++i) {
                    WriteOperationLog("client", "/path", "[20000] [] ");
                }
            });
        }
    }
    RavLog::StopLogs();
    int lines = 0;
    for (const char* name : {"Operation.log", "Operation.1.log"}) {
        std::ifstream file(m_folder / name);
        for (std::string line; std::getline(file, line); ++lines) {
            ASSERT_TRUE(line.ends_with("[client][/path] [20000] [] ")) << line;
        }
        EXPECT_LT(std::filesystem::exists(m_folder / name) ? std::filesystem::file_size(m_folder / name) : 0,
                  11U << 20U);
    }
    EXPECT_EQ(lines, kThreads * kRecords);
}

TEST_F(LogFiles, FileThatCantBeRenamedGrowsOn) {
    const std::filesystem::path log = m_folder / "System.log";
    std::ofstream(log) << std::string(10U << 20U, 'x') << "\nwritten before\n";
    const std::ifstream viewer(log);  // forbids to rename the file, where the system has such a thing
    for (int number = 1; simulation::Differences::kRemovesOpenFiles && number <= 4; ++number) {
        std::filesystem::create_directories(m_folder / ("System." + std::to_string(number) + ".log") / "x");
    }
    ASSERT_EQ(RavLog::StartLogs(m_folder.string(), "info"), "");
    RavLog::WriteSystemLog(RavLog::Info, "test", "written after");
    EXPECT_TRUE(simulation::WaitUntil(
        [&] { return ReadFile(log).find("grows on until it can be renamed") != std::string::npos; }));
    RavLog::StopLogs();
    const std::string text = ReadFile(log);
    EXPECT_NE(text.find("written before\n"), std::string::npos) << "the file was begun anew";
    EXPECT_NE(text.find("written after\n"), std::string::npos);
}

TEST_F(LogFiles, LogThatWasDeletedIsBegunAnew) {
    if (!simulation::Differences::kRemovesOpenFiles) {
        GTEST_SKIP() << "a file that is open can't be deleted";
    }
    const std::filesystem::path log = m_folder / "Log" / "System.log";
    ASSERT_EQ(RavLog::StartLogs(log.parent_path().string(), "info"), "");
    RavLog::WriteSystemLog(RavLog::Error, "test", "deleted");
    ASSERT_TRUE(simulation::WaitUntil([&] { return ReadFile(log).find("deleted") != std::string::npos; }));
    std::filesystem::remove_all(log.parent_path());
    RavLog::WriteSystemLog(RavLog::Error, "test", "kept");
    RavLog::StopLogs();
    EXPECT_NE(ReadFile(log).find("kept"), std::string::npos);
}

TEST_F(LogFiles, AFullDiskLosesRecordsAndSaysSo) {
    if (!simulation::MakeLink(simulation::FullDisk(), m_folder / "Server.log")) {
        GTEST_SKIP() << "no disk of this system can be made full";
    }
    ASSERT_EQ(RavLog::StartLogs(m_folder.string(), "info"), "");
    WriteRootLog(RavLog::Info, "Full", "lost");
    RavLog::StopLogs();
    std::filesystem::remove(m_folder / "Server.log");
    ASSERT_EQ(RavLog::StartLogs(m_folder.string(), "info"), "");
    WriteRootLog(RavLog::Info, "Free", "kept");
    RavLog::StopLogs();
    const std::string text = ReadFile(m_folder / "Server.log");
    EXPECT_TRUE(text.starts_with("1 records were lost here")) << text;
    EXPECT_NE(text.find("kept"), std::string::npos);
}

}  // namespace
