#include "simulation/ChildProcess.h"
#include "simulation/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

// Of a module, since its threads are what the system may have ended before its objects are taken down.
TEST(ProcessEnd, CallsTheLastFirstWhileThreadsStillRun) {
    for (const char* end : {"return", "exit"}) {
        SCOPED_TRACE(end);
        const simulation::TemporaryFolder folder;
        simulation::ChildProcess program({{PROCESS_END_PROGRAM, end}, {}, folder.Path(), {}});
        EXPECT_EQ(program.WaitExit(), 3);
        EXPECT_EQ(simulation::ReadTextFile(folder.Path() / "stdout.txt"),
                  "end of main\nlast: the thread answers\nfirst: the thread answers\n")
            << program.ErrorOutput();
    }
}

}  // namespace
