#include "config/DocumentBackup.h"
#include "config/JsonFile.h"
#include "tests/config/TestCases.h"

#include <sys/wait.h>
#include <unistd.h>

static json Document(int number, std::size_t size) {
    return {{"number", number}, {"text", std::string(size, static_cast<char>('a' + number % 26))}};
}

/** The number of the document that a start would load; -1 when it isn't whole. */
static int NumberOfWholeDocument(const std::string& path, std::size_t size) {
    const json document = LoadJsonFromFile(RestoreFromBackup(path));
    const int number = document.is_object() ? document.value("number", -1) : -1;
    return number >= 0 && document == Document(number, size) ? number : -1;
}

TEST(SaveFaults, KilledSaveLeavesTheOldOrTheNewDocument) {
    constexpr std::size_t size = 1000000;
    const simulation::TemporaryFolder folder;
    const std::string path = (folder.Path() / "layout.json").string();
    SaveJsonWithBackup(Document(0, size), path);
    int last = 0, restored = 0;
    for (int kill = 0; kill < 100; ++kill) {
        const pid_t saver = fork();
        for (int number = last + 1; saver == 0 && number < 1000000; ++number) {
            SaveJsonWithBackup(Document(number, size), path);
        }
        // While the document is short, or while its backup is written.
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (std::chrono::steady_clock::now() < end &&
               !(kill % 2 == 0 ? fs::file_size(path) < size : fs::exists(BackupPath(path) + ".tmp"))) {
        }
        ::kill(saver, SIGKILL);
        ASSERT_EQ(waitpid(saver, nullptr, 0), saver);
        restored += fs::file_size(path) < size ? 1 : 0;
        const int number = NumberOfWholeDocument(path, size);
        ASSERT_GE(number, last) << "after kill " << kill;
        last = number;
        fs::remove(path + ".broken");
    }
    EXPECT_GT(restored, 0) << "no kill has hit the moment that the backup is for";
}
