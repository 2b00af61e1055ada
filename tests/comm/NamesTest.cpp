// Host names, with a name server that a test plays.

#include "simulation/Equipment.h"
#include "tests/comm/CommFixture.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace {

using simulation::milliseconds;

/** Answers for all names alike; counts the questions. A look-up may outlive it. */
class NameServer {
  public:
    void Answer(const std::vector<const char*>& addresses) {
        const std::lock_guard lock(m_state->mutex);
        m_state->result.addresses.clear();
        for (const char* address : addresses) {
            m_state->result.addresses.push_back(boost::asio::ip::make_address(address));
        }
        m_state->result.error = addresses.empty() ? comm::ErrorNoHost : comm::ErrorNone;
    }

    /** Questions from now on hang until it goes. */
    std::promise<void> Hang() {
        std::promise<void> end;
        const std::lock_guard lock(m_state->mutex);
        m_state->hanging = end.get_future().share();
        return end;
    }

    comm::CNameResolver::Ask Ask() {
        return [state = m_state](const std::string&) {
            std::unique_lock lock(state->mutex);
            ++state->questions;
            comm::SResolved result = state->result;
            const auto hanging = state->hanging;
            lock.unlock();
            if (hanging.valid()) {
                hanging.wait();
            }
            return result;
        };
    }

    int Questions() const { return m_state->questions; }

  private:
    struct SState {
        std::mutex mutex;
        comm::SResolved result;
        std::shared_future<void> hanging;
        std::atomic<int> questions = 0;
    };
    const std::shared_ptr<SState> m_state = std::make_shared<SState>();
};

comm::SCommSettings Settings() {
    comm::SCommSettings settings = CommFixture::Settings(milliseconds(2000));
    settings.joinPause = milliseconds(50);
    return settings;
}

TEST(Names, GiveTheAddressesThatAUdpSocketCanReachOneAfterTheOther) {
    struct SCase {
        const char* name;
        const char* local;
        std::vector<const char*> addresses;
        int sent;
    };
    const std::vector<SCase> cases = {
        {"the family of the local address", "127.0.0.1", {"::1", "127.0.0.1"}, 0},
        {"IPv4 first", "", {"::1", "127.0.0.1"}, 0},
        {"the next where one can't be reached", "127.0.0.1", {"192.0.2.1", "127.0.0.1"}, 0},
        {"none of the family", "127.0.0.1", {"::1"}, 10049},
    };
    for (const auto& [name, local, addresses, sent] : cases) {
        NameServer server;
        server.Answer(addresses);
        CommFixture comm(Settings(), server.Ask());
        const simulation::UdpListener device;
        SNetPortConfig record = CommFixture::Udp(0, device.Port(), "device");
        record.ipAddress = local;
        ASSERT_EQ(comm.Send(record, "a"), sent) << name;
        if (sent == 0) {
            EXPECT_EQ(device.Received().WaitBytes(1), "a") << name;
        }
    }
}

TEST(Names, KeepTheirLastAddressWhileNobodyCanTellAnother) {
    NameServer server;
    comm::SCommSettings settings = Settings();
    settings.resolvedAge = settings.resolvePause = milliseconds(0);
    server.Answer({"127.0.0.1"});
    CommFixture comm(settings, server.Ask());
    const simulation::UdpListener datagrams;
    const simulation::TcpListener connections;
    const SNetPortConfig records[] = {CommFixture::Udp(0, datagrams.Port(), "device"),
                                      CommFixture::Client(connections.Port(), "device")};
    const auto expectSent = [&](const char* why) {
        for (const SNetPortConfig& record : records) {
            EXPECT_EQ(comm.Send(record, "a"), 0) << why << record.netMode;
            comm.registry.DeleteTcp(record);
        }
    };
    expectSent("known");
    server.Answer({});
    expectSent("the name server failed");
    std::promise<void> end = server.Hang();
    const auto begin = comm::Clock::now();
    expectSent("the name server hangs");
    EXPECT_LT(comm::Clock::now() - begin, settings.bound);
    end.set_value();
    EXPECT_EQ(datagrams.Received().WaitBytes(3) + connections.Received().WaitBytes(3), "aaaaaa");
}

TEST(Names, AreNotLookedUpByEachClickAndNotKeptForEver) {
    NameServer server;
    server.Answer({});
    comm::SCommSettings settings = Settings();
    settings.maxNames = 3;
    CommFixture comm(settings, server.Ask());
    const std::pair<const char*, int> questions[] = {{"first", 1}, {"first", 1},  {"second", 2},
                                                     {"third", 3}, {"fourth", 4}, {"first", 5}};
    for (const auto& [name, asked] : questions) {
        EXPECT_EQ(comm.Send(CommFixture::Udp(0, 9, name), "a"), 11001);
        EXPECT_EQ(server.Questions(), asked)
            << "a failed look-up rests; the fourth takes the place of the first";
    }
    std::promise<void> end = server.Hang();
    std::vector<std::future<int>> clicks(4);
    for (auto& click : clicks) {
        click = comm.SendLater(CommFixture::Udp(0, 9, "hangs"), "a");
    }
    ExpectOneToWait(clicks, settings.bound);
    end.set_value();
}

TEST(Names, LetNoSendNoteARecordThatWasReleasedMeanwhile) {
    NameServer server;
    server.Answer({"127.0.0.1"});
    CommFixture comm(Settings(), server.Ask());
    const int port = simulation::FreePort();
    const auto named = CommFixture::Server(port, "device");
    const auto other = CommFixture::Server(port);
    ASSERT_EQ(comm.Open(named) + comm.Open(other), 0);
    std::promise<void> end = server.Hang();
    auto sender = comm.SendLater(named, "a");
    EXPECT_TRUE(simulation::WaitUntil([&] { return server.Questions() == 1; }));
    comm.registry.DeleteTcp(named);
    end.set_value();
    EXPECT_EQ(sender.get(), 995);
    comm.registry.DeleteTcp(other);
    EXPECT_EQ(comm.registry.PortCount(), 0U);
    EXPECT_NO_THROW(simulation::Socket::Listen(port)) << "the listener stays open";
}

}  // namespace
