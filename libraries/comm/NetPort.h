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
        EnError error = ErrorNone;   ///< result of what could be done at once
        Clock::time_point deadline;  ///< end of the wait for the rest
        std::uint64_t attempt =
            0;                    ///< number of the attempt to connect that remains to be waited for; 0: none
        bool joinsProbe = false;  ///< the attempt is one in the background, which may have begun long before
    };

    /** Begins to make the port ready for a record. Does not wait. */
    [[nodiscard]] virtual SOpening BeginOpen(const SNetPortConfig& record) = 0;

    /** Waits until the port is ready for the record, within the limit of the settings. @return 0 or an error
     * number */
    [[nodiscard]] EnError FinishOpen(const SNetPortConfig& record, const SOpening& opening);

    /** Sends at least one byte to what the record names, within the limit of the settings. @return 0 or an
     * error number */
    [[nodiscard]] EnError Send(const SNetPortConfig& record, std::string_view bytes);

    /** The number of connected devices that a record names. */
    virtual std::size_t PeersOf(const SNetPortConfig& /*record*/) { return 0; }

    /** Takes back the use of a deleted record. @return true when no other record uses the port: the caller
     * closes it */
    [[nodiscard]] bool Release(const SNetPortConfig& record);

    /** Allows a port with another local address to use the same local port number. */
    virtual void Share() {}

    /** True when the port can be dropped: no record uses it, and nothing is open or under way. */
    bool IsUnused();

  protected:
    using Addresses = std::vector<boost::asio::ip::address>;

    CNetPort(const SNetContext& context, std::string name) : CPort(std::move(name)), m_context(context) {}

    /** Sends as Send describes. Tells of a sent command under the lock: before an answer is read. */
    [[nodiscard]] virtual EnError Deliver(const SNetPortConfig& record, std::string_view bytes) = 0;

    /** Waits for the end of an opening that has begun. @return as FinishOpen */
    virtual EnError AwaitOpen(const SOpening& opening) { return opening.error; }

    /**
     * Notes that a record uses the port: the port is ready for it, or a send names it. Each send calls it
     * under the first lock that it takes.
     */
    void Use(const SNetPortConfig& record) REQUIRES_LOCK(m_mutex);

    /** True when the record has used the port and has not been deleted since. */
    bool IsUser(const SNetPortConfig& record) const REQUIRES_LOCK(m_mutex) {
        return m_users.contains(UserOf(record));
    }

    /** True when nothing is open or under way. */
    virtual bool IsIdle() const REQUIRES_LOCK(m_mutex) = 0;

    /** The end of the time that a send has when it begins now. */
    Clock::time_point Deadline() const;

    /**
     * Calls isKnown(), which looks at connections, again and again until it is true. News of a connection
     * goes to the handler that waits for it first; it usually arrives at once, but late on a busy machine.
     * The lock is free between the calls.
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

    /** The address that a text spells; none for a host name. */
    static std::optional<boost::asio::ip::address> Literal(const std::string& host);

    /**
     * Finds the addresses of a host; a literal is its own address. The lock is free during the wait. When the
     * name server doesn't answer, the addresses of its last answer are used.
     */
    [[nodiscard]] EnError Resolve(Lock& lock, const std::string& host, Clock::time_point deadline,
                                  Addresses& addresses) REQUIRES_LOCK(m_mutex);

    const SNetContext m_context;

  private:
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
     * The records that use the port, by what can differ between them: local address and remote pair. The
     * address stands here as it is spelled, since all spellings of "any" share one port.
     */
    std::set<User, SUserLess> m_users GUARDED_BY(m_mutex);
};

}  // namespace comm
