#include "equipment/values/EquipmentValues.h"

#include "equipment/PortListeners.h"
#include "equipment/values/PollSending.h"
#include "platform/PortReports.h"
#include "platform/ProcessEnd.h"
#include "platform/RavLog.h"
#include "userdata/UserData.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kMostSenders = 4;

/** How long a value is watched after a request that names it. */
constexpr std::chrono::seconds kWatched{10};

/** How often the users of the ports are looked up without a cause. */
constexpr std::chrono::seconds kPortsStay{2};

/** One line about messages that are too long, for each interface. */
constexpr std::chrono::hours kToldStays{1};

/** Most that is kept before it is known whose port it is. */
constexpr std::size_t kMostEarly = std::size_t{64} * 1024;

bool IsLost(EnPortState state) {
    return state == EnPortState::Closed || state == EnPortState::Failed;
}

void TellLongMessages(const std::set<std::int32_t>& nodeIds) {
    for (const std::int32_t nodeId : nodeIds) {
        RavLog::WriteSystemLog(RavLog::Warn, "values",
                               "interface " + std::to_string(nodeId) +
                                   ": messages of more than 4096 bytes are left out. Check how the messages "
                                   "of this device end.");
    }
}

}  // namespace

CEquipmentValues::CEquipmentValues()
    : m_config(std::make_shared<const SEquipmentConfig>()), m_streams(m_config, m_values) {}

CEquipmentValues& CEquipmentValues::Instance() {
    // Never destroyed: ports that end late still tell it. Its threads end before the documents that they read
    // are destroyed, and after the port library, so that no send holds them up; hence the order.
    static CEquipmentValues* const values = [] {
        CUserData::GetInstance();
        std::unique_ptr<CEquipmentValues> made(new CEquipmentValues);
        CallAtProcessEnd([] { Instance().Stop(); });
        return made.release();
    }();
    return *values;
}

void CEquipmentValues::Configure(SEquipmentConfig config) {
    const CLock lock(m_mutex);
    m_config = std::make_shared<const SEquipmentConfig>(std::move(config));
    m_values.Configure(*m_config);
    m_streams = CMessageStreams(m_config, m_values);
    m_polls.Configure(m_config, std::chrono::steady_clock::now());
    m_users.clear();
    m_portsAreOld = true;
    m_isOn = !m_config->devices.empty();
    if (m_isOn && !std::exchange(m_isHearing, true)) {
        AddPortListener(*this);
    }
    if (m_isOn && !m_timer.joinable() && !m_isStopping) {
        try {
            m_timer = std::thread([this] { KeepTimes(); });
        } catch (const std::system_error& error) {
            RavLog::WriteSystemLog(RavLog::Error, "values", std::string("no thread: ") + error.what());
        }
    }
    Wake();
}

SValueChanges CEquipmentValues::Read(std::uint64_t after, const std::set<std::string>* names) {
    const CLock lock(m_mutex);
    const SMoment now = SMoment::Now();
    if (names != nullptr) {
        for (const std::size_t device : m_values.DevicesOf(*names)) {
            Watch(device, now.steady);
        }
    }
    return m_values.Read(after, names, now);
}

void CEquipmentValues::Ask(std::int64_t nodeId) {
    const CLock lock(m_mutex);
    const std::vector<SDeviceRule>& devices = m_config->devices;
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [nodeId](const SDeviceRule& rule) { return rule.nodeId == nodeId; });
    if (found != devices.end()) {
        Watch(static_cast<std::size_t>(found - devices.begin()), std::chrono::steady_clock::now());
    }
}

void CEquipmentValues::Watch(std::size_t device, Time now) {
    if (m_polls.Watch(device, now + kWatched, now)) {
        Wake();
    }
}

void CEquipmentValues::OnSent(std::uint64_t /*port*/, std::string_view /*bytes*/, int /*error*/) noexcept {}

void CEquipmentValues::OnReceived(std::uint64_t port, const SPortPeer& peer, std::string_view bytes) noexcept
    try {
    if (!m_isOn) {
        return;
    }
    const CLock lock(m_mutex);
    const auto found = m_users.find(port);
    if (found != m_users.end()) {
        for (const SPortUser& user : found->second) {
            Take(user, peer.number, peer.address, bytes);
        }
    } else if (m_earlyBytes + bytes.size() <= kMostEarly) {
        m_earlyBytes += bytes.size() + sizeof(SEarly);
        m_early.push_back({port, peer.number, std::string(peer.address), std::string(bytes)});
        m_portsAreOld = true;
        Wake();
    }
} catch (const std::exception& error) {
    RavLog::WriteSystemLog(RavLog::Warn, "values", error.what());
}

/** Takes what a device has sent. */
void CEquipmentValues::Take(const SPortUser& user, std::uint64_t sender, std::string_view address,
                            std::string_view bytes) {
    if (user.net && !IsDeviceOf(*user.net, address)) {
        return;
    }
    const bool isDatagram = user.net && user.net->netMode == NetModeUdp;
    const SDeviceRule& rule = m_config->devices[user.device];
    const bool isTooLong = m_streams.Add(user.device, sender, bytes, isDatagram, SMoment::Now());
    if (isTooLong) {
        m_tooLong.insert(rule.nodeId);
    }
    if (isTooLong || rule.framing.kind == SFraming::EnKind::Silence) {
        Wake();
    }
}

void CEquipmentValues::OnState(std::uint64_t port, EnPortState state) noexcept try {
    if (m_isOn && IsLost(state)) {
        const CLock lock(m_mutex);
        NoteLost(port);
    }
} catch (const std::exception& error) {
    RavLog::WriteSystemLog(RavLog::Warn, "values", error.what());
}

void CEquipmentValues::OnEnded(std::uint64_t port) noexcept try {
    if (m_isOn) {
        const CLock lock(m_mutex);
        NoteLost(port);
        m_users.erase(port);
    }
} catch (const std::exception& error) {
    RavLog::WriteSystemLog(RavLog::Warn, "values", error.what());
}

void CEquipmentValues::NoteLost(std::uint64_t port) {
    if (const auto found = m_users.find(port); found != m_users.end()) {
        for (const SPortUser& user : found->second) {
            m_values.NoteLost(user.device, std::chrono::system_clock::now());
            m_streams.Forget(user.device);
        }
    }
}

/** Lets the thread that keeps the times look again. */
void CEquipmentValues::Wake() {
    m_isWoken = true;
    m_woken.notify_one();
}

void CEquipmentValues::KeepTimes() {
    CUniqueLock lock(m_mutex);
    Time portsUntil{};
    while (!m_isStopping) {
        const SMoment now = SMoment::Now();
        m_isWoken = false;
        if (m_isOn && (std::exchange(m_portsAreOld, false) || now.steady >= portsUntil)) {
            lock.Unlock();
            FindPorts();
            lock.Lock();
            portsUntil = now.steady + kPortsStay;
        }
        if (const std::set<std::int32_t> tooLong = TakeTooLong(now.steady); !tooLong.empty()) {
            lock.Unlock();
            TellLongMessages(tooLong);
            lock.Lock();
        }
        Time wake = m_isOn ? portsUntil : now.steady + 1h;
        wake = std::min(wake, m_streams.EndSilences(now).value_or(wake));
        if (m_polls.HasWork(now.steady)) {
            CallSender();
        }
        wake = std::min(wake, m_polls.NextDue().value_or(wake));
        m_woken.wait_until(lock.Native(), wake,
                           [this]() REQUIRES_LOCK(m_mutex) { return m_isWoken || m_isStopping; });
    }
}

/** Looks up which devices use which ports. Not under the lock, since it asks the port library. */
void CEquipmentValues::FindPorts() {
    std::shared_ptr<const SEquipmentConfig> config;
    std::set<std::uint64_t> early;
    {
        const CLock lock(m_mutex);
        config = m_config;
        for (const SEarly& one : m_early) {
            early.insert(one.port);
        }
    }
    PortUsers users;
    std::vector<SLost> lost;
    for (std::size_t device = 0; device < config->devices.size(); ++device) {
        const std::optional<SPollTarget> target = TargetOf(config->devices[device].nodeId);
        const SPortReport report = target ? target->Report() : SPortReport();
        if (IsLost(report.state)) {
            lost.push_back({device, target ? report.since : std::chrono::system_clock::now()});
        }
        if (report.port != 0) {
            users[report.port].push_back({device, target->net});
        }
    }
    const CLock lock(m_mutex);
    if (m_config != config) {
        m_portsAreOld = true;
        Wake();
        return;
    }
    for (const auto& [port, former] : m_users) {
        users.try_emplace(port);
    }
    for (const std::uint64_t port : early) {
        users.try_emplace(port);  // nobody's
    }
    m_users.swap(users);
    for (const SLost& one : lost) {
        m_values.NoteLost(one.device, one.since);
    }
    TakeEarly();
}

/** Takes what came before it was known whose it is. */
void CEquipmentValues::TakeEarly() {
    m_earlyBytes = 0;
    for (SEarly& one : std::exchange(m_early, {})) {
        const auto found = m_users.find(one.port);
        if (found == m_users.end()) {  // opened meanwhile
            m_earlyBytes += one.bytes.size() + sizeof(SEarly);
            m_early.push_back(std::move(one));
            m_portsAreOld = true;
            continue;
        }
        for (const SPortUser& user : found->second) {
            Take(user, one.sender, one.address, one.bytes);
        }
    }
}

/** The interfaces with messages that were too long and about which nothing was said for a while. */
std::set<std::int32_t> CEquipmentValues::TakeTooLong(Time now) {
    std::set<std::int32_t> untold;
    for (const std::int32_t nodeId : std::exchange(m_tooLong, {})) {
        const auto [told, isNew] = m_told.try_emplace(nodeId, now);
        if (isNew || now - told->second >= kToldStays) {
            told->second = now;
            untold.insert(nodeId);
        }
    }
    return untold;
}

/** Lets one more thread send, if there may be one more. */
void CEquipmentValues::CallSender() {
    if (m_idleSenders > 0) {
        m_hasWork.notify_one();
        return;
    }
    if (m_senders.size() >= kMostSenders || m_isStopping) {
        return;
    }
    try {
        m_senders.emplace_back([this] { SendPolls(); });
    } catch (const std::system_error& error) {
        if (m_senders.empty()) {
            RavLog::WriteSystemLog(RavLog::Warn, "values",
                                   std::string("no thread for polls: ") + error.what());
        }
    }
}

void CEquipmentValues::SendPolls() {
    CUniqueLock lock(m_mutex);
    while (!m_isStopping) {
        const std::optional<SPollJob> job = m_polls.Take(std::chrono::steady_clock::now());
        if (!job) {
            ++m_idleSenders;
            m_hasWork.wait(lock.Native());
            --m_idleSenders;
            continue;
        }
        if (m_polls.HasWork(std::chrono::steady_clock::now())) {
            CallSender();
        }
        lock.Unlock();
        const bool isSent = SendPoll(job->nodeId, job->poll);
        lock.Lock();
        m_polls.Done(*job, isSent, std::chrono::steady_clock::now());
        Wake();
    }
}

void CEquipmentValues::Stop() {
    std::thread timer;
    std::vector<std::thread> senders;
    {
        const CLock lock(m_mutex);
        m_isStopping = true;
        m_woken.notify_all();
        m_hasWork.notify_all();
        timer.swap(m_timer);
        senders.swap(m_senders);
    }
    for (std::thread& sender : senders) {
        sender.join();
    }
    if (timer.joinable()) {
        timer.join();
    }
}
