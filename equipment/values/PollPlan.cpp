#include "equipment/values/PollPlan.h"

#include <algorithm>
#include <map>
#include <utility>

namespace {

using std::chrono::seconds;

constexpr seconds kLongestPause{30};

/** Polls of failing devices under way at most: a place is left for the others. */
constexpr std::size_t kMostFailing = 3;

/** The pause after so many failures in a row. */
seconds PauseAfter(int failures) {
    return std::min(seconds(1 << std::min(failures - 1, 5)), kLongestPause);
}

}  // namespace

void CPollPlan::Configure(std::shared_ptr<const SEquipmentConfig> config, Time now) {
    std::map<std::int32_t, SDevice> former;
    for (SDevice& device : m_devices) {
        former[device.nodeId] = std::move(device);
    }
    m_config = std::move(config);
    ++m_document;
    m_devices.clear();
    m_due = {};
    m_sound.clear();
    m_failing.clear();
    for (std::size_t index = 0; index < m_config->devices.size(); ++index) {
        const SDeviceRule& rule = m_config->devices[index];
        SDevice device = std::move(former[rule.nodeId]);
        device.nodeId = rule.nodeId;
        device.isQueued = false;
        device.ready.clear();
        device.sleeping.clear();
        for (std::size_t poll = 0; poll < rule.polls.size(); ++poll) {
            m_due.push({now, index, poll});
        }
        m_devices.push_back(std::move(device));
    }
}

bool CPollPlan::Watch(std::size_t index, Time until, Time now) {
    SDevice& device = m_devices.at(index);
    const bool isNew = device.watchedUntil <= now;
    device.watchedUntil = until;
    for (const std::size_t poll : std::exchange(device.sleeping, {})) {
        m_due.push({now, index, poll});
    }
    return isNew;
}

/** Makes what is due ready, or lets it sleep. */
void CPollPlan::Advance(Time now) {
    while (!m_due.empty() && m_due.top().time <= now) {
        const SDue due = m_due.top();
        m_due.pop();
        SDevice& device = m_devices[due.device];
        if (now < device.pausesUntil) {
            m_due.push({device.pausesUntil, due.device, due.poll});
        } else if (m_config->devices[due.device].polls[due.poll].always || now < device.watchedUntil) {
            device.ready.push_back(due.poll);
            Queue(due.device);
        } else {
            device.sleeping.insert(due.poll);
        }
    }
}

/** Lets a device wait for a place, if it has something to be sent. */
void CPollPlan::Queue(std::size_t index) {
    SDevice& device = m_devices[index];
    if (!device.isQueued && !device.isBusy && !device.ready.empty()) {
        device.isQueued = true;
        (device.isSound ? m_sound : m_failing).push_back(index);
    }
}

bool CPollPlan::MayTakeFailing() const {
    return !m_failing.empty() && m_failingUnderWay.size() < kMostFailing;
}

bool CPollPlan::HasWork(Time now) {
    Advance(now);
    return !m_sound.empty() || MayTakeFailing();
}

std::optional<SPollJob> CPollPlan::Take(Time now) {
    if (!HasWork(now)) {
        return std::nullopt;
    }
    std::deque<std::size_t>& queue = m_sound.empty() ? m_failing : m_sound;
    const std::size_t index = queue.front();
    queue.pop_front();
    SDevice& device = m_devices[index];
    const std::size_t poll = device.ready.front();
    device.ready.pop_front();
    device.isQueued = false;
    device.isBusy = true;
    if (!device.isSound) {
        m_failingUnderWay.insert(device.nodeId);
    }
    return SPollJob{device.nodeId, m_config->devices[index].polls[poll], index, poll, m_document, now};
}

void CPollPlan::Done(const SPollJob& job, bool isSent, Time now) {
    if (const auto failing = m_failingUnderWay.find(job.nodeId); failing != m_failingUnderWay.end()) {
        m_failingUnderWay.erase(failing);
    }
    const auto found = std::find_if(m_devices.begin(), m_devices.end(),
                                    [&](const SDevice& device) { return device.nodeId == job.nodeId; });
    if (found == m_devices.end()) {
        return;  // another document has come meanwhile
    }
    SDevice& device = *found;
    const auto index = static_cast<std::size_t>(found - m_devices.begin());
    device.isBusy = false;
    device.isSound = isSent;
    device.failures = isSent ? 0 : device.failures + 1;
    if (!isSent) {
        device.pausesUntil = now + PauseAfter(device.failures);
        for (const std::size_t poll : std::exchange(device.ready, {})) {
            m_due.push({device.pausesUntil, index, poll});
        }
    }
    if (job.document == m_document) {
        m_due.push({std::max(job.begin + job.poll.every, now), index, job.number});
    }
    Queue(index);
}

std::optional<CPollPlan::Time> CPollPlan::NextDue() const {
    return m_due.empty() ? std::nullopt : std::optional(m_due.top().time);
}
