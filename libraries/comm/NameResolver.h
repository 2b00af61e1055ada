#pragma once

#include "libraries/comm/CommSettings.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/asio/ip/address.hpp>

namespace comm {

/** What a host name means: addresses, or an error number. */
struct SResolved {
    int error = 0;
    std::vector<boost::asio::ip::address> addresses;
};

/** Asks the system for the addresses of a host name; blocks, half a minute perhaps. Any thread. */
SResolved AskSystem(const std::string& host);

/**
 * Resolves host names on threads of its own, one for each name at a time, which nobody has to wait for: the
 * system's resolver can block for half a minute and can't be stopped. Good results are reused for a while,
 * and beyond it when the name server answers no longer; a failed look-up rests before it is repeated. The
 * names that are remembered are bounded in number: the one that was looked up first gives way. Any thread.
 */
class CNameResolver {
  public:
    using Handler = std::function<void(const SResolved&)>;
    using Ask = std::function<SResolved(const std::string&)>;

    /** What can be said at once. */
    struct SAnswer {
        std::optional<SResolved> known;  ///< the result; when it is missing, the handler gets one later
        std::vector<boost::asio::ip::address> lastGood;  ///< what the name meant before, perhaps nothing
        Clock::time_point askedAt;                       ///< when the look-up began that is under way
        bool isShared = false;                           ///< an earlier call began it
    };

    explicit CNameResolver(const SCommSettings& settings, Ask ask = AskSystem);

    /** Looks a host name up. Where there is no result yet, calls done with it later, from another thread. */
    SAnswer Resolve(const std::string& host, Handler done);

  private:
    struct SState;
    static void Work(const std::shared_ptr<SState>& state, const std::string& host);

    std::shared_ptr<SState> m_state;
};

}  // namespace comm
