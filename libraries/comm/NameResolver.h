#pragma once

#include "libraries/comm/CommSettings.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <boost/asio/ip/address.hpp>

namespace comm {

/** What a host name means: addresses, or an error number. */
struct SResolved {
    int error = 0;
    std::vector<boost::asio::ip::address> addresses;
};

/**
 * Resolves host names on threads of its own, one for each name at a time, which nobody has to wait for: the
 * system's resolver can block for half a minute and can't be stopped. Any thread.
 */
class CNameResolver {
  public:
    using Handler = std::function<void(const SResolved&)>;

    explicit CNameResolver(Clock::duration maxAge);

    /**
     * Calls done with the result, once, from this call or from another thread later. A host name that is
     * being resolved already is not asked for twice; good results are reused for a while.
     */
    void Resolve(const std::string& host, Handler done);

  private:
    struct SState;
    static void Work(const std::shared_ptr<SState>& state, const std::string& host);

    std::shared_ptr<SState> m_state;
};

}  // namespace comm
