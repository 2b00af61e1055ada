#include "config/StandardOutput.h"
#include "platform/RavLog.h"
#include "simulation/OutputPipe.h"
#include "simulation/TemporaryFolder.h"
#include "simulation/Wait.h"

#include <array>
#include <list>
#include <sstream>
#include <thread>
#include <utility>

#include <gtest/gtest.h>

namespace {

constexpr int kThreads = 4;
constexpr int kLines = 50;  // of each thread: two megabytes in all, far more than may wait

std::string LineOf(int thread, int number) {
    return std::to_string(thread) + " " + std::to_string(number) + " " + std::string(10000, 'x');
}

TEST(StandardOutput, ThatNobodyReadsHoldsUpNobody) {
    const simulation::TemporaryFolder folder;
    ASSERT_EQ(RavLog::StartLogs(folder.Path().string(), "info"), "");
    const auto isTold = [&folder](const std::string& text) {
        return simulation::ReadFile(folder.Path() / "System.log").find(text) != std::string::npos;
    };
    simulation::OutputPipe output;
    const auto begin = std::chrono::steady_clock::now();
    {
        std::list<std::jthread> threads;
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([thread] {
                for (int number = 0; number < kLines; ++number) {
                    PrintLine(LineOf(thread, number));
                }
            });
        }
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    EXPECT_TRUE(simulation::WaitUntil([&] { return isTold("takes nothing more"); }));

    std::string text;
    while (!isTold("takes lines again")) {  // all that waited is out
        text += output.Read();
    }
    PrintLine("last");
    while (!text.ends_with("last\n")) {
        text += output.Read();
    }
    std::istringstream lines(text);
    std::array<int, kThreads> next{};
    int count = 0;
    for (std::string line; std::getline(lines, line) && line != "last"; ++count) {
        const auto thread = static_cast<std::size_t>(line.at(0) - '0');
        const int number = std::stoi(line.substr(2));
        ASSERT_EQ(line, LineOf(static_cast<int>(thread), number)) << "whole";
        EXPECT_GE(number, std::exchange(next.at(thread), number + 1)) << "in order";
    }
    EXPECT_GE(count, 20);
    EXPECT_TRUE(isTold(std::to_string(kThreads * kLines - count) + " were lost"));
    RavLog::StopLogs();
}

}  // namespace
