// The turns of a port's calls.

#include "libraries/comm/Port.h"
#include "simulation/Wait.h"

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>

namespace {

class FailingPort : public comm::CPort {
  public:
    FailingPort() : CPort("port") {}
    void Close() override {}

    /** A call that gives up the lock, and fails once it may. */
    void Fail(std::atomic<bool>& hasTurn, const std::atomic<bool>& mayFail) try {
        Lock lock(m_mutex);
        const CTurn turn(*this, lock, comm::Clock::now() + simulation::kMaxTestWait);
        lock.Native().unlock();
        hasTurn = true;
        simulation::WaitUntil([&] { return mayFail.load(); });
        throw std::runtime_error("failed");
    } catch (const std::runtime_error&) {
        hasTurn = false;
    }

    int TakeTurn() {
        Lock lock(m_mutex);
        return CTurn(*this, lock, comm::Clock::now() + simulation::kMaxTestWait).Error();
    }
    std::unique_lock<std::mutex> Hold() { return std::unique_lock<std::mutex>(m_mutex); }
};

// Whoever looks whether a turn is free, and then waits for the news of it, would miss the news.
TEST(Port, TakesTheLockBackBeforeTheTurnOfAFailedCallEnds) {
    FailingPort port;
    std::atomic<bool> hasTurn = false;
    std::atomic<bool> mayFail = false;
    const std::jthread call([&] { port.Fail(hasTurn, mayFail); });
    ASSERT_TRUE(simulation::WaitUntil([&] { return hasTurn.load(); }));
    {
        const auto lock = port.Hold();
        mayFail = true;
        constexpr simulation::milliseconds kEnoughForAFailure(200);
        EXPECT_FALSE(simulation::WaitUntil([&] { return !hasTurn; }, kEnoughForAFailure));
    }
    EXPECT_EQ(port.TakeTurn(), comm::ErrorNone);
    EXPECT_TRUE(simulation::WaitUntil([&] { return !hasTurn; }));
}

}  // namespace
