#include "libraries/comm/NetPort.h"

#include <optional>

namespace comm {

void CNetPort::Use(const SNetPortConfig& record) {
    m_users.emplace(record.ipAddress, record.dstIpAddress, record.dstPort);
}

bool CNetPort::Release(const SNetPortConfig& record) {
    const Lock lock(m_mutex);
    m_users.erase({record.ipAddress, record.dstIpAddress, record.dstPort});
    return m_users.empty();
}

int CNetPort::Resolve(Lock& lock, const std::string& host, Clock::time_point deadline,
                      std::vector<boost::asio::ip::address>& addresses) {
    if (host.empty()) {
        return ErrorNoAddress;
    }
    boost::system::error_code notLiteral;
    const auto literal = boost::asio::ip::make_address(host, notLiteral);
    if (!notLiteral) {
        addresses.push_back(literal);
        return ErrorNone;
    }
    auto answer = std::make_shared<std::optional<SResolved>>();
    lock.unlock();
    m_context.resolver.Resolve(host, [self = shared_from_this(), answer](const SResolved& resolved) {
        const Lock answered(self->m_mutex);
        *answer = resolved;
        self->m_changed.notify_all();
    });
    lock.lock();
    const int error = WaitUntil(lock, deadline, [&answer] { return answer->has_value(); });
    if (error != ErrorNone) {
        return error;
    }
    addresses = (*answer)->addresses;
    return (*answer)->error;
}

}  // namespace comm
