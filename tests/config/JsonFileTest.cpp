#include "config/BrokenFile.h"
#include "config/DocumentBackup.h"
#include "config/JsonDepth.h"
#include "config/JsonFile.h"
#include "config/JsonFileWriter.h"
#include "config/JsonNumber.h"
#include "platform/RavLog.h"
#include "simulation/Machine.h"
#include "simulation/Wait.h"
#include "tests/config/TestCases.h"

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

namespace {

class JsonFile : public testing::Test {
  protected:
    JsonFile() { RavLog::StartLogs((m_folder.Path() / "Log").string(), "info"); }
    ~JsonFile() override { RavLog::StopLogs(); }

    /** Restores the document, and expects a report with this text; returns the file to load. */
    std::string Restore(const std::string& text) const {
        CaptureStdout();
        std::string file = RestoreFromBackup(m_path);
        const std::string output = GetCapturedStdout();
        EXPECT_TRUE(text.empty() ? output.empty() : output.find(text) != std::string::npos) << output;
        return file;
    }

    int TimesInSystemLog(const std::string& text) const {
        RavLog::StopLogs();
        const std::string log = ReadFile(m_folder.Path() / "Log" / "System.log");
        int times = 0;
        for (std::size_t at = 0; (at = log.find(text, at)) != std::string::npos; at += text.size()) {
            ++times;
        }
        return times;
    }

    const simulation::TemporaryFolder m_folder;
    const std::string m_path = (m_folder.Path() / "layout.json").string();
    const std::string m_backup = (m_folder.Path() / "Backup" / "layout.json").string();
};

}  // namespace

TEST_F(JsonFile, LoadsWhatCanBeReadAndTellsTheRest) {
    CaptureStdout();
    EXPECT_EQ(LoadJsonFromFile(m_path), json());
    EXPECT_EQ(GetCapturedStdout(), "JSON Load Error: Failed to open file" + m_path + "\n");
    json rows = TestCases("documents that are loaded");
    rows.push_back({std::string(100000, '['), nullptr, "LoadJsonFromFile Error: nested deeper than 256 "});
    // Content, what is read of it, how the one line begins (empty: no line).
    for (const json& row : rows) {
        WriteFile(m_path, row[0].get<std::string>());
        CaptureStdout();
        EXPECT_EQ(LoadJsonFromFile(m_path), row[1]);
        const std::string text = GetCapturedStdout();
        EXPECT_TRUE(row[2].get<std::string>().empty() ? text.empty()
                                                      : text.starts_with(row[2].get<std::string>()))
            << row << text;
    }
}

TEST_F(JsonFile, SavesSortedIndentedUtf8AndTellsFailures) {
    CaptureStdout();
    SaveJsonToFile({{"b", 1}, {"a", "中文"}, {"c", json::array()}}, m_path);
    const std::string end = simulation::Differences::kDocumentLineEnd;
    EXPECT_EQ(ReadFile(m_path), "{" + end + R"(    "a": "中文",)" + end + R"(    "b": 1,)" + end +
                                    R"(    "c": [])" + end + "}");
    SaveJsonToFile({{"a", 1}}, (m_folder.Path() / "none" / "a.json").string());
    SaveJsonToFile({{"a", "\xff"}}, m_path);
    EXPECT_TRUE(GetCapturedStdout().starts_with(
        "JSON Save Error:Failed to create file\nSaveJsonToFile Error: [json.exception.type_error.316]"));
    EXPECT_EQ(ReadFile(m_path), "");
    WriteFile(m_folder.Path() / "Backup", "a file where the folder belongs");
    SaveJsonWithBackup("old", m_path);
    EXPECT_EQ(ReadFile(m_path), "\"old\"");
    fs::remove(m_folder.Path() / "Backup");
    fs::create_directory(m_folder.Path() / "Backup");
    if (simulation::MakeLink(simulation::FullDisk(), m_backup + ".tmp")) {
        CaptureStdout();
        SaveJsonWithBackup("new", m_path);
        EXPECT_EQ(GetCapturedStdout(), "SaveJsonToFile Error: No space left on device\n");
        EXPECT_EQ(ReadFile(m_path), "\"old\"");
    }
    EXPECT_GT(TimesInSystemLog("the backup could not be written"), 0);
}

// Long and short documents take turns, so that an earlier save that isn't held back would end last.
TEST_F(JsonFile, LastDocumentOfAPathStays) {
    CJsonFileWriter writer;
    json document;
    for (int save = 0; save < 200; ++save) {
        document = {{"save", save}, {"padding", std::string(save % 2 == 0 ? 500000 : 10, 'x')}};
        writer.SaveAsync(document, m_path);
    }
    writer.WaitAll();
    EXPECT_EQ(LoadJsonFromFile(m_path), document);
    EXPECT_EQ(LoadJsonFromFile(m_backup), document);
}

TEST_F(JsonFile, FailedSaveIsTriedAgainUntilItWorks) {
    const auto holds = [](const std::string& path, const char* text) {
        return simulation::WaitUntil([&] { return ReadFile(path) == text; });
    };
    CJsonFileWriter writer({std::chrono::milliseconds(5), std::chrono::milliseconds(20)});
    CaptureStdout();
    fs::create_directory(m_path);  // in the place of the document
    writer.SaveAsync("old", m_path);
    EXPECT_TRUE(holds(m_backup, "\"old\""));
    writer.SaveAsync("new", m_path);
    EXPECT_TRUE(holds(m_backup, "\"new\"")) << "the newer document waits behind the older one";
    std::this_thread::sleep_for(std::chrono::milliseconds(100));  // some tries, which are not logged
    fs::remove(m_path);
    EXPECT_TRUE(holds(m_path, "\"new\"")) << "the save was forgotten";
    writer.WaitAll();
    fs::remove_all(m_folder.Path() / "Backup");
    WriteFile(m_folder.Path() / "Backup", "a file where the folder belongs");
    writer.SaveAsync("document", m_path);
    EXPECT_TRUE(holds(m_path, "\"document\""));
    fs::remove(m_folder.Path() / "Backup");
    EXPECT_TRUE(holds(m_backup, "\"document\"")) << "the backup was forgotten";
    fs::remove(m_path);
    fs::create_directory(m_path);
    writer.SaveAsync("given up", m_path);
    writer.WaitAll();
    EXPECT_TRUE(holds(m_backup, "\"given up\""));
    const std::string line = "JSON Save Error:Failed to create file\n";
    EXPECT_EQ(GetCapturedStdout(), line + line + line);
    for (const auto& [text, times] : {std::pair("; the save is tried again until it works", 3),
                                      std::pair(" is saved, after tries that failed: ", 2),
                                      std::pair("its save is given up at the end", 1)}) {
        EXPECT_EQ(TimesInSystemLog(text), times) << text;
    }
    fs::remove(m_path);
    EXPECT_EQ(LoadJsonFromFile(RestoreFromBackup(m_path)), json()) << "deleted, but the mark brings it back";
}

TEST_F(JsonFile, BackupTakesThePlaceOfABrokenDocumentOnly) {
    const std::string whole = R"({"name":"中文","list":[1, 2.5, "x", null, {"k": true}]})";
    std::vector<std::string> broken = {std::string(whole.size(), '\0'), "7\n" + whole};
    for (std::size_t i = 0; i < 20; ++i) {
        const std::size_t place = whole.size() * i / 20;
        broken.push_back(whole.substr(0, place));
        broken.push_back(whole);
        broken.back()[place] = static_cast<char>(static_cast<unsigned char>(whole[place]) ^ 0x80U);
    }
    WriteFile(m_backup, whole);
    WriteFile(m_path + ".target", "");
    const std::string target = simulation::MakeLink(m_path + ".target", m_path) ? m_path + ".target" : m_path;
    for (const std::string& content : broken) {
        WriteFile(m_path, content);
        EXPECT_EQ(Restore("was broken and has been taken from its backup"), m_path);
        EXPECT_EQ(ReadFile(target), whole) << content;
        EXPECT_EQ(ReadFile(m_path + ".broken"), content);
        fs::remove(m_path + ".broken");
    }
    for (int number = 1; number <= kMaxBrokenFiles; ++number) {
        fs::create_directory(m_path + ".broken" + (number == 1 ? "" : "." + std::to_string(number)));
    }
    WriteFile(m_path, "{");
    EXPECT_EQ(Restore("can't be put in its place"), m_backup);
    SaveJsonWithBackup("new", m_path);
    EXPECT_EQ(ReadFile(m_path), "{") << "what could not be kept was overwritten";
    EXPECT_EQ(ReadFile(m_backup), "\"new\"");
    EXPECT_GT(TimesInSystemLog(m_path + " was broken"), 0);
    fs::remove(m_path);
    EXPECT_EQ(Restore(""), m_path);
    EXPECT_FALSE(fs::exists(m_path)) << "a missing document has come back";
    for (const json& row : TestCases("backups that stay aside")) {
        SCOPED_TRACE(row);
        WriteFile(m_path, row[0].get<std::string>());
        WriteFile(m_backup, row[1].get<std::string>());
        EXPECT_EQ(Restore(""), m_path);
        EXPECT_EQ(ReadFile(m_path), row[0]);
    }
}

TEST_F(JsonFile, BrokenDocumentWithoutABackupIsKept) {
    const std::vector<std::string> contents = {R"({"broken)", std::string(300, '[') + std::string(300, ']'),
                                               R"({"a":1} {"b":2})", "[1] 2"};
    int number = 0;
    for (const std::string& content : contents) {
        const std::string kept = m_path + ".broken" + (++number == 1 ? "" : "." + std::to_string(number));
        fs::remove(m_backup);
        WriteFile(m_path, content);
        for (int start = 0; start < 2 && number % 2 == 0; ++start) {  // else the save itself keeps it
            EXPECT_EQ(Restore(""), m_path);
            EXPECT_EQ(ReadFile(kept), content);
        }
        SaveJsonWithBackup("new", m_path);
        EXPECT_EQ(ReadFile(m_path), "\"new\"");
        EXPECT_EQ(ReadFile(kept), content) << number;
    }
    EXPECT_EQ(ReadFile(m_path + ".broken"), contents[0]);
    EXPECT_FALSE(fs::exists(m_path + ".broken.5")) << "the same content was kept twice";
    fs::remove(m_path);
    if (simulation::MakeLink(simulation::UnreadableFile(), m_path)) {
        WriteFile(m_backup, "\"old\"");
        EXPECT_EQ(Restore("can't be read to its end, its backup is used"), m_backup);
        SaveJsonWithBackup("newer", m_path);  // can't be moved aside either: only the backup is written
        EXPECT_EQ(ReadFile(m_backup), "\"newer\"");
    }
    EXPECT_GT(
        TimesInSystemLog(m_path + " is not one whole JSON value; it is kept as " + m_path + ".broken.2"), 0);
}

TEST(JsonText, DepthAndNumbers) {
    for (const json& row : TestCases("depths")) {  // beginning, number of brackets, end
        SCOPED_TRACE(row);
        const std::string brackets(row[1].get<std::size_t>(), '[');
        const std::string text = row[0].get<std::string>() + brackets + row[2].get<std::string>();
        EXPECT_EQ(IsNestedTooDeep(text), row[3]) << row;
    }
    for (const json& row : TestCases("numbers")) {
        SCOPED_TRACE(row);
        EXPECT_EQ(JsonToInt32(json::parse(row[0].get<std::string>())), row[1]) << row;
    }
}
