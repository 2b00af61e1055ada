#include "equipment/values/ValueStore.h"

#include <utility>

CValueStore::CValueStore(std::chrono::system_clock::time_point start)
    : m_last(static_cast<std::uint64_t>(
          std::chrono::floor<std::chrono::microseconds>(start.time_since_epoch()).count())) {}

void CValueStore::Configure(const SEquipmentConfig& config) {
    std::vector<SEntry> former = std::exchange(m_entries, {});
    const auto formerNames = std::exchange(m_names, {});
    m_staleAfter.clear();
    for (std::size_t device = 0; device < config.devices.size(); ++device) {
        const SDeviceRule& rule = config.devices[device];
        m_staleAfter.push_back(rule.staleAfter);
        for (const SPatternRule& pattern : rule.patterns) {
            for (const SValueRule& value : pattern.values) {
                SEntry entry;
                const auto found = formerNames.find(value.name);
                if (found != formerNames.end() && former[found->second].nodeId == rule.nodeId) {
                    entry = std::move(former[found->second]);
                } else {
                    entry.number = ++m_last;
                }
                entry.value.name = value.name;
                entry.device = device;
                entry.nodeId = rule.nodeId;
                m_names.emplace(value.name, m_entries.size());
                m_entries.push_back(std::move(entry));
            }
        }
    }
}

void CValueStore::Note(std::size_t index, ValueContent content, const SMoment& now) {
    SEntry& entry = m_entries.at(index);
    if (entry.value.isStale || entry.value.content != content) {
        entry.value.content = std::move(content);
        entry.value.isStale = false;
        entry.number = ++m_last;
    }
    entry.value.time = now.system;
    entry.said = now.steady;
}

void CValueStore::NoteLost(std::size_t device, std::chrono::system_clock::time_point since) {
    for (SEntry& entry : m_entries) {
        if (entry.device == device && entry.value.time && *entry.value.time <= since) {
            MakeStale(entry);
        }
    }
}

void CValueStore::MakeStale(SEntry& entry) {
    if (!std::exchange(entry.value.isStale, true)) {
        entry.number = ++m_last;
    }
}

bool CValueStore::IsOld(const SEntry& entry, const SMoment& now) const {
    const std::chrono::seconds limit = m_staleAfter[entry.device];
    return limit.count() > 0 && now.steady - entry.said > limit;
}

SValueChanges CValueStore::Read(std::uint64_t after, const std::set<std::string>* names, const SMoment& now) {
    SValueChanges changes;
    after = after > m_last ? 0 : after;
    const auto look = [&](SEntry& entry) {
        if (!entry.value.isStale && IsOld(entry, now)) {
            MakeStale(entry);
        }
        if (entry.number > after) {
            changes.values.push_back(entry.value);
        }
    };
    if (names == nullptr) {
        for (SEntry& entry : m_entries) {
            look(entry);
        }
    } else {
        std::set<std::size_t> indices;
        for (const std::string& name : *names) {
            if (const auto found = m_names.find(name); found != m_names.end()) {
                indices.insert(found->second);
            }
        }
        for (const std::size_t index : indices) {
            look(m_entries[index]);
        }
    }
    changes.last = m_last;
    return changes;
}

std::set<std::size_t> CValueStore::DevicesOf(const std::set<std::string>& names) const {
    std::set<std::size_t> devices;
    for (const std::string& name : names) {
        if (const auto found = m_names.find(name); found != m_names.end()) {
            devices.insert(m_entries[found->second].device);
        }
    }
    return devices;
}
