#include "platform/StandardStreams.h"
#include "simulation/Machine.h"
#include "simulation/OutputPipe.h"
#include "simulation/TemporaryFolder.h"

#include <cstdio>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>

namespace {

TEST(StandardStreams, TakeWhatIsWrittenWholeAndInOrder) {
    std::string text;
    for (int line = 0; line < 50000; ++line) {  // more than a pipe holds
        text += "行 " + std::to_string(line) + "\n";
    }
    simulation::OutputPipe output;
    EXPECT_FALSE(IsStandardOutputFile());
    bool isWritten = false;
    std::jthread writer([&] { isWritten = WriteStandardOutput(text) && WriteStandardOutput("end\n"); });
    std::string read;
    while (!read.ends_with("end\n")) {
        read += output.Read();
    }
    writer.join();
    EXPECT_TRUE(isWritten);
    EXPECT_EQ(read, text + "end\n");
}

TEST(StandardStreams, MayLeadToAFile) {
    testing::internal::CaptureStdout();
    const bool isFile = IsStandardOutputFile();
    const bool isWritten = WriteStandardOutput("text\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "text\n");
    EXPECT_TRUE(isFile && isWritten);
}

TEST(StandardStreams, ThatNobodyReadsOrThatAreFullSaySo) {
    {
        simulation::OutputPipe output;
        output.EndReading();
        EXPECT_FALSE(WriteStandardOutput("lost"));
    }
    simulation::OutputPipe output;
    output.CloseOutput();
    std::FILE* const full = std::fopen(simulation::FullDisk(), "w");  // takes the number that is free
    if (full != nullptr) {
        EXPECT_FALSE(WriteStandardOutput("lost"));
        std::fclose(full);
    }
}

TEST(StandardStreams, ThatAreMissingTakeEverything) {
    simulation::OutputPipe output;
    output.CloseOutput();
    EXPECT_TRUE(WriteStandardOutput("lost"));
    EXPECT_FALSE(IsStandardOutputFile());
}

TEST(StandardStreams, ThatAreMissingDoNotLandInTheNextFile) {
    if (simulation::Differences::kKeepsMissingStreams) {
        GTEST_SKIP() << "no file takes the number of a missing stream";
    }
    const simulation::TemporaryFolder folder;
    simulation::OutputPipe output;
    output.CloseOutput();
    PrepareStandardStreams();
    std::ofstream file(folder.Path() / "file");
    EXPECT_TRUE(WriteStandardOutput("lost"));
    file << "kept" << std::flush;
    EXPECT_EQ(simulation::ReadFile(folder.Path() / "file"), "kept");
}

}  // namespace
