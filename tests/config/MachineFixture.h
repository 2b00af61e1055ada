#pragma once

#include "include/GlobalConfig.h"
#include "simulation/Machine.h"
#include "tests/config/TestCases.h"

/** The configuration of a machine whose user has a new home folder. */
class Machine : public testing::Test {
  protected:
    Machine() { simulation::SetHome(m_folder.Path()); }

    static bool FailsWith(const std::string& text) {
        return FailureOf([] { SGlobalConfig(); }).find(text) != std::string::npos;
    }

    const simulation::TemporaryFolder m_folder;
    const std::string m_home = m_folder.Path().string();
    const std::string m_data =
        (m_folder.Path() / "Documents" / simulation::Differences::kUserFolder).string();
    const std::string m_file = (fs::path(m_data) / "LocalHost.config").string();
};
