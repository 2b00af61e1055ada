#pragma once

#include "simulation/Browser.h"

#include <gtest/gtest.h>

/** A host that serves, and a page of it. The host is stopped at the end of the test at the latest. */
class Served : public testing::Test {
  protected:
    void TearDown() override { EXPECT_EQ(host.Stop(), 0) << host.Process().ErrorOutput(); }

    simulation::HostProcess host;
    simulation::Browser browser{[this]() -> const simulation::HostProcess& {
        host.Start();
        return host;
    }()};
};
