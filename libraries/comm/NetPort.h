#pragma once

#include "libraries/comm/ErrorNumbers.h"
#include "libraries/comm/NameResolver.h"
#include "libraries/comm/Port.h"
#include "platform/PortRecords.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <boost/asio/io_context.hpp>

namespace comm {

/** What a network port needs from the library. The library outlives its use by the ports. */
struct SNetContext {
    boost::asio::io_context& io;
    CNameResolver& resolver;
    const SCommSettings& settings;
    std::atomic<int>& probes;  ///< silent devices that are tried in the background
};

/**
 * A network port: a TCP client, a TCP server or a UDP socket. Any thread may call; the handlers of its
 * sockets run on the library's own thread, and take its lock.
 */
class CNetPort : public CPort, public std::enable_shared_from_this<CNetPort> {
  public:
    /** An opening that has begun. */
    struct SOpening {
        EnError error = ErrorNone;   ///< of what could be done at once
        Clock::time_point deadline;  ///< of the rest
        std::uint64_t attempt = 0;   ///< the attempt to connect that is to be waited for; 0: none
        bool joinsProbe = false;     ///< which nobody had asked for, and may have begun long before
    };

    /** Begins to make the port ready for a record. Does not wait. */
    [[nodiscard]] virtual SOpening BeginOpen(const SNetPortConfig& record) = 0;

    /** Waits until the port is ready for the record; 0 or an error number. Bounded by the settings. */
    [[nodiscard]] EnError FinishOpen(const SNetPortConfig& record, const SOpening& opening);

    /** Sends bytes, at least one, to what the record names; 0 or an error number. Bounded by the settings. */
    [[nodiscard]] EnError Send(const SNetPortConfig& record, std::string_view bytes);

    /** A record is deleted. @return true when no other record uses the port, which is to be closed then */
    [[nodiscard]] bool Release(const SNetPortConfig& record);

    /** Lets a port of another local address have the same local port. */
    virtual void Share() {}

    /** True when nothing is lost with the port: no record uses it, and nothing of it is open or under way. */
    bool IsUnused();

  protected:
    using Addresses = std::vector<boost::asio::ip::address>;

    CNetPort(const SNetContext& context, std::string name) : CPort(std::move(name)), m_context(context) {}

    /** Waits for what an opening has begun. @return as FinishOpen */
    virtual EnError AwaitOpen(const SOpening& opening) { return opening.error; }

    /** What Send does for a kind of port. */
    virtual EnError SendBytes(const SNetPortConfig& record, std::string_view bytes) = 0;

    /** True unless the record has been deleted since the port was opened for it, or sent something. */
    bool IsUser(const SNetPortConfig& record) const REQUIRES_LOCK(m_mutex) {
        return m_users.contains(UserOf(record));
    }

    /** Nothing is open or under way. */
    virtual bool IsIdle() const REQUIRES_LOCK(m_mutex) = 0;

    /** Until when a send that begins now may take. */
    Clock::time_point Deadline() const;

    /**
     * Calls isKnown(), which looks at connections, again and again until it holds. News that the system keeps
     * for a handler under way usually arrives at once, but late on a busy machine. The lock is free in
     * between.
     * @return as WaitUntil
     */
    template <typename IsKnown>
    [[nodiscard]] EnError LookUntil(Lock& lock, Clock::time_point deadline, IsKnown isKnown)
        REQUIRES_LOCK(m_mutex) {
        while (!m_closed && !isKnown()) {
            const auto now = Clock::now();
            if (now >= deadline) {
                return ErrorTimedOut;
            }
            m_changed.wait_until(lock.Native(), std::min(deadline, now + std::chrono::milliseconds(1)));
        }
        return m_closed ? ErrorCut : ErrorNone;
    }

    /** The address in a text; none for a host name. */
    static std::optional<boost::asio::ip::address> Literal(const std::string& host);

    /**
     * The addresses that host means: itself, when it is a literal. Waits for them with the lock given up;
     * when the name server doesn't answer, what the name meant before has to do.
     */
    [[nodiscard]] EnError Resolve(Lock& lock, const std::string& host, Clock::time_point deadline,
                                  Addresses& addresses) REQUIRES_LOCK(m_mutex);

    const SNetContext m_context;

  private:
    /** Notes a record that uses the port: one that it is ready for, or that something was to be sent for. */
    void Use(const SNetPortConfig& record);

    using User = std::tuple<std::string, std::string, std::int32_t>;
    using UserView = std::tuple<std::string_view, std::string_view, std::int32_t>;
    struct SUserLess {
        using is_transparent = void;  // a look-up builds no text
        bool operator()(const UserView& a, const UserView& b) const { return a < b; }
    };
    static UserView UserOf(const SNetPortConfig& record) {
        return {record.ipAddress, record.dstIpAddress, record.dstPort};
    }

    /**
     * Local address and remote pair of the records that use the port: those that can differ. The address as
     * it is spelled, since all spellings of "any" have one port.
     */
    std::set<User, SUserLess> m_users GUARDED_BY(m_mutex);
};

}  // namespace comm
