#include "platform/Paths.h"
#include "platform/PinnedFile.h"
#include "simulation/Machine.h"
#include "simulation/TemporaryFolder.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

class Pinned : public testing::Test {
  protected:
    Pinned() { simulation::WriteFile(m_file, "checked"); }

    static std::string Read(const PinnedFile& file) {
        return simulation::ReadFile(PathFromNarrow(file.OpenName()));
    }

    const simulation::TemporaryFolder m_temporary;
    const fs::path m_root = fs::canonical(m_temporary.Path());
    const fs::path m_folder = m_root / fs::path(u8"目录 1");
    const fs::path m_file = m_folder / fs::path(u8"灯.txt");
};

TEST_F(Pinned, TellsWhereAFileOrFolderReallyLies) {
    const bool hasLinks = simulation::MakeLink(m_file, m_root / "link") &&
                          simulation::MakeLink(m_root / "none", m_root / "dead");
    const std::pair<fs::path, fs::path> rows[] = {
        {m_file, m_file},
        {m_folder, m_folder},
        {m_folder / ".." / m_folder.filename() / m_file.filename(), m_file},
        {m_root / "link", hasLinks ? m_file : fs::path()},
        {m_root / "dead", {}},
        {m_root / "none", {}},
        {m_file / "x", {}},
        {{}, {}},
    };
    for (const auto& [path, real] : rows) {
        SCOPED_TRACE(path);
        const PinnedFile pinned(path);
        EXPECT_EQ(pinned ? pinned.RealPath() : fs::path(), real) << "empty: it can't be reached";
        EXPECT_TRUE(!pinned || fs::is_regular_file(PathFromNarrow(pinned.OpenName())) == (real == m_file));
    }
}

// Either the name can't be taken away, or the file is still the one that opens when another has its name.
TEST_F(Pinned, StaysTheFileThatWasCheckedWhateverHappensToItsName) {
    std::vector<fs::path> names = {m_file};
    if (simulation::Differences::kKeepsOpenFilesInFolders) {
        names.push_back(m_folder);
    }
    for (const fs::path& renamed : names) {
        SCOPED_TRACE(renamed.filename());
        const PinnedFile pinned(m_file);
        ASSERT_TRUE(pinned);
        const fs::path away = m_root / "away";
        std::error_code error;
        fs::rename(renamed, away, error);
        EXPECT_EQ(!error, simulation::Differences::kRemovesOpenFiles);
        if (!error) {
            simulation::WriteFile(m_file, "secret");
            EXPECT_EQ(pinned.RealPath(), renamed == m_file ? away : away / m_file.filename());
        }
        EXPECT_EQ(Read(pinned), "checked");
        fs::remove_all(away);
        simulation::WriteFile(m_file, "checked");
    }
}

}  // namespace
