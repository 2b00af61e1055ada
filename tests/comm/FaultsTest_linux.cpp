#include "tests/comm/CommFixture.h"

#include <cstdlib>
#include <future>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

namespace {

/** Two network namespaces with a cable between them: 10.9.0.1 here, 10.9.0.2 there. For a thread of its own.
 */
class Cable {
  public:
    Cable() : m_there(NewNetwork()), m_here(NewNetwork()) {
        Run("ip link add here type veth peer name there");
        Run("ip link set there netns /proc/self/fd/" + std::to_string(m_there));
        There([] { Run("ip addr add 10.9.0.2/24 dev there && ip link set there up && ip link set lo up"); });
        Run("ip addr add 10.9.0.1/24 dev here && ip link set here up");
    }
    static void Run(const std::string& command) { ASSERT_EQ(std::system(command.c_str()), 0) << command; }

    /** Does something in the other network. */
    template <typename Action>
    void There(Action action) const {
        setns(m_there, CLONE_NEWNET);
        action();
        setns(m_here, CLONE_NEWNET);
    }

  private:
    static int NewNetwork() {
        EXPECT_EQ(unshare(CLONE_NEWNET), 0) << "this test needs root";
        return open("/proc/thread-self/ns/net", O_RDONLY);
    }

    int m_there;
    int m_here;
};

TEST(Network, TellsWhyADeviceCannotBeReached) {
    std::async(std::launch::async, [] {
        CommFixture comm(comm::SCommSettings{});
        const Cable cable;
        Cable::Run("ip route add unreachable 192.0.2.0/24 && ip route add prohibit 198.51.100.0/24");
        const std::vector<std::pair<const char*, int>> cases = {
            {"203.0.113.1", 10051}, {"192.0.2.1", 10065}, {"198.51.100.1", 10013}, {"10.9.0.2", 10061}};
        for (const auto& [address, error] : cases) {
            EXPECT_EQ(comm.Send(CommFixture::Client(9, address), "a"), error) << address;
        }
        const int off = comm.Send(CommFixture::Client(9, "10.9.0.77"), "a");
        EXPECT_TRUE(off == 10060 || off == 10065) << off;
    }).get();
}

TEST(Network, NoticesACableThatIsCut) {
    for (const bool inFlight : {false, true}) {
        std::async(std::launch::async, [inFlight] {
            CommFixture comm(comm::SCommSettings{});
            const Cable cable;
            simulation::Socket listener;
            cable.There([&] { listener = simulation::Socket::Listen(0, 128, "10.9.0.2"); });
            const auto record = CommFixture::Client(listener.LocalPort(), "10.9.0.2");
            ASSERT_EQ(comm.Send(record, "a"), 0);
            cable.There([] { Cable::Run("ip link set there down"); });
            if (inFlight) {
                EXPECT_EQ(comm.Send(record, "lost"), 0);
            }
            EXPECT_TRUE(simulation::WaitUntil([&] { return comm.Open(record) != 0; }));
            const int error = comm.Send(record, "a");
            EXPECT_TRUE(error == 10060 || error == 10065) << error;
            cable.There([] { Cable::Run("ip link set there up"); });
            EXPECT_TRUE(simulation::WaitUntil([&] { return comm.Send(record, "b") == 0; }));
        }).get();
    }
}

}  // namespace
