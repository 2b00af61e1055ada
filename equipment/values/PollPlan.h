#pragma once

#include "equipment/values/EquipmentConfig.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <queue>
#include <set>
#include <vector>

/** A poll to be sent. */
struct SPollJob {
    std::int32_t nodeId = 0;
    SPoll poll;
    std::size_t device = 0;
    std::size_t number = 0;      ///< of the poll, in its device
    std::uint64_t document = 0;  ///< number of the document that it belongs to
    std::chrono::steady_clock::time_point begin{};
};

/**
 * When which device is asked. At most one poll of a device is under way. A device that could not be asked is
 * asked again after a pause, which doubles each time, and such devices never take all places. Polls sleep
 * while nobody watches their device. One thread at a time; sends nothing itself.
 */
class CPollPlan {
  public:
    using Time = std::chrono::steady_clock::time_point;

    /** Takes the polls of another document. What is known about an interface stays. */
    void Configure(std::shared_ptr<const SEquipmentConfig> config, Time now);

    /** Somebody looks at values of a device until then. @return whether nobody did before */
    bool Watch(std::size_t device, Time until, Time now);

    /** The next poll to be sent now; Done has to be called for it. Nothing when there is none. */
    std::optional<SPollJob> Take(Time now);

    /** Whether Take would give something. */
    bool HasWork(Time now);

    /** A poll was sent, or not. */
    void Done(const SPollJob& job, bool isSent, Time now);

    /** When a poll is due next, if ever. */
    std::optional<Time> NextDue() const;

  private:
    struct SDevice {
        std::int32_t nodeId = 0;
        bool isBusy = false;
        bool isQueued = false;
        bool isSound = false;  ///< the last poll could be sent
        int failures = 0;      ///< in a row
        Time pausesUntil{};
        Time watchedUntil{};
        std::deque<std::size_t> ready{};   ///< polls that are due
        std::set<std::size_t> sleeping{};  ///< polls that wait for somebody to watch
    };

    struct SDue {
        Time time;
        std::size_t device = 0;
        std::size_t poll = 0;
        bool operator>(const SDue& other) const { return time > other.time; }
    };

    void Advance(Time now);
    void Queue(std::size_t device);
    bool MayTakeFailing() const;

    std::shared_ptr<const SEquipmentConfig> m_config = std::make_shared<const SEquipmentConfig>();
    std::uint64_t m_document = 0;
    std::vector<SDevice> m_devices;
    std::priority_queue<SDue, std::vector<SDue>, std::greater<>> m_due;
    std::deque<std::size_t> m_sound;    ///< devices with ready polls
    std::deque<std::size_t> m_failing;  ///< those of them that could not be asked the last time
    std::multiset<std::int32_t> m_failingUnderWay;
};
