// The text for a monitoring program keeps the rules of its own checker.

#include "tests/integration/Served.h"

namespace {

using namespace simulation;

class Metrics : public Served {};

TEST_F(Metrics, KeepTheRulesOfTheirFormat) {
    EXPECT_EQ(browser.AddNet("Bei \"mir\" \\ 会议室\n", "UDP", 0, 9), 20000);
    const TemporaryFolder folder;
    WriteFile(folder.Path() / "metrics", browser.Http().Get("/metrics").body);
    const std::string promtool = TEST_TABLES "/../../scripts/promtool";
    ChildProcess check(
        {{"sh", "-c", "exec \"$0\" check metrics < \"$1\"", promtool, (folder.Path() / "metrics").string()},
         {},
         folder.Path(),
         {}});
    EXPECT_EQ(check.WaitExit(), 0);
    EXPECT_EQ(check.ErrorOutput() + check.Output(), "");
}

}  // namespace
