#include "config/FileCreation.h"
#include "config/VersionInfo.h"
#include "include/GlobalConfig.h"
#include "libraries/http/src/OriginRule.h"
#include "tests/config/MachineFixture.h"

#include <iomanip>

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
        EXPECT_EQ(config.index_path, simulation::ProgramFolder() / "dist" / "index.html");
        json written = TestCases("configuration that is written");
        written["user_data_path"] = m_data;
        written["webui_path"] = config.webui_path;
        const bool isWritten = content.empty() || content == "missing";
        EXPECT_EQ(simulation::ReadTextFile(m_file), isWritten ? written.dump(4) : content);
    }
}

TEST_F(Machine, AllowedHostsReachTheHttpLibrary) {
    WriteFile(m_file, R"({"allowed_hosts":["panel.example.com","x.example:80"]})");
    EXPECT_FALSE(hv::internal::IsKnownHost("panel.example.com"));
    const SGlobalConfig config;
    EXPECT_TRUE(hv::internal::IsKnownHost("Panel.example.com:8086"));
    EXPECT_TRUE(hv::internal::IsKnownHost("x.example"));
    EXPECT_FALSE(hv::internal::IsKnownHost("y.example"));
}

TEST_F(Machine, WrongTypesAndImpossibleFoldersStopTheStart) {
    for (const char* content : {R"({"http_port":"1"})", R"({"websocket_port":null})", R"({"log_level":5})",
                                R"({"allowed_hosts":"a"})", R"({"allowed_hosts":[1]})"}) {
        WriteFile(m_file, content);
        testing::internal::CaptureStderr();
        EXPECT_TRUE(FailsWith("type_error.302")) << content;
        const std::string key = json::parse(content).begin().key();
        EXPECT_TRUE(testing::internal::GetCapturedStderr().starts_with(m_file + ": " + key)) << content;
    }
    fs::remove(m_file);
    fs::create_directory(m_file);
    EXPECT_TRUE(FailsWith("file_size"));
    testing::internal::CaptureStdout();
    EXPECT_FALSE(CreateFileWithDirectories(m_file));
    std::ostringstream quoted;
    quoted << std::quoted(m_file);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "无法创建文件: " + quoted.str() + "\n");
    fs::remove(m_file);
    if (simulation::MakeLink(m_file, m_file)) {
        EXPECT_TRUE(FailsWith("exists"));
    }
    fs::remove_all(m_data);
    WriteFile(m_data, "a file where the folder belongs");
    EXPECT_TRUE(FailsWith("create_directories"));
}

TEST_F(Machine, VersionLinesHaveDefaults) {
    SGlobalConfig config;
    config.app_dir = m_home;
    for (const json& row : TestCases("versions")) {
        if (row[0] != "missing") {
            WriteFile(m_home + "/Resource/Version.info", row[0].get<std::string>());
        }
        LoadVersionInfo(config);
        EXPECT_EQ(json({config.softwareName, config.version, config.buildVersion, config.buildTime}), row[1]);
    }
}
