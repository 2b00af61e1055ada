#pragma once

#include "libraries/comm/CommSettings.h"
#include "libraries/comm/ErrorNumbers.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/asio/ip/address.hpp>

namespace comm {

/** The result of a look-up: addresses, or an error number. */
struct SResolved {
    EnError error = ErrorNone;
    std::vector<boost::asio::ip::address> addresses;
};

/** Asks the system for the addresses of a host name; can block for half a minute. Any thread. */
SResolved AskSystem(const std::string& host);

/**
 * Resolves host names on threads of its own, one thread for each name at a time. Nobody has to wait for these
 * threads: the system's resolver can block for half a minute and can't be stopped. Good results are reused
 * for a while, and longer when the name server no longer answers. A failed look-up is not repeated for a
 * while. The number of remembered names is limited; the name that was looked up first is dropped first. Any
 * thread.
 */
class CNameResolver {
  public:
    using Handler = std::function<void(const SResolved&)>;
    using Ask = std::function<SResolved(const std::string&)>;

    /** The part of the answer that is known at once. */
    struct SAnswer {
        std::optional<SResolved> known;  ///< the result; if missing, the handler gets one later
        std::vector<boost::asio::ip::address> lastGood;  ///< the previous addresses of the name, if any
        Clock::time_point askedAt;                       ///< when the present look-up began
        bool isShared = false;                           ///< an earlier call began that look-up
    };

    explicit CNameResolver(const SCommSettings& settings, Ask ask = AskSystem);

    /** Looks a host name up. If there is no result yet, calls done with it later, from another thread. */
    SAnswer Resolve(const std::string& host, Handler done);

  private:
    struct SState;
    static void Work(const std::shared_ptr<SState>& state, const std::string& host);

    std::shared_ptr<SState> m_state;
};

}  // namespace comm
