#include "platform/FileStreams.h"
#include "platform/Paths.h"
#include "simulation/Machine.h"
#include "simulation/TemporaryFolder.h"

#include <sstream>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

std::string ReadText(const std::string& path) {
    std::ostringstream text;
    text << OpenTextForReading(path).rdbuf();
    return text.str();
}

TEST(FileStreams, OpenTextsOfAnyName) {
    const simulation::TemporaryFolder folder;
    for (const char8_t* name : {u8"plain.txt", u8"with blanks .txt", u8"灯ä.txt"}) {
        const fs::path file = folder.Path() / name;
        const std::string path = NarrowFromPath(file);
        EXPECT_FALSE(OpenTextForReading(path)) << path;
        EXPECT_FALSE(fs::exists(file)) << path << " was made by reading";
        EXPECT_TRUE(OpenTextForAppending(path) << "one\n") << path;
        EXPECT_TRUE(OpenTextForAppending(path) << "two\n") << path;
        EXPECT_EQ(ReadText(path), "one\ntwo\n");
        EXPECT_TRUE(OpenTextForWriting(path) << "three\n") << path;
        EXPECT_EQ(ReadText(path), "three\n");
        EXPECT_EQ(simulation::ReadFile(file),
                  std::string("three") + simulation::Differences::kDocumentLineEnd);
    }
}

TEST(FileStreams, ShareTheirFileWithOthers) {
    const simulation::TemporaryFolder folder;
    const std::string path = NarrowFromPath(folder.Path() / "shared.txt");
    std::ofstream writer = OpenTextForWriting(path);
    std::ofstream appender = OpenTextForAppending(path);
    const std::ifstream reader = OpenTextForReading(path);
    EXPECT_TRUE(writer && appender && reader);
    writer << "one\n" << std::flush;
    appender << "two\n" << std::flush;
    EXPECT_EQ(ReadText(path), "one\ntwo\n");
}

TEST(FileStreams, SayWhatCantBeOpened) {
    const simulation::TemporaryFolder folder;
    for (const fs::path& file : {folder.Path(), folder.Path() / "none" / "file.txt"}) {
        const std::string path = NarrowFromPath(file);
        EXPECT_EQ(ReadText(path), "") << path;
        EXPECT_FALSE(OpenTextForWriting(path)) << path;
        EXPECT_FALSE(OpenTextForAppending(path)) << path;
    }
}

}  // namespace
