#include "libraries/comm/NameResolver.h"

#include "libraries/comm/ErrorNumbers.h"
#include "platform/Mutex.h"

#include <map>
#include <thread>
#include <utility>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

namespace comm {

namespace {

struct SEntry {
    bool running = false;
    Clock::time_point since;
    SResolved result{ErrorNoHost, {}};
    std::vector<CNameResolver::Handler> waiting;
};

SResolved AskSystem(const std::string& host) {
    boost::asio::io_context io;
    boost::asio::ip::tcp::resolver resolver(io);
    boost::system::error_code code;
    SResolved result;
    for (const auto& entry : resolver.resolve(host, "", code)) {
        result.addresses.push_back(entry.endpoint().address());
    }
    if (code || result.addresses.empty()) {
        result.error = ErrorNoHost;
    }
    return result;
}

void Tell(const CNameResolver::Handler& handler, const SResolved& result) {
    try {
        handler(result);
    } catch (const std::exception&) {
        handler({ErrorNoBuffers, {}});  // without addresses, which it had no memory for
    }
}

}  // namespace

struct CNameResolver::SState {
    explicit SState(Clock::duration age) : maxAge(age) {}

    const Clock::duration maxAge;
    CMutex mutex;
    std::map<std::string, SEntry> entries GUARDED_BY(mutex);
};

CNameResolver::CNameResolver(Clock::duration maxAge) : m_state(std::make_shared<SState>(maxAge)) {}

void CNameResolver::Resolve(const std::string& host, Handler done) {
    SResolved known;
    {
        const CLock lock(m_state->mutex);
        SEntry& entry = m_state->entries[host];
        if (entry.running) {
            entry.waiting.push_back(std::move(done));
            return;
        }
        if (entry.result.error != ErrorNone || Clock::now() - entry.since >= m_state->maxAge) {
            entry.waiting.push_back(std::move(done));
            entry.running = true;
            try {
                std::thread(&CNameResolver::Work, m_state, host).detach();
            } catch (...) {
                entry.running = false;
                entry.waiting.pop_back();
                throw;
            }
            return;
        }
        known = entry.result;
    }
    done(known);
}

void CNameResolver::Work(const std::shared_ptr<SState>& state, const std::string& host) {
    SResolved result;
    SResolved kept;
    try {
        result = AskSystem(host);
        kept = result;
    } catch (const std::exception&) {
        result = kept = {ErrorNoBuffers, {}};  // no memory or no descriptor: told to all who wait
    }
    std::vector<Handler> waiting;
    {
        const CLock lock(state->mutex);
        SEntry& entry = state->entries[host];
        entry.running = false;
        entry.since = Clock::now();
        entry.result = std::move(kept);
        waiting.swap(entry.waiting);
    }
    for (const Handler& handler : waiting) {
        Tell(handler, result);
    }
}

}  // namespace comm
