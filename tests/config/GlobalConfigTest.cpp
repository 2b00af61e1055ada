#include "config/FileCreation.h"
#include "config/VersionInfo.h"
#include "include/GlobalConfig.h"
#include "platform/ErrorTexts.h"
#include "platform/Folders.h"
#include "platform/GeneratorId.h"
#include "platform/linux/LocaleText.h"
#include "tests/config/TestCases.h"

namespace {

void SetVariable(const char* name, const std::string& value) {
    setenv(name, value.c_str(), 1);
}

/** The configuration of a machine whose user has a new home folder. */
class Machine : public testing::Test {
  protected:
    Machine() { SetVariable("HOME", m_home); }

    static bool FailsWith(const std::string& text) {
        return FailureOf([] { SGlobalConfig(); }).find(text) != std::string::npos;
    }

    const simulation::TemporaryFolder m_folder;
    const std::string m_home = m_folder.Path().string();
    const std::string m_data = m_home + "/Documents/Sennacroft/Varnholt";
    const std::string m_file = m_data + "/LocalHost.config";
};

}  // namespace

TEST_F(Machine, MissingOrEmptyFileIsWrittenAnyOtherIsRead) {
    for (json row : TestCases("configurations")) {  // content, ports, level, data folder; empty: the default
        const std::string content = row[0];
        if (content != "missing") {
            WriteFile(m_file, content);
        }
        const SGlobalConfig config;
        row[1][3] = row[1][3].get<std::string>().empty() ? m_data : row[1][3].get<std::string>();
        EXPECT_EQ(json({config.http_port, config.websocket_port, config.log_level, config.user_data_path}),
                  row[1]);
        EXPECT_EQ(config.index_path, fs::read_symlink("/proc/self/exe").parent_path() / "dist/index.html");
        json written = TestCases("configuration that is written");
        written["user_data_path"] = m_data;
        written["webui_path"] = config.webui_path;
        const bool isWritten = content.empty() || content == "missing";
        EXPECT_EQ(ReadFile(m_file), isWritten ? written.dump(4) : content);
    }
}

TEST_F(Machine, WrongTypesAndImpossibleFoldersStopTheStart) {
    for (const char* content : {R"({"http_port":"1"})", R"({"websocket_port":null})", R"({"log_level":5})"}) {
        WriteFile(m_file, content);
        EXPECT_TRUE(FailsWith("type_error.302")) << content;
    }
    fs::remove(m_file);
    fs::create_directory(m_file);
    EXPECT_TRUE(FailsWith("file_size"));
    testing::internal::CaptureStdout();
    EXPECT_FALSE(CreateFileWithDirectories(m_file));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "无法创建文件: \"" + m_file + "\"\n");
    fs::remove(m_file);
    fs::create_symlink(m_file, m_file);
    EXPECT_TRUE(FailsWith("exists"));
    fs::remove_all(m_home + "/Documents");
    WriteFile(m_home + "/Documents", "a file where the folder belongs");
    EXPECT_TRUE(FailsWith("create_directories"));
}

TEST_F(Machine, VersionLinesHaveDefaultsAndLanguageFollowsTheLocale) {
    SGlobalConfig config;
    config.app_dir = m_home;
    for (const json& row : TestCases("versions")) {
        if (row[0] != "missing") {
            WriteFile(m_home + "/Resource/Version.info", row[0].get<std::string>());
        }
        LoadVersionInfo(config);
        EXPECT_EQ(json({config.softwareName, config.version, config.buildVersion, config.buildTime}), row[1]);
    }

    for (const json& row : TestCases("languages")) {
        SetVariable("LC_ALL", row[0]);
        SetVariable("LC_MESSAGES", row[1]);
        SetVariable("LANG", row[2]);
        EXPECT_EQ(SGlobalConfig().system_language, row[3]) << row;
    }
    for (const json& row : TestCases("locale settings")) {
        std::istringstream settings(row[0].get<std::string>());
        EXPECT_EQ(LocaleOfSettings(settings), row[1]);
    }
}

TEST_F(Machine, DocumentsFolderComesFromTheUsersSettings) {
    for (const json& row : TestCases("documents folders")) {  // settings, folder with ~ for the home folder
        WriteFile(m_home + "/.config/user-dirs.dirs", row[0].get<std::string>());
        std::string expected = row[1];
        EXPECT_EQ(GetDocumentsDirectory(), expected[0] == '~' ? expected.replace(0, 1, m_home) : expected);
    }
    unsetenv("HOME");
    EXPECT_TRUE(GetDocumentsDirectory().starts_with('/')) << "the password database was not asked";
}

TEST(ErrorTexts, AreThoseOfWindows) {
    EXPECT_EQ(GetSocketErrorText(10065), "A socket operation was attempted to an unreachable host.\r\n");
    EXPECT_EQ(GetSystemErrorText(0), "No error");
    EXPECT_EQ(GetSystemErrorText(4000000000U), "Failed to get error description (Code: 4000000000)");
}

TEST(GeneratorId, NeverHandsOutAnIdTwice) {
    CGeneratorId& pool = *CGeneratorId::getInstance();
    pool.Initialize({-5, 3, 7});
    pool.ReleaseId(pool.GetId());
    pool.Clean();
    EXPECT_EQ(pool.GetId(), 9);
    // At the end of the range the lowest gap is taken.
    pool.Initialize({1, 2, 4, std::numeric_limits<int>::max()});
    EXPECT_EQ(pool.GetId(), 3);
    EXPECT_EQ(pool.GetId(), 5);
}
