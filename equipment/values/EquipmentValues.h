#pragma once

#include "equipment/values/EquipmentConfig.h"
#include "equipment/values/MessageStreams.h"
#include "equipment/values/PollPlan.h"
#include "equipment/values/ValueStore.h"
#include "platform/Mutex.h"
#include "platform/PortListener.h"

#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

/**
 * The values of the running server: hears what the devices send, and asks them. Without a device in the
 * document it hears nothing and has no thread. What a device sends is understood on the thread that has
 * received it. One thread keeps the times, and at most four send the polls. Any thread.
 */
class CEquipmentValues final : public CPortListener {
  public:
    /** The only one; lives to the end of the process, and its threads end before that. */
    static CEquipmentValues& Instance();

    /** Works by this document from now on. */
    void Configure(SEquipmentConfig config);

    /** As CValueStore::Read. The devices of values that are named are asked from now on for 10 s. */
    SValueChanges Read(std::uint64_t after, const std::set<std::string>* names);

    /** The device of the interface with this node id, if the document has one, is asked from now on for 10 s.
     */
    void Ask(std::int64_t nodeId);

    void OnSent(std::uint64_t port, std::string_view bytes, int error) noexcept override;
    void OnReceived(std::uint64_t port, const SPortPeer& peer, std::string_view bytes) noexcept override;
    void OnState(std::uint64_t port, EnPortState state) noexcept override;
    void OnEnded(std::uint64_t port) noexcept override;

  private:
    using Time = std::chrono::steady_clock::time_point;

    /** A device that uses a port. */
    struct SPortUser {
        std::size_t device = 0;
        std::optional<SNetPortConfig> net{};  ///< nothing: a serial line
    };
    using PortUsers = std::unordered_map<std::uint64_t, std::vector<SPortUser>>;

    /** What came through a port before it was known who uses it. */
    struct SEarly {
        std::uint64_t port = 0;
        std::uint64_t sender = 0;
        std::string address;
        std::string bytes;
    };

    /** A port that is not open, and since when. */
    struct SLost {
        std::size_t device = 0;
        SPortReport::Time since;
    };

    CEquipmentValues();
    void Stop();
    void Watch(std::size_t device, Time now) REQUIRES_LOCK(m_mutex);
    void KeepTimes();
    void SendPolls();
    void FindPorts();
    std::set<std::int32_t> TakeTooLong(Time now) REQUIRES_LOCK(m_mutex);
    void Take(const SPortUser& user, std::uint64_t sender, std::string_view address, std::string_view bytes)
        REQUIRES_LOCK(m_mutex);
    void TakeEarly() REQUIRES_LOCK(m_mutex);
    void NoteLost(std::uint64_t port) REQUIRES_LOCK(m_mutex);
    void CallSender() REQUIRES_LOCK(m_mutex);
    void Wake() REQUIRES_LOCK(m_mutex);

    std::atomic<bool> m_isOn = false;  ///< there are devices
    CMutex m_mutex;                    ///< under it, no other lock is taken
    std::condition_variable m_woken;
    std::condition_variable m_hasWork;
    bool m_isWoken GUARDED_BY(m_mutex) = false;
    bool m_isStopping GUARDED_BY(m_mutex) = false;
    bool m_isHearing GUARDED_BY(m_mutex) = false;
    bool m_portsAreOld GUARDED_BY(m_mutex) = false;
    std::shared_ptr<const SEquipmentConfig> m_config GUARDED_BY(m_mutex);
    CValueStore m_values GUARDED_BY(m_mutex){std::chrono::system_clock::now()};
    CMessageStreams m_streams GUARDED_BY(m_mutex);
    CPollPlan m_polls GUARDED_BY(m_mutex);
    PortUsers m_users GUARDED_BY(m_mutex);
    std::vector<SEarly> m_early GUARDED_BY(m_mutex);
    std::size_t m_earlyBytes GUARDED_BY(m_mutex) = 0;
    std::set<std::int32_t> m_tooLong GUARDED_BY(m_mutex);  ///< interfaces whose message was too long
    std::map<std::int32_t, Time> m_told GUARDED_BY(m_mutex);
    std::thread m_timer GUARDED_BY(m_mutex);
    std::vector<std::thread> m_senders GUARDED_BY(m_mutex);
    int m_idleSenders GUARDED_BY(m_mutex) = 0;
};
