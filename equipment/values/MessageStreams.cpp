#include "equipment/values/MessageStreams.h"

#include <algorithm>
#include <utility>

namespace {

/** Most senders of one device whose messages are put together at once. */
constexpr std::size_t kMostSenders = 64;

}  // namespace

CMessageStreams::CMessageStreams(std::shared_ptr<const SEquipmentConfig> config, CValueStore& values)
    : m_config(std::move(config)), m_values(&values), m_streams(m_config->devices.size()) {}

CMessageStreams::SStream& CMessageStreams::StreamOf(std::size_t device, std::uint64_t sender) {
    auto& streams = m_streams.at(device);
    const auto found = streams.find(sender);
    if (found != streams.end()) {
        return found->second;
    }
    if (streams.size() >= kMostSenders) {
        streams.erase(std::min_element(
            streams.begin(), streams.end(),
            [](const auto& one, const auto& other) { return one.second.last < other.second.last; }));
    }
    return streams.emplace(sender, SStream{CMessageCutter(m_config->devices[device].framing)}).first->second;
}

bool CMessageStreams::Add(std::size_t device, std::uint64_t sender, std::string_view bytes, bool isDatagram,
                          const SMoment& now) {
    const SDeviceRule& rule = m_config->devices.at(device);
    const CMessageCutter::Take take = [&](std::string_view message) { Understand(rule, message, now); };
    SStream& stream = StreamOf(device, sender);
    if (stream.cutter.WaitsForSilence() && now.steady - stream.last >= rule.framing.silence) {
        stream.cutter.EndBySilence(take);
    }
    stream.last = now.steady;
    const bool isTooLong = stream.cutter.Add(bytes, take);
    if (isDatagram && stream.cutter.WaitsForSilence()) {
        stream.cutter.EndBySilence(take);
    }
    return isTooLong;
}

void CMessageStreams::Understand(const SDeviceRule& rule, std::string_view message, const SMoment& now) {
    for (const SPatternRule& pattern : rule.patterns) {
        if (!pattern.pattern.Match(message, m_captures)) {
            continue;
        }
        // All values of a pattern, or none.
        m_found.clear();
        for (const SValueRule& value : pattern.values) {
            if (auto content = value.Apply(m_captures.at(value.place))) {
                m_found.emplace_back(value.index, std::move(*content));
            }
        }
        if (m_found.size() == pattern.values.size()) {
            for (auto& [index, content] : m_found) {
                m_values->Note(index, std::move(content), now);
            }
        }
    }
}

std::optional<CMessageStreams::Time> CMessageStreams::EndSilences(const SMoment& now) {
    std::optional<Time> next;
    for (std::size_t device = 0; device < m_streams.size(); ++device) {
        const SDeviceRule& rule = m_config->devices[device];
        if (rule.framing.kind != SFraming::EnKind::Silence) {
            continue;
        }
        for (auto& [sender, stream] : m_streams[device]) {
            if (!stream.cutter.WaitsForSilence()) {
                continue;
            }
            const Time due = stream.last + rule.framing.silence;
            if (due <= now.steady) {
                stream.cutter.EndBySilence([&](std::string_view message) { Understand(rule, message, now); });
            } else {
                next = next ? std::min(*next, due) : due;
            }
        }
    }
    return next;
}
