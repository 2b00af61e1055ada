#include "platform/FolderLock.h"
#include "simulation/Machine.h"
#include "simulation/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using EnState = CFolderLock::EnState;

TEST(FolderLock, HasOneHolderByWhateverName) {
    const simulation::TemporaryFolder folder;
    const fs::path documents = folder.Path() / "made" / "documents";
    for (int round = 0; round < 2; ++round) {
        const CFolderLock first(documents.string());
        ASSERT_EQ(first.State(), EnState::Held) << first.Problem();
        for (const fs::path& name : {documents, folder.Path() / "made" / ".." / "made" / "documents"}) {
            const CFolderLock second(name.string());
            EXPECT_EQ(second.State(), EnState::Taken) << second.Problem();
            EXPECT_EQ(second.Owner() + "\n", simulation::ReadTextFile(documents / "Server.lock"));
        }
        EXPECT_EQ(CFolderLock(folder.Path().string()).State(), EnState::Held) << "another folder";
    }
}

TEST(FolderLock, TellsWhatCantBeLocked) {
    const simulation::TemporaryFolder folder;
    simulation::WriteFile(folder.Path() / "file", "");
    const fs::path lockFile = folder.Path() / "Server.lock";
    if (!simulation::MakeLink(lockFile, lockFile)) {
        fs::create_directory(lockFile);
    }
    for (const fs::path& name : {folder.Path() / "file", folder.Path() / "file" / "below", folder.Path()}) {
        const CFolderLock lock(name.string());
        EXPECT_EQ(lock.State(), EnState::Unavailable) << name;
        EXPECT_NE(lock.Problem(), "") << name;
    }
}

}  // namespace
