#include "platform/DurableFile.h"
#include "platform/Paths.h"
#include "simulation/Machine.h"
#include "simulation/TemporaryFolder.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class DurableFile : public testing::Test {
  protected:
    std::error_code Replace(std::string_view content) const {
        return ReplaceFileDurably(NarrowFromPath(m_path), content);
    }
    auto FilesInFolder() const {
        return std::distance(fs::directory_iterator(m_folder.Path()), fs::directory_iterator());
    }

    const simulation::TemporaryFolder m_folder;
    const fs::path m_path = m_folder.Path() / fs::path(u8"文件 1.json");
    const fs::path m_temporary = m_folder.Path() / fs::path(u8"文件 1.json.tmp");
};

TEST_F(DurableFile, HasTheNewBytesAndNothingBesideIt) {
    const std::pair<const char*, std::string> contents[] = {
        {"first", "{\n\r\n\0}"}, {"longer", std::string(300000, 'x')}, {"shorter", "\xFF"}, {"empty", ""}};
    for (const auto& [name, content] : contents) {
        SCOPED_TRACE(name);
        simulation::WriteFile(m_temporary, "left behind by a power cut");
        EXPECT_EQ(Replace(content), std::error_code());
        EXPECT_EQ(simulation::ReadFile(m_path), content);
        EXPECT_EQ(FilesInFolder(), 1);
    }
}

TEST_F(DurableFile, StaysAsItIsWhenItCantBeReplaced) {
    simulation::WriteFile(m_path, "old");
    fs::create_directory(m_temporary);
    EXPECT_NE(Replace("new"), std::error_code()) << "the temporary file can't be made";
    EXPECT_EQ(simulation::ReadFile(m_path), "old");
    fs::remove(m_temporary);
    fs::remove(m_path);
    simulation::WriteFile(m_path / "file", "old");
    EXPECT_NE(Replace("new"), std::error_code()) << "the name is a folder's";
    EXPECT_EQ(simulation::ReadFile(m_path / "file"), "old");
    EXPECT_FALSE(fs::exists(m_temporary));
    EXPECT_NE(ReplaceFileDurably((m_folder.Path() / "none" / "a").string(), "new"), std::error_code());
}

TEST_F(DurableFile, SaysThatTheDiskIsFull) {
    simulation::WriteFile(m_path, "old");
    if (!simulation::MakeLink(simulation::FullDisk(), m_temporary)) {
        GTEST_SKIP() << "no disk of this system can be made full";
    }
    EXPECT_EQ(Replace("new"), std::errc::no_space_on_device);
    EXPECT_EQ(simulation::ReadFile(m_path), "old");
    EXPECT_EQ(FilesInFolder(), 1);
}

TEST_F(DurableFile, IsFlushedWhoeverHasIt) {
    simulation::WriteFile(m_path, "text");
    EXPECT_EQ(FlushFile(NarrowFromPath(m_path)), std::error_code());
    EXPECT_EQ(simulation::ReadFile(m_path), "text");
    EXPECT_EQ(FlushFolder(m_folder.Path().string()), std::error_code());
    EXPECT_NE(FlushFile((m_folder.Path() / "none").string()), std::error_code());
    EXPECT_FALSE(fs::exists(m_folder.Path() / "none"));
}

}  // namespace
