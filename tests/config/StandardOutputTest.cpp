#include "config/StandardOutput.h"
#include "platform/RavLog.h"
#include "simulation/OutputPipe.h"
#include "simulation/TemporaryFolder.h"
#include "simulation/Wait.h"

#include <sstream>
#include <thread>
#include <utility>
#include <vector>

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
    const auto isTold = [&folder](const char* text) {
        return simulation::ReadFile(folder.Path() / "System.log").find(text) != std::string::npos;
    };
    simulation::OutputPipe output;
    const auto begin = std::chrono::steady_clock::now();
    {
        std::vector<std::jthread> threads;
        threads.reserve(kThreads);
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
    std::vector<int> next(kThreads);
    int count = 0;
    for (std::string line; std::getline(lines, line) && line != "last"; ++count) {
        std::istringstream words(line);
        int thread = -1;
        int number = -1;
        words >> thread >> number;
        ASSERT_EQ(line, LineOf(thread, number)) << "whole";
        EXPECT_GE(number, std::exchange(next.at(static_cast<std::size_t>(thread)), number + 1)) << "in order";
    }
    EXPECT_GE(count, 20);
    EXPECT_TRUE(isTold((std::to_string(kThreads * kLines - count) + " were lost").c_str()));
    RavLog::StopLogs();
}

}  // namespace
