#pragma once

#include "platform/Mutex.h"
#include "platform/PortListener.h"
#include "simulation/Equipment.h"

#include <map>
#include <set>
#include <string>
#include <utility>

#include <gtest/gtest.h>

/** Notes what the ports tell, each port by itself. */
class CRecordingListener : public CPortListener {
  public:
    /** The only one; it listens from its first use on. */
    static CRecordingListener& Get() {
        static CRecordingListener& listener = *new CRecordingListener;
        ListenToPorts(&listener);
        return listener;
    }

    /** Waits for these events of a port, and clears them. Bytes of one peer in a row are one event. */
    void Expect(std::uint64_t port, const std::string& events) {
        EXPECT_TRUE(simulation::WaitUntil([&] {
            const CLock lock(m_mutex);
            return m_events[port].text.size() >= events.size();
        }));
        const CLock lock(m_mutex);
        EXPECT_EQ(std::exchange(m_events[port], {}).text, events);
    }

    /** The numbers of all peers of a port that have sent something. */
    std::set<std::uint64_t> Peers(std::uint64_t port) {
        const CLock lock(m_mutex);
        return m_peers[port];
    }

    void OnSent(std::uint64_t port, std::string_view bytes, int error) noexcept override {
        Note(port, "sent " + std::to_string(error) + ":", bytes);
    }
    void OnReceived(std::uint64_t port, const SPortPeer& peer, std::string_view bytes) noexcept override {
        Note(port, "from " + std::string(peer.address) + ":", bytes);
        const CLock lock(m_mutex);
        m_peers[port].insert(peer.number);
    }
    void OnState(std::uint64_t port, EnPortState state) noexcept override {
        Note(port, "state ", std::to_string(static_cast<int>(state)));
    }
    void OnEnded(std::uint64_t port) noexcept override { Note(port, "ended", ""); }

  private:
    struct SEvents {
        std::string text;
        std::string last;
    };

    void Note(std::uint64_t port, const std::string& head, std::string_view bytes) {
        const CLock lock(m_mutex);
        SEvents& events = m_events[port];
        if (events.last != head || !head.starts_with("from")) {
            events.text += (events.text.empty() ? "" : " | ") + head;
            events.last = head;
        }
        events.text += bytes;
    }

    CMutex m_mutex;
    std::map<std::uint64_t, SEvents> m_events GUARDED_BY(m_mutex);
    std::map<std::uint64_t, std::set<std::uint64_t>> m_peers GUARDED_BY(m_mutex);
};
