// Gives the test program a home folder of its own, before anything reads the configuration.

#include "simulation/Machine.h"
#include "simulation/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

class TemporaryHome : public testing::Environment {
  public:
    TemporaryHome() { simulation::SetHome(m_folder.Path()); }

  private:
    const simulation::TemporaryFolder m_folder;
};

const testing::Environment* const kHome = testing::AddGlobalTestEnvironment(new TemporaryHome);

}  // namespace
