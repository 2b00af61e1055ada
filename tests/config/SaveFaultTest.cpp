#include "config/DocumentBackup.h"
#include "config/JsonFile.h"
#include "tests/config/TestCases.h"

#include <csignal>

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

void Save(const std::string& path, int number, std::size_t size) {
    SaveJsonWithBackup(
        {{"number", number}, {"text", std::string(size, static_cast<char>('a' + number % 26))}}, path);
}

/** The number of the document that a start would load; -1 when it isn't whole. */
int NumberOfWholeDocument(const std::string& path, std::size_t size) {
    const nlohmann::json document = LoadJsonFromFile(RestoreFromBackup(path));
    const int number = document.is_object() ? document.value("number", -1) : -1;
    const std::string text(size, static_cast<char>('a' + number % 26));
    return number >= 0 && document.value("text", "") == text ? number : -1;
}

}  // namespace

TEST(SaveFaults, KilledSaveLeavesTheOldOrTheNewDocument) {
    constexpr std::size_t size = 1000000;
    const support::TemporaryFolder folder;
    const std::string path = (folder.Path() / "layout.json").string();
    Save(path, 0, size);
    int last = 0;
    int restored = 0;
    for (int kill = 0; kill < 100; ++kill) {
        const pid_t saver = fork();
        for (int number = last + 1; saver == 0; ++number) {
            Save(path, number, size);
        }
        // While the document is short, or while its backup is written.
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (std::chrono::steady_clock::now() < end &&
               !(kill % 2 == 0 ? fs::file_size(path) < size : fs::exists(BackupPath(path) + ".tmp"))) {
        }
        ::kill(saver, SIGKILL);
        ASSERT_EQ(waitpid(saver, nullptr, 0), saver);
        const int number = NumberOfWholeDocument(path, size);
        ASSERT_GE(number, last) << "after kill " << kill;
        last = number;
        restored += fs::remove(path + ".broken") ? 1 : 0;
    }
    EXPECT_GT(restored, 0) << "no kill has hit the moment that the backup is for";
}

TEST(SaveFaults, FullDiskKeepsTheOldDocument) {
    const support::TemporaryFolder folder;
    const std::string path = (folder.Path() / "layout.json").string();
    const std::string ids[] = {"0 " + std::to_string(geteuid()) + " 1",
                               "0 " + std::to_string(getegid()) + " 1"};
    const pid_t child = fork();
    if (child == 0) {  // a file system of its own, 256 KiB large
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
            _exit(77);
        }
        support::WriteFile("/proc/self/setgroups", "deny");
        support::WriteFile("/proc/self/uid_map", ids[0]);
        support::WriteFile("/proc/self/gid_map", ids[1]);
        if (mount("none", folder.Path().c_str(), "tmpfs", 0, "size=256k") != 0) {
            _exit(77);
        }
        Save(path, 1, 50000);
        fs::remove(BackupPath(path));
        Save(path, 2, 300000);
        _exit(NumberOfWholeDocument(path, 50000));
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (WEXITSTATUS(status) == 77) {
        GTEST_SKIP() << "no file system can be mounted here";
    }
    EXPECT_EQ(WEXITSTATUS(status), 1);
}
