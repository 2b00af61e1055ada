#pragma once

#include "platform/Mutex.h"
#include "platform/PortListener.h"
#include "platform/SendOrigin.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/** A command, or bytes that a device has sent. */
struct STrafficEntry {
    using Time = std::chrono::system_clock::time_point;

    std::uint64_t id = 0;
    Time time;
    bool out = false;
    bool isCut = false;  ///< bytes holds only the first of them
    std::string bytes;   ///< at most CTrafficRing::kLongestEntry
    std::string peer;    ///< as SPortPeer::address
    int error = 0;       ///< of a command: 0, or why it was not sent
    EnSendSource source = EnSendSource::Unknown;
    std::int32_t nodeId = 0;  ///< of a command: its interface; 0: unknown
    std::int32_t component = 0;
    std::string trigger;
    std::string command;
    std::string client;
};

/** What all rings together take, and the numbers of their entries. Any thread. */
struct STrafficShare {
    explicit STrafficShare(std::size_t bytesOfAll);

    const std::size_t limit;            ///< bytes
    std::atomic<std::size_t> used = 0;  ///< bytes of the rings' chunks
    std::atomic<std::uint64_t> lastId;  ///< grows over restarts: begins with the microseconds since 1970
};

/**
 * The last traffic of one port. An entry costs a copy of its bytes; memory is taken and given back in chunks
 * that are shared with readers, so that a reader holds the lock for a moment only. Any thread.
 */
class CTrafficRing {
  public:
    static constexpr std::size_t kChunk = std::size_t{16} * 1024;
    static constexpr std::size_t kChunksAtMost = 16;  ///< 256 KiB
    static constexpr std::size_t kLongestEntry = 4096;

    /** What a reader gets. */
    struct SRead {
        std::vector<STrafficEntry> entries;  ///< oldest first
        std::uint64_t last = 0;              ///< number of the last entry that was looked at
        bool isMissed = false;               ///< some after the given number had been dropped
        std::uint64_t dropped = 0;           ///< entries that were dropped since the ring began
    };
    using Filter = std::function<bool(const STrafficEntry& entry)>;

    explicit CTrafficRing(STrafficShare& share) : m_share(share) {}
    ~CTrafficRing();
    CTrafficRing(const CTrafficRing&) = delete;
    CTrafficRing& operator=(const CTrafficRing&) = delete;

    /** @return false when other rings have all memory: the entry is dropped, unless one gives some back */
    [[nodiscard]] bool AddSent(std::string_view bytes, int error, const SSendOrigin* origin);

    /**
     * As AddSent. Bytes that a stream goes on with within 20 ms join its last entry, as long as nobody has
     * read it and it does not get longer than kLongestEntry.
     */
    [[nodiscard]] bool AddReceived(const SPortPeer& peer, std::string_view bytes);

    /** Gives the oldest chunk back. @return false when there is none */
    bool DropOldest();

    /** Notes an entry that no memory could be found for. */
    void NoteDropped();

    /** Chunks that it has. */
    std::size_t Chunks() const { return m_count; }

    /** Number of the oldest entry, once there has been one. */
    std::uint64_t Oldest() const { return m_oldest; }

    /** Entries with a greater number than after that a filter keeps: 500 and 256 KiB of bytes at most. */
    SRead Read(std::uint64_t after, const Filter& keeps);

  private:
    struct SHead;
    struct SChunk;

    /** Takes room for an entry; null when there is none. */
    char* Room(std::size_t size, std::uint64_t id) REQUIRES_LOCK(m_mutex);
    bool Append(SHead& head, const std::array<std::string_view, 4>& texts, std::string_view bytes)
        REQUIRES_LOCK(m_mutex);
    bool Join(const SPortPeer& peer, std::string_view bytes, STrafficEntry::Time now) REQUIRES_LOCK(m_mutex);
    void Forget() REQUIRES_LOCK(m_mutex);
    void NoteChunks() REQUIRES_LOCK(m_mutex);

    STrafficShare& m_share;
    CMutex m_mutex;
    std::deque<std::shared_ptr<SChunk>> m_chunks GUARDED_BY(m_mutex);
    char* m_joinable GUARDED_BY(m_mutex) = nullptr;  ///< last entry, while it may get longer
    STrafficEntry::Time m_joinUntil GUARDED_BY(m_mutex);
    std::uint64_t m_lastDropped GUARDED_BY(m_mutex) = 0;  ///< number of the last entry that was dropped
    std::uint64_t m_dropped GUARDED_BY(m_mutex) = 0;
    std::atomic<std::size_t> m_count = 0;
    std::atomic<std::uint64_t> m_oldest = 0;
};
