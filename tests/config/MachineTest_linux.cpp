// What Linux reports about its user: language and folders.

#include "platform/Folders.h"
#include "platform/linux/LocaleText.h"
#include "tests/config/MachineFixture.h"

using simulation::SetVariable;

TEST_F(Machine, LanguageFollowsTheLocale) {
    for (const json& row : TestCases("languages")) {
        SCOPED_TRACE(row);
        SetVariable("LC_ALL", row[0].get<std::string>().c_str());
        SetVariable("LC_MESSAGES", row[1].get<std::string>().c_str());
        SetVariable("LANG", row[2].get<std::string>().c_str());
        EXPECT_EQ(SGlobalConfig().system_language, row[3]) << row;
    }
    for (const json& row : TestCases("locale settings")) {
        SCOPED_TRACE(row);
        std::istringstream settings(row[0].get<std::string>());
        EXPECT_EQ(LocaleOfSettings(settings), row[1]);
    }
}

TEST_F(Machine, DocumentsFolderComesFromTheUsersSettings) {
    for (const json& row : TestCases("documents folders")) {  // settings, folder with ~ for the home folder
        SCOPED_TRACE(row);
        WriteFile(m_home + "/.config/user-dirs.dirs", row[0].get<std::string>());
        std::string expected = row[1];
        EXPECT_EQ(GetDocumentsDirectory(), expected[0] == '~' ? expected.replace(0, 1, m_home) : expected);
    }
    SetVariable("HOME", nullptr);
    EXPECT_TRUE(GetDocumentsDirectory().starts_with('/')) << "the password database was not asked";
}
