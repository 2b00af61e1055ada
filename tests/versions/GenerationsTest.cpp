#include "platform/RavLog.h"
#include "simulation/TemporaryFolder.h"
#include "versions/Generations.h"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

namespace fs = std::filesystem;
using simulation::ReadFile;
using simulation::WriteFile;
using std::chrono::hours;
using std::chrono::local_seconds;
using std::chrono::minutes;

namespace {

local_seconds At(const std::string& name) {
    return GenerationTime(name).value_or(local_seconds());
}

class Generations : public testing::Test {
  protected:
    Generations() { RavLog::StartLogs((m_folder.Path() / "Log").string(), "info"); }
    ~Generations() override { RavLog::StopLogs(); }

    /** The save of a document, and the generations that are there then. */
    std::string Save(const std::string& text, const char* name = "layout.json") {
        const fs::path document = m_folder.Path() / name;
        m_generations.BeforeSave(document.string());
        WriteFile(document, text);
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_backups)) {
            if (entry.is_directory()) {
                names.insert(entry.path().filename().string());
            }
        }
        std::string list;
        for (const std::string& each : names) {
            list += each + " ";
        }
        return list;
    }

    std::string Kept(const std::string& generation, const char* name = "layout.json") const {
        return ReadFile(m_backups / generation / name);
    }

    const simulation::TemporaryFolder m_folder;
    const fs::path m_backups = m_folder.Path() / "Backup";
    local_seconds m_now = At("2026-11-22_10-00-00");
    CGenerations m_generations{[this] { return m_now; }, {hours(1), 150, 1}};
};

}  // namespace

TEST(GenerationNames, TellTheTimeAndNothingElse) {
    for (const char* name : {"2026-11-22_14-05-33", "2024-02-29_00-00-00", "2026-12-31_23-59-59"}) {
        EXPECT_EQ(GenerationName(At(name)), name);
    }
    for (const char* name :
         {"", "2026-11-22", "2026-11-22_24-00-00", "2026-02-30_00-00-00", "2026-11-22_14-05-3x",
          "2026-13-01_00-00-00", "2026-11-22 14-05-33", "2026-11-22_14-05-33.tmp", "-026-11-22_14-05-33",
          "2026-11-22_14--5-33", "layout.json"}) {
        EXPECT_FALSE(GenerationTime(name)) << name;
    }
}

// A year of saves at work: what stays are the latest, and the first of the latest days and months.
TEST(GenerationNames, ThirtyOfAYearStay) {
    std::vector<local_seconds> times;
    local_seconds end;
    for (int day = 0; day < 365; ++day) {
        for (int hour = 8; hour < 18; ++hour) {
            end = At("2026-01-01_00-00-00") + hours(24 * day + hour);
            times.push_back(end);
            for (const local_seconds time : SuperfluousGenerations(times)) {
                std::erase(times, time);
            }
            ASSERT_LE(times.size(), 30U);
        }
    }
    std::set<local_seconds> wanted;
    for (int hour = 0; hour < 10; ++hour) {
        wanted.insert(end - hours(hour));
    }
    for (int day = 0; day < 12; ++day) {
        wanted.insert(end - hours(24 * day + 9));
    }
    wanted.insert({end - hours(24), end - hours(25)});  // the 11th and the 12th latest
    for (const char* month : {"07", "08", "09", "10", "11", "12"}) {
        wanted.insert(At(std::string("2026-") + month + "-01_08-00-00"));
    }
    EXPECT_EQ(std::set(times.begin(), times.end()), wanted);
}

TEST_F(Generations, OneBeforeTheFirstSaveOfADayAndOneAnHour) {
    fs::create_directories(m_backups / "mine");
    fs::create_directories(m_backups / "2026-01-01_00-00-00.tmp");
    WriteFile(m_backups / "2026-01-01_00-00-00.tmp" / "layout.json", "1");
    WriteFile(m_folder.Path() / "interFace.json", "[\"unchanged\"]");
    WriteFile(m_folder.Path() / "materials.json", "{\"broken");
    WriteFile(m_backups / "materials.json", "\"backup\"");
    const std::string first = "2026-11-22_10-00-00 ";
    EXPECT_EQ(Save("{}", "setting.json"), "2026-01-01_00-00-00.tmp mine ");
    EXPECT_EQ(Save("1"), first + "mine ");
    EXPECT_FALSE(fs::exists(m_backups / "2026-11-22_10-00-00" / "layout.json"));
    EXPECT_EQ(Kept("2026-11-22_10-00-00", "interFace.json"), "[\"unchanged\"]");
    EXPECT_EQ(Kept("2026-11-22_10-00-00", "materials.json"), "\"backup\"");
    m_now += minutes(59);
    EXPECT_EQ(Save("2"), first + "mine ");
    m_now += minutes(1);
    EXPECT_EQ(Save("3"), first + "2026-11-22_11-00-00 mine ");
    EXPECT_EQ(Kept("2026-11-22_11-00-00"), "2");
    m_now = At("2026-11-22_23-50-00");
    Save("4");
    m_now = At("2026-11-23_00-01-00");
    Save("5");
    EXPECT_EQ(Kept("2026-11-23_00-01-00"), "4");
    m_now = At("2027-01-01_00-00-00");  // the clock is wrong, and then right again
    Save("6");
    m_now = At("2026-11-23_02-00-00");
    Save("7");
    EXPECT_EQ(Kept("2026-11-23_02-00-00"), "6");
    m_now += minutes(1);
    EXPECT_EQ(Save("8"), first +
                             "2026-11-22_11-00-00 2026-11-22_23-50-00 2026-11-23_00-01-00 "
                             "2026-11-23_02-00-00 2027-01-01_00-00-00 mine ");
}

TEST_F(Generations, TakeBoundedRoomAndNeverFailTheSave) {
    WriteFile(m_backups, "a file where the folder belongs");
    WriteFile(m_folder.Path() / "layout.json", "\"" + std::string(40, '0') + "\"");
    for (int i = 0; i < 2; ++i) {
        m_generations.BeforeSave((m_folder.Path() / "layout.json").string());
    }
    fs::remove(m_backups);
    fs::create_directory(m_backups);
    for (int i = 1; i <= 4; ++i) {
        Save("\"" + std::string(40, static_cast<char>('0' + i)) + "\"");
        m_now += hours(1);
    }
    EXPECT_EQ(Save("\"" + std::string(200, '5') + "\""),
              "2026-11-22_12-00-00 2026-11-22_13-00-00 2026-11-22_14-00-00 ");
    m_now += hours(1);
    EXPECT_EQ(Save("6"), "2026-11-22_12-00-00 2026-11-22_13-00-00 2026-11-22_14-00-00 ")
        << "larger than all room";
    RavLog::StopLogs();
    const std::string log = ReadFile(m_folder.Path() / "Log" / "System.log");
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2) << log;
    EXPECT_NE(log.find("they are larger than 150 bytes"), std::string::npos) << log;
}
