#include "config/FileCreation.h"
#include "config/VersionInfo.h"
#include "include/GlobalConfig.h"
#include "libraries/http/src/OriginRule.h"
#include "platform/TrafficLimit.h"
#include "tests/config/MachineFixture.h"

#include <iomanip>

TEST_F(Machine, MissingOrEmptyFileIsWrittenAnyOtherIsRead) {
    json written = TestCases("configuration that is written");
    written["user_data_path"] = m_data;
    for (const auto& [name, content, changes] : Rows<std::string, json, json>("configurations")) {
        SCOPED_TRACE(name);
        const std::string given = content.is_string() ? content.get<std::string>() : std::string();
        if (content.is_string()) {
            WriteFile(m_file, given);
        }
        const SGlobalConfig config;
        json expected = written;
        expected.update(changes);
        EXPECT_EQ(json({{"http_port", config.http_port},
                        {"websocket_port", config.websocket_port},
                        {"log_level", config.log_level},
                        {"user_data_path", config.user_data_path}}),
                  expected);
        EXPECT_EQ(config.index_path, simulation::ProgramFolder() / "dist" / "index.html");
        expected["webui_path"] = config.webui_path;
        EXPECT_EQ(simulation::ReadTextFile(m_file), given.empty() ? expected.dump(4) : given);
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

TEST_F(Machine, TheLimitOfTheTrafficReachesItsKeeper) {
    EXPECT_EQ(TrafficLimit(), 32 << 20);
    WriteFile(m_file, R"({"traffic_bytes":0})");
    const SGlobalConfig config;
    EXPECT_EQ(TrafficLimit().exchange(32 << 20), 0);
}

TEST_F(Machine, WrongTypesAndImpossibleFoldersStopTheStart) {
    for (const char* content :
         {R"({"http_port":"1"})", R"({"websocket_port":null})", R"({"log_level":5})",
          R"({"allowed_hosts":"a"})", R"({"allowed_hosts":[1]})", R"({"traffic_bytes":"1"})"}) {
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
        SCOPED_TRACE(row);
        if (row[0] != "missing") {
            WriteFile(m_home + "/Resource/Version.info", row[0].get<std::string>());
        }
        LoadVersionInfo(config);
        EXPECT_EQ(json({config.softwareName, config.version, config.buildVersion, config.buildTime}), row[1]);
    }
}
