#include "equipment/Traffic.h"

#include "equipment/PortListeners.h"
#include "platform/PortReports.h"
#include "platform/RavLog.h"
#include "platform/TrafficLimit.h"
#include "userdata/UserData.h"

#include <algorithm>
#include <atomic>
#include <exception>

namespace {

constexpr std::size_t kLeastOfAll = std::size_t{1} << 20U;

/** How often room is made for one entry: others may take it first. */
constexpr int kTries = 4;

/** Lives to the end of the process; null: nothing is kept. */
std::atomic<CTraffic*> g_traffic = nullptr;

}  // namespace

CTraffic::CTraffic(std::size_t bytesOfAll) : m_share(std::max(bytesOfAll, kLeastOfAll)) {}

CTrafficRing::SRead CTraffic::Read(std::uint64_t port, std::uint64_t after,
                                   const CTrafficRing::Filter& keeps) {
    if (after > m_share.lastId) {
        after = 0;  // the clock of the machine was ahead when the number was given
    }
    if (const Ring ring = Find(port)) {
        return ring->Read(after, keeps);
    }
    CTrafficRing::SRead nothing;
    nothing.last = after;
    return nothing;
}

void CTraffic::OnSent(std::uint64_t port, std::string_view bytes, int error) noexcept {
    AddTo(port, [&](CTrafficRing& ring) { return ring.AddSent(bytes, error, CSendOrigin::OfThread()); });
}

void CTraffic::OnReceived(std::uint64_t port, const SPortPeer& peer, std::string_view bytes) noexcept {
    AddTo(port, [&](CTrafficRing& ring) { return ring.AddReceived(peer, bytes); });
}

void CTraffic::OnState(std::uint64_t /*port*/, EnPortState /*state*/) noexcept {}

void CTraffic::OnEnded(std::uint64_t port) noexcept {
    Ring ended;
    const CLock lock(m_mutex);
    if (const auto found = m_rings.find(port); found != m_rings.end()) {
        ended = std::move(found->second);
        m_rings.erase(found);
    }
}

CTraffic::Ring CTraffic::Find(std::uint64_t port) {
    const CSharedLock lock(m_mutex);
    const auto found = m_rings.find(port);
    return found == m_rings.end() ? nullptr : found->second;
}

CTraffic::Ring CTraffic::FindOrMake(std::uint64_t port) {
    if (Ring ring = Find(port)) {
        return ring;
    }
    auto made = std::make_shared<CTrafficRing>(m_share);
    const CLock lock(m_mutex);
    return m_rings.try_emplace(port, std::move(made)).first->second;
}

bool CTraffic::MakeRoom() {
    Ring largest;
    {
        const CSharedLock lock(m_mutex);
        const auto found =
            std::max_element(m_rings.begin(), m_rings.end(), [](const auto& one, const auto& other) {
                const auto chunks = one.second->Chunks();
                const auto others = other.second->Chunks();
                return chunks != others ? chunks < others : one.second->Oldest() > other.second->Oldest();
            });
        if (found != m_rings.end()) {
            largest = found->second;
        }
    }
    return largest && largest->DropOldest();
}

template <typename Add>
void CTraffic::AddTo(std::uint64_t port, Add add) noexcept {
    try {
        const Ring ring = FindOrMake(port);
        for (int i = 0; i < kTries; ++i) {
            if (add(*ring)) {
                return;
            }
            if (!MakeRoom()) {
                break;
            }
        }
        ring->NoteDropped();
    } catch (const std::exception& error) {
        // Out of memory, for the ring itself: its device goes on.
        RavLog::WriteSystemLog(RavLog::Warn, "traffic", error.what());
    }
}

void StartTraffic() {
    const std::int32_t bytes = TrafficLimit();
    if (bytes <= 0 || g_traffic != nullptr) {
        return;
    }
    // Never destroyed: ports that end late still tell it.
    g_traffic = new CTraffic(static_cast<std::size_t>(bytes));
    AddPortListener(*g_traffic);
}

bool IsTrafficKept() {
    return g_traffic != nullptr;
}

std::uint64_t LastTrafficNumber() {
    const CTraffic* const all = g_traffic;
    return all == nullptr ? 0 : all->Last();
}

std::optional<SInterfaceTraffic> TrafficOf(std::int32_t nodeId, std::uint64_t after) {
    SNetPortConfig net;
    SSerialPortConfig serial;
    SInterfaceTraffic traffic;
    std::uint64_t port = 0;
    if (CUserData::GetInstance().GetNetPortConfig(nodeId, net)) {
        traffic.name = net.netPortName;
        traffic.isNet = true;
        port = ReportOfPort(net).port;
    } else if (CUserData::GetInstance().GetSerialPortConfig(nodeId, serial)) {
        traffic.name = serial.comName;
        port = ReportOfPort(serial).port;
    } else {
        return std::nullopt;
    }
    traffic.read.last = after;
    if (CTraffic* const all = g_traffic; all != nullptr) {
        traffic.read = all->Read(port, after, [&](const STrafficEntry& entry) {
            return entry.out ? entry.nodeId == 0 || entry.nodeId == nodeId
                             : !traffic.isNet || IsDeviceOf(net, entry.peer);
        });
    }
    return traffic;
}
