#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

/** How long something took, many times over: one moment of a CHistogram. */
struct STimes {
    /** Upper bounds in microseconds. What took longer than the last is counted beyond them. */
    static constexpr std::array<std::int64_t, 16> kBounds = {
        50,     100,    250,     500,     1'000,   2'500,     5'000,     10'000,
        25'000, 50'000, 100'000, 250'000, 500'000, 1'000'000, 2'500'000, 5'000'000};

    std::array<std::uint64_t, kBounds.size() + 1> counts{};  ///< each without those before
    std::uint64_t nanoseconds = 0;                           ///< all together
};

/** Counts times by their length. Any thread; waits for nothing. */
class CHistogram {
  public:
    void Note(std::chrono::nanoseconds time) {
        const std::int64_t micros = (time.count() + 999) / 1000;
        const auto bound = std::lower_bound(STimes::kBounds.begin(), STimes::kBounds.end(), micros);
        const auto index = static_cast<std::size_t>(bound - STimes::kBounds.begin());
        m_counts[index].fetch_add(1, std::memory_order_relaxed);
        m_nanoseconds.fetch_add(static_cast<std::uint64_t>(std::max<std::int64_t>(time.count(), 0)),
                                std::memory_order_relaxed);
    }

    /** What has been noted. Times that are noted meanwhile may be in one figure and not yet in another. */
    STimes Read() const {
        STimes times;
        for (std::size_t i = 0; i < m_counts.size(); ++i) {
            times.counts[i] = m_counts[i].load(std::memory_order_relaxed);
        }
        times.nanoseconds = m_nanoseconds.load(std::memory_order_relaxed);
        return times;
    }

  private:
    std::array<std::atomic<std::uint64_t>, STimes::kBounds.size() + 1> m_counts{};
    std::atomic<std::uint64_t> m_nanoseconds = 0;
};
