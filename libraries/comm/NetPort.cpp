#include "libraries/comm/NetPort.h"

#include "platform/VainWaits.h"

#include <algorithm>

namespace comm {

EnError CNetPort::FinishOpen(const SNetPortConfig& record, const SOpening& opening) {
    const EnError error = AwaitOpen(opening);
    if (error == ErrorNone) {
        const Lock lock(m_mutex);
        Use(record);
    }
    return error;
}

EnError CNetPort::Send(const SNetPortConfig& record, std::string_view bytes) {
    const auto begin = Clock::now();
    const EnError error = Deliver(record, bytes);
    m_tally.CountCommand(bytes.size(), error, Clock::now() - begin);
    if (error != ErrorNone) {
        m_tally.TellCommand(bytes, error);
    }
    return error;
}

void CNetPort::Use(const SNetPortConfig& record) {
    if (!IsUser(record)) {
        m_users.emplace(record.ipAddress, record.dstIpAddress, record.dstPort);
    }
}

bool CNetPort::Release(const SNetPortConfig& record) {
    const Lock lock(m_mutex);
    if (const auto user = m_users.find(UserOf(record)); user != m_users.end()) {
        m_users.erase(user);
    }
    return m_users.empty();
}

bool CNetPort::IsUnused() {
    const Lock lock(m_mutex);
    return m_users.empty() && IsIdle();
}

Clock::time_point CNetPort::Deadline() const {
    const CVainWaits* waits = CVainWaits::OfThread();
    const Clock::duration bound = m_context.settings.bound;
    return Clock::now() +
           (waits == nullptr ? bound : std::min(bound, waits->Left(m_context.settings.joinPause)));
}

std::optional<boost::asio::ip::address> CNetPort::Literal(const std::string& host) {
    boost::system::error_code notLiteral;
    const auto literal = boost::asio::ip::make_address(host, notLiteral);
    return notLiteral ? std::nullopt : std::optional(literal);
}

EnError CNetPort::Resolve(Lock& lock, const std::string& host, Clock::time_point deadline,
                          Addresses& addresses) {
    if (host.empty()) {
        return ErrorNoAddress;
    }
    if (const auto literal = Literal(host)) {
        addresses = {*literal};
        return ErrorNone;
    }
    const auto answer = std::make_shared<std::optional<SResolved>>();
    const auto asked =
        m_context.resolver.Resolve(host, [weak = weak_from_this(), answer](const SResolved& resolved) {
            if (const auto self = weak.lock()) {
                const Lock answered(self->m_mutex);
                *answer = resolved;
                self->m_changed.notify_all();
            }
        });
    if (asked.known) {
        addresses = asked.known->addresses;
        return asked.known->error;
    }
    // One call waits for a name server that doesn't answer, and only while there is nothing to use instead.
    const bool isPatient = !asked.isShared && asked.lastGood.empty();
    const auto until =
        isPatient ? deadline : std::min(deadline, asked.askedAt + m_context.settings.joinPause);
    const EnError error = WaitUntil(lock, until, [&answer] { return answer->has_value(); });
    if (error == ErrorTimedOut && !asked.lastGood.empty()) {
        addresses = asked.lastGood;
        return ErrorNone;
    }
    if (error != ErrorNone) {
        return error;
    }
    addresses = (*answer)->addresses;
    return (*answer)->error;
}

}  // namespace comm
