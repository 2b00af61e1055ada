#pragma once

#include "equipment/TrafficRing.h"
#include "platform/PortListener.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

/**
 * The last traffic of all ports. A listener of the port library: an entry costs a look-up and a copy under
 * the lock of its ring, which nobody holds for long. When the rings together have all memory, the largest of
 * them, of several the one with the oldest entry, gives its oldest entries back. Any thread.
 */
class CTraffic final : public CPortListener {
  public:
    /** @param bytesOfAll  what all rings together may take; at least 1 MiB is taken for it */
    explicit CTraffic(std::size_t bytesOfAll);

    /** The traffic of a port from its ring; nothing when the port has had none. @param after, keeps  as
     * CTrafficRing::Read */
    CTrafficRing::SRead Read(std::uint64_t port, std::uint64_t after, const CTrafficRing::Filter& keeps);

    void OnSent(std::uint64_t port, std::string_view bytes, int error) noexcept override;
    void OnReceived(std::uint64_t port, const SPortPeer& peer, std::string_view bytes) noexcept override;
    void OnState(std::uint64_t port, EnPortState state) noexcept override;
    void OnEnded(std::uint64_t port) noexcept override;

    /** Number of the newest entry. */
    std::uint64_t Last() const { return m_share.lastId; }

    /** Bytes that the rings have. */
    std::size_t Used() const { return m_share.used; }

  private:
    using Ring = std::shared_ptr<CTrafficRing>;

    Ring Find(std::uint64_t port);
    Ring FindOrMake(std::uint64_t port);
    /** Lets the largest ring, of several the oldest, give its oldest chunk back. @return false when there is
     * none */
    bool MakeRoom();
    template <typename Add>
    void AddTo(std::uint64_t port, Add add) noexcept;

    STrafficShare m_share;
    CSharedMutex m_mutex;
    std::unordered_map<std::uint64_t, Ring> m_rings GUARDED_BY(m_mutex);
};

/** Begins to keep the traffic of all interfaces, unless TrafficLimit() is 0. Once, before a port is opened.
 */
void StartTraffic();

/** Whether traffic is kept. */
bool IsTrafficKept();

/** Number of the newest entry of all interfaces; 0 when no traffic is kept. */
std::uint64_t LastTrafficNumber();

/** The name of an interface, and its traffic after an entry's number. */
struct SInterfaceTraffic {
    std::string name;
    bool isNet = false;
    CTrafficRing::SRead read;
};

/**
 * The traffic of an interface; nothing when it does not exist. Of a port that it shares, what was sent
 * through it and what came from a device that it means. Waits for no device. Any thread.
 */
std::optional<SInterfaceTraffic> TrafficOf(std::int32_t nodeId, std::uint64_t after);
