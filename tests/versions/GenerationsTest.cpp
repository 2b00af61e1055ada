#include "platform/RavLog.h"
#include "simulation/TemporaryFolder.h"
#include "versions/Generations.h"
#include "versions/VersionProblem.h"

#include <algorithm>
#include <numeric>
#include <set>

#include <gtest/gtest.h>

namespace fs = std::filesystem;
using simulation::ReadFile;
using simulation::WriteFile;
using std::chrono::hours;
using std::chrono::local_seconds;

namespace {

local_seconds At(const std::string& name) {
    return GenerationTime(name).value_or(local_seconds());
}

class Generations : public testing::Test {
  protected:
    Generations() { RavLog::StartLogs((m_folder.Path() / "Log").string(), "info"); }
    ~Generations() override { RavLog::StopLogs(); }

    /** The save of a document, and the generations that are there then, each with a blank behind it. */
    std::string Save(const std::string& text, const char* name = "layout.json") {
        const fs::path document = m_folder.Path() / name;
        m_generations.BeforeSave(document.string());
        WriteFile(document, text);
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_backups)) {
            if (entry.is_directory()) {
                names.insert(entry.path().filename().string() + " ");
            }
        }
        return std::accumulate(names.begin(), names.end(), std::string());
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
    std::set wanted = {end - hours(24), end - hours(25)};  // the 11th and the 12th latest
    for (int hour = 0; hour < 10; ++hour) {
        wanted.insert(end - hours(hour));
    }
    for (int day = 0; day < 12; ++day) {
        wanted.insert(end - hours(24 * day + 9));
    }
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
    EXPECT_EQ(Save("{}", "setting.json"), "2026-01-01_00-00-00.tmp mine ");
    Save("1");
    EXPECT_FALSE(fs::exists(m_backups / "2026-11-22_10-00-00" / "layout.json"));
    EXPECT_EQ(Kept("2026-11-22_10-00-00", "interFace.json"), "[\"unchanged\"]");
    EXPECT_EQ(Kept("2026-11-22_10-00-00", "materials.json"), "\"backup\"");
    // The clock goes wrong by more than a month, and then right again.
    const std::pair<const char*, const char*> saves[] = {
        {"2026-11-22_10-59-00", ""},  {"2026-11-22_11-00-00", "2"}, {"2026-11-22_23-50-00", "3"},
        {"2026-11-23_00-01-00", "4"}, {"2027-01-01_00-00-00", "5"}, {"2026-11-23_02-00-00", "6"},
        {"2026-11-23_02-01-00", ""},
    };
    int number = 1;
    std::string all;
    for (const auto& [time, kept] : saves) {  // kept: the layout in the generation of that time
        m_now = At(time);
        all = Save(std::to_string(++number));
        EXPECT_EQ(Kept(time), kept) << time;
    }
    EXPECT_EQ(all,
              "2026-11-22_10-00-00 2026-11-22_11-00-00 2026-11-22_23-50-00 2026-11-23_00-01-00 "
              "2026-11-23_02-00-00 2027-01-01_00-00-00 mine ");
}

TEST_F(Generations, TakeBoundedRoomAndNeverFailTheSave) {
    const auto document = [](char digit, std::size_t size) { return "\"" + std::string(size, digit) + "\""; };
    WriteFile(m_backups, "a file where the folder belongs");
    WriteFile(m_folder.Path() / "layout.json", document('0', 40));
    for (int i = 0; i < 2; ++i) {
        m_generations.BeforeSave((m_folder.Path() / "layout.json").string());
    }
    fs::remove(m_backups);
    fs::create_directory(m_backups);
    for (const char digit : {'1', '2', '3', '4'}) {
        Save(document(digit, 40));
        m_now += hours(1);
    }
    const std::string kept = "2026-11-22_12-00-00 2026-11-22_13-00-00 2026-11-22_14-00-00 ";
    EXPECT_EQ(Save(document('5', 200)), kept);
    m_now += hours(1);
    EXPECT_EQ(Save("6"), kept) << "larger than all room";
    RavLog::StopLogs();
    const std::string log = ReadFile(m_folder.Path() / "Log" / "System.log");
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2) << log;
    EXPECT_NE(log.find("they are larger than 150 bytes"), std::string::npos) << log;
}

TEST_F(Generations, WithANameStay) {
    const std::string folder = m_folder.Path().string();
    const auto problemOf = [&](const std::string& id, const std::string& name) {
        try {
            m_generations.SetName(folder, id, name);
        } catch (const CVersionProblem& problem) {
            return std::optional(problem.Kind());
        }
        return std::optional<EnVersionProblem>();
    };
    const std::string first = m_generations.Keep(folder, {{"layout.json", "\"first\""}});
    const std::string second = m_generations.Keep(folder, {{"layout.json", "\"second\""}});
    EXPECT_EQ(second, "2026-11-22_10-00-01") << "within one second";
    std::string longest = "会";
    for (int i = 1; i < 80; ++i) {
        longest += "会";
    }
    EXPECT_EQ(problemOf(first, "  " + longest + " "), std::nullopt);
    EXPECT_EQ(problemOf(first, longest + "!"), EnVersionProblem::NameTooLong);
    EXPECT_EQ(problemOf(first, "a\nb"), EnVersionProblem::NameUnreadable);
    EXPECT_EQ(problemOf("2026-11-22_10-00-02", "a"), EnVersionProblem::Missing);
    EXPECT_EQ(problemOf("..", "a"), EnVersionProblem::Missing);
    m_generations.SetName(folder, second, "b");
    m_generations.SetName(folder, second, "  ");
    for (int month = 0; month < 40; ++month) {
        m_now += hours(24 * 31);
        static_cast<void>(m_generations.Keep(folder, {{"layout.json", std::string(50, '1')}}));
    }
    std::vector<SVersion> all = m_generations.List(folder);
    ASSERT_EQ(all.size(), 4U) << "150 bytes of those without a name";
    EXPECT_EQ(all.back().id, first);
    EXPECT_EQ(all.back().name, longest);
    EXPECT_EQ(all.back().sizes, (std::map<std::string, std::uintmax_t>{{"layout.json", 7}}));
    EXPECT_EQ(problemOf(all[0].id, "1"), std::nullopt);
    EXPECT_EQ(problemOf(all[1].id, "2"), std::nullopt);
    EXPECT_EQ(problemOf(all[2].id, "3"), EnVersionProblem::NamesTakeRoom);
    // Damage costs the names, and nothing else.
    const std::string damaged = ReadFile(m_folder.Path() / "versions.json").substr(0, 70);
    WriteFile(m_folder.Path() / "versions.json", damaged);
    for (int month = 0; month < 5; ++month) {
        m_now += hours(24 * 31);
        static_cast<void>(m_generations.Keep(folder, {{"layout.json", std::string(50, '2')}}));
    }
    all = m_generations.List(folder);
    EXPECT_EQ(all.back().id, first);
    EXPECT_EQ(all.back().name, "");
    EXPECT_EQ(problemOf(first, "again"), std::nullopt);
    EXPECT_EQ(ReadFile(m_folder.Path() / "versions.json.broken"), damaged);
    RavLog::StopLogs();
    const std::string log = ReadFile(m_folder.Path() / "Log" / "System.log");
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
}
