// What Windows reports about its user: language and folders.

#include "platform/Folders.h"
#include "tests/config/MachineFixture.h"

#include <vector>

TEST_F(Machine, LanguageFollowsTheLocale) {
    const std::vector<std::pair<const char*, int>> table = {{"zh-CN", 0}, {"zh-TW", 0}, {"zh-HK", 1},
                                                            {"ZH-CN", 1}, {"en-US", 1}, {"", 1}};
    for (const auto& [locale, language] : table) {
        simulation::SetLocale(locale);
        EXPECT_EQ(SGlobalConfig().system_language, language) << locale;
    }
    simulation::SetLocale("en-US");
}

TEST_F(Machine, FoldersAreInTheCodePageOfTheProcess) {
    const fs::path home = m_folder.Path() / L"\u7528\u6237";
    fs::create_directories(home / "Documents");
    simulation::SetVariable("SERVER_HOME", reinterpret_cast<const char*>(home.u8string().c_str()));
    const SGlobalConfig config;
    EXPECT_EQ(config.documents_dir, m_home + "\\\u7528\u6237\\Documents");
    EXPECT_EQ(config.user_data_path, config.documents_dir + "\\Sennacroft\\Varnholt");
    EXPECT_TRUE(fs::exists(home / "Documents" / "Sennacroft" / "Varnholt" / "LocalHost.config"));
}
