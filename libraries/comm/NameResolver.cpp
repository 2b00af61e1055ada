#include "libraries/comm/NameResolver.h"

#include "libraries/comm/ErrorNumbers.h"
#include "platform/Mutex.h"
#include "platform/RavLog.h"

#include <map>
#include <thread>
#include <utility>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>

namespace comm {

namespace {

struct SEntry {
    bool running = false;
    Clock::time_point since;  ///< begin of the look-up under way, or end of the last one
    Clock::time_point validUntil;
    SResolved result{ErrorNoHost, {}};
    std::vector<boost::asio::ip::address> lastGood;
    bool isStale = false;  ///< the last look-up failed, and lastGood stands for its result
    std::vector<CNameResolver::Handler> waiting;
};

using Entries = std::map<std::string, SEntry>;

/** Forgets the name whose look-up ended first. @return false when all are being looked up */
bool ForgetOne(Entries& entries) {
    auto oldest = entries.end();
    for (auto at = entries.begin(); at != entries.end(); ++at) {
        if (!at->second.running && (oldest == entries.end() || at->second.since < oldest->second.since)) {
            oldest = at;
        }
    }
    if (oldest == entries.end()) {
        return false;
    }
    entries.erase(oldest);
    return true;
}

void Tell(const CNameResolver::Handler& handler, const SResolved& result) {
    try {
        handler(result);
    } catch (const std::exception&) {
        handler({ErrorNoBuffers, {}});  // without addresses, which it had no memory for
    }
}

}  // namespace

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

struct CNameResolver::SState {
    SState(const SCommSettings& limits, Ask question) : settings(limits), ask(std::move(question)) {}

    /** Takes a result over; one that failed gives way to what the name meant before. @return what counts */
    SResolved Note(const std::string& host, SResolved result) REQUIRES_LOCK(mutex);

    const SCommSettings settings;
    const Ask ask;
    CMutex mutex;
    Entries entries GUARDED_BY(mutex);
};

SResolved CNameResolver::SState::Note(const std::string& host, SResolved result) {
    SEntry& entry = entries[host];
    const bool isGood = result.error == ErrorNone;
    const bool isNews = entry.isStale == isGood && !entry.lastGood.empty();
    entry.running = false;
    entry.since = Clock::now();
    entry.validUntil = entry.since + (isGood ? settings.resolvedAge : settings.resolvePause);
    entry.isStale = !isGood && !entry.lastGood.empty();
    if (isGood) {
        entry.lastGood = result.addresses;
    } else if (entry.isStale) {
        result = {ErrorNone, entry.lastGood};
    }
    entry.result = result;
    if (isNews) {
        RavLog::WriteSystemLog(isGood ? RavLog::Info : RavLog::Warn, "host name " + host,
                               isGood ? "is known again" : "can't be looked up, its last address is used");
    }
    return result;
}

CNameResolver::CNameResolver(const SCommSettings& settings, Ask ask)
    : m_state(std::make_shared<SState>(settings, std::move(ask))) {}

CNameResolver::SAnswer CNameResolver::Resolve(const std::string& host, Handler done) {
    const CLock lock(m_state->mutex);
    Entries& entries = m_state->entries;
    if (!entries.contains(host) && entries.size() >= m_state->settings.maxNames && !ForgetOne(entries)) {
        return {SResolved{ErrorNoBuffers, {}}, {}, {}, true};
    }
    SEntry& entry = entries[host];
    if (entry.running) {
        entry.waiting.push_back(std::move(done));
        return {std::nullopt, entry.lastGood, entry.since, true};
    }
    const auto now = Clock::now();
    if (now < entry.validUntil) {
        return {entry.result, {}, entry.since, true};
    }
    entry.waiting.push_back(std::move(done));
    entry.running = true;
    entry.since = now;
    try {
        std::thread(&CNameResolver::Work, m_state, host).detach();
    } catch (...) {
        entry.running = false;
        entry.waiting.pop_back();
        throw;
    }
    return {std::nullopt, entry.lastGood, now, false};
}

void CNameResolver::Work(const std::shared_ptr<SState>& state, const std::string& host) {
    SResolved result{ErrorNoBuffers, {}};
    try {
        result = state->ask(host);
    } catch (const std::exception&) {
        result = {ErrorNoBuffers, {}};  // no memory or no descriptor: the result for all who wait
    }
    std::vector<Handler> waiting;
    {
        const CLock lock(state->mutex);
        waiting.swap(state->entries[host].waiting);
        try {
            result = state->Note(host, std::move(result));
        } catch (const std::exception&) {
            state->entries[host].running = false;
            result = {ErrorNoBuffers, {}};
        }
    }
    for (const Handler& handler : waiting) {
        Tell(handler, result);
    }
}

}  // namespace comm
